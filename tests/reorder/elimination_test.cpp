// The eliminating minimum degree against the row-by-row walk it stands for, repeated degrees
// of freedom in every numbering, and the envelope past the int range.
#include "common/femtest.h"

#include <algorithm>

typedef std::vector<LONG> Longs;

// The walk as described, kept plain: a scan of all vertices per chain, rows unioned one
// neighbour at a time (a vertex's own entries left out).
static Longs WalkLabels(const CReorderMat &g) {
    int n = g.m_nRows;
    std::vector<Longs> rows(n);
    for (int i = 0; i < n; i++) {
        for (int j = 0; j < g.m_pRowSizes[i]; j++) {
            if (g.m_ppRows[i][j] != i)
                rows[i].push_back(g.m_ppRows[i][j]);
        }
    }
    Longs label(n, -1), mark(n, -1);
    auto Union = [&](int i, int p) {
        Longs r;
        for (LONG x : rows[i]) {
            mark[x] = i;
            if (x != p)
                r.push_back(x);
        }
        for (LONG x : rows[p]) {
            if (x != i && mark[x] != i)
                r.push_back(x);
        }
        for (LONG x : rows[i])
            mark[x] = -1;
        rows[i] = r;
        return (int)r.size();
    };
    for (int k = 0; k < n; k++) {
        int nMin = n, nGap = 0, v = -1;
        for (int u = 0; u < n; u++) {
            int d = (int)rows[u].size();
            if (label[u] >= 0)
                continue;
            if (d < nMin) {
                nGap = nMin - d;
                nMin = d;
                v = u;
            } else if (nGap >= d - nMin) {
                nGap = d - nMin;
            }
        }
        for (;;) {
            label[v] = k;
            int t = (int)rows[v].size() + nGap + 1, nNext = -1;
            for (LONG u : Longs(rows[v])) {
                if (label[u] >= 0)
                    continue;
                int d = Union(u, v);
                if (d < t) {
                    t = d;
                    nNext = u;
                }
            }
            if (nNext < 0)
                break;
            k++;
            v = nNext;
        }
    }
    return label;
}

static Longs Labels(const CReorderMat &g) {
    return Longs(g.m_pLabels, g.m_pLabels + g.m_nRows);
}

// Any derived class takes the walk through its table.
class Derived : public CReorderMat {
public:
    Derived() : CReorderMat(0) {}
};

// Grids of nx by ny (by nz) nodes with nPerNode degrees of freedom each: quads or two
// triangles per cell in 2D, hexahedra in 3D.
static ElementList Grid(int nx, int ny, int nz, bool bTriangles, int nPerNode, int &n) {
    ElementList elements;
    auto Dofs = [&](std::vector<int> nodes) {
        Longs d;
        for (int node : nodes)
            for (int c = 0; c < nPerNode; c++)
                d.push_back(node * nPerNode + c);
        return d;
    };
    int sx = nx, sxy = nx * ny;
    for (int z = 0; z + 1 < std::max(nz, 2); z++) {
        for (int y = 0; y + 1 < ny; y++) {
            for (int x = 0; x + 1 < nx; x++) {
                int a = z * sxy + y * sx + x, b = a + 1, c = a + sx + 1, d = a + sx;
                if (nz > 1)
                    elements.push_back(Dofs({a, b, c, d, a + sxy, b + sxy, c + sxy, d + sxy}));
                else if (bTriangles)
                    elements.push_back(Dofs({a, b, c})), elements.push_back(Dofs({a, c, d}));
                else
                    elements.push_back(Dofs({a, b, c, d}));
            }
        }
    }
    n = nx * ny * std::max(nz, 1) * nPerNode;
    return elements;
}

TEST(EliminatingMinDegree, SameLabelsAsTheRowByRowWalk) {
    ScriptDir dir;
    ReportRecorder reports;
    struct Case {
        std::string strName;
        int n;
        ElementList elements;
    };
    std::vector<Case> cases;
    for (const char *pszName : {"dwt_59", "dwt_209", "dwt_234", "can_144", "can_445", "bcsstk01",
                                "dwt_992", "can_1072", "bcsstk11", "dwt_2680"}) {
        Case c{pszName, 0, {}};
        ASSERT_TRUE(LoadGraphFile(pszName, c.n, c.elements)) << pszName;
        cases.push_back(c);
    }
    Case c;
    c.elements = Grid(31, 23, 1, false, 1, c.n), c.strName = "quads";
    cases.push_back(c);
    c.elements = Grid(17, 15, 1, true, 2, c.n), c.strName = "triangles, 2 per node";
    cases.push_back(c);
    c.elements = Grid(9, 8, 7, false, 1, c.n), c.strName = "hexahedra";
    cases.push_back(c);
    // Small random element lists: many ties, isolated vertices, elements sharing edges.
    srand(12);
    for (int s = 0; s < 300; s++) {
        c.strName = "random " + std::to_string(s);
        c.n = 1 + rand() % 40;
        c.elements.clear();
        for (int e = rand() % 60; e > 0; e--) {
            Longs el;
            for (int q = 2 + rand() % 4; q > 0; q--) {
                LONG x = rand() % c.n;
                if (std::find(el.begin(), el.end(), x) == el.end())
                    el.push_back(x);
            }
            c.elements.push_back(el);
        }
        cases.push_back(c);
    }

    for (const Case &t : cases) {
        SCOPED_TRACE(t.strName);
        CReorderMat g(0);
        BuildGraph(g, t.n, t.elements);
        Longs expect = WalkLabels(g);
        Longs row0(g.m_ppRows[0], g.m_ppRows[0] + g.m_pRowSizes[0]);
        g.MinDegReorder4();
        ASSERT_EQ(Labels(g), expect);
        EXPECT_EQ(Longs(g.m_ppRows[0], g.m_ppRows[0] + g.m_pRowSizes[0]), row0);
        // The labels at entry play no part.
        g.MinDegReorder4();
        ASSERT_EQ(Labels(g), expect);
        if (t.n < 1000) {
            Derived h;
            BuildGraph(h, t.n, t.elements);
            h.MinDegReorder4();
            ASSERT_EQ(Labels(h), expect);
        }
    }
}

static bool IsPermutation(Longs labels) {
    std::sort(labels.begin(), labels.end());
    for (size_t i = 0; i < labels.size(); i++) {
        if (labels[i] != (LONG)i)
            return false;
    }
    return true;
}

TEST(EliminatingMinDegree, RepeatedDegreesOfFreedomStillGiveAPermutation) {
#ifdef FEMMAT_CHECKED
    GTEST_SKIP() << "the checked build refuses a dof listed twice in one element";
#endif
    ScriptDir dir;
    ReportRecorder reports;
    // One dof listed twice; a repeat among others; a grid of quads collapsed to triangles
    // by listing a corner twice.
    int nGrid = 0;
    ElementList grid = Grid(6, 5, 1, false, 1, nGrid);
    for (size_t e = 0; e < grid.size(); e += 2)
        grid[e][3] = grid[e][0];
    struct Case {
        int n;
        ElementList elements;
    } cases[] = {{1, {{0, 0}}}, {2, {{0, 1, 0}}}, {3, {{0, 0, 1}, {1, 2, 2, 1}}}, {nGrid, grid}};
    for (const Case &c : cases) {
        SCOPED_TRACE(c.n);
        for (int nVariant = 0; nVariant <= 5; nVariant++) {
            SCOPED_TRACE(nVariant);
            CReorderMat plain(0);
            Derived derived;
            CReorderMat &g = nVariant == 5 ? derived : plain;
            BuildGraph(g, c.n, c.elements);
            ASSERT_FALSE(g.Check());
            if (nVariant == 1)
                g.MinDegReorder(NULL);
            if (nVariant == 2)
                g.MinDegReorder2();
            if (nVariant == 3)
                g.MinDegReorder3();
            if (nVariant >= 4) {
                // Numbered as if each element listed its dofs once.
                ElementList once = c.elements;
                for (Longs &e : once) {
                    Longs u;
                    for (LONG x : e)
                        if (std::find(u.begin(), u.end(), x) == u.end())
                            u.push_back(x);
                    e = u;
                }
                CReorderMat clean(0);
                BuildGraph(clean, c.n, once);
                g.MinDegReorder4();
                EXPECT_EQ(Labels(g), WalkLabels(clean));
            }
            ASSERT_TRUE(IsPermutation(Labels(g)));
            g.PostReorder();
            for (int v = 0; v < c.n; v++)
                EXPECT_EQ(g.f_v_inv(g.f_v(v)), v);
        }
    }
}

TEST(Measures, EnvelopePastTheIntRange) {
    // A star of 65536 vertices under the identity: the centre reaches 65535, leaf i
    // reaches i, together 2^31 + 32767.
    const int n = 65536;
    ElementList edges;
    for (LONG i = 1; i < n; i++)
        edges.push_back({0, i});
    CReorderMat g(0);
    BuildGraph(g, n, edges);
    int nBand = 0;
    EXPECT_EQ(g.Env64(&nBand), 2147516415LL);
    EXPECT_EQ(nBand, n - 1);
    // Env's int holds the sum modulo 2^32.
    EXPECT_EQ(g.Env(NULL), (int)(2147516415LL - 4294967296LL));
}
