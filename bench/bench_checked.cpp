// The entry points that the checked build guards, timed in the ordinary build, where every
// check is an empty statement: the node graph's two passes, assembly into a system matrix,
// the substitutions of a factorised one, and Gauss-Seidel sweeps (which test the diagonal
// once per call). Run at two commits to compare; FEMMAT_CHECKED=ON shows what checking costs.
#include "dense/matrix.h"
#include "poisson.h"
#include "system/systspmat.h"

#include <benchmark/benchmark.h>

using namespace poisson;

namespace {

void Graph(benchmark::State &state) {
    const int n = (int)state.range(0);
    for (auto _ : state) {
        CReorderMat g(1);
        BuildGraph(g, n);
        benchmark::DoNotOptimize(g.m_pRowSizes);
    }
}

void Assembly(benchmark::State &state) {
    const int n = (int)state.range(0);
    CReorderMat g(1);
    BuildGraph(g, n);
    g.PostReorder();
    CSystSpMat A;
    A.Allocate(g);
    CVirtMat::m_bSym = true;
    for (auto _ : state)
        Assemble(A, n);
    CVirtMat::m_bSym = false;
}

void Substitutions(benchmark::State &state) {
    const int n = (int)state.range(0);
    AfxReportHandler pfnOld = AfxSetReportHandler(&Silent);
    CReorderMat g(1);
    BuildGraph(g, n);
    g.PostReorder();
    CSystSpMat A;
    A.Allocate(g);
    CVirtMat::m_bSym = true;
    Assemble(A, n);
    for (int i = 0; i < n * n; i++)
        A.Add(i, i, 1.0); // positive definite without prescribed values
    A.Cholesky();
    CMatrix B(n * n, 4, true, 1.0);
    for (auto _ : state) {
        A.ForwSub(&B, NULL, -1);
        A.DiagMult(&B, NULL, -2);
        A.BackwSub(&B, NULL, 1);
    }
    CVirtMat::m_bSym = false;
    AfxSetReportHandler(pfnOld);
}

void GaussSeidel(benchmark::State &state) {
    const int n = (int)state.range(0);
    AfxReportHandler pfnOld = AfxSetReportHandler(&Silent);
    CReorderMat g(1);
    BuildGraph(g, n);
    g.PostReorder();
    CSystSpMat A;
    A.Allocate(g);
    CVirtMat::m_bSym = true;
    Assemble(A, n);
    for (int i = 0; i < n * n; i++)
        A.Add(i, i, 1.0);
    CVector F(n * n, true, 1.0);
    for (auto _ : state) {
        CVector X(n * n, true, 0.0);
        benchmark::DoNotOptimize(A.GaussSeidel_Iter(F, X, 0.0, 10));
    }
    CVirtMat::m_bSym = false;
    AfxSetReportHandler(pfnOld);
}

} // namespace

BENCHMARK(Graph)->Arg(200)->Unit(benchmark::kMillisecond);
BENCHMARK(Assembly)->Arg(200)->Unit(benchmark::kMillisecond);
BENCHMARK(Substitutions)->Arg(200)->Unit(benchmark::kMillisecond);
BENCHMARK(GaussSeidel)->Arg(200)->Unit(benchmark::kMillisecond);
