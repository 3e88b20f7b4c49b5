// The four minimum-degree numberings: labels, scripts, reports and their order, and what
// they leave alone.
#include "common/femtest.h"

typedef std::vector<LONG> Longs;

static const char kTrailer[] = "\r\n\r\nclose all;\r\n figure;\r\n spy(before);\r\n figure;\r\n "
                               "spy(after);\r\n r = symmmd(before);\r\nfigure;\r\n "
                               "spy(before(r,r));\r\n";

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

// At a report: its text and the script as it stands.
static const ScriptDir *s_pDir;
static std::string s_strReport, s_strScript;
static int Snapshot(const char *pszText) {
    s_strReport = pszText;
    s_strScript = s_pDir->Read();
    return IDOK;
}

static std::string Matrix(CReorderMat &g, const char *pszName) {
    CMemFile f;
    g.MatlabWrite(&f, pszName);
    return std::string(f.GetData().begin(), f.GetData().end());
}

TEST(MinDegree, SmallExamplesLabelsScriptsAndReports) {
    // Per graph the labels of variants 1 to 4: stars centred at 0 and at 3, a triangle
    // with a tail and an isolated vertex (where variant 4's chain goes on thanks to its
    // gap), one vertex, five vertices without edges, no vertices.
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
        {5, {}, std::vector<Longs>(4, Longs{0, 1, 2, 3, 4})},
        {0, {}, std::vector<Longs>(4)}};
    ScriptDir dir;
    s_pDir = &dir;
    AfxReportHandler pfnOld = AfxSetReportHandler(&Snapshot);
    for (const Case &c : cases) {
        for (int nVariant = 1; nVariant <= 4; nVariant++) {
            SCOPED_TRACE(testing::Message() << "variant " << nVariant << ", n = " << c.n);
            CReorderMat g(0);
            BuildGraph(g, c.n, c.elements);
            std::string strBefore = Matrix(g, "before");
            s_strReport.clear();
            RunVariant(g, nVariant, dir);
            EXPECT_EQ(Labels(g), c.labels[nVariant - 1]);
            // The report, shown only when the script is complete.
            EXPECT_TRUE(MatchesReport(s_strReport, "Used time reordering:   {T}\r\n"))
                << s_strReport;
            EXPECT_EQ(s_strScript, strBefore + Matrix(g, "after") + kTrailer);
        }
    }
    AfxSetReportHandler(pfnOld);
}

TEST(MinDegree, MeshGraphsKeepTheirAdjacency) {
#ifdef FEMMAT_CHECKED
    GTEST_SKIP() << "the checked build refuses an element that lists a DOF twice";
#endif
    // The envelope after each variant, as a plain scan of all vertices in every turn gives
    // it. The graph has two isolated vertices at the end and an element listing 0 twice,
    // which variant 4 reads without the loop at 0.
    struct Case {
        const char *pszName;
        int env[4];
    } cases[] = {{"dwt_59", {706, 1010, 728, 810}}, {"can_445", {38356, 46227, 65965, 119179}}};
    ScriptDir dir;
    ReportRecorder reports;
    for (const Case &c : cases) {
        SCOPED_TRACE(c.pszName);
        int n = 0;
        ElementList elements;
        ASSERT_TRUE(LoadGraphFile(c.pszName, n, elements));
        elements.push_back({0, 1, 0});
        CReorderMat g(0);
        BuildGraph(g, n + 2, elements);
        std::vector<Longs> rows;
        for (int i = 0; i < g.m_nRows; i++)
            rows.push_back(Row(g, i));
        for (int nVariant = 1; nVariant <= 4; nVariant++) {
            RunVariant(g, nVariant, dir);
            EXPECT_EQ(g.Env(NULL), c.env[nVariant - 1]) << nVariant;
            for (int i = 0; i < g.m_nRows; i++)
                ASSERT_EQ(Row(g, i), rows[i]) << nVariant << " row " << i;
        }
        EXPECT_FALSE(g.Check()); // the row of 0 holds 0 twice
    }
}

TEST(MinDegree, LongChainNeedsNoStack) {
    // On a path the first chain runs through every vertex.
    ScriptDir dir;
    ReportRecorder reports;
    ElementList edges;
    for (LONG i = 0; i + 1 < 200000; i++)
        edges.push_back({i, i + 1});
    CReorderMat g(0);
    BuildGraph(g, 200000, edges);
    g.MinDegReorder4();
    EXPECT_EQ(g.f_v(199999), 199999);
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

TEST(MinDegree, VirtualContractAndUnionOfAdjacencies) {
    Overrides g;
    int nSize = 4;
    EXPECT_TRUE(g.Allocate(&nSize, 1));
    EXPECT_NE(g.m_pInverse, nullptr); // made by the graph's own Alloc
    BuildGraph(g, 4, {{0, 1}, {0, 2}, {0, 3}});
    EXPECT_EQ(g.Env(NULL), 2 * 9);
    EXPECT_EQ(g.Env64(NULL), 2 * 9);
    // Star centred at 0: leaf 1, leaf 2, then the chain to 0 and 3: one union each.
    ScriptDir dir;
    ReportRecorder reports;
    g.MinDegReorder4();
    EXPECT_EQ(g.m_nUnions, 3);

    // Row 0 = {3, 2, 1}, row 1 = {0, 4, 3, 5}: the old row without 1, then 4 and 5.
    BuildGraph(g, 6, {{0, 3}, {0, 2}, {0, 1}, {1, 4}, {1, 3}, {1, 5}});
    EXPECT_EQ(g.UnionAdj_Ex_p_i(0, 1), 4);
    EXPECT_EQ(Row(g, 0), (Longs{3, 2, 4, 5}));
    EXPECT_EQ(Row(g, 1), (Longs{0, 4, 3, 5}));
}

TEST(MinDegree, WithoutAScript) {
    ReportRecorder reports;
    ScriptDir dir;
    CReorderMat g(0);
    BuildGraph(g, 4, {{3, 0}, {3, 1}, {3, 2}});
    // No file: nothing written anywhere, the report all the same.
    g.MinDegReorder(NULL);
    EXPECT_FALSE(dir.Exists());
    EXPECT_EQ(reports.Texts().size(), 1u);
    // A script that can't be created: the labels of that run untouched, nothing shown.
    CReorderMat::SetScriptName((dir.Script() + "/no/such/dir/Reord.m").c_str());
    g.MinDegReorder2();
    g.MinDegReorder3();
    g.MinDegReorder4();
    EXPECT_EQ(Labels(g), (Longs{1, 2, 3, 0}));
    EXPECT_EQ(reports.Texts().size(), 1u);
}
