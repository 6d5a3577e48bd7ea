#include "media/clip/yuv420.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <random>

#include "support/temporary_folder.h"

namespace quorvane::media {
namespace {

constexpr int kWidth = 94, kHeight = 38;

RgbaImage noise() {
    RgbaImage image(kWidth, kHeight);
    std::mt19937 random(5);
    for (uint8_t& sample : image.samples) sample = static_cast<uint8_t>(random());
    // The ends of the scale and pure colours.
    for (int x = 0; x < 16; ++x)
        for (int y = 0; y < 4; ++y)
            for (int c = 0; c < 3; ++c)
                (&image.at(x, y))[c] = ((x / 2) >> c & 1) != 0 ? uint8_t{255} : uint8_t{0};
    for (size_t i = 3; i < image.samples.size(); i += 4) image.samples[i] = 255;
    return image;
}

struct Colour {
    double red, green, blue;
};

Colour colourAt(const RgbaImage& image, int x, int y) {
    const uint8_t* pixel = &image.at(x, y);
    return {pixel[0] / 255.0, pixel[1] / 255.0, pixel[2] / 255.0};
}

double lumaOf(const Colour& colour) {
    return 0.2126 * colour.red + 0.7152 * colour.green + 0.0722 * colour.blue;
}

// As ITU-R BT.709-6 has it in 3.2 to 3.4 and 4.6, in double precision.
TEST(Yuv420, IsBt709InLimitedRange) {
    const RgbaImage image = noise();
    std::vector<uint8_t> planes;
    toYuv420(image, &planes);
    ASSERT_EQ(planes.size(), size_t{kWidth} * kHeight * 3 / 2);
    // Rounding takes half a level, the arithmetic less than a fiftieth.
    constexpr double kMost = 0.52;
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x)
            ASSERT_NEAR(planes[static_cast<size_t>(y * kWidth + x)],
                        16.0 + 219.0 * lumaOf(colourAt(image, x, y)), kMost);
    const size_t cb = size_t{kWidth} * kHeight, cr = cb + cb / 4;
    for (int y = 0; y < kHeight / 2; ++y)
        for (int x = 0; x < kWidth / 2; ++x) {
            Colour mean = {0.0, 0.0, 0.0};
            for (int i = 0; i < 4; ++i) {
                const Colour one = colourAt(image, 2 * x + i % 2, 2 * y + i / 2);
                mean.red += one.red / 4.0;
                mean.green += one.green / 4.0;
                mean.blue += one.blue / 4.0;
            }
            const double luma = lumaOf(mean);
            const size_t at = static_cast<size_t>(y * (kWidth / 2) + x);
            ASSERT_NEAR(planes[cb + at], 128.0 + 224.0 * (mean.blue - luma) / 1.8556, kMost);
            ASSERT_NEAR(planes[cr + at], 128.0 + 224.0 * (mean.red - luma) / 1.5748, kMost);
        }
}

TEST(Yuv420, KeepsBlackGrayAndWhite) {
    for (const auto& [level, luma] : {std::pair(0, 16), std::pair(128, 126), std::pair(255, 235)}) {
        RgbaImage image(16, 2);
        for (uint8_t& sample : image.samples) sample = static_cast<uint8_t>(level);
        std::vector<uint8_t> planes;
        toYuv420(image, &planes);
        for (size_t i = 0; i < planes.size(); ++i) ASSERT_EQ(planes[i], i < 32 ? luma : 128);
    }
}

// What ffmpeg makes of the same pixels, with its own scaler at its most exact.
TEST(Yuv420, AgreesWithFfmpeg) {
    const test::TemporaryFolder folder;
    const RgbaImage image = noise();
    test::writeBytes(folder / "a.rgba", {image.samples.begin(), image.samples.end()});
    const std::string command =
        "ffmpeg -v error -f rawvideo -pix_fmt rgba -s 94x38 -i '" + (folder / "a.rgba") +
        "' -vf "
        "scale=out_color_matrix=bt709:out_range=tv:flags=area+accurate_rnd+full_chroma_inp,format=yuv420p "
        "-f rawvideo '" +
        (folder / "a.yuv") + "'";
    ASSERT_EQ(std::system(command.c_str()), 0);
    const std::string theirs = test::bytesOf(folder / "a.yuv");
    std::vector<uint8_t> ours;
    toYuv420(image, &ours);
    ASSERT_EQ(theirs.size(), ours.size());
    double sum = 0.0;
    for (size_t i = 0; i < ours.size(); ++i) {
        const int off = std::abs(int{ours[i]} - int{static_cast<uint8_t>(theirs[i])});
        ASSERT_LE(off, 2) << i;
        sum += off;
    }
    EXPECT_LT(sum / static_cast<double>(ours.size()), 0.2);
}

}  // namespace
}  // namespace quorvane::media
