// The road as a host walks it: graph, numbering, PostReorder, pattern, assembly, prescribed
// values, solve, and a second load over the same pattern; checked against a dense solve.
#include "common/mesh.h"
#include "system_test_util.h"

// Quads or triangles, dofs per node, numbering: none or MinDegReorder, 2, 3, 4.
class Road : public ::testing::TestWithParam<std::tuple<bool, int, int>> {};

// SymHandleBCs and SymUnifyAndZero (zero values) on the upper triangle; UnifyAndZero2.
enum Constraint { kHandleBCs, kSymUnifyZero, kUnify2 };

TEST_P(Road, AssembleConstrainSolveAndAssembleAgain) {
    const int nNumbering = std::get<2>(GetParam());
    const RoadMesh mesh = MakeRoadMesh(7, 6, std::get<0>(GetParam()), std::get<1>(GetParam()));
    const int n = mesh.nDOFs, nb = (int)mesh.prescribed.size();
    ScriptDir script;
    ReportRecorder reports;
    for (Constraint bc : {kHandleBCs, kSymUnifyZero, kUnify2}) {
        const bool bSym = bc != kUnify2;
        SymFlag sym(bSym);
        CReorderMat g(1);
        BuildGraph(g, n, mesh.dofs);
        void (*const numberings[])(CReorderMat &) = {
            [](CReorderMat &) {}, [](CReorderMat &h) { h.MinDegReorder(NULL); },
            [](CReorderMat &h) { h.MinDegReorder2(); }, [](CReorderMat &h) { h.MinDegReorder3(); },
            [](CReorderMat &h) { h.MinDegReorder4(); }};
        numberings[nNumbering](g);
        g.PostReorder();
        CSystSpMat m;
        m.Allocate(g);
        // The prescribed values of each right-hand side by dof; the CVector forms give both
        // the same.
        std::vector<double> gv[2] = {std::vector<double>(n, 0.0), std::vector<double>(n, 0.0)};
        for (int d : mesh.prescribed) {
            gv[0][d] = bc == kSymUnifyZero ? 0.0 : 0.5 + 0.01 * d;
            gv[1][d] = bc == kHandleBCs ? -1.0 + 0.02 * d : gv[0][d];
        }
        // Loads 0 and 1, each solved directly, then by Gauss-Seidel on a new assembly.
        for (int nRun = 0; nRun < 4; nRun++) {
            const int nLoad = nRun / 2;
            const bool bDirect = nRun % 2 == 0;
            if (nRun > 0)
                m.Allocate(g); // the graph is spent; the same size keeps the pattern
            const int nCells = CellCount(m);
            for (int e = 0; e < (int)mesh.dofs.size(); e++) {
                std::vector<LONG> dofs = mesh.dofs[e];
                for (LONG &d : dofs)
                    d = d >= 0 ? g.f_v(d) : d;
                std::vector<double> values = ElementMatrix(mesh, e, nLoad, !bSym);
                m.AddValues(dofs.data(), values.data(), (int)dofs.size());
            }
            EXPECT_TRUE(nRun > 0 || !bSym || CellCount(m) == nCells); // the pattern has all

            CMatrix B(n, 2), bcs(nb, 3);
            CVector vDOFs(nb), vValues(nb);
            for (int d = 0; d < n; d++)
                for (int k = 0; k < 2; k++)
                    B[g.f_v(d)][k] = Load(d, k);
            for (int b = 0; b < nb; b++) {
                int d = mesh.prescribed[b];
                bcs[b][0] = vDOFs[b] = g.f_v(d);
                bcs[b][1] = vValues[b] = gv[0][d];
                bcs[b][2] = gv[1][d];
            }
            if (bc == kHandleBCs) {
                m.SymHandleBCs(bcs, B);
                for (int b = 0; b < nb; b++) // the prescribed rows of B are the caller's
                    for (int k = 0; k < 2; k++)
                        B[(int)bcs[b][0]][k] = bcs[b][k + 1];
            } else if (bc == kSymUnifyZero) {
                m.SymUnifyAndZero(vDOFs, vValues, &B);
            } else {
                m.UnifyAndZero2(vDOFs, vValues, &B);
            }

            double dTime;
            CVector F(n), X(n, true, 0.0);
            if (bDirect) {
                ASSERT_EQ(bSym ? m.Cholesky_Solve(&B, dTime) : m.LU_Solve(&B, dTime), 1);
            } else {
                for (int i = 0; i < n; i++)
                    F[i] = B[i][0];
                EXPECT_EQ(m.GaussSeidel_Iter(F, X, 1e-13, 100000), 1);
            }
            for (int k = 0; k < (bDirect ? 2 : 1); k++) {
                std::vector<double> x(n);
                for (int d = 0; d < n; d++)
                    x[d] = bDirect ? B[g.f_v(d)][k] : X[g.f_v(d)];
                EXPECT_LE(RelativeError(x, ReferenceSolve(mesh, nLoad, !bSym, k, gv[k])), 1e-9)
                    << "constraint " << bc << ", run " << nRun << ", right-hand side " << k;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Meshes, Road,
                         ::testing::Combine(::testing::Bool(), ::testing::Values(1, 2),
                                            ::testing::Range(0, 5)));
