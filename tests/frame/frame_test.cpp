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
    CVirtMat *p = &v;
    int sizes[3] = {4, 0, 7};
    EXPECT_TRUE(p->Allocate(sizes, 1)); // nDims 1 initialises with zeros
    EXPECT_EQ(v.GetSize(), 4);
    EXPECT_TRUE(v == 0.0);
    sizes[1] = 1;
    EXPECT_TRUE(p->Allocate(sizes, 3)); // the int fill value becomes a double
    EXPECT_TRUE(v == 7.0);

    // The default Cholesky_Solve returns 0 and touches neither argument.
    CVector b(3, true, 2.0);
    double dTime = 42.0;
    EXPECT_EQ(((CVirtRealMat *)&v)->Cholesky_Solve(&b, dTime), 0);
    EXPECT_EQ(dTime, 42.0);
    EXPECT_TRUE(b == 2.0);
    EXPECT_TRUE(v == 7.0);
}

TEST(Frame, StaticsAndReportTime) {
    EXPECT_FALSE(CVirtMat::m_bSym);
    ULONG nSaved = CVirtMat::m_Flops;
    CVirtMat::m_Flops = 0xFFFFFFFFu;
    CVirtMat::m_Flops += 2; // 32 bits, wrapping
    EXPECT_EQ(CVirtMat::m_Flops, 1u);
    CVirtMat::m_Flops = nSaved;

    EXPECT_STREQ(CVirtMat::FormatTime(125.678), "2 m 5.67 s");
    EXPECT_STREQ(CVirtMat::FormatTime(59.999), "0 m 59.99 s");
    EXPECT_STREQ(CVirtMat::FormatTime(3600.5), "60 m 0.50 s");
}

TEST(Frame, ApproxEqualBands) {
    const double eps = DBL_EPSILON;
    // dUlps 0 is plain equality for any reference.
    for (double ref : {0.0, 0.5, -0.5, 1.0, 3.0, -1.0, -7.0}) {
        EXPECT_TRUE(ApproxEqual(ref, ref, 0.0)) << ref;
        EXPECT_FALSE(ApproxEqual(std::nextafter(ref, 10.0), ref, 0.0)) << ref;
        EXPECT_FALSE(ApproxEqual(std::nextafter(ref, -10.0), ref, 0.0)) << ref;
    }
    // Small reference: band open at both ends.
    EXPECT_TRUE(ApproxEqual(0.0, 0.0, 1.0));
    EXPECT_FALSE(ApproxEqual(eps, 0.0, 1.0));
    EXPECT_FALSE(ApproxEqual(-eps, 0.0, 1.0));
    // Reference of 1.0 or more: closed; of -1.0 or less: open.
    EXPECT_TRUE(ApproxEqual(1.0 + eps, 1.0, 1.0));
    EXPECT_TRUE(ApproxEqual(1.0 - eps, 1.0, 1.0));
    EXPECT_FALSE(ApproxEqual(1.0 + 2 * eps, 1.0, 1.0));
    EXPECT_TRUE(ApproxEqual(-1.0, -1.0, 1.0));
    EXPECT_FALSE(ApproxEqual(-1.0 - eps, -1.0, 1.0));
}

TEST(Frame, QuickSortLongsSorts) {
    std::vector<std::vector<LONG>> cases = {
        {}, {5}, {1, 2, 3, 4, 5, 6}, {6, 5, 4, 3, 2, 1}, std::vector<LONG>(50, 3)};
    AfxSrand(7);
    cases.emplace_back(1000);
    for (LONG &x : cases.back())
        x = AfxRand() % 100 - 50;
    for (std::vector<LONG> data : cases) {
        std::vector<LONG> expected = data;
        std::sort(expected.begin(), expected.end());
        QuickSortLongs(data.data(), (int)data.size());
        EXPECT_EQ(data, expected);
    }
}
