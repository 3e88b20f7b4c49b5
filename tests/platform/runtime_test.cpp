// Reports, clock and random numbers.
#include "common/femtest.h"

#include <ctime>

TEST(AfxRand, ClassicSequenceAndRange) {
    AfxSrand(1);
    std::vector<int> first;
    for (int k = 0; k < 5; k++)
        first.push_back(AfxRand());
    EXPECT_EQ(first, (std::vector<int>{41, 18467, 6334, 26500, 19169}));
    std::vector<bool> seen(32768);
    for (int k = 0; k < 200000; k++)
        seen.at(AfxRand()) = true; // at() throws out of range
    EXPECT_TRUE(seen[0] && seen[32767]);
}

TEST(AfxMessageBox, GoesToTheInstalledHandler) {
    AfxReportHandler pfnDefault = AfxSetReportHandler(NULL);
    {
        ReportRecorder recorder;
        EXPECT_EQ(AfxMessageBox("Time: 0 m 1.00 s", 0, 0), IDOK);
        EXPECT_EQ(ReportRecorder::Texts(), std::vector<std::string>{"Time: 0 m 1.00 s"});
    }
    EXPECT_EQ(AfxSetReportHandler(NULL), pfnDefault); // the previous handler is back
}

// The tick is a millisecond whatever the runtime's own rate is.
TEST(AfxClock, CountsMilliseconds) {
    EXPECT_NEAR(AfxClock(), clock() * 1000.0 / CLOCKS_PER_SEC, 20.0);
}
