// CSparseMatrix factorisations and substitutions: hand cases, failures, agreement with a
// dense solve, and the row order around BackwSub.
#include "sparse_test_util.h"

#include <regex>

TEST(SparseFactor, SmallCholeskyByHand) {
    CSparseMatrix E;
    EXPECT_EQ(E.Cholesky(), 1);
    EXPECT_EQ(E.LU(), 1);

    CSparseMatrix A;
    Put(A, {{0, 0, 4.0}});
    CVirtMat::m_Flops = 5;
    EXPECT_EQ(A.Cholesky(), 1);
    EXPECT_EQ(CVirtMat::m_Flops, 6u);
    EXPECT_EQ(Dump(A), "0:0=4");

    CSparseMatrix S;
    Put(S, {{0, 0, 4.0}, {0, 1, 2.0}, {1, 1, 3.0}});
    CMatrix B = Column({2.0, 1.0});
    double dTime = 0.0;
    CVirtMat::m_Flops = 100;
    EXPECT_EQ(S.Cholesky_Solve(&B, dTime), 1);
    EXPECT_EQ(Dump(S), "0:0=4,1=0.5;1:1=2");
    EXPECT_EQ(CVirtMat::m_Flops, 4u);
    EXPECT_EQ(Flat(B), (std::vector<double>{0.5, 0.0}));
    EXPECT_GE(dTime, 0.0);
    EXPECT_LT(dTime, 1000.0);
}

// Fill-in appears as a new cell, a stored 0.0 off the diagonal makes none, and m_Flops
// counts 1 per pivot and 2 per updated cell.
TEST(SparseFactor, CholeskyFillInAndFlopCount) {
    CSparseMatrix A;
    Put(A, {{0, 0, 4.0}, {0, 1, 1.0}, {0, 2, 1.0}, {1, 1, 4.0}, {2, 2, 4.0}, {2, 3, 0.0}});
    Put(A, {{3, 3, 2.0}});
    CVirtMat::m_Flops = 0;
    ASSERT_EQ(A.Cholesky(), 1);
    EXPECT_EQ(CVirtMat::m_Flops, 1u + 4 + 2 + 1 + 2 + 1 + 1);
    double f = 0.25 / 3.75; // -u_12 / d_1, with u_12 = -0.25 made by fill-in
    double d2 = (4.0 + -0.25 * 1.0) + f * -0.25;
    EXPECT_EQ(Dump(A), "0:0=4,1=0.25,2=0.25;1:1=3.75,2=" + Num(-0.25 / 3.75) + ";2:2=" + Num(d2) +
                           ",3=0;3:3=2");
}

TEST(SparseFactor, LUByHandWithReportAndNoFlops) {
    ReportRecorder rec;
    CSparseMatrix A;
    Put(A, {{0, 0, 2.0}, {0, 1, 1.0}, {1, 0, 4.0}, {1, 1, 3.0}});
    CMatrix B = Column({3.0, 7.0});
    double dTime = 0.0;
    CVirtMat::m_Flops = 77;
    EXPECT_EQ(A.LU_Solve(&B, dTime), 1);
    EXPECT_EQ(Dump(A), "0:0=2,1=1;1:0=2,1=1");
    EXPECT_EQ(Flat(B), (std::vector<double>{1.0, 1.0}));
    EXPECT_EQ(CVirtMat::m_Flops, 77u);
    EXPECT_GE(dTime, 0.0);
    EXPECT_LT(dTime, 1000.0);
    ASSERT_EQ(rec.Texts().size(), 1u);
    std::regex format("Used time:\r\n Factorizing  :   \\d+ m [ \\d]?\\d\\.\\d\\d s\r\n"
                      " Forw\\. subst\\. :   \\d+ m [ \\d]?\\d\\.\\d\\d s\r\n"
                      " Backw\\. subst\\.:   \\d+ m [ \\d]?\\d\\.\\d\\d s\r\n");
    EXPECT_TRUE(std::regex_match(rec.Texts()[0], format)) << rec.Texts()[0];

    // a diagonal with nothing behind it still passes the cell below it
    CSparseMatrix L;
    Put(L, {{0, 0, 2.0}, {1, 0, 1.0}, {1, 1, 3.0}});
    EXPECT_EQ(L.LU(), 1);
    EXPECT_EQ(Dump(L), "0:0=2;1:0=0.5,1=3");
}

// Each failing factorisation yields -1 through its solver, leaves -1.0 as the time and
// the right-hand side as it was, and shows nothing.
TEST(SparseFactor, FailureRowsLeaveTheRightHandSide) {
    ReportRecorder rec;
    auto expectFailure = [](const Entries &entries, bool bLU, int nEmptyRows) {
        CSparseMatrix A;
        if (nEmptyRows > 0) {
            int s[] = {nEmptyRows};
            A.Allocate(s, 1);
        }
        Put(A, entries);
        CMatrix B = Column({1.0, 2.0, 3.0});
        double dTime = 0.0;
        EXPECT_EQ(bLU ? A.LU_Solve(&B, dTime) : A.Cholesky_Solve(&B, dTime), -1) << Dump(A);
        EXPECT_EQ(dTime, -1.0);
        EXPECT_EQ(Flat(B), (std::vector<double>{1.0, 2.0, 3.0}));
    };
    for (bool bLU : {false, true}) {
        expectFailure({{0, 0, 1.0}, {2, 2, 1.0}}, bLU, 0);              // missing row
        expectFailure({{0, 0, 1.0}, {1, 2, 1.0}, {2, 2, 1.0}}, bLU, 0); // first cell off
        expectFailure({{0, 0, 1.0}, {2, 2, 1.0}}, bLU, 3);              // row without cells
        expectFailure({{0, 0, 0.0}, {1, 1, 1.0}, {2, 2, 1.0}}, bLU, 0); // zero pivot
        expectFailure({{0, 0, 1.0}, {0, 1, 1.0}, {1, 1, 1.0}, {2, 2, 1.0}, {1, 0, 1.0}}, bLU,
                      0); // second pivot 0.0 after elimination
    }
    expectFailure({{0, 0, 1.0}, {1, 1, -1.0}, {2, 2, 1.0}}, false, 0); // negative pivot
    EXPECT_TRUE(rec.Texts().empty());

    CSparseMatrix N;
    Put(N, {{0, 0, -2.0}, {0, 1, 1.0}, {1, 0, 1.0}, {1, 1, 1.0}});
    EXPECT_EQ(N.LU(), 1); // no pivoting, a negative pivot is fine
}

// Random systems against a dense solve; further right-hand sides through the steps give
// bit for bit what a fresh solve gives, and several columns what each column gives alone.
TEST(SparseFactor, SolversAgreeWithDenseElimination) {
    ReportRecorder rec;
    std::mt19937 gen(11);
    std::uniform_real_distribution<double> val(-10.0, 10.0);
    for (int n : {30, 77, 200}) {
        for (bool bLU : {false, true}) {
            for (int c : {1, 3}) {
                std::vector<double> A = RandomSystem(n, !bLU, n * 7 + c);
                std::vector<double> b(n * c), b2(n * c);
                for (auto &x : b)
                    x = val(gen);
                for (auto &x : b2)
                    x = val(gen);
                CSparseMatrix S, S2;
                FromDense(S, A, n, !bLU);
                FromDense(S2, A, n, !bLU);
                CMatrix B = Column(b, c), B2 = Column(b2, c), B2fresh = Column(b2, c);
                double dTime;
                ASSERT_EQ(bLU ? S.LU_Solve(&B, dTime) : S.Cholesky_Solve(&B, dTime), 1);
                ExpectClose(Flat(B), DenseSolve(A, b, n, c));

                if (bLU) {
                    S.ForwSub(&B2, NULL, 1);
                    S.BackwSub(&B2, NULL, 2);
                    S2.LU_Solve(&B2fresh, dTime);
                } else {
                    S.ForwSub(&B2, NULL, -1);
                    S.DiagMult(&B2, NULL, -2);
                    S.BackwSub(&B2, NULL, 1);
                    S2.Cholesky_Solve(&B2fresh, dTime);
                }
                EXPECT_EQ(Flat(B2), Flat(B2fresh));
                if (c == 3) {
                    std::vector<double> col(n);
                    for (int i = 0; i < n; i++)
                        col[i] = b2[i * c + 2];
                    CMatrix B1 = Column(col);
                    S.ForwSub(&B1, NULL, bLU ? 1 : -1);
                    if (!bLU)
                        S.DiagMult(&B1, NULL, -2);
                    S.BackwSub(&B1, NULL, bLU ? 2 : 1);
                    for (int i = 0; i < n; i++)
                        EXPECT_EQ(B1.m_pVector[i], B2.m_pVector[i * c + 2]);
                }
            }
        }
    }
}

TEST(SparseFactor, SubstitutionModesByHand) {
    CSparseMatrix L; // lower part used by modes 1 and 2
    Put(L, {{0, 0, 2.0}, {0, 1, 1.0}, {1, 0, 0.5}, {1, 1, 4.0}, {1, 2, 1.0}});
    Put(L, {{2, 0, 0.25}, {2, 1, 0.5}, {2, 2, 8.0}});
    CSparseMatrix U; // upper triangle used by modes -1, -2 and BackwSub
    Put(U, {{0, 0, 2.0}, {0, 1, 1.0}, {0, 2, 0.5}, {1, 1, 4.0}, {1, 2, 0.25}, {2, 2, 8.0}});
    auto run = [](CSparseMatrix &M, int nMode, bool bBackw) {
        CMatrix B = Column({1.0, 2.0, 3.0});
        double dTime = 0.0;
        if (bBackw)
            M.BackwSub(&B, &dTime, nMode);
        else
            M.ForwSub(&B, &dTime, nMode);
        EXPECT_LT(dTime, 1000.0);
        return Flat(B);
    };
    EXPECT_EQ(run(L, 1, false), (std::vector<double>{1.0, 1.5, 2.0}));
    EXPECT_EQ(run(L, 2, false), (std::vector<double>{0.5, 0.4375, 0.33203125}));
    EXPECT_EQ(run(U, -1, false), (std::vector<double>{1.0, 1.0, 2.25}));
    EXPECT_EQ(run(U, -2, false), (std::vector<double>{0.5, 0.375, 0.33203125}));
    EXPECT_EQ(run(U, 3, false), (std::vector<double>{1.0, 2.0, 3.0}));
    EXPECT_EQ(run(U, 1, true), (std::vector<double>{-1.75, 1.25, 3.0}));
    EXPECT_EQ(run(U, 2, true), (std::vector<double>{0.16796875, 0.4765625, 0.375}));
    // cells left of the diagonal are passed over
    EXPECT_EQ(run(L, 2, true), (std::vector<double>{0.296875, 0.40625, 0.375}));

    // no columns: ForwSub and DiagMult return before the time, BackwSub measures
    CMatrix E;
    double dTime = 42.0;
    U.ForwSub(&E, &dTime, -1);
    U.DiagMult(&E, &dTime, 2);
    EXPECT_EQ(dTime, 42.0);
    U.BackwSub(&E, &dTime, 1);
    EXPECT_NE(dTime, 42.0);
}

TEST(SparseFactor, BackwSubRestoresTheRowOrderInEveryMode) {
    CSparseMatrix A;
    int s[] = {4, 4, 0, 1};
    A.Allocate(s, 4);
    std::vector<CSparseMatrix::row *> order;
    for (CSparseMatrix::row *r = A.GetFirstRow(); r != NULL; r = r->m_pNext)
        order.push_back(r);
    CMatrix E;
    for (int nMode : {1, 2, 0, -1, 7}) {
        CMatrix B = Column({1, 2, 3, 4, 5, 6, 7, 8}, 2);
        A.BackwSub(&B, NULL, nMode);
        A.BackwSub(&E, NULL, nMode);
        std::vector<CSparseMatrix::row *> after;
        for (CSparseMatrix::row *r = A.GetFirstRow(); r != NULL; r = r->m_pNext)
            after.push_back(r);
        EXPECT_EQ(after, order) << "mode " << nMode;
        if (nMode != 1 && nMode != 2) {
            EXPECT_EQ(Flat(B), (std::vector<double>{1, 2, 3, 4, 5, 6, 7, 8}));
        }
    }
}

TEST(SparseFactor, DiagMultModes) {
    CSparseMatrix A; // row 1 has no diagonal cell
    Put(A, {{0, 0, 2.0}, {1, 0, 1.0}, {1, 2, 3.0}, {2, 2, 4.0}});
    CMatrix B = Column({1, 2, 3, 4, 5, 6}, 2);
    A.DiagMult(&B, NULL, 2);
    EXPECT_EQ(Flat(B), (std::vector<double>{2, 4, 0, 0, 20, 24}));
    B = Column({1, 2, 3, 4, 5, 6}, 2);
    A.DiagMult(&B, NULL, -2);
    EXPECT_EQ(Flat(B), (std::vector<double>{0.5, 1, HUGE_VAL, HUGE_VAL, 1.25, 1.5}));
    B = Column({1, 2, 3, 4, 5, 6}, 2);
    A.DiagMult(&B, NULL, 1);
    EXPECT_EQ(Dump(A), "0:0=2;1:0=1,2=3;2:2=20");
    A.DiagMult(&B, NULL, -1);
    EXPECT_EQ(Dump(A), "0:0=2;1:0=1,2=3;2:2=4");
    EXPECT_EQ(Flat(B), (std::vector<double>{1, 2, 3, 4, 5, 6}));
}

TEST(SparseFactor, MirrorCompletesTheUpperTriangle) {
    CSparseMatrix A;
    Put(A, {{0, 0, 1.0}, {0, 1, 2.0}, {1, 1, 3.0}, {1, 0, 9.0}});
    EXPECT_GE(A.Mirror(1.0), 0.0);
    EXPECT_EQ(Dump(A), "0:0=1,1=2;1:0=2,1=3");
    CSparseMatrix M;
    Put(M, {{0, 0, 1.0}, {0, 1, 2.0}, {1, 1, 3.0}});
    M.Mirror(-1.0);
    EXPECT_EQ(Dump(M), "0:0=1,1=2;1:0=-2,1=3");
    CSparseMatrix G; // row 1 holds only a cell below the diagonal: it goes
    Put(G, {{0, 0, 1.0}, {0, 2, 5.0}, {1, 0, 7.0}, {2, 2, 1.0}});
    G.Mirror(1.0);
    EXPECT_EQ(Dump(G), "0:0=1,2=5;2:0=5,2=1");
}
