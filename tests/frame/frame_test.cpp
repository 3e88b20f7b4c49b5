// The class frame: base-pointer sizing, the default solve, the statics, report times,
// ApproxEqual's bands and the quicksort.
#include "dense/vector.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <vector>

TEST(Frame, AllocateAndDefaultSolveThroughBasePointers) {
    CVector v;
    CVirtRealMat *p = &v;
    int sizes[3] = {4, 1, 7};
    EXPECT_TRUE(p->Allocate(sizes, 3)); // the int fill value becomes a double
    EXPECT_TRUE(v == 7.0);
    EXPECT_TRUE(p->Allocate(sizes, 1)); // nDims 1 fills with zeros, even at the same size
    EXPECT_TRUE(v.GetSize() == 4 && v == 0.0);

    // The default solve returns 0 and touches neither argument.
    CVector b(3, true, 2.0);
    double dTime = 42.0;
    EXPECT_EQ(p->Cholesky_Solve(&b, dTime), 0);
    EXPECT_TRUE(dTime == 42.0 && b == 2.0 && v == 0.0);
}

TEST(Frame, SymmetricFlagAndReportTime) {
    EXPECT_FALSE(CVirtMat::m_bSym);
    EXPECT_STREQ(CVirtMat::FormatTime(125.678), "2 m 5.67 s");
    EXPECT_STREQ(CVirtMat::FormatTime(59.999), "0 m 59.99 s");
}

TEST(Frame, ApproxEqualBands) {
    const double eps = DBL_EPSILON;
    // dUlps 0 is plain equality, below and above a magnitude of 1.0.
    for (double ref : {0.0, 0.5, -1.0, 3.0}) {
        EXPECT_TRUE(ApproxEqual(ref, ref, 0.0)) << ref;
        EXPECT_FALSE(ApproxEqual(std::nextafter(ref, 10.0), ref, 0.0)) << ref;
    }
    // Small reference: band open at both ends.
    EXPECT_FALSE(ApproxEqual(eps, 0.0, 1.0));
    EXPECT_FALSE(ApproxEqual(-eps, 0.0, 1.0));
    // Reference of 1.0 or more: closed; of -1.0 or less: open.
    EXPECT_TRUE(ApproxEqual(1.0 + eps, 1.0, 1.0));
    EXPECT_TRUE(ApproxEqual(1.0 - eps, 1.0, 1.0));
    EXPECT_FALSE(ApproxEqual(1.0 + 2 * eps, 1.0, 1.0));
    EXPECT_FALSE(ApproxEqual(-1.0 - eps, -1.0, 1.0));
}

TEST(Frame, QuickSortLongsSorts) {
    std::vector<LONG> random(1000);
    AfxSrand(7);
    for (LONG &x : random)
        x = AfxRand() % 100 - 50;
    for (std::vector<LONG> data : std::vector<std::vector<LONG>>{
             {}, {5}, {1, 2, 3, 4, 5, 6}, {6, 5, 4, 3, 2, 1}, std::vector<LONG>(50, 3), random}) {
        std::vector<LONG> expected = data;
        std::sort(expected.begin(), expected.end());
        QuickSortLongs(data.data(), (int)data.size());
        EXPECT_EQ(data, expected);
    }
}
