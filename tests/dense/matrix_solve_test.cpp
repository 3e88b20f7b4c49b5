// CMatrix: LU with and without pivoting, the triangular solves, the timed driver, the
// determinant and Cholesky: results, return codes, half-finished states, and the routing
// of every element access through the virtual accessors.
#include "dense_test.h"

#include "common/femtest.h"

#include <cmath>

TEST(MatrixSolve, PivotTieAndTheUnexaminedLastPivot) {
    CMatrix tie = MakeMatrix(2, 2, {1, 5, -1, 3}); // equal magnitudes: the upper row stays
    int *pPerm = NULL;
    EXPECT_EQ(tie.LUP_Decomp(pPerm), 1);
    EXPECT_EQ(V(pPerm, pPerm + 2), (V{0, 1}));
    EXPECT_EQ(Flat(tie), (V{1, 5, -1, 8}));
    delete[] pPerm;

    CMatrix singular = MakeMatrix(2, 2, {1, 2, 2, 4});
    EXPECT_EQ(singular.LUP_Decomp(pPerm), 1);
    EXPECT_EQ(V(pPerm, pPerm + 2), (V{1, 0}));
    EXPECT_EQ(Flat(singular), (V{2, 4, 0.5, 0}));
    delete[] pPerm;
    CMatrix rhs = MakeMatrix(2, 1, {1, 1});
    double dSeconds;
    EXPECT_TRUE(MakeMatrix(2, 2, {1, 2, 2, 4}).SolveAxEqb(&rhs, true, dSeconds));
    EXPECT_FALSE(std::isfinite(rhs.GetValue(1, 0)));
}

TEST(MatrixSolve, ZeroPivotsLeaveHalfFinishedWork) {
    int *pPerm = NULL;
    CMatrix zeroColumn = MakeMatrix(3, 3, {0, 1, 2, 0, 3, 4, 0, 5, 6});
    EXPECT_EQ(zeroColumn.LUP_Decomp(pPerm), -1);
    EXPECT_EQ(pPerm, nullptr);
    // Step 0 is done (rows 0 and 2 exchanged), then column 1 has nothing left.
    CMatrix pivoted = MakeMatrix(3, 3, {2, 1, 1, 4, 2, 5, 8, 4, 7}), plain = pivoted;
    EXPECT_EQ(pivoted.LUP_Decomp(pPerm), -1);
    EXPECT_EQ(Flat(pivoted), (V{8, 4, 7, 0.5, 0, 1.5, 0.25, 0, -0.75}));
    EXPECT_EQ(plain.LU(), nullptr);
    EXPECT_EQ(Flat(plain), (V{2, 1, 1, 2, 0, 3, 4, 0, 3}));
    CMatrix last = MakeMatrix(2, 2, {1, 2, 2, 4}); // without pivoting the last pivot counts
    EXPECT_EQ(last.LU(), nullptr);

    // ((0, 1), (1, 0)) solves with pivoting only; a failure leaves the time 0 and b alone.
    CMatrix b = MakeMatrix(2, 1, {3, 4});
    double dSeconds = 5.0;
    EXPECT_FALSE(MakeMatrix(2, 2, {0, 1, 1, 0}).SolveAxEqb(&b, false, dSeconds));
    EXPECT_EQ(dSeconds, 0.0);
    EXPECT_EQ(Flat(b), (V{3, 4}));
    EXPECT_TRUE(MakeMatrix(2, 2, {0, 1, 1, 0}).SolveAxEqb(&b, true, dSeconds));
    EXPECT_EQ(Flat(b), (V{4, 3}));
}

TEST(MatrixSolve, SeveralColumnsEqualColumnByColumnSolves) {
    const V a = {4, 1, 2, 0.5, 1, 5, 1, 2, 2, 1, 6, 1, 0.5, 2, 1, 7};
    const V rhs = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    for (bool bPivot : {true, false}) {
        CMatrix lu = MakeMatrix(4, 4, a), all = MakeMatrix(4, 3, rhs), none;
        int *pPerm = NULL;
        if (bPivot)
            lu.LUP_Decomp(pPerm);
        else
            lu.LU();
        CMatrix::LUP_Solve(&lu, pPerm, &all);
        CMatrix::LUP_Solve(&lu, pPerm, &none); // no columns: nothing to do
        for (int c = 0; c < 3; c++) {
            CMatrix one = MakeMatrix(4, 1, {rhs[c], rhs[3 + c], rhs[6 + c], rhs[9 + c]});
            CMatrix::LUP_Solve(&lu, pPerm, &one);
            for (int i = 0; i < 4; i++)
                EXPECT_EQ(all.GetValue(i, c), one.GetValue(i, 0)) << bPivot;
        }
        delete[] pPerm;
    }
}

TEST(MatrixSolve, RandomSystemsPassAResidualCheck) {
    AfxSrand(12345);
    for (int n : {50, 200}) {
        for (bool bPivot : {true, false}) {
            CMatrix a(n, n, false, 0.0), b(n, 2, false, 0.0);
            for (int k = 0; k < n * n; k++)
                a.m_pVector[k] = AfxRand() / 32767.0 - 0.5 + (k % (n + 1) == 0 ? 0.25 * n : 0.0);
            for (int k = 0; k < 2 * n; k++)
                b.m_pVector[k] = AfxRand() / 3276.7 - 5.0;
            CMatrix factors(a), x(b);
            double dSeconds = -1.0;
            ASSERT_TRUE(factors.SolveAxEqb(&x, bPivot, dSeconds));
            EXPECT_GE(dSeconds, 0.0);
            std::vector<double> ax(2 * n, 0.0);
            for (int i = 0; i < n; i++)
                for (int c = 0; c < 2; c++)
                    for (int j = 0; j < n; j++)
                        ax[i * 2 + c] += a.GetValue(i, j) * x.GetValue(j, c);
            EXPECT_LE(RelativeError(ax, Flat(b)), 1e-10) << n << " " << bPivot;
        }
    }
}

TEST(MatrixSolve, DeterminantBlocksAndMultiply) {
    CMatrix id;
    id.Identity(3, 1.0);
    EXPECT_EQ(id.Det(), 1.0);
    EXPECT_TRUE(id == MakeMatrix(3, 3, {1, 0, 0, 0, 1, 0, 0, 0, 1}));
    EXPECT_EQ(CMatrix().Det(), 1.0);
    CMatrix m = MakeMatrix(2, 2, {1, 2, 3, 4});
    EXPECT_EQ(m.Det(), -2.0);
    EXPECT_EQ(m.SubDetSqMat(0, 0, 2), -2.0);
    EXPECT_EQ(m.SubDetSqMat(0, 0, 3), 0.0);
    EXPECT_EQ(MakeMatrix(2, 2, {0, 1, 1, 0}).Det(), 0.0); // no pivoting, no sign
    EXPECT_EQ(m.Multiply(1, 0, 2.0), 6.0);
    EXPECT_EQ(m.GetValue(1, 0), 6.0);
}

TEST(MatrixSolve, CholeskyReadsOnlyTheUpperTriangle) {
    CMatrix m = MakeMatrix(2, 2, {4, 2, 99, 3});
    EXPECT_EQ(m.Cholesky(), 1);
    EXPECT_EQ(Flat(m), (V{2, 1, 0, 2.0 / std::sqrt(2.0)}));
    CMatrix zero = MakeMatrix(2, 2, {0, 1, 1, 2});
    EXPECT_EQ(zero.Cholesky(), 0);
    EXPECT_EQ(Flat(zero), (V{0, 1, 1, 2}));
    CMatrix lastZero = MakeMatrix(2, 2, {1, 1, 1, 1}); // fails after row 0 is finished
    EXPECT_EQ(lastZero.Cholesky(), 0);
    EXPECT_EQ(Flat(lastZero), (V{1, 1, 1, 0}));
    CMatrix negative = MakeMatrix(2, 2, {-4, 2, 2, 3}); // no failure: not-a-number
    EXPECT_EQ(negative.Cholesky(), 1);
    EXPECT_TRUE(std::isnan(negative.GetValue(0, 0)));
}

namespace {

// Keeps its elements in an array of its own and leaves the base buffer not-a-number: an
// access that bypasses the accessors shows in the results.
class CShadowMatrix : public CMatrix {
public:
    explicit CShadowMatrix(const CMatrix &m)
        : CMatrix(m.m_nRows, m.m_nSize / m.m_nRows, true, NAN), m_shadow(Flat(m)) {}
    double &GetValueByRef(int i, int j) override { return Ref(0, i, j); }
    double GetValue(int i, int j) override { return Ref(1, i, j); }
    void SetValue(int i, int j, double d) override { Ref(2, i, j) = d; }
    void AddValue(int i, int j, double d) override { Ref(3, i, j) += d; }
    double Multiply(int i, int j, double d) override {
        m_nCalls[4]++;
        return CMatrix::Multiply(i, j, d);
    }
    int m_nCalls[5] = {}; // GetValueByRef, GetValue, SetValue, AddValue, Multiply
    V m_shadow;

private:
    double &Ref(int nKind, int i, int j) {
        m_nCalls[nKind]++;
        return m_shadow[i * (m_nSize / m_nRows) + j];
    }
};

} // namespace

// A plain matrix runs on its array directly, a derived one through the table: the same
// bits either way, on a system large enough to pivot, round and cancel.
TEST(MatrixSolve, DerivedAccessorsSeeEveryAccessWithTheSameResults) {
    const int n = 12;
    AfxSrand(99);
    CMatrix a(n, n, false, 0.0), b(n, 3, false, 0.0), spd(n, n, true, 0.0);
    for (int k = 0; k < n * n; k++)
        a.m_pVector[k] = AfxRand() / 32767.0 - 0.5;
    for (int k = 0; k < 3 * n; k++)
        b.m_pVector[k] = AfxRand() / 32767.0;
    for (int i = 0; i < n; i++)
        for (int j = 0; j < n; j++)
            for (int k = 0; k < n; k++)
                spd.AddValue(i, j, a.GetValue(k, i) * a.GetValue(k, j));
    for (bool bPivot : {true, false}) {
        CMatrix plain(a), plainB(b);
        CShadowMatrix shadow(a), shadowB(b);
        double dSeconds;
        ASSERT_TRUE(plain.SolveAxEqb(&plainB, bPivot, dSeconds));
        ASSERT_TRUE(shadow.SolveAxEqb(&shadowB, bPivot, dSeconds));
        EXPECT_EQ(shadow.m_shadow, Flat(plain));
        EXPECT_EQ(shadowB.m_shadow, Flat(plainB));
        // Pivoting exchanges rows by reference and scales by Multiply; both add and set.
        EXPECT_EQ(shadow.m_nCalls[0] > 0 && shadow.m_nCalls[4] > 0, bPivot);
        EXPECT_TRUE(shadow.m_nCalls[3] > 0 && shadowB.m_nCalls[2] > 0);
    }
    CShadowMatrix shadowSpd(spd);
    EXPECT_EQ(spd.Cholesky(), 1);
    EXPECT_EQ(shadowSpd.Cholesky(), 1);
    EXPECT_EQ(shadowSpd.m_shadow, Flat(spd));
    EXPECT_EQ(CShadowMatrix(MakeMatrix(2, 2, {1, 2, 3, 4})).SubDetSqMat(0, 0, 2), -2.0);
}
