// CMatrix: sizing and shape, buffer exchange, element operations, the inherited vector
// operations on the whole buffer, norms, extremes, scans and the archive stream.
#include "dense_test.h"

#include <cmath>

TEST(Matrix, AllocateFormsAndResize) {
    CMatrix noCols(3, 0, true, 1.0);
    EXPECT_TRUE(noCols.GetRows() == 0 && !noCols.IsAllocated());

    // The same element count keeps array and contents in the new shape.
    CMatrix m = MakeMatrix(3, 4, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11});
    double *pArray = m.m_pVector;
    EXPECT_TRUE(m.Allocate(2, 6, false, 0.0));
    EXPECT_EQ(m.m_pVector, pArray);
    EXPECT_EQ(m.GetValue(1, 5), 11.0);
    EXPECT_TRUE(m.Resize(3, true)); // 3 columns: 4 by 3
    EXPECT_FALSE(m.Resize(5, false));
    EXPECT_FALSE(m.Resize(0, false));
    EXPECT_EQ(m.GetRows(), 4);
    EXPECT_TRUE(m.Allocate(5, false, 0.0)); // the vector slot: a column
    EXPECT_EQ(m.GetColumns(), 1);
    EXPECT_FALSE(m.Allocate(0, 4, true, 0.0)); // well-formed and empty
    EXPECT_EQ(m.GetRows(), 0);

    // Through a base pointer: square zeros by default; a failure keeps the old row count.
    CVirtMat *pBase = &m;
    int square[] = {4}, filled[] = {2, 3, 1, 5}, empty[] = {0, 3};
    EXPECT_TRUE(pBase->Allocate(square, 1));
    EXPECT_TRUE(m.GetColumns() == 4 && m == 0);
    EXPECT_TRUE(pBase->Allocate(filled, 4));
    EXPECT_EQ(Flat(m), V(6, 5.0));
    EXPECT_FALSE(pBase->Allocate(empty, 2));
    EXPECT_TRUE(m.m_nSize == 0 && m.GetRows() == 2);
}

TEST(Matrix, TransposeCopyAndExchange) {
    CMatrix m = MakeMatrix(2, 3, {1, 2, 3, 4, 5, 6});
    CMatrix t(m, true);
    m.Transpose();
    EXPECT_EQ(Flat(m), (V{1, 4, 2, 5, 3, 6}));
    EXPECT_TRUE(m.GetRows() == 3 && t.GetRows() == 3 && t == m);
    CMatrix sq = MakeMatrix(2, 2, {1, 2, 3, 4});
    sq.Transpose();
    EXPECT_EQ(Flat(sq), (V{1, 3, 2, 4}));

    // Matrices exchange shapes with their buffers; a vector's array makes a column.
    CMatrix col = MakeMatrix(4, 1, {7, 8, 9, 10});
    t.SwitchVectors(&col);
    EXPECT_TRUE(t.GetRows() == 4 && col.GetRows() == 3);
    CVector v(5, true, 1.0);
    col.SwitchVectors(&v);
    EXPECT_TRUE(col.GetRows() == 5 && v.GetSize() == 6);
    double *pOld = col.m_pVector;
    EXPECT_EQ(col.ReplaceVector(new double[2](), 2), pOld);
    EXPECT_EQ(col.GetRows(), 2);
    delete[] pOld;
}

TEST(Matrix, InheritedOperationsSeeOneBuffer) {
    CMatrix wide = MakeMatrix(2, 3, {1, 2, 3, 4, 5, 6}), tall = MakeMatrix(3, 2, Flat(wide));
    EXPECT_TRUE(wide == tall);
    // LinComb sizes the target through the vector slot: a column.
    CMatrix m = MakeMatrix(2, 2, {1, 2, 3, 4}), ones(2, 2, true, 1.0);
    m.LinComb(1.0, m, 2.0, ones);
    EXPECT_TRUE(m.GetRows() == 4 && m == MakeVector({3, 4, 5, 6}));
}

TEST(Matrix, ElementOperations) {
    CMatrix m(3, 3, true, 0.0);
    LONG idx[] = {2, -1, 0};
    double elem[] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    m.AddValues(idx, elem, 3); // the element matrix's corners
    EXPECT_EQ(Flat(m), (V{9, 0, 7, 0, 0, 0, 3, 0, 1}));

    CMatrix r = MakeMatrix(2, 3, {1, 2, 3, 4, 5, 6});
    r.MultiplySubRow(1, 2, 2, 5.0);
    r.MultiplySubRow(1, 1, 3, 2.0);
    r.MultiplyRow(0, -1.0);
    r.MultiplyCol(0, 3.0);
    EXPECT_EQ(Flat(r), (V{-3, -2, -3, 12, 10, 12}));
    CVector longer(10, true, -1.0);
    r.GetColVect(longer, 1); // a longer target keeps its length and tail
    EXPECT_EQ(Flat(longer), (V{-2, 10, -1, -1, -1, -1, -1, -1, -1, -1}));
    CMatrix shorter(1, 1, true, 0.0);
    r.GetColVect(shorter, 2); // a shorter one is sized through the table
    EXPECT_EQ(shorter.GetRows(), 2);
    r.Identity(3, 2.0);
    EXPECT_EQ(Flat(r), (V{2, 0, 0, 0, 2, 0, 0, 0, 2}));

    CMatrix a = MakeMatrix(3, 3, {1, 2, 3, 4, 5, 6, 7, 8, 9});
    CMatrix *pSym = NULL, *pSkew = NULL;
    a.Split(pSym, pSkew); // only upper triangles and diagonals are defined
    EXPECT_EQ(V({pSym->GetValue(0, 0), pSym->GetValue(0, 2), pSym->GetValue(1, 2)}), (V{1, 5, 7}));
    EXPECT_EQ(V({pSkew->GetValue(0, 1), pSkew->GetValue(2, 2)}), (V{-1, 0}));
    delete pSym;
    delete pSkew;

    EXPECT_FALSE(MakeMatrix(2, 3, {1, 2, 3, 4, 5, 6}).CheckSymm());
    EXPECT_TRUE(CMatrix().CheckSymm());
    CMatrix s = MakeMatrix(2, 2, {1, 0.1, 0.1, 1});
    EXPECT_TRUE(s.CheckSymm());
    s.SetValue(1, 0, std::nextafter(0.1, 1.0));
    EXPECT_FALSE(s.CheckSymm());
}

TEST(Matrix, NormsExtremesAndSearch) {
    CMatrix m = MakeMatrix(2, 2, {1, -2, 3, 4}), empty;
    // InfNorm, the row-sum norm, replaces the vector's.
    EXPECT_EQ(V({m.OneNorm(), ((CVector &)m).InfNorm(), m.Trace(), m.Frobenius()}),
              V({6, 7, 5, std::sqrt(30.0)}));
    EXPECT_EQ(MakeMatrix(2, 3, {1, 10, 10, 10, 2, 10}).Trace(), 3.0);
    EXPECT_EQ(empty.OneNorm() + empty.InfNorm() + empty.Trace(), 0.0);

    // Column ties: MaxInCol and MinInCol keep the top, fabsMaxInCol the bottom.
    CMatrix t = MakeMatrix(3, 3, {5, 5, 0, 5, -5, 0, 1, 0, 0});
    EXPECT_EQ(&t.MaxInCol(0), &t[0][0]);
    EXPECT_EQ(&t.MinInCol(1), &t[1][1]);
    EXPECT_EQ(&t.fabsMaxInCol(1), &t[1][1]);
    EXPECT_EQ(&t.fabsMaxInCol(2), &t[2][2]);
    EXPECT_EQ(t.MaxInRow(1), 5.0);
    std::vector<int> found = {t.FindInRow(1, -5.0), t.FindInRow(2, 5.0), t.FindInCol(0, 5.0),
                              t.FindInCol(0, -5.0)};
    EXPECT_EQ(found, (std::vector<int>{1, -1, 0, -1}));
}

TEST(Matrix, Vect2NormModes) {
    CMatrix m = MakeMatrix(2, 3, {3, 0, 1, 4, 2, 1});
    CVector out(7, true, 9.0);
    const std::vector<std::pair<int, V>> cases = {{2, {std::sqrt(10.0), std::sqrt(21.0)}},
                                                  {-2, {10, 21}},
                                                  {0, {10, 21}},
                                                  {1, {5, 2, std::sqrt(2.0)}},
                                                  {-1, {25, 4, 2}}};
    for (const auto &c : cases) {
        m.Vect2Norm(out, c.first);
        EXPECT_EQ(Flat(out), c.second) << c.first;
    }
    CMatrix column; // sized through the table: a column
    m.Vect2Norm(column, 1);
    EXPECT_EQ(column.GetRows(), 3);
}

namespace {
int g_nCalls = 0;
// Spoils its scratch array: the next sample must not see that.
double SumAndSpoil(double *p) {
    g_nCalls++;
    double s = p[0] + p[1];
    p[0] = 1000.0;
    return s;
}
} // namespace

TEST(Matrix, ScansOverRowsAndColumns) {
    CMatrix m = MakeMatrix(2, 2, {3, 4, 0, 1}); // rows (3, 4) and (0, 1)
    double dMax = -1, dMin = -1;
    m.GetMaxMinLength(dMax, dMin, 0, 1, true);
    EXPECT_EQ(V({dMax, dMin}), (V{5, 1}));
    m.GetMaxMinLength(dMax, dMin, 0, 1, false);
    EXPECT_EQ(V({dMax, dMin}), (V{std::sqrt(17.0), 3}));
    CMatrix three = MakeMatrix(2, 3, {1, 2, 2, 0, 0, 3});
    three.GetMaxMinLength(dMax, dMin, 0, 1, 2, true);
    EXPECT_EQ(V({dMax, dMin}), (V{3, 3}));
    three.GetMaxMin3([](double *p) { return p[0] * p[1] * p[2]; }, dMax, dMin, 0, 1, 2, true);
    EXPECT_EQ(V({dMax, dMin}), (V{4, 0}));

    // Falling samples: the minimum follows, the maximum stays at the first.
    MakeMatrix(4, 1, {4, 3, 2, 1}).GetMaxMin1([](double d) { return d; }, dMax, dMin, 0, true);
    EXPECT_EQ(V({dMax, dMin}), (V{4, 1}));
    CMatrix pairs = MakeMatrix(3, 2, {1, 1, 5, 5, 2, 2});
    pairs.GetMaxMin2(SumAndSpoil, dMax, dMin, 0, 1, true);
    EXPECT_EQ(V({dMax, dMin}), (V{10, 2}));
    EXPECT_EQ(pairs.GetValue(0, 0), 1.0);

    // One row: equal extremes. No elements: zeros and no call.
    MakeMatrix(1, 3, {2, 7, 1}).GetMaxMinLength(dMax, dMin, 0, 2, true);
    EXPECT_EQ(V({dMax, dMin}), V(2, std::sqrt(5.0)));
    g_nCalls = 0;
    CMatrix().GetMaxMin2(SumAndSpoil, dMax, dMin, 0, 1, false);
    EXPECT_EQ(V({dMax, dMin}), (V{0, 0}));
    EXPECT_EQ(g_nCalls, 0);
}

TEST(MatrixArchive, StreamIsCountElementsRowsAndLoadsBack) {
    CMatrix m = MakeMatrix(2, 2, {1, 2, 3, 4}), empty;
    std::vector<BYTE> bytes = Store(m);
    EXPECT_EQ(bytes,
              (std::vector<BYTE>{4,    0,    0, 0, 0, 0, 0, 0,    0,    0,    0xF0, 0x3F, //
                                 0,    0,    0, 0, 0, 0, 0, 0x40, 0,    0,    0,    0,    0, 0,
                                 0x08, 0x40, 0, 0, 0, 0, 0, 0,    0x10, 0x40, 2,    0,    0, 0}));
    EXPECT_EQ(Store(empty), std::vector<BYTE>(8, 0));

    // The same element count keeps the array.
    CMatrix target(4, 1, true, 0.0);
    double *pArray = target.m_pVector;
    Load(target, bytes);
    EXPECT_TRUE(target.m_pVector == pArray && target.GetColumns() == 2 && target == m);

    // Through object records: twice the same object, then a null.
    CMemFile file;
    {
        CArchive ar(&file, CArchive::store);
        ar << &m << &m << (CObject *)NULL;
    }
    file.SeekToBegin();
    CArchive ar(&file, CArchive::load);
    CMatrix *pFirst = NULL, *pSecond = NULL, *pNull = &m;
    ar >> pFirst >> pSecond >> pNull;
    EXPECT_TRUE(pFirst == pSecond && pNull == NULL);
    EXPECT_EQ(pFirst->GetRuntimeClass(), RUNTIME_CLASS(CMatrix));
    EXPECT_TRUE(pFirst->GetRows() == 2 && *pFirst == m);
    delete pFirst;
}
