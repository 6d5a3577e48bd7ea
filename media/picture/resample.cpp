#include "media/picture/resample.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "media/picture/vips.h"
#include "system/error.h"

namespace quorvane::media {
namespace {

Size sizeOf(const vips::VImage& image) { return {image.width(), image.height()}; }

int ceilDivide(int value, int divisor) { return (value - 1) / divisor + 1; }

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

Error notResized(const char* what, Size from, Size to) {
    const auto sides = [](Size size) {
        return std::to_string(size.width) + " x " + std::to_string(size.height);
    };
    return Error(std::string(what) + " (" +
                 vipsReason("from " + sides(from) + " to " + sides(to) + " pixels") + ")");
}

}  // namespace

RgbImage cut(const RgbImage& image, int left, int top, Size size) { return part(image, left, top, size); }

RgbImage crop(const RgbImage& image, Size size) { return cropMiddle(image, size); }
Image<float, 1> crop(const Image<float, 1>& image, Size size) { return cropMiddle(image, size); }

RgbImage resample(RgbImage image, Size size) {
    if (Size{image.width, image.height} == size) return image;
    try {
        return fromVips<uint8_t, 3>(resized(toVips(image), size, VIPS_KERNEL_LANCZOS3));
    } catch (const vips::VError&) {
        throw notResized("the photo cannot be resampled", {image.width, image.height}, size);
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
        throw notResized("the depth map cannot be scaled", {plane.width, plane.height}, size);
    }
}

}  // namespace quorvane::media
