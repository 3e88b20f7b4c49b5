// The road solved iteratively: graph, numbering, pattern, assembly, prescribed values, then
// the conjugate gradients of the lists (with and without scaling, from zero or from a start
// vector) and of the flat copy (with and without scaling), for one and two load columns,
// against the direct solve of the same system and a dense reference.
#include "common/mesh.h"
#include "system_test_util.h"

// Quads or triangles, dofs per node, MinDegReorder4 or no numbering.
class CGRoad : public ::testing::TestWithParam<std::tuple<bool, int, bool>> {};

enum Solver { kDirect, kLists, kListsScaled, kListsFromStart, kFlat, kFlatScaled };

TEST_P(CGRoad, ConjugateGradientsAgreeWithTheDirectSolve) {
    const RoadMesh mesh = MakeRoadMesh(9, 7, std::get<0>(GetParam()), std::get<1>(GetParam()));
    const int n = mesh.nDOFs, nb = (int)mesh.prescribed.size();
    ScriptDir script;
    ReportRecorder reports;
    SymFlag sym(true);
    CReorderMat g(1);
    BuildGraph(g, n, mesh.dofs);
    if (std::get<2>(GetParam()))
        g.MinDegReorder4();
    g.PostReorder();
    reports.Texts().clear(); // the numbering's; the solvers here show none
    std::vector<double> gv(n, 0.0);
    for (int d : mesh.prescribed)
        gv[d] = 0.5 + 0.01 * d;
    const std::vector<double> reference[2] = {ReferenceSolve(mesh, 0, false, 0, gv),
                                              ReferenceSolve(mesh, 0, false, 1, gv)};

    CSystSpMat m;
    for (int c : {1, 2}) {
        std::vector<double> direct[2];
        for (Solver s : {kDirect, kLists, kListsScaled, kListsFromStart, kFlat, kFlatScaled}) {
            SCOPED_TRACE("solver " + std::to_string(s) + ", columns " + std::to_string(c));
            // a fresh load over the same pattern: the list forms scale and the direct
            // solve factorises in place
            m.Allocate(g);
            AssembleInLabels(m, g, mesh, 0, false);
            CMatrix loads = LoadsInLabels(g, mesh), B(n, c), bcs(nb, 1 + c);
            for (int i = 0; i < n; i++)
                for (int k = 0; k < c; k++)
                    B[i][k] = loads[i][k];
            for (int b = 0; b < nb; b++) {
                bcs[b][0] = g.f_v(mesh.prescribed[b]);
                for (int k = 0; k < c; k++)
                    bcs[b][1 + k] = gv[mesh.prescribed[b]];
            }
            m.SymHandleBCs(bcs, B);
            for (int b = 0; b < nb; b++) // the prescribed rows of B are the caller's
                for (int k = 0; k < c; k++)
                    B[(int)bcs[b][0]][k] = gv[mesh.prescribed[b]];

            CMatrix X0(n, c, true, 0.25);
            double dNorm = -1.0, dTime;
            int nIter = 0;
            if (s == kDirect)
                ASSERT_EQ(m.Cholesky_Solve(&B, dTime), 1);
            else if (s == kFlat || s == kFlatScaled)
                nIter = m.ConjGradient2(B, dNorm, 10 * n, 1e-24, NULL, s == kFlatScaled);
            else
                nIter = m.ConjGradient(B, s == kListsFromStart ? &X0 : NULL, dNorm, 10 * n, 1e-24,
                                       NULL, s == kListsScaled);
            EXPECT_LT(nIter, 10 * n);
            EXPECT_TRUE(s == kDirect || (dNorm >= 0.0 && dNorm < 1e-12));

            CMatrix &x = s == kListsFromStart ? X0 : B;
            for (int k = 0; k < c; k++) {
                std::vector<double> xd(n);
                for (int d = 0; d < n; d++)
                    xd[d] = x[g.f_v(d)][k];
                if (s == kDirect)
                    direct[k] = xd;
                EXPECT_LE(RelativeError(xd, reference[k]), 1e-9) << "column " << k;
                EXPECT_LE(RelativeError(xd, direct[k]), 1e-9) << "column " << k;
            }
        }
    }
    EXPECT_TRUE(reports.Texts().empty());
}

INSTANTIATE_TEST_SUITE_P(Meshes, CGRoad,
                         ::testing::Combine(::testing::Bool(), ::testing::Values(1, 2),
                                            ::testing::Bool()));
