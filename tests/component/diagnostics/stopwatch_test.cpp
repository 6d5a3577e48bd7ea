#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "diagnostics/QRVNProf.h"
#include "support/clock.h"

namespace {

using ::testing::MatchesRegex;

std::string displayed(int32_t elapsed, const char* label) {
    testing::internal::CaptureStdout();
    time_display(elapsed, label);
    return testing::internal::GetCapturedStdout();
}

int32_t elapsed(timeval start, timeval end) {
    int32_t microseconds = -1;
    time_diff(&microseconds, start, end);
    return microseconds;
}

TEST(Stopwatch, PrintsMicrosecondsInEightColumnsAndMilliseconds) {
    EXPECT_EQ(displayed(1500, "draw time                  "),
              "draw time                  :     1500(us) = 1.5000(ms)\n");
}

TEST(Stopwatch, PrintsZero) { EXPECT_EQ(displayed(0, "x"), "x:        0(us) = 0.0000(ms)\n"); }

TEST(Stopwatch, PrintsNegativeTimes) { EXPECT_EQ(displayed(-250, "x"), "x:     -250(us) = -0.2500(ms)\n"); }

TEST(Stopwatch, PrintsMoreThanEightDigits) {
    EXPECT_EQ(displayed(2147483647, "x"), "x: 2147483647(us) = 2147483.7500(ms)\n");
}

TEST(Stopwatch, DividesInFloat) {
    // As floats 16777217 is 16777216, and a thousandth of that is 16777.216796875.
    EXPECT_EQ(displayed(16777217, "x"), "x: 16777217(us) = 16777.2168(ms)\n");
    // 16777219 is 16777220, whose thousandth is nearest to 16777.220703125; its own is to 16777.21875.
    EXPECT_EQ(displayed(16777219, "x"), "x: 16777219(us) = 16777.2207(ms)\n");
}

TEST(Stopwatch, MeasuresWithinASecond) { EXPECT_EQ(elapsed({5, 100}, {5, 1600}), 1500); }
TEST(Stopwatch, MeasuresAcrossASecondsEnd) { EXPECT_EQ(elapsed({5, 999900}, {6, 100}), 200); }
TEST(Stopwatch, MeasuresSeveralSeconds) { EXPECT_EQ(elapsed({5, 500000}, {8, 250000}), 2750000); }
TEST(Stopwatch, ClockSetBackGivesANegativeTime) { EXPECT_EQ(elapsed({6, 100}, {5, 999900}), -200); }

TEST(Stopwatch, EveryStepIsMeasuredFromTheOneBefore) {
    testing::internal::CaptureStdout();
    {
        const quorvane::test::SteppingClock clock(1500);
        time_start();
        time_step("first");
        time_step("second");
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "first:     1500(us) = 1.5000(ms)\nsecond:     1500(us) = 1.5000(ms)\n");
}

TEST(Stopwatch, MarksAreShared) {
    const quorvane::test::SteppingClock clock(10);
    time_start();
    const timeval marked = time1;
    testing::internal::CaptureStdout();
    time_step("x");
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(elapsed(marked, time2), 10);
    EXPECT_EQ(temp_time, 10);
    EXPECT_EQ(elapsed(marked, time1), 20);
}

}  // namespace
