// CMatrix products: with a dense matrix from the right, the congruences, the block
// multiplication's flag order, the rank-one update, products with vectors, products with a
// sparse matrix and the conversions between dense and sparse. Small integers keep every
// expected value exact whatever the order of the sums.
#include "dense_test.h"
#include "sparse/sparse_test_util.h"

namespace {

// Plain triple loop; bTa / bTb take A or B transposed.
CMatrix Mul(CMatrix A, CMatrix B, bool bTa = false, bool bTb = false) {
    if (bTa)
        A.Transpose();
    if (bTb)
        B.Transpose();
    CMatrix C(A.GetRows(), B.GetColumns(), true, 0.0);
    for (int i = 0; i < A.GetRows(); i++)
        for (int j = 0; j < B.GetColumns(); j++)
            for (int k = 0; k < A.GetColumns(); k++)
                C[i][j] += A[i][k] * B[k][j];
    return C;
}

// Counts the accessor calls that reach it through the table.
struct CountingMatrix : CMatrix {
    int nCalls = 0;
    double GetValue(int i, int j) override { return nCalls++, CMatrix::GetValue(i, j); }
    void SetValue(int i, int j, double d) override { nCalls++, CMatrix::SetValue(i, j, d); }
    void AddValue(int i, int j, double d) override { nCalls++, CMatrix::AddValue(i, j, d); }
};

} // namespace

// X B in place when B is square of X's column count (the array stays), through a
// temporary otherwise; PostMult gives the same through the accessors. Q X^T Q^T.
TEST(MatrixProducts, ProductsFromTheRight) {
    const CMatrix X = MakeMatrix(2, 3, {1, -2, 3, 4, 5, -6});
    const CMatrix square = MakeMatrix(3, 3, {1, 0, 2, 0, 1, 0, 1, 1, 1});
    const CMatrix tall = MakeMatrix(3, 2, {1, 2, 3, 4, 5, 6});
    for (CMatrix B : {square, tall}) {
        CMatrix Y = X, b = B;
        double *pArray = Y.m_pVector;
        Y *= b;
        EXPECT_EQ(Y.GetRows(), 2);
        EXPECT_EQ(Y.m_pVector == pArray, B.GetColumns() == 3);
        EXPECT_EQ(Flat(Y), Flat(Mul(X, B)));

        CountingMatrix Z;
        Z.CMatrix::operator=(X);
        Z.PostMult(b);
        EXPECT_EQ(Flat(Z), Flat(Y));
        EXPECT_EQ(Z.GetColumns(), B.GetColumns());
        // in place: per row 3 reads, 3 stores, 9 sums; else one read of X per product
        EXPECT_EQ(Z.nCalls, B.GetColumns() == 3 ? 2 * (3 + 3 + 9) : 2 * 2 * 3);
    }

    CMatrix P = MakeMatrix(3, 3, {1, 2, 0, -1, 3, 1, 2, 0, 4}), Q = X;
    P.PostPreMult(Q, 7);
    EXPECT_EQ(P.GetRows(), 2);
    EXPECT_EQ(Flat(P), Flat(Mul(Mul(X, MakeMatrix(3, 3, {1, 2, 0, -1, 3, 1, 2, 0, 4}), false, true),
                                X, false, true)));
}

// The block of rows and columns 1 and 2 of a 3 by 3 X, with E the identity that holds R
// there: bit 1 is E^T X, 2 X E, 4 E X, 8 X E^T. They apply in the order 1, 2, 4, 8, which
// flags 5 (E E^T X) and 10 (X E E^T) tell apart from any other. Other bits are not read.
TEST(MatrixProducts, SubMultFlagOrder) {
    const CMatrix X = MakeMatrix(3, 3, {1, 2, 3, 4, 5, 6, 7, 8, 10});
    const CMatrix E = MakeMatrix(3, 3, {1, 0, 0, 0, 1, 2, 0, 0, 1}); // R = {{1, 2}, {0, 1}}
    const struct {
        unsigned nFlags;
        CMatrix expected;
    } cases[] = {
        {0, X},
        {16, X},
        {1, Mul(E, X, true)},
        {2, Mul(X, E)},
        {4, Mul(E, X)},
        {8, Mul(X, E, false, true)},
        {3, Mul(Mul(E, X, true), E)},
        {12, Mul(Mul(E, X), E, false, true)},
        {5, Mul(E, Mul(E, X, true))},
        {10, Mul(Mul(X, E), E, false, true)},
    };
    for (const auto &t : cases) {
        CMatrix Y = X, R = MakeMatrix(2, 2, {1, 2, 0, 1});
        Y.SubMult(R, 1, t.nFlags);
        EXPECT_EQ(Flat(Y), Flat(t.expected)) << "flags " << t.nFlags;
    }
}

// The rank-one update walks M flat, a zero factor skipping a row; products with vectors
// size the result by the mode, and an unknown mode leaves the vector empty.
TEST(MatrixProducts, RankOneAndVectors) {
    CVector a = MakeVector({0, 2}), b = MakeVector({1, 10, 100});
    CMatrix M(2, 3, true, 1.0);
    double dFactor = 3.0;
    CMatrix::vectAvectBT(M, a, b, dFactor, false);
    EXPECT_EQ(Flat(M), (V{1, 1, 1, 7, 61, 601}));
    CMatrix::vectAvectBT(M, a, b, dFactor, true); // (i, j) gains 3 a[1-i] b[2-j]
    EXPECT_EQ(Flat(M), (V{601, 61, 7, 7, 61, 601}));
    dFactor = 0.0;
    CMatrix::vectAvectBT(M, a, b, dFactor, false);
    EXPECT_EQ(Flat(M), (V{601, 61, 7, 7, 61, 601}));

    const CMatrix X = MakeMatrix(2, 3, {1, 2, 3, 4, 5, 6});
    CMatrix Y = X;
    CVector v = MakeVector({1, -1});
    Y.ApplyTo(v, 2);
    EXPECT_EQ(Flat(v), (V{-3, -3, -3}));
    Y.ApplyTo(v, 1);
    EXPECT_EQ(Flat(v), (V{-18, -45}));
    CVector out = MakeVector({1, 1, 1});
    Y.ApplyTo(v, out, 2);
    EXPECT_EQ(Flat(out), (V{-197, -260, -323}));
    EXPECT_EQ(Flat(v), (V{-18, -45}));
    Y.ApplyTo(v, 0);
    EXPECT_EQ(v.GetSize(), 0);
    EXPECT_EQ(Flat(Y), Flat(X));
}

// Mode 1 of the overload that replaces X counts a diagonal cell twice; the one into out
// reads the first cell of a row once and counts flops by it. Unknown modes leave zeros of
// A's row count, or clear out. bAdd sums.
TEST(MatrixProducts, PreMultModesAndFlops) {
    CMatrix X = MakeMatrix(2, 2, {1, 2, 3, 4});
    CMatrix Y = X;
    Lists single("1:0=2");
    Y.PreMult(&single, 0);
    EXPECT_EQ(Flat(Y), (V{0, 0, 2, 4}));

    Lists diag("0:0=2;1:1=3");
    Y = X;
    Y.PreMult(&diag, 1);
    EXPECT_EQ(Flat(Y), (V{4, 8, 18, 24}));
    CMatrix out(5, 5, true, 9.0);
    CVirtMat::m_Flops = 0;
    X.PreMult(&diag, out, false, 1);
    EXPECT_EQ(Flat(out), (V{2, 4, 9, 12}));
    EXPECT_EQ(CVirtMat::m_Flops, 8u);

    // an upper triangle read as the symmetric whole
    Lists upper("0:0=2,1=1,2=-1;1:1=3;2:2=1");
    CMatrix Z = MakeMatrix(3, 2, {1, 2, 3, 4, 5, 6});
    Z.PreMult(&upper, out, false, 1);
    EXPECT_EQ(Flat(out), Flat(Mul(MakeMatrix(3, 3, {2, 1, -1, 1, 3, 0, -1, 0, 1}), Z)));

    // two rows of two cells, 3 columns: 2 * (6 + 12)
    Lists full("0:0=1,1=2;1:0=3,1=4");
    CMatrix W = MakeMatrix(2, 3, {1, 0, 1, 0, 1, 1});
    CVirtMat::m_Flops = 0;
    W.PreMult(&full, out, false, 1);
    EXPECT_EQ(CVirtMat::m_Flops, 36u);
    // with row 1's first cell (1, 0) once and (1, 1) for both triangles
    EXPECT_EQ(Flat(out), (V{1, 2, 3, 5, 8, 13}));
    CVirtMat::m_Flops = 0;
    W.PreMult(&full, out, false, 0);
    EXPECT_EQ(CVirtMat::m_Flops, 24u);
    W.PreMult(&full, out, true, 0);
    EXPECT_EQ(Flat(out), Flat(Mul(MakeMatrix(2, 2, {2, 4, 6, 8}), W)));

    W.PreMult(&full, out, false, 7);
    EXPECT_EQ(Flat(out), V(6, 0.0));
    Lists three("0:0=1;2:2=1");
    W.PreMult(&three, 7);
    EXPECT_TRUE(W.GetRows() == 3 && W.GetColumns() == 3 && W == 0.0);
}

// A X A^T, with a permutation and with a general A; dense to sparse from the last element,
// summing into what the sparse matrix holds, and back.
TEST(MatrixProducts, CongruenceAndConversions) {
    const CMatrix X = MakeMatrix(3, 3, {1, 2, 3, 4, 5, 6, 7, 8, 9});
    CMatrix Y = X;
    Lists perm("0:1=1;1:2=1;2:0=1");
    Y.ATthisA(&perm);
    EXPECT_EQ(Flat(Y), (V{5, 6, 4, 8, 9, 7, 2, 3, 1}));
    Lists A("0:0=1,2=2;1:1=-1;2:0=1,1=1");
    Y = X;
    Y.ATthisA(&A);
    const CMatrix dense = MakeMatrix(3, 3, {1, 0, 2, 0, -1, 0, 1, 1, 0});
    EXPECT_EQ(Flat(Y), Flat(Mul(Mul(dense, X), dense, false, true)));

    CMatrix S = MakeMatrix(4, 4, {1, 0, 2, 0, 0, 0, 0, 0, 0, 3, 0, 0, 0, 0, 0, 0});
    CSparseMatrix *pS = NULL;
    S.Sparse(pS);
    ASSERT_NE(pS, nullptr);
    EXPECT_EQ(Dump(*pS), "0:0=1,2=2;2:1=3");
    CMatrix U;
    U.UnSparse(pS); // the zero last row and column are beyond the lists' reach
    EXPECT_EQ(U.GetRows(), 3);
    EXPECT_EQ(Flat(U), (V{1, 0, 2, 0, 0, 0, 0, 3, 0}));
    Load(*pS, "1:0=5;3:3=1");
    S.Sparse(pS);
    EXPECT_EQ(Dump(*pS), "0:0=2,2=4;1:0=5;2:1=6;3:3=1");
    delete pS;

    pS = NULL;
    CMatrix zero(2, 2, true, 0.0);
    zero.Sparse(pS);
    ASSERT_NE(pS, nullptr);
    EXPECT_EQ(pS->GetFirstRow(), nullptr);
    U.UnSparse(pS);
    EXPECT_TRUE(U.GetRows() == 0 && U.GetSize() == 0);
    delete pS;
}
