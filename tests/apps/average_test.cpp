#include "apps/quorvane/drawing/average.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace quorvane::app {
namespace {

media::RgbaImage noise(int width, int height) {
    media::RgbaImage image(width, height);
    uint32_t state = 7;
    for (uint8_t& sample : image.samples)
        sample = static_cast<uint8_t>((state = state * 1664525u + 1013904223u) >> 24);
    return image;
}

TEST(Average, IsTheMeanOfEachBlock) {
    for (const int n : {1, 2, 3, 4, 16}) {
        const Size size = {13, 5};
        const media::RgbaImage drawn = noise(size.width * n, size.height * n);
        media::RgbaImage out;
        average(drawn, size, &out);
        ASSERT_EQ(out.width, size.width);
        ASSERT_EQ(out.height, size.height);
        for (int y = 0; y < size.height; ++y)
            for (int x = 0; x < size.width; ++x)
                for (int c = 0; c < 4; ++c) {
                    double mean = 0.0;
                    for (int j = 0; j < n; ++j)
                        for (int i = 0; i < n; ++i)
                            mean += (&drawn.at(x * n + i, y * n + j))[c] / double(n * n);
                    EXPECT_NEAR((&out.at(x, y))[c], mean, 0.5 + 1e-9) << n << ": " << x << ", " << y;
                }
    }
}

TEST(Average, RoundsHalfUpAndHoldsTheBrightest) {
    media::RgbaImage drawn(4, 2), out;
    drawn.samples = {0, 0, 1, 255, 0, 1, 1, 255, 9, 9, 9, 255, 9, 9, 9, 255,
                     0, 0, 0, 255, 1, 1, 0, 255, 9, 9, 9, 255, 9, 9, 9, 255};
    average(drawn, {2, 1}, &out);
    EXPECT_EQ(out.samples, (std::vector<uint8_t>{0, 1, 1, 255, 9, 9, 9, 255}));
    media::RgbaImage white(32, 32);
    white.samples.assign(white.samples.size(), 255);
    out = {};
    average(white, {2, 2}, &out);
    EXPECT_EQ(out.samples, std::vector<uint8_t>(16, 255));
}

}  // namespace
}  // namespace quorvane::app
