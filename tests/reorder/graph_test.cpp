// The node graph: the two passes, Alloc and Copy, the measures and the two text outputs.
#include "common/femtest.h"

typedef std::vector<LONG> Longs;

// Opens the protected operations the tests look at.
class TestGraph : public CReorderMat {
public:
    TestGraph() : CReorderMat(0) {}
    using CReorderMat::B_f;
    using CReorderMat::Move;
};

static Longs Row(const CArrayArray<LONG> &g, int i) {
    return Longs(g.m_ppRows[i], g.m_ppRows[i] + g.m_pRowSizes[i]);
}

static std::string Bytes(const CMemFile &f) {
    return std::string(f.GetData().begin(), f.GetData().end());
}

TEST(NodeGraph, TwoPassesStoreSharedEdgesOnceAndKeepSpareSlots) {
    CReorderMat g(0);
    // {3, 5} twice, a negative entry, a single-entry element, a triangle.
    ElementList elements = {{3, -1, 5}, {5, 3}, {4}, {0, 1, 2}};
    g.Alloc(6);
    for (auto &e : elements)
        g.InsertDOFs(e.data(), 0, (int)e.size());
    EXPECT_EQ(Longs(g.m_pRowSizes, g.m_pRowSizes + 6), (Longs{2, 2, 2, 2, 0, 2}));
    g.Init();
    for (auto &e : elements)
        g.InsertDOFs(e.data(), 1, (int)e.size());

    std::vector<Longs> rows = {{1, 2}, {0, 2}, {0, 1}, {5}, {}, {3}};
    for (int i = 0; i < 6; i++)
        EXPECT_EQ(Row(g, i), rows[i]) << i;
    EXPECT_TRUE(g.m_ppRows[3][1] == -1 && g.m_ppRows[5][1] == -1);
    EXPECT_EQ(g.Find(-1, 3), -1); // the spare slot is not an entry
    EXPECT_EQ(g.Find(2, 1), 1);
    EXPECT_TRUE(g.Check());
}

TEST(NodeGraph, CopyIsExactAndAllocOfTheSameSizeResets) {
    CReorderMat g(1);
    // Rows 0 and 1 have spare capacity (the shared edge); row 3 has no neighbour.
    BuildGraph(g, 4, {{0, 1}, {1, 0}, {1, 2}});
    CArrayArray<LONG> copy;
    int sizes[2] = {7, 3};
    EXPECT_TRUE(copy.Allocate(sizes, 2));
    copy.Copy(g);
    ASSERT_EQ(copy.m_nRows, 4);
    for (int i = 0; i < 4; i++)
        EXPECT_EQ(Row(copy, i), Row(g, i));

    std::swap(g.m_pLabels[0], g.m_pLabels[3]);
    g.m_pInverse[2] = 7;
    // Same size: identity labels, zeroed inverse, rows gone.
    g.Alloc(4);
    EXPECT_EQ(Longs(g.m_pLabels, g.m_pLabels + 4), (Longs{0, 1, 2, 3}));
    EXPECT_EQ(Longs(g.m_pInverse, g.m_pInverse + 4), (Longs{0, 0, 0, 0}));
    for (int i = 0; i < 4; i++)
        EXPECT_TRUE(g.m_ppRows[i] == nullptr && g.m_pRowSizes[i] == 0);
}

TEST(Measures, PathAndIsolatedVertices) {
    TestGraph g;
    BuildGraph(g, 3, {{0, 1}, {1, 2}});
    // Identity, then labels 0, 2, 1: B_f of each vertex, Env, bandwidth.
    int nBand = -1, v = -1;
    for (Longs expect : {Longs{1, 1, 1, 3, 1}, Longs{2, 2, 1, 5, 2}}) {
        for (int i = 0; i < 3; i++)
            EXPECT_EQ(g.B_f(i), expect[i]);
        EXPECT_EQ(g.Env(&nBand), expect[3]);
        EXPECT_EQ(nBand, expect[4]);
        EXPECT_EQ(g.GetB(v), expect[4]);
        EXPECT_EQ(v, 0);
        g.Move(1, 2);
    }
    // Only vertex 3 reaches the bandwidth; isolated vertices measure 0.
    TestGraph h;
    BuildGraph(h, 6, {{3, 5}, {4, 5}});
    EXPECT_EQ(h.GetB(v), 2);
    EXPECT_EQ(v, 3);
    EXPECT_EQ(h.B_f(0), 0);
}

TEST(Measures, GridOfQuads) {
    for (int n : {1, 2, 5, 12}) {
        ElementList quads;
        for (LONG r = 0; r < n; r++) {
            for (LONG c = 0; c < n; c++) {
                LONG a = r * (n + 1) + c;
                quads.push_back({a, a + 1, a + n + 2, a + n + 1});
            }
        }
        int nNodes = (n + 1) * (n + 1);
        TestGraph g;
        BuildGraph(g, nNodes, quads);
        // Row by row, a node's farthest neighbour is a diagonal one, n + 2 away, except at
        // the corners (0, n) and (n, 0), which only reach n + 1 straight up or down.
        for (int v = 0; v < nNodes; v++)
            EXPECT_EQ(g.B_f(v), v == n || v == nNodes - 1 - n ? n + 1 : n + 2) << v;
        int nBand = 0, v = -1;
        EXPECT_EQ(g.Env(&nBand), (nNodes - 2) * (n + 2) + 2 * (n + 1));
        EXPECT_EQ(nBand, n + 2);
        EXPECT_EQ(g.GetB(v), n + 2);
        EXPECT_EQ(v, 0);
    }
}

TEST(Outputs, ScriptMatrixAndPlotTable) {
    TestGraph g;
    BuildGraph(g, 3, {{0, 1}, {1, 2}});
    g.Move(1, 2); // labels 0, 2, 1
    CMemFile script, plot, empty;
    g.MatlabWrite(&script, "after");
    EXPECT_EQ(Bytes(script), "after = sparse(3,3);\r\n"
                             "after(1,3) = 2;\r\nafter(1,1) = 1;\r\n"
                             "after(3,1) = 1;\r\nafter(3,2) = 3;\r\nafter(3,3) = 2;\r\n"
                             "after(2,3) = 2;\r\nafter(2,2) = 3;\r\n");
    // Off the diagonal a cell shows the neighbour's vertex from 1, on it the label from 1.
    g.WritePlotASCII(&plot);
    EXPECT_EQ(Bytes(plot), "      1   0      2\r\n"
                           "   0      2      2\r\n"
                           "      1      3      3\r\n");

    g.Alloc(0);
    g.MatlabWrite(&empty, "before");
    g.WritePlotASCII(&empty);
    EXPECT_EQ(Bytes(empty), "before = sparse(0,0);\r\n");
}
