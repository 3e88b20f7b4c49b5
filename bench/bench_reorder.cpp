// The four minimum-degree numberings on the graph of an n by n grid of bilinear quads,
// with bandwidth and envelope before (row-by-row node numbers) and after.
#include "reorder/reordermat.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <string>
#include <unistd.h>

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
BENCHMARK(BM_MinDeg)->ArgsProduct({{1, 2, 3, 4}, {50, 100, 200}})->Unit(benchmark::kMillisecond);
