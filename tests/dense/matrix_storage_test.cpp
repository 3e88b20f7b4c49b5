// CMatrix: sizing and shape, buffer exchange, element operations, and the inherited
// vector operations on the whole buffer.
#include "matrix_helpers.h"

#include <gtest/gtest.h>

#include <cmath>

using V = std::vector<double>;

TEST(MatrixStorage, AllocateFormsKeepRowsConsistent) {
    CMatrix noCols(3, 0, true, 1.0);
    EXPECT_EQ(noCols.GetRows(), 0);
    EXPECT_FALSE(noCols.IsAllocated());

    // Same element count: array and contents survive in the new shape.
    CMatrix m(3, 4, true, 2.0);
    m.SetValue(2, 3, 7.0);
    double *pArray = m.m_pVector;
    EXPECT_TRUE(m.Allocate(2, 6, false, 0.0));
    EXPECT_EQ(m.m_pVector, pArray);
    EXPECT_EQ(m.GetValue(1, 5), 7.0);
    // The vector slot makes a column; a 0 by n request leaves a well-formed empty matrix.
    EXPECT_TRUE(m.Allocate(5, false, 0.0));
    EXPECT_EQ(m.GetColumns(), 1);
    EXPECT_FALSE(m.Allocate(0, 4, true, 0.0));
    EXPECT_EQ(m.GetRows(), 0);

    // Through a base pointer: square zeros by default; a failure keeps the old row count.
    CVirtMat *pBase = &m;
    int square[] = {4}, filled[] = {2, 3, 1, 5}, empty[] = {0, 3};
    EXPECT_TRUE(pBase->Allocate(square, 1));
    EXPECT_EQ(m.GetColumns(), 4);
    EXPECT_TRUE(m == 0);
    EXPECT_TRUE(pBase->Allocate(filled, 4));
    EXPECT_EQ(Flat(m), V(6, 5.0));
    EXPECT_FALSE(pBase->Allocate(empty, 2));
    EXPECT_EQ(m.m_nSize, 0);
    EXPECT_EQ(m.GetRows(), 2);
}

TEST(MatrixStorage, ResizeAndTranspose) {
    CMatrix m = MakeMatrix(2, 3, {1, 2, 3, 4, 5, 6});
    EXPECT_TRUE(m.Resize(3, false));
    EXPECT_TRUE(m.Resize(2, true));
    EXPECT_EQ(m.GetRows(), 3);
    EXPECT_TRUE(m.Resize(2, false));
    EXPECT_FALSE(m.Resize(4, false));
    EXPECT_FALSE(m.Resize(0, false));
    EXPECT_EQ(m.GetRows(), 2);

    m.Transpose();
    EXPECT_EQ(m.GetRows(), 3);
    EXPECT_EQ(Flat(m), (V{1, 4, 2, 5, 3, 6}));
    m.Transpose();
    EXPECT_EQ(Flat(m), (V{1, 2, 3, 4, 5, 6}));
    CMatrix t(m, true);
    EXPECT_EQ(t.GetRows(), 3);
    EXPECT_EQ(Flat(t), (V{1, 4, 2, 5, 3, 6}));

    CMatrix sq = MakeMatrix(2, 2, {1, 2, 3, 4});
    double *pArray = sq.m_pVector;
    sq.Transpose();
    EXPECT_EQ(sq.m_pVector, pArray);
    EXPECT_EQ(Flat(sq), (V{1, 3, 2, 4}));
}

TEST(MatrixStorage, BufferExchange) {
    CMatrix a = MakeMatrix(2, 3, {1, 2, 3, 4, 5, 6});
    CMatrix b = MakeMatrix(4, 1, {7, 8, 9, 10});
    a.SwitchVectors(&b);
    EXPECT_EQ(a.GetRows(), 4);
    EXPECT_EQ(a.GetColumns(), 1);
    EXPECT_EQ(b.GetRows(), 2);
    EXPECT_EQ(Flat(b), (V{1, 2, 3, 4, 5, 6}));

    // A plain vector's array makes the matrix a column; the vector just grows.
    CVector v(3, true, 1.0);
    b.SwitchVectors(&v);
    EXPECT_EQ(b.GetRows(), 3);
    EXPECT_EQ(b.GetColumns(), 1);
    EXPECT_EQ(v.GetSize(), 6);

    double *pOld = b.m_pVector;
    EXPECT_EQ(b.ReplaceVector(new double[5](), 5), pOld);
    EXPECT_EQ(b.GetRows(), 5);
    delete[] pOld;
}

TEST(MatrixStorage, InheritedOperationsSeeOneBuffer) {
    CMatrix wide = MakeMatrix(2, 3, {1, 2, 3, 4, 5, 6});
    CMatrix tall = MakeMatrix(3, 2, {1, 2, 3, 4, 5, 6});
    EXPECT_TRUE(wide == tall);
    EXPECT_EQ(wide.Find(5.0, 0, 0), 4);

    // LinComb sizes the target through the vector slot: a column.
    CMatrix m = MakeMatrix(2, 2, {1, 2, 3, 4});
    CMatrix other = MakeMatrix(2, 2, {1, 1, 1, 1});
    m.LinComb(1.0, m, 2.0, other);
    EXPECT_EQ(m.GetRows(), 4);
    EXPECT_EQ(Flat(m), (V{3, 4, 5, 6}));

    CVirtRealMat *pBase = &wide;
    *pBase = 2.0;
    *pBase += 1.0;
    EXPECT_TRUE(wide == 3.0);
}

TEST(MatrixElements, AddValuesAssemblesCorners) {
    CMatrix m(3, 3, true, 0.0);
    LONG idx[] = {2, -1, 0};
    double elem[] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    m.AddValues(idx, elem, 3);
    EXPECT_EQ(Flat(m), (V{9, 0, 7, 0, 0, 0, 3, 0, 1}));
}

TEST(MatrixElements, RowsColumnsAndIdentity) {
    CMatrix m = MakeMatrix(2, 3, {1, 2, 3, 4, 5, 6});
    m.MultiplySubRow(1, 2, 2, 5.0);
    m.MultiplySubRow(1, 1, 3, 2.0);
    m.MultiplyRow(0, -1.0);
    m.MultiplyCol(0, 3.0);
    EXPECT_EQ(Flat(m), (V{-3, -2, -3, 12, 10, 12}));

    // A longer target keeps its tail; a shorter one is sized through the table.
    CVector longer(10, true, -1.0);
    m.GetColVect(longer, 1);
    EXPECT_EQ(longer.GetSize(), 10);
    EXPECT_EQ(longer[1], 10.0);
    EXPECT_EQ(longer[2], -1.0);
    CMatrix target(1, 1, true, 0.0);
    m.GetColVect(target, 2);
    EXPECT_EQ(target.GetRows(), 2);
    EXPECT_EQ(Flat(target), (V{-3, 12}));

    m.Identity(3, 2.0);
    EXPECT_EQ(Flat(m), (V{2, 0, 0, 0, 2, 0, 0, 0, 2}));
}

TEST(MatrixElements, SplitAndSymmetry) {
    CMatrix m = MakeMatrix(3, 3, {1, 2, 3, 4, 5, 6, 7, 8, 9});
    CMatrix *pSym = NULL, *pSkew = NULL;
    m.Split(pSym, pSkew);
    // Only the upper triangles and diagonals are defined.
    EXPECT_EQ(pSym->GetValue(0, 0), 1.0);
    EXPECT_EQ(pSym->GetValue(0, 2), 5.0);
    EXPECT_EQ(pSym->GetValue(1, 2), 7.0);
    EXPECT_EQ(pSkew->GetValue(0, 1), -1.0);
    EXPECT_EQ(pSkew->GetValue(2, 2), 0.0);
    delete pSym;
    delete pSkew;

    EXPECT_FALSE(MakeMatrix(2, 3, {1, 2, 3, 4, 5, 6}).CheckSymm());
    EXPECT_TRUE(CMatrix().CheckSymm());
    CMatrix s = MakeMatrix(2, 2, {1, 0.1, 0.1, 1});
    EXPECT_TRUE(s.CheckSymm());
    s.SetValue(1, 0, std::nextafter(0.1, 1.0));
    EXPECT_FALSE(s.CheckSymm());
}
