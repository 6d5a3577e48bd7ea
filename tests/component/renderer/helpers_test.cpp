#include <gtest/gtest.h>
#include <quorvane/esRenderer.h>

#include <climits>

namespace {

TEST(Clip, AboveTheUpperBoundGivesIt) { EXPECT_EQ(ClipABC_ESRenderer(300, 255, 0), 255); }
TEST(Clip, BelowTheLowerBoundGivesIt) { EXPECT_EQ(ClipABC_ESRenderer(-4, 255, 0), 0); }

TEST(Clip, BetweenTheBoundsNothingChanges) {
    for (const int p : {0, 1, 127, 254, 255}) EXPECT_EQ(ClipABC_ESRenderer(p, 255, 0), p);
}

TEST(Clip, CrossedBoundsTestTheUpperOneFirst) {
    EXPECT_EQ(ClipABC_ESRenderer(5, 3, 4), 3);
    EXPECT_EQ(ClipABC_ESRenderer(5, 3, 8), 3);  // beyond both bounds
    EXPECT_EQ(ClipABC_ESRenderer(2, 3, 4), 4);
    EXPECT_EQ(ClipABC_ESRenderer(3, 3, 4), 4);
}

TEST(Clip, ComparisonsAreSigned) {
    EXPECT_EQ(ClipABC_ESRenderer(INT_MIN, 10, -10), -10);
    EXPECT_EQ(ClipABC_ESRenderer(INT_MAX, 10, -10), 10);
    EXPECT_EQ(ClipABC_ESRenderer(-7, -5, -6), -6);
}

}  // namespace
