#include "platform/runtime.h"

#include <gtest/gtest.h>

#include <ctime>
#include <string>
#include <vector>

TEST(AfxRand, ClassicSequenceAndRange) {
    AfxSrand(1);
    std::vector<int> first;
    for (int k = 0; k < 5; k++)
        first.push_back(AfxRand());
    EXPECT_EQ(first, (std::vector<int>{41, 18467, 6334, 26500, 19169}));

    AfxSrand(1);
    EXPECT_EQ(AfxRand(), 41);

    int nMin = 32767, nMax = 0;
    for (int k = 0; k < 200000; k++) {
        int r = AfxRand();
        nMin = r < nMin ? r : nMin;
        nMax = r > nMax ? r : nMax;
    }
    EXPECT_EQ(nMin, 0);
    EXPECT_EQ(nMax, 32767);
}

namespace {
std::vector<std::string> g_reports;
int RecordReport(const char *pszText) {
    g_reports.push_back(pszText);
    return 7;
}
} // namespace

TEST(AfxMessageBox, GoesToTheInstalledHandler) {
    g_reports.clear();
    AfxReportHandler pfnOld = AfxSetReportHandler(RecordReport);
    ASSERT_NE(pfnOld, nullptr);
    EXPECT_EQ(AfxMessageBox("Time: 0 m 1.00 s", 0, 0), 7);
    EXPECT_EQ(AfxMessageBox(NULL), 7);
    EXPECT_EQ(g_reports, (std::vector<std::string>{"Time: 0 m 1.00 s", ""}));

    // NULL brings back the default, which returns at once.
    EXPECT_EQ(AfxSetReportHandler(NULL), RecordReport);
    EXPECT_EQ(AfxMessageBox(""), IDOK);
    EXPECT_EQ(AfxSetReportHandler(pfnOld), pfnOld);
    EXPECT_EQ(g_reports.size(), 2u);
}

// The tick is a millisecond whatever the runtime's own rate is.
TEST(AfxClock, CountsMilliseconds) {
    clock_t c0 = clock();
    LONG t0 = AfxClock();
    while (clock() - c0 < CLOCKS_PER_SEC / 10) {
    }
    LONG dt = AfxClock() - t0;
    EXPECT_GE(dt, 95);
    EXPECT_LE(dt, 150);
}
