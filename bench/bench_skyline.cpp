// The skyline road on an n by n node grid of bilinear quads (2D Poisson, one degree of freedom
// per node, zero values on the edge y = 0, right-hand side 1.0), step by step: graph,
// numbering (none, MinDegReorder4 or MinDegReorder2), profile, assembly, prescribed values,
// factorisation, substitution (ForwSub, DiagMult, BackwSub). Each step's processor time is a
// counter in milliseconds; "values" is the number of stored values, the profile.
//
// With LAPACK (FEMMAT_HAVE_LAPACK) the same constrained matrix, at the same numbering, is
// also factorised and solved by LAPACK's band Cholesky (dpbtrf, dpbtrs) over the widest
// row's band: "lapack_ms", and "ratio" = skyline factor and solve / LAPACK's. A band of
// more than 1 GB is not tried (ratio 0).
#include "dense/matrix.h"
#include "poisson.h"
#include "skyline/skylinematrix.h"

#include <benchmark/benchmark.h>

#include <vector>

#ifdef FEMMAT_HAVE_LAPACK
extern "C" {
void dpbtrf_(const char *uplo, const int *n, const int *kd, double *ab, const int *ldab, int *info);
void dpbtrs_(const char *uplo, const int *n, const int *kd, const int *nrhs, const double *ab,
             const int *ldab, double *b, const int *ldb, int *info);
}
#endif

using namespace poisson;

namespace {

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
    ScriptFile script("bench_skyline");
    AfxReportHandler pfnOld = AfxSetReportHandler(&Silent);
    CVirtMat::m_bSym = true;

    double t[7] = {0};
    double tLapack = 0.0;
    int nValues = 0;
    double dCheck = 0.0;
    for (auto _ : state) {
        // Graph.
        double t0 = CpuMs();
        CReorderMat g(0);
        BuildGraph(g, n);
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
        Assemble(m, n, &g);
        t[3] += MsSince(t0);

        // Prescribed zeros on the edge y = 0.
        CMatrix B(nDOFs, 1, true, 1.0);
        t0 = CpuMs();
        for (int x = 0; x < n; x++)
            PrescribeZero(m, B, g.f_v(x));
        t[4] += MsSince(t0);

#ifdef FEMMAT_HAVE_LAPACK
        // LAPACK's band Cholesky on the same matrix, upper band storage, column-major.
        int kd = 0;
        for (int j = 0; j < nDOFs; j++)
            kd = std::max(kd, j - m.PeakRow(j));
        const int ldab = kd + 1;
        if ((double)ldab * nDOFs * sizeof(double) <= 1e9) {
            std::vector<double> ab((size_t)ldab * nDOFs, 0.0), b(nDOFs);
            for (int j = 0; j < nDOFs; j++) {
                for (int i = m.PeakRow(j); i <= j; i++)
                    ab[(size_t)j * ldab + kd + i - j] = m(i, j);
                b[j] = B[j][0];
            }
            int info = 0, one = 1;
            t0 = CpuMs();
            dpbtrf_("U", &nDOFs, &kd, ab.data(), &ldab, &info);
            dpbtrs_("U", &nDOFs, &kd, &one, ab.data(), &ldab, b.data(), &nDOFs, &info);
            tLapack += MsSince(t0);
            if (info != 0)
                state.SkipWithError("LAPACK failed");
        }
#endif

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
    AfxSetReportHandler(pfnOld);

    const char *names[7] = {"graph_ms",     "numbering_ms", "profile_ms", "assembly_ms",
                            "prescribe_ms", "factor_ms",    "solve_ms"};
    for (int k = 0; k < 7; k++)
        state.counters[names[k]] = benchmark::Counter(t[k], benchmark::Counter::kAvgIterations);
    state.counters["values"] = nValues;
    state.counters["lapack_ms"] = benchmark::Counter(tLapack, benchmark::Counter::kAvgIterations);
    state.counters["ratio"] = tLapack > 0.0 ? (t[5] + t[6]) / tLapack : 0.0;
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
