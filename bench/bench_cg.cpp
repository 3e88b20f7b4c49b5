// Conjugate gradients on the system matrix of a 2D Poisson problem (bilinear quads on an n by
// n node grid) and a 3D one (trilinear hexahedra on an n by n by n grid), natural numbering,
// the face y = 0 (2D) or z = 0 (3D) prescribed to 0.0, one or eight load columns.
// ConjGradient2 runs a fixed number of iterations (dTol 0); a run of no iteration gives the
// set-up (flat copy, work storage, swap), and the difference the cost per iteration.
// Counters: setup_ms, ms_per_iter, us_per_iter_per_rhs, and product_share, the share of
// the matrix product in the iterations by the solver's own clock. Beside it, PreMult of a
// dense block by the same matrix, and Eigen's ConjugateGradient on the full matrix for
// one column as a yardstick, when Eigen is found.
#include "dense/matrix.h"
#include "poisson.h"
#include "system/systspmat.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <memory>
#include <vector>

#ifdef FEMMAT_HAVE_EIGEN
#include <Eigen/IterativeLinearSolvers>
#include <Eigen/Sparse>
#endif

using namespace poisson;

namespace {

// Stiffness of the unit cube trilinear hexahedron for -Laplace, 2 by 2 by 2 Gauss points.
// Nodes: bit 0 of the local number is x, bit 1 y, bit 2 z.
void HexStiffness(double K[64]) {
    const double g = 1.0 / std::sqrt(3.0);
    for (int k = 0; k < 64; k++)
        K[k] = 0.0;
    for (int q = 0; q < 8; q++) {
        const double p[3] = {q & 1 ? g : -g, q & 2 ? g : -g, q & 4 ? g : -g};
        double grad[8][3];
        for (int a = 0; a < 8; a++) {
            const double s[3] = {a & 1 ? 1.0 : -1.0, a & 2 ? 1.0 : -1.0, a & 4 ? 1.0 : -1.0};
            for (int d = 0; d < 3; d++) {
                double v = s[d] / 8.0;
                for (int e = 0; e < 3; e++)
                    if (e != d)
                        v *= 1.0 + s[e] * p[e];
                grad[a][d] = 2.0 * v; // reference [-1, 1] to the unit cube
            }
        }
        for (int a = 0; a < 8; a++)
            for (int b = 0; b < 8; b++)
                for (int d = 0; d < 3; d++)
                    K[a * 8 + b] += grad[a][d] * grad[b][d] / 8.0; // weight 1, volume 1/8
    }
}

// The nodes of hexahedron e of an n^3 node grid.
void HexDofs(int n, int e, LONG dofs[8]) {
    const int m = n - 1, x = e % m, y = e / m % m, z = e / (m * m);
    for (int a = 0; a < 8; a++)
        dofs[a] = (z + (a >> 2 & 1)) * n * n + (y + (a >> 1 & 1)) * n + x + (a & 1);
}

// The system of the road, natural numbering, with nColumns load columns of ones (varied a
// little per column) and the prescribed face.
struct Problem {
    CSystSpMat A;
    CMatrix B;
    int nDOFs = 0;
};

std::unique_ptr<Problem> MakeProblem(int n, bool b3D, int nColumns) {
    std::unique_ptr<Problem> p(new Problem);
    const int nDOFs = b3D ? n * n * n : n * n;
    const int nElements = b3D ? (n - 1) * (n - 1) * (n - 1) : (n - 1) * (n - 1);
    const int nLocal = b3D ? 8 : 4;
    double K[64];
    if (b3D)
        HexStiffness(K);
    else
        for (int k = 0; k < 16; k++)
            K[k] = s_Quad[k];
    auto Dofs = [&](int e, LONG *dofs) {
        if (b3D)
            HexDofs(n, e, dofs);
        else
            QuadDofs(n, e, dofs);
    };

    CReorderMat g(0);
    LONG dofs[8];
    g.Alloc(nDOFs);
    for (int e = 0; e < nElements; e++) {
        Dofs(e, dofs);
        g.InsertDOFs(dofs, 0, nLocal);
    }
    g.Init();
    for (int e = 0; e < nElements; e++) {
        Dofs(e, dofs);
        g.InsertDOFs(dofs, 1, nLocal);
    }
    g.PostReorder();
    CVirtMat::m_bSym = true;
    p->A.Allocate(g);
    for (int e = 0; e < nElements; e++) {
        Dofs(e, dofs);
        for (int a = 0; a < nLocal; a++)
            dofs[a] = g.f_v(dofs[a]);
        p->A.AddValues(dofs, K, nLocal);
    }
    CVirtMat::m_bSym = false;

    p->B.Allocate(nDOFs, nColumns, false, 0.0);
    for (int i = 0; i < nDOFs; i++)
        for (int k = 0; k < nColumns; k++)
            p->B[i][k] = 1.0 + 0.1 * k * std::sin(0.01 * i);
    const int nFace = b3D ? n * n : n;
    CVector vDOFs(nFace), vValues(nFace, true, 0.0);
    for (int i = 0; i < nFace; i++)
        vDOFs[i] = g.f_v(i);
    p->A.SymUnifyAndZero(vDOFs, vValues, &p->B);
    p->nDOFs = nDOFs;
    return p;
}

void ConjGradient2(benchmark::State &state, bool b3D) {
    const int n = (int)state.range(0), nColumns = (int)state.range(1);
    const int nIter = (int)state.range(2);
    std::unique_ptr<Problem> p = MakeProblem(n, b3D, nColumns);
    AfxReportHandler pfnOld = AfxSetReportHandler(&Silent);
    double dSetup = 0.0, dRun = 0.0, dProduct = 0.0, dRest = 0.0;
    for (auto _ : state) {
        CMatrix B = p->B;
        double dNorm;
        double t0 = CpuMs();
        p->A.ConjGradient2(B, dNorm, 0, 0.0, NULL, false);
        dSetup += MsSince(t0);
        B = p->B;
        CVector times;
        t0 = CpuMs();
        if (p->A.ConjGradient2(B, dNorm, nIter, 0.0, &times, false) != nIter)
            state.SkipWithError("stopped early");
        dRun += MsSince(t0);
        dProduct += times[0];
        dRest += times[1];
        benchmark::DoNotOptimize(B.GetVector());
    }
    AfxSetReportHandler(pfnOld);
    const double dRuns = (double)state.iterations();
    const double dPerIter = (dRun - dSetup) / dRuns / nIter;
    state.counters["dofs"] = p->nDOFs;
    state.counters["cells"] = CountCells(p->A);
    state.counters["setup_ms"] = dSetup / dRuns;
    state.counters["ms_per_iter"] = dPerIter;
    state.counters["us_per_iter_per_rhs"] = 1000.0 * dPerIter / nColumns;
    state.counters["product_share"] = dProduct / std::max(dProduct + dRest, 1e-9);
}

void CG2_2D(benchmark::State &state) {
    ConjGradient2(state, false);
}
void CG2_3D(benchmark::State &state) {
    ConjGradient2(state, true);
}

// PreMult into a block (the residual's product of the list form) and in place (mode 0);
// ns per stored cell and column.
void PreMult(benchmark::State &state) {
    const int n = (int)state.range(0), nColumns = (int)state.range(1);
    const bool bOut = state.range(2) != 0;
    std::unique_ptr<Problem> p = MakeProblem(n, false, nColumns);
    CMatrix out;
    double dMs = 0.0;
    for (auto _ : state) {
        CMatrix X = p->B;
        const double t0 = CpuMs();
        if (bOut)
            X.PreMult(&p->A, out, false, 1);
        else
            X.PreMult(&p->A, 0);
        dMs += MsSince(t0);
        benchmark::DoNotOptimize(bOut ? out.GetVector() : X.GetVector());
    }
    const int nCells = CountCells(p->A);
    state.counters["dofs"] = p->nDOFs;
    state.counters["ms"] = dMs / state.iterations();
    state.counters["ns_per_cell_per_col"] = 1e6 * dMs / state.iterations() / nCells / nColumns;
}

#ifdef FEMMAT_HAVE_EIGEN
// Eigen's diagonally preconditioned CG on the full symmetric matrix, one column, a fixed
// number of iterations: ms per iteration.
void EigenCG(benchmark::State &state, bool b3D) {
    const int n = (int)state.range(0), nIter = (int)state.range(2);
    std::unique_ptr<Problem> p = MakeProblem(n, b3D, 1);
    std::vector<Eigen::Triplet<double>> entries;
    for (CSparseMatrix::row *r = p->A.GetFirstRow(); r != NULL; r = r->m_pNext)
        for (CSparseMatrix::cell *c = r->m_pFirstCell; c != NULL; c = c->m_pNext) {
            entries.emplace_back(r->m_nRow, c->m_nCol, c->m_dValue);
            if (c->m_nCol != r->m_nRow)
                entries.emplace_back(c->m_nCol, r->m_nRow, c->m_dValue);
        }
    Eigen::SparseMatrix<double> A(p->nDOFs, p->nDOFs);
    A.setFromTriplets(entries.begin(), entries.end());
    Eigen::VectorXd b(p->nDOFs);
    for (int i = 0; i < p->nDOFs; i++)
        b[i] = p->B[i][0];
    Eigen::ConjugateGradient<Eigen::SparseMatrix<double>, Eigen::Lower | Eigen::Upper> cg;
    cg.setMaxIterations(nIter);
    cg.setTolerance(0.0);
    cg.compute(A);
    double dMs = 0.0;
    for (auto _ : state) {
        const double t0 = CpuMs();
        Eigen::VectorXd x = cg.solve(b);
        dMs += MsSince(t0);
        benchmark::DoNotOptimize(x.data());
    }
    state.counters["dofs"] = p->nDOFs;
    state.counters["ms_per_iter"] = dMs / state.iterations() / nIter;
}
void Eigen_2D(benchmark::State &state) {
    EigenCG(state, false);
}
void Eigen_3D(benchmark::State &state) {
    EigenCG(state, true);
}
#endif

} // namespace

// Arguments: nodes per side, load columns, iterations.
BENCHMARK(CG2_2D)
    ->ArgsProduct({{100, 224, 317}, {1, 8}, {40}})
    ->Iterations(2)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(CG2_3D)
    ->ArgsProduct({{22, 37, 47}, {1, 8}, {20}})
    ->Iterations(2)
    ->Unit(benchmark::kMillisecond);
// Arguments: nodes per side, columns, 1 into a block (upper triangle) / 0 in place.
BENCHMARK(PreMult)->ArgsProduct({{317}, {1, 8}, {1, 0}})->Unit(benchmark::kMillisecond);
#ifdef FEMMAT_HAVE_EIGEN
BENCHMARK(Eigen_2D)->Args({317, 1, 40})->Iterations(2)->Unit(benchmark::kMillisecond);
BENCHMARK(Eigen_3D)->Args({47, 1, 20})->Iterations(2)->Unit(benchmark::kMillisecond);
#endif
