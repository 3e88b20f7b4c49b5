// CSparseMatrix factorisations and substitutions: hand cases, failures, agreement with a
// dense solve, the substitution modes the solvers do not use.
#include "sparse_test_util.h"

// Each solver on small lists ('C' Cholesky_Solve, 'L' LU_Solve): its code, the factors or
// the half-finished state left, and m_Flops (reset by Cholesky_Solve, 1 per pivot and 2 per
// updated cell; left at 7 by LU_Solve). A failure leaves -1.0 as the time, the right-hand
// side as it was, and shows nothing; a successful LU_Solve shows its report.
TEST(SparseFactor, FactorsFailuresAndFlops) {
    const struct {
        const char *pszBefore, *pszSolvers;
        int nResult;
        const char *pszAfter;
        unsigned nCholeskyFlops;
    } cases[] = {
        {"", "CL", 1, "", 0},
        {"0:0=4,1=2;1:1=3", "C", 1, "0:0=4,1=0.5;1:1=2", 4},
        // (1, 2) comes by fill-in; the stored 0.0 at (2, 3) is passed over and makes none
        {"0:0=4,1=1,2=1;1:1=4;2:2=4,3=0;3:3=2", "C", 1,
         "0:0=4,1=0.25,2=0.25;1:1=3.75,2=-0.066666666666666666;2:2=3.7333333333333334,3=0;3:3=2",
         12},
        {"0:0=2,1=1;1:0=4,1=3", "L", 1, "0:0=2,1=1;1:0=2,1=1", 0},
        {"0:0=2;1:0=1,1=3", "L", 1, "0:0=2;1:0=0.5,1=3", 0}, // nothing behind the diagonal
        {"0:0=-2,1=1;1:0=1,1=1", "L", 1, "0:0=-2,1=1;1:0=-0.5,1=1.5", 0}, // no pivoting
        // a 0.0 below the pivot is passed over and makes no fill-in
        {"0:0=2,2=1;1:0=0,1=3;2:2=1", "L", 1, "0:0=2,2=1;1:0=0,1=3;2:2=1", 0},
        {"0:0=1;2:2=1", "CL", -1, "0:0=1;2:2=1", 1},             // missing row
        {"0:0=1;1:2=1;2:2=1", "CL", -1, "0:0=1;1:2=1;2:2=1", 1}, // first cell off
        {"0:0=1;1:;2:2=1", "CL", -1, "0:0=1;1:;2:2=1", 1},       // row without cells
        {"0:0=0;1:1=1", "CL", -1, "0:0=0;1:1=1", 0},             // pivot 0.0
        // half-finished: the second pivot is 0.0
        {"0:0=1,1=1;1:0=1,1=1", "CL", -1, "0:0=1,1=1;1:0=1,1=0", 3},
        {"0:0=1;1:1=-1", "C", -1, "0:0=1;1:1=-1", 1}, // negative pivot
    };
    for (const auto &t : cases) {
        for (const char *p = t.pszSolvers; *p != 0; p++) {
            SCOPED_TRACE(std::string(t.pszBefore) + " with " + *p);
            const bool bLU = *p == 'L';
            ReportRecorder rec;
            Lists A(t.pszBefore);
            CMatrix B(A.GetRows(), 1, true, 1.0);
            double dTime = 0.0;
            CVirtMat::m_Flops = 7;
            EXPECT_EQ(bLU ? A.LU_Solve(&B, dTime) : A.Cholesky_Solve(&B, dTime), t.nResult);
            EXPECT_EQ(Dump(A), t.pszAfter);
            EXPECT_EQ(CVirtMat::m_Flops, bLU ? 7u : t.nCholeskyFlops);
            EXPECT_EQ(rec.Texts().size(), bLU && t.nResult == 1 ? 1u : 0u);
            for (const std::string &strText : rec.Texts())
                EXPECT_TRUE(MatchesReport(strText, "Used time:\r\n Factorizing  :   {T}\r\n"
                                                   " Forw. subst. :   {T}\r\n"
                                                   " Backw. subst.:   {T}\r\n"));
            EXPECT_EQ(dTime == -1.0, t.nResult != 1); // -1.0 exactly on failure
            EXPECT_TRUE(t.nResult == 1 || Flat(B) == std::vector<double>(B.m_nSize, 1.0));
        }
    }
}

// Meshes of 35 and 199 unknowns assembled through AddValues, the LU ones not symmetric,
// against a dense solve with one and three right-hand sides; the same right-hand sides
// through the steps after that one factorisation give the same answers.
TEST(SparseFactor, SolversAgreeWithADenseSolve) {
    for (RoadMesh mesh : {MakeRoadMesh(6, 6, true, 1), MakeRoadMesh(10, 10, false, 2)}) {
        const int n = mesh.nDOFs;
        mesh.prescribed.clear();
        for (bool bLU : {false, true}) {
            for (int c : {1, 3}) {
                CSparseMatrix S;
                for (int e = 0; e < (int)mesh.dofs.size(); e++)
                    S.AddValues(mesh.dofs[e].data(), ElementMatrix(mesh, e, 0, bLU).data(),
                                mesh.nLocal);
                if (!bLU)
                    S.MakeUpper();
                CMatrix B(n, c), B2(n, c);
                for (int k = 0; k < n * c; k++)
                    B.m_pVector[k] = B2.m_pVector[k] = LoadValue(k / c, k % c);
                ReportRecorder rec;
                double dTime;
                ASSERT_EQ(bLU ? S.LU_Solve(&B, dTime) : S.Cholesky_Solve(&B, dTime), 1);
                for (int k = 0; k < c; k++) {
                    std::vector<double> x(n);
                    for (int i = 0; i < n; i++)
                        x[i] = B[i][k];
                    EXPECT_LT(RelativeError(x, ReferenceSolve(mesh, 0, bLU, k, x)), 1e-10);
                }
                S.ForwSub(&B2, NULL, bLU ? 1 : -1);
                if (!bLU)
                    S.DiagMult(&B2, NULL, -2);
                S.BackwSub(&B2, NULL, bLU ? 2 : 1);
                EXPECT_EQ(Flat(B2), Flat(B));
            }
        }
    }
}

// The modes the solvers do not reach, on 3 by 3 lists with a right-hand side of ones.
// Every mode, the unknown ones included, leaves the lists, row order included, as they were.
TEST(SparseFactor, SubstitutionModesByHand) {
    Lists L("0:0=2,1=1;1:0=0.5,1=4,2=1;2:0=0.25,1=0.5,2=8"); // both triangles
    Lists U("0:0=2,1=1,2=0.5;1:1=4,2=0.25;2:2=8");
    Lists D("0:0=2;1:0=1,2=3;2:2=4"); // row 1 without a diagonal cell
    const auto Forw = &CSparseMatrix::ForwSub, Backw = &CSparseMatrix::BackwSub,
               Diag = &CSparseMatrix::DiagMult;
    const struct {
        CSparseMatrix *pM;
        decltype(Forw) pfnStep;
        int nMode;
        std::vector<double> expected;
    } cases[] = {
        {&L, Forw, 2, {0.5, 0.1875, 0.09765625}}, // L y = b, then by the diagonal
        {&U, Forw, -2, {0.5, 0.125, 0.08984375}}, // U^T y = b, then by the first cell
        {&D, Diag, 2, {2.0, 0.0, 4.0}},           // no diagonal cell: 0.0
        {&D, Diag, -2, {0.5, HUGE_VAL, 0.25}},    // no diagonal cell: infinity
        {&U, Forw, 3, {1.0, 1.0, 1.0}},           // unknown modes do no work
        {&U, Backw, -1, {1.0, 1.0, 1.0}},         // and reverse the rows twice
        {&D, Diag, 5, {1.0, 1.0, 1.0}},
    };
    for (const auto &t : cases) {
        const std::string strBefore = Dump(*t.pM);
        CMatrix R(3, 1, true, 1.0);
        double dTime = 0.0;
        (t.pM->*t.pfnStep)(&R, &dTime, t.nMode);
        EXPECT_EQ(Flat(R), t.expected) << "case " << &t - cases;
        EXPECT_TRUE(dTime >= 0.0 && dTime < 1000.0);
        EXPECT_EQ(Dump(*t.pM), strBefore);
    }
    // modes 1 and -1 scale the diagonal by the first column
    CMatrix R(3, 1, true, 0.5);
    D.DiagMult(&R, NULL, 1);
    EXPECT_EQ(Dump(D), "0:0=1;1:0=1,2=3;2:2=2");
    D.DiagMult(&R, NULL, -1);
    EXPECT_EQ(Dump(D), "0:0=2;1:0=1,2=3;2:2=4");
}
