// The Hager numberings: weights and scores, labels of small graphs, reports (also of a graph
// without edges), scripts, and what they leave in m_pInverse and m_nZ.
#include "common/femtest.h"

#include <algorithm>

typedef std::vector<LONG> Longs;

static const char kShortTrailer[] =
    "\r\n\r\nclose all;\r\n figure;\r\n spy(before);\r\n figure;\r\n spy(after);\r\n";

class HagerGraph : public CReorderMat {
public:
    HagerGraph() : CReorderMat(1) {}
    using CReorderMat::d_k;
    using CReorderMat::MinZ;
    using CReorderMat::r_k;
    using CReorderMat::S_k;
    Longs Labels() const { return Longs(m_pLabels, m_pLabels + m_nRows); }
    void Run(int nVariant) {
        if (nVariant == 1)
            Hager1();
        if (nVariant == 2)
            Hager2();
        if (nVariant == 3)
            Hager3();
    }
};

static std::string Matrix(CReorderMat &g, const char *pszName) {
    CMemFile f;
    g.MatlabWrite(&f, pszName);
    return std::string(f.GetData().begin(), f.GetData().end());
}

static bool IsPermutation(Longs labels) {
    std::sort(labels.begin(), labels.end());
    for (size_t i = 0; i < labels.size(); i++)
        if (labels[i] != (LONG)i)
            return false;
    return true;
}

TEST(Hager, WeightsAndScores) {
    HagerGraph g;
    EXPECT_EQ(g.WFun(1), 20.0f);
    EXPECT_EQ(g.WFun(3), 20.0f / 3.0f);
    EXPECT_EQ(g.WFun(200), 20.0f / 200.0f);
    EXPECT_EQ(g.WFun(201), 0.1f); // the constant, not 20 / 201
    EXPECT_EQ(g.WFun(100000), 0.1f);

    // Path 0-1-2 and an isolated vertex 3, vertex 1 numbered.
    BuildGraph(g, 4, {{0, 1}, {1, 2}});
    g.InitLabels(-1);
    g.m_pLabels[1] = 3;
    g.m_nZ = 2;
    EXPECT_EQ(g.d_k(1), 2);
    EXPECT_EQ(g.r_k(1), 2);
    EXPECT_EQ(g.d_k(0), 0);
    // Vertex 0: its numbered neighbour 1 weighs WFun(2) = 10, its own term WFun(min(3, 1)).
    EXPECT_EQ(g.S_k(0), 10.0f + 20.0f);
    // The isolated vertex: no sum, the term WFun(1) whatever m_nZ is.
    EXPECT_EQ(g.S_k(3), 20.0f);
    // No numbered neighbours and d equal to m_nZ: the term is WFun(1) again.
    g.InitLabels(-1);
    EXPECT_EQ(g.S_k(1), 20.0f);

    // MinZ: most numbered neighbours (counts in m_pInverse), then the lowest vertex.
    LONG z[4] = {2, 0, 3, 1};
    g.m_pZ = z;
    g.m_nZ = 3;
    Longs counts = {1, 2, 0, 2};
    std::copy(counts.begin(), counts.end(), g.m_pInverse);
    EXPECT_EQ(g.MinZ(), 3); // vertex 1 at position 3 beats vertex 3 at position 2
    g.m_nZ = 2;
    EXPECT_EQ(g.MinZ(), 2);
    g.m_nZ = -1;
    EXPECT_EQ(g.MinZ(), 0);
    g.m_pZ = NULL;
}

TEST(Hager, SmallGraphsLabelsReportsAndScripts) {
    // Labels of Hager1, Hager2, Hager3. Path 0-1-2: Hager1 keeps the identity; Hager2 and
    // Hager3 take the middle first (score 20 against 10), then the tie of 0 and 2 goes to
    // the last position in Z, vertex 2. Without edges Hager1 gives n-1 to the highest
    // vertex, then counts down in vertex order; the others take the last position each
    // time. In the star centred at 0 Hager1 starts from leaf 4, the others from the
    // centre (20 against 10), and then the leaves tie, last position in Z first.
    struct Case {
        int n;
        ElementList elements;
        Longs labels[3];
    } cases[] = {
        {3, {{0, 1}, {1, 2}}, {{0, 1, 2}, {0, 2, 1}, {0, 2, 1}}},
        {4, {}, {{2, 1, 0, 3}, {0, 1, 2, 3}, {0, 1, 2, 3}}},
        {5, {{0, 1}, {0, 2}, {0, 3}, {0, 4}}, {{3, 2, 1, 0, 4}, {4, 1, 2, 3, 0}, {4, 1, 2, 3, 0}}},
        {1, {}, {{0}, {0}, {0}}},
        {0, {}, {{}, {}, {}}}};
    ScriptDir dir;
    ReportRecorder reports;
    for (const Case &c : cases) {
        for (int nVariant = 1; nVariant <= 3; nVariant++) {
            SCOPED_TRACE(testing::Message() << "Hager" << nVariant << ", n = " << c.n);
            HagerGraph g;
            BuildGraph(g, c.n, c.elements);
            std::string strBefore = Matrix(g, "before");
            g.m_nZ = 7;
            g.Run(nVariant);
            EXPECT_EQ(g.Labels(), c.labels[nVariant - 1]);
            EXPECT_EQ(g.m_nZ, -1);
            EXPECT_EQ(dir.Read(), strBefore + Matrix(g, "after") + kShortTrailer);
        }
    }

    // Path 0-1-2 from the labels 2, 0, 1: bandwidth 2 and envelope 2 + 2 + 1 before.
    HagerGraph g;
    BuildGraph(g, 3, {{0, 1}, {1, 2}});
    g.m_pLabels[0] = 2;
    g.m_pLabels[1] = 0;
    g.m_pLabels[2] = 1;
    reports.Texts().clear();
    g.Hager1();
    ASSERT_EQ(reports.Texts().size(), 1u);
    EXPECT_TRUE(MatchesReport(reports.Texts()[0],
                              "Used time reordering:   {T}\r\n Old bandwidth.        :   2\r\n"
                              " New bandwidth        :    50.0%\r\n"
                              " Old env                   :   5\r\n"
                              " new env                  :    60.0%\r\n"))
        << reports.Texts()[0];
}

TEST(Hager, GraphWithoutEdgesReportsTheQuotientsAsPrinted) {
    // 0.0 / 0.0 in both quotients: the report carries what snprintf makes of that NaN.
    volatile double dZero = 0.0;
    char szNaN[32];
    snprintf(szNaN, sizeof(szNaN), "%5.1f", dZero * 100.0 / dZero);
    std::string strNaN = szNaN;
    EXPECT_NE(strNaN.find("nan"), std::string::npos);
    ScriptDir dir;
    ReportRecorder reports;
    for (int n : {0, 3}) {
        for (int nVariant = 1; nVariant <= 3; nVariant++) {
            HagerGraph g;
            BuildGraph(g, n, {});
            reports.Texts().clear();
            g.Run(nVariant);
            ASSERT_EQ(reports.Texts().size(), 1u);
            EXPECT_TRUE(MatchesReport(reports.Texts()[0],
                                      "Used time reordering:   {T}\r\n"
                                      " Old bandwidth.        :   0\r\n"
                                      " New bandwidth        :   " +
                                          strNaN + "%\r\n Old env                   :   0\r\n" +
                                          " new env                  :   " + strNaN + "%\r\n"))
                << reports.Texts()[0];
        }
    }
}

TEST(Hager, MeshGraphsGivePermutationsAndInverses) {
    ScriptDir dir;
    ReportRecorder reports;
    int n = 0;
    ElementList edges;
    ASSERT_TRUE(LoadGraphFile("can_445", n, edges));
    Longs labels[4];
    for (int nVariant = 1; nVariant <= 3; nVariant++) {
        SCOPED_TRACE(nVariant);
        HagerGraph g;
        BuildGraph(g, n, edges);
        g.Run(nVariant);
        labels[nVariant] = g.Labels();
        ASSERT_TRUE(IsPermutation(g.Labels()));
        EXPECT_EQ(g.m_nZ, -1);
        if (nVariant == 1) {
            // The counts of numbered neighbours end as the degrees.
            for (int v = 0; v < n; v++)
                ASSERT_EQ(g.m_pInverse[v], g.m_pRowSizes[v]);
            EXPECT_EQ(g.m_pZ, nullptr);
        } else {
            // Z held the vertex of each label in m_pInverse: the inverse without PostReorder.
            for (int v = 0; v < n; v++)
                ASSERT_EQ(g.f_v_inv(g.f_v(v)), v);
        }
    }
    EXPECT_NE(labels[2], labels[3]);
}

// Hager1 and Hager3 as plain passes over Z for every label, with the library's weights and
// counts: the heaps of the library have to give the same labels.
class ScanHager : public HagerGraph {
public:
    void ScanHager1() {
        int n = m_nRows;
        InitLabels(-1);
        std::vector<LONG> z(n);
        m_pZ = z.data();
        int s = -1, nMin = n + 1;
        for (int i = n - 1; i >= 0; i--) {
            z[i] = i;
            m_pInverse[i] = 0;
            if (m_pRowSizes[i] < nMin) {
                nMin = m_pRowSizes[i];
                s = i;
            }
        }
        std::swap(z[s], z[n - 1]);
        m_pLabels[s] = n - 1;
        for (int j = 0; j < m_pRowSizes[s]; j++)
            m_pInverse[m_ppRows[s][j]]++;
        for (m_nZ = n - 2; m_nZ >= 0; m_nZ--) {
            int p = MinZ();
            std::swap(z[p], z[m_nZ]);
            int v = z[m_nZ];
            m_pLabels[v] = m_nZ;
            for (int j = 0; j < m_pRowSizes[v]; j++)
                m_pInverse[m_ppRows[v][j]]++;
        }
        m_pZ = NULL;
    }
    void ScanHager3() {
        int n = m_nRows;
        InitLabels(-1);
        std::vector<float> S(n);
        std::vector<LONG> z(n);
        for (int i = 0; i < n; i++) {
            z[i] = i;
            S[i] = WFun(std::min(n - d_k(i), d_k(i) + 1));
        }
        for (int k = n - 1; k >= 0; k--) {
            float fBest = -1.0f;
            int p = 0;
            for (int i = 0; i <= k; i++)
                if (S[z[i]] >= fBest) {
                    fBest = S[z[i]];
                    p = i;
                }
            std::swap(z[p], z[k]);
            int v = z[k];
            m_pLabels[v] = k;
            const LONG *pRow = m_ppRows[v];
            for (int j = 0; j < m_pRowSizes[v]; j++)
                if (m_pLabels[pRow[j]] > -1 && S[pRow[j]] != WFun(1))
                    S[pRow[j]] = WFun(d_k(pRow[j]));
            int d = d_k(v);
            S[v] = d == 0 ? 0.0f : WFun(d);
            for (int j = 0; d > 0 && j < m_pRowSizes[v]; j++) {
                int c = pRow[j];
                if (m_pLabels[c] > -1)
                    continue;
                S[c] = WFun(std::min(k - d_k(c), n));
                for (int i = 0; i < m_pRowSizes[c]; i++)
                    if (m_pLabels[m_ppRows[c][i]] > -1)
                        S[c] += S[m_ppRows[c][i]];
            }
        }
    }
};

TEST(Hager, HeapsChooseAsThePassOverZ) {
    ScriptDir dir;
    ReportRecorder reports;
    ElementList quads; // a 12 by 12 grid of quads: many equal scores
    for (LONG r = 0; r < 12; r++)
        for (LONG c = 0; c < 12; c++) {
            LONG a = r * 13 + c;
            quads.push_back({a, a + 1, a + 14, a + 13});
        }
    std::vector<std::pair<int, ElementList>> graphs = {{169, quads}};
    for (const char *pszName : {"can_445", "dwt_234", "bcsstk01"}) {
        int n = 0;
        ElementList edges;
        ASSERT_TRUE(LoadGraphFile(pszName, n, edges));
        graphs.push_back({n, edges});
    }
    for (auto &graph : graphs) {
        ScanHager g;
        BuildGraph(g, graph.first, graph.second);
        g.Hager1();
        Longs labels = g.Labels();
        g.ScanHager1();
        EXPECT_EQ(g.Labels(), labels) << graph.first;
        g.Hager3();
        labels = g.Labels();
        g.ScanHager3();
        EXPECT_EQ(g.Labels(), labels) << graph.first;
    }
}

TEST(Hager, NothingHappensWithoutAScript) {
    ScriptDir dir;
    ReportRecorder reports;
    CReorderMat::SetScriptName((dir.Script() + "/no/such/dir/Reord.m").c_str());
    HagerGraph g;
    BuildGraph(g, 3, {{0, 1}, {1, 2}});
    g.m_pLabels[0] = 2;
    g.m_pLabels[2] = 0;
    g.m_nZ = 5;
    g.InitTabu(9);
    g.Hager1();
    g.Hager2();
    g.Hager3();
    g.TabuReorder();
    EXPECT_EQ(g.Labels(), (Longs{2, 1, 0}));
    EXPECT_EQ(g.m_nZ, 5);
    EXPECT_EQ(Longs(g.m_pInverse, g.m_pInverse + 3), (Longs{9, 9, 9}));
    EXPECT_TRUE(reports.Texts().empty());
}
