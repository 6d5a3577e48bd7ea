#include "apps/quorvane/drawing/overlays.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <tuple>

namespace quorvane::app {
namespace {

using media::GrayImage;
using media::RgbImage;

constexpr Colour kRed = {255, 0, 0};

RgbImage gray(int width, int height) {
    RgbImage image(width, height);
    std::fill(image.samples.begin(), image.samples.end(), uint8_t{128});
    return image;
}

bool isRed(const RgbImage& image, int x, int y) {
    const uint8_t* pixel = &image.at(x, y);
    return pixel[0] == 255 && pixel[1] == 0 && pixel[2] == 0;
}

bool isUntouched(const RgbImage& image, int x, int y) {
    const uint8_t* pixel = &image.at(x, y);
    return pixel[0] == 128 && pixel[1] == 128 && pixel[2] == 128;
}

TEST(Contour, FollowsTheFieldAndLeavesTheRest) {
    RgbImage image = gray(100, 60);
    drawContour([](double u, double) { return u - 0.5; }, kRed, &image);
    for (int y = 2; y < 58; ++y)
        for (int x = 0; x < 100; ++x) {
            if (x == 49 || x == 50) {
                EXPECT_TRUE(isRed(image, x, y)) << x << ", " << y;
            } else if (std::abs(x - 50) > 2) {
                EXPECT_TRUE(isUntouched(image, x, y)) << x << ", " << y;
            }
        }
}

TEST(Contour, IsClosedAtTheBorderWhereTheFieldEndsThere) {
    RgbImage whole = gray(40, 30), open = gray(40, 30);
    drawContour([](double u, double v) { return 0.5 - std::max(std::abs(u - 0.5), std::abs(v - 0.5)); }, kRed,
                &whole);
    for (const auto& [x, y] : {std::pair{20, 0}, {20, 29}, {0, 15}, {39, 15}})
        EXPECT_TRUE(isRed(whole, x, y)) << x << ", " << y;
    drawContour([](double, double) { return 1.0; }, kRed, &open);
    EXPECT_EQ(open.samples, gray(40, 30).samples);
}

TEST(FieldOf, IsLinearBetweenSamplesAndConstantBeyond) {
    GrayImage plane(2, 1);
    plane.samples = {10, 30};
    const Field field = fieldOf(plane);
    EXPECT_DOUBLE_EQ(field(0.25, 0.5), 10.0);
    EXPECT_DOUBLE_EQ(field(0.5, 0.5), 20.0);
    EXPECT_DOUBLE_EQ(field(0.75, 0.1), 30.0);
    EXPECT_DOUBLE_EQ(field(-1.0, 2.0), 10.0);
    EXPECT_DOUBLE_EQ(field(2.0, 0.5), 30.0);
}

TEST(Cross, IsOpenInTheMiddleAndStaysInThePicture) {
    RgbImage image = gray(60, 60);
    drawCross(0.5, 0.5, kRed, &image);
    EXPECT_TRUE(isUntouched(image, 30, 30));
    EXPECT_TRUE(isRed(image, 30, 18));
    EXPECT_TRUE(isRed(image, 42, 30));
    drawCross(0.0, 1.0, kRed, &image);
}

TEST(HeatMap, ShowsTheLargestOfTheCellsUnderAPixel) {
    // 8 cells a pixel, one of which is hot.
    std::vector<float> times(64, 1.0f);
    times[static_cast<size_t>(2 * 16 + 9)] = 8.0f;
    const RgbImage map = heatMap(gray(4, 1), times, {16, 4});
    const auto colourfulness = [&map](int x) {
        const uint8_t* pixel = &map.at(x, 0);
        return std::max({pixel[0], pixel[1], pixel[2]}) - std::min({pixel[0], pixel[1], pixel[2]});
    };
    EXPECT_EQ(colourfulness(0), 0);
    EXPECT_EQ(colourfulness(1), 0);
    EXPECT_GT(colourfulness(2), 150);
    EXPECT_EQ(colourfulness(3), 0);
}

TEST(HeatMap, HasAnotherColourForEveryDoubling) {
    const RgbImage map = heatMap(gray(6, 1), {1.0f, 2.0f, 4.0f, 8.0f, 16.0f, 300.0f}, {6, 1});
    const auto at = [&map](int x) {
        const uint8_t* pixel = &map.at(x, 0);
        return std::tuple{pixel[0], pixel[1], pixel[2]};
    };
    for (int a = 0; a < 5; ++a)
        for (int b = 0; b < a; ++b) EXPECT_NE(at(a), at(b)) << a << ", " << b;
    EXPECT_EQ(at(4), at(5));
}

}  // namespace
}  // namespace quorvane::app
