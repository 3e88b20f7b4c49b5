// CMatrix: LU with and without pivoting, the triangular solves, the timed driver, the
// determinant and Cholesky: results, return codes, half-finished states, and the
// routing of every element access through the virtual accessors.
#include "matrix_helpers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using V = std::vector<double>;

TEST(MatrixSolve, LUP_DecompPivotsAndTies) {
    // Equal magnitudes in the pivot column: the upper row stays.
    CMatrix tie = MakeMatrix(2, 2, {1, 5, -1, 3});
    int *pPerm = NULL;
    EXPECT_EQ(tie.LUP_Decomp(pPerm), 1);
    ASSERT_NE(pPerm, nullptr);
    EXPECT_EQ(pPerm[0], 0);
    EXPECT_EQ(pPerm[1], 1);
    EXPECT_EQ(Flat(tie), (V{1, 5, -1, 8}));
    delete[] pPerm;

    // The zero that arises on the last pivot is never examined.
    CMatrix singular = MakeMatrix(2, 2, {1, 2, 2, 4});
    EXPECT_EQ(singular.LUP_Decomp(pPerm), 1);
    EXPECT_EQ(pPerm[0], 1);
    EXPECT_EQ(pPerm[1], 0);
    EXPECT_EQ(Flat(singular), (V{2, 4, 0.5, 0}));
    delete[] pPerm;

    CMatrix one = MakeMatrix(1, 1, {0});
    EXPECT_EQ(one.LUP_Decomp(pPerm), 1);
    delete[] pPerm;
}

TEST(MatrixSolve, ZeroPivotsLeaveHalfFinishedWork) {
    int *pPerm = NULL;
    CMatrix zeroColumn = MakeMatrix(3, 3, {0, 1, 2, 0, 3, 4, 0, 5, 6});
    EXPECT_EQ(zeroColumn.LUP_Decomp(pPerm), -1);
    EXPECT_EQ(pPerm, nullptr);

    // Step 0 is done (rows 0 and 2 exchanged), then column 1 has nothing left.
    CMatrix pivoted = MakeMatrix(3, 3, {2, 1, 1, 4, 2, 5, 8, 4, 7});
    EXPECT_EQ(pivoted.LUP_Decomp(pPerm), -1);
    EXPECT_EQ(pPerm, nullptr);
    EXPECT_EQ(Flat(pivoted), (V{8, 4, 7, 0.5, 0, 1.5, 0.25, 0, -0.75}));

    CMatrix plain = MakeMatrix(3, 3, {2, 1, 1, 4, 2, 5, 8, 4, 7});
    EXPECT_EQ(plain.LU(), nullptr);
    EXPECT_EQ(Flat(plain), (V{2, 1, 1, 2, 0, 3, 4, 0, 3}));

    // Without pivoting the last pivot is examined too.
    CMatrix last = MakeMatrix(2, 2, {1, 2, 2, 4});
    EXPECT_EQ(last.LU(), nullptr);
    CMatrix empty;
    EXPECT_EQ(empty.LU(), &empty);
}

TEST(MatrixSolve, SolveAxEqbWithAndWithoutPivoting) {
    CMatrix swap = MakeMatrix(2, 2, {0, 1, 1, 0});
    CMatrix b = MakeMatrix(2, 1, {3, 4});
    double dSeconds = 5.0;
    EXPECT_TRUE(swap.SolveAxEqb(&b, true, dSeconds));
    EXPECT_EQ(Flat(b), (V{4, 3}));
    EXPECT_GE(dSeconds, 0.0);

    CMatrix noPivot = MakeMatrix(2, 2, {0, 1, 1, 0});
    dSeconds = 5.0;
    EXPECT_FALSE(noPivot.SolveAxEqb(&b, false, dSeconds));
    EXPECT_EQ(dSeconds, 0.0);
    EXPECT_EQ(Flat(b), (V{4, 3}));

    // A singular matrix whose zero arises on the last pivot "solves" to non-finite values.
    CMatrix singular = MakeMatrix(2, 2, {1, 2, 2, 4});
    CMatrix rhs = MakeMatrix(2, 1, {1, 1});
    EXPECT_TRUE(singular.SolveAxEqb(&rhs, true, dSeconds));
    EXPECT_FALSE(std::isfinite(rhs.GetValue(1, 0)));
}

TEST(MatrixSolve, SeveralColumnsEqualColumnByColumnSolves) {
    const V a = {4, 1, 2, 0.5, 1, 5, 1, 2, 2, 1, 6, 1, 0.5, 2, 1, 7};
    const V rhs = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    for (bool bPivot : {true, false}) {
        CMatrix lu = MakeMatrix(4, 4, a);
        int *pPerm = NULL;
        if (bPivot)
            ASSERT_EQ(lu.LUP_Decomp(pPerm), 1);
        else
            ASSERT_NE(lu.LU(), nullptr);
        CMatrix all = MakeMatrix(4, 3, rhs);
        CMatrix::LUP_Solve(&lu, pPerm, &all);
        for (int c = 0; c < 3; c++) {
            CMatrix one(4, 1, false, 0.0);
            for (int i = 0; i < 4; i++)
                one.SetValue(i, 0, rhs[i * 3 + c]);
            CMatrix::LUP_Solve(&lu, pPerm, &one);
            for (int i = 0; i < 4; i++)
                EXPECT_EQ(all.GetValue(i, c), one.GetValue(i, 0)) << bPivot << " " << i;
        }
        // No columns: nothing to do.
        CMatrix none;
        CMatrix::LUP_Solve(&lu, pPerm, &none);
        delete[] pPerm;
    }
}

TEST(MatrixSolve, RandomSystemsPassResidualCheck) {
    AfxSrand(12345);
    for (int n : {50, 120, 200}) {
        for (bool bPivot : {true, false}) {
            CMatrix a(n, n, false, 0.0);
            for (int k = 0; k < n * n; k++)
                a.m_pVector[k] = AfxRand() / 32767.0 - 0.5;
            // A strong diagonal keeps the unpivoted path well conditioned too.
            for (int i = 0; i < n; i++)
                a.AddValue(i, i, 0.25 * n);
            CMatrix x(n, 2, false, 0.0), b(n, 2, true, 0.0);
            for (int k = 0; k < 2 * n; k++)
                x.m_pVector[k] = AfxRand() / 3276.7 - 5.0;
            for (int i = 0; i < n; i++)
                for (int c = 0; c < 2; c++)
                    for (int j = 0; j < n; j++)
                        b.AddValue(i, c, a.GetValue(i, j) * x.GetValue(j, c));
            CMatrix factors(a, false), solution(b, false);
            double dSeconds = -1.0;
            ASSERT_TRUE(factors.SolveAxEqb(&solution, bPivot, dSeconds));
            EXPECT_GE(dSeconds, 0.0);
            // Residual of the computed solution against the original matrix.
            double dResidual = 0.0, dNorm = 0.0;
            for (int i = 0; i < n; i++)
                for (int c = 0; c < 2; c++) {
                    double s = -b.GetValue(i, c);
                    for (int j = 0; j < n; j++)
                        s += a.GetValue(i, j) * solution.GetValue(j, c);
                    dResidual = std::max(dResidual, std::fabs(s));
                    dNorm = std::max(dNorm, std::fabs(b.GetValue(i, c)));
                }
            EXPECT_LE(dResidual, 1e-10 * dNorm) << n << " " << bPivot;
        }
    }
}

TEST(MatrixSolve, DeterminantAndSmallBlocks) {
    CMatrix id;
    id.Identity(3, 1.0);
    EXPECT_EQ(id.Det(), 1.0);
    EXPECT_EQ(Flat(id), (V{1, 0, 0, 0, 1, 0, 0, 0, 1}));
    EXPECT_EQ(CMatrix().Det(), 1.0);

    CMatrix m = MakeMatrix(2, 2, {1, 2, 3, 4});
    EXPECT_EQ(m.Det(), -2.0);
    EXPECT_EQ(Flat(m), (V{1, 2, 3, 4}));
    EXPECT_EQ(m.SubDetSqMat(0, 0, 2), -2.0);
    EXPECT_EQ(m.SubDetSqMat(0, 0, 3), 0.0);
    // No pivoting, so a zero leading pivot gives 0.0 for a regular matrix.
    EXPECT_EQ(MakeMatrix(2, 2, {0, 1, 1, 0}).Det(), 0.0);

    CMatrix s = MakeMatrix(1, 1, {3});
    EXPECT_EQ(s.Multiply(0, 0, 2.0), 6.0);
    EXPECT_EQ(s.GetValue(0, 0), 6.0);
}

TEST(MatrixSolve, CholeskyReadsOnlyTheUpperTriangle) {
    CMatrix m = MakeMatrix(2, 2, {4, 2, 99, 3});
    EXPECT_EQ(m.Cholesky(), 1);
    EXPECT_EQ(Flat(m), (V{2, 1, 0, 2.0 / std::sqrt(2.0)}));

    CMatrix zero = MakeMatrix(2, 2, {0, 1, 1, 2});
    EXPECT_EQ(zero.Cholesky(), 0);
    EXPECT_EQ(Flat(zero), (V{0, 1, 1, 2}));

    // A zero on the last pivot fails after the first row is finished.
    CMatrix lastZero = MakeMatrix(2, 2, {1, 1, 1, 1});
    EXPECT_EQ(lastZero.Cholesky(), 0);
    EXPECT_EQ(Flat(lastZero), (V{1, 1, 1, 0}));

    // A negative pivot is no failure: the row turns into not-a-number.
    CMatrix negative = MakeMatrix(2, 2, {-4, 2, 2, 3});
    EXPECT_EQ(negative.Cholesky(), 1);
    EXPECT_TRUE(std::isnan(negative.GetValue(0, 0)));
}

namespace {

// Keeps its elements in an array of its own, transposed, and leaves the base buffer
// filled with not-a-number: any access that bypasses the accessors shows in the results.
class CShadowMatrix : public CMatrix {
public:
    CShadowMatrix(const CMatrix &m) : CMatrix(m.m_nRows, m.m_nSize / m.m_nRows, true, NAN) {
        int nCols = GetColumns();
        m_shadow.resize(m_nSize);
        for (int i = 0; i < m_nRows; i++)
            for (int j = 0; j < nCols; j++)
                Ref(i, j) = m.m_pVector[i * nCols + j];
    }
    double &GetValueByRef(int i, int j) override {
        m_nRefs++;
        return Ref(i, j);
    }
    double GetValue(int i, int j) override {
        m_nGets++;
        return Ref(i, j);
    }
    void SetValue(int i, int j, double dValue) override {
        m_nSets++;
        Ref(i, j) = dValue;
    }
    void AddValue(int i, int j, double dValue) override {
        m_nAdds++;
        Ref(i, j) += dValue;
    }
    double Multiply(int i, int j, double dFactor) override {
        m_nMultiplies++;
        return CMatrix::Multiply(i, j, dFactor);
    }
    V Values() {
        V values;
        for (int i = 0; i < m_nRows; i++)
            for (int j = 0; j < GetColumns(); j++)
                values.push_back(Ref(i, j));
        return values;
    }
    int m_nRefs = 0, m_nGets = 0, m_nSets = 0, m_nAdds = 0, m_nMultiplies = 0;

private:
    double &Ref(int i, int j) { return m_shadow[j * m_nRows + i]; }
    V m_shadow;
};

} // namespace

TEST(MatrixSolve, DerivedAccessorsSeeEveryElementAccess) {
    const CMatrix a = MakeMatrix(3, 3, {2, 1, 1, 4, 3, 5, 8, 4, 9});
    const CMatrix b = MakeMatrix(3, 2, {1, 2, 3, 4, 5, 6});

    CMatrix plain(a), plainB(b);
    CShadowMatrix shadow(a), shadowB(b);
    double dSeconds;
    ASSERT_TRUE(plain.SolveAxEqb(&plainB, true, dSeconds));
    ASSERT_TRUE(shadow.SolveAxEqb(&shadowB, true, dSeconds));
    EXPECT_EQ(shadow.Values(), Flat(plain));
    EXPECT_EQ(shadowB.Values(), Flat(plainB));
    // One multiplier per element below the diagonal, through Multiply and its reference.
    EXPECT_EQ(shadow.m_nMultiplies, 3);
    EXPECT_GT(shadow.m_nRefs, 3);
    EXPECT_GT(shadow.m_nAdds, 0);
    EXPECT_GT(shadowB.m_nSets, 0);

    CMatrix plainLU(a), plainLUB(b);
    CShadowMatrix shadowLU(a), shadowLUB(b);
    ASSERT_TRUE(plainLU.SolveAxEqb(&plainLUB, false, dSeconds));
    ASSERT_TRUE(shadowLU.SolveAxEqb(&shadowLUB, false, dSeconds));
    EXPECT_EQ(shadowLU.Values(), Flat(plainLU));
    EXPECT_EQ(shadowLUB.Values(), Flat(plainLUB));
    EXPECT_GT(shadowLUB.m_nAdds, 0);

    CMatrix spd = MakeMatrix(3, 3, {4, 2, 1, 2, 5, 3, 1, 3, 6});
    CShadowMatrix shadowSpd(spd);
    EXPECT_EQ(spd.Cholesky(), 1);
    EXPECT_EQ(shadowSpd.Cholesky(), 1);
    EXPECT_EQ(shadowSpd.Values(), Flat(spd));

    CShadowMatrix small(MakeMatrix(2, 2, {1, 2, 3, 4}));
    EXPECT_EQ(small.SubDetSqMat(0, 0, 2), -2.0);
    EXPECT_EQ(small.m_nGets, 4);
}

// A plain matrix runs on its array directly; a derived one through the table. Both must
// give the same bits on systems large enough to pivot, round and cancel.
TEST(MatrixSolve, PlainAndDerivedMatricesAgreeBitForBit) {
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
        EXPECT_EQ(shadow.Values(), Flat(plain));
        EXPECT_EQ(shadowB.Values(), Flat(plainB));
    }
    CShadowMatrix shadowSpd(spd);
    EXPECT_EQ(spd.Cholesky(), 1);
    EXPECT_EQ(shadowSpd.Cholesky(), 1);
    EXPECT_EQ(shadowSpd.Values(), Flat(spd));
}
