// The road as a host walks it, on the skyline: graph, numbering, PostReorder, the profile,
// assembly through f_v, prescribed values imposed by the host, Gauss-Seidel, Cholesky_Solve
// with two right-hand sides; checked against a dense solve.
#include "common/femtest.h"
#include "common/mesh.h"
#include "dense/matrix.h"
#include "skyline/skylinematrix.h"

#include <algorithm>

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

} // namespace

TEST(SkylineRoad, EveryMeshAndNumberingMatchesTheDenseSolve) {
    ScriptDir script;
    ReportRecorder reports;
    for (int nCase = 0; nCase < 12; nCase++) {
        SCOPED_TRACE(nCase); // quads first; one dof per node, then two; numbering nCase % 3
        Road(MakeRoadMesh(7, 6, nCase < 6, 1 + nCase / 3 % 2), s_numberings[nCase % 3]);
    }
}
