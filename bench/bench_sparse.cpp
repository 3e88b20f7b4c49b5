// CSparseMatrix on a 2D Poisson problem: bilinear quads on an n by n grid of nodes in
// natural order, the boundary prescribed to 0.0, a unit load. Measures the assembly through
// AddValues, Cholesky_Solve on the upper triangle and LU_Solve on the full lists, and
// reports the cells after factorisation.
#include "dense/matrix.h"
#include "poisson.h"

#include <benchmark/benchmark.h>

using namespace poisson;

namespace {

// Assembled, boundary prescribed, right-hand side of ones; the upper triangle if bUpper.
void Prepare(CSparseMatrix &A, CMatrix &B, int n, bool bUpper) {
    Assemble(A, n);
    B.Allocate(n * n, 1, true, 1.0);
    for (int k = 0; k < n; k++) {
        A.UnifyAndZero(k, 0.0, &B);
        A.UnifyAndZero((n - 1) * n + k, 0.0, &B);
        A.UnifyAndZero(k * n, 0.0, &B);
        A.UnifyAndZero(k * n + n - 1, 0.0, &B);
    }
    if (bUpper)
        A.MakeUpper();
}

void BM_Assemble(benchmark::State &state) {
    int n = (int)state.range(0);
    for (auto _ : state) {
        CSparseMatrix A;
        Assemble(A, n);
        benchmark::DoNotOptimize(A.GetFirstRow());
    }
    CSparseMatrix A;
    Assemble(A, n);
    state.counters["cells"] = CountCells(A);
}

void Solve(benchmark::State &state, bool bLU) {
    int n = (int)state.range(0);
    AfxReportHandler pPrevious = AfxSetReportHandler(&Silent);
    int nCells = 0, nBefore = 0;
    for (auto _ : state) {
        state.PauseTiming();
        CSparseMatrix A;
        CMatrix B;
        Prepare(A, B, n, !bLU);
        nBefore = CountCells(A);
        double dTime;
        state.ResumeTiming();
        int nResult = bLU ? A.LU_Solve(&B, dTime) : A.Cholesky_Solve(&B, dTime);
        state.PauseTiming();
        if (nResult != 1)
            state.SkipWithError("factorisation failed");
        nCells = CountCells(A);
        state.ResumeTiming();
    }
    AfxSetReportHandler(pPrevious);
    state.counters["cells_before"] = nBefore;
    state.counters["cells_after"] = nCells;
    if (!bLU)
        state.counters["flops"] = CVirtMat::m_Flops;
}

void BM_CholeskySolve(benchmark::State &state) {
    Solve(state, false);
}
void BM_LUSolve(benchmark::State &state) {
    Solve(state, true);
}

} // namespace

BENCHMARK(BM_Assemble)->Arg(50)->Arg(100)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CholeskySolve)->Arg(50)->Arg(100)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LUSolve)->Arg(50)->Arg(100)->Unit(benchmark::kMillisecond);
