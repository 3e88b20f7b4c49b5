// The node graph: the two passes, Alloc and Copy, the row table helpers, the class frame.
#include "reorder_test_util.h"

typedef std::vector<LONG> Longs;

TEST(NodeGraph, TwoPassesStoreSharedEdgesOnceAndKeepSpareSlots) {
    TestGraph g;
    // {3, 5} twice (shared edge), a negative entry, a single-entry element, a triangle.
    ElementList elements = {{3, -1, 5}, {5, 3}, {4}, {0, 1, 2}};
    g.Alloc(6);
    for (auto &e : elements)
        g.InsertDOFs(e.data(), 0, (int)e.size());
    // Counting: every pair counts, the shared edge twice, the negative entry nothing.
    EXPECT_EQ(Longs(g.m_pRowSizes, g.m_pRowSizes + 6), (Longs{2, 2, 2, 2, 0, 2}));
    g.Init();
    for (int i = 0; i < 6; i++) {
        EXPECT_EQ(g.m_pRowSizes[i], 0);
        ASSERT_NE(g.m_ppRows[i], nullptr); // also the row of no entries
    }
    EXPECT_EQ(g.m_ppRows[3][0], -1);
    EXPECT_EQ(g.m_ppRows[3][1], -1);
    for (auto &e : elements)
        g.InsertDOFs(e.data(), 1, (int)e.size());

    EXPECT_EQ(Row(g, 0), (Longs{1, 2}));
    EXPECT_EQ(Row(g, 1), (Longs{0, 2}));
    EXPECT_EQ(Row(g, 2), (Longs{0, 1}));
    EXPECT_EQ(Row(g, 3), (Longs{5}));
    EXPECT_EQ(Row(g, 4), (Longs{}));
    EXPECT_EQ(Row(g, 5), (Longs{3}));
    EXPECT_EQ(g.m_ppRows[3][1], -1);
    EXPECT_EQ(g.m_ppRows[5][1], -1);
    // The spare -1 behind the count is not found.
    EXPECT_EQ(g.Find(-1, 3), -1);
    EXPECT_EQ(g.Find(5, 3), 0);
    EXPECT_EQ(g.Find(2, 1), 1);
    EXPECT_TRUE(g.Check());
    EXPECT_EQ(Labels(g), (Longs{0, 1, 2, 3, 4, 5}));

    // Any pass but 0 and 1 changes nothing.
    Longs e = {0, 4};
    g.InsertDOFs(e.data(), 2, 2);
    EXPECT_EQ(Row(g, 0), (Longs{1, 2}));
    EXPECT_EQ(Row(g, 4), (Longs{}));
    EXPECT_EQ(g.GetRows(), 6);
}

TEST(NodeGraph, CheckFindsARepeatedDegreeOfFreedom) {
    CReorderMat g(0);
    BuildGraph(g, 4, {{0, 1}, {2, 2, 3}});
    EXPECT_EQ(Row(g, 2), (Longs{2, 2, 3}));
    EXPECT_FALSE(g.Check());
}

TEST(NodeGraph, AllocResetsLabelsAndEmptiesRows) {
    TestGraph g(1);
    BuildGraph(g, 4, {{0, 1, 2, 3}});
    ASSERT_NE(g.m_pInverse, nullptr);
    g.Move(0, 3);
    g.m_pInverse[2] = 7;
    LONG *pLabels = g.m_pLabels;
    LONG *pInverse = g.m_pInverse;
    LONG **ppRows = g.m_ppRows;

    // Same size: same tables, identity labels, zeroed inverse, rows gone.
    g.Alloc(4);
    EXPECT_EQ(g.m_pLabels, pLabels);
    EXPECT_EQ(g.m_pInverse, pInverse);
    EXPECT_EQ(g.m_ppRows, ppRows);
    EXPECT_EQ(Labels(g), (Longs{0, 1, 2, 3}));
    EXPECT_EQ(Longs(g.m_pInverse, g.m_pInverse + 4), (Longs{0, 0, 0, 0}));
    for (int i = 0; i < 4; i++) {
        EXPECT_EQ(g.m_ppRows[i], nullptr);
        EXPECT_EQ(g.m_pRowSizes[i], 0);
    }

    // A new size: new identity labels; the graph can be built again.
    BuildGraph(g, 6, {{4, 5}});
    EXPECT_EQ(Labels(g), (Longs{0, 1, 2, 3, 4, 5}));
    EXPECT_EQ(Row(g, 4), (Longs{5}));

    // Size 0 on an object with vertices: labels and inverse freed, tables of no entries.
    g.Alloc(0);
    EXPECT_EQ(g.m_nRows, 0);
    EXPECT_EQ(g.m_pLabels, nullptr);
    EXPECT_EQ(g.m_pInverse, nullptr);
    EXPECT_NE(g.m_ppRows, nullptr);
    EXPECT_NE(g.m_pRowSizes, nullptr);
}

TEST(NodeGraph, EmptyObjectStaysWithoutTables) {
    CReorderMat g(0);
    g.Alloc(0);
    g.Init();
    EXPECT_EQ(g.m_ppRows, nullptr);
    EXPECT_EQ(g.m_pRowSizes, nullptr);
    EXPECT_EQ(g.m_pLabels, nullptr);
    EXPECT_EQ(g.m_pInverse, nullptr);
    // Mode 0 makes no inverse; PostReorder makes one when there are vertices.
    BuildGraph(g, 3, {{0, 1}, {1, 2}});
    EXPECT_EQ(g.m_pInverse, nullptr);
    g.PostReorder();
    ASSERT_NE(g.m_pInverse, nullptr);
    EXPECT_EQ(g.f_v_inv(2), 2);
}

TEST(NodeGraph, CopyGivesExactRows) {
    CReorderMat g(0);
    // Rows 0 and 1 have spare capacity (the shared edge); row 3 has no neighbour.
    BuildGraph(g, 4, {{0, 1}, {1, 0}, {1, 2}});
    ASSERT_EQ(g.m_ppRows[0][1], -1);

    CArrayArray<LONG> copy;
    int sizes[2] = {7, 3};
    EXPECT_TRUE(copy.Allocate(sizes, 2)); // a different size to start from
    EXPECT_EQ(copy.m_nRows, 7);
    EXPECT_EQ(copy.m_pRowSizes[6], 3);
    copy.Copy(g);
    ASSERT_EQ(copy.m_nRows, 4);
    EXPECT_EQ(Longs(copy.m_ppRows[0], copy.m_ppRows[0] + copy.m_pRowSizes[0]), (Longs{1}));
    EXPECT_EQ(Longs(copy.m_ppRows[1], copy.m_ppRows[1] + copy.m_pRowSizes[1]), (Longs{0, 2}));
    EXPECT_EQ(copy.m_pRowSizes[3], 0);
    EXPECT_NE(copy.m_ppRows[3], nullptr);

    // SetRowSize keeps an array of the same count; Clear leaves no table.
    LONG *pRow = copy.m_ppRows[1];
    copy.SetRowSize(1, 2);
    EXPECT_EQ(copy.m_ppRows[1], pRow);

    // Back into a graph of the same size: same contents, labels untouched.
    TestGraph h;
    BuildGraph(h, 4, {{2, 3}});
    h.Move(0, 1);
    h.Copy(copy);
    for (int i = 0; i < 4; i++)
        EXPECT_EQ(Row(h, i), Row(g, i));
    EXPECT_EQ(Labels(h), (Longs{1, 0, 2, 3}));
}

TEST(NodeGraph, ReportsTheRecordOfCVirtMat) {
    CReorderMat g(1);
    CArrayArray<LONG> a;
    EXPECT_EQ(g.GetRuntimeClass(), RUNTIME_CLASS(CVirtMat));
    EXPECT_EQ(a.GetRuntimeClass(), RUNTIME_CLASS(CVirtMat));
    // Through the base pointer, Allocate reaches the graph's own Alloc: labels appear.
    CVirtMat *p = &g;
    int sizes[1] = {5};
    EXPECT_TRUE(p->Allocate(sizes, 1));
    ASSERT_NE(g.m_pLabels, nullptr);
    EXPECT_EQ(g.f_v(4), 4);
    EXPECT_NE(g.m_pInverse, nullptr);
}
