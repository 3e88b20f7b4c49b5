// CMatrix: shape and buffer exchange, the inherited vector operations on the whole
// buffer, assembly, norms, extremes, scans and the archive stream.
#include "dense_test.h"

#include <cmath>

TEST(Matrix, ShapeBufferAndAssembly) {
    // The same element count keeps array and contents in the new shape.
    CMatrix m = MakeMatrix(3, 4, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11});
    double *pArray = m.m_pVector;
    EXPECT_TRUE(m.Allocate(2, 6, false, 0.0));
    EXPECT_EQ(m.m_pVector, pArray);
    EXPECT_EQ(m.GetValue(1, 5), 11.0);
    EXPECT_TRUE(m.Resize(3, true)); // 3 columns: 4 by 3
    EXPECT_FALSE(m.Resize(5, false));
    EXPECT_EQ(m.GetRows(), 4);

    // Matrices exchange shapes with their buffers; a vector's array makes a column.
    CMatrix col = MakeMatrix(2, 1, {7, 8});
    m.SwitchVectors(&col);
    EXPECT_TRUE(m.GetRows() == 2 && col.GetRows() == 4);
    CVector v(5, true, 1.0);
    col.SwitchVectors(&v);
    EXPECT_TRUE(col.GetRows() == 5 && v.GetSize() == 12);
    double *pOld = col.m_pVector;
    EXPECT_EQ(col.ReplaceVector(new double[3](), 3), pOld);
    EXPECT_EQ(col.GetRows(), 3);
    delete[] pOld;

    // Assembly takes the rows and columns of the non-negative indices.
    CMatrix e(3, 3, true, 0.0);
    LONG idx[] = {2, -1, 0};
    double elem[] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    e.AddValues(idx, elem, 3); // the element matrix's corners
    EXPECT_EQ(Flat(e), (V{9, 0, 7, 0, 0, 0, 3, 0, 1}));

    // The inherited vector operations see one flat buffer.
    CMatrix wide = MakeMatrix(2, 3, {1, 2, 3, 4, 5, 6}), tall = MakeMatrix(3, 2, Flat(wide));
    EXPECT_TRUE(wide == tall);
    // LinComb sizes the target through the vector slot: a column.
    CMatrix sq = MakeMatrix(2, 2, {1, 2, 3, 4}), ones(2, 2, true, 1.0);
    sq.LinComb(1.0, sq, 2.0, ones);
    EXPECT_TRUE(sq.GetRows() == 4 && sq == MakeVector({3, 4, 5, 6}));
}

TEST(Matrix, ElementOperations) {
    CMatrix r = MakeMatrix(2, 3, {1, 2, 3, 4, 5, 6}), t(r, true);
    r.Transpose();
    EXPECT_EQ(Flat(r), (V{1, 4, 2, 5, 3, 6}));
    EXPECT_TRUE(r.GetRows() == 3 && t == r);
    r.Transpose();
    r.MultiplySubRow(1, 2, 2, 5.0);
    r.MultiplySubRow(1, 1, 3, 2.0);
    r.MultiplyRow(0, -1.0);
    r.MultiplyCol(0, 3.0);
    EXPECT_EQ(Flat(r), (V{-3, -2, -3, 12, 10, 12}));
    CVector longer(4, true, -1.0);
    r.GetColVect(longer, 1); // a longer target keeps its length and tail
    EXPECT_EQ(Flat(longer), (V{-2, 10, -1, -1}));
    CMatrix shorter(1, 1, true, 0.0);
    r.GetColVect(shorter, 2); // a shorter one is sized through the table
    EXPECT_EQ(shorter.GetRows(), 2);

    CMatrix *pSym = NULL, *pSkew = NULL;
    MakeMatrix(3, 3, {1, 2, 3, 4, 5, 6, 7, 8, 9}).Split(pSym, pSkew); // upper triangles only
    EXPECT_EQ(V({pSym->GetValue(0, 0), pSym->GetValue(0, 2), pSym->GetValue(1, 2)}), (V{1, 5, 7}));
    EXPECT_EQ(V({pSkew->GetValue(0, 1), pSkew->GetValue(2, 2)}), (V{-1, 0}));
    delete pSym;
    delete pSkew;

    CMatrix s = MakeMatrix(2, 2, {1, 0.1, 0.1, 1});
    EXPECT_TRUE(s.CheckSymm() && CMatrix().CheckSymm());
    EXPECT_FALSE(MakeMatrix(2, 3, {1, 2, 3, 4, 5, 6}).CheckSymm());
    s.SetValue(1, 0, std::nextafter(0.1, 1.0));
    EXPECT_FALSE(s.CheckSymm());
}

TEST(Matrix, NormsAndExtremes) {
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

    CMatrix v = MakeMatrix(2, 3, {3, 0, 1, 4, 2, 1});
    CVector out(7, true, 9.0);
    const double r2 = std::sqrt(2.0), r10 = std::sqrt(10.0), r21 = std::sqrt(21.0);
    // Rows for modes 2, -2 and 0, columns for 1 and -1; negative modes leave out the root.
    const std::pair<int, V> modes[] = {
        {2, {r10, r21}}, {-2, {10, 21}}, {0, {10, 21}}, {1, {5, 2, r2}}, {-1, {25, 4, 2}}};
    for (const auto &mode : modes) {
        v.Vect2Norm(out, mode.first);
        EXPECT_EQ(Flat(out), mode.second) << "mode " << mode.first;
    }
}

namespace {
int g_nCalls = 0;
double CountedSum(double *p) {
    g_nCalls++;
    return p[0] + p[1];
}
} // namespace

TEST(Matrix, ScansOverRowsAndColumns) {
    double dMax = -1, dMin = -1;
    MakeMatrix(2, 2, {3, 4, 0, 1}).GetMaxMinLength(dMax, dMin, 0, 1, true); // rows (3, 4), (0, 1)
    EXPECT_EQ(V({dMax, dMin}), (V{5, 1}));
    CMatrix three = MakeMatrix(2, 3, {1, 2, 2, 0, 0, 3});
    three.GetMaxMinLength(dMax, dMin, 0, 1, 2, true);
    EXPECT_EQ(V({dMax, dMin}), (V{3, 3}));
    three.GetMaxMin3([](double *p) { return p[0] * p[1] * p[2]; }, dMax, dMin, 0, 1, 2, true);
    EXPECT_EQ(V({dMax, dMin}), (V{4, 0}));
    MakeMatrix(4, 1, {4, 3, 2, 1}).GetMaxMin1([](double d) { return d; }, dMax, dMin, 0, true);
    EXPECT_EQ(V({dMax, dMin}), (V{4, 1}));

    // Falling samples: the minimum follows, the maximum stays at the first.
    MakeMatrix(3, 2, {5, 5, 2, 2, 1, 1}).GetMaxMin2(CountedSum, dMax, dMin, 0, 1, true);
    EXPECT_EQ(V({dMax, dMin}), (V{10, 2}));

    // One row: equal extremes. No elements: zeros and no call.
    MakeMatrix(1, 3, {2, 7, 1}).GetMaxMinLength(dMax, dMin, 0, 2, true);
    EXPECT_EQ(V({dMax, dMin}), V(2, std::sqrt(5.0)));
    g_nCalls = 0;
    CMatrix().GetMaxMin2(CountedSum, dMax, dMin, 0, 1, false);
    EXPECT_EQ(V({dMax, dMin}), (V{0, 0}));
    EXPECT_EQ(g_nCalls, 0);
}

TEST(MatrixArchive, StreamIsCountElementsRowsAndLoadsBack) {
    CMatrix m = MakeMatrix(2, 2, {1, 2, 3, 4}), empty(3, 0, true, 1.0); // no columns: 0 rows
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

    // Through an object record: created by class name with its shape.
    CMemFile file;
    CArchive store(&file, CArchive::store);
    store << &m;
    store.Close();
    file.SeekToBegin();
    CArchive ar(&file, CArchive::load);
    CMatrix *pLoaded = NULL;
    ar >> pLoaded;
    EXPECT_EQ(pLoaded->GetRuntimeClass(), RUNTIME_CLASS(CMatrix));
    EXPECT_TRUE(pLoaded->GetRows() == 2 && *pLoaded == m);
    delete pLoaded;
}
