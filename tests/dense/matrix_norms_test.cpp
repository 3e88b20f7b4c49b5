// CMatrix: norms, trace, extreme elements with their tie rules, search, and the scans
// over rows or columns.
#include "matrix_helpers.h"

#include <gtest/gtest.h>

#include <cmath>

using V = std::vector<double>;

TEST(MatrixNorms, NormsAndTrace) {
    CMatrix m = MakeMatrix(2, 2, {1, -2, 3, 4});
    EXPECT_EQ(m.OneNorm(), 6.0);
    EXPECT_EQ(m.InfNorm(), 7.0);
    EXPECT_EQ(m.Trace(), 5.0);
    EXPECT_EQ(m.Frobenius(), std::sqrt(30.0));
    // The row-sum norm replaces the vector's, also through a vector reference.
    CVector &asVector = m;
    EXPECT_EQ(asVector.InfNorm(), 7.0);

    CMatrix wide = MakeMatrix(2, 3, {1, 10, 10, 10, 2, 10});
    EXPECT_EQ(wide.Trace(), 3.0);

    CMatrix empty;
    EXPECT_EQ(empty.OneNorm(), 0.0);
    EXPECT_EQ(empty.InfNorm(), 0.0);
    EXPECT_EQ(empty.Trace(), 0.0);
}

TEST(MatrixNorms, Vect2NormModes) {
    CMatrix m = MakeMatrix(2, 3, {3, 0, 1, 4, 2, 1});
    CVector out(7, true, 9.0);
    m.Vect2Norm(out, 2);
    EXPECT_EQ(out.GetSize(), 2);
    EXPECT_EQ(out[0], std::sqrt(10.0));
    EXPECT_EQ(out[1], std::sqrt(21.0));
    m.Vect2Norm(out, -2);
    EXPECT_EQ(out.GetSize(), 2);
    EXPECT_EQ(out[0], 10.0);
    EXPECT_EQ(out[1], 21.0);
    m.Vect2Norm(out, 0);
    EXPECT_EQ(out[1], 21.0);
    m.Vect2Norm(out, 1);
    EXPECT_EQ(out.GetSize(), 3);
    EXPECT_EQ(out[0], 5.0);
    EXPECT_EQ(out[1], 2.0);
    EXPECT_EQ(out[2], std::sqrt(2.0));
    m.Vect2Norm(out, -1);
    EXPECT_EQ(out[0], 25.0);
    EXPECT_EQ(out[2], 2.0);
    // The target is sized through the table: a matrix target becomes a column.
    CMatrix column;
    m.Vect2Norm(column, 1);
    EXPECT_EQ(column.GetRows(), 3);
}

TEST(MatrixNorms, ExtremesKeepTheirTieRules) {
    CMatrix m = MakeMatrix(3, 2, {5, 5, 5, -5, 1, 0});
    EXPECT_EQ(&m.MaxInCol(0), &m.GetValueByRef(0, 0));
    EXPECT_EQ(&m.MinInCol(0), &m.GetValueByRef(2, 0));
    EXPECT_EQ(&m.fabsMaxInCol(1), &m.GetValueByRef(1, 1));

    CMatrix ties = MakeMatrix(3, 2, {2, 0, 2, 0, 2, 0});
    EXPECT_EQ(&ties.MaxInCol(0), &ties.GetValueByRef(0, 0));
    EXPECT_EQ(&ties.MinInCol(0), &ties.GetValueByRef(0, 0));
    EXPECT_EQ(&ties.fabsMaxInCol(0), &ties.GetValueByRef(2, 0));
    // An all-zero column yields its last row.
    EXPECT_EQ(&ties.fabsMaxInCol(1), &ties.GetValueByRef(2, 1));

    EXPECT_EQ(m.MaxInRow(1), 5.0);
    EXPECT_EQ(m.MaxInRow(2), 1.0);
}

TEST(MatrixNorms, SearchInRowAndColumn) {
    CMatrix m = MakeMatrix(2, 3, {1, 2, 2, 3, 4, 2});
    EXPECT_EQ(m.FindInRow(0, 2.0), 1);
    EXPECT_EQ(m.FindInRow(1, 1.0), -1);
    EXPECT_EQ(m.FindInCol(2, 2.0), 0);
    EXPECT_EQ(m.FindInCol(0, 4.0), -1);
}

namespace {
int g_nCalls = 0;
double Identity1(double d) {
    g_nCalls++;
    return d;
}
// Changes its scratch array: the next sample must not see that.
double SumAndSpoil(double *p) {
    g_nCalls++;
    double s = p[0] + p[1];
    p[0] = 1000.0;
    return s;
}
double Product3(double *p) {
    return p[0] * p[1] * p[2];
}
} // namespace

TEST(MatrixNorms, ScansOverRowsAndColumns) {
    // Two columns (3, 0) and (4, 1): lengths 5 and 1.
    CMatrix m = MakeMatrix(2, 2, {3, 4, 0, 1});
    double dMax = -1, dMin = -1;
    m.GetMaxMinLength(dMax, dMin, 0, 1, true);
    EXPECT_EQ(dMax, 5.0);
    EXPECT_EQ(dMin, 1.0);
    // Over columns: rows 0 and 1 of each column.
    m.GetMaxMinLength(dMax, dMin, 0, 1, false);
    EXPECT_EQ(dMax, std::sqrt(17.0));
    EXPECT_EQ(dMin, 3.0);

    CMatrix three = MakeMatrix(2, 3, {1, 2, 2, 0, 0, 3});
    three.GetMaxMinLength(dMax, dMin, 0, 1, 2, true);
    EXPECT_EQ(dMax, 3.0);
    EXPECT_EQ(dMin, 3.0);

    // Falling samples: the minimum follows, the maximum stays at the first.
    CMatrix falling = MakeMatrix(4, 1, {4, 3, 2, 1});
    falling.GetMaxMin1(Identity1, dMax, dMin, 0, true);
    EXPECT_EQ(dMax, 4.0);
    EXPECT_EQ(dMin, 1.0);

    CMatrix pairs = MakeMatrix(3, 2, {1, 1, 5, 5, 2, 2});
    pairs.GetMaxMin2(SumAndSpoil, dMax, dMin, 0, 1, true);
    EXPECT_EQ(dMax, 10.0);
    EXPECT_EQ(dMin, 2.0);
    EXPECT_EQ(pairs.GetValue(0, 0), 1.0);
    three.GetMaxMin3(Product3, dMax, dMin, 0, 1, 2, true);
    EXPECT_EQ(dMax, 4.0);
    EXPECT_EQ(dMin, 0.0);

    // One row: equal extremes. No elements: zeros and no call.
    CMatrix oneRow = MakeMatrix(1, 3, {2, 7, 1});
    oneRow.GetMaxMinLength(dMax, dMin, 0, 2, true);
    EXPECT_EQ(dMax, dMin);
    EXPECT_EQ(dMax, std::sqrt(5.0));
    g_nCalls = 0;
    CMatrix empty;
    dMax = dMin = -1;
    empty.GetMaxMin1(Identity1, dMax, dMin, 0, true);
    EXPECT_EQ(dMax, 0.0);
    EXPECT_EQ(dMin, 0.0);
    empty.GetMaxMin2(SumAndSpoil, dMax, dMin, 0, 1, false);
    EXPECT_EQ(g_nCalls, 0);
}
