// Dense solving: SolveAxEqb with and without row pivoting on random, diagonally strong
// systems with one right-hand side. The counter factor_ms is the factorisation time that
// SolveAxEqb itself measures with AfxClock, averaged over the iterations.
// BM_SolveAxEqbDerived runs the same on a class derived from CMatrix, which takes every
// element access through the virtual table.
#include "dense/matrix.h"

#include <benchmark/benchmark.h>

namespace {

class CDerivedMatrix : public CMatrix {};

void MakeSystem(int n, CMatrix &A, CMatrix &B) {
    AfxSrand(4711);
    A.Allocate(n, n, false, 0.0);
    for (int k = 0; k < n * n; k++)
        A.m_pVector[k] = AfxRand() / 32767.0 - 0.5;
    for (int i = 0; i < n; i++)
        A.AddValue(i, i, 0.25 * n);
    B.Allocate(n, 1, false, 0.0);
    for (int i = 0; i < n; i++)
        B.m_pVector[i] = AfxRand() / 32767.0;
}

template <class Matrix> void SolveAxEqb(benchmark::State &state) {
    int n = (int)state.range(0);
    bool bPivot = state.range(1) != 0;
    CMatrix A, B;
    Matrix work, rhs;
    MakeSystem(n, A, B);
    double dFactorSeconds = 0.0;
    for (auto _ : state) {
        state.PauseTiming();
        work.CMatrix::operator=(A);
        rhs.CMatrix::operator=(B);
        state.ResumeTiming();
        double dSeconds = 0.0;
        bool bSolved = work.SolveAxEqb(&rhs, bPivot, dSeconds);
        benchmark::DoNotOptimize(bSolved);
        dFactorSeconds += dSeconds;
    }
    state.counters["factor_ms"] =
        benchmark::Counter(dFactorSeconds * 1000.0, benchmark::Counter::kAvgIterations);
}

void BM_SolveAxEqb(benchmark::State &state) {
    SolveAxEqb<CMatrix>(state);
}
void BM_SolveAxEqbDerived(benchmark::State &state) {
    SolveAxEqb<CDerivedMatrix>(state);
}

} // namespace

BENCHMARK(BM_SolveAxEqb)
    ->ArgNames({"n", "pivot"})
    ->Args({100, 1})
    ->Args({100, 0})
    ->Args({400, 1})
    ->Args({400, 0})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SolveAxEqbDerived)
    ->ArgNames({"n", "pivot"})
    ->Args({100, 1})
    ->Args({400, 1})
    ->Unit(benchmark::kMillisecond);
