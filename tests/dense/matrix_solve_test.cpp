// CMatrix: LU with and without pivoting, the triangular solves, the timed driver, the
// determinant and Cholesky: results, return codes, half-finished states, and the routing
// of every element access through the virtual accessors.
#include "dense_test.h"

#include "common/femtest.h"

#include <cmath>

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

TEST(MatrixSolve, FactorisationResultsAndHalfFinishedWork) {
    // Equal magnitudes keep the upper row; a zero last pivot is not examined.
    const struct {
        V a, perm, lu;
    } cases[] = {{{1, 5, -1, 3}, {0, 1}, {1, 5, -1, 8}}, {{1, 2, 2, 4}, {1, 0}, {2, 4, 0.5, 0}}};
    int *pPerm = NULL;
    for (const auto &c : cases) {
        CMatrix m = MakeMatrix(2, 2, c.a);
        EXPECT_EQ(m.LUP_Decomp(pPerm), 1);
        EXPECT_EQ(V(pPerm, pPerm + 2), c.perm);
        EXPECT_EQ(Flat(m), c.lu);
        delete[] pPerm;
    }

    // Zero pivots: return codes and half-finished work.
    CMatrix zeroColumn = MakeMatrix(3, 3, {0, 1, 2, 0, 3, 4, 0, 5, 6});
    EXPECT_EQ(zeroColumn.LUP_Decomp(pPerm), -1);
    EXPECT_EQ(pPerm, nullptr);
    // Step 0 is done (rows 0 and 2 exchanged), then column 1 has nothing left.
    CMatrix pivoted = MakeMatrix(3, 3, {2, 1, 1, 4, 2, 5, 8, 4, 7}), plain = pivoted;
    EXPECT_EQ(pivoted.LUP_Decomp(pPerm), -1);
    EXPECT_EQ(Flat(pivoted), (V{8, 4, 7, 0.5, 0, 1.5, 0.25, 0, -0.75}));
    EXPECT_EQ(plain.LU(), nullptr);
    EXPECT_EQ(Flat(plain), (V{2, 1, 1, 2, 0, 3, 4, 0, 3}));
    // Without pivoting the last pivot counts too.
    EXPECT_EQ(MakeMatrix(2, 2, {1, 2, 2, 4}).LU(), nullptr);

    // ((0, 1), (1, 0)) solves with pivoting only; a failure leaves the time 0 and b alone.
    CMatrix b = MakeMatrix(2, 1, {3, 4});
    double dSeconds = 5.0;
    EXPECT_FALSE(MakeMatrix(2, 2, {0, 1, 1, 0}).SolveAxEqb(&b, false, dSeconds));
    EXPECT_EQ(dSeconds, 0.0);
    EXPECT_EQ(Flat(b), (V{3, 4}));
    EXPECT_TRUE(MakeMatrix(2, 2, {0, 1, 1, 0}).SolveAxEqb(&b, true, dSeconds));
    EXPECT_EQ(Flat(b), (V{4, 3}));
}

// A plain matrix runs on its array directly, a derived one through the table: the same
// bits either way. The second of two right-hand sides comes out as it does alone.
TEST(MatrixSolve, RandomSystemsOnBothPathsPassAResidualCheck) {
    AfxSrand(12345);
    for (int n : {50, 200}) {
        CMatrix a(n, n, false, 0.0), b(n, 2, false, 0.0);
        for (int k = 0; k < n * n; k++)
            a.m_pVector[k] = AfxRand() / 32767.0 - 0.5 + (k % (n + 1) == 0 ? 0.25 * n : 0.0);
        for (int k = 0; k < 2 * n; k++)
            b.m_pVector[k] = AfxRand() / 3276.7 - 5.0;
        for (bool bPivot : {true, false}) {
            SCOPED_TRACE(testing::Message() << "n " << n << " pivot " << bPivot);
            CMatrix plain(a), x(b);
            CShadowMatrix shadow(a), shadowX(b);
            double dSeconds = -1.0;
            ASSERT_TRUE(plain.SolveAxEqb(&x, bPivot, dSeconds));
            ASSERT_TRUE(shadow.SolveAxEqb(&shadowX, bPivot, dSeconds));
            EXPECT_EQ(shadow.m_shadow, Flat(plain));
            EXPECT_EQ(shadowX.m_shadow, Flat(x));
            // Pivoting exchanges rows by reference and scales by Multiply; both add and set.
            EXPECT_EQ(shadow.m_nCalls[0] > 0 && shadow.m_nCalls[4] > 0, bPivot);
            EXPECT_TRUE(shadow.m_nCalls[3] > 0 && shadowX.m_nCalls[2] > 0);

            std::vector<double> ax(2 * n, 0.0);
            for (int i = 0; i < n; i++)
                for (int c = 0; c < 2; c++)
                    for (int j = 0; j < n; j++)
                        ax[i * 2 + c] += a.GetValue(i, j) * x.GetValue(j, c);
            EXPECT_LE(RelativeError(ax, Flat(b)), 1e-10);
            CMatrix factors(a), one, solved;
            b.GetColVect(one, 1);
            ASSERT_TRUE(factors.SolveAxEqb(&one, bPivot, dSeconds));
            x.GetColVect(solved, 1);
            EXPECT_EQ(Flat(solved), Flat(one));
        }
    }
}

TEST(MatrixSolve, DeterminantAndBlocks) {
    EXPECT_EQ(CMatrix().Det(), 1.0);
    CMatrix m = MakeMatrix(2, 2, {1, 2, 3, 4});
    EXPECT_EQ(m.Det(), -2.0);
    EXPECT_EQ(Flat(m), (V{1, 2, 3, 4})); // factorises a copy
    EXPECT_EQ(m.SubDetSqMat(0, 0, 2), -2.0);
    EXPECT_EQ(CShadowMatrix(m).SubDetSqMat(0, 0, 2), -2.0);
    EXPECT_EQ(m.SubDetSqMat(0, 0, 3), 0.0);
    EXPECT_EQ(MakeMatrix(2, 2, {0, 1, 1, 0}).Det(), 0.0); // no pivoting, no sign
}

TEST(MatrixSolve, CholeskyReadsOnlyTheUpperTriangle) {
    CMatrix m = MakeMatrix(2, 2, {4, 2, 99, 3});
    CShadowMatrix shadow(m);
    EXPECT_EQ(m.Cholesky(), 1);
    EXPECT_EQ(Flat(m), (V{2, 1, 0, 2.0 / std::sqrt(2.0)}));
    EXPECT_EQ(shadow.Cholesky(), 1);
    EXPECT_EQ(shadow.m_shadow, Flat(m));
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
