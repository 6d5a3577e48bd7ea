#include "media/depth/polarity.h"

#include <gtest/gtest.h>

#include <algorithm>
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

// Such squares with a ring around each that a sensor did not see.
TEST(ConfidenceLargerIsFarther, FollowsTheContrastAcrossWhatASensorMissed) {
    const auto reach = [](int x, int y) { return std::max(std::abs(x % 40 - 20), std::abs(y % 40 - 20)); };
    const Plane squares = planeOf([&](int x, int y) { return reach(x, y) < 10 ? 200.0 : 40.0; });
    const RgbImage sharp = photoOf(
        [&](int x, int y) { return reach(x, y) < 10 ? 255.0 * noise(x / 2, y / 2) : 100.0 + 0.1 * x; });
    GrayImage known(kWidth, kHeight);
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x)
            known.samples[static_cast<size_t>(y * kWidth + x)] =
                reach(x, y) >= 10 && reach(x, y) < 13 ? 0 : 255;
    EXPECT_LT(confidenceLargerIsFarther(sharp, squares, known), 0.15);
    EXPECT_GT(confidenceLargerIsFarther(sharp, inverted(squares), known), 0.85);
}

// A wall that goes away to the side, in a corridor: its slopes have nothing to do with above and below,
// though the camera is held a little askew.
TEST(ConfidenceLargerIsFarther, DoesNotTakeAWallForTheGround) {
    const Plane wall = planeOf([](int x, int y) { return 20.0 + 1.0 * x + 0.35 * (y % 40); });
    EXPECT_NEAR(confidenceLargerIsFarther(grayPhoto(), wall, {}), 0.5, 0.15);
}

// The same wall by its distance, which bends, and by 1 / distance, which does not.
TEST(ConfidenceLargerIsFarther, FollowsTheBendOfALeaningPlane) {
    const Plane distance = planeOf([](int x, int) { return 8000.0 / (200.0 - 1.0 * x); });
    EXPECT_GT(confidenceLargerIsFarther(grayPhoto(), distance, {}), 0.8);
    EXPECT_LT(confidenceLargerIsFarther(grayPhoto(), inverted(distance), {}), 0.2);
    EXPECT_NEAR(
        confidenceLargerIsFarther(grayPhoto(), planeOf([](int x, int) { return 200.0 - 1.0 * x; }), {}), 0.5,
        0.05);
}

// Distances that stand for whole numbers of a shift, without any layout.
TEST(ConfidenceLargerIsFarther, FollowsTheGrowingStepsOfASensor) {
    const Plane distance =
        planeOf([](int x, int y) { return 4000.0 / (40.0 + std::floor(200.0 * noise(x, y))); });
    PolarityClues sensor;
    sensor.bits = 16;
    EXPECT_GT(confidenceLargerIsFarther(grayPhoto(), distance, {}, sensor), 0.8);
    EXPECT_LT(confidenceLargerIsFarther(grayPhoto(), inverted(distance), {}, sensor), 0.2);
    EXPECT_NEAR(confidenceLargerIsFarther(grayPhoto(), distance, {}), 0.5, 0.1);
}

TEST(ConfidenceLargerIsFarther, CountsWordsOfTheName) {
    const Plane nothing = planeOf([](int x, int y) { return 255.0 * noise(x / 8, y / 8); });
    const auto called = [&](const char* name) {
        PolarityClues clues;
        clues.name = name;
        return confidenceLargerIsFarther(grayPhoto(), nothing, {}, clues);
    };
    const double unnamed = called("");
    EXPECT_LT(called("scenes/a_Disparity.png"), unnamed - 0.2);
    EXPECT_LT(called("inverse-depth.tif"), unnamed - 0.2);
    EXPECT_GT(called("a_distance_mm.png"), unnamed + 0.2);
    EXPECT_EQ(called("disparity/a.png"), unnamed) << "a folder's name is none of the file's";
}

// Below is unknown in a map that may lie otherwise.
TEST(ConfidenceLargerIsFarther, DoesNotAskAboveAndBelowOfAMapThatMayLieOtherwise) {
    PolarityClues clues;
    clues.upright = false;
    EXPECT_NEAR(
        confidenceLargerIsFarther(grayPhoto(), planeOf([](int, int y) { return 2.0 * y; }), {}, clues), 0.5,
        0.05);
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
