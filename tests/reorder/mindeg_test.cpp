// The four minimum-degree numberings: results, scripts, reports, and what they leave alone.
#include "reorder_test_util.h"

#include <algorithm>
#include <random>
#include <regex>

typedef std::vector<LONG> Longs;

static const char kTrailer[] = "\r\n\r\nclose all;\r\n figure;\r\n spy(before);\r\n figure;\r\n "
                               "spy(after);\r\n r = symmmd(before);\r\nfigure;\r\n "
                               "spy(before(r,r));\r\n";

enum Variant { kMinDeg1, kMinDeg2, kMinDeg3, kMinDeg4 };

// Runs one variant; the first one writes to the script file through the caller's CFile.
static void RunVariant(CReorderMat &g, Variant nVariant, const ScriptDir &dir) {
    switch (nVariant) {
    case kMinDeg1: {
        CFile f(dir.Script().c_str(), CFile::modeCreate | CFile::modeReadWrite);
        g.MinDegReorder(&f);
        break;
    }
    case kMinDeg2:
        g.MinDegReorder2();
        break;
    case kMinDeg3:
        g.MinDegReorder3();
        break;
    case kMinDeg4:
        g.MinDegReorder4();
        break;
    }
}

static bool IsTimeReport(const std::string &s) {
    static const std::regex re("Used time reordering:   [0-9]+ m [0-9]{1,2}\\.[0-9]{2} s\r\n");
    return std::regex_match(s, re);
}

// The star with centre 3 and leaves 0, 1, 2: rows 0, 1, 2 = {3}, row 3 = {0, 1, 2}.
static const ElementList kStar3 = {{3, 0}, {3, 1}, {3, 2}};

static const char kStarBefore[] = "before = sparse(4,4);\r\n"
                                  "before(1,4) = 4;\r\nbefore(1,1) = 1;\r\n"
                                  "before(2,4) = 4;\r\nbefore(2,2) = 2;\r\n"
                                  "before(3,4) = 4;\r\nbefore(3,3) = 3;\r\n"
                                  "before(4,1) = 1;\r\nbefore(4,2) = 2;\r\nbefore(4,3) = 3;\r\n"
                                  "before(4,4) = 4;\r\n";

TEST(MinDegree, StarScriptsAndReportsPerVariant) {
    // Labels 1, 2, 3, 0: the centre first.
    const std::string strCentreFirst = "after = sparse(4,4);\r\n"
                                       "after(2,1) = 4;\r\nafter(2,2) = 1;\r\n"
                                       "after(3,1) = 4;\r\nafter(3,3) = 2;\r\n"
                                       "after(4,1) = 4;\r\nafter(4,4) = 3;\r\n"
                                       "after(1,2) = 1;\r\nafter(1,3) = 2;\r\nafter(1,4) = 3;\r\n"
                                       "after(1,1) = 4;\r\n";
    // The identity.
    std::string strIdentity =
        std::regex_replace(std::string(kStarBefore), std::regex("before"), "after");
    // Labels 0, 1, 3, 2.
    const std::string strLastTwoSwapped = "after = sparse(4,4);\r\n"
                                          "after(1,3) = 4;\r\nafter(1,1) = 1;\r\n"
                                          "after(2,3) = 4;\r\nafter(2,2) = 2;\r\n"
                                          "after(4,3) = 4;\r\nafter(4,4) = 3;\r\n"
                                          "after(3,1) = 1;\r\nafter(3,2) = 2;\r\n"
                                          "after(3,4) = 3;\r\nafter(3,3) = 4;\r\n";
    struct Case {
        Variant nVariant;
        Longs labels;
        std::string strAfter;
    } cases[] = {{kMinDeg1, {1, 2, 3, 0}, strCentreFirst},
                 {kMinDeg2, {0, 1, 2, 3}, strIdentity},
                 {kMinDeg3, {1, 2, 3, 0}, strCentreFirst},
                 {kMinDeg4, {0, 1, 3, 2}, strLastTwoSwapped}};
    for (const Case &c : cases) {
        SCOPED_TRACE(c.nVariant);
        ScriptDir dir;
        ReportRecorder reports;
        CReorderMat g(0);
        BuildGraph(g, 4, kStar3);
        RunVariant(g, c.nVariant, dir);
        EXPECT_EQ(Labels(g), c.labels);
        EXPECT_EQ(dir.Read(), kStarBefore + c.strAfter + kTrailer);
        ASSERT_EQ(reports.Texts().size(), 1u);
        EXPECT_TRUE(IsTimeReport(reports.Texts()[0])) << reports.Texts()[0];
    }
}

TEST(MinDegree, StarCentredAtZero) {
    // The centre's degree falls with each numbered leaf under variants 2 and 4.
    for (Variant nVariant : {kMinDeg2, kMinDeg4}) {
        ScriptDir dir;
        ReportRecorder reports;
        CReorderMat g(0);
        BuildGraph(g, 4, {{0, 1}, {0, 2}, {0, 3}});
        RunVariant(g, nVariant, dir);
        EXPECT_EQ(Labels(g), (Longs{2, 0, 1, 3}));
    }
}

TEST(MinDegree, SmallGraphs) {
    for (Variant nVariant : {kMinDeg1, kMinDeg2, kMinDeg3, kMinDeg4}) {
        SCOPED_TRACE(nVariant);
        ScriptDir dir;
        ReportRecorder reports;

        // No vertices: empty matrices, the trailer, a report.
        CReorderMat empty(0);
        empty.Alloc(0);
        RunVariant(empty, nVariant, dir);
        EXPECT_EQ(dir.Read(),
                  std::string("before = sparse(0,0);\r\nafter = sparse(0,0);\r\n") + kTrailer);
        EXPECT_EQ(reports.Texts().size(), 1u);

        CReorderMat one(1);
        BuildGraph(one, 1, {});
        RunVariant(one, nVariant, dir);
        EXPECT_EQ(Labels(one), (Longs{0}));

        // Without edges variants 2 and 4 keep the vertex order.
        CReorderMat loose(0);
        BuildGraph(loose, 5, {});
        RunVariant(loose, nVariant, dir);
        EXPECT_TRUE(IsPermutation(loose));
        if (nVariant == kMinDeg2 || nVariant == kMinDeg4) {
            EXPECT_EQ(Labels(loose), (Longs{0, 1, 2, 3, 4}));
        }
        EXPECT_EQ(reports.Texts().size(), 3u);
    }
}

// Variants 1 to 3 as described: every turn scans the vertices. The library finds the same
// vertex without the scan; these are the references it is checked against.
static Longs ReferenceMinDeg1(const CReorderMat &g) {
    int n = g.m_nRows;
    Longs f(n);
    for (int v = 0; v < n; v++)
        f[v] = -g.m_pRowSizes[v];
    for (int k = 0; k < n - 1; k++) {
        int nBest = n + 2, b = -1;
        for (int i = 0; i < n; i++) {
            if (f[i] > 0)
                continue;
            int nScore = 0;
            for (LONG u : Row(g, i))
                nScore = std::max(nScore, f[u] <= 0 ? -f[u] - k : 0);
            if (nScore < nBest) {
                nBest = nScore;
                b = i;
            }
        }
        if (f[k] <= 0)
            f[k] = f[b];
        f[b] = k + 1;
    }
    for (int v = 0; v < n; v++)
        f[v] = (f[v] <= 0 ? n : f[v]) - 1;
    return f;
}

static Longs ReferenceMinDeg2(const CReorderMat &g) {
    int n = g.m_nRows;
    Longs f(n);
    int nBound = n, nCeiling = 0;
    for (int v = 0; v < n; v++) {
        f[v] = -g.m_pRowSizes[v];
        nBound = std::min(nBound, (int)g.m_pRowSizes[v]);
        nCeiling = std::max(nCeiling, g.m_pRowSizes[v] + 1);
    }
    for (int k = 0; k < n; k++) {
        int nLowest = nCeiling, b = -1;
        for (int v = 0; v < n && nLowest != nBound; v++) {
            if (f[v] <= 0 && -f[v] < nLowest) {
                nLowest = -f[v];
                b = v;
            }
        }
        for (LONG u : Row(g, b))
            f[u] += f[u] < 0;
        nBound = std::max(nLowest - 1, 0);
        f[b] = k + 1;
    }
    for (LONG &l : f)
        l--;
    return f;
}

static Longs ReferenceMinDeg3(const CReorderMat &g) {
    int n = g.m_nRows;
    Longs f(n);
    for (int v = 0; v < n; v++)
        f[v] = -g.m_pRowSizes[v];
    for (int k = 0; k < n; k++) {
        int nBest = n + 2, b = -1;
        for (int i = 0; i < n; i++) {
            if (f[i] > 0)
                continue;
            int nHi = 0, nLo = n;
            for (LONG u : Row(g, i)) {
                if (f[u] < 0) {
                    nHi = std::max(nHi, (int)u);
                    nLo = std::min(nLo, (int)u);
                }
            }
            int nScore = std::max(std::abs(nHi - k), std::abs(k - nLo));
            if (nScore < nBest) {
                nBest = nScore;
                b = i;
            }
        }
        for (LONG u : Row(g, b))
            f[u] += f[u] < 0;
        f[b] = k + 1;
    }
    for (LONG &l : f)
        l--;
    return f;
}

TEST(MinDegree, VariantsOneToThreeAgreeWithTheFullScans) {
    std::vector<std::pair<int, ElementList>> graphs;
    graphs.push_back({11 * 11, GridElements(10)});
    // Random graphs of uneven degree, some with isolated vertices.
    std::mt19937 gen(7);
    for (int nGraph = 0; nGraph < 30; nGraph++) {
        int n = 5 + nGraph * 3;
        ElementList elements;
        for (int e = 0; e < n; e++) {
            LONG a = gen() % n, b = gen() % n, c = gen() % (n / 3 + 1);
            if (a != b && b != c && a != c)
                elements.push_back({a, b, c});
        }
        graphs.push_back({n, elements});
    }
    for (const char *pszName : {"dwt_59", "can_144", "dwt_234", "can_445"}) {
        int n = 0;
        ElementList edges;
        if (LoadGraphFile(pszName, n, edges))
            graphs.push_back({n, edges});
    }
    ScriptDir dir;
    ReportRecorder reports;
    for (size_t k = 0; k < graphs.size(); k++) {
        SCOPED_TRACE(k);
        CReorderMat g(0);
        BuildGraph(g, graphs[k].first, graphs[k].second);
        g.MinDegReorder(NULL);
        EXPECT_EQ(Labels(g), ReferenceMinDeg1(g));
        g.MinDegReorder2();
        EXPECT_EQ(Labels(g), ReferenceMinDeg2(g));
        g.MinDegReorder3();
        EXPECT_EQ(Labels(g), ReferenceMinDeg3(g));
    }
}

TEST(MinDegree, PermutationsOnMeshGraphs) {
    for (const char *pszName : {"dwt_59", "can_144", "bcsstk01", "dwt_234", "can_445"}) {
        SCOPED_TRACE(pszName);
        int n = 0;
        ElementList edges;
        if (!LoadGraphFile(pszName, n, edges))
            GTEST_SKIP() << "graph data not found";
        for (Variant nVariant : {kMinDeg1, kMinDeg2, kMinDeg3, kMinDeg4}) {
            ScriptDir dir;
            ReportRecorder reports;
            CReorderMat g(0);
            BuildGraph(g, n, edges);
            ASSERT_TRUE(g.Check());
            std::vector<Longs> rows;
            for (int i = 0; i < n; i++)
                rows.push_back(Row(g, i));
            RunVariant(g, nVariant, dir);
            EXPECT_TRUE(IsPermutation(g)) << nVariant;
            // A second run starts from the labels the first left.
            RunVariant(g, nVariant, dir);
            EXPECT_TRUE(IsPermutation(g)) << nVariant;
            // No variant leaves the graph changed; variant 4 restores it.
            for (int i = 0; i < n; i++)
                ASSERT_EQ(Row(g, i), rows[i]) << nVariant << " row " << i;
            g.PostReorder();
            for (int l = 0; l < n; l++)
                ASSERT_EQ(g.f_v(g.f_v_inv(l)), l);
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
    EXPECT_EQ(reports.Texts().size(), 1u);
}

TEST(MinDegree, UnionOfAdjacencies) {
    CReorderMat g(0);
    // Row 0 = {1, 2, 3}, row 1 = {0, 3, 4}: union without 0 and 1.
    BuildGraph(g, 6, {{0, 1}, {0, 2}, {0, 3}, {1, 3}, {1, 4}, {5, 4}});
    EXPECT_EQ(g.UnionAdj_Ex_p_i(0, 1), 3);
    EXPECT_EQ(Row(g, 0), (Longs{2, 3, 4}));
    EXPECT_EQ(Row(g, 1), (Longs{0, 3, 4})); // row p unchanged

    // p the only neighbour of i, and i the only neighbour of p: row i is freed.
    EXPECT_EQ(g.UnionAdj_Ex_p_i(5, 4), 1);
    EXPECT_EQ(Row(g, 5), (Longs{1}));
    CReorderMat pair(0);
    BuildGraph(pair, 2, {{0, 1}});
    EXPECT_EQ(pair.UnionAdj_Ex_p_i(0, 1), 0);
    EXPECT_EQ(pair.m_ppRows[0], nullptr);
    EXPECT_EQ(pair.m_pRowSizes[0], 0);

    // Long rows: the old row's order, then the new entries in row p's order.
    ElementList elements = {{50, 51}};
    for (LONG x = 19; x >= 0; x--)
        elements.push_back({50, x});
    for (LONG x = 10; x < 40; x++)
        elements.push_back({51, x});
    CReorderMat big(0);
    BuildGraph(big, 60, elements);
    Longs expected;
    for (LONG x = 19; x >= 0; x--)
        expected.push_back(x);
    for (LONG x = 20; x < 40; x++)
        expected.push_back(x);
    EXPECT_EQ(big.UnionAdj_Ex_p_i(50, 51), 40);
    EXPECT_EQ(Row(big, 50), expected);
}

// Counts the unions, to see that the chain reaches a derived class's operation.
class CountingUnions : public CReorderMat {
public:
    CountingUnions() : CReorderMat(0) {}
    int UnionAdj_Ex_p_i(int i, int p) override {
        m_nCalls++;
        return CReorderMat::UnionAdj_Ex_p_i(i, p);
    }
    int m_nCalls = 0;
};

TEST(MinDegree, EliminationGoesThroughTheTable) {
    ScriptDir dir;
    ReportRecorder reports;
    CountingUnions g;
    BuildGraph(g, 4, {{0, 1}, {0, 2}, {0, 3}});
    g.MinDegReorder4();
    // Star centred at 0: leaf 1 (one union), leaf 2 (one), centre 0 (one, for leaf 3).
    EXPECT_EQ(g.m_nCalls, 3);
}

TEST(MinDegree, ScriptlessAndUnopenableRuns) {
    ReportRecorder reports;
    {
        // No file: nothing written anywhere, the report all the same.
        ScriptDir dir;
        CReorderMat g(0);
        BuildGraph(g, 4, kStar3);
        g.MinDegReorder(NULL);
        EXPECT_EQ(Labels(g), (Longs{1, 2, 3, 0}));
        EXPECT_FALSE(dir.Exists());
        EXPECT_EQ(reports.Texts().size(), 1u);
    }
    reports.Texts().clear();
    {
        // A name that can't be created: labels untouched, nothing shown.
        ScriptDir dir;
        CReorderMat::SetScriptName((dir.Script() + "/no/such/dir/Reord.m").c_str());
        CReorderMat g(0);
        BuildGraph(g, 4, kStar3);
        g.MinDegReorder(NULL); // labels 1, 2, 3, 0
        reports.Texts().clear();
        g.MinDegReorder2();
        g.MinDegReorder3();
        g.MinDegReorder4();
        EXPECT_EQ(Labels(g), (Longs{1, 2, 3, 0}));
        EXPECT_TRUE(reports.Texts().empty());
    }
    {
        // A script held open exclusively elsewhere is the same as one that can't be created.
        ScriptDir dir;
        CFile holder;
        ASSERT_TRUE(holder.Open(dir.Script().c_str(),
                                CFile::modeCreate | CFile::modeReadWrite | CFile::shareExclusive));
        CReorderMat g(0);
        BuildGraph(g, 4, kStar3);
        g.MinDegReorder2();
        EXPECT_EQ(Labels(g), (Longs{0, 1, 2, 3}));
        EXPECT_TRUE(reports.Texts().empty());
        holder.Close();
    }
}
