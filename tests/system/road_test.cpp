// The road as a host walks it: graph, numbering, PostReorder, pattern, assembly, prescribed
// values, solve, and a second load over the same pattern; checked against a dense solve.
#include "common/mesh.h"
#include "system_test_util.h"

// Quads or triangles, dofs per node, numbering: none or MinDegReorder, 2, 3, 4.
class Road : public ::testing::TestWithParam<std::tuple<bool, int, int>> {};

void (*const s_numberings[])(CReorderMat &) = {
    [](CReorderMat &) {}, [](CReorderMat &g) { g.MinDegReorder(NULL); },
    [](CReorderMat &g) { g.MinDegReorder2(); }, [](CReorderMat &g) { g.MinDegReorder3(); },
    [](CReorderMat &g) { g.MinDegReorder4(); }};

// SymHandleBCs and SymUnifyAndZero (zero values) on the upper triangle; UnifyAndZero2.
enum Constraint { kHandleBCs, kSymUnifyZero, kUnify2 };

TEST_P(Road, AssembleConstrainSolveAndAssembleAgain) {
    const RoadMesh mesh = MakeRoadMesh(7, 6, std::get<0>(GetParam()), std::get<1>(GetParam()));
    const int n = mesh.nDOFs, nb = (int)mesh.prescribed.size();
    ScriptDir script;
    ReportRecorder reports;
    for (Constraint bc : {kHandleBCs, kSymUnifyZero, kUnify2}) {
        const bool bSym = bc != kUnify2;
        SymFlag sym(bSym);
        CReorderMat g(1);
        BuildGraph(g, n, mesh.dofs);
        s_numberings[std::get<2>(GetParam())](g);
        g.PostReorder();
        std::vector<double> gv(n, 0.0); // the prescribed values by dof
        for (int d : mesh.prescribed)
            gv[d] = bc == kSymUnifyZero ? 0.0 : 0.5 + 0.01 * d;
        // Each load on a fresh assembly: the second Allocate keeps the pattern and fill-in.
        CSystSpMat m;
        for (int nLoad = 0; nLoad < 2; nLoad++) {
            m.Allocate(g);
            const int nCells = CellCount(m);
            AssembleInLabels(m, g, mesh, nLoad, !bSym);
            EXPECT_TRUE(nLoad > 0 || !bSym || CellCount(m) == nCells); // the pattern has all

            // Both right-hand sides take the same prescribed values.
            CMatrix B = LoadsInLabels(g, mesh), bcs(nb, 3);
            for (int b = 0; b < nb; b++) {
                bcs[b][0] = g.f_v(mesh.prescribed[b]);
                bcs[b][1] = bcs[b][2] = gv[mesh.prescribed[b]];
            }
            CVector vDOFs, vValues, F, X(n, true, 0.0);
            bcs.GetColVect(vDOFs, 0);
            bcs.GetColVect(vValues, 1);
            if (bc == kHandleBCs) {
                m.SymHandleBCs(bcs, B);
                for (int b = 0; b < nb; b++) // the prescribed rows of B are the caller's
                    B[(int)vDOFs[b]][0] = B[(int)vDOFs[b]][1] = vValues[b];
            } else if (bc == kSymUnifyZero) {
                m.SymUnifyAndZero(vDOFs, vValues, &B);
            } else {
                m.UnifyAndZero2(vDOFs, vValues, &B);
            }

            // Gauss-Seidel leaves the matrix to the direct solve; the table's Cholesky,
            // reached through its slot, counts no flops.
            B.GetColVect(F, 0);
            EXPECT_EQ(m.GaussSeidel_Iter(F, X, 1e-13, 100000), 1);
            double dTime;
            ASSERT_EQ(bSym ? m.Cholesky_Solve(&B, dTime) : m.LU_Solve(&B, dTime), 1);
            EXPECT_TRUE(!bSym || CVirtMat::m_Flops == 0);
            for (int k = 0; k < 3; k++) {
                std::vector<double> x(n);
                for (int d = 0; d < n; d++)
                    x[d] = k < 2 ? B[g.f_v(d)][k] : X[g.f_v(d)];
                EXPECT_LE(RelativeError(x, ReferenceSolve(mesh, nLoad, !bSym, k % 2, gv)), 1e-9)
                    << "constraint " << bc << ", load " << nLoad << ", solution " << k;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Meshes, Road,
                         ::testing::Combine(::testing::Bool(), ::testing::Values(1, 2),
                                            ::testing::Range(0, 5)));
