// CSystSpMat: Cholesky and LU through the table, and Gauss-Seidel with its report.
#include "system_test_util.h"

TEST(CSystSpMatSolve, CholeskyThroughTheTableCountsNoFlops) {
    CSystSpMat empty, m(2), s(2), f(3), z(3);
    EXPECT_EQ(empty.Cholesky(), 1);
    EXPECT_EQ(empty.LU(), 1);
    Fill(m, 2, {4, 2, 0, 3});
    Fill(s, 2, {4, 2, 0, 3});
    CVirtMat::m_Flops = 1234;
    EXPECT_EQ(m.Cholesky(), 1);
    EXPECT_EQ(CVirtMat::m_Flops, 1234u);
    EXPECT_EQ(Dump(m), "(0,0)4 (0,1)0.5 (1,1)2");
    // The inherited solve reaches it through its slot: the counter is reset and stays 0.
    CMatrix B(2, 1, true, 1.0);
    B[0][0] = 2.0;
    double dTime;
    EXPECT_EQ(s.Cholesky_Solve(&B, dTime), 1);
    EXPECT_EQ(CVirtMat::m_Flops, 0u);
    EXPECT_EQ(Column(B, 0), (std::vector<double>{0.5, 0.0}));
    // Rows 1 and 2 meet through row 0 only: (1,2) is fill-in. A stored 0.0 brings none.
    Fill(f, 3, {4, 2, 2, 0, 5, 0, 0, 0, 5});
    Fill(z, 3, {2, 0, 1, 0, 2, 0, 0, 0, 2});
    CSparseMatrix::cell *pCell = NULL;
    z.m_pRowTable[0].Add(1, 0.0, pCell);
    EXPECT_EQ(f.Cholesky() + z.Cholesky(), 2);
    EXPECT_EQ(Dump(f), "(0,0)4 (0,1)0.5 (0,2)0.5 (1,1)4 (1,2)-0.25 (2,2)3.75");
    EXPECT_EQ(Dump(z), "(0,0)2 (0,1)0 (0,2)0.5 (1,1)2 (2,2)1.5");
}

TEST(CSystSpMatSolve, FailureCodes) {
    // Cholesky: a row without cells, a first cell not above 0.0 (in any column), a pivot
    // 0.0 after the update; a first cell off the diagonal is the pivot all the same.
    // LU: a row without cells, a missing diagonal, a pivot 0.0 after the update.
    CSystSpMat hole(2), neg(2), zero(2), off(2), nodiag(2), singular(2);
    Fill(hole, 2, {1, 0, 0, 0});
    Fill(neg, 2, {1, 0, -2, 0});
    Fill(zero, 2, {1, 1, 0, 1});
    Fill(off, 2, {0, 2, 0, 1});
    Fill(nodiag, 2, {0, 1, 0, 1});
    Fill(singular, 2, {1, 1, 1, 1});
    EXPECT_EQ(hole.Cholesky(), -1);
    EXPECT_EQ(neg.Cholesky(), -1);
    EXPECT_EQ(off.Cholesky(), 1);
    EXPECT_EQ(Dump(off), "(0,1)2 (1,1)1");
    EXPECT_EQ(hole.LU(), -1);
    EXPECT_EQ(nodiag.LU(), -1);
    EXPECT_EQ(singular.LU(), -1);
    // The solve leaves B and sets the time to -1.
    CMatrix B(2, 1, true, 3.0);
    double dTime;
    EXPECT_EQ(zero.Cholesky_Solve(&B, dTime), -1);
    EXPECT_EQ(dTime, -1.0);
    EXPECT_EQ(Column(B, 0), (std::vector<double>{3.0, 3.0}));
}

TEST(CSystSpMatSolve, LUThroughTheTable) {
    CSystSpMat m(2), f(3), lower(2);
    Fill(m, 2, {2, 1, 4, 3});
    EXPECT_EQ(m.LU(), 1);
    EXPECT_EQ(Dump(m), "(0,0)2 (0,1)1 (1,0)2 (1,1)1");
    // Fill-in in its place, no flops: l10 = 1, l20 = 2 make (2,1) = -2; u11 = 2, l21 = -1.
    Fill(f, 3, {2, 1, 0, 2, 3, 1, 4, 0, 5});
    CVirtMat::m_Flops = 7;
    EXPECT_EQ(f.LU(), 1);
    EXPECT_EQ(CVirtMat::m_Flops, 7u);
    EXPECT_EQ(Dump(f), "(0,0)2 (0,1)1 (1,0)1 (1,1)2 (1,2)1 (2,0)2 (2,1)-1 (2,2)6");
    // A diagonal with nothing behind it still scales the cells below it: a lower triangle
    // factorises and solves.
    Fill(lower, 2, {2, 0, 4, 3});
    CMatrix B(2, 1, true, 2.0);
    B[1][0] = 10.0;
    ReportRecorder reports;
    double dTime;
    EXPECT_EQ(lower.LU_Solve(&B, dTime), 1);
    EXPECT_EQ(Dump(lower), "(0,0)2 (1,0)2 (1,1)3");
    EXPECT_EQ(Column(B, 0), (std::vector<double>{1.0, 2.0}));
}

// The report of GaussSeidel_Iter, its time field open.
static std::string Report(std::string strIter, int n, const char *pszNorm, bool bSym) {
    return "Used time solving :   {T}\r\n Number of iter. :   " + strIter +
           "\r\n NEQ             :   " + std::to_string(n) + "\r\n Norm of error   :   " + pszNorm +
           "\r\n Symmetric       :   " + (bSym ? "1" : "0") + "\r\n24\r\n16";
}

TEST(CSystSpMatSolve, GaussSeidelCountsItsSweepsInTheReport) {
    ReportRecorder reports;
    const std::vector<std::string> &texts = reports.Texts();
    // diag(2, 4, 8): on full rows the first sweep moves by 2, the second by 0.0.
    CSystSpMat d(3), one(1);
    Fill(d, 3, {2, 0, 0, 0, 4, 0, 0, 0, 8});
    CVector F = Vec({2.0, 8.0, 4.0}), X(3, true, 0.0), X0(3, true, 7.0);
    EXPECT_EQ(d.GaussSeidel_Iter(F, X, 1e-12, 10), 1);
    EXPECT_TRUE(X[0] == 1.0 && X[1] == 2.0 && X[2] == 0.5);
    EXPECT_TRUE(MatchesReport(texts[0], Report("2", 3, "0.000000e+00", false))) << texts[0];
    // A start that solves it takes one sweep on the upper storage too.
    SymFlag sym(true);
    EXPECT_EQ(d.GaussSeidel_Iter(F, X, 1e-12, 10), 1);
    EXPECT_TRUE(MatchesReport(texts[1], Report("1", 3, "0.000000e+00", true)));
    // No sweep: -1, the start stays, nMaxIter shows as an unsigned count.
    EXPECT_EQ(d.GaussSeidel_Iter(F, X0, 1e-12, -1), -1);
    EXPECT_EQ(X0[1], 7.0);
    EXPECT_TRUE(MatchesReport(texts[2], Report("4294967295", 3, "0.000000e+00", true)));
    // 1 by 1 on upper storage: the last-row step does the whole solve.
    one.Add(0, 0, 4.0);
    CVector f1 = Vec({2.0}), x1 = Vec({0.0});
    EXPECT_EQ(one.GaussSeidel_Iter(f1, x1, 1e-12, 5), 1);
    EXPECT_EQ(x1[0], 0.5);
}

TEST(CSystSpMatSolve, GaussSeidelLeavesTheLastIterateInBothStorages) {
    ReportRecorder reports;
    // {{4,-1},{-1,4}} x = (3, 3): first iterate (3/4, 15/16), solution (1, 1).
    CVector F(2, true, 3.0);
    for (bool bSym : {false, true}) {
        SymFlag sym(bSym);
        CSystSpMat m(2);
        Fill(m, 2, {4, -1, bSym ? 0.0 : -1.0, 4});
        CVector X(2, true, 0.0);
        EXPECT_EQ(m.GaussSeidel_Iter(F, X, 1e-6, 1), -1);
        EXPECT_TRUE(X[0] == 0.75 && X[1] == 0.9375);
        EXPECT_TRUE(MatchesReport(reports.Texts().back(), Report("1", 2, "9.375000e-01", bSym)));
        EXPECT_EQ(m.GaussSeidel_Iter(F, X, 1e-14, 100), 1);
        EXPECT_NEAR(X[0], 1.0, 1e-14);
        EXPECT_NEAR(X[1], 1.0, 1e-14);
    }
}
