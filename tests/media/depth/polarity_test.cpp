#include "media/depth/polarity.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <functional>

namespace quorvane::media {
namespace {

constexpr int kWidth = 160, kHeight = 120;

/// A value from 0 to 1 for each pixel, the same on every run.
double noise(int x, int y) {
    const double wave = std::sin(x * 12.9898 + y * 78.233) * 43758.5453;
    return wave - std::floor(wave);
}

RgbImage photoOf(const std::function<double(int x, int y)>& luma) {
    RgbImage photo(kWidth, kHeight);
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x)
            for (size_t c = 0; c < 3; ++c)
                photo.samples[static_cast<size_t>(y * kWidth + x) * 3 + c] = static_cast<uint8_t>(luma(x, y));
    return photo;
}

Plane planeOf(const std::function<double(int x, int y)>& level) {
    Plane plane(kWidth, kHeight);
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x)
            plane.samples[static_cast<size_t>(y * kWidth + x)] = static_cast<float>(level(x, y));
    return plane;
}

Plane inverted(Plane plane) {
    for (float& level : plane.samples) level = 255.0f - level;
    return plane;
}

const RgbImage& grayPhoto() {
    static const RgbImage photo = photoOf([](int, int) { return 128.0; });
    return photo;
}

TEST(ConfidenceLargerIsFarther, FollowsTheGroundThatRisesTowardsTheViewer) {
    const Plane ground = planeOf([](int x, int y) { return 20.0 + 1.8 * y + 0.1 * x; });
    EXPECT_LT(confidenceLargerIsFarther(grayPhoto(), ground, {}), 0.02);
    EXPECT_GT(confidenceLargerIsFarther(grayPhoto(), inverted(ground), {}), 0.98);
}

// Squares all over the picture that stand out of a wall, sharp before a blurred one: no end of it is below.
TEST(ConfidenceLargerIsFarther, FollowsTheContrastAtTheEdgesOfNearThings) {
    const auto near = [](int x, int y) { return std::abs(x % 40 - 20) < 10 && std::abs(y % 40 - 20) < 10; };
    const Plane squares = planeOf([&](int x, int y) { return near(x, y) ? 200.0 : 40.0; });
    const RgbImage sharp =
        photoOf([&](int x, int y) { return near(x, y) ? 255.0 * noise(x / 2, y / 2) : 100.0 + 0.1 * x; });
    const double as_it_is = confidenceLargerIsFarther(sharp, squares, {});
    EXPECT_LT(as_it_is, 0.1);
    EXPECT_GT(confidenceLargerIsFarther(sharp, inverted(squares), {}), 0.9);
    // Without that contrast there is nothing to tell it.
    EXPECT_NEAR(confidenceLargerIsFarther(grayPhoto(), squares, {}), 0.5, 0.35);
}

// What a sensor has missed says nothing, however much of the map it is.
TEST(ConfidenceLargerIsFarther, DoesNotAskLevelsThatSayNothing) {
    const Plane ground = planeOf([](int, int y) { return 230.0 - 1.5 * y; });
    Plane holed = ground;
    GrayImage known(kWidth, kHeight);
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x) {
            const bool missed = y < 50;
            const size_t i = static_cast<size_t>(y * kWidth + x);
            known.samples[i] = missed ? 0 : 255;
            if (missed) holed.samples[i] = 0.0f;
        }
    EXPECT_GT(confidenceLargerIsFarther(grayPhoto(), holed, known), 0.9);
    EXPECT_LT(confidenceLargerIsFarther(grayPhoto(), holed, {}), 0.5);
}

TEST(ConfidenceLargerIsFarther, IsAHalfWhereNothingShows) {
    EXPECT_DOUBLE_EQ(confidenceLargerIsFarther(grayPhoto(), planeOf([](int, int) { return 77.0; }), {}), 0.5);
    EXPECT_DOUBLE_EQ(confidenceLargerIsFarther(RgbImage(1, 1), Plane(1, 1), {}), 0.5);
    EXPECT_DOUBLE_EQ(confidenceLargerIsFarther(grayPhoto(), planeOf([](int, int y) { return y; }),
                                               GrayImage(kWidth, kHeight)),
                     0.5);
}

}  // namespace
}  // namespace quorvane::media
