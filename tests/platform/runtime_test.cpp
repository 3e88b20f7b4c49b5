// Clock and random numbers.
#include "platform_test_util.h"

#include <ctime>

TEST(AfxRand, ClassicSequence) {
    AfxSrand(1);
    for (int nExpected : {41, 18467, 6334, 26500, 19169})
        EXPECT_EQ(AfxRand(), nExpected);
}

// The tick is a millisecond whatever the runtime's own rate is.
TEST(AfxClock, CountsMilliseconds) {
    EXPECT_NEAR(AfxClock(), clock() * 1000.0 / CLOCKS_PER_SEC, 20.0);
}

static time_t Epoch42() {
    return 42;
}

// The seed's time can be fixed for a test and given back to the clock.
TEST(AfxTime, SettableSource) {
    AfxTimeSource pfnOld = AfxSetTimeSource(&Epoch42);
    EXPECT_EQ(AfxTime(), 42);
    EXPECT_EQ(AfxSetTimeSource(NULL), &Epoch42);
    EXPECT_NEAR((double)AfxTime(), (double)time(NULL), 2.0);
    AfxSetTimeSource(pfnOld);
}
