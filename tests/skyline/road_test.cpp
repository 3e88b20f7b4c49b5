// The road as a host walks it, on the skyline: graph, numbering, PostReorder, the profile,
// assembly through f_v, prescribed values imposed by the host, Gauss-Seidel, Cholesky_Solve
// with two right-hand sides; checked against a dense solve.
#include "common/femtest.h"
#include "common/mesh.h"
#include "dense/matrix.h"
#include "skyline/skylinematrix.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace {

// Natural numbering and two minimum-degree ones.
void (*const s_numberings[])(CReorderMat &) = {[](CReorderMat &) {},
                                               [](CReorderMat &g) { g.MinDegReorder2(); },
                                               [](CReorderMat &g) { g.MinDegReorder4(); }};

// Row and column p become the identity's; the column times the prescribed value moves to the
// right-hand sides, whose row p takes the value.
void Prescribe(CSkylineMatrix &m, CMatrix &B, int p, double dValue) {
    for (int j = 0; j < m.m_nRows; j++) {
        const int a = std::min(j, p), b = std::max(j, p); // the pair's stored place (a, b)
        if (j == p || m.PeakRow(b) > a)
            continue;
        for (int k = 0; k < 2; k++)
            B[j][k] -= m(a, b) * dValue;
        m(a, b) = 0.0;
    }
    m(p, p) = 1.0;
    B[p][0] = B[p][1] = dValue;
}

void Road(const RoadMesh &mesh, void (*number)(CReorderMat &)) {
    const int n = mesh.nDOFs;
    std::vector<double> g(n); // the prescribed values, read at the prescribed dofs only
    for (int d = 0; d < n; d++)
        g[d] = 0.5 + 0.01 * d;
    CReorderMat graph(0);
    BuildGraph(graph, n, mesh.dofs);
    number(graph);
    graph.PostReorder();
    CSkylineMatrix m;
    ASSERT_TRUE(m.Allocate(graph));
    AssembleInLabels(m, graph, mesh, 0, false);
    CMatrix B = LoadsInLabels(graph, mesh);
    for (int d : mesh.prescribed)
        Prescribe(m, B, graph.f_v(d), g[d]);

    // Gauss-Seidel first: it leaves the matrix for the direct solve.
    CVector b(n), x(n, true, 0.0);
    for (int l = 0; l < n; l++)
        b[l] = B[l][0];
    EXPECT_EQ(m.GaussSeidel_Iter(b, x, 1e-13, 100000), 1);
    double dTime = 0.0;
    ASSERT_EQ(m.Cholesky_Solve(&B, dTime), 1);
    for (int k = 0; k < 2; k++) {
        std::vector<double> direct(n), iterated(n);
        for (int d = 0; d < n; d++) {
            direct[d] = B[graph.f_v(d)][k];
            iterated[d] = x[graph.f_v(d)];
        }
        const std::vector<double> ref = ReferenceSolve(mesh, 0, false, k, g);
        EXPECT_LE(RelativeError(direct, ref), 1e-9);
        EXPECT_LE(k == 0 ? RelativeError(iterated, ref) : 0.0, 1e-9);
    }
}

// The factorisation row by row, each multiplier a chain over the finished rows: the form
// that Cholesky computes two rows at a time.
void PlainCholesky(CSkylineMatrix &m) {
    std::vector<double> D(m.m_nRows), w;
    for (int i = 0; i < m.m_nRows; i++) {
        const int p = m.PeakRow(i);
        w.assign(&m(p, i), &m(p, i) + (i - p + 1));
        for (int j = p; j < i; j++) {
            const int s = std::max(p, m.PeakRow(j));
            double dValue = w[j - p];
            for (int c = s; c < j; c++)
                dValue -= w[c - p] * m(c, j) * D[c];
            w[j - p] = dValue / D[j];
        }
        double dPivot = w[i - p];
        for (int c = p; c < i; c++)
            dPivot -= std::pow(w[c - p], 2.0) * D[c];
        w[i - p] = D[i] = dPivot;
        std::copy(w.begin(), w.end(), &m(p, i));
    }
}

// L y = b and L^T x = y through the accessor, for one column, diagonal included (mode 2).
void PlainSubstitutions(CSkylineMatrix &m, CMatrix &B) {
    const int n = m.m_nRows;
    for (int i = 0; i < n; i++) {
        for (int k = m.PeakRow(i); k < i; k++)
            B[i][0] -= m(k, i) * B[k][0];
        B[i][0] /= m(i, i);
    }
    for (int j = n - 1; j >= 0; j--) {
        B[j][0] /= m(j, j);
        for (int i = m.PeakRow(j); i < j; i++)
            B[i][0] -= m(i, j) * B[j][0];
    }
}

} // namespace

// Ragged profiles (minimum-degree numberings), rows of one value, odd and even orders.
TEST(SkylineRoad, FactorIsTheRowByRowFactorBitForBit) {
    ScriptDir script;
    for (int nCase = 0; nCase < 12; nCase++) {
        SCOPED_TRACE(nCase);
        const RoadMesh mesh = MakeRoadMesh(7, 6 + nCase / 6, nCase % 2 == 0, 1 + nCase / 3 % 2);
        CReorderMat graph(0);
        BuildGraph(graph, mesh.nDOFs, mesh.dofs);
        s_numberings[nCase % 3](graph);
        graph.PostReorder();
        CSkylineMatrix a, b;
        ASSERT_TRUE(a.Allocate(graph));
        ASSERT_TRUE(b.Allocate(graph));
        AssembleInLabels(a, graph, mesh, 0, false);
        AssembleInLabels(b, graph, mesh, 0, false);
        a.Cholesky();
        PlainCholesky(b);
        EXPECT_EQ(std::memcmp(a.m_pValues, b.m_pValues, sizeof(double) * a.m_nValues), 0);

        // The substitutions on the same factor, the library's against the accessor's.
        CMatrix Ba = LoadsInLabels(graph, mesh), Bb(mesh.nDOFs, 1);
        for (int r = 0; r < mesh.nDOFs; r++)
            Bb[r][0] = Ba[r][0];
        a.ForwSub(&Ba, NULL, 2);
        a.BackwSub(&Ba, NULL, 2);
        PlainSubstitutions(a, Bb);
        for (int r = 0; r < mesh.nDOFs; r++)
            EXPECT_EQ(std::memcmp(&Ba[r][0], &Bb[r][0], sizeof(double)), 0) << r;
    }
}

TEST(SkylineRoad, EveryMeshAndNumberingMatchesTheDenseSolve) {
    ScriptDir script;
    ReportRecorder reports;
    for (int nCase = 0; nCase < 12; nCase++) {
        SCOPED_TRACE(nCase); // quads first; one dof per node, then two; numbering nCase % 3
        Road(MakeRoadMesh(7, 6, nCase < 6, 1 + nCase / 3 % 2), s_numberings[nCase % 3]);
    }
}
