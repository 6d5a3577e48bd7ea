#include "media/picture/resample.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <random>
#include <utility>
#include <vector>

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

/// What a sample of a photo made smaller should be, by its definition. Pixels beyond the border are those at
/// it.
double lanczosAt(const RgbImage& photo, Size size, int x, int y, size_t channel) {
    const auto weight = [](double distance) {
        const auto sinc = [](double t) { return t == 0.0 ? 1.0 : std::sin(M_PI * t) / (M_PI * t); };
        return std::abs(distance) < 3.0 ? sinc(distance) * sinc(distance / 3.0) : 0.0;
    };
    const double across = static_cast<double>(photo.width) / size.width;
    const double down = static_cast<double>(photo.height) / size.height;
    const double centre_x = (x + 0.5) * across, centre_y = (y + 0.5) * down;
    const auto from = [](double centre, double ratio) { return static_cast<int>(centre - 3.0 * ratio) - 1; };
    const auto to = [](double centre, double ratio) { return static_cast<int>(centre + 3.0 * ratio) + 1; };
    double sum = 0.0, weights = 0.0;
    for (int j = from(centre_y, down); j <= to(centre_y, down); ++j)
        for (int i = from(centre_x, across); i <= to(centre_x, across); ++i) {
            const double share = weight((i + 0.5 - centre_x) / across) * weight((j + 0.5 - centre_y) / down);
            const uint8_t* pixel =
                &photo.at(std::clamp(i, 0, photo.width - 1), std::clamp(j, 0, photo.height - 1));
            sum += share * pixel[channel];
            weights += share;
        }
    return std::clamp(sum / weights, 0.0, 255.0);
}

TEST(Resample, MakesAPhotoSmallerByLanczosSums) {
    std::minstd_rand random(1);
    RgbImage noise(97, 61), squares(64, 64), sharp(33, 130);
    for (uint8_t& sample : noise.samples) sample = static_cast<uint8_t>(random() >> 8);
    // Nothing overshoots more than black next to white.
    for (int y = 0; y < squares.height; ++y)
        for (int x = 0; x < squares.width; ++x)
            std::fill_n(&squares.at(x, y), 3, (x / 8 + y / 8) % 2 == 0 ? uint8_t{0} : uint8_t{255});
    for (uint8_t& sample : sharp.samples) sample = random() % 2 == 0 ? uint8_t{0} : uint8_t{255};
    for (const auto& [photo, size] : {std::pair(&noise, Size{60, 40}),
                                      {&noise, Size{97, 23}},
                                      {&noise, Size{96, 61}},
                                      {&noise, Size{1, 2}},
                                      {&squares, Size{40, 36}},
                                      {&squares, Size{63, 9}},
                                      {&sharp, Size{21, 90}},
                                      {&sharp, Size{30, 4}}}) {
        const RgbImage smaller = resample(*photo, size);
        ASSERT_EQ((Size{smaller.width, smaller.height}), size);
        double worst = 0.0;
        for (int y = 0; y < size.height; ++y)
            for (int x = 0; x < size.width; ++x)
                for (size_t c = 0; c < 3; ++c)
                    worst =
                        std::max(worst, std::abs((&smaller.at(x, y))[c] - lanczosAt(*photo, size, x, y, c)));
        EXPECT_LT(worst, 0.7) << photo->width << " x " << photo->height << " to " << size.width << " x "
                              << size.height;
    }
}

TEST(Resample, LeavesConstantColoursAsTheyAre) {
    for (const uint8_t level : {uint8_t{0}, uint8_t{1}, uint8_t{128}, uint8_t{255}}) {
        RgbImage image(301, 77);
        std::fill(image.samples.begin(), image.samples.end(), level);
        for (const Size size : {Size{300, 77}, Size{123, 31}, Size{7, 3}})
            EXPECT_THAT(resample(image, size).samples, testing::Each(level));
    }
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
