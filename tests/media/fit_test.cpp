#include "media/fit.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>
#include <ostream>

namespace quorvane::media {

void PrintTo(const Size& size, std::ostream* out) { *out << size.width << " x " << size.height; }

namespace {

constexpr int kLargest = 16384;

TEST(FitSizes, LeavesSizesThatFitAsTheyAre) {
    const Fit fit = fitSizes({4096, 3072}, {1024, 768}, kLargest);
    EXPECT_EQ(fit.ratio, 16);
    EXPECT_EQ(fit.photo, (Size{4096, 3072}));
    EXPECT_EQ(fit.depth, (Size{1024, 768}));
    EXPECT_EQ(fit.grid, (Size{256, 192}));
}

TEST(FitSizes, MakesThePhotoAWholeNumberOfCells) {
    const Fit fit = fitSizes({2100, 2100}, {640, 640}, kLargest);
    // 2100 * 4 / 640 is 13.1, so 8 photo pixels a cell, and 2100 / 8 is 262.5.
    EXPECT_EQ(fit.ratio, 8);
    EXPECT_EQ(fit.grid, (Size{263, 263}));
    EXPECT_EQ(fit.photo, (Size{2104, 2104}));
    EXPECT_EQ(fit.depth, (Size{1052, 1052}));
}

TEST(FitSizes, KeepsTheDepthsDetailOnBothAxes) {
    // 8 would do for the width, the height needs 2.
    EXPECT_EQ(fitSizes({800, 600}, {400, 1200}, kLargest).ratio, 2);
}

TEST(FitSizes, UsesAtMost32PixelsACell) { EXPECT_EQ(fitSizes({8000, 6000}, {8, 6}, kLargest).ratio, 32); }

TEST(FitSizes, TakesAPhotoSmallerThanItsDepth) {
    const Fit fit = fitSizes({100, 80}, {1000, 800}, kLargest);
    EXPECT_EQ(fit.ratio, 1);
    EXPECT_EQ(fit.photo, (Size{100, 80}));
    EXPECT_EQ(fit.depth, (Size{400, 320}));
}

TEST(FitSizes, TakesOnePixel) {
    const Fit fit = fitSizes({1, 1}, {1, 1}, kLargest);
    EXPECT_EQ(fit.grid, (Size{1, 1}));
    EXPECT_EQ(fit.depth, (Size{4, 4}));
}

TEST(FitSizes, ScalesAPhotoThatTheDriverCannotHold) {
    const Fit fit = fitSizes({20000, 10000}, {500, 250}, 4096);
    EXPECT_EQ(fit.photo, (Size{4096, 2048}));
}

TEST(FitSizes, NeverGrowsPastTheDriversLimit) {
    const Fit fit = fitSizes({1000, 1000}, {20, 20}, 1000);
    EXPECT_EQ(fit.ratio, 32);
    EXPECT_LE(fit.photo.width, 1000);
}

TEST(FitSizes, CoarsensTheGridRatherThanPassTwoGigabytes) {
    const Fit fit = fitSizes({16384, 16384}, {16384, 16384}, kLargest);
    EXPECT_EQ(fit.ratio, 8);
}

TEST(FitSizes, KeepsDetailWhereTheLimitCutsALastCell) {
    // 31 cells of 32 pixels would be 992 of the 1000, and the depth map 124 wide.
    const Fit fit = fitSizes({1000, 1000}, {125, 125}, 1000);
    EXPECT_EQ(fit.ratio, 16);
    EXPECT_GE(fit.depth.width, 125);
}

TEST(FitSizes, NeverGrowsPastALimitSmallerThanACell) {
    const Fit fit = fitSizes({5, 5}, {1, 1}, 5);
    EXPECT_LE(fit.photo.width, 5);
    EXPECT_LE(fit.photo.height, 5);
}

TEST(FitSizes, TakesTheLargestSidesThereAre) {
    constexpr int kMost = std::numeric_limits<int>::max();
    for (const Size photo : {Size{kMost, kMost}, Size{kMost, 1}, Size{1, kMost}, Size{32768, 32768}})
        for (const Size depth : {Size{1, 1}, Size{kMost, kMost}}) {
            SCOPED_TRACE(testing::PrintToString(photo) + " with " + testing::PrintToString(depth));
            const Fit fit = fitSizes(photo, depth, kMost);
            EXPECT_GE(std::min(fit.grid.width, fit.grid.height), 1);
            EXPECT_EQ(fit.photo.width, int64_t{fit.grid.width} * fit.ratio);
            EXPECT_LE(3.0 * fit.photo.width * fit.photo.height, kMost);
            EXPECT_LE(fit.photo.width, photo.width + int64_t{fit.ratio});
            EXPECT_LE(fit.photo.height, photo.height + int64_t{fit.ratio});
        }
}

// The promises, for many odd sizes.
TEST(FitSizes, KeepsItsPromisesForAllSizes) {
    for (int width = 1; width < 3000; width += 97)
        for (int height = 1; height < 3000; height += 131)
            for (const Size depth :
                 {Size{1, 1}, Size{64, 48}, Size{257, 193}, Size{1000, 1}, Size{3001, 1999}}) {
                SCOPED_TRACE(testing::Message()
                             << width << " x " << height << " with " << depth.width << " x " << depth.height);
                const Fit fit = fitSizes({width, height}, depth, kLargest);
                ASSERT_TRUE(fit.ratio == 1 || fit.ratio == 2 || fit.ratio == 4 || fit.ratio == 8 ||
                            fit.ratio == 16 || fit.ratio == 32);
                ASSERT_EQ(fit.photo.width, fit.ratio * fit.grid.width);
                ASSERT_EQ(fit.photo.height, fit.ratio * fit.grid.height);
                ASSERT_EQ(fit.depth.width, 4 * fit.grid.width);
                ASSERT_EQ(fit.depth.height, 4 * fit.grid.height);
                ASSERT_LT(std::abs(fit.photo.width - width), fit.ratio);
                ASSERT_LT(std::abs(fit.photo.height - height), fit.ratio);
                // A photo with fewer pixels than a quarter of the depth's cannot carry all of its detail.
                ASSERT_GE(fit.depth.width, std::min(depth.width, 4 * width));
                ASSERT_GE(fit.depth.height, std::min(depth.height, 4 * height));
                // The next coarser grid would lose some, unless there is none.
                const bool coarser_loses = 4.0 * width / (2 * fit.ratio) < depth.width ||
                                           4.0 * height / (2 * fit.ratio) < depth.height;
                ASSERT_TRUE(coarser_loses || fit.ratio == 32);
            }
}

TEST(PictureSize, IsThePhotosWhenSmallEnough) {
    EXPECT_EQ(pictureSize({680, 1201}, 1920, false), (Size{680, 1201}));
}
TEST(PictureSize, KeepsTheAspectUnderTheLimit) {
    EXPECT_EQ(pictureSize({4032, 3024}, 1920, false), (Size{1920, 1440}));
}
TEST(PictureSize, IsEvenForVideo) { EXPECT_EQ(pictureSize({681, 1201}, 1920, true), (Size{680, 1200})); }
TEST(PictureSize, IsNeverEmptyForVideo) { EXPECT_EQ(pictureSize({1, 900}, 1920, true), (Size{2, 900})); }
TEST(PictureSize, KeepsThinPicturesVisible) {
    EXPECT_EQ(pictureSize({20000, 1}, 1920, false), (Size{1920, 1}));
}

TEST(CroppedSize, CutsTheSidesOfAWiderImage) {
    EXPECT_EQ(croppedSize({400, 300}, {100, 100}), (Size{300, 300}));
}
TEST(CroppedSize, CutsTopAndBottomOfATallerImage) {
    EXPECT_EQ(croppedSize({300, 400}, {200, 100}), (Size{300, 150}));
}
TEST(CroppedSize, LeavesTheSameAspectAlone) {
    EXPECT_EQ(croppedSize({1920, 1440}, {4, 3}), (Size{1920, 1440}));
}

TEST(Crop, TakesTheMiddle) {
    RgbImage image(4, 3);
    for (size_t i = 0; i < image.samples.size(); ++i) image.samples[i] = static_cast<uint8_t>(i);
    const RgbImage middle = crop(image, {2, 1});
    EXPECT_EQ(middle.samples, (std::vector<uint8_t>{15, 16, 17, 18, 19, 20}));
}

TEST(Resample, LeavesTheSameSizeByteForByte) {
    RgbImage image(5, 3);
    for (size_t i = 0; i < image.samples.size(); ++i) image.samples[i] = static_cast<uint8_t>(i * 31);
    EXPECT_EQ(resample(image, {5, 3}).samples, image.samples);
}

TEST(Resample, KeepsAConstantPhotoConstant) {
    RgbImage image(50, 33);
    std::fill(image.samples.begin(), image.samples.end(), uint8_t{93});
    const RgbImage grown = resample(image, {52, 36});
    EXPECT_EQ(grown.width, 52);
    EXPECT_EQ(grown.height, 36);
    EXPECT_EQ(grown.samples, std::vector<uint8_t>(grown.samples.size(), 93));
}

TEST(ToBytes, LeavesWholeLevelsAlone) {
    Image<float, 1> plane(16, 16);
    for (size_t i = 0; i < plane.samples.size(); ++i) plane.samples[i] = static_cast<float>(i);
    std::vector<uint8_t> bytes(256);
    std::iota(bytes.begin(), bytes.end(), uint8_t{0});
    EXPECT_EQ(toBytes(plane, {16, 16}).samples, bytes);

    // Nor does what scaling and turning over do to their last bits matter.
    for (float& level : plane.samples) level = std::clamp(level + 0.001f, 0.0f, 255.0f);
    EXPECT_EQ(toBytes(plane, {16, 16}).samples, bytes);
    for (float& level : plane.samples) level = std::clamp(level - 0.002f, 0.0f, 255.0f);
    EXPECT_EQ(toBytes(plane, {16, 16}).samples, bytes);
}

TEST(ToBytes, KeepsAConstantLevelAtEverySize) {
    Image<float, 1> plane(7, 5);
    for (const float level : {0.0f, 51.0f, 255.0f}) {
        std::fill(plane.samples.begin(), plane.samples.end(), level);
        for (const Size size : {Size{7, 5}, Size{3, 2}, Size{64, 48}, Size{1, 1}})
            EXPECT_THAT(toBytes(plane, size).samples, testing::Each(static_cast<uint8_t>(level)));
    }
}

TEST(ToBytes, TakesOneOfTheTwoNearestLevels) {
    Image<float, 1> plane(64, 64);
    for (size_t i = 0; i < plane.samples.size(); ++i)
        plane.samples[i] = 255.0f * static_cast<float>(i) / 4095;
    const std::vector<uint8_t> bytes = toBytes(plane, {64, 64}).samples;
    for (size_t i = 0; i < bytes.size(); ++i) ASSERT_LT(std::abs(bytes[i] - plane.samples[i]), 1.0f);
}

/// The mean of every block of 4 x 4, from the left and the top.
std::vector<double> blockMeans(const GrayImage& bytes) {
    const size_t width = static_cast<size_t>(bytes.width), across = width / 4;
    std::vector<double> means(across * static_cast<size_t>(bytes.height) / 4);
    for (size_t i = 0; i < bytes.samples.size(); ++i)
        means[i / width / 4 * across + i % width / 4] += bytes.samples[i] / 16.0;
    return means;
}

// 16 bit fall into 20 levels; rounded, the ramp would have 20 bands up to half a level off.
TEST(ToBytes, LeavesNoBandsInASlowRamp) {
    Image<float, 1> plane(1024, 16);
    const auto level = [](double x) { return 100.0 + 20.0 * x / 1023.0; };
    for (size_t i = 0; i < plane.samples.size(); ++i)
        plane.samples[i] = static_cast<float>(level(static_cast<double>(i % 1024)));
    const std::vector<double> means = blockMeans(toBytes(plane, {1024, 16}));
    for (size_t i = 0; i < means.size(); ++i)
        ASSERT_NEAR(means[i], level(4.0 * static_cast<double>(i % 256) + 1.5), 0.1) << "block " << i;
}

TEST(ToBytes, LeavesNoBandsInARampThatScalingDrewOut) {
    Image<float, 1> plane(16, 16);
    for (size_t i = 0; i < plane.samples.size(); ++i) plane.samples[i] = 100.0f + static_cast<float>(i / 16);
    const std::vector<double> means = blockMeans(toBytes(plane, {64, 256}));
    // Between the middles of the first and the last row a sixteenth of a level a row.
    for (size_t i = 0; i < means.size(); ++i) {
        const double y = 4.0 * static_cast<double>(i / 16) + 1.5;
        if (y < 8.0 || y > 247.0) continue;
        ASSERT_NEAR(means[i], 100.0 + (y + 0.5) / 16.0 - 0.5, 0.1) << "block " << i;
    }
}

TEST(ToBytes, GivesTheSameBytesEveryTime) {
    Image<float, 1> plane(50, 40);
    for (size_t i = 0; i < plane.samples.size(); ++i) plane.samples[i] = static_cast<float>(i) * 0.1f;
    EXPECT_EQ(toBytes(plane, {80, 72}).samples, toBytes(plane, {80, 72}).samples);
}

TEST(ToBytes, ScalesAnEdgeWithoutOvershoot) {
    Image<float, 1> plane(16, 16);
    for (size_t i = 0; i < plane.samples.size(); ++i) plane.samples[i] = i % 16 < 8 ? 50.0f : 200.0f;
    for (const Size size : {Size{64, 64}, Size{40, 52}, Size{6, 5}}) {
        const GrayImage bytes = toBytes(plane, size);
        ASSERT_EQ(bytes.width, size.width);
        ASSERT_EQ(bytes.height, size.height);
        const auto [low, high] = std::minmax_element(bytes.samples.begin(), bytes.samples.end());
        EXPECT_EQ(*low, 50);
        EXPECT_EQ(*high, 200);
        // And every row stays monotone: linear between the samples.
        for (int y = 0; y < size.height; ++y)
            EXPECT_TRUE(std::is_sorted(bytes.samples.begin() + y * size.width,
                                       bytes.samples.begin() + (y + 1) * size.width));
    }
}

}  // namespace
}  // namespace quorvane::media
