// CSparseMatrix factorisations and substitutions: hand cases, failures, agreement with a
// dense solve, every substitution mode.
#include "sparse_test_util.h"

// Each solver on small lists: its code, the factors or the half-finished state left, and
// m_Flops (reset by Cholesky_Solve, 1 per pivot and 2 per updated cell; left alone by
// LU_Solve). A failure leaves -1.0 as the time, the right-hand side as it was, and shows
// nothing; a successful LU_Solve shows its report.
TEST(SparseFactor, FactorsFailuresAndFlops) {
    const struct {
        const char *pszBefore;
        bool bLU;
        int nResult;
        const char *pszAfter;
        unsigned nFlops;
    } cases[] = {
        {"", false, 1, "", 0},
        {"", true, 1, "", 7},
        {"0:0=4", false, 1, "0:0=4", 1},
        // (1, 2) comes by fill-in; the stored 0.0 at (2, 3) is passed over and makes none
        {"0:0=4,1=1,2=1;1:1=4;2:2=4,3=0;3:3=2", false, 1,
         "0:0=4,1=0.25,2=0.25;1:1=3.75,2=-0.066666666666666666;2:2=3.7333333333333334,3=0;3:3=2",
         12},
        {"0:0=2,1=1;1:0=4,1=3", true, 1, "0:0=2,1=1;1:0=2,1=1", 7},
        {"0:0=2;1:0=1,1=3", true, 1, "0:0=2;1:0=0.5,1=3", 7}, // nothing behind the diagonal
        {"0:0=-2,1=1;1:0=1,1=1", true, 1, "0:0=-2,1=1;1:0=-0.5,1=1.5", 7}, // no pivoting
        // a 0.0 below the pivot is passed over and makes no fill-in
        {"0:0=2,2=1;1:0=0,1=3;2:2=1", true, 1, "0:0=2,2=1;1:0=0,1=3;2:2=1", 7},
        {"0:0=1;2:2=1", false, -1, "0:0=1;2:2=1", 1}, // missing row
        {"0:0=1;2:2=1", true, -1, "0:0=1;2:2=1", 7},
        {"0:0=1;1:2=1;2:2=1", false, -1, "0:0=1;1:2=1;2:2=1", 1}, // first cell off
        {"0:0=1;1:2=1;2:2=1", true, -1, "0:0=1;1:2=1;2:2=1", 7},
        {"0:0=1;1:;2:2=1", false, -1, "0:0=1;1:;2:2=1", 1}, // row without cells
        {"0:0=1;1:;2:2=1", true, -1, "0:0=1;1:;2:2=1", 7},
        {"0:0=0;1:1=1", false, -1, "0:0=0;1:1=1", 0}, // pivot 0.0
        {"0:0=0;1:1=1", true, -1, "0:0=0;1:1=1", 7},
        {"0:0=1,1=1;1:0=1,1=1", false, -1, "0:0=1,1=1;1:0=1,1=0", 3}, // half-finished
        {"0:0=1,1=1;1:0=1,1=1", true, -1, "0:0=1,1=1;1:0=1,1=0", 7},  // second pivot 0.0
        {"0:0=1;1:1=-1", false, -1, "0:0=1;1:1=-1", 1},               // negative pivot
    };
    for (const auto &t : cases) {
        ReportRecorder rec;
        CSparseMatrix A;
        Load(A, t.pszBefore);
        const std::vector<double> b(A.GetRows(), 1.0);
        CMatrix B = Rhs(b);
        double dTime = 0.0;
        CVirtMat::m_Flops = 7;
        EXPECT_EQ(t.bLU ? A.LU_Solve(&B, dTime) : A.Cholesky_Solve(&B, dTime), t.nResult);
        EXPECT_EQ(Dump(A), t.pszAfter) << t.pszBefore;
        EXPECT_EQ(CVirtMat::m_Flops, t.nFlops) << t.pszBefore;
        EXPECT_EQ(rec.Texts().size(), t.bLU && t.nResult == 1 ? 1u : 0u);
        if (t.nResult == 1) {
            EXPECT_TRUE(dTime >= 0.0 && dTime < 1000.0);
        } else {
            EXPECT_TRUE(dTime == -1.0 && Flat(B) == b) << t.pszBefore;
        }
    }
}

TEST(SparseFactor, SolutionsByHandAndTheReport) {
    ReportRecorder rec;
    CSparseMatrix S, A;
    Load(S, "0:0=4,1=2;1:1=3");
    Load(A, "0:0=2,1=1;1:0=4,1=3");
    CMatrix BS = Rhs({2.0, 1.0}), BA = Rhs({3.0, 7.0});
    double dTime;
    EXPECT_EQ(S.Cholesky_Solve(&BS, dTime) + A.LU_Solve(&BA, dTime), 2);
    EXPECT_EQ(Flat(BS), (std::vector<double>{0.5, 0.0}));
    EXPECT_EQ(Flat(BA), (std::vector<double>{1.0, 1.0}));
    ASSERT_EQ(rec.Texts().size(), 1u);
    EXPECT_TRUE(MatchesReport(rec.Texts()[0], "Used time:\r\n Factorizing  :   {T}\r\n"
                                              " Forw. subst. :   {T}\r\n"
                                              " Backw. subst.:   {T}\r\n"))
        << rec.Texts()[0];
}

// Meshes of 35 and 199 unknowns assembled through AddValues, the LU ones not symmetric,
// against a dense solve with one and two right-hand sides; further right-hand sides
// through the steps after one factorisation give what a fresh solve gives.
TEST(SparseFactor, SolversAgreeWithADenseSolve) {
    ReportRecorder rec;
    for (RoadMesh mesh : {MakeRoadMesh(6, 6, true, 1), MakeRoadMesh(10, 10, false, 2)}) {
        const int n = mesh.nDOFs;
        mesh.prescribed.clear();
        for (bool bLU : {false, true}) {
            for (int c : {1, 2}) {
                CSparseMatrix S, S2;
                for (int e = 0; e < (int)mesh.dofs.size(); e++)
                    S.AddValues(mesh.dofs[e].data(), ElementMatrix(mesh, e, 0, bLU).data(),
                                mesh.nLocal);
                if (!bLU)
                    S.MakeUpper();
                S2 = S;
                CMatrix B(n, c), B2(n, c), B2fresh(n, c);
                for (int k = 0; k < n * c; k++) {
                    B.m_pVector[k] = Load(k / c, k % c);
                    B2.m_pVector[k] = B2fresh.m_pVector[k] = k % 7;
                }
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
                bLU ? S2.LU_Solve(&B2fresh, dTime) : S2.Cholesky_Solve(&B2fresh, dTime);
                EXPECT_EQ(Flat(B2), Flat(B2fresh));
            }
        }
    }
}

// Every mode on 3 by 3 lists with the right-hand side {1, 2, 3}. BackwSub leaves the row
// order as it was, and unknown modes change nothing.
TEST(SparseFactor, SubstitutionModesByHand) {
    CSparseMatrix L, U, D; // both triangles; upper triangle; row 1 without a diagonal cell
    Load(L, "0:0=2,1=1;1:0=0.5,1=4,2=1;2:0=0.25,1=0.5,2=8");
    Load(U, "0:0=2,1=1,2=0.5;1:1=4,2=0.25;2:2=8");
    Load(D, "0:0=2;1:0=1,2=3;2:2=4");
    const struct {
        CSparseMatrix *pM;
        char cStep; // ForwSub, BackwSub or DiagMult
        int nMode;
        std::vector<double> expected;
    } cases[] = {
        {&L, 'F', 1, {1.0, 1.5, 2.0}},
        {&L, 'F', 2, {0.5, 0.4375, 0.33203125}},
        {&U, 'F', -1, {1.0, 1.0, 2.25}},
        {&U, 'F', -2, {0.5, 0.375, 0.33203125}},
        {&U, 'F', 3, {1.0, 2.0, 3.0}},
        {&U, 'B', 1, {-1.75, 1.25, 3.0}},
        {&U, 'B', 2, {0.16796875, 0.4765625, 0.375}},
        {&L, 'B', 2, {0.296875, 0.40625, 0.375}}, // cells left of the diagonal passed over
        {&U, 'B', -1, {1.0, 2.0, 3.0}},
        {&D, 'D', 2, {2.0, 0.0, 12.0}},
        {&D, 'D', -2, {0.5, HUGE_VAL, 0.75}},
        {&D, 'D', 5, {1.0, 2.0, 3.0}},
    };
    for (const auto &t : cases) {
        const std::string strBefore = Dump(*t.pM);
        CMatrix R = Rhs({1.0, 2.0, 3.0});
        double dTime = 0.0;
        if (t.cStep == 'F')
            t.pM->ForwSub(&R, &dTime, t.nMode);
        else if (t.cStep == 'B')
            t.pM->BackwSub(&R, &dTime, t.nMode);
        else
            t.pM->DiagMult(&R, &dTime, t.nMode);
        EXPECT_EQ(Flat(R), t.expected) << t.cStep << " mode " << t.nMode;
        EXPECT_TRUE(dTime >= 0.0 && dTime < 1000.0);
        EXPECT_EQ(Dump(*t.pM), strBefore);
    }
    // no columns: ForwSub and DiagMult return before the time, BackwSub measures
    CMatrix E;
    double dTime = 42.0;
    U.ForwSub(&E, &dTime, -1);
    U.DiagMult(&E, &dTime, 2);
    EXPECT_EQ(dTime, 42.0);
    U.BackwSub(&E, &dTime, 1);
    EXPECT_NE(dTime, 42.0);
    // modes 1 and -1 scale the diagonal by the first column and leave the right-hand side
    CMatrix R = Rhs({0.25, 2.0, 0.5});
    D.DiagMult(&R, NULL, 1);
    EXPECT_EQ(Dump(D), "0:0=0.5;1:0=1,2=3;2:2=2");
    D.DiagMult(&R, NULL, -1);
    EXPECT_EQ(Dump(D), "0:0=2;1:0=1,2=3;2:2=4");
}

// What lies below the diagonal on entry is freed, not mirrored; a row left empty goes.
TEST(SparseFactor, MirrorCompletesTheUpperTriangle) {
    ExpectListCases({
        {"0:0=1,1=2;1:0=9,1=3", [](CSparseMatrix &A) { A.Mirror(1.0); }, "0:0=1,1=2;1:0=2,1=3"},
        {"0:0=1,1=2;1:1=3", [](CSparseMatrix &A) { A.Mirror(-1.0); }, "0:0=1,1=2;1:0=-2,1=3"},
        {"0:0=1,2=5;1:0=7;2:2=1", [](CSparseMatrix &A) { A.Mirror(1.0); }, "0:0=1,2=5;2:0=5,2=1"},
        {"0:1=5", [](CSparseMatrix &A) { EXPECT_GE(A.Mirror(1.0), 0.0); }, "0:1=5;1:0=5"},
    });
}
