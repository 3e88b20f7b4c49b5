// Skyline shape from sizes and from a reordered graph, assembly, the class record, and what a
// failed allocation leaves.
#include "common/femtest.h"
#include "skyline/skylinematrix.h"

#include <algorithm>
#include <memory>
#include <new>

// Nothrow array requests above this many bytes yield NULL, as from an exhausted heap.
static size_t s_nHeapLimit = SIZE_MAX;
void *operator new[](std::size_t nBytes, const std::nothrow_t &) noexcept {
    return nBytes > s_nHeapLimit ? nullptr : ::operator new[](nBytes);
}

namespace {

// The heights of a freshly shaped matrix, after checking that the diagonal indices and
// addresses follow from them and that every value is 0.
std::vector<int> FreshShape(const CSkylineMatrix &m) {
    int nSum = 0;
    for (int i = 0; i < m.m_nRows; i++) {
        nSum += m.m_pHeights[i];
        EXPECT_TRUE(m.m_pDiagIndex[i] == nSum - 1 && m.m_ppDiag[i] == m.m_pValues + nSum - 1);
    }
    EXPECT_EQ(m.m_nValues, nSum);
    EXPECT_EQ(std::count(m.m_pValues, m.m_pValues + nSum, 0.0), nSum);
    return std::vector<int>(m.m_pHeights, m.m_pHeights + m.m_nRows);
}

// Counts element accesses, which assembly must make through the table.
struct CCountingSkyline : CSkylineMatrix {
    int m_nAccesses = 0;
    double &operator()(int i, int j) override {
        m_nAccesses++;
        return CSkylineMatrix::operator()(i, j);
    }
};

} // namespace

TEST(SkylineAllocate, FromSizes) {
    const struct {
        std::vector<int> sizes, heights;
    } cases[] = {{{4, 2}, {1, 2, 2, 2}},       // a band width, rewritten to the total 7
                 {{4}, {1, 2, 2, 2}},          // the order alone keeps the shape
                 {{3, 6}, {1, 2, 3}},          // not below the order: a total
                 {{3, 3}, {1, 1, 1}},          //
                 {{3, 4, 1, 1, 2}, {1, 1, 2}}, // heights listed
                 {{0}, {}},                    // order 0 clears
                 {{5, 3}, {1, 2, 3, 3, 3}},    //
                 {{}, {}}};                    // so do no sizes
    CSkylineMatrix m;
    for (auto c : cases) {
        m = 2.5;
        ASSERT_TRUE(m.Allocate(c.sizes.data(), (int)c.sizes.size()));
        EXPECT_EQ(FreshShape(m), c.heights);
        EXPECT_TRUE(c.sizes.size() < 2 || c.sizes[1] == m.m_nValues);
        EXPECT_TRUE(m.m_nRows || !(m.m_pValues || m.m_pHeights || m.m_pDiagIndex || m.m_ppDiag));
    }
    delete[] m.DiagVect(); // an array of no entries
}

TEST(SkylineAllocate, FromGraph) {
    CReorderMat g(0), loose(0);
    BuildGraph(g, 3, {{0, 1}, {1, 2}});
    g.PostReorder();
    CSkylineMatrix m, fresh;
    ASSERT_TRUE(m.Allocate(g));
    EXPECT_EQ(FreshShape(m), (std::vector<int>{1, 2, 2}));
    EXPECT_EQ(m.PeakRow(2), 1);
    // Labels 1, 2, 0 (not their own inverse): edges 1-2 and 2-0 in labels. A new matrix takes
    // the new profile; the same order keeps the old heights as lower bounds.
    const LONG labels[] = {1, 2, 0};
    std::copy(labels, labels + 3, g.m_pLabels);
    g.PostReorder();
    m = 7.0;
    ASSERT_TRUE(fresh.Allocate(g) && m.Allocate(g));
    EXPECT_EQ(FreshShape(fresh), (std::vector<int>{1, 1, 3}));
    EXPECT_EQ(fresh.PeakRow(2), 0);
    EXPECT_EQ(FreshShape(m), (std::vector<int>{1, 2, 3}));
    // No edges give a diagonal, also after rows made by the order alone (heights 1 as bounds).
    BuildGraph(loose, 4, {{0}, {1, -1}, {3}});
    loose.PostReorder();
    int order[] = {4};
    ASSERT_TRUE(m.Allocate(order, 1) && m.Allocate(loose));
    EXPECT_EQ(FreshShape(m), (std::vector<int>{1, 1, 1, 1}));
}

TEST(SkylineAssembly, UpperHalfInLabelsThroughTheTable) {
    CCountingSkyline m;
    CVirtRealMat *pBase = &m;
    int full[] = {6, 21}, diagonal[] = {3, 3};
    LONG dofs[] = {2, -1, 5}, twice[] = {1, 1}, apart[] = {0, 2};
    double element[] = {1, 2, 3, 4, 5, 6, 7, 8, 9}, block[] = {1, 2, 4, 8},
           zeros[] = {1, 0, -0.0, 2};
    // (2, 2), (2, 5) from row 0, column 2, and (5, 5); row 2, column 0 is not read.
    ASSERT_TRUE(pBase->Allocate(full, 2));
    pBase->AddValues(dofs, element, 3);
    EXPECT_EQ(m.m_nAccesses, 3);
    EXPECT_EQ(std::count(m.m_pValues, m.m_pValues + 21, 0.0), 18);
    EXPECT_TRUE(m(2, 2) == 1.0 && m(2, 5) == 3.0 && m(5, 5) == 9.0);
    // A dof given twice takes all four entries; zeros touch nothing, even outside the profile.
    ASSERT_TRUE(m.Allocate(diagonal, 2));
    m.m_nAccesses = 0;
    m.AddValues(twice, block, 2);
    m.AddValues(apart, zeros, 2);
    EXPECT_EQ(std::vector<double>(m.m_pValues, m.m_pValues + 3), (std::vector<double>{1, 15, 2}));
    EXPECT_EQ(m.m_nAccesses, 4 + 2);
    *pBase += 0.25;
    EXPECT_EQ(m.m_pValues[0] + m.m_pValues[2], 3.5);
}

TEST(SkylineClass, CreatedByNameAndArchivedWithoutContents) {
    CRuntimeClass *pClass = CRuntimeClass::FromName("CSkylineMatrix");
    ASSERT_TRUE(pClass == RUNTIME_CLASS(CSkylineMatrix) && pClass->m_wSchema == 1);
    std::unique_ptr<CVirtMat> pMade(static_cast<CVirtMat *>(pClass->CreateObject()));
    int band[] = {3, 2};
    ASSERT_TRUE(pMade->Allocate(band, 2));
    CMemFile file;
    CArchive store(&file, CArchive::store);
    store << pMade.get();
    store.Close();
    file.SeekToBegin();
    CArchive load(&file, CArchive::load);
    CSkylineMatrix *pRead = nullptr;
    load >> pRead;
    std::unique_ptr<CSkylineMatrix> pOwned(pRead);
    EXPECT_TRUE(pRead && pRead->m_nRows == 0 && !pRead->m_pValues);
}

// Each failure leaves NULL where the allocation failed; the same call then makes it anew.
TEST(SkylineAllocate, FailedAllocationYieldsFalseAndTheObjectStaysUsable) {
    CSkylineMatrix m;
    CReorderMat g(0);
    BuildGraph(g, 4, {{0, 3}});
    g.PostReorder();
    int band[] = {1000, 2};
    s_nHeapLimit = 6000; // two tables of 1000 ints fit, 1000 addresses don't
    EXPECT_FALSE(m.Allocate(band, 2));
    EXPECT_TRUE(m.m_nRows == 1000 && !m.m_pHeights && !m.m_pDiagIndex && !m.m_ppDiag);
    s_nHeapLimit = 10000; // the row tables fit, 1999 values don't
    EXPECT_FALSE(m.Allocate(band, 2));
    EXPECT_TRUE(m.m_ppDiag && !m.m_pValues);
    s_nHeapLimit = SIZE_MAX;
    ASSERT_TRUE(m.Allocate(band, 2));
    EXPECT_EQ(FreshShape(m).size(), 1000u);
    s_nHeapLimit = 40; // the graph's row tables fit, its 7 values don't
    EXPECT_FALSE(m.Allocate(g));
    s_nHeapLimit = SIZE_MAX;
    ASSERT_TRUE(m.m_nRows == 4 && m.Allocate(g));
    EXPECT_EQ(FreshShape(m), (std::vector<int>{1, 1, 1, 4}));
}
