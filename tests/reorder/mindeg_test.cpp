// The four minimum-degree numberings: labels, scripts, reports and their order, and what
// they leave alone.
#include "common/femtest.h"

#include <algorithm>
#include <numeric>

typedef std::vector<LONG> Longs;

static const char kTrailer[] = "\r\n\r\nclose all;\r\n figure;\r\n spy(before);\r\n figure;\r\n "
                               "spy(after);\r\n r = symmmd(before);\r\nfigure;\r\n "
                               "spy(before(r,r));\r\n";
static const char kReport[] = "Used time reordering:   {T}\r\n";

static Longs Labels(const CReorderMat &g) {
    return Longs(g.m_pLabels, g.m_pLabels + g.m_nRows);
}

static Longs Row(const CReorderMat &g, int i) {
    return Longs(g.m_ppRows[i], g.m_ppRows[i] + g.m_pRowSizes[i]);
}

// Variant 1 writes its script to the caller's file, here the script of dir.
static void RunVariant(CReorderMat &g, int nVariant, const ScriptDir &dir) {
    if (nVariant == 1) {
        CFile f(dir.Script().c_str(), CFile::modeCreate | CFile::modeReadWrite);
        g.MinDegReorder(&f);
    }
    if (nVariant == 2)
        g.MinDegReorder2();
    if (nVariant == 3)
        g.MinDegReorder3();
    if (nVariant == 4)
        g.MinDegReorder4();
}

// At each report: its text, the script as it stands, and whether the script is closed.
static const ScriptDir *s_pDir;
static std::vector<std::string> s_reports, s_scripts;
static std::vector<bool> s_closed;
static int Snapshot(const char *pszText) {
    s_reports.push_back(pszText);
    s_scripts.push_back(s_pDir->Read());
    CFile f;
    s_closed.push_back(f.Open(s_pDir->Script().c_str(), CFile::modeRead | CFile::shareExclusive));
    return IDOK;
}

TEST(MinDegree, ScriptsAndReportsPerVariant) {
    // The star with centre 3 and leaves 0, 1, 2, and the graph without vertices.
    const std::string strStar = "before = sparse(4,4);\r\n"
                                "before(1,4) = 4;\r\nbefore(1,1) = 1;\r\n"
                                "before(2,4) = 4;\r\nbefore(2,2) = 2;\r\n"
                                "before(3,4) = 4;\r\nbefore(3,3) = 3;\r\n"
                                "before(4,1) = 1;\r\nbefore(4,2) = 2;\r\nbefore(4,3) = 3;\r\n"
                                "before(4,4) = 4;\r\n";
    const std::string strEmpty = "before = sparse(0,0);\r\nafter = sparse(0,0);\r\n";
    ScriptDir dir;
    s_pDir = &dir;
    for (int nVariant = 1; nVariant <= 4; nVariant++) {
        s_reports.clear(), s_scripts.clear(), s_closed.clear();
        AfxReportHandler pfnOld = AfxSetReportHandler(&Snapshot);
        CReorderMat star(0), empty(0);
        BuildGraph(star, 4, {{3, 0}, {3, 1}, {3, 2}});
        RunVariant(star, nVariant, dir);
        empty.Alloc(0);
        RunVariant(empty, nVariant, dir);
        AfxSetReportHandler(pfnOld);

        // The after matrix as MatlabWrite gives it for the final labels.
        CMemFile after;
        star.MatlabWrite(&after, "after");
        std::string strAfter(after.GetData().begin(), after.GetData().end());
        std::string expected[2] = {strStar + strAfter + kTrailer, strEmpty + kTrailer};
        // Each report comes last: the script complete, and closed where the run owns it.
        ASSERT_EQ(s_reports.size(), 2u);
        for (int k = 0; k < 2; k++) {
            EXPECT_TRUE(MatchesReport(s_reports[k], kReport)) << s_reports[k];
            EXPECT_EQ(s_scripts[k], expected[k]) << nVariant;
            EXPECT_EQ(s_closed[k], nVariant > 1) << nVariant;
        }
        EXPECT_EQ(dir.Read(), expected[1]);
    }
}

TEST(MinDegree, LabelsOfTheSmallExamples) {
    // Per graph the labels of variants 1 to 4: stars centred at 0 and at 3, a triangle
    // with a tail and an isolated vertex (where variant 4's chain goes on thanks to its
    // gap), one vertex, five vertices without edges.
    struct Case {
        int n;
        ElementList elements;
        std::vector<Longs> labels;
    } cases[] = {
        {4, {{0, 1}, {0, 2}, {0, 3}}, {{0, 1, 2, 3}, {2, 0, 1, 3}, {2, 0, 1, 3}, {2, 0, 1, 3}}},
        {4, {{3, 0}, {3, 1}, {3, 2}}, {{1, 2, 3, 0}, {0, 1, 2, 3}, {1, 2, 3, 0}, {0, 1, 3, 2}}},
        {5,
         {{0, 1}, {0, 2}, {1, 2}, {2, 3}},
         {{3, 2, 1, 4, 0}, {2, 3, 4, 1, 0}, {0, 1, 3, 2, 4}, {3, 4, 2, 1, 0}}},
        {1, {}, {{0}, {0}, {0}, {0}}},
        {5, {}, std::vector<Longs>(4, Longs{0, 1, 2, 3, 4})}};
    ScriptDir dir;
    ReportRecorder reports;
    for (const Case &c : cases) {
        for (int nVariant = 1; nVariant <= 4; nVariant++) {
            CReorderMat g(0);
            BuildGraph(g, c.n, c.elements);
            RunVariant(g, nVariant, dir);
            EXPECT_EQ(Labels(g), c.labels[nVariant - 1]) << nVariant << ", n = " << c.n;
        }
    }
}

// Variants 1 to 3 the plain way, each turn scanning all vertices (variant 2 without its
// lower bound, which only shortens the scan).
static Longs FullScan(const CReorderMat &g, int nVariant) {
    int n = g.m_nRows;
    Longs f(n);
    for (int v = 0; v < n; v++)
        f[v] = -g.m_pRowSizes[v];
    for (int k = 0; k < (nVariant == 1 ? n - 1 : n); k++) {
        int nBest = n + 2, b = -1;
        for (int i = 0; i < n; i++) {
            if (f[i] > 0)
                continue;
            int nScore = nVariant == 2 ? -f[i] : 0, nHi = 0, nLo = n;
            for (LONG u : Row(g, i)) {
                if (nVariant == 1 && f[u] <= 0)
                    nScore = std::max(nScore, -f[u] - k);
                if (f[u] < 0)
                    nHi = std::max(nHi, (int)u), nLo = std::min(nLo, (int)u);
            }
            if (nVariant == 3)
                nScore = std::max(std::abs(nHi - k), std::abs(k - nLo));
            if (nScore < nBest)
                nBest = nScore, b = i;
        }
        if (nVariant == 1 && f[k] <= 0)
            f[k] = f[b];
        for (LONG u : Row(g, b))
            f[u] += nVariant > 1 && f[u] < 0;
        f[b] = k + 1;
    }
    for (LONG &l : f)
        l = (l <= 0 ? n : l) - 1;
    return f;
}

TEST(MinDegree, MeshGraphsAgreeWithFullScans) {
    ScriptDir dir;
    ReportRecorder reports;
    for (const char *pszName : {"dwt_59", "bcsstk01", "can_144", "dwt_234", "can_445"}) {
        SCOPED_TRACE(pszName);
        int n = 0;
        ElementList elements;
        ASSERT_TRUE(LoadGraphFile(pszName, n, elements));
        // Two isolated vertices at the end, and an element listing a vertex twice.
        elements.push_back({0, 1, 0});
        CReorderMat g(0);
        BuildGraph(g, n + 2, elements);
        std::vector<Longs> rows;
        for (int i = 0; i < g.m_nRows; i++)
            rows.push_back(Row(g, i));
        for (int nVariant = 1; nVariant <= 4; nVariant++) {
            RunVariant(g, nVariant, dir);
            if (nVariant < 4) {
                EXPECT_EQ(Labels(g), FullScan(g, nVariant)) << nVariant;
            } else {
                Longs sorted = Labels(g), identity(g.m_nRows);
                std::sort(sorted.begin(), sorted.end());
                std::iota(identity.begin(), identity.end(), 0);
                EXPECT_EQ(sorted, identity);
            }
            for (int i = 0; i < g.m_nRows; i++)
                ASSERT_EQ(Row(g, i), rows[i]) << nVariant << " row " << i;
        }
    }
}

TEST(MinDegree, LongChainNeedsNoStack) {
    // On a path the first chain runs through every vertex.
    ScriptDir dir;
    ReportRecorder reports;
    const int n = 200000;
    ElementList edges;
    for (LONG i = 0; i + 1 < n; i++)
        edges.push_back({i, i + 1});
    CReorderMat g(0);
    BuildGraph(g, n, edges);
    g.MinDegReorder4();
    for (int v = 0; v < n; v++)
        ASSERT_EQ(g.f_v(v), v);
}

TEST(MinDegree, UnionOfAdjacencies) {
    CReorderMat g(0);
    // Row 0 = {3, 2, 1}, row 1 = {0, 4, 3, 5}: the old row without 1, then 4 and 5.
    BuildGraph(g, 6, {{0, 3}, {0, 2}, {0, 1}, {1, 4}, {1, 3}, {1, 5}});
    EXPECT_EQ(g.UnionAdj_Ex_p_i(0, 1), 4);
    EXPECT_EQ(Row(g, 0), (Longs{3, 2, 4, 5}));
    EXPECT_EQ(Row(g, 1), (Longs{0, 4, 3, 5}));
    EXPECT_EQ(Row(g, 3), (Longs{0, 1})); // counts of marked vertices whole again
    // p the only neighbour of i, and i the only neighbour of p: row i is freed.
    CReorderMat pair(0);
    BuildGraph(pair, 2, {{0, 1}});
    EXPECT_EQ(pair.UnionAdj_Ex_p_i(0, 1), 0);
    EXPECT_EQ(pair.m_ppRows[0], nullptr);
    EXPECT_EQ(pair.m_pRowSizes[0], 0);
}

// Doubles every B_f and counts the unions: what the measures and the elimination reach.
class Overrides : public CReorderMat {
public:
    Overrides() : CReorderMat(1) {}
    int B_f(int v) override { return 2 * CReorderMat::B_f(v); }
    int UnionAdj_Ex_p_i(int i, int p) override {
        m_nUnions++;
        return CReorderMat::UnionAdj_Ex_p_i(i, p);
    }
    int m_nUnions = 0;
};

TEST(MinDegree, VirtualContract) {
    Overrides g;
    EXPECT_EQ(g.GetRuntimeClass(), RUNTIME_CLASS(CVirtMat));
    CVirtMat *p = &g;
    int nSize = 4;
    EXPECT_TRUE(p->Allocate(&nSize, 1)); // reaches the graph's own Alloc
    ASSERT_NE(g.m_pLabels, nullptr);
    ASSERT_NE(g.m_pInverse, nullptr);
    BuildGraph(g, 4, {{0, 1}, {0, 2}, {0, 3}});
    int nBand = 0, v = -1;
    EXPECT_EQ(g.Env(&nBand), 2 * 9);
    EXPECT_EQ(nBand, 2 * 3);
    EXPECT_EQ(g.GetB(v), 2 * 3);
    // Star centred at 0: leaf 1, leaf 2, then the chain to 0 and 3: one union each.
    ScriptDir dir;
    ReportRecorder reports;
    g.MinDegReorder4();
    EXPECT_EQ(g.m_nUnions, 3);
}

TEST(MinDegree, WithoutAScript) {
    ReportRecorder reports;
    ScriptDir dir;
    CReorderMat g(0);
    BuildGraph(g, 4, {{3, 0}, {3, 1}, {3, 2}});
    // No file: nothing written anywhere, the report all the same.
    g.MinDegReorder(NULL);
    EXPECT_EQ(Labels(g), (Longs{1, 2, 3, 0}));
    EXPECT_FALSE(dir.Exists());
    EXPECT_EQ(reports.Texts().size(), 1u);
    // A script that can't be created: labels untouched, nothing shown.
    CReorderMat::SetScriptName((dir.Script() + "/no/such/dir/Reord.m").c_str());
    g.MinDegReorder2();
    g.MinDegReorder3();
    g.MinDegReorder4();
    EXPECT_EQ(Labels(g), (Longs{1, 2, 3, 0}));
    EXPECT_EQ(reports.Texts().size(), 1u);
}
