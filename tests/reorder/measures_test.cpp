// Measures of a numbering, the inverse table and the two text outputs.
#include "reorder_test_util.h"

#include <algorithm>

typedef std::vector<LONG> Longs;

static std::string Bytes(const CMemFile &f) {
    return std::string(f.GetData().begin(), f.GetData().end());
}

TEST(Measures, PathUnderTwoNumberings) {
    TestGraph g;
    BuildGraph(g, 3, {{0, 1}, {1, 2}});
    int nBand = -1, v = -1;
    EXPECT_EQ(g.B_f(0), 1);
    EXPECT_EQ(g.B_f(1), 1);
    EXPECT_EQ(g.B_f(2), 1);
    EXPECT_EQ(g.Env(&nBand), 3);
    EXPECT_EQ(nBand, 1);
    EXPECT_EQ(g.GetB(v), 1);
    EXPECT_EQ(v, 0);

    g.Move(1, 2); // labels 0, 2, 1
    EXPECT_EQ(g.B_f(0), 2);
    EXPECT_EQ(g.B_f(1), 2);
    EXPECT_EQ(g.B_f(2), 1);
    EXPECT_EQ(g.Env(&nBand), 5);
    EXPECT_EQ(g.Env(NULL), 5);
    EXPECT_EQ(nBand, 2);
    EXPECT_EQ(g.GetB(v), 2);
    EXPECT_EQ(v, 0);

    g.PostReorder();
    EXPECT_EQ(g.f_v_inv(0), 0);
    EXPECT_EQ(g.f_v_inv(1), 2);
    EXPECT_EQ(g.f_v_inv(2), 1);
}

TEST(Measures, GetBGivesTheFirstVertexReachingTheBandwidth) {
    TestGraph g;
    // Vertex 3 alone has the long edge; vertices 0 and 1 have none.
    BuildGraph(g, 6, {{3, 5}, {4, 5}});
    int v = -1;
    EXPECT_EQ(g.GetB(v), 2);
    EXPECT_EQ(v, 3);
    EXPECT_EQ(g.B_f(0), 0);
}

// Bandwidth at each node of an n by n quad grid, from the geometry alone.
static int GridBandAt(int n, int r, int c) {
    int nBest = 0;
    for (int dr = -1; dr <= 1; dr++) {
        for (int dc = -1; dc <= 1; dc++) {
            int r2 = r + dr, c2 = c + dc;
            if ((dr || dc) && r2 >= 0 && r2 <= n && c2 >= 0 && c2 <= n)
                nBest = std::max(nBest, std::abs(dr * (n + 1) + dc));
        }
    }
    return nBest;
}

TEST(Measures, GridMeasuresAgreeWithTheGeometry) {
    for (int n : {1, 2, 5, 12}) {
        TestGraph g;
        BuildGraph(g, (n + 1) * (n + 1), GridElements(n));
        int nEnv = 0;
        for (int r = 0; r <= n; r++) {
            for (int c = 0; c <= n; c++) {
                int b = GridBandAt(n, r, c);
                EXPECT_EQ(g.B_f(r * (n + 1) + c), b);
                nEnv += b;
            }
        }
        // Only the corners (0, n) and (n, 0) lack a diagonal neighbour at n + 2.
        int nNodes = (n + 1) * (n + 1);
        EXPECT_EQ(nEnv, (nNodes - 2) * (n + 2) + 2 * (n + 1));
        int nBand = 0, v = -1;
        EXPECT_EQ(g.Env(&nBand), nEnv);
        EXPECT_EQ(nBand, n + 2);
        EXPECT_EQ(g.GetB(v), n + 2);
        EXPECT_EQ(v, 0);
        // Reversed labels measure the same.
        for (int i = 0; i < nNodes / 2; i++)
            g.Move(i, nNodes - 1 - i);
        EXPECT_EQ(g.Env(&nBand), nEnv);
        EXPECT_EQ(nBand, n + 2);
    }
}

TEST(Measures, EmptyGraph) {
    CReorderMat g(0);
    g.Alloc(0);
    int nBand = -1, v = 7;
    EXPECT_EQ(g.Env(&nBand), 0);
    EXPECT_EQ(nBand, 0);
    EXPECT_EQ(g.GetB(v), 0);
    EXPECT_EQ(v, 0);
    EXPECT_TRUE(g.Check());
    g.PostReorder();
    EXPECT_EQ(g.m_pInverse, nullptr);
    CMemFile f;
    g.MatlabWrite(&f, "before");
    EXPECT_EQ(Bytes(f), "before = sparse(0,0);\r\n");
    CMemFile plot;
    g.WritePlotASCII(&plot);
    EXPECT_EQ(plot.GetLength(), 0u);
}

TEST(Measures, MatlabWriteLinesByLabel) {
    CReorderMat one(0);
    BuildGraph(one, 1, {});
    CMemFile f1;
    one.MatlabWrite(&f1, "m");
    EXPECT_EQ(Bytes(f1), "m = sparse(1,1);\r\nm(1,1) = 1;\r\n");

    TestGraph g;
    BuildGraph(g, 3, {{0, 1}, {1, 2}});
    g.Move(1, 2); // labels 0, 2, 1
    CMemFile f;
    g.MatlabWrite(&f, "after");
    EXPECT_EQ(Bytes(f), "after = sparse(3,3);\r\n"
                        "after(1,3) = 2;\r\nafter(1,1) = 1;\r\n"
                        "after(3,1) = 1;\r\nafter(3,2) = 3;\r\nafter(3,3) = 2;\r\n"
                        "after(2,3) = 2;\r\nafter(2,2) = 3;\r\n");
}

TEST(Measures, PlotTableInLabelOrder) {
    TestGraph g;
    BuildGraph(g, 3, {{0, 1}, {1, 2}});
    g.Move(1, 2); // labels 0, 2, 1
    CMemFile f;
    g.WritePlotASCII(&f);
    // Off the diagonal a cell shows the neighbour's vertex from 1, on it the label from 1.
    EXPECT_EQ(Bytes(f), "      1   0      2\r\n"
                        "   0      2      2\r\n"
                        "      1      3      3\r\n");

    // Labels nobody holds get no line.
    g.InitLabels(0);
    CMemFile f2;
    g.WritePlotASCII(&f2);
    EXPECT_EQ(Bytes(f2), "      1   0   0\r\n");
}

// A derived class's B_f is what the measures see.
class DoubledBand : public CReorderMat {
public:
    DoubledBand() : CReorderMat(0) {}
    int B_f(int v) override { return 2 * CReorderMat::B_f(v); }
};

TEST(Measures, MeasuresGoThroughTheTable) {
    DoubledBand g;
    BuildGraph(g, 3, {{0, 1}, {1, 2}});
    int nBand = 0, v = -1;
    EXPECT_EQ(g.Env(&nBand), 6);
    EXPECT_EQ(nBand, 2);
    EXPECT_EQ(g.GetB(v), 2);
}
