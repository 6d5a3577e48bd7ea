#include "composition/rim.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace quorvane::test {
namespace {

constexpr Size kSize = {240, 180};
constexpr Camera kCamera = {34.0, 7.2, 7.2, 164.0};
const BentGrid kGrid = {{}, 24.0, 18.0};

/// A contrast of about 24: half as steep above 100, and never as near as 255.
struct Curve {
    uint8_t levels[256];
    Curve() {
        for (int i = 0; i < 256; ++i)
            levels[i] = static_cast<uint8_t>(i < 100 ? 3 * i / 2 : std::min(240, 100 + i / 2));
    }
};
const Curve kCurve;

std::vector<uint8_t> eased(uint8_t depth, ViewPosition reach) {
    std::vector<uint8_t> plane(static_cast<size_t>(kSize.width) * kSize.height, depth);
    easeRim(plane.data(), kSize, kCurve.levels, kGrid, kCamera, reach);
    return plane;
}

double shapedAt(const std::vector<uint8_t>& plane, int x, int y) {
    return kCurve.levels[plane[static_cast<size_t>(y) * kSize.width + static_cast<size_t>(x)]];
}

/// How far a point of that depth moves sideways at full swing, where half the picture's width is 1.
double moveOf(double shaped) {
    const double distance = distanceOf(shaped);
    const double turn = kCamera.x_turn_deg * 3.14159265358979 / 180.0;
    return std::sin(turn) * (distance - kCamera.pivot_distance) / distance * kGridDistance / kGrid.half_width;
}

TEST(EaseRim, BorderMovesLessAndTheMiddleStays) {
    for (const int depth : {0, 30, 60, 150, 250}) {
        const std::vector<uint8_t> plane = eased(static_cast<uint8_t>(depth), {1.0, 0.0});
        const double before = moveOf(kCurve.levels[depth]), at_border = moveOf(shapedAt(plane, 0, 90));
        EXPECT_LT(std::abs(at_border), std::abs(before) + 1e-9) << depth;
        EXPECT_LT(std::abs(at_border), std::max(0.003, std::abs(before) - 0.015)) << depth;
        for (const int x : {20, 120, 219}) EXPECT_EQ(shapedAt(plane, x, 2), kCurve.levels[depth]);
        EXPECT_EQ(shapedAt(plane, 239, 90), shapedAt(plane, 0, 90));
    }
}

TEST(EaseRim, StretchesByNoMoreThanItSays) {
    // A sample is 2 / 240 of half the width; a level moves by 0.001 at most.
    for (const int depth : {0, 40, 200}) {
        const std::vector<uint8_t> plane = eased(static_cast<uint8_t>(depth), {1.0, 0.0});
        for (int x = 0; x + 10 < 120; ++x) {
            const double stretch =
                std::abs(moveOf(shapedAt(plane, x + 10, 90)) - moveOf(shapedAt(plane, x, 90)));
            EXPECT_LE(stretch, kRimStretch * 10 * 2.0 / 240 + 0.002) << depth << " at " << x;
        }
    }
}

TEST(EaseRim, ChangesOnlyTheSidesThatSwing) {
    const std::vector<uint8_t> down = eased(0, {0.0, 1.0});
    EXPECT_EQ(shapedAt(down, 0, 90), 0);
    EXPECT_GT(shapedAt(down, 120, 0), 5);
    EXPECT_GT(shapedAt(down, 120, 179), 5);
    const std::vector<uint8_t> both = eased(0, {1.0, 1.0});
    EXPECT_GT(shapedAt(both, 0, 90), 5);
    EXPECT_GT(shapedAt(both, 120, 0), 5);
    const std::vector<uint8_t> still = eased(0, {0.0, 0.0});
    EXPECT_EQ(*std::max_element(still.begin(), still.end()), 0);
}

TEST(EaseRim, WhatStandsStillStays) {
    // 255 of 35 * (32 - 34) / 0.4 + 32: the depth at the pivot's distance.
    const double still = 255.0 * ((32.0 - 34.0) / 0.4 + 32.0) / 35.0;
    const auto depth = static_cast<uint8_t>(std::lround((still - 100.0) * 2.0));
    const std::vector<uint8_t> plane = eased(depth, {1.0, 1.0});
    for (const uint8_t sample : plane) EXPECT_NEAR(kCurve.levels[sample], still, 1.5);
}

}  // namespace
}  // namespace quorvane::test
