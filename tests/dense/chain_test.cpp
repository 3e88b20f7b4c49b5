// Chains of products: the bracketing, which matrices are overwritten, equal results.
#include "dense_test.h"

#include <cmath>

// An r by c matrix of small distinct values.
static CMatrix Filled(int r, int c, double dSeed) {
    CMatrix m(r, c);
    for (int k = 0; k < m.m_nSize; k++)
        m.m_pVector[k] = std::sin(dSeed + 0.37 * k);
    return m;
}

TEST(ChainMult, CostsAndSplits) {
    CVector dims = MakeVector({10, 100, 5, 50});
    CMatrix split(3, 3, true, 0.0);
    EXPECT_EQ(CMatrix::MatrixChainOrder(&split, &dims), 7500.0);
    EXPECT_EQ(split.GetValue(0, 2), 2.0);
    EXPECT_EQ(split.GetValue(0, 1), 1.0);
    EXPECT_EQ(split.GetValue(1, 2), 2.0);

    dims = MakeVector({50, 5, 100, 5});
    split = CMatrix(3, 3, true, 0.0);
    EXPECT_EQ(CMatrix::MatrixChainOrder(&split, &dims), 3750.0); // left to right: 50000
    EXPECT_EQ(split.GetValue(0, 2), 1.0);

    // ((A1 (A2 A3)) ((A4 A5) A6)), the textbook chain of six
    dims = MakeVector({30, 35, 15, 5, 10, 20, 25});
    split = CMatrix(6, 6, true, 0.0);
    EXPECT_EQ(CMatrix::MatrixChainOrder(&split, &dims), 15125.0);
    EXPECT_EQ(split.GetValue(0, 5), 3.0);
    EXPECT_EQ(split.GetValue(0, 2), 1.0);
    EXPECT_EQ(split.GetValue(3, 5), 5.0);

    dims = MakeVector({4, 7});
    split = CMatrix(1, 1, true, 0.0);
    EXPECT_EQ(CMatrix::MatrixChainOrder(&split, &dims), 0.0);
}

TEST(ChainMult, BothWaysGiveTheProductAndOverwriteAsStated) {
    CMatrix a = Filled(50, 5, 0.1), b = Filled(5, 100, 0.2), c = Filled(100, 5, 0.3);
    CMatrix a2 = a, b2 = b, c2 = c;
    double dSeconds = CMatrix::ChainMult(false, 3, &a, &b, &c);
    EXPECT_GE(dSeconds, 0.0);
    EXPECT_EQ(Flat(b), Flat(b2)); // left to right leaves the others
    EXPECT_EQ(Flat(c), Flat(c2));
    ASSERT_EQ(a.m_nRows, 50);
    ASSERT_EQ(a.GetColumns(), 5);

    // reference product, plainly: a (b c)
    CMatrix bc(5, 5, true, 0.0);
    for (int m = 0; m < 5; m++)
        for (int j = 0; j < 5; j++)
            for (int k = 0; k < 100; k++)
                bc.GetValueByRef(m, j) += b2.GetValue(m, k) * c2.GetValue(k, j);
    CMatrix ref(50, 5, true, 0.0);
    for (int i = 0; i < 50; i++)
        for (int j = 0; j < 5; j++)
            for (int m = 0; m < 5; m++)
                ref.GetValueByRef(i, j) += a2.GetValue(i, m) * bc.GetValue(m, j);

    CMatrix::ChainMult(true, 3, &a2, &b2, &c2);
    EXPECT_EQ(Flat(c2), Flat(c)); // the last stands first in no sub-chain
    EXPECT_EQ(b2.m_nRows, 5);     // the second took the product of the second and third
    EXPECT_EQ(b2.GetColumns(), 5);
    for (int k = 0; k < 25; k++)
        EXPECT_NEAR(b2.m_pVector[k], bc.m_pVector[k], 1e-12 * std::fabs(bc.m_pVector[k]) + 1e-13);
    for (int k = 0; k < ref.m_nSize; k++) {
        EXPECT_NEAR(a.m_pVector[k], ref.m_pVector[k], 1e-12 * std::fabs(ref.m_pVector[k]) + 1e-12);
        EXPECT_NEAR(a2.m_pVector[k], ref.m_pVector[k], 1e-12 * std::fabs(ref.m_pVector[k]) + 1e-12);
    }

    CMatrix one = Filled(3, 2, 0.5), before = one;
    CMatrix::ChainMult(false, 1, &one);
    CMatrix::ChainMult(true, 1, &one);
    EXPECT_EQ(Flat(one), Flat(before));
}
