#include "fit.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

#include "vips.h"

namespace quorvane::media {
namespace {

constexpr int kDepthPixelsPerCell = 4;

Size sizeOf(const vips::VImage& image) { return {image.width(), image.height()}; }

int ceilDivide(int value, int divisor) { return (value - 1) / divisor + 1; }

/// The renderer's working memory for these sizes stays within its 32-bit byte count.
bool blockFits(Size grid, int ratio) {
    // Exact as a double wherever it fits; a 64-bit count could overflow where it does not.
    const double w = grid.width, h = grid.height;
    const double bytes =
        3 * (w * ratio) * (h * ratio) + 57 * w * h + 40 * h * (w + 1) + 12 * (w + 1) * (h + 1);
    return bytes <= std::numeric_limits<int32_t>::max();
}

Size scaledInto(Size size, int longest) {
    const int side = std::max(size.width, size.height);
    if (side <= longest) return size;
    const auto scaled = [=](int length) {
        return std::max(1, static_cast<int>(std::lround(static_cast<double>(length) * longest / side)));
    };
    return {scaled(size.width), scaled(size.height)};
}

vips::VImage resized(const vips::VImage& image, Size size, VipsKernel kernel) {
    return image.resize(static_cast<double>(size.width) / image.width(),
                        vips::VImage::option()
                            ->set("vscale", static_cast<double>(size.height) / image.height())
                            ->set("kernel", kernel));
}

template <typename Picture>
Picture part(const Picture& image, int from_left, int from_top, Size size) {
    Picture out(size.width, size.height);
    const size_t channels =
        out.samples.size() / (static_cast<size_t>(size.width) * static_cast<size_t>(size.height));
    const size_t left = static_cast<size_t>(from_left), top = static_cast<size_t>(from_top);
    for (size_t y = 0; y < static_cast<size_t>(size.height); ++y) {
        const auto row =
            image.samples.begin() +
            static_cast<std::ptrdiff_t>(((top + y) * static_cast<size_t>(image.width) + left) * channels);
        std::copy_n(row, static_cast<size_t>(size.width) * channels,
                    out.samples.begin() +
                        static_cast<std::ptrdiff_t>(y * static_cast<size_t>(size.width) * channels));
    }
    return out;
}

template <typename Picture>
Picture cropMiddle(const Picture& image, Size size) {
    return part(image, (image.width - size.width) / 2, (image.height - size.height) / 2, size);
}

// Bayer's 4 x 4 thresholds for ordered dithering: what is lost by taking bytes comes back in the mean of
// every block of 4 x 4, up to 1 / 32 of a level, and those blocks are what the renderer reduces to one
// sample. Noise without such a period, or errors carried on from pixel to pixel, would outlive that. Each
// lies in the middle of its sixteenth, so that whole levels stay, whatever scaling did to their last bits.
constexpr int kThresholdOrder[4][4] = {{0, 8, 2, 10}, {12, 4, 14, 6}, {3, 11, 1, 9}, {15, 7, 13, 5}};

/// Four rows of thresholds.
Image<float, 1> ditherThresholds(int width) {
    Image<float, 1> rows(width, 4);
    float* next = rows.samples.data();
    for (const auto& order : kThresholdOrder)
        for (int x = 0; x < width; ++x) *next++ = (static_cast<float>(order[x % 4]) + 0.5f) / 16.0f;
    return rows;
}

}  // namespace

Fit fitSizes(Size photo, Size depth, int largest_photo_side) {
    Size source = scaledInto(photo, largest_photo_side);
    const auto grid_for = [&](int ratio) {
        // A side at the driver's limit cannot grow into the next cell.
        const int most_cells = largest_photo_side / ratio;
        return Size{std::min(ceilDivide(source.width, ratio), most_cells),
                    std::min(ceilDivide(source.height, ratio), most_cells)};
    };
    const auto keeps_detail = [&](int ratio) {
        const auto keeps = [&](int photo_side, int cells, int depth_side) {
            // The last cell reaches past the photo or, at the limit, stops short of it.
            const int64_t covered = std::min(int64_t{photo_side}, int64_t{cells} * ratio);
            return covered * kDepthPixelsPerCell >= int64_t{depth_side} * ratio;
        };
        const Size grid = grid_for(ratio);
        return keeps(source.width, grid.width, depth.width) &&
               keeps(source.height, grid.height, depth.height);
    };
    const int largest_ratio = std::min(32, largest_photo_side);

    int ratio = 1;
    while (2 * ratio <= largest_ratio && keeps_detail(2 * ratio)) ratio *= 2;
    while (2 * ratio <= largest_ratio && !blockFits(grid_for(ratio), ratio)) ratio *= 2;
    // Then only a smaller photo helps.
    while (!blockFits(grid_for(ratio), ratio))
        source = scaledInto(source, std::max(source.width, source.height) / 8 * 7);

    Fit fit;
    fit.ratio = ratio;
    fit.grid = grid_for(ratio);
    fit.photo = {fit.grid.width * ratio, fit.grid.height * ratio};
    fit.depth = {fit.grid.width * kDepthPixelsPerCell, fit.grid.height * kDepthPixelsPerCell};
    return fit;
}

Size pictureSize(Size photo, int longest, bool even) {
    Size size = scaledInto(photo, longest);
    if (even) size = {std::max(2, size.width & ~1), std::max(2, size.height & ~1)};
    return size;
}

Size croppedSize(Size image, Size wanted) {
    const double aspect = static_cast<double>(wanted.width) / wanted.height;
    const int width = static_cast<int>(std::lround(std::min<double>(image.width, image.height * aspect)));
    const int height = static_cast<int>(std::lround(std::min<double>(image.height, image.width / aspect)));
    return {std::max(1, width), std::max(1, height)};
}

RgbImage cut(const RgbImage& image, int left, int top, Size size) { return part(image, left, top, size); }

RgbImage crop(const RgbImage& image, Size size) { return cropMiddle(image, size); }
Image<float, 1> crop(const Image<float, 1>& image, Size size) { return cropMiddle(image, size); }

RgbImage resample(RgbImage image, Size size) {
    if (Size{image.width, image.height} == size) return image;
    try {
        return fromVips<uint8_t, 3>(resized(toVips(image), size, VIPS_KERNEL_LANCZOS3));
    } catch (const vips::VError&) {
        throw Error("the photo cannot be resampled (" + vipsReason() + ")");
    }
}

GrayImage toBytes(const Image<float, 1>& plane, Size size) {
    try {
        vips::VImage image = toVips(plane);
        if (sizeOf(image) != size) image = resized(image, size, VIPS_KERNEL_LINEAR);
        const Image<float, 1> rows = ditherThresholds(size.width);
        const vips::VImage thresholds = toVips(rows)
                                            .replicate(1, ceilDivide(size.height, rows.height))
                                            .crop(0, 0, size.width, size.height);
        return fromVips<uint8_t, 1>((image + thresholds).floor());
    } catch (const vips::VError&) {
        throw Error("the depth map cannot be scaled (" + vipsReason() + ")");
    }
}

}  // namespace quorvane::media
