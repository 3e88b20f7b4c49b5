// The three Hager numberings on the graph of a 200 by 200 grid of bilinear quads and on the
// largest graph of the data set (dwt_2680; FEMMAT_GRAPHS names the folder of the .graph
// files, /work/shared/data/graphs by default). Hager3 keeps its scores where Hager2
// recomputes them for every candidate at every step.
#include "reorder/reordermat.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <unistd.h>
#include <vector>

static std::string s_strReport;
static int Silent(const char *pszText) {
    s_strReport = pszText;
    return IDOK;
}

// The numbering's own time from its report, without the script.
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
        for (int r = 0; r < n; r++)
            for (int c = 0; c < n; c++) {
                LONG a = r * (n + 1) + c;
                LONG dofs[4] = {a, a + 1, a + n + 2, a + n + 1};
                g.InsertDOFs(dofs, nPass, 4);
            }
    }
}

// Edges of a .graph file as two-vertex elements; false when it can't be read.
static bool BuildFromFile(CReorderMat &g, const char *pszName) {
    const char *pszDir = getenv("FEMMAT_GRAPHS");
    std::string strPath =
        std::string(pszDir ? pszDir : "/work/shared/data/graphs") + "/" + pszName + ".graph";
    FILE *pFile = fopen(strPath.c_str(), "r");
    if (pFile == NULL)
        return false;
    int n = 0, m = 0;
    bool bOk = fscanf(pFile, "%d %d", &n, &m) == 2;
    std::vector<LONG> edges;
    for (int k = 0; bOk && k < m; k++) {
        LONG i = 0, j = 0;
        bOk = fscanf(pFile, "%d %d", &i, &j) == 2 && i >= 0 && j >= 0 && i < n && j < n;
        edges.push_back(i);
        edges.push_back(j);
    }
    fclose(pFile);
    if (!bOk)
        return false;
    g.Alloc(n);
    for (int nPass = 0; nPass < 2; nPass++) {
        if (nPass == 1)
            g.Init();
        for (size_t k = 0; k < edges.size(); k += 2)
            g.InsertDOFs(&edges[k], nPass, 2);
    }
    return true;
}

// Arguments: variant 1 to 3; graph 0 (the grid) or 1 (dwt_2680).
static void BM_Hager(benchmark::State &state) {
    int nVariant = (int)state.range(0);
    AfxReportHandler pfnOld = AfxSetReportHandler(&Silent);
    std::string strScript = "/tmp/bench_hager_" + std::to_string(getpid()) + ".m";
    CReorderMat::SetScriptName(strScript.c_str());

    CReorderMat g(1);
    if (state.range(1) == 0) {
        BuildGrid(g, 200);
    } else if (!BuildFromFile(g, "dwt_2680")) {
        state.SkipWithError("dwt_2680.graph not found (set FEMMAT_GRAPHS)");
        AfxSetReportHandler(pfnOld);
        return;
    }
    int nEnvBefore = g.Env(NULL);
    for (auto _ : state) {
        if (nVariant == 1)
            g.Hager1();
        else if (nVariant == 2)
            g.Hager2();
        else
            g.Hager3();
    }
    int nBand = 0;
    state.counters["vertices"] = g.GetRows();
    state.counters["reported_s"] = ReportedSeconds();
    state.counters["env_before"] = nEnvBefore;
    state.counters["env_after"] = g.Env(&nBand);
    state.counters["band_after"] = nBand;

    std::remove(strScript.c_str());
    AfxSetReportHandler(pfnOld);
}

BENCHMARK(BM_Hager)->ArgsProduct({{1, 2, 3}, {0, 1}})->Unit(benchmark::kMillisecond)->Iterations(1);
