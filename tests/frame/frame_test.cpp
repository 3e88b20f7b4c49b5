// The class frame: base-pointer sizing, the default solve, the statics, report times,
// ApproxEqual's bands and the quicksort.
#include "dense/vector.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <vector>

TEST(Frame, AllocateThroughBasePointerFollowsTheConvention) {
    CVector v;
    CVirtMat *p = &v;
    int sizes[3] = {4, 0, 7};
    // nDims 1: initialised with zeros whatever the other entries say.
    EXPECT_TRUE(p->Allocate(sizes, 1));
    ASSERT_EQ(v.GetSize(), 4);
    EXPECT_TRUE(v == 0.0);
    // nDims 3 with the flag set: the int fill value becomes a double.
    sizes[1] = 1;
    EXPECT_TRUE(p->Allocate(sizes, 3));
    EXPECT_TRUE(v == 7.0);
    // nDims 2 with the flag clear: same size, contents kept.
    sizes[1] = 0;
    EXPECT_TRUE(p->Allocate(sizes, 2));
    EXPECT_TRUE(v == 7.0);
    // Size 0: no storage stands.
    sizes[0] = 0;
    EXPECT_FALSE(p->Allocate(sizes, 1));
    EXPECT_EQ(v.GetSize(), 0);
    EXPECT_EQ(v.GetVector(), nullptr);
}

TEST(Frame, DefaultCholeskySolveTouchesNothing) {
    CVector a(3, true, 1.0), b(3, true, 2.0);
    CVirtRealMat *p = &a;
    double dTime = 42.0;
    EXPECT_EQ(p->Cholesky_Solve(&b, dTime), 0);
    EXPECT_EQ(dTime, 42.0);
    EXPECT_TRUE(b == 2.0);
    EXPECT_TRUE(a == 1.0);
}

TEST(Frame, StaticsStartAtZero) {
    EXPECT_FALSE(CVirtMat::m_bSym);
    // m_Flops is a 32-bit counter that wraps.
    ULONG nSaved = CVirtMat::m_Flops;
    CVirtMat::m_Flops = 0xFFFFFFFFu;
    CVirtMat::m_Flops += 2;
    EXPECT_EQ(CVirtMat::m_Flops, 1u);
    CVirtMat::m_Flops = nSaved;
}

TEST(Frame, ReportTimeFormat) {
    EXPECT_STREQ(CVirtMat::FormatTime(125.678), "2 m 5.67 s");
    EXPECT_STREQ(CVirtMat::FormatTime(59.999), "0 m 59.99 s");
    EXPECT_STREQ(CVirtMat::FormatTime(0.0), "0 m 0.00 s");
    EXPECT_STREQ(CVirtMat::FormatTime(3600.5), "60 m 0.50 s");
    // Seconds go through the single-precision 0.01, so 0.07 s shows its rounding.
    EXPECT_STREQ(CVirtMat::FormatTime(60.07), "1 m 0.07 s");
}

TEST(Frame, ApproxEqualBands) {
    const double eps = DBL_EPSILON;
    // dUlps 0 is plain equality for any reference.
    for (double ref : {0.0, 0.5, -0.5, 1.0, 3.0, -1.0, -7.0}) {
        EXPECT_TRUE(ApproxEqual(ref, ref, 0.0)) << ref;
        EXPECT_FALSE(ApproxEqual(std::nextafter(ref, 10.0), ref, 0.0)) << ref;
        EXPECT_FALSE(ApproxEqual(std::nextafter(ref, -10.0), ref, 0.0)) << ref;
    }
    // Small reference: open band of half-width d.
    EXPECT_TRUE(ApproxEqual(0.0, 0.0, 1.0));
    EXPECT_FALSE(ApproxEqual(eps, 0.0, 1.0));
    EXPECT_FALSE(ApproxEqual(-eps, 0.0, 1.0));
    EXPECT_TRUE(ApproxEqual(eps / 2, 0.0, 1.0));
    EXPECT_TRUE(ApproxEqual(3 * eps, 0.0, 4.0));
    // Reference of 1.0 or more: closed band.
    EXPECT_TRUE(ApproxEqual(1.0 + eps, 1.0, 1.0));
    EXPECT_TRUE(ApproxEqual(1.0 - eps, 1.0, 1.0));
    EXPECT_FALSE(ApproxEqual(1.0 + 4 * eps, 1.0, 1.0));
    // Reference of -1.0 or less: open band.
    EXPECT_TRUE(ApproxEqual(-1.0, -1.0, 1.0));
    EXPECT_FALSE(ApproxEqual(-1.0 - eps, -1.0, 1.0));
    EXPECT_FALSE(ApproxEqual(-1.0 + eps, -1.0, 1.0));
}

TEST(Frame, QuickSortLongsSorts) {
    auto check = [](std::vector<LONG> data) {
        std::vector<LONG> expected = data;
        std::sort(expected.begin(), expected.end());
        QuickSortLongs(data.data(), (int)data.size());
        EXPECT_EQ(data, expected);
    };
    check({});
    check({5});
    check({1, 2, 3, 4, 5, 6, 7, 8});
    check({8, 7, 6, 5, 4, 3, 2, 1});
    check(std::vector<LONG>(50, 3));
    check({2, -1, 2, -1, 0, 0, 2});
    AfxSrand(7);
    std::vector<LONG> random(1000);
    for (LONG &x : random)
        x = AfxRand() % 100 - 50;
    check(random);
    std::vector<LONG> reversed(3000);
    for (int i = 0; i < 3000; i++)
        reversed[i] = 3000 - i;
    check(reversed);
}
