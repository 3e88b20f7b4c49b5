// CSystSpMat: the run-time class, the row table, the Add forms, both Allocate forms,
// assembly and assignment.
#include "system_test_util.h"

TEST(CSystSpMat, TableSizeLinksAllocateBySizeAndAssignment) {
    // Created by name, or with no rows: empty.
    CObject *pCreated = CRuntimeClass::FromName("CSystSpMat")->CreateObject();
    ASSERT_EQ(pCreated->GetRuntimeClass(), RUNTIME_CLASS(CSystSpMat));
    CSystSpMat empty, zero(0), m(3), c(2);
    for (CSystSpMat *p : {&empty, &zero, static_cast<CSystSpMat *>(pCreated)})
        EXPECT_TRUE(p->GetRows() == 0 && p->m_pRowTable == NULL);
    delete pCreated;
    // The size holds without any cell.
    CSparseMatrix &base = m;
    EXPECT_EQ(base.GetRows(), 3);
    EXPECT_EQ(base.GetColumns(), 3);

    // The same size keeps the table and every cell, at 0.0; only pSizes[0] is read.
    Fill(m, 3, {1, 0, 2, 0, 0, 0, 0, 3, 0});
    CSparseMatrix::row *pTable = m.m_pRowTable;
    int sizes[4] = {3, 9, 9, 9};
    CVirtMat &frame = m;
    EXPECT_TRUE(frame.Allocate(sizes, 4));
    EXPECT_EQ(m.m_pRowTable, pTable);
    EXPECT_EQ(Dump(m), "(0,0)0 (0,2)0 (2,1)0");
    // Assignment sums the other's cells into the own table.
    c.Add(1, 0, 5.0);
    m = c;
    EXPECT_EQ(m.m_pRowTable, pTable);
    EXPECT_EQ(Dump(m), "(0,0)0 (0,2)0 (1,0)5 (2,1)0");
    // Another size makes a linked table without cells; a broken list is relinked from it.
    sizes[0] = 4;
    frame.Allocate(sizes, 1);
    Fill(m, 4, {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1});
    EXPECT_EQ(Dump(m), "(0,0)1 (1,1)1 (2,2)1 (3,3)1");
    m.m_pFirstRow = &m.m_pRowTable[2];
    m.m_pRowTable[0].m_pNext = NULL;
    m.FixPointers();
    EXPECT_EQ(Dump(m), "(0,0)1 (1,1)1 (2,2)1 (3,3)1");
    EXPECT_EQ(m.m_nRows + m.m_nColumns, 0); // the base's counts are not used
    // No rows, or Clear, empties it.
    sizes[0] = 0;
    frame.Allocate(sizes, 1);
    c.Clear();
    for (CSystSpMat *p : {&m, &c})
        EXPECT_TRUE(p->m_pRowTable == NULL && p->m_pFirstRow == NULL && p->GetRows() == 0);
}

TEST(CSystSpMat, AddFormsDropZerosAndOnlyWriteTheRowCursor) {
    CSystSpMat m(4), other(1);
    CSparseMatrix &base = m; // as the inherited algorithms call them
    // A row cursor into another matrix: never read, only overwritten, and not for a zero.
    CSparseMatrix::row *pRow = &other.m_pRowTable[0];
    CSparseMatrix::cell *pCell = NULL;
    base.Add(1, 2, 0.0, pCell);
    base.Add(2, 3, 0.0, pRow);
    base.Add(2, 3, 0.0, pRow, pCell);
    EXPECT_EQ(pRow, &other.m_pRowTable[0]);
    base.Add(2, 3, 1.0, pRow);
    EXPECT_EQ(pRow, &m.m_pRowTable[2]);
    pRow = &other.m_pRowTable[0];
    base.Add(0, 2, -1.0, pRow, pCell);
    EXPECT_EQ(pRow, &m.m_pRowTable[0]);
    base.Add(0, 0, 4.0, pCell = NULL);
    EXPECT_EQ(Dump(m), "(0,0)4 (0,2)-1 (2,3)1");
    EXPECT_EQ(Dump(other), "");
}

// A graph from elements with the given labels, PostReorder done.
static void Graph(CReorderMat &g, const ElementList &elements, std::vector<LONG> labels) {
    BuildGraph(g, (int)labels.size(), elements);
    for (int v = 0; v < (int)labels.size(); v++)
        g.m_pLabels[v] = labels[v];
    g.PostReorder();
}

TEST(CSystSpMat, AllocateFromTheGraphMakesTheUpperPatternInLabelOrder) {
    // A chain 0-1-2 and a lone vertex 3, labels reversed: row 0 is vertex 3.
    CReorderMat g(0), full(0);
    CSystSpMat m;
    Graph(g, {{0, 1}, {1, 2}, {3}}, {3, 2, 1, 0});
    EXPECT_TRUE(m.Allocate(g));
    EXPECT_EQ(Dump(m), "(0,0)0 (1,1)0 (1,2)0 (2,2)0 (2,3)0 (3,3)0");
    // The same size reads no graph: the pattern, a cell added to it, and the graph stay.
    m.Add(0, 3, 5.0);
    Graph(full, {{0, 1, 2, 3}}, {3, 2, 1, 0});
    const std::vector<LONG> before(full.m_ppRows[0], full.m_ppRows[0] + 3);
    m.Allocate(full);
    EXPECT_EQ(Dump(m), "(0,0)0 (0,3)0 (1,1)0 (1,2)0 (2,2)0 (2,3)0 (3,3)0");
    EXPECT_EQ(std::vector<LONG>(full.m_ppRows[0], full.m_ppRows[0] + 3), before);
}

TEST(CSystSpMat, AddValuesTakesTheUpperTriangleUnderTheSymmetricFlag) {
    LONG dofs[2] = {1, 0};
    double values[4] = {1.0, 2.0, 3.0, 4.0}; // a, b, c, d
    CSystSpMat s(2), f(2), z(6);
    {
        SymFlag sym(true);
        s.AddValues(dofs, values, 2);
    }
    f.AddValues(dofs, values, 2);
    EXPECT_EQ(Dump(s), "(0,0)4 (0,1)3 (1,1)1");
    EXPECT_EQ(Dump(f), "(0,0)4 (0,1)3 (1,0)2 (1,1)1");
    // Negative numbers keep the stride and take no part; a zero makes no cell, not even in
    // the first column of a row.
    LONG holes[3] = {5, -1, 2};
    double e[9] = {1, 2, 3, 4, 5, 6, 7, 8, 0.0};
    z.AddValues(holes, e, 3);
    EXPECT_EQ(Dump(z), "(2,5)7 (5,2)3 (5,5)1");
}
