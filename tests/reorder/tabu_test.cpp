// The tabu search: the middle of the higher neighbours, the candidate test, the chosen
// partner, the two searches, their report and script, and the time-seeded random start.
#include "common/femtest.h"

#include <algorithm>

typedef std::vector<LONG> Longs;

static const char kShortTrailer[] =
    "\r\n\r\nclose all;\r\n figure;\r\n spy(before);\r\n figure;\r\n spy(after);\r\n";

class TabuGraph : public CReorderMat {
public:
    TabuGraph() : CReorderMat(1) {}
    using CReorderMat::IsCandidate;
    using CReorderMat::mid;
    void SetLabels(const Longs &labels) { std::copy(labels.begin(), labels.end(), m_pLabels); }
    Longs Labels() const { return Longs(m_pLabels, m_pLabels + m_nRows); }
    Longs Marks() const { return Longs(m_pInverse, m_pInverse + m_nRows); }
};

static ElementList Path(int n) {
    ElementList edges;
    for (LONG i = 0; i + 1 < n; i++)
        edges.push_back({i, i + 1});
    return edges;
}

static bool IsPermutation(Longs labels) {
    std::sort(labels.begin(), labels.end());
    for (size_t i = 0; i < labels.size(); i++)
        if (labels[i] != (LONG)i)
            return false;
    return true;
}

static time_t s_nFixedTime = 0;
static time_t FixedTime() {
    return s_nFixedTime;
}

// Fixes the time the search seeds from while it lives.
class FixTime {
public:
    explicit FixTime(time_t nTime) : m_pfnOld(AfxSetTimeSource(&FixedTime)) {
        s_nFixedTime = nTime;
    }
    ~FixTime() { AfxSetTimeSource(m_pfnOld); }

private:
    AfxTimeSource m_pfnOld;
};

static std::string Matrix(CReorderMat &g, const char *pszName) {
    CMemFile f;
    g.MatlabWrite(&f, pszName);
    return std::string(f.GetData().begin(), f.GetData().end());
}

TEST(Tabu, MiddleCandidatesAndPartner) {
    TabuGraph g;
    BuildGraph(g, 3, Path(3));
    // Path 0-1-2: the middle of 1's higher neighbours is label 2, held by vertex 2; vertex 2
    // has none, (2 + 3 + 1) / 2 = 3 is nobody's label and the reference stays.
    int v = 1;
    EXPECT_EQ(g.mid(v), 2);
    EXPECT_EQ(v, 2);
    v = 2;
    EXPECT_EQ(g.mid(v), 3);
    EXPECT_EQ(v, 2);
    // Lower neighbours don't count: labels 0, 2, 1 give vertex 1 only itself as high end.
    g.SetLabels({0, 2, 1});
    v = 1;
    EXPECT_EQ(g.mid(v), 3);
    EXPECT_EQ(v, 1);

    // Path 0-1-2-3: the middle of 1 is 2, vertex 3 is as far from it as 1: not nearer, so
    // its mark decides, strictly below m_nZ; vertex 2 is nearer and passes even when tabu.
    BuildGraph(g, 4, Path(4));
    g.InitTabu(0);
    g.m_nZ = 0;
    EXPECT_FALSE(g.IsCandidate(1, 3));
    EXPECT_TRUE(g.IsCandidate(1, 2));
    g.m_nZ = 1;
    EXPECT_TRUE(g.IsCandidate(1, 3));
    g.m_pInverse[3] = 1; // a mark equal to the counter: not a candidate, yet not tabu
    EXPECT_FALSE(g.IsCandidate(1, 3));
    g.m_pInverse[2] = 50;
    EXPECT_TRUE(g.IsCandidate(1, 2));
    EXPECT_EQ(g.NumMovables(1, 50), 1); // vertex 0 (mark 0), not 2 (mark 50)
    EXPECT_EQ(g.NumMovables(1, 51), 2);

    // Vertex 0 with neighbours labelled 3 and 1: middle 2, both at distance 1, the first in
    // the row wins; a neighbour no nearer than the vertex itself never does.
    g.InitTabu(0);
    g.m_nZ = 0;
    BuildGraph(g, 4, {{0, 3}, {0, 1}, {1, 2}});
    EXPECT_EQ(g.GetClosestToMid(0), 3);
    BuildGraph(g, 4, {{0, 1}, {0, 3}, {1, 2}});
    EXPECT_EQ(g.GetClosestToMid(0), 1);
    EXPECT_EQ(g.GetClosestToMid(3), 3); // its middle (3 + 4 + 1) / 2 = 4 is nobody's

    BuildGraph(g, 1, {});
    EXPECT_EQ(g.GetClosestToMid(0), 0);
}

// Swaps with partners chosen by the test, then never again (random starts only).
class Scripted : public TabuGraph {
public:
    std::vector<std::pair<int, int>> m_partners; // (v, partner) for the first calls
    Longs m_starts;                              // every v asked about
    int GetClosestToMid(int v) override {
        m_starts.push_back(v);
        size_t k = m_starts.size() - 1;
        return k < m_partners.size() && m_partners[k].first == v ? m_partners[k].second : v;
    }
};

TEST(Tabu, SwitchStandsOnlyIfTheMovedBandDoesNotGrow) {
    ScriptDir dir;
    ReportRecorder reports;
    FixTime fix(1000);
    // Path 0-1-2-3, bandwidth 1 at vertex 0, envelope 4. Swapping 0 and 3 widens vertex 0's
    // band to 2: undone, and nothing of the search's outcome moves.
    Scripted g;
    BuildGraph(g, 4, Path(4));
    g.m_partners = {{0, 3}};
    g.TabuReorder();
    EXPECT_EQ(g.Labels(), (Longs{0, 1, 2, 3}));
    EXPECT_EQ(g.Marks(), (Longs{0, 0, 0, 0}));
    EXPECT_EQ(g.m_nZ, 4);
    ASSERT_EQ(reports.Texts().size(), 1u);
    EXPECT_TRUE(MatchesReport(reports.Texts()[0],
                              "Used time reordering:   {T}\r\n Old bandwidth. :   1\r\n"
                              " New bandwidth  :   1\r\n Nr. of switches:   0\r\n"
                              " Old env        :   4\r\n new env        :   4\r\n"))
        << reports.Texts()[0];
    // The trial numbering's bandwidth vertex is the next start: 0 labelled 3 sets 2.
    EXPECT_EQ(g.m_starts[1], 0);

    // Labels 1, 0, 2, 3: bandwidth 2 first reached at vertex 1, envelope 1 + 2 + 2 + 1.
    // Swapping 1 and 0 back stands: both marked with turn 0 plus a tenure of 1.
    Scripted h;
    BuildGraph(h, 4, Path(4));
    h.SetLabels({1, 0, 2, 3});
    h.m_partners = {{1, 0}};
    reports.Texts().clear();
    h.TabuReorder();
    EXPECT_EQ(h.Labels(), (Longs{0, 1, 2, 3}));
    EXPECT_EQ(h.Marks(), (Longs{1, 1, 0, 0}));
    EXPECT_TRUE(MatchesReport(reports.Texts()[0],
                              "Used time reordering:   {T}\r\n Old bandwidth. :   2\r\n"
                              " New bandwidth  :   1\r\n Nr. of switches:   1\r\n"
                              " Old env        :   6\r\n new env        :   4\r\n"))
        << reports.Texts()[0];
}

TEST(Tabu, RandomStartsFollowTheSeededTime) {
    ScriptDir dir;
    ReportRecorder reports;
    // Every turn a random start: (rand() * n - 1) / 32767 from the generator seeded with the
    // time. 70000 vertices take the product past 32 bits (UBSan would stop here).
    for (int n : {5, 70000}) {
        Scripted g;
        BuildGraph(g, n, {});
        FixTime fix(123456789);
        g.TabuReorder();
        ASSERT_EQ((int)g.m_starts.size(), n);
        AfxSrand(123456789);
        EXPECT_EQ(g.m_starts[0], 0); // GetB's vertex of an edgeless graph
        for (int k = 1; k < n; k++) {
            long long r = AfxRand();
            ASSERT_EQ(g.m_starts[k], (r * n - 1) / 32767) << k;
            ASSERT_LT(g.m_starts[k], n);
        }
    }
}

TEST(Tabu, SearchIsPinnedByTheTimeAndLeavesAPermutation) {
    ScriptDir dir;
    ReportRecorder reports;
    // Path of 8 with labels 6 and 1 out of place. Turn 0 swaps vertices 0 and 1 (band 6
    // either way, so it stands); vertex 0 then has no higher neighbour and no candidate,
    // and the rest of the run hangs on the random starts.
    auto Run = [&](time_t nTime) {
        TabuGraph g;
        BuildGraph(g, 8, Path(8));
        g.SetLabels({0, 6, 2, 3, 4, 5, 1, 7});
        FixTime fix(nTime);
        g.TabuReorder();
        EXPECT_TRUE(IsPermutation(g.Labels()));
        return g.Labels();
    };
    EXPECT_EQ(Run(1), (Longs{6, 0, 2, 3, 4, 5, 1, 7}));
    EXPECT_EQ(Run(4), (Longs{6, 0, 2, 3, 4, 1, 5, 7}));
    EXPECT_EQ(Run(7), (Longs{0, 6, 2, 3, 4, 5, 1, 7}));
    EXPECT_EQ(Run(4), Run(4));
}

TEST(Tabu, ReportsAndScriptsOfTinyGraphs) {
    ScriptDir dir;
    static const ScriptDir *s_pDir;
    static std::string s_strScriptAtReport;
    s_pDir = &dir;
    struct Snap {
        static int Take(const char *pszText) {
            ReportRecorder::Texts().push_back(pszText);
            s_strScriptAtReport = s_pDir->Read();
            return IDOK;
        }
    };
    ReportRecorder reports;
    AfxSetReportHandler(&Snap::Take);
    const char *pszZeros = "Used time reordering:   {T}\r\n Old bandwidth. :   0\r\n"
                           " New bandwidth  :   0\r\n Nr. of switches:   0\r\n"
                           " Old env        :   0\r\n new env        :   0\r\n";
    for (int n : {0, 1}) {
        SCOPED_TRACE(n);
        TabuGraph g;
        BuildGraph(g, n, {});
        std::string strBefore = Matrix(g, "before");
        reports.Texts().clear();
        g.TabuReorder();
        ASSERT_EQ(reports.Texts().size(), 1u);
        EXPECT_TRUE(MatchesReport(reports.Texts()[0], pszZeros));
        // The box comes before "after" is written.
        EXPECT_EQ(s_strScriptAtReport, strBefore);
        EXPECT_EQ(dir.Read(), strBefore + Matrix(g, "after") + kShortTrailer);
        EXPECT_EQ(g.m_nZ, n);
        g.TabuReorder2();
        EXPECT_EQ(g.m_nZ, 0);
    }
}

// Records every move with the counter TabuReorder2 shows while making it.
class Recorded : public TabuGraph {
public:
    std::vector<Longs> m_moves; // {a, b, m_nZ}
    void Move(int a, int b) override {
        m_moves.push_back({a, b, m_nZ});
        CReorderMat::Move(a, b);
    }
};

TEST(Tabu, SilentSearchWhateverMZHolds) {
    ReportRecorder reports;
    ScriptDir dir;
    // Path of 8 reversed in its middle: the same moves whether m_nZ was left at -1 (after a
    // Hager numbering), 0 (fresh) or 8 (after TabuReorder).
    Longs start = {0, 6, 2, 3, 4, 5, 1, 7};
    std::vector<std::vector<Longs>> runs;
    Longs labels;
    for (int nZ : {-1, 0, 8}) {
        Recorded g;
        BuildGraph(g, 8, Path(8));
        g.SetLabels(start);
        g.m_nZ = nZ;
        g.TabuReorder2();
        EXPECT_TRUE(IsPermutation(g.Labels()));
        EXPECT_EQ(g.m_nZ, (int)g.m_moves.size()); // the moves made
        // Tenure 0 below 100 vertices: each pair is marked with its own move's counter.
        for (size_t k = 0; k < g.m_moves.size(); k++)
            EXPECT_EQ(g.m_moves[k][2], (LONG)k + 1);
        for (auto &m : g.m_moves) {
            size_t nLast = 0;
            for (size_t k = 0; k < g.m_moves.size(); k++)
                if (g.m_moves[k][0] == m[0] || g.m_moves[k][1] == m[0])
                    nLast = k;
            EXPECT_EQ(g.m_pInverse[m[0]], (LONG)nLast);
        }
        runs.push_back(g.m_moves);
        labels = g.Labels();
    }
    EXPECT_EQ(runs[0], runs[1]);
    EXPECT_EQ(runs[0], runs[2]);
    ASSERT_FALSE(runs[0].empty());
    // First move: vertex 0 (label 0, band 6 to vertex 1, the first of the widest) swaps
    // with the holder of its middle label 6, vertex 1; its own middle lies above it.
    EXPECT_EQ(runs[0][0], (Longs{0, 1, 1}));

    // Without edges no vertex scores: no move at all.
    Recorded e;
    BuildGraph(e, 5, {});
    e.TabuReorder2();
    EXPECT_TRUE(e.m_moves.empty());
    EXPECT_EQ(e.Labels(), (Longs{0, 1, 2, 3, 4}));
    EXPECT_FALSE(dir.Exists()); // silent: no script, no report
    EXPECT_TRUE(reports.Texts().empty());
}

// mid as described: a pass over all vertices for the one holding the middle label.
class ScanMid : public TabuGraph {
public:
    int mid(int &v) override {
        int f = f_v(v), hi = f, lo = m_nRows;
        for (int j = 0; j < m_pRowSizes[v]; j++) {
            int l = f_v(m_ppRows[v][j]);
            if (l > f) {
                hi = std::max(hi, l);
                lo = std::min(lo, l);
            }
        }
        int m = (hi + lo + 1) / 2;
        for (int u = 0; u < m_nRows; u++)
            if (f_v(u) == m) {
                v = u;
                break;
            }
        return m;
    }
};

TEST(Tabu, RealGraphsKeepPermutationsAndTheirScripts) {
    ScriptDir dir;
    ReportRecorder reports;
    int n = 0;
    ElementList edges;
    ASSERT_TRUE(LoadGraphFile("dwt_234", n, edges));
    TabuGraph g;
    BuildGraph(g, n, edges);
    g.MinDegReorder2();
    std::string strBefore = Matrix(g, "before");
    g.InitTabu(0);
    g.TabuReorder();
    EXPECT_TRUE(IsPermutation(g.Labels()));
    EXPECT_EQ(dir.Read(), strBefore + Matrix(g, "after") + kShortTrailer);
    // The label table of the search agrees with a scan for the middle's vertex.
    ScanMid h;
    BuildGraph(h, n, edges);
    h.SetLabels(g.Labels());
    g.InitTabu(0);
    h.InitTabu(0);
    g.TabuReorder2();
    h.TabuReorder2();
    EXPECT_TRUE(IsPermutation(g.Labels()));
    EXPECT_EQ(g.Labels(), h.Labels());
    EXPECT_NE(g.m_nZ, 0);
}
