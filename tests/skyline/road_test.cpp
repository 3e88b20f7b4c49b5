// The road as a host walks it, on the skyline: graph, numbering, PostReorder, the profile,
// assembly through f_v, prescribed values imposed by the host, Gauss-Seidel, Cholesky_Solve
// with two right-hand sides, and a second load over the same profile; checked against a dense
// solve.
#include "common/femtest.h"
#include "common/mesh.h"
#include "dense/matrix.h"
#include "skyline/skylinematrix.h"

namespace {

void (*const s_numberings[])(CReorderMat &) = {
    [](CReorderMat &) {}, [](CReorderMat &g) { g.MinDegReorder(NULL); },
    [](CReorderMat &g) { g.MinDegReorder2(); }, [](CReorderMat &g) { g.MinDegReorder3(); },
    [](CReorderMat &g) { g.MinDegReorder4(); }};

// The value prescribed at dof d for right-hand side k.
double Prescribed(int d, int k) {
    return k == 0 ? 0.5 + 0.01 * d : -1.0 + 0.02 * d;
}

void Road(const RoadMesh &mesh, void (*number)(CReorderMat &)) {
    const int n = mesh.nDOFs;
    CReorderMat g(0);
    BuildGraph(g, n, mesh.dofs);
    number(g);
    g.PostReorder();
    CSkylineMatrix m;
    for (int nLoad = 0; nLoad < 2; nLoad++) {
        ASSERT_TRUE(m.Allocate(g)); // the second time: the same profile, all values 0 again
        for (int e = 0; e < (int)mesh.dofs.size(); e++) {
            std::vector<LONG> dofs = mesh.dofs[e];
            for (LONG &d : dofs)
                d = d < 0 ? d : g.f_v(d);
            m.AddValues(dofs.data(), ElementMatrix(mesh, e, nLoad, false).data(), (int)dofs.size());
        }
        CMatrix B(n, 2);
        for (int d = 0; d < n; d++)
            for (int k = 0; k < 2; k++)
                B[g.f_v(d)][k] = Load(d, k);
        // Each prescribed row and column become the identity's; the column times the value
        // moves to the right-hand sides.
        for (int d : mesh.prescribed) {
            const int p = g.f_v(d);
            auto Move = [&](int r, double &a) {
                for (int k = 0; k < 2; k++)
                    B[r][k] -= a * Prescribed(d, k);
                a = 0.0;
            };
            for (int r = m.PeakRow(p); r < p; r++)
                Move(r, m(r, p));
            for (int j = p + 1; j < n; j++)
                if (m.PeakRow(j) <= p)
                    Move(j, m(p, j));
            m(p, p) = 1.0;
        }
        for (int d : mesh.prescribed)
            for (int k = 0; k < 2; k++)
                B[g.f_v(d)][k] = Prescribed(d, k);

        // Gauss-Seidel first: it leaves the matrix for the direct solve.
        CVector b(n), x(n, true, 0.0);
        for (int l = 0; l < n; l++)
            b[l] = B[l][0];
        EXPECT_EQ(m.GaussSeidel_Iter(b, x, 1e-13, 100000), 1);
        double dTime = 0.0;
        ASSERT_EQ(m.Cholesky_Solve(&B, dTime), 1);
        for (int k = 0; k < 2; k++) {
            std::vector<double> direct(n), iterated(n), prescribed(n);
            for (int d = 0; d < n; d++) {
                direct[d] = B[g.f_v(d)][k];
                iterated[d] = x[g.f_v(d)];
                prescribed[d] = Prescribed(d, k);
            }
            const std::vector<double> ref = ReferenceSolve(mesh, nLoad, false, k, prescribed);
            EXPECT_LE(RelativeError(direct, ref), 1e-9);
            EXPECT_LE(k == 0 ? RelativeError(iterated, ref) : 0.0, 1e-9);
        }
    }
}

} // namespace

TEST(SkylineRoad, EveryMeshAndNumberingMatchesTheDenseSolve) {
    ScriptDir script;
    SymFlag sym(true);
    ReportRecorder reports;
    for (bool bQuads : {true, false})
        for (int nPerNode : {1, 2})
            for (int k = 0; k < 5; k++) {
                SCOPED_TRACE(std::to_string(bQuads) + std::to_string(nPerNode) + std::to_string(k));
                Road(MakeRoadMesh(7, 6, bQuads, nPerNode), s_numberings[k]);
            }
}
