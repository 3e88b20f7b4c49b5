// Skyline GaussSeidel_Iter with a diagonal it cannot divide by, or an iterate that stops
// being finite.
#include "common/femtest.h"
#include "dense/vector.h"
#include "skyline/skylinematrix.h"

#include <cmath>

// A zero, infinite or NaN diagonal gave NaN and claimed convergence. Now: -1, no sweep, x as
// it was; the size-1 shortcut, which shows nothing, does the same.
TEST(SkylineGaussSeidel, NoUsableDiagonalFailsWithoutSweeping) {
    ReportRecorder reports;
    for (double dDiag : {0.0, HUGE_VAL, std::nan("")}) {
        for (int n : {1, 3}) {
            CSkylineMatrix m;
            int sizes[] = {n, n};
            ASSERT_TRUE(m.Allocate(sizes, 2));
            for (int i = 0; i < n; i++)
                m(i, i) = 2.0;
            m(n - 1, n - 1) = dDiag;
            CVector b(n, true, 1.0), x(n, true, 5.0);
            EXPECT_EQ(m.GaussSeidel_Iter(b, x, 1e-12, 10), -1) << n << " " << dDiag;
            EXPECT_TRUE(x == 5.0);
        }
        ASSERT_FALSE(reports.Texts().empty());
        EXPECT_NE(reports.Texts().back().find("Number of iter. :   0\r\n"), std::string::npos);
    }
    EXPECT_EQ(reports.Texts().size(), 3u);
}

TEST(SkylineGaussSeidel, NonFiniteIterateIsNoSolution) {
    ReportRecorder reports;
    CSkylineMatrix m;
    int sizes[] = {2, 2};
    ASSERT_TRUE(m.Allocate(sizes, 2));
    m(0, 0) = m(1, 1) = 2.0;
    for (int n : {1, 2}) {
        CVector b(n, true, std::nan("")), x(n, true, 0.0);
        EXPECT_EQ(m.GaussSeidel_Iter(b, x, 1e-12, 10), -1);
        EXPECT_TRUE(std::isnan(x[n - 1]));
    }
}
