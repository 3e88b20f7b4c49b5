// Conjugate gradients, the list form (ConjGradient) and the flat form (ConjGradient2): the
// iteration count, the reference of the stopping test, where the solution lands, scaling,
// identity rows, flops, the report, columns that finish apart and zero columns.
#include "sparse_test_util.h"

#include <cmath>

namespace {

typedef std::vector<double> V;

CMatrix MakeMatrix(int nRows, int nCols, const V &values) {
    CMatrix m(nRows, nCols, false, 0.0);
    std::copy(values.begin(), values.end(), m.m_pVector);
    return m;
}

// The upper triangle of a mesh's matrix.
void AssembleUpper(CSparseMatrix &A, const RoadMesh &mesh, int nLoad) {
    for (int e = 0; e < (int)mesh.dofs.size(); e++)
        A.AddValues(const_cast<LONG *>(mesh.dofs[e].data()),
                    ElementMatrix(mesh, e, nLoad, false).data(), mesh.nLocal);
    A.MakeUpper();
}

// One solve by either form; the list form takes pX0.
int Solve(bool bFlat, CSparseMatrix &A, CMatrix &B, CMatrix *pX0, double &dNorm, int nMaxIter,
          double dTol, bool bScale, CVector *pTimes = NULL) {
    return bFlat ? A.ConjGradient2(B, dNorm, nMaxIter, dTol, pTimes, bScale)
                 : A.ConjGradient(B, pX0, dNorm, nMaxIter, dTol, pTimes, bScale);
}

// The largest column sum of squares.
double WorstSquares(const CMatrix &B) {
    const int c = B.m_nSize / B.m_nRows;
    double dMax = 0.0;
    for (int k = 0; k < c; k++) {
        double s = 0.0;
        for (int i = 0; i < B.m_nRows; i++)
            s += B.m_pVector[i * c + k] * B.m_pVector[i * c + k];
        dMax = std::fmax(dMax, s);
    }
    return dMax;
}

} // namespace

// A 1 by 1 system is solved by its first iteration, which is not counted; a zero column
// (0/0 in the plain rule) solves to 0 beside the others, and an all-zero right-hand side
// stops at once with zeros.
TEST(ConjGradient, OneByOneAndZeroColumns) {
    for (bool bFlat : {false, true}) {
        for (bool bScale : {false, true}) {
            SCOPED_TRACE(std::string(bFlat ? "flat" : "lists") + (bScale ? ", scaled" : ""));
            Lists A("0:0=2");
            CMatrix B = MakeMatrix(1, 3, {4, 0, -1});
            double dNorm = -1.0;
            EXPECT_EQ(Solve(bFlat, A, B, NULL, dNorm, 50, 1e-10, bScale), 0);
            EXPECT_EQ(Flat(B), (std::vector<double>{2, 0, -0.5}));
            EXPECT_EQ(dNorm, 0.0);

            Lists C("0:0=4,1=1;1:1=3");
            CMatrix Z(2, 2, true, 0.0);
            EXPECT_EQ(Solve(bFlat, C, Z, NULL, dNorm, 50, 1e-10, bScale), 0);
            EXPECT_EQ(Flat(Z), std::vector<double>(4, 0.0));
            EXPECT_EQ(dNorm, 0.0);
        }
    }
}

// The iteration that meets the test updates the solution but is not counted: a run that
// stops with N equals a run of N + 1 iterations that never stops, bit for bit, and a run cut
// at N yields N with another solution. A test never met yields nMaxIter, 0 and below too.
TEST(ConjGradient, IterationCountRule) {
    const RoadMesh mesh = MakeRoadMesh(5, 5, true, 1);
    for (bool bFlat : {false, true}) {
        auto Run = [&](int nMaxIter, double dTol, int &nResult) {
            CSparseMatrix A;
            AssembleUpper(A, mesh, 0);
            CMatrix B(mesh.nDOFs, 1);
            for (int i = 0; i < mesh.nDOFs; i++)
                B[i][0] = LoadValue(i, 0);
            double dNorm;
            nResult = Solve(bFlat, A, B, NULL, dNorm, nMaxIter, dTol, false);
            return Flat(B);
        };
        int n = 0, nLonger = 0, nCut = 0, nNone = 0;
        const std::vector<double> x = Run(1000, 1e-20, n);
        ASSERT_GT(n, 2);
        ASSERT_LT(n, 1000);
        EXPECT_EQ(Run(n + 1, 0.0, nLonger), x);
        EXPECT_EQ(nLonger, n + 1);
        EXPECT_NE(Run(n, 1e-20, nCut), x);
        EXPECT_EQ(nCut, n);
        Run(-3, 1e-20, nNone);
        EXPECT_EQ(nNone, 0);
    }
}

// For the list and flat forms, with and without scaling, the list form also from a start
// vector. v_0, the reference of the stopping test: the list form takes B as passed in
// (before the start vector and the scaling), the flat form the scaled B; a tolerance just
// above (below) the first residual's ratio to it stops (does not stop) the first iteration.
// With nMaxIter 0, dNorm is the starting residual's, zeros stand in B, or the start vector
// comes back as it was. A full run agrees with the direct solve; the solution lands in B, or
// in the start vector while B keeps the last directions. The list form leaves the lists
// scaled to a unit diagonal, the flat form leaves them alone.
TEST(ConjGradient, ReferenceNormSolutionPlaceAndScaling) {
    const char *pszA = "0:0=4,1=1;1:1=16";
    const V b = {1, 2, 3, -1}, x0 = {0.2, 0.1, 0.15, 0.0};
    CMatrix direct = MakeMatrix(2, 2, b);
    Lists D(pszA);
    double dTime;
    ASSERT_EQ(D.Cholesky_Solve(&direct, dTime), 1);
    for (int nCase = 0; nCase < 6; nCase++) {
        const bool bFlat = nCase >= 4, bScale = nCase % 2 == 1, bStart = !bFlat && nCase >= 2;
        SCOPED_TRACE("case " + std::to_string(nCase));
        Lists A(pszA);
        CMatrix B, X0;
        auto Run = [&](int nMaxIter, double dTol, double &dNorm) {
            A.Clear();
            Load(A, pszA);
            B = MakeMatrix(2, 2, b);
            X0 = MakeMatrix(2, 2, x0);
            return Solve(bFlat, A, B, bStart ? &X0 : NULL, dNorm, nMaxIter, dTol, bScale);
        };
        CMatrix scaled = MakeMatrix(2, 2, {0.5, 1, 0.75, -0.25}); // rows by 2 and 4
        const double v0 = WorstSquares(bFlat && bScale ? scaled : MakeMatrix(2, 2, b));
        // the starting residual: b - A x0 (then scaled), or the right-hand side itself
        CMatrix r = bStart ? MakeMatrix(2, 2, {1 - 0.8 - 0.15, 2 - 0.4, 3 - 0.2 - 2.4, -1 - 0.1})
                           : MakeMatrix(2, 2, b);
        if (bScale) {
            r.MultiplyRow(0, 0.5);
            r.MultiplyRow(1, 0.25);
        }
        double dNorm;
        EXPECT_EQ(Run(0, 1e-30, dNorm), 0);
        EXPECT_NEAR(dNorm, WorstSquares(r), 1e-14 * WorstSquares(r));
        EXPECT_EQ(Flat(X0), x0);
        EXPECT_TRUE(bStart || Flat(B) == V(4, 0.0));

        double r1;
        ASSERT_EQ(Run(1, 0.0, r1), 1);
        ASSERT_GT(r1, 0.0);
        EXPECT_EQ(Run(1, r1 / v0 * (1 + 1e-9), dNorm), 0);
        EXPECT_EQ(Run(1, r1 / v0 * (1 - 1e-9), dNorm), 1);

        EXPECT_LT(Run(50, 1e-28, dNorm), 50);
        CMatrix &x = bStart ? X0 : B;
        EXPECT_TRUE(x.GetRows() == 2 && x.GetColumns() == 2);
        for (int k = 0; k < 4; k++)
            EXPECT_NEAR(x.m_pVector[k], direct.m_pVector[k], 1e-14);
        EXPECT_TRUE(!bStart || std::fabs(B.m_pVector[0] - direct.m_pVector[0]) > 1e-6);
        EXPECT_EQ(Dump(A), bScale && !bFlat ? "0:0=1,1=0.125;1:1=1" : pszA);
    }
}

// Flops: 2 per column for a first cell, 4 for every other, 1 per column for an identity
// row of the flat form, then (9 m + 1) per counted iteration and column; a start vector
// adds its product. A lone 1.0 is an identity row to the flat form only; with the scaling
// its scale is 1.0, so its right-hand side stays as it is.
TEST(ConjGradient, FlopsAndIdentityRows) {
    const struct {
        const char *pszA;
        bool bFlat, bStart;
        int nColumns;
        ULONG nFlops;
    } cases[] = {
        {"0:0=4,1=1;1:1=3", false, false, 2, 16 + 19 * 2},
        {"0:0=4,1=1;1:1=3", true, false, 2, 16 + 19 * 2},
        {"0:0=4,1=1;1:1=3", false, true, 2, 16 + 16 + 19 * 2},
        {"0:0=1;1:1=2", false, false, 1, 4 + 19},
        {"0:0=1;1:1=2", true, false, 1, 3 + 19},
    };
    for (const auto &t : cases) {
        Lists A(t.pszA);
        CMatrix B(2, t.nColumns, true, 1.0), X0(2, t.nColumns, true, 0.5);
        double dNorm;
        CVirtMat::m_Flops = 5;
        EXPECT_EQ(Solve(t.bFlat, A, B, t.bStart ? &X0 : NULL, dNorm, 1, 0.0, false), 1);
        EXPECT_EQ(CVirtMat::m_Flops, 5 + t.nFlops) << t.pszA << " " << t.bFlat << t.bStart;
    }

    // The identity row copies its right-hand side; its column is absent from other rows.
    for (bool bScale : {false, true}) {
        Lists A("0:0=4,2=1;1:1=1;2:2=2");
        CMatrix B = MakeMatrix(3, 1, {1, 3, 1});
        double dNorm;
        A.ConjGradient2(B, dNorm, 20, 1e-30, NULL, bScale);
        EXPECT_NEAR(B[0][0], 1.0 / 7.0, 1e-15);
        EXPECT_NEAR(B[1][0], 3.0, 1e-15);
        EXPECT_NEAR(B[2][0], 3.0 / 7.0, 1e-15);
    }
}

// The flat form's report, only with a statistics vector, which then holds two times; the
// list form shows none.
TEST(ConjGradient, ReportOfTheFlatForm) {
    ReportRecorder rec;
    const std::string strHead = "Used time:\r\n Solving (1)    :   {T}\r\n"
                                " Solving (2)    :   {T}\r\n Iter/Eq's      :   ";
    struct {
        int nMaxIter;
        const char *pszTail;
    } cases[] = {
        {0, " 0.000 %%\r\n ||v_0||        :   1.600e+01\r\n ||v_i||         :   1.600e+01\r\n"
            " ||v_i||/||v_0||:   1.000e+00\r\n (norms are inf-norm)"},
        // the third iteration meets the test: two of three equations
        {50, "66.667 %%\r\n ||v_0||        :   1.600e+01\r\n ||v_i||         :   %.3e\r\n"
             " ||v_i||/||v_0||:   %.3e\r\n (norms are inf-norm)"},
    };
    for (const auto &t : cases) {
        rec.Texts().clear();
        Lists A("0:0=1;1:1=2;2:2=4");
        CMatrix B = MakeMatrix(3, 1, {2, 2, 2 * std::sqrt(2.0)}); // squares summing to 16
        CVector times(5, true, -1.0);
        double dNorm;
        A.ConjGradient2(B, dNorm, t.nMaxIter, 1e-20, &times, false);
        ASSERT_EQ(rec.Texts().size(), 1u);
        char szTail[256]; // the last residual is rounding noise: its digits as returned
        snprintf(szTail, sizeof szTail, t.pszTail, dNorm, dNorm / 16.0);
        const std::string strTail = szTail;
        EXPECT_TRUE(MatchesReport(rec.Texts()[0], strHead + strTail)) << rec.Texts()[0];
        EXPECT_TRUE(times.GetSize() == 2 && times[0] >= 0.0 && times[1] >= 0.0);
    }
    rec.Texts().clear();
    Lists A("0:0=2");
    CMatrix B(1, 1, true, 1.0);
    CVector times;
    double dNorm;
    A.ConjGradient2(B, dNorm, 5, 1e-10, NULL, true);
    A.ConjGradient(B, NULL, dNorm, 5, 1e-10, &times, true);
    EXPECT_TRUE(rec.Texts().empty());
    EXPECT_EQ(times.GetSize(), 2);
}

// All columns advance together, each with its own steps, until the worst passes: a column
// that converges at once (and then sits at an exact zero residual) runs on beside one that
// needs a second iteration, and each column is what it would be alone.
TEST(ConjGradient, ColumnsThatNeedDifferentCounts) {
    for (bool bFlat : {false, true}) {
        auto Run = [&](const V &b, int nColumns, int &nResult) {
            Lists A("0:0=1;1:1=2;2:2=3");
            CMatrix B = MakeMatrix(3, nColumns, b);
            double dNorm;
            nResult = Solve(bFlat, A, B, NULL, dNorm, 50, 1e-24, false);
            return B;
        };
        int nFirst, nSecond, nBoth;
        CMatrix first = Run({1, 0, 0}, 1, nFirst), second = Run({0.6, 0.8, 0}, 1, nSecond);
        CMatrix both = Run({1, 0.6, 0, 0.8, 0, 0}, 2, nBoth);
        EXPECT_EQ(nFirst, 0);
        EXPECT_EQ(nSecond, 1);
        EXPECT_EQ(nBoth, 1);
        for (int i = 0; i < 3; i++) {
            EXPECT_EQ(both[i][0], first[i][0]);
            EXPECT_EQ(both[i][1], second[i][0]);
        }
    }
}

// On a mesh without identity rows and without scaling both forms run the same arithmetic:
// the same solutions bit for bit, the same count and the same flops.
TEST(ConjGradient, BothFormsAgreeBitForBit) {
    const RoadMesh mesh = MakeRoadMesh(8, 7, false, 2);
    for (int c : {1, 3}) { // three columns: the first one zero
        CMatrix B[2];
        int nIter[2];
        ULONG nFlops[2];
        for (int f = 0; f < 2; f++) {
            CSparseMatrix A;
            AssembleUpper(A, mesh, 1);
            B[f].Allocate(mesh.nDOFs, c, false, 0.0);
            for (int k = 0; k < B[f].m_nSize; k++)
                B[f].m_pVector[k] = (c == 1 ? 1 : k % c) * LoadValue(k / c, k % c % 2);
            double dNorm;
            CVirtMat::m_Flops = 0;
            nIter[f] = Solve(f == 1, A, B[f], NULL, dNorm, 500, 1e-24, false);
            nFlops[f] = CVirtMat::m_Flops;
        }
        EXPECT_LT(nIter[0], 500);
        EXPECT_EQ(nIter[0], nIter[1]);
        EXPECT_EQ(nFlops[0], nFlops[1]);
        EXPECT_EQ(Flat(B[0]), Flat(B[1]));
    }
}
