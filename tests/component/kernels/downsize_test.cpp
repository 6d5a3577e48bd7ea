#include <algorithm>

#include "support/component_test.h"
#include "support/guarded_bytes.h"
#include "support/models.h"

namespace quorvane::test {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr int kRatios[] = {1, 2, 4, 8, 16, 32};
constexpr uint32_t kSeed = 20240117;

size_t area(int w, int h) { return static_cast<size_t>(w) * static_cast<size_t>(h); }

class Downsize : public ComponentTest {
  protected:
    /// Every buffer ends or starts exactly at a no-access page.
    Bytes gray(const Bytes& source, int src_w, int src_h, int dst_w, int dst_h,
               GuardedBytes::Against against = GuardedBytes::Against::end) const {
        const GuardedBytes src(source, against);
        GuardedBytes dst(area(dst_w, dst_h), against);
        renderer.downsize(src_w, src_h, src.data(), dst_w, dst_h, dst.data(), false);
        EXPECT_TRUE(dst.surroundingsUntouched());
        return dst.bytes();
    }

    /// `source` is the image and what lies behind it.
    Bytes luma(const Bytes& source, int src_w, int src_h, int dst_w, int dst_h,
               GuardedBytes::Against against = GuardedBytes::Against::end) const {
        const GuardedBytes src(source, against);
        GuardedBytes dst(area(dst_w, dst_h), against);
        renderer.downsize(src_w, src_h, src.data(), dst_w, dst_h, dst.data(), true);
        EXPECT_TRUE(dst.surroundingsUntouched());
        return dst.bytes();
    }

    Bytes constantGray(int value, int ratio_h, int ratio_v) const {
        const int w = 3 * ratio_h, h = 3 * ratio_v;
        return gray(Bytes(area(w, h), static_cast<uint8_t>(value)), w, h, 3, 3);
    }

    /// Colour noise with as many bytes behind the image as the widest margin may read.
    static Bytes colourNoise(int w, int h, int ratio_h) {
        return noise(3 * area(w, h) + 3 * static_cast<size_t>(weightsOf(ratio_h).margin), kSeed);
    }

    const ESRenderer renderer;
};

TEST_F(Downsize, Log2OfAPowerOfTwoIsItsExponent) {
    EXPECT_EQ(renderer.simple_log2(2), 1u);
    EXPECT_EQ(renderer.simple_log2(4), 2u);
    EXPECT_EQ(renderer.simple_log2(16), 4u);
    EXPECT_EQ(renderer.simple_log2(32), 5u);
    for (uint32_t k = 1; k <= 31; ++k) EXPECT_EQ(renderer.simple_log2(uint32_t{1} << k), k);
}

TEST_F(Downsize, Log2OfAnythingElseIs0) {
    for (const uint32_t value :
         {0u, 1u, 3u, 5u, 6u, 7u, 9u, 31u, 33u, 100u, 0x7fffffffu, 0x80000001u, 0xffffffffu})
        EXPECT_EQ(renderer.simple_log2(value), 0u) << value;
}

TEST_F(Downsize, EqualSizesCopyGrayByteForByte) {
    const Bytes image = noise(37 * 11, kSeed);
    EXPECT_EQ(gray(image, 37, 11, 37, 11), image);
}

TEST_F(Downsize, EqualSizesTurnColourIntoStudioSwingLuma) {
    EXPECT_THAT(luma({255, 255, 255, 0, 0, 0, 255, 0, 0, 0, 255, 0, 0, 0, 255}, 5, 1, 5, 1),
                ElementsAre(235, 16, (66 * 255 + 128) / 256 + 16, (129 * 255 + 128) / 256 + 16,
                            (25 * 255 + 128) / 256 + 16));
}

TEST_F(Downsize, EqualSizesWeighEveryColour) {
    const Bytes image = noise(3 * 64 * 64, kSeed);
    const Bytes result = luma(image, 64, 64, 64, 64);
    for (size_t i = 0; i < result.size(); ++i)
        ASSERT_EQ(result[i],
                  ((66 * image[3 * i] + 129 * image[3 * i + 1] + 25 * image[3 * i + 2] + 128) >> 8) + 16);
}

TEST_F(Downsize, Constant255StaysAtRatios2And4And8) {
    for (const int ratio : {1, 2, 4, 8}) EXPECT_THAT(constantGray(255, ratio, ratio), Each(255)) << ratio;
}

TEST_F(Downsize, EveryConstantStaysAtRatio4) {
    for (int value = 0; value < 256; ++value) EXPECT_THAT(constantGray(value, 4, 4), Each(value));
}

TEST_F(Downsize, Constant255DarkensTo251AtRatio16) { EXPECT_THAT(constantGray(255, 16, 16), Each(251)); }
TEST_F(Downsize, Constant255DarkensTo239AtRatio32) { EXPECT_THAT(constantGray(255, 32, 32), Each(239)); }
TEST_F(Downsize, Constant255DarkensTo253AtRatio16Across4Down) {
    EXPECT_THAT(constantGray(255, 16, 4), Each(253));
}
TEST_F(Downsize, Constant255DarkensTo253AtRatio4Across16Down) {
    EXPECT_THAT(constantGray(255, 4, 16), Each(253));
}
TEST_F(Downsize, Constant128DarkensTo126AtRatio16) { EXPECT_THAT(constantGray(128, 16, 16), Each(126)); }

TEST_F(Downsize, ConstantFollowsTheKernelSumsAtEveryRatioPair) {
    const int sums[] = {256, 256, 256, 256, 254, 248};
    for (size_t h = 0; h < 6; ++h)
        for (size_t v = 0; v < 6; ++v)
            for (const int value : {0, 1, 127, 128, 254, 255}) {
                const int expected = (value * sums[h] * sums[v] + 32768) / 65536;
                EXPECT_THAT(constantGray(value, kRatios[h], kRatios[v]), Each(expected))
                    << kRatios[h] << " x " << kRatios[v] << ", " << value;
            }
}

TEST_F(Downsize, WhiteStays235AtRatio4) {
    EXPECT_THAT(luma(Bytes(3 * 16 * 16 + 6, 255), 16, 16, 4, 4), Each(235));
}

TEST_F(Downsize, OneBrightPixelShowsTheKernel) {
    // At ratio 4 the window of output 1 covers columns 2..9; the middle row of a tall image alone counts.
    const int row_weights[] = {4, 18, 43, 63, 63, 43, 18, 4};
    for (int x = 0; x < 12; ++x) {
        Bytes image(12, 0);
        image[static_cast<size_t>(x)] = 200;
        const int weight = x >= 2 && x <= 9 ? row_weights[x - 2] : 0;
        EXPECT_EQ(gray(image, 12, 1, 3, 1)[1], (200 * weight * 256 + 32768) / 65536) << "column " << x;
    }
}

TEST_F(Downsize, TheWidestKernelIsLopsided) {
    // Its last weight is 0, its first is not: of two mirrored pixels only one counts.
    Bytes first(96, 0), last(96, 0);
    first[32 - 10] = 255;
    last[32 + 32 + 10 - 1] = 255;
    const auto sum = [](int weight) { return (255 * weight * 256 + 32768) / 65536; };
    EXPECT_EQ(gray(first, 96, 1, 3, 1)[1], sum(1));
    EXPECT_EQ(gray(last, 96, 1, 3, 1)[1], sum(0));
}

TEST_F(Downsize, GrayMatchesTheSeparableModelAtEveryRatioPair) {
    for (const int h : kRatios)
        for (const int v : kRatios)
            for (const auto& [dst_w, dst_h] : {std::pair{1, 1}, {2, 1}, {1, 3}, {5, 4}}) {
                const int src_w = dst_w * h, src_h = dst_h * v;
                SCOPED_TRACE(testing::Message() << src_w << "x" << src_h << " to " << dst_w << "x" << dst_h);
                const Bytes image = noise(area(src_w, src_h), kSeed);
                EXPECT_EQ(gray(image, src_w, src_h, dst_w, dst_h),
                          reducedGray(image, src_w, src_h, dst_w, dst_h));
            }
}

TEST_F(Downsize, GrayTouchesNothingOutsideEitherBuffer) {
    for (const int h : kRatios)
        for (const int v : kRatios)
            for (const auto against : {GuardedBytes::Against::end, GuardedBytes::Against::start}) {
                const Bytes image = noise(area(2 * h, 2 * v), kSeed);
                EXPECT_EQ(gray(image, 2 * h, 2 * v, 2, 2, against), reducedGray(image, 2 * h, 2 * v, 2, 2));
            }
}

TEST_F(Downsize, GrayMatchesTheModelAtEveryWidthAndHeight) {
    for (int w = 1; w <= 40; ++w)
        for (int h = 1; h <= 40; ++h)
            for (const auto& [dst_w, dst_h] :
                 {std::pair{w, h}, {(w + 3) / 4, (h + 1) / 2}, {(w + 7) / 8, h}}) {
                const int ratio_h = w / dst_w, ratio_v = h / dst_h;
                if (std::find(std::begin(kRatios), std::end(kRatios), ratio_h) == std::end(kRatios)) continue;
                if (std::find(std::begin(kRatios), std::end(kRatios), ratio_v) == std::end(kRatios)) continue;
                SCOPED_TRACE(testing::Message() << w << "x" << h << " to " << dst_w << "x" << dst_h);
                const Bytes image = noise(area(w, h), kSeed + static_cast<uint32_t>(w * 64 + h));
                ASSERT_EQ(gray(image, w, h, dst_w, dst_h), reducedGray(image, w, h, dst_w, dst_h));
            }
}

TEST_F(Downsize, WidthThatIsNoMultipleKeepsItsTruncatedRatio) {
    // 11 / 2 = 5 has no kernel, 19 / 4 = 4 has: columns 16..18 only reach the last margin.
    const Bytes image = noise(19 * 4, kSeed);
    Bytes cut = image;
    for (size_t row = 0; row < 4; ++row) cut[row * 19 + 18] ^= 0xff;
    EXPECT_EQ(gray(image, 19, 4, 4, 1), reducedGray(image, 19, 4, 4, 1));
    EXPECT_EQ(gray(cut, 19, 4, 4, 1), gray(image, 19, 4, 4, 1)) << "column 18 lies outside every window";
}

TEST_F(Downsize, BordersRepeatTheEdge) {
    for (const int ratio : kRatios) {
        // Left half one value, right half another, padded by hand with one more block of the edge on all
        // sides.
        const int w = 2 * ratio, h = 2 * ratio;
        const Bytes image = noise(area(w, h), kSeed + 5);
        Bytes padded;
        for (int y = -ratio; y < h + ratio; ++y)
            for (int x = -ratio; x < w + ratio; ++x)
                padded.push_back(
                    image[static_cast<size_t>(std::clamp(y, 0, h - 1) * w + std::clamp(x, 0, w - 1))]);
        const Bytes inner = gray(image, w, h, 2, 2);
        const Bytes outer = gray(padded, w + 2 * ratio, h + 2 * ratio, 4, 4);
        EXPECT_THAT(inner, ElementsAre(outer[5], outer[6], outer[9], outer[10])) << ratio;
    }
}

TEST_F(Downsize, LumaMatchesTheModelAtEveryRatioPair) {
    for (const int h : kRatios)
        for (const int v : kRatios)
            for (const auto& [dst_w, dst_h] : {std::pair{1, 1}, {2, 1}, {1, 3}, {4, 3}}) {
                const int src_w = dst_w * h, src_h = dst_h * v;
                SCOPED_TRACE(testing::Message() << src_w << "x" << src_h << " to " << dst_w << "x" << dst_h);
                const Bytes image = colourNoise(src_w, src_h, h);
                EXPECT_EQ(luma(image, src_w, src_h, dst_w, dst_h),
                          reducedLuma(image, src_w, src_h, dst_w, dst_h));
            }
}

TEST_F(Downsize, LumaReadsAtMostItsMarginPastTheImageAndNothingBefore) {
    for (const int h : kRatios)
        for (const auto against : {GuardedBytes::Against::end, GuardedBytes::Against::start}) {
            const Bytes image = colourNoise(2 * h, 4, h);
            EXPECT_EQ(luma(image, 2 * h, 4, 2, 1, against), reducedLuma(image, 2 * h, 4, 2, 1)) << h;
        }
}

TEST_F(Downsize, LumasRightBorderReadsTheNextRowsFirstPixels) {
    // Two rows; only the second row's first pixels are bright. At ratio 4 across the window of the last
    // output runs two pixels past the first row, into them.
    Bytes image(3 * 8 * 2 + 6, 0);
    for (size_t i = 0; i < 6; ++i) image[3 * 8 + i] = 255;
    const Bytes result = luma(image, 8, 2, 2, 2);
    // Black is 16 everywhere; both margin taps (18 and 4) see white, 235, instead.
    EXPECT_EQ(result[1], (256 * (16 * (256 - 22) + 235 * 22) + 32768) / 65536);
    EXPECT_EQ(result[3], 16);
}

TEST_F(Downsize, LumasLastRowReadsPastTheImage) {
    Bytes image(3 * 8 * 2 + 6, 0);
    std::fill(image.end() - 6, image.end(), uint8_t{255});
    const Bytes result = luma(image, 8, 2, 2, 2);
    EXPECT_EQ(result[1], 16);
    EXPECT_EQ(result[3], (256 * (16 * (256 - 22) + 235 * 22) + 32768) / 65536);
}

TEST_F(Downsize, LumasOtherBordersRepeatTheEdge) {
    // The outermost pixels are white, and nothing but the left, top and bottom margins can see more of them.
    const int w = 12, h = 12;
    Bytes image(3 * area(w, h) + 6, 0);
    for (size_t y = 0; y < 12; ++y)
        for (size_t c = 0; c < 3; ++c) image[(y * 12) * 3 + c] = 255;
    const Bytes result = luma(image, w, h, 3, 3);
    // Column 0 is white: two margin taps and the block's first, 4 + 18 + 43.
    const int expected = (256 * (16 * (256 - 65) + 235 * 65) + 32768) / 65536;
    EXPECT_EQ(result[0], expected);
    EXPECT_EQ(result[3], expected);
    EXPECT_EQ(result[6], expected);
}

TEST_F(Downsize, LumasTopAndBottomRepeatTheirRow) {
    const int w = 12, h = 8;
    Bytes image(3 * area(w, h) + 6, 0);
    std::fill(image.begin(), image.begin() + 3 * w, uint8_t{255});
    const Bytes result = luma(image, w, h, 3, 2);
    EXPECT_EQ(result[1], (256 * (16 * (256 - 65) + 235 * 65) + 32768) / 65536);
    EXPECT_EQ(result[4], 16);
}

TEST_F(Downsize, LumaOfAllColoursAtTheirLargestFitsAByte) {
    for (const int h : kRatios)
        for (const int v : kRatios) {
            const Bytes white(3 * area(3 * h, 3 * v) + 3 * static_cast<size_t>(weightsOf(h).margin), 255);
            EXPECT_EQ(luma(white, 3 * h, 3 * v, 3, 3), reducedLuma(white, 3 * h, 3 * v, 3, 3));
        }
}

TEST_F(Downsize, RatiosAreChosenForEachAxisAlone) {
    const Bytes image = noise(area(64, 6), kSeed);
    EXPECT_EQ(gray(image, 64, 6, 2, 6), reducedGray(image, 64, 6, 2, 6));
    EXPECT_EQ(gray(image, 64, 6, 64, 3), reducedGray(image, 64, 6, 64, 3));
}

TEST_F(Downsize, SizeBelow1WritesAndSaysNothing) {
    const Bytes source(64, 9);
    for (const auto& [dst_w, dst_h] : {std::pair{0, 4}, {4, 0}, {0, 0}, {-4, 4}, {4, -4}, {-2, -2}}) {
        for (const bool is_rgb : {false, true}) {
            GuardedBytes dst(16);
            const Bytes before = dst.bytes();
            renderer.downsize(4, 4, source.data(), dst_w, dst_h, dst.data(), is_rgb);
            EXPECT_EQ(dst.bytes(), before);
            EXPECT_THAT(timeline.lines(), IsEmpty()) << dst_w << " x " << dst_h;
        }
    }
}

TEST_F(Downsize, RatioWithoutAKernelWritesNothingAndLogsOneLine) {
    const Bytes source(128 * 128, 9);
    for (const auto& [src, dst] : {std::pair{6, 2}, {10, 2}, {48, 2}, {128, 2}, {2, 4}, {0, 4}, {-8, 2}}) {
        GuardedBytes pixels(area(dst, dst));
        const Bytes before = pixels.bytes();
        log.clear();
        renderer.downsize(src, dst, source.data(), dst, dst, pixels.data(), false);
        renderer.downsize(dst, src, source.data(), dst, dst, pixels.data(), false);
        EXPECT_EQ(pixels.bytes(), before);
        const auto line = [](int from_w, int from_h, int side) {
            return debugLine("downsize: cannot reduce " + std::to_string(from_w) + " x " +
                             std::to_string(from_h) + " to " + std::to_string(side) + " x " +
                             std::to_string(side) + "\n");
        };
        EXPECT_THAT(log.lines(), ElementsAre(line(src, dst, dst), line(dst, src, dst)));
    }
}

TEST_F(Downsize, AReductionSaysNothing) {
    gray(Bytes(16, 1), 4, 4, 1, 1);
    EXPECT_THAT(timeline.lines(), IsEmpty());
}

}  // namespace
}  // namespace quorvane::test
