// CSystSpMat: Cholesky and LU through the table, and Gauss-Seidel with its report.
#include "system_test_util.h"

#include "dense/matrix.h"

typedef std::vector<Cell> Cells_t;

TEST(CSystSpMatSolve, CholeskyThroughTheTableLeavesTheFlopsAlone) {
    CSystSpMat empty;
    EXPECT_EQ(empty.Cholesky(), 1);
    EXPECT_EQ(empty.LU(), 1);

    CSystSpMat m(2);
    m.Add(0, 0, 4.0);
    m.Add(0, 1, 2.0);
    m.Add(1, 1, 3.0);
    CVirtMat::m_Flops = 1234;
    EXPECT_EQ(m.Cholesky(), 1);
    EXPECT_EQ(CVirtMat::m_Flops, 1234u);
    EXPECT_EQ(Cells(m), (Cells_t{{0, 0, 4.0}, {0, 1, 0.5}, {1, 1, 2.0}}));

    // The inherited solve reaches it through the table: the counter is reset and stays 0.
    CSystSpMat s(2);
    s.Add(0, 0, 4.0);
    s.Add(0, 1, 2.0);
    s.Add(1, 1, 3.0);
    CMatrix B(2, 1);
    B[0][0] = 2.0;
    B[1][0] = 1.0;
    double dTime = 0.0;
    EXPECT_EQ(s.Cholesky_Solve(&B, dTime), 1);
    EXPECT_EQ(CVirtMat::m_Flops, 0u);
    EXPECT_EQ(B[0][0], 0.5);
    EXPECT_EQ(B[1][0], 0.0);
    EXPECT_GE(dTime, 0.0);
}

TEST(CSystSpMatSolve, CholeskyFailures) {
    // A row without cells.
    CSystSpMat hole(2);
    hole.Add(0, 0, 1.0);
    EXPECT_EQ(hole.Cholesky(), -1);

    // A non-positive first cell, whatever its column; the solve leaves B and times -1.
    CSystSpMat neg(2);
    neg.Add(0, 0, 1.0);
    neg.Add(1, 0, -2.0); // taken as the diagonal of row 1 though it stands in column 0
    EXPECT_EQ(neg.Cholesky(), -1);
    CSystSpMat zero(2);
    zero.Add(0, 0, 1.0);
    zero.Add(0, 1, 1.0);
    zero.Add(1, 1, 1.0); // pivot 1 - 1 = 0 after the update
    CMatrix B(2, 1, true, 3.0);
    double dTime = 0.0;
    EXPECT_EQ(zero.Cholesky_Solve(&B, dTime), -1);
    EXPECT_EQ(dTime, -1.0);
    EXPECT_EQ(B[0][0], 3.0);
    EXPECT_EQ(B[1][0], 3.0);

    // A first cell off the diagonal is not tested: row 0 pivots on its cell (0,1).
    CSystSpMat off(2);
    off.Add(0, 1, 2.0);
    off.Add(1, 1, 1.0);
    EXPECT_EQ(off.Cholesky(), 1);
    EXPECT_EQ(Cells(off), (Cells_t{{0, 1, 2.0}, {1, 1, 1.0}}));
}

TEST(CSystSpMatSolve, CholeskySkipsZeroCellsAndCreatesFillIn) {
    // Arrow: row 0 couples 0 with 1 and 2; rows 1 and 2 don't touch: (1,2) is fill-in.
    CSystSpMat m(3);
    m.Add(0, 0, 4.0);
    m.Add(0, 1, 2.0);
    m.Add(0, 2, 2.0);
    m.Add(1, 1, 5.0);
    m.Add(2, 2, 5.0);
    EXPECT_EQ(m.Cholesky(), 1);
    EXPECT_EQ(Cells(m), (Cells_t{{0, 0, 4.0},
                                 {0, 1, 0.5},
                                 {0, 2, 0.5},
                                 {1, 1, 4.0},
                                 {1, 2, -0.25},
                                 {2, 2, 4.0 - 0.25}}));

    CSystSpMat z(3);
    z.Add(0, 0, 2.0);
    z.Add(1, 1, 2.0);
    z.Add(2, 2, 2.0);
    // A stored 0.0 off the diagonal stays 0.0 and brings no fill-in.
    CSparseMatrix::cell *pCell = NULL;
    z.m_pRowTable[0].Add(1, 0.0, pCell);
    z.m_pRowTable[0].Add(2, 1.0, pCell);
    EXPECT_EQ(z.Cholesky(), 1);
    EXPECT_EQ(Cells(z), (Cells_t{{0, 0, 2.0}, {0, 1, 0.0}, {0, 2, 0.5}, {1, 1, 2.0}, {2, 2, 1.5}}));
}

TEST(CSystSpMatSolve, LUThroughTheTable) {
    CSystSpMat m(2);
    m.Add(0, 0, 2.0);
    m.Add(0, 1, 1.0);
    m.Add(1, 0, 4.0);
    m.Add(1, 1, 3.0);
    EXPECT_EQ(m.LU(), 1);
    EXPECT_EQ(Cells(m), (Cells_t{{0, 0, 2.0}, {0, 1, 1.0}, {1, 0, 2.0}, {1, 1, 1.0}}));

    // A zero pivot, a missing diagonal, and a row with nothing behind its diagonal while a
    // later row has a cell in its column.
    CSystSpMat z(2);
    z.Add(0, 1, 1.0);
    z.Add(1, 1, 1.0);
    EXPECT_EQ(z.LU(), -1);
    CSystSpMat lower(2);
    lower.Add(0, 0, 1.0);
    lower.Add(1, 0, 1.0);
    lower.Add(1, 1, 1.0);
    EXPECT_EQ(lower.LU(), -1);
    CSystSpMat empty(2);
    empty.Add(0, 0, 1.0);
    EXPECT_EQ(empty.LU(), -1);

    // Fill-in lands in its place: row 2 has no cell in column 1 until row 0 is eliminated.
    CSystSpMat f(3);
    f.Add(0, 0, 2.0);
    f.Add(0, 1, 1.0);
    f.Add(1, 0, 2.0);
    f.Add(1, 1, 3.0);
    f.Add(1, 2, 1.0);
    f.Add(2, 0, 4.0);
    f.Add(2, 2, 5.0);
    CVirtMat::m_Flops = 7;
    EXPECT_EQ(f.LU(), 1);
    EXPECT_EQ(CVirtMat::m_Flops, 7u);
    // l10 = 1, l20 = 2: row 2 gains (2,1) = -2; u11 = 2; l21 = -1: u22 = 5 + 1 = 6.
    EXPECT_EQ(Cells(f), (Cells_t{{0, 0, 2.0},
                                 {0, 1, 1.0},
                                 {1, 0, 1.0},
                                 {1, 1, 2.0},
                                 {1, 2, 1.0},
                                 {2, 0, 2.0},
                                 {2, 1, -1.0},
                                 {2, 2, 6.0}}));
}

// diag(2, 4, 8) in the storage of either mode.
static void Diagonal(CSystSpMat &m) {
    m.Add(0, 0, 2.0);
    m.Add(1, 1, 4.0);
    m.Add(2, 2, 8.0);
}

TEST(CSystSpMatSolve, GaussSeidelReportAndIterationCount) {
    ReportRecorder reports;
    CSystSpMat m(3);
    Diagonal(m);
    CVector F(3), X(3, true, 0.0);
    F[0] = 2.0;
    F[1] = 8.0;
    F[2] = 4.0;

    // Full storage: the first sweep moves by 2, the second by 0.0.
    EXPECT_EQ(m.GaussSeidel_Iter(F, X, 1e-12, 10), 1);
    EXPECT_EQ(X[0], 1.0);
    EXPECT_EQ(X[1], 2.0);
    EXPECT_EQ(X[2], 0.5);
    ASSERT_EQ(reports.Texts().size(), 1u);
    EXPECT_EQ(reports.Texts()[0], GaussSeidelReport(2, 3, 0.0, false));
    EXPECT_EQ(reports.Texts()[0], "Used time solving :   0 m 0.00 s\r\n Number of iter. :   2\r\n"
                                  " NEQ             :   3\r\n Norm of error   :   0.000000e+00\r\n"
                                  " Symmetric       :   0\r\n24\r\n16");

    // A start that already solves it: one sweep. The symmetric path agrees.
    SymFlag sym(true);
    EXPECT_EQ(m.GaussSeidel_Iter(F, X, 1e-12, 10), 1);
    EXPECT_EQ(reports.Texts()[1], GaussSeidelReport(1, 3, 0.0, true));
    EXPECT_EQ(X[2], 0.5);

    // 1 by 1, symmetric: the last-row step does the whole solve.
    CSystSpMat one(1);
    one.Add(0, 0, 4.0);
    CVector f1(1, true, 2.0), x1(1, true, 0.0);
    EXPECT_EQ(one.GaussSeidel_Iter(f1, x1, 1e-12, 5), 1);
    EXPECT_EQ(x1[0], 0.5);
    EXPECT_EQ(reports.Texts()[2], GaussSeidelReport(2, 1, 0.0, true));

    // No sweep at all: -1, the start stays, the report prints nMaxIter as unsigned.
    CVector x0(3, true, 7.0);
    EXPECT_EQ(m.GaussSeidel_Iter(F, x0, 1e-12, 0), -1);
    EXPECT_EQ(x0[1], 7.0);
    EXPECT_EQ(reports.Texts()[3], GaussSeidelReport(0, 3, 0.0, true));
    EXPECT_EQ(m.GaussSeidel_Iter(F, x0, 1e-12, -1), -1);
    EXPECT_EQ(reports.Texts()[4], GaussSeidelReport(4294967295u, 3, 0.0, true));
}

// {{4,-1},{-1,4}}, upper storage or full.
static void Pair(CSystSpMat &m, bool bFull) {
    m.Add(0, 0, 4.0);
    m.Add(0, 1, -1.0);
    if (bFull)
        m.Add(1, 0, -1.0);
    m.Add(1, 1, 4.0);
}

TEST(CSystSpMatSolve, GaussSeidelOneSweepWithoutSuccessLeavesTheFirstIterate) {
    ReportRecorder reports;
    CVector F(2);
    F[0] = 3.0;
    F[1] = 3.0;

    // Full: x0 = 3/4, x1 = (3 + 3/4) / 4 = 15/16; the change is 15/16.
    CSystSpMat full(2);
    Pair(full, true);
    CVector X(2, true, 0.0);
    EXPECT_EQ(full.GaussSeidel_Iter(F, X, 1e-6, 1), -1);
    EXPECT_EQ(X[0], 0.75);
    EXPECT_EQ(X[1], 0.9375);
    EXPECT_EQ(reports.Texts()[0], GaussSeidelReport(1, 2, 0.9375, false));

    // Symmetric: the same first iterate, back in X after the closing swap.
    SymFlag sym(true);
    CSystSpMat upper(2);
    Pair(upper, false);
    CVector Y(2, true, 0.0);
    EXPECT_EQ(upper.GaussSeidel_Iter(F, Y, 1e-6, 1), -1);
    EXPECT_EQ(Y[0], 0.75);
    EXPECT_EQ(Y[1], 0.9375);
    EXPECT_EQ(reports.Texts()[1], GaussSeidelReport(1, 2, 0.9375, true));

    // Both reach the solution (1, 1) and report the sweep at which they passed.
    CVector Z(2, true, 0.0);
    EXPECT_EQ(upper.GaussSeidel_Iter(F, Z, 1e-14, 100), 1);
    EXPECT_NEAR(Z[0], 1.0, 1e-14);
    EXPECT_NEAR(Z[1], 1.0, 1e-14);
    CSystSpMat::m_bSym = false;
    CVector W(2, true, 0.0);
    EXPECT_EQ(full.GaussSeidel_Iter(F, W, 1e-14, 100), 1);
    EXPECT_EQ(W[0], Z[0]);
    EXPECT_EQ(W[1], Z[1]);
    // The same sweeps in both storages: the reports differ only in the flag.
    const std::string &a = reports.Texts()[2], &b = reports.Texts()[3];
    size_t nFlag = a.find(" Symmetric");
    ASSERT_NE(nFlag, std::string::npos);
    EXPECT_EQ(a.substr(0, nFlag), b.substr(0, nFlag));
    EXPECT_EQ(a.substr(nFlag), " Symmetric       :   1\r\n24\r\n16");
    EXPECT_EQ(b.substr(nFlag), " Symmetric       :   0\r\n24\r\n16");
}
