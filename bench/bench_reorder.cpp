// The four minimum-degree numberings on the graph of an n by n grid of bilinear quads,
// with bandwidth and envelope before (row-by-row node numbers) and after; and the eliminating
// one on 2D and 3D mesh graphs and the largest shared data graphs, as the row-by-row walk
// (what every derived class runs, and what a plain graph ran before the quotient form) and
// in quotient-graph form, with equal labels checked. Times are processor times: the machine
// may be shared.
#include "reorder/reordermat.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <unistd.h>
#include <vector>

// Keeps the last report: its time is that of the numbering alone, without the script.
static std::string s_strReport;
static int Silent(const char *pszText) {
    s_strReport = pszText;
    return IDOK;
}

static double ReportedSeconds() {
    unsigned nMinutes = 0;
    double dSeconds = 0.0;
    if (std::sscanf(s_strReport.c_str(), "Used time reordering: %u m %lf s", &nMinutes,
                    &dSeconds) != 2)
        return -1.0;
    return nMinutes * 60.0 + dSeconds;
}

static void BuildGrid(CReorderMat &g, int n) {
    g.Alloc((n + 1) * (n + 1));
    for (int nPass = 0; nPass < 2; nPass++) {
        if (nPass == 1)
            g.Init();
        for (int r = 0; r < n; r++) {
            for (int c = 0; c < n; c++) {
                LONG a = r * (n + 1) + c;
                LONG dofs[4] = {a, a + 1, a + n + 2, a + n + 1};
                g.InsertDOFs(dofs, nPass, 4);
            }
        }
    }
}

static void BM_MinDeg(benchmark::State &state) {
    int nVariant = (int)state.range(0);
    int n = (int)state.range(1);
    AfxReportHandler pfnOld = AfxSetReportHandler(&Silent);
    std::string strScript = "/tmp/bench_reorder_" + std::to_string(getpid()) + ".m";
    CReorderMat::SetScriptName(strScript.c_str());

    CReorderMat g(0);
    BuildGrid(g, n);
    int nBandBefore = 0;
    int nEnvBefore = g.Env(&nBandBefore);
    for (auto _ : state) {
        switch (nVariant) {
        case 1: {
            // Like the others, with its script.
            CFile file(strScript.c_str(), CFile::modeCreate | CFile::modeReadWrite);
            g.MinDegReorder(&file);
            break;
        }
        case 2:
            g.MinDegReorder2();
            break;
        case 3:
            g.MinDegReorder3();
            break;
        case 4:
            g.MinDegReorder4();
            break;
        }
    }
    int nBandAfter = 0;
    int nEnvAfter = g.Env(&nBandAfter);
    state.counters["vertices"] = g.GetRows();
    state.counters["reported_s"] = ReportedSeconds();
    state.counters["band_before"] = nBandBefore;
    state.counters["env_before"] = nEnvBefore;
    state.counters["band_after"] = nBandAfter;
    state.counters["env_after"] = nEnvAfter;

    std::remove(strScript.c_str());
    AfxSetReportHandler(pfnOld);
}

// Arguments: variant, grid size n.
BENCHMARK(BM_MinDeg)
    ->ArgsProduct({{1, 2, 3, 4}, {50, 100, 200}})
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime();

// A derived class runs the row-by-row walk of MinDegReorder4.
class CWalkGraph : public CReorderMat {
public:
    CWalkGraph() : CReorderMat(0) {}
};

typedef std::vector<std::vector<LONG>> ElementList;

static void Build(CReorderMat &g, int n, const ElementList &elements) {
    g.Alloc(n);
    for (int nPass = 0; nPass < 2; nPass++) {
        if (nPass == 1)
            g.Init();
        for (const auto &e : elements)
            g.InsertDOFs(const_cast<LONG *>(e.data()), nPass, (int)e.size());
    }
}

// Mesh 0: m by m quads (2D); 1: m by m by m hexahedra (3D); 2 and on: a shared data graph.
static const char *const s_pszGraphs[] = {"bcsstk11", "dwt_2680", "can_1072", "dwt_992"};

static int MakeMesh(int nMesh, int m, ElementList &elements) {
    elements.clear();
    int s = m + 1;
    if (nMesh == 0) {
        for (int r = 0; r < m; r++)
            for (int c = 0; c < m; c++) {
                LONG a = r * s + c;
                elements.push_back({a, a + 1, a + s + 1, a + s});
            }
        return s * s;
    }
    if (nMesh == 1) {
        for (int z = 0; z < m; z++)
            for (int y = 0; y < m; y++)
                for (int x = 0; x < m; x++) {
                    LONG a = (z * s + y) * s + x, t = s * s;
                    elements.push_back(
                        {a, a + 1, a + s + 1, a + s, a + t, a + t + 1, a + t + s + 1, a + t + s});
                }
        return s * s * s;
    }
    std::ifstream in(std::string(FEMMAT_GRAPHS) + "/" + s_pszGraphs[nMesh - 2] + ".graph");
    int n = 0, nEdges = 0;
    in >> n >> nEdges;
    for (int k = 0; k < nEdges; k++) {
        LONG i = 0, j = 0;
        in >> i >> j;
        elements.push_back({i, j});
    }
    return n;
}

// Arguments: mesh, its size m, 0 for the walk or 1 for the quotient form.
static void BM_MinDeg4(benchmark::State &state) {
    int nMesh = (int)state.range(0);
    bool bQuotient = state.range(2) != 0;
    AfxReportHandler pfnOld = AfxSetReportHandler(&Silent);
    std::string strScript = "/tmp/bench_reorder_" + std::to_string(getpid()) + ".m";
    CReorderMat::SetScriptName(strScript.c_str());

    ElementList elements;
    int n = MakeMesh(nMesh, (int)state.range(1), elements);
    CReorderMat plain(0);
    CWalkGraph walk;
    CReorderMat &g = bQuotient ? plain : walk;
    Build(g, n, elements);
    for (auto _ : state)
        g.MinDegReorder4();
    state.counters["vertices"] = n;
    state.counters["reported_s"] = ReportedSeconds();
    state.counters["env_after"] = (double)g.Env64(NULL);
    // The other form's labels, from a fresh graph, where the walk takes seconds at most.
    if (n <= 12000) {
        CReorderMat plain2(0);
        CWalkGraph walk2;
        CReorderMat &h = bQuotient ? (CReorderMat &)walk2 : plain2;
        Build(h, n, elements);
        h.MinDegReorder4();
        bool bSame = true;
        for (int v = 0; v < n; v++)
            bSame = bSame && h.f_v(v) == g.f_v(v);
        state.counters["same_labels"] = bSame;
    }
    std::remove(strScript.c_str());
    AfxSetReportHandler(pfnOld);
}

// The walk only where it ends within a few minutes.
BENCHMARK(BM_MinDeg4)
    ->Args({0, 100, 0})
    ->Args({0, 100, 1})
    ->Args({0, 200, 0})
    ->Args({0, 200, 1})
    ->Args({0, 316, 0})
    ->Args({0, 316, 1})
    ->Args({1, 21, 0})
    ->Args({1, 21, 1})
    ->Args({1, 36, 1})
    ->Args({2, 0, 0})
    ->Args({2, 0, 1})
    ->Args({3, 0, 0})
    ->Args({3, 0, 1})
    ->Args({4, 0, 0})
    ->Args({4, 0, 1})
    ->Args({5, 0, 0})
    ->Args({5, 0, 1})
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->Iterations(1);
