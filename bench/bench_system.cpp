// The road of one assembly and solve on an n by n node grid of bilinear quads (2D Poisson,
// one degree of freedom per node, zero values on the edge y = 0), step by step: graph,
// numbering (MinDegReorder4 or none), pattern, assembly, prescribed values, factorisation,
// substitution, and a second load over the same pattern. Each step's processor time is a
// counter in milliseconds; "pattern_cells" and "cells" count the cells before and after
// factorisation.
#include "dense/matrix.h"
#include "poisson.h"
#include "system/systspmat.h"

#include <benchmark/benchmark.h>

#include <cstring>

using namespace poisson;

namespace {

// The seconds of a report's "%u m %2.2f s" piece behind the given label.
double ReportSeconds(const std::string &strText, const char *pszLabel) {
    size_t nAt = strText.find(pszLabel);
    unsigned nMin = 0;
    double dSec = 0.0;
    if (nAt == std::string::npos ||
        sscanf(strText.c_str() + nAt + strlen(pszLabel), " %u m %lf s", &nMin, &dSec) != 2)
        return 0.0;
    return nMin * 60.0 + dSec;
}

// The numbering's own report is kept, not shown.
std::string s_strLastReport;
int KeepReport(const char *pszText) {
    s_strLastReport = pszText;
    return 1;
}

void Road(benchmark::State &state) {
    const int n = (int)state.range(0);
    const bool bMinDeg = state.range(1) != 0;
    const int nDOFs = n * n;
    ScriptFile script("bench_system");
    AfxReportHandler pfnOld = AfxSetReportHandler(&KeepReport);
    CVirtMat::m_bSym = true;

    double t[8] = {0};
    double dAlgorithm = 0.0;
    int nCells = 0, nPatternCells = 0;
    for (auto _ : state) {
        // Graph.
        double t0 = CpuMs();
        CReorderMat g(0);
        BuildGraph(g, n);
        t[0] += MsSince(t0);

        // Numbering (with its diagnostic script), then the table of vertex per label.
        t0 = CpuMs();
        if (bMinDeg) {
            g.MinDegReorder4();
            dAlgorithm += 1000.0 * ReportSeconds(s_strLastReport, "Used time reordering:");
        }
        g.PostReorder();
        t[1] += MsSince(t0);

        // Pattern.
        t0 = CpuMs();
        CSystSpMat m;
        m.Allocate(g);
        t[2] += MsSince(t0);
        nPatternCells = CountCells(m);

        // Assembly.
        t0 = CpuMs();
        Assemble(m, n, &g);
        t[3] += MsSince(t0);

        // Prescribed zeros on the edge y = 0.
        CMatrix B(nDOFs, 1, true, 1.0);
        CVector vDOFs(n), vValues(n, true, 0.0);
        for (int x = 0; x < n; x++)
            vDOFs[x] = g.f_v(x);
        t0 = CpuMs();
        m.SymUnifyAndZero(vDOFs, vValues, &B);
        t[4] += MsSince(t0);

        // Factorisation and substitution.
        t0 = CpuMs();
        if (m.Cholesky() != 1)
            state.SkipWithError("Cholesky failed");
        t[5] += MsSince(t0);
        t0 = CpuMs();
        m.ForwSub(&B, NULL, -1);
        m.DiagMult(&B, NULL, -2);
        m.BackwSub(&B, NULL, 1);
        t[6] += MsSince(t0);
        nCells = CountCells(m);
        benchmark::DoNotOptimize(B.GetVector());

        // Next load: same size keeps the cells; assemble again.
        t0 = CpuMs();
        m.Allocate(g);
        Assemble(m, n, &g);
        t[7] += MsSince(t0);
    }

    const char *names[8] = {"graph_ms", "numbering_ms", "pattern_ms", "assembly_ms",
                            "bcs_ms",   "factor_ms",    "subst_ms",   "next_load_ms"};
    for (int k = 0; k < 8; k++)
        state.counters[names[k]] = benchmark::Counter(t[k], benchmark::Counter::kAvgIterations);
    // The numbering's own clock, without the diagnostic script it writes.
    state.counters["reorder_alg_ms"] =
        benchmark::Counter(dAlgorithm, benchmark::Counter::kAvgIterations);
    state.counters["pattern_cells"] = nPatternCells;
    state.counters["cells"] = nCells;
    state.counters["dofs"] = nDOFs;

    CVirtMat::m_bSym = false;
    AfxSetReportHandler(pfnOld);
}

} // namespace

// Arguments: nodes per side, numbering (1 MinDegReorder4, 0 none).
BENCHMARK(Road)
    ->Args({100, 0})
    ->Args({100, 1})
    ->Args({200, 0})
    ->Args({200, 1})
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);
