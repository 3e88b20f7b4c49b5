// CFuncMat: evaluation with null entries, both function kinds, array reuse on reshaping.
#include "auxtypes/funcmat.h"

#include <gtest/gtest.h>

static double Square(double x) {
    return x * x;
}
static double Plus1(double x) {
    return x + 1.0;
}
static double Minus(double x, double y) {
    return x - y;
}

TEST(CFuncMat, EvaluatesFunctionsAndZerosForNullEntries) {
    CFuncMat F(2, 2, true, NULL);
    CMatrix out(5, 1, true, 9.0); // any shape on entry
    F.EvalFunc(out, 2.0);
    EXPECT_EQ(out.m_nRows, 2);
    EXPECT_EQ(out.GetColumns(), 2);
    for (int k = 0; k < 4; k++)
        EXPECT_EQ(out.m_pVector[k], 0.0);

    F[0][0] = CFuncMat::Entry(Square);
    F[1][0] = CFuncMat::Entry(Plus1);
    F[1][1] = CFuncMat::Entry(Plus1);
    F.EvalFunc(out, 2.0);
    EXPECT_EQ(out.GetValue(0, 0), 4.0);
    EXPECT_EQ(out.GetValue(0, 1), 0.0);
    EXPECT_EQ(out.GetValue(1, 0), 3.0);
    EXPECT_EQ(out.GetValue(1, 1), 3.0);
    EXPECT_EQ(F.EvalFunc(1, 1, 5.0), 6.0);

    CFuncMat G(1, 2, true, CFuncMat::Entry(Minus));
    G.EvalFunc(out, 5.0, 2.0); // x first, y second
    EXPECT_EQ(out.m_nRows, 1);
    EXPECT_EQ(out.GetValue(0, 0), 3.0);
    EXPECT_EQ(out.GetValue(0, 1), 3.0);
}

TEST(CFuncMat, AllocateKeepsAnArrayOfTheSameCount) {
    CFuncMat F;
    EXPECT_EQ(F.GetRuntimeClass(), RUNTIME_CLASS(CObject));
    EXPECT_EQ(F.Allocate(3, 2, true, NULL), 6);
    F.m_ppFuncs[4] = CFuncMat::Entry(Square);
    double **pArray = F.m_ppFuncs;
    EXPECT_EQ(F.Allocate(2, 3, false, NULL), 6);
    EXPECT_EQ(F.m_ppFuncs, pArray);
    EXPECT_EQ(F[1][1], CFuncMat::Entry(Square)); // flat entry 4
    EXPECT_EQ(F.Allocate(0, 0, true, NULL), 0);
    int sizes[] = {0};
    EXPECT_FALSE(F.Allocate(sizes, 1));
    int square[] = {3};
    EXPECT_TRUE(F.Allocate(square, 1));
    EXPECT_EQ(F.m_nColumns, 3);
    EXPECT_EQ(F[2][2], nullptr); // nDims below 2 initialises with NULL
}
