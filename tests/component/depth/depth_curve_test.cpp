#include "depth/depth_curve.h"

#include <gtest/gtest.h>

#include <limits>

#include "support/models.h"

namespace quorvane::test {
namespace {

TEST(DepthCurve, HoldsTheContrastCurve) {
    for (size_t i = 0; i < 256; ++i) EXPECT_EQ(u_depth_table[i], kContrastCurve[i]) << i;
}

TEST(DepthCurve, RisesFrom0To255AndFlattens) {
    EXPECT_EQ(sizeof u_depth_table, 256u);
    EXPECT_EQ(u_depth_table[0], 0);
    EXPECT_EQ(u_depth_table[255], 255);
    for (size_t i = 1; i < 256; ++i) {
        EXPECT_GE(u_depth_table[i], u_depth_table[i - 1]);
        EXPECT_LE(u_depth_table[i] - u_depth_table[i - 1], 2);
    }
    EXPECT_EQ(u_depth_table[1], 2);
    EXPECT_EQ(u_depth_table[255] - u_depth_table[244], 0);
}

TEST(DepthCurve, ContrastScalesTheDepthThatIsLookedUp) {
    uint8_t curve[256];
    for (const int contrast : {8, 24, 32}) {
        scaleDepthCurve(static_cast<float>(contrast), curve);
        for (size_t i = 0; i < 256; ++i)
            EXPECT_EQ(curve[i], kContrastCurve[i * static_cast<size_t>(contrast) / 32]) << i;
    }
}

TEST(DepthCurve, ContrastAbove32FoldsTheBrightestDepthsOver) {
    uint8_t curve[256];
    scaleDepthCurve(64.0f, curve);
    EXPECT_EQ(curve[127], kContrastCurve[254]);
    EXPECT_EQ(curve[128], kContrastCurve[0]);
    EXPECT_EQ(curve[200], kContrastCurve[144]);
}

TEST(DepthCurve, ContrastBelow0OrNoneTakesAllDepthsForTheFarthest) {
    uint8_t curve[256];
    for (const float contrast : {-1.0f, std::numeric_limits<float>::quiet_NaN()}) {
        scaleDepthCurve(contrast, curve);
        for (size_t i = 0; i < 256; ++i) EXPECT_EQ(curve[i], 0);
    }
}

}  // namespace
}  // namespace quorvane::test
