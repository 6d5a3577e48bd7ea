#include "media/picture/resample.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numeric>

#include "media/picture/crop.h"

namespace quorvane::media {
namespace {

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
