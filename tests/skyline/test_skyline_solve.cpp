// Skyline factorisation, substitutions, diagonal scaling, the direct solve and its report,
// and Gauss-Seidel with its report.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "skyline_test_util.h"

using namespace skytest;

namespace {

// The 2 by 2 matrix with rows 4; 2, 5.
void MakeSmall(CSkylineMatrix &m) {
    int sizes[] = {2, 3, 1, 2};
    ASSERT_TRUE(m.Allocate(sizes, 4));
    m(0, 0) = 4.0;
    m(0, 1) = 2.0;
    m(1, 1) = 5.0;
}

// A random symmetric, diagonally dominant matrix with a ragged profile, rows of height 1 among
// them; the same seed gives the same matrix.
void MakeRandomSpd(CSkylineMatrix &m, int n, unsigned nSeed) {
    std::mt19937 rng(nSeed);
    std::vector<int> sizes(n + 2);
    sizes[0] = n;
    sizes[1] = 0;
    for (int i = 0; i < n; i++) {
        const int h = (i % 7 == 3) ? 1 : 1 + (int)(rng() % (unsigned)(i + 1));
        sizes[i + 2] = h;
        sizes[1] += h;
    }
    ASSERT_TRUE(m.Allocate(sizes.data(), n + 2));
    std::uniform_real_distribution<double> value(-1.0, 1.0);
    std::vector<double> rowSums(n, 0.0);
    for (int j = 0; j < n; j++)
        for (int i = m.PeakRow(j); i < j; i++) {
            m(i, j) = value(rng);
            rowSums[i] += std::fabs(m(i, j));
            rowSums[j] += std::fabs(m(i, j));
        }
    for (int i = 0; i < n; i++)
        m(i, i) = rowSums[i] + 1.0 + value(rng) * 0.5;
}

// Dense full copy of a skyline matrix, row-major.
std::vector<double> Dense(CSkylineMatrix &m) {
    const int n = m.m_nRows;
    std::vector<double> A((size_t)n * n, 0.0);
    for (int j = 0; j < n; j++)
        for (int i = m.PeakRow(j); i <= j; i++)
            A[(size_t)i * n + j] = A[(size_t)j * n + i] = m(i, j);
    return A;
}

void FillRandom(CMatrix &B, unsigned nSeed) {
    std::mt19937 rng(nSeed);
    std::uniform_real_distribution<double> value(-10.0, 10.0);
    for (int k = 0; k < B.m_nSize; k++)
        B.m_pVector[k] = value(rng);
}

std::vector<double> Elements(const CVector &v) {
    return std::vector<double>(v.m_pVector, v.m_pVector + v.m_nSize);
}

const char *kCholeskyReport = "Used time:\r\n Factorizing  :   {T}\r\n Forw. subst. :   {T}\r\n "
                              "Backw. subst.:   {T}\r\n Size stiffm. :   %d\r\n Flops        :"
                              "    0.000e+00";

std::string CholeskyReport(int nValues) {
    char sz[256];
    snprintf(sz, sizeof sz, kCholeskyReport, nValues);
    return sz;
}

std::string GaussSeidelReport(const char *pszIter, int n, const char *pszNorm) {
    return std::string("Used time solving :   {T}\r\nFirst            :   {T}\r\nLast            "
                       " :   {T}\r\n Number of iter. :   ") +
           pszIter + "\r\n NEQ             :   " + std::to_string(n) +
           "\r\n Norm of error   :   " + pszNorm;
}

} // namespace

TEST(SkylineCholesky, SmallExampleAndTrivialShapes) {
    CSkylineMatrix m;
    MakeSmall(m);
    EXPECT_EQ(m.Cholesky(), 1);
    EXPECT_EQ(m(0, 0), 4.0);
    EXPECT_EQ(m(0, 1), 0.5);
    EXPECT_EQ(m(1, 1), 4.0);

    // A row of height 1 keeps its value; so do one row and none.
    CSkylineMatrix ragged;
    int sizes[] = {3, 4, 1, 2, 1};
    ASSERT_TRUE(ragged.Allocate(sizes, 5));
    ragged(0, 0) = 4.0;
    ragged(0, 1) = 2.0;
    ragged(1, 1) = 5.0;
    ragged(2, 2) = 3.0;
    EXPECT_EQ(ragged.Cholesky(), 1);
    EXPECT_EQ(ragged(1, 1), 4.0);
    EXPECT_EQ(ragged(2, 2), 3.0);

    CSkylineMatrix one, none;
    int sizeOne[] = {1, 1};
    ASSERT_TRUE(one.Allocate(sizeOne, 2));
    one(0, 0) = -2.0;
    EXPECT_EQ(one.Cholesky(), 1);
    EXPECT_EQ(one(0, 0), -2.0);
    EXPECT_EQ(none.Cholesky(), 1);
}

TEST(SkylineSubstitution, ModesOnTheSmallMatrix) {
    CSkylineMatrix m;
    MakeSmall(m); // taken as factors: L(1, 0) = 2, diagonal 4 and 5

    CMatrix B(2, 1, true);
    B[0][0] = 8.0;
    B[1][0] = 9.0;
    m.ForwSub(&B, NULL, 1);
    EXPECT_EQ(Elements(B), (std::vector<double>{8.0, -7.0}));

    B[0][0] = 8.0;
    B[1][0] = 9.0;
    m.ForwSub(&B, NULL, 2);
    EXPECT_EQ(Elements(B), (std::vector<double>{2.0, 1.0}));

    B[0][0] = 8.0;
    B[1][0] = 9.0;
    m.BackwSub(&B, NULL, 1);
    EXPECT_EQ(Elements(B), (std::vector<double>{-10.0, 9.0}));

    B[0][0] = 8.0;
    B[1][0] = 9.0;
    m.BackwSub(&B, NULL, 2);
    EXPECT_EQ(Elements(B), (std::vector<double>{(8.0 - 2.0 * 1.8) / 4.0, 1.8}));

    // Other modes only time: *pTime ends as seconds, not as the 1000.0 it holds meanwhile.
    B[0][0] = 8.0;
    B[1][0] = 9.0;
    double dTime = -5.0;
    m.ForwSub(&B, &dTime, 0);
    EXPECT_EQ(Elements(B), (std::vector<double>{8.0, 9.0}));
    EXPECT_GE(dTime, 0.0);
    EXPECT_LT(dTime, 1.0);
    dTime = -5.0;
    m.BackwSub(&B, &dTime, 3);
    EXPECT_EQ(Elements(B), (std::vector<double>{8.0, 9.0}));
    EXPECT_GE(dTime, 0.0);
    EXPECT_LT(dTime, 1.0);
    EXPECT_EQ(m(0, 0), 4.0); // the matrix is never changed
    EXPECT_EQ(m(0, 1), 2.0);
}

TEST(SkylineSubstitution, BackwSubMatchesTheSearchOfEveryLaterRow) {
    // The row-by-row formulation: entry i takes its terms from rows n-1 down to i+1, asking
    // each whether it reaches up to column i. Results must agree bit for bit.
    const int n = 80, nCols = 3;
    CSkylineMatrix m;
    MakeRandomSpd(m, n, 5);
    for (int nMode = 1; nMode <= 2; nMode++) {
        CMatrix B(n, nCols), R(n, nCols);
        FillRandom(B, 9);
        FillRandom(R, 9);
        m.BackwSub(&B, NULL, nMode);
        for (int c = nCols - 1; c >= 0; c--)
            for (int i = n - 1; i >= 0; i--) {
                for (int j = n - 1; j > i; j--)
                    if (m.PeakRow(j) <= i)
                        R[i][c] -= m(i, j) * R[j][c];
                if (nMode == 2)
                    R[i][c] /= m(i, i);
            }
        EXPECT_EQ(Elements(B), Elements(R)) << "mode " << nMode;
    }
}

TEST(SkylineSubstitution, DiagMultModes) {
    CSkylineMatrix m;
    MakeSmall(m);
    CMatrix B(2, 2);
    auto reset = [&] {
        B[0][0] = 1.0;
        B[0][1] = 2.0;
        B[1][0] = 3.0;
        B[1][1] = 4.0;
    };
    reset();
    m.DiagMult(&B, NULL, 2);
    EXPECT_EQ(Elements(B), (std::vector<double>{4.0, 8.0, 15.0, 20.0}));
    reset();
    m.DiagMult(&B, NULL, -2);
    EXPECT_EQ(Elements(B), (std::vector<double>{0.25, 0.5, 0.6, 0.8}));
    reset();
    double dTime = -5.0;
    m.DiagMult(&B, &dTime, 7);
    EXPECT_EQ(Elements(B), (std::vector<double>{1.0, 2.0, 3.0, 4.0}));
    EXPECT_GE(dTime, 0.0);
    EXPECT_LT(dTime, 1.0);

    // Modes 1 and -1 change the matrix's diagonal by column 0 of B, B stays.
    m.DiagMult(&B, NULL, 1);
    EXPECT_EQ(m(0, 0), 4.0);
    EXPECT_EQ(m(1, 1), 15.0);
    EXPECT_EQ(m(0, 1), 2.0);
    m.DiagMult(&B, NULL, -1);
    EXPECT_EQ(m(1, 1), 5.0);
    EXPECT_EQ(Elements(B), (std::vector<double>{1.0, 2.0, 3.0, 4.0}));

    // No columns: nothing at all, the time argument included.
    CMatrix empty;
    dTime = 123.0;
    m.DiagMult(&empty, &dTime, -2);
    EXPECT_EQ(dTime, 123.0);
}

TEST(SkylineCholeskySolve, DiagonalMatrixDividesAndReports) {
    ReportRecorder recorder;
    CSkylineMatrix m;
    int sizes[] = {3, 3};
    ASSERT_TRUE(m.Allocate(sizes, 2));
    m(0, 0) = 2.0;
    m(1, 1) = 4.0;
    m(2, 2) = 8.0;
    CMatrix B(3, 3);
    for (int k = 0; k < 9; k++)
        B.m_pVector[k] = k + 1.0;
    CVirtMat::m_Flops = 77;
    double dTime = 0.0;
    EXPECT_EQ(m.Cholesky_Solve(&B, dTime), 1);
    EXPECT_EQ(Elements(B), (std::vector<double>{0.5, 1.0, 1.5, 1.0, 1.25, 1.5, 0.875, 1.0, 1.125}));
    EXPECT_EQ(m(1, 1), 4.0);
    EXPECT_EQ(CVirtMat::m_Flops, 0u);
    EXPECT_GE(dTime, 0.0);
    EXPECT_LT(dTime, 1.0);
    ASSERT_EQ(recorder.Texts().size(), 1u);
    EXPECT_TRUE(MatchesReport(recorder.Texts()[0], CholeskyReport(3))) << recorder.Texts()[0];
    EXPECT_FALSE(MatchesReport(recorder.Texts()[0], CholeskyReport(4)));
}

TEST(SkylineCholeskySolve, MatchesDenseSolveAndReusedFactors) {
    ReportRecorder recorder;
    const int n = 70, nCols = 3;
    CSkylineMatrix m, twin;
    MakeRandomSpd(m, n, 21);
    MakeRandomSpd(twin, n, 21);
    std::vector<double> A = Dense(m);

    CMatrix B(n, nCols);
    FillRandom(B, 4);
    std::vector<double> X(B.m_pVector, B.m_pVector + B.m_nSize);
    DenseSolve(A, X, n, nCols);
    CVirtRealMat *pBase = &m;
    double dTime = 0.0;
    ASSERT_EQ(pBase->Cholesky_Solve(&B, dTime), 1);
    for (int k = 0; k < n * nCols; k++)
        EXPECT_NEAR(B.m_pVector[k], X[k], 1e-10 * (1.0 + std::fabs(X[k])));
    ASSERT_EQ(recorder.Texts().size(), 1u);
    EXPECT_TRUE(MatchesReport(recorder.Texts()[0], CholeskyReport(m.m_nValues)));

    // Further right-hand sides through the kept factors equal fresh solves, bit for bit.
    CMatrix C(n, nCols), D(n, nCols);
    FillRandom(C, 8);
    FillRandom(D, 8);
    m.ForwSub(&C, NULL, 1);
    m.DiagMult(&C, NULL, -2);
    m.BackwSub(&C, NULL, 1);
    ASSERT_EQ(twin.Cholesky_Solve(&D, dTime), 1);
    EXPECT_EQ(Elements(C), Elements(D));
}

namespace {
// A factorisation that fails: Cholesky_Solve must pass the code on through the table.
class CFailingSkyline : public CSkylineMatrix {
public:
    int Cholesky() override { return 0; }
};
} // namespace

TEST(SkylineCholeskySolve, FailedFactorisationGivesNoReport) {
    ReportRecorder recorder;
    CFailingSkyline m;
    MakeSmall(m);
    CMatrix B(2, 1, true, 3.0);
    double dTime = 0.0;
    EXPECT_EQ(m.Cholesky_Solve(&B, dTime), 0);
    EXPECT_EQ(dTime, -1.0);
    EXPECT_EQ(Elements(B), (std::vector<double>{3.0, 3.0}));
    EXPECT_TRUE(recorder.Texts().empty());
}

TEST(SkylineGaussSeidel, DiagonalConvergesInTheSecondSweep) {
    ReportRecorder recorder;
    CSkylineMatrix m;
    int sizes[] = {3, 3};
    ASSERT_TRUE(m.Allocate(sizes, 2));
    m(0, 0) = 2.0;
    m(1, 1) = 4.0;
    m(2, 2) = 8.0;
    CVector b(3), x(3, true, 0.0);
    b[0] = 1.0;
    b[1] = 2.0;
    b[2] = 3.0;
    EXPECT_EQ(m.GaussSeidel_Iter(b, x, 1e-12, 10), 1);
    EXPECT_EQ(Elements(x), (std::vector<double>{0.5, 0.5, 0.375}));
    ASSERT_EQ(recorder.Texts().size(), 1u);
    EXPECT_TRUE(MatchesReport(recorder.Texts()[0], GaussSeidelReport("2", 3, "0.000000e+00")))
        << recorder.Texts()[0];

    // A start value within dTol of the solution ends after one sweep.
    recorder.Clear();
    EXPECT_EQ(m.GaussSeidel_Iter(b, x, 1e-12, 10), 1);
    EXPECT_TRUE(MatchesReport(recorder.Texts()[0], GaussSeidelReport("1", 3, "0.000000e+00")));
}

TEST(SkylineGaussSeidel, SweepLimitsAndTinySizes) {
    ReportRecorder recorder;
    CSkylineMatrix m;
    MakeSmall(m);
    CVector b(2), x(2, true, 0.0);
    b[0] = 8.0;
    b[1] = 9.0;

    // One sweep that doesn't converge: x holds the first iterate.
    EXPECT_EQ(m.GaussSeidel_Iter(b, x, 1e-12, 1), -1);
    EXPECT_EQ(Elements(x), (std::vector<double>{2.0, 1.0}));
    ASSERT_EQ(recorder.Texts().size(), 1u);
    EXPECT_TRUE(MatchesReport(recorder.Texts()[0], GaussSeidelReport("1", 2, "2.000000e+00")));

    // No sweep at all: x unchanged, -1, the count shown is nMaxIter as unsigned.
    recorder.Clear();
    EXPECT_EQ(m.GaussSeidel_Iter(b, x, 1e-12, 0), -1);
    EXPECT_EQ(m.GaussSeidel_Iter(b, x, 1e-12, -3), -1);
    EXPECT_EQ(Elements(x), (std::vector<double>{2.0, 1.0}));
    ASSERT_EQ(recorder.Texts().size(), 2u);
    EXPECT_TRUE(MatchesReport(recorder.Texts()[0], GaussSeidelReport("0", 2, "0.000000e+00")));
    EXPECT_TRUE(
        MatchesReport(recorder.Texts()[1], GaussSeidelReport("4294967293", 2, "0.000000e+00")));

    // Enough sweeps reach the solution (1.375, 1.25) of the small system; the matrix stays.
    EXPECT_EQ(m.GaussSeidel_Iter(b, x, 1e-14, 200), 1);
    EXPECT_NEAR(x[0], 1.375, 1e-13);
    EXPECT_NEAR(x[1], 1.25, 1e-13);
    EXPECT_EQ(m(0, 1), 2.0);

    // Sizes 0 and 1 need no tolerance and show nothing.
    recorder.Clear();
    CVector b1(1, true, 6.0), x1(1, true, 0.0), b0, x0;
    EXPECT_EQ(m.GaussSeidel_Iter(b1, x1, 0.0, 0), 1);
    EXPECT_EQ(x1[0], 1.5);
    EXPECT_EQ(m.GaussSeidel_Iter(b0, x0, 0.0, 0), 1);
    EXPECT_TRUE(recorder.Texts().empty());
}
