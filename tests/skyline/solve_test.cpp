// Skyline factorisation, substitutions, diagonal scaling, the direct solve and Gauss-Seidel,
// with their reports.
#include "common/femtest.h"
#include "dense/matrix.h"
#include "skyline/skylinematrix.h"

#include <memory>

namespace {

// Sizes as Allocate reads them, then the first stored values.
void Make(CSkylineMatrix &m, std::vector<int> sizes, std::vector<double> values) {
    ASSERT_TRUE(m.Allocate(sizes.data(), (int)sizes.size()));
    std::copy(values.begin(), values.end(), m.m_pValues);
}

std::vector<double> Stored(const CVector &v) {
    return std::vector<double>(v.m_pVector, v.m_pVector + v.m_nSize);
}
std::vector<double> Stored(const CSkylineMatrix &m) {
    return std::vector<double>(m.m_pValues, m.m_pValues + m.m_nValues);
}

// n by nCols: the given values, then cosines.
CMatrix Columns(int n, int nCols, std::vector<double> values = {}) {
    CMatrix B(n, nCols);
    for (int k = 0; k < n * nCols; k++)
        B.m_pVector[k] = k < (int)values.size() ? values[k] : std::cos(k);
    return B;
}

// A factorisation that fails; Cholesky_Solve must reach it through the table.
struct CFailingSkyline : CSkylineMatrix {
    int Cholesky() override { return 0; }
};

} // namespace

TEST(SkylineSolve, SmallCasesOfEveryModeAndTheirTiming) {
    const char ops[] = "FFFBBBDDD";
    const int modes[] = {1, 2, 0, 1, 2, 3, 2, -2, 7};
    const double results[][2] = {{8, -7}, {2, 1},   {8, 9},   {-10, 9}, {(8 - 2 * 1.8) / 4, 1.8},
                                 {8, 9},  {32, 45}, {2, 1.8}, {8, 9}};
    CSkylineMatrix m, one, none;
    Make(m, {2, 3}, {4, 2, 5}); // as factors: L(1, 0) = 2, diagonal 4, 5
    std::unique_ptr<double[]> pDiag(m.DiagVect());
    EXPECT_TRUE(pDiag[0] == 4.0 && pDiag[1] == 5.0);
    for (int k = 0; k < 9; k++) {
        CMatrix rhs = Columns(2, 1, {8, 9});
        double dTime = -5.0;
        if (ops[k] == 'F')
            m.ForwSub(&rhs, &dTime, modes[k]);
        else if (ops[k] == 'B')
            m.BackwSub(&rhs, &dTime, modes[k]);
        else
            m.DiagMult(&rhs, &dTime, modes[k]);
        EXPECT_EQ(Stored(rhs), std::vector<double>(results[k], results[k] + 2)) << k;
        EXPECT_TRUE(dTime >= 0.0 && dTime < 1.0); // seconds, not the 1000.0 of meanwhile
    }
    // Modes 1 and -1 scale the matrix's diagonal by column 0; no columns: not even timing.
    CMatrix rhs = Columns(2, 1, {8, 9}), empty;
    m.DiagMult(&rhs, NULL, 1);
    EXPECT_EQ(Stored(m), (std::vector<double>{32, 2, 45}));
    m.DiagMult(&rhs, NULL, -1);
    EXPECT_EQ(Stored(rhs), (std::vector<double>{8, 9}));
    double dTime = 123.0;
    m.DiagMult(&empty, &dTime, -2);
    EXPECT_EQ(dTime, 123.0);
    // Factorised: D(0) = 4, L(1, 0) = 0.5, D(1) = 4; one row or none stay as they are.
    Make(one, {1, 1}, {-2});
    EXPECT_EQ(m.Cholesky() + one.Cholesky() + none.Cholesky(), 3);
    EXPECT_EQ(Stored(m), (std::vector<double>{4, 0.5, 4}));
    EXPECT_EQ(Stored(one), (std::vector<double>{-2}));
}

TEST(SkylineSolve, CholeskySolveOnARaggedProfile) {
    // Symmetric, diagonally dominant, with a ragged profile and rows of height 1 among them;
    // large enough that a term multiplied in another order changes some factor's last bit.
    const int n = 60;
    std::vector<int> sizes = {n, 0};
    for (int i = 0; i < n; i++) {
        sizes.push_back(i % 7 == 3 ? 1 : 1 + i * 7919 % (i + 1));
        sizes[1] += sizes.back();
    }
    CSkylineMatrix m;
    Make(m, sizes, {});
    // The factors must be those of the dense root-free elimination of the full lower triangle,
    // bit for bit: nothing is lost outside the profile, each term is (L(i, c) * L(j, c)) * D(c).
    std::vector<double> A(n * n, 0.0);
    for (int i = 0; i < n; i++)
        for (int c = m.PeakRow(i); c <= i; c++)
            A[i * n + c] = m(c, i) = c == i ? n + i % 3 : std::sin(7.0 * c + i);
    for (int i = 0; i < n; i++) {
        double *a = &A[i * n];
        for (int j = 0; j < i; j++) {
            for (int c = 0; c < j; c++)
                a[j] -= a[c] * A[j * n + c] * A[c * n + c];
            a[j] /= A[j * n + j];
        }
        for (int c = 0; c < i; c++)
            a[i] -= std::pow(a[c], 2.0) * A[c * n + c];
    }
    ReportRecorder reports;
    CMatrix B = Columns(n, 3), C = Columns(n, 3);
    CVirtMat::m_Flops = 77;
    double dTime = 0.0;
    ASSERT_EQ(m.Cholesky_Solve(&B, dTime), 1);
    for (int i = 0; i < n; i++)
        for (int c = 0; c <= i; c++)
            ASSERT_EQ(c < m.PeakRow(i) ? 0.0 : m(c, i), A[i * n + c]) << i << " " << c;
    EXPECT_TRUE(dTime >= 0.0 && dTime < 1.0);
    ASSERT_EQ(reports.Texts().size(), 1u);
    EXPECT_TRUE(MatchesReport(reports.Texts()[0],
                              "Used time:\r\n Factorizing  :   {T}\r\n Forw. subst. :   {T}\r\n "
                              "Backw. subst.:   {T}\r\n Size stiffm. :   " +
                                  std::to_string(m.m_nValues) + "\r\n Flops        :    0.000e+00"))
        << reports.Texts()[0];

    // Further right-hand sides through the kept factors equal the fresh solve, bit for bit.
    m.ForwSub(&C, NULL, 1);
    m.DiagMult(&C, NULL, -2);
    m.BackwSub(&C, NULL, 1);
    EXPECT_EQ(Stored(C), Stored(B));

    // A failed factorisation: its result, -1.0 seconds, no report, no change to the sides.
    CFailingSkyline failing;
    CMatrix E = Columns(2, 1);
    EXPECT_EQ(failing.Cholesky_Solve(&E, dTime), 0);
    EXPECT_EQ(dTime, -1.0);
    EXPECT_EQ(Stored(E), Stored(Columns(2, 1)));
    EXPECT_EQ(reports.Texts().size(), 1u);
}

TEST(SkylineSolve, GaussSeidelSweepsResultsAndReports) {
    ReportRecorder reports;
    CSkylineMatrix diagonal, m;
    Make(diagonal, {3, 3}, {2, 4, 8});
    Make(m, {2, 3}, {4, 2, 5});
    CVector b = Columns(3, 1, {1, 2, 3}), x = Columns(3, 1, {0, 0, 0}), b2 = Columns(2, 1, {8, 9}),
            x2 = Columns(2, 1, {0, 1}), b1 = Columns(1, 1, {6}), x1(1), b0, x0;
    // A diagonal converges in the second sweep, which shows a norm of 0.
    EXPECT_EQ(diagonal.GaussSeidel_Iter(b, x, 1e-12, 10), 1);
    EXPECT_EQ(Stored(x), (std::vector<double>{0.5, 0.5, 0.375}));
    // Out of sweeps: -1 and the newest iterate (the old x[1] enters row 0); no sweep at all:
    // x as it was.
    EXPECT_EQ(m.GaussSeidel_Iter(b2, x2, 1e-12, 1), -1);
    EXPECT_EQ(m.GaussSeidel_Iter(b2, x2, 1e-12, 0) + m.GaussSeidel_Iter(b2, x2, 1e-12, -3), -2);
    EXPECT_EQ(Stored(x2), (std::vector<double>{1.5, 1.2}));
    // Sizes 1 and 0 need no tolerance and show nothing.
    EXPECT_EQ(m.GaussSeidel_Iter(b1, x1, 0.0, 0) + m.GaussSeidel_Iter(b0, x0, 0.0, 0), 2);
    EXPECT_EQ(x1[0], 1.5);

    const char *runs[][3] = {{"2", "3", "0.000000e+00"},
                             {"1", "2", "1.500000e+00"},
                             {"0", "2", "0.000000e+00"},
                             {"4294967293", "2", "0.000000e+00"}};
    ASSERT_EQ(reports.Texts().size(), 4u);
    for (int k = 0; k < 4; k++)
        EXPECT_TRUE(MatchesReport(reports.Texts()[k],
                                  std::string("Used time solving :   {T}\r\nFirst            :   "
                                              "{T}\r\nLast             :   {T}\r\n Number of "
                                              "iter. :   ") +
                                      runs[k][0] + "\r\n NEQ             :   " + runs[k][1] +
                                      "\r\n Norm of error   :   " + runs[k][2]))
            << reports.Texts()[k];
}
