// The skyline road on an n by n node grid of bilinear quads (2D Poisson, one degree of freedom
// per node, zero values on the edge y = 0, right-hand side 1.0), step by step: graph,
// numbering (none, MinDegReorder4 or MinDegReorder2), profile, assembly, prescribed values,
// factorisation, substitution (ForwSub, DiagMult, BackwSub). Each step's processor time is a
// counter in milliseconds; "values" is the number of stored values, the profile.
#include "dense/matrix.h"
#include "reorder/reordermat.h"
#include "skyline/skylinematrix.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <ctime>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

// Processor time of this thread in ms: the machine is shared, so wall time says less.
double CpuMs() {
    timespec ts;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &ts);
    return ts.tv_sec * 1e3 + ts.tv_nsec * 1e-6;
}

double MsSince(double dStart) {
    return CpuMs() - dStart;
}

// The numberings' reports are not shown.
int Silent(const char *) {
    return 1;
}

// Node-level stiffness of the unit square quad, nodes counter-clockwise, times 6.
const double s_Quad[16] = {4, -1, -2, -1, -1, 4, -1, -2, -2, -1, 4, -1, -1, -2, -1, 4};

std::vector<std::vector<LONG>> GridQuads(int n) {
    std::vector<std::vector<LONG>> elements;
    for (int y = 0; y + 1 < n; y++)
        for (int x = 0; x + 1 < n; x++) {
            LONG a = y * n + x;
            elements.push_back({a, a + 1, a + n + 1, a + n});
        }
    return elements;
}

void Assemble(CSkylineMatrix &m, CReorderMat &g, std::vector<std::vector<LONG>> &elements) {
    double values[16];
    for (int k = 0; k < 16; k++)
        values[k] = s_Quad[k] / 6.0;
    LONG mapped[4];
    for (auto &e : elements) {
        for (int k = 0; k < 4; k++)
            mapped[k] = g.f_v(e[k]);
        m.AddValues(mapped, values, 4);
    }
}

// Zero prescribed values at label p: identity row and column; nothing moves to the right.
void PrescribeZero(CSkylineMatrix &m, CMatrix &B, int p) {
    for (int r = m.PeakRow(p); r < p; r++)
        m(r, p) = 0.0;
    for (int j = p + 1; j < m.m_nRows; j++)
        if (m.PeakRow(j) <= p)
            m(p, j) = 0.0;
    m(p, p) = 1.0;
    B[p][0] = 0.0;
}

enum { kNatural = 0, kMinDeg4 = 4, kMinDeg2 = 2 };

void Road(benchmark::State &state) {
    const int n = (int)state.range(0);
    const int nNumbering = (int)state.range(1);
    const int nDOFs = n * n;
    std::string strScript = "/tmp/bench_skyline_" + std::to_string(getpid()) + ".m";
    std::string strOldScript = CReorderMat::GetScriptName();
    CReorderMat::SetScriptName(strScript.c_str());
    AfxReportHandler pfnOld = AfxSetReportHandler(&Silent);
    CVirtMat::m_bSym = true;

    double t[7] = {0};
    int nValues = 0;
    double dCheck = 0.0;
    for (auto _ : state) {
        std::vector<std::vector<LONG>> elements = GridQuads(n);

        // Graph.
        double t0 = CpuMs();
        CReorderMat g(0);
        g.Alloc(nDOFs);
        for (auto &e : elements)
            g.InsertDOFs(e.data(), 0, 4);
        g.Init();
        for (auto &e : elements)
            g.InsertDOFs(e.data(), 1, 4);
        t[0] += MsSince(t0);

        // Numbering (with its diagnostic script), then the table of vertex per label.
        t0 = CpuMs();
        if (nNumbering == kMinDeg4)
            g.MinDegReorder4();
        else if (nNumbering == kMinDeg2)
            g.MinDegReorder2();
        g.PostReorder();
        t[1] += MsSince(t0);

        // Profile.
        t0 = CpuMs();
        CSkylineMatrix m;
        if (!m.Allocate(g)) {
            state.SkipWithError("Allocate failed");
            break;
        }
        t[2] += MsSince(t0);
        nValues = m.m_nValues;

        // Assembly.
        t0 = CpuMs();
        Assemble(m, g, elements);
        t[3] += MsSince(t0);

        // Prescribed zeros on the edge y = 0.
        CMatrix B(nDOFs, 1, true, 1.0);
        t0 = CpuMs();
        for (int x = 0; x < n; x++)
            PrescribeZero(m, B, g.f_v(x));
        t[4] += MsSince(t0);

        // Factorisation and substitution.
        t0 = CpuMs();
        m.Cholesky();
        t[5] += MsSince(t0);
        t0 = CpuMs();
        m.ForwSub(&B, NULL, 1);
        m.DiagMult(&B, NULL, -2);
        m.BackwSub(&B, NULL, 1);
        t[6] += MsSince(t0);
        dCheck = B[g.f_v(nDOFs - 1)][0]; // the far corner, the same under every numbering
    }
    std::remove(strScript.c_str());
    CReorderMat::SetScriptName(strOldScript.c_str());
    AfxSetReportHandler(pfnOld);

    const char *names[7] = {"graph_ms",     "numbering_ms", "profile_ms", "assembly_ms",
                            "prescribe_ms", "factor_ms",    "solve_ms"};
    for (int k = 0; k < 7; k++)
        state.counters[names[k]] = benchmark::Counter(t[k], benchmark::Counter::kAvgIterations);
    state.counters["values"] = nValues;
    state.counters["u_corner"] = dCheck;
}

} // namespace

BENCHMARK(Road)
    ->ArgNames({"n", "numbering"})
    ->Args({100, kNatural})
    ->Args({100, kMinDeg4})
    ->Args({100, kMinDeg2})
    ->Args({200, kNatural})
    ->Args({200, kMinDeg4})
    ->Args({200, kMinDeg2})
    ->Unit(benchmark::kMillisecond)
    ->Iterations(1);
