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

template <typename Sample, int kChannels>
Image<Sample, kChannels> part(const Image<Sample, kChannels>& image, int left, int top, Size size) {
    Image<Sample, kChannels> out(size.width, size.height);
    const bool inside = left >= 0 && left + size.width <= image.width;
    for (int y = 0; y < size.height; ++y) {
        const int from_y = std::clamp(top + y, 0, image.height - 1);
        if (inside) {
            std::copy_n(&image.at(left, from_y), size.width * kChannels, out.row(y));
            continue;
        }
        for (int x = 0; x < size.width; ++x)
            std::copy_n(&image.at(std::clamp(left + x, 0, image.width - 1), from_y), kChannels,
                        &out.at(x, y));
    }
    return out;
}

template <typename Picture>
Picture cropMiddle(const Picture& image, Size size) {
    const auto half = [](int length) { return static_cast<int>(std::floor(length / 2.0)); };
    return part(image, half(image.width - size.width), half(image.height - size.height), size);
}

// Bayer's 4 x 4 thresholds for ordered dithering: what is lost by taking bytes comes back in the mean of
// every block of 4 x 4, up to 1 / 32 of a level, and those blocks are what the renderer reduces to one
// sample. Noise without such a period, or errors carried on from pixel to pixel, would outlive that. Each
// lies in the middle of its sixteenth, so that whole levels stay, whatever scaling did to their last bits.
constexpr int kThresholdOrder[4][4] = {{0, 8, 2, 10}, {12, 4, 14, 6}, {3, 11, 1, 9}, {15, 7, 13, 5}};

/// Four rows of thresholds.
Plane ditherThresholds(int width) {
    Plane rows(width, 4);
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
Plane crop(const Plane& image, Size size) { return cropMiddle(image, size); }
GrayImage crop(const GrayImage& image, Size size) { return cropMiddle(image, size); }

RgbImage resample(const RgbImage& image, Size size) {
    if (Size{image.width, image.height} == size) return image;
    try {
        return fromVips<uint8_t, 3>(resized(toVips(image), size, VIPS_KERNEL_LANCZOS3));
    } catch (const vips::VError&) {
        throw notResized("the photo cannot be resampled", {image.width, image.height}, size);
    }
}

GrayImage toBytes(const Plane& plane, Size size) {
    try {
        vips::VImage image = toVips(plane);
        if (sizeOf(image) != size) image = resized(image, size, VIPS_KERNEL_LINEAR);
        const Plane rows = ditherThresholds(size.width);
        const vips::VImage thresholds = toVips(rows)
                                            .replicate(1, ceilDivide(size.height, rows.height))
                                            .crop(0, 0, size.width, size.height);
        return fromVips<uint8_t, 1>((image + thresholds).floor());
    } catch (const vips::VError&) {
        throw notResized("the depth map cannot be scaled", {plane.width, plane.height}, size);
    }
}

}  // namespace quorvane::media
