// CSystSpMat: Cholesky and LU through the table, and Gauss-Seidel with its report.
#include "system_test_util.h"

TEST(CSystSpMatSolve, FactorisationsThroughTheTableCountNoFlops) {
    CSystSpMat empty, m(2), lower(2);
    EXPECT_EQ(empty.Cholesky(), 1);
    EXPECT_EQ(empty.LU(), 1);
    Fill(m, 2, {4, 2, 0, 3});
    CVirtMat::m_Flops = 1234;
    EXPECT_EQ(m.Cholesky(), 1);
    EXPECT_EQ(CVirtMat::m_Flops, 1234u);
    EXPECT_EQ(Dump(m), "(0,0)4 (0,1)0.5 (1,1)2");
    // LU: a diagonal with nothing behind it still scales the cells below it, so a lower
    // triangle factorises.
    Fill(lower, 2, {2, 0, 4, 3});
    EXPECT_EQ(lower.LU(), 1);
    EXPECT_EQ(Dump(lower), "(0,0)2 (1,0)2 (1,1)3");
}

TEST(CSystSpMatSolve, FailureCodes) {
    const struct {
        std::vector<double> a;
        int nCholesky, nLU;
    } cases[] = {
        {{1, 0, 0, 0}, -1, -1},  // a row without cells
        {{1, 0, -2, 0}, -1, -1}, // a first cell below 0.0; no diagonal cell
        {{1, 1, 0, 1}, -1, 1},   // a pivot 0.0 after the update; LU has nothing to eliminate
        {{1, 1, 1, 1}, 1, -1},   // LU: a pivot 0.0 after the update
        {{0, 2, 0, 1}, 1, -1},   // the first cell is the pivot, in any column; no diagonal cell
    };
    for (const auto &c : cases) {
        CSystSpMat a(2), b(2);
        Fill(a, 2, c.a);
        Fill(b, 2, c.a);
        EXPECT_EQ(a.Cholesky(), c.nCholesky);
        EXPECT_EQ(b.LU(), c.nLU);
    }
}

// The report of GaussSeidel_Iter, its time field open.
static std::string Report(std::string strIter, int n, const char *pszNorm, bool bSym) {
    return "Used time solving :   {T}\r\n Number of iter. :   " + strIter +
           "\r\n NEQ             :   " + std::to_string(n) + "\r\n Norm of error   :   " + pszNorm +
           "\r\n Symmetric       :   " + (bSym ? "1" : "0") + "\r\n24\r\n16";
}

TEST(CSystSpMatSolve, GaussSeidelCountsItsSweepsAndKeepsTheLastIterate) {
    ReportRecorder reports;
    const std::vector<std::string> &texts = reports.Texts();
    // diag(2, 4, 8): on full rows the first sweep moves by 4, the second by 0.0.
    CSystSpMat d(3);
    Fill(d, 3, {2, 0, 0, 0, 4, 0, 0, 0, 8});
    CVector F(3, true, 8.0), X(3, true, 0.0), X0(3, true, 7.0);
    EXPECT_EQ(d.GaussSeidel_Iter(F, X, 1e-12, 10), 1);
    EXPECT_TRUE(X[0] == 4.0 && X[1] == 2.0 && X[2] == 1.0);
    EXPECT_TRUE(MatchesReport(texts[0], Report("2", 3, "0.000000e+00", false))) << texts[0];
    {
        // A start that solves it takes one sweep; no sweep yields -1, keeps the start and
        // shows nMaxIter as an unsigned count.
        SymFlag sym(true);
        EXPECT_EQ(d.GaussSeidel_Iter(F, X, 1e-12, 10), 1);
        EXPECT_TRUE(MatchesReport(texts[1], Report("1", 3, "0.000000e+00", true)));
        EXPECT_EQ(d.GaussSeidel_Iter(F, X0, 1e-12, -1), -1);
        EXPECT_EQ(X0[1], 7.0);
        EXPECT_TRUE(MatchesReport(texts[2], Report("4294967295", 3, "0.000000e+00", true)));
    }
    // {{4,-1},{-1,4}} x = (3, 3) in both storages: one sweep short of dTol leaves the first
    // iterate (3/4, 15/16) in X.
    for (bool bSym : {false, true}) {
        SymFlag sym(bSym);
        CSystSpMat m(2);
        Fill(m, 2, {4, -1, bSym ? 0.0 : -1.0, 4});
        CVector F2(2, true, 3.0), X2(2, true, 0.0);
        EXPECT_EQ(m.GaussSeidel_Iter(F2, X2, 1e-6, 1), -1);
        EXPECT_TRUE(X2[0] == 0.75 && X2[1] == 0.9375);
        EXPECT_TRUE(MatchesReport(texts.back(), Report("1", 2, "9.375000e-01", bSym)));
    }
}
