// CSystSpMat: the row table, the Add forms, both Allocate forms, assembly, assignment and
// the run-time class.
#include "system_test_util.h"

#include "platform/archive.h"
#include "platform/file.h"
#include "reorder/reordermat.h"

#include <cstring>

typedef std::vector<Cell> Cells_t;

// Builds a graph from element lists and gives it labels (vertex -> label).
static void MakeGraph(CReorderMat &g, int n, const std::vector<std::vector<LONG>> &elements,
                      const std::vector<LONG> &labels) {
    g.Alloc(n);
    for (const auto &e : elements)
        g.InsertDOFs(const_cast<LONG *>(e.data()), 0, (int)e.size());
    g.Init();
    for (const auto &e : elements)
        g.InsertDOFs(const_cast<LONG *>(e.data()), 1, (int)e.size());
    for (int v = 0; v < n; v++)
        g.m_pLabels[v] = labels[v];
    g.PostReorder();
}

TEST(CSystSpMat, ConstructorsGiveALinkedTableOfTheirSize) {
    CSystSpMat empty, zero(0), negative(-3);
    for (CSystSpMat *m : {&empty, &zero, &negative}) {
        EXPECT_EQ(m->GetRows(), 0);
        EXPECT_EQ(m->GetColumns(), 0);
        EXPECT_EQ(m->m_pRowTable, nullptr);
        ExpectLinked(*m);
    }
    // The size holds even when no row has a cell.
    CSystSpMat m(4);
    EXPECT_EQ(m.GetRows(), 4);
    EXPECT_EQ(m.GetColumns(), 4);
    EXPECT_EQ(CellCount(m), 0);
    ExpectLinked(m);

    // Through the base pointer the overrides answer.
    CSparseMatrix *pBase = &m;
    EXPECT_EQ(pBase->GetRows(), 4);
    EXPECT_EQ(pBase->GetColumns(), 4);
}

TEST(CSystSpMat, AddFormsDropZerosAndWriteTheRowCursorOnlyWhenAdding) {
    CSystSpMat m(4);
    m.Add(1, 2, 0.0);
    CSparseMatrix::cell *pCell = NULL;
    m.Add(1, 2, 0.0, pCell);
    EXPECT_EQ(pCell, nullptr);
    CSparseMatrix::row *pRow = &m.m_pRowTable[3];
    m.Add(2, 3, 0.0, pRow);
    EXPECT_EQ(pRow, &m.m_pRowTable[3]);
    m.Add(2, 3, 0.0, pRow, pCell);
    EXPECT_EQ(pRow, &m.m_pRowTable[3]);
    EXPECT_EQ(CellCount(m), 0);

    // pRow is written, never read: a stale cursor on another row does no harm.
    m.Add(2, 3, 1.0, pRow);
    EXPECT_EQ(pRow, &m.m_pRowTable[2]);
    m.Add(2, 1, 2.0);
    m.Add(2, 3, 0.5, pCell);
    EXPECT_EQ(pCell, m.m_pRowTable[2].GetCell(3));
    pRow = NULL;
    m.Add(0, 0, 4.0, pRow, pCell = NULL);
    EXPECT_EQ(pRow, &m.m_pRowTable[0]);
    EXPECT_EQ(pCell, m.m_pRowTable[0].m_pFirstCell);
    m.Add(0, 2, -1.0, pRow, pCell);
    EXPECT_EQ(Cells(m), (Cells_t{{0, 0, 4.0}, {0, 2, -1.0}, {2, 1, 2.0}, {2, 3, 1.5}}));

    // Through the base's table, as the inherited algorithms call them.
    CSparseMatrix &base = m;
    base.Add(3, 3, 0.0, pRow = NULL, pCell = NULL);
    EXPECT_EQ(pRow, nullptr);
    base.Add(3, 3, 7.0, pRow, pCell);
    EXPECT_EQ(pRow, &m.m_pRowTable[3]);
    ExpectLinked(m);
}

TEST(CSystSpMat, AllocateBySizeKeepsOrDiscardsTheCells) {
    CSystSpMat m(3);
    m.Add(0, 0, 1.0);
    m.Add(0, 2, 2.0);
    m.Add(2, 1, 3.0);
    CSparseMatrix::row *pTable = m.m_pRowTable;

    // The same size: every cell stays, at 0.0, and the table is not remade.
    int n = 3;
    EXPECT_TRUE(m.Allocate(&n, 1));
    EXPECT_EQ(m.m_pRowTable, pTable);
    EXPECT_EQ(Cells(m), (Cells_t{{0, 0, 0.0}, {0, 2, 0.0}, {2, 1, 0.0}}));

    // Another size: a fresh table without cells; nDims and the other entries are not read.
    int sizes[4] = {4, 9, 9, 9};
    EXPECT_TRUE(m.Allocate(sizes, 4));
    EXPECT_EQ(m.GetRows(), 4);
    EXPECT_EQ(CellCount(m), 0);
    ExpectLinked(m);

    // No rows empties it, and so does Clear.
    m.Add(1, 1, 1.0);
    n = 0;
    EXPECT_TRUE(m.Allocate(&n, 0));
    EXPECT_EQ(m.GetRows(), 0);
    EXPECT_EQ(m.m_pRowTable, nullptr);
    ExpectLinked(m);
    CSystSpMat c(2);
    c.Add(1, 0, 5.0);
    c.Clear();
    EXPECT_EQ(c.GetRows(), 0);
    ExpectLinked(c);

    // Through the frame's pointer.
    CVirtMat *pFrame = &m;
    n = 2;
    EXPECT_TRUE(pFrame->Allocate(&n, 1));
    EXPECT_EQ(m.GetRows(), 2);
}

TEST(CSystSpMat, AllocateFromTheGraphMakesTheUpperPatternInLabelOrder) {
    // A chain 0-1-2 with a lone vertex 3.
    std::vector<std::vector<LONG>> elements = {{0, 1}, {1, 2}, {3}};
    CReorderMat g(0);
    MakeGraph(g, 4, elements, {0, 1, 2, 3});
    CSystSpMat m;
    EXPECT_TRUE(m.Allocate(g));
    EXPECT_EQ(
        Cells(m),
        (Cells_t{{0, 0, 0.0}, {0, 1, 0.0}, {1, 1, 0.0}, {1, 2, 0.0}, {2, 2, 0.0}, {3, 3, 0.0}}));
    ExpectLinked(m);
    // The graph's rows now hold sorted labels.
    EXPECT_EQ(std::vector<LONG>(g.m_ppRows[1], g.m_ppRows[1] + 2), (std::vector<LONG>{0, 2}));

    // Reversed labels give the same pattern: row 0 is vertex 3.
    CReorderMat h(0);
    MakeGraph(h, 4, elements, {3, 2, 1, 0});
    CSystSpMat r;
    r.Allocate(h);
    EXPECT_EQ(
        Cells(r),
        (Cells_t{{0, 0, 0.0}, {1, 1, 0.0}, {1, 2, 0.0}, {2, 2, 0.0}, {2, 3, 0.0}, {3, 3, 0.0}}));

    // The same size again reads nothing: values go to 0.0, the pattern and the graph stay.
    r.Add(1, 2, 5.0);
    r.Add(1, 3, 5.0);
    CReorderMat other(0);
    MakeGraph(other, 4, {{0, 1, 2, 3}}, {0, 1, 2, 3});
    LONG before[3];
    std::memcpy(before, other.m_ppRows[0], sizeof before);
    r.Allocate(other);
    EXPECT_EQ(CellCount(r), 7);
    EXPECT_EQ(*r.m_pRowTable[1].GetValue(3), 0.0);
    EXPECT_EQ(std::memcmp(before, other.m_ppRows[0], sizeof before), 0);

    // A graph of no vertices empties the matrix.
    CReorderMat none(0);
    none.Alloc(0);
    r.Allocate(none);
    EXPECT_EQ(r.GetRows(), 0);
    ExpectLinked(r);
}

TEST(CSystSpMat, AddValuesFollowsTheSymmetricFlag) {
    LONG dofs[2] = {1, 0};
    double values[4] = {1.0, 2.0, 3.0, 4.0}; // a, b, c, d
    {
        SymFlag sym(true);
        CSystSpMat m(2);
        m.AddValues(dofs, values, 2);
        EXPECT_EQ(Cells(m), (Cells_t{{0, 0, 4.0}, {0, 1, 3.0}, {1, 1, 1.0}}));
    }
    CSystSpMat m(2);
    m.AddValues(dofs, values, 2);
    EXPECT_EQ(Cells(m), (Cells_t{{0, 0, 4.0}, {0, 1, 3.0}, {1, 0, 2.0}, {1, 1, 1.0}}));
    // Twice sums, no new cell; zeros never make a cell, not even the first column of a row.
    m.AddValues(dofs, values, 2);
    EXPECT_EQ(Cells(m), (Cells_t{{0, 0, 8.0}, {0, 1, 6.0}, {1, 0, 4.0}, {1, 1, 2.0}}));
    CSystSpMat z(3);
    double zeros[9] = {0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1.0};
    LONG three[3] = {2, 0, 1};
    z.AddValues(three, zeros, 3);
    EXPECT_EQ(Cells(z), (Cells_t{{1, 1, 1.0}}));

    // Negative numbers keep the stride and take no part; n below 1 does nothing.
    CSystSpMat s(6);
    LONG holes[3] = {5, -1, 2};
    double e[9] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    s.AddValues(holes, e, 3);
    EXPECT_EQ(Cells(s), (Cells_t{{2, 2, 9.0}, {2, 5, 7.0}, {5, 2, 3.0}, {5, 5, 1.0}}));
    LONG absent[2] = {-1, -2};
    s.AddValues(absent, e, 2);
    s.AddValues(holes, e, 0);
    EXPECT_EQ(CellCount(s), 4);
}

TEST(CSystSpMat, AssignmentSumsIntoTheOwnTable) {
    CSystSpMat a(3), b(2);
    a.Add(0, 0, 1.0);
    b.Add(0, 0, 2.0);
    b.Add(1, 0, 3.0);
    CSparseMatrix::cell *pCell = NULL;
    b.m_pRowTable[1].Add(1, 0.0, pCell); // a stored zero is left out
    CSparseMatrix::row *pTable = a.m_pRowTable;
    a = b;
    EXPECT_EQ(a.m_pRowTable, pTable);
    EXPECT_EQ(a.GetRows(), 3);
    EXPECT_EQ(Cells(a), (Cells_t{{0, 0, 3.0}, {1, 0, 3.0}}));
    ExpectLinked(a);
    // The scalar forms are still reachable.
    a = 2.0;
    EXPECT_EQ(Cells(a), (Cells_t{{0, 0, 2.0}, {1, 0, 2.0}}));
}

TEST(CSystSpMat, FixPointersRelinksTheTable) {
    CSystSpMat m(3);
    m.m_pFirstRow = &m.m_pRowTable[2];
    m.m_pRowTable[2].m_pNext = &m.m_pRowTable[0];
    m.m_pRowTable[0].m_pNext = NULL;
    m.FixPointers();
    ExpectLinked(m);
    // The base's row reversal and back, as the substitution does, keeps the table.
    m.ReverseRows();
    EXPECT_EQ(m.m_pFirstRow, &m.m_pRowTable[2]);
    m.ReverseRows();
    ExpectLinked(m);
}

TEST(CSystSpMat, RunTimeClassCreatesAndReadsBack) {
    EXPECT_STREQ(CSystSpMat::classCSystSpMat.m_lpszClassName, "CSystSpMat");
    EXPECT_EQ(CSystSpMat::classCSystSpMat.m_wSchema, 1u);
    EXPECT_EQ(CSystSpMat::classCSystSpMat.m_pfnGetBaseClass(), RUNTIME_CLASS(CSparseMatrix));
    EXPECT_EQ(CRuntimeClass::FromName("CSystSpMat"), RUNTIME_CLASS(CSystSpMat));

    CObject *pObject = RUNTIME_CLASS(CSystSpMat)->CreateObject();
    ASSERT_NE(pObject, nullptr);
    EXPECT_TRUE(pObject->IsKindOf(RUNTIME_CLASS(CSparseMatrix)));
    EXPECT_EQ(static_cast<CSystSpMat *>(pObject)->GetRows(), 0);
    delete pObject;

    // No contents travel: what comes back is an empty matrix of the class.
    CSystSpMat m(2);
    m.Add(0, 0, 1.0);
    CMemFile file;
    {
        CArchive ar(&file, CArchive::store);
        ar << &m;
        ar.Close();
    }
    file.SeekToBegin();
    CArchive ar(&file, CArchive::load);
    CSystSpMat *pRead = NULL;
    ar >> pRead;
    ASSERT_NE(pRead, nullptr);
    EXPECT_EQ(pRead->GetRuntimeClass(), RUNTIME_CLASS(CSystSpMat));
    EXPECT_EQ(pRead->GetRows(), 0);
    delete pRead;
}
