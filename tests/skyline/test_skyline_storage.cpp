// Skyline shape from sizes and from a reordered graph, assembly, scalar operators, class
// record, and allocation failure.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <limits>
#include <memory>
#include <random>

#include "platform/afx.h"
#include "skyline_test_util.h"

using namespace skytest;

namespace {

std::vector<int> Heights(const CSkylineMatrix &m) {
    return std::vector<int>(m.m_pHeights, m.m_pHeights + m.m_nRows);
}

std::vector<double> Values(const CSkylineMatrix &m) {
    return std::vector<double>(m.m_pValues, m.m_pValues + m.m_nValues);
}

} // namespace

TEST(SkylineAllocate, SizesGiveBandTotalOrExplicitHeights) {
    CSkylineMatrix m;
    int band[] = {4, 2};
    ASSERT_TRUE(m.Allocate(band, 2));
    EXPECT_EQ(band[1], 7); // the width is rewritten to the total
    EXPECT_EQ(m.m_nRows, 4);
    EXPECT_EQ(Heights(m), (std::vector<int>{1, 2, 2, 2}));
    EXPECT_EQ(Values(m), std::vector<double>(7, 0.0));
    ExpectConsistent(m);

    int total[] = {3, 6};
    ASSERT_TRUE(m.Allocate(total, 2));
    EXPECT_EQ(Heights(m), (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(m.m_nValues, 6);
    ExpectConsistent(m);

    int diagonal[] = {3, 3};
    ASSERT_TRUE(m.Allocate(diagonal, 2));
    EXPECT_EQ(Heights(m), (std::vector<int>{1, 1, 1}));
    ExpectConsistent(m);

    int explicitHeights[] = {3, 4, 1, 1, 2};
    ASSERT_TRUE(m.Allocate(explicitHeights, 5));
    EXPECT_EQ(Heights(m), (std::vector<int>{1, 1, 2}));
    EXPECT_EQ(m.m_ppDiag[2], &m.m_pValues[3]);
    EXPECT_EQ(m.PeakRow(2), 1);
    ExpectConsistent(m);
}

TEST(SkylineAllocate, EveryBandTotalGivesBackItsBand) {
    // The total of every band, given as a total, must round back to the same band.
    for (int n = 1; n <= 40; n++) {
        for (int b = 1; b <= n; b++) {
            CSkylineMatrix byWidth, byTotal;
            int sizes[] = {n, b};
            if (b < n) {
                ASSERT_TRUE(byWidth.Allocate(sizes, 2));
                ASSERT_EQ(sizes[1], b * n - b * (b - 1) / 2);
            } else {
                sizes[1] = b * n - b * (b - 1) / 2;
            }
            int totals[] = {n, sizes[1]};
            ASSERT_TRUE(byTotal.Allocate(totals, 2));
            for (int i = 0; i < n; i++) {
                ASSERT_EQ(byTotal.m_pHeights[i], std::min(i + 1, b)) << n << " " << b;
            }
            if (b < n) {
                ASSERT_EQ(Heights(byWidth), Heights(byTotal));
            }
        }
    }
}

TEST(SkylineAllocate, ClearingAndOrderOnlyForms) {
    CSkylineMatrix m;
    int band[] = {5, 3};
    ASSERT_TRUE(m.Allocate(band, 2));
    m = 2.5;

    // The order alone keeps the shape and clears the values.
    int order[] = {5};
    ASSERT_TRUE(m.Allocate(order, 1));
    EXPECT_EQ(Heights(m), (std::vector<int>{1, 2, 3, 3, 3}));
    EXPECT_EQ(Values(m), std::vector<double>(12, 0.0));

    int zero[] = {0};
    ASSERT_TRUE(m.Allocate(zero, 1));
    EXPECT_EQ(m.m_nRows, 0);
    EXPECT_EQ(m.m_nValues, 0);
    EXPECT_EQ(m.m_pValues, nullptr);
    EXPECT_EQ(m.m_pHeights, nullptr);
    EXPECT_EQ(m.m_pDiagIndex, nullptr);
    EXPECT_EQ(m.m_ppDiag, nullptr);
    delete[] m.DiagVect(); // an array of no entries

    ASSERT_TRUE(m.Allocate(band, 2));
    ASSERT_TRUE(m.Allocate(nullptr, 0)); // nDims 0 reads nothing and clears
    EXPECT_EQ(m.m_nRows, 0);
    EXPECT_EQ(m.m_pValues, nullptr);
}

TEST(SkylineAllocate, GraphPathUnderTwoNumberings) {
    CReorderMat graph(0);
    BuildGraph(graph, 3, {{0, 1}, {1, 2}});
    graph.PostReorder();

    CSkylineMatrix m;
    ASSERT_TRUE(m.Allocate(graph));
    EXPECT_EQ(Heights(m), (std::vector<int>{1, 2, 2}));
    EXPECT_EQ(m.m_nValues, 5);
    EXPECT_EQ(m.PeakRow(0), 0);
    EXPECT_EQ(m.PeakRow(1), 0);
    EXPECT_EQ(m.PeakRow(2), 1);
    ExpectConsistent(m);

    // Labels 0, 2, 1: edges 0-2 and 2-1 in labels. A fresh matrix gets the new profile ...
    SetLabels(graph, {0, 2, 1});
    CSkylineMatrix fresh;
    ASSERT_TRUE(fresh.Allocate(graph));
    EXPECT_EQ(Heights(fresh), (std::vector<int>{1, 1, 3}));
    EXPECT_EQ(fresh.m_nValues, 5);
    EXPECT_EQ(fresh.PeakRow(2), 0);

    // ... while the same matrix keeps its old heights as lower bounds.
    m = 7.0;
    ASSERT_TRUE(m.Allocate(graph));
    EXPECT_EQ(Heights(m), (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(Values(m), std::vector<double>(6, 0.0));
    ExpectConsistent(m);

    // The graph is only read.
    EXPECT_EQ(graph.m_pRowSizes[1], 2);
    EXPECT_EQ(graph.m_ppRows[1][0], 0);
    EXPECT_EQ(graph.m_ppRows[1][1], 2);
}

TEST(SkylineAllocate, GraphWithoutEdgesOrVertices) {
    CReorderMat graph(0);
    BuildGraph(graph, 4, {{0}, {1, -1}, {3}});
    graph.PostReorder();
    CSkylineMatrix m;
    ASSERT_TRUE(m.Allocate(graph));
    EXPECT_EQ(Heights(m), (std::vector<int>{1, 1, 1, 1}));
    EXPECT_EQ(m.m_nValues, 4);

    CReorderMat empty(0);
    BuildGraph(empty, 0, {});
    empty.PostReorder();
    ASSERT_TRUE(m.Allocate(empty));
    EXPECT_EQ(m.m_nRows, 0);
    EXPECT_EQ(m.m_pValues, nullptr);
}

TEST(SkylineAllocate, RealGraphProfileUnderRandomLabels) {
    std::ifstream in("/work/shared/data/graphs/dwt_209.graph");
    if (!in)
        GTEST_SKIP() << "graph data not found";
    int n, nEdges;
    in >> n >> nEdges;
    std::vector<std::vector<LONG>> edges(nEdges, std::vector<LONG>(2));
    for (auto &e : edges)
        in >> e[0] >> e[1];

    CReorderMat graph(0);
    BuildGraph(graph, n, edges);
    std::vector<int> labels(n);
    for (int i = 0; i < n; i++)
        labels[i] = i;
    std::mt19937 rng(7);
    std::shuffle(labels.begin(), labels.end(), rng);
    SetLabels(graph, labels);

    // Row of the higher label reaches down to the lower one of each edge.
    std::vector<int> expected(n, 1);
    for (auto &e : edges) {
        int lo = std::min(labels[e[0]], labels[e[1]]), hi = std::max(labels[e[0]], labels[e[1]]);
        expected[hi] = std::max(expected[hi], hi - lo + 1);
    }
    CSkylineMatrix m;
    ASSERT_TRUE(m.Allocate(graph));
    EXPECT_EQ(Heights(m), expected);
    ExpectConsistent(m);
}

TEST(SkylineAssembly, AddValuesReadsTheUpperHalfInLabels) {
    CSkylineMatrix m;
    int full[] = {6, 21};
    ASSERT_TRUE(m.Allocate(full, 2));
    LONG dofs[] = {2, -1, 5};
    double element[] = {1.0, 2.0, 3.0, //
                        4.0, 5.0, 6.0, //
                        7.0, 8.0, 9.0};
    m.AddValues(dofs, element, 3);
    for (int j = 0; j < 6; j++)
        for (int i = 0; i <= j; i++) {
            double expected = 0.0;
            if (i == 2 && j == 2)
                expected = 1.0;
            else if (i == 2 && j == 5)
                expected = 3.0; // row 0, column 2; row 2, column 0 is not read
            else if (i == 5 && j == 5)
                expected = 9.0;
            EXPECT_EQ(m(i, j), expected) << i << "," << j;
        }

    // A repeated DOF sums both mirror entries.
    m = 0.0;
    LONG twice[] = {1, 1};
    double block[] = {1.0, 2.0, 4.0, 8.0};
    m.AddValues(twice, block, 2);
    EXPECT_EQ(m(1, 1), 15.0);

    // Labels in descending order: the entry with the row of lower label is read.
    m = 0.0;
    LONG descending[] = {4, 3};
    double pair[] = {1.0, 2.0, 3.0, 4.0};
    m.AddValues(descending, pair, 2);
    EXPECT_EQ(m(3, 4), 3.0);
    EXPECT_EQ(m(4, 4), 1.0);
    EXPECT_EQ(m(3, 3), 4.0);
}

TEST(SkylineAssembly, ZerosTouchNothingEvenOutsideTheProfile) {
    CSkylineMatrix m;
    int diagonal[] = {3, 3};
    ASSERT_TRUE(m.Allocate(diagonal, 2));
    LONG dofs[] = {0, 2};
    double element[] = {1.0, 0.0, -0.0, 2.0};
    m.AddValues(dofs, element, 2);
    EXPECT_EQ(Values(m), (std::vector<double>{1.0, 0.0, 2.0}));
}

namespace {
// Counts the element accesses: AddValues must reach them through the table.
class CCountingSkyline : public CSkylineMatrix {
public:
    int m_nAccesses = 0;
    double &operator()(int i, int j) override {
        m_nAccesses++;
        return CSkylineMatrix::operator()(i, j);
    }
};
} // namespace

TEST(SkylineAssembly, BasePointerReachesOverrides) {
    CCountingSkyline m;
    CVirtRealMat *pBase = &m;
    int full[] = {3, 6};
    ASSERT_TRUE(pBase->Allocate(full, 2));
    LONG dofs[] = {0, 1, 2};
    double element[9];
    for (int k = 0; k < 9; k++)
        element[k] = k + 1.0;
    pBase->AddValues(dofs, element, 3);
    EXPECT_EQ(m.m_nAccesses, 6);

    EXPECT_EQ(&(*pBase = 1.5), pBase);
    EXPECT_EQ(&(*pBase += 0.25), pBase);
    EXPECT_EQ(Values(m), std::vector<double>(6, 1.75));
}

TEST(SkylineClass, RecordCreationAndArchive) {
    EXPECT_EQ(CSkylineMatrix::classCSkylineMatrix.m_wSchema, 1u);
    CRuntimeClass *pClass = CRuntimeClass::FromName("CSkylineMatrix");
    ASSERT_EQ(pClass, RUNTIME_CLASS(CSkylineMatrix));
    std::unique_ptr<CObject> pObject(pClass->CreateObject());
    ASSERT_NE(pObject, nullptr);
    EXPECT_TRUE(pObject->IsKindOf(RUNTIME_CLASS(CVirtRealMat)));
    EXPECT_EQ(pObject->GetRuntimeClass(), RUNTIME_CLASS(CSkylineMatrix));

    // No contents of its own go through an archive: a shaped matrix comes back empty.
    CSkylineMatrix m;
    int band[] = {3, 2};
    ASSERT_TRUE(m.Allocate(band, 2));
    CMemFile file;
    {
        CArchive ar(&file, CArchive::store);
        ar << &m;
        ar.Close();
    }
    file.SeekToBegin();
    CSkylineMatrix *pRead = nullptr;
    {
        CArchive ar(&file, CArchive::load);
        ar >> pRead;
    }
    ASSERT_NE(pRead, nullptr);
    EXPECT_EQ(pRead->m_nRows, 0);
    EXPECT_EQ(pRead->m_pValues, nullptr);
    delete pRead;
}

#if defined(__SANITIZE_ADDRESS__)
// Let a huge request yield NULL instead of stopping the program.
extern "C" const char *__asan_default_options() {
    return "allocator_may_return_null=1:max_allocation_size_mb=1024";
}
#else
#include <sys/resource.h>
#include <unistd.h>
#endif

namespace {
// Caps the address space about 1 GB above its present size while alive.
class AddressSpaceCap {
public:
    AddressSpaceCap() {
#if !defined(__SANITIZE_ADDRESS__)
        getrlimit(RLIMIT_AS, &m_old);
        long nPages = 0;
        std::ifstream statm("/proc/self/statm");
        statm >> nPages;
        struct rlimit cap = m_old;
        cap.rlim_cur = (rlim_t)nPages * sysconf(_SC_PAGESIZE) + (1ul << 30);
        setrlimit(RLIMIT_AS, &cap);
#endif
    }
    ~AddressSpaceCap() {
#if !defined(__SANITIZE_ADDRESS__)
        setrlimit(RLIMIT_AS, &m_old);
#endif
    }

private:
#if !defined(__SANITIZE_ADDRESS__)
    struct rlimit m_old;
#endif
};
} // namespace

TEST(SkylineAllocate, FailureYieldsFalseAndLeavesAUsableObject) {
    CSkylineMatrix m;
    int tooManyValues[] = {1000, 400000000}; // 3.2 GB of values
    int tooManyRows[] = {600000000, 600000000};
    int band[] = {4, 2};
    {
        AddressSpaceCap cap;
        EXPECT_FALSE(m.Allocate(tooManyValues, 2));
        EXPECT_EQ(m.m_pValues, nullptr);
        // The same call again fails again; a small one afterwards works.
        EXPECT_FALSE(m.Allocate(tooManyValues, 2));
        EXPECT_TRUE(m.Allocate(band, 2));
        EXPECT_EQ(Heights(m), (std::vector<int>{1, 2, 2, 2}));
        ExpectConsistent(m);

        EXPECT_FALSE(m.Allocate(tooManyRows, 2));
        EXPECT_EQ(m.m_pHeights, nullptr);
        EXPECT_EQ(m.m_ppDiag, nullptr);
    }
    // Back to a small shape, also from a graph of the same order.
    int band2[] = {4, 2};
    EXPECT_TRUE(m.Allocate(band2, 2));
    ExpectConsistent(m);
    CReorderMat graph(0);
    BuildGraph(graph, 4, {{0, 3}});
    graph.PostReorder();
    EXPECT_TRUE(m.Allocate(graph));
    EXPECT_EQ(Heights(m), (std::vector<int>{1, 2, 2, 4}));
    ExpectConsistent(m);
}
