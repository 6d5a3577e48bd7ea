#include "media/picture/crop.h"

#include <algorithm>
#include <cmath>

namespace quorvane::media {
namespace {

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

}  // namespace

RgbImage cut(const RgbImage& image, int left, int top, Size size) { return part(image, left, top, size); }

RgbImage crop(const RgbImage& image, Size size) { return cropMiddle(image, size); }
Plane crop(const Plane& image, Size size) { return cropMiddle(image, size); }
GrayImage crop(const GrayImage& image, Size size) { return cropMiddle(image, size); }

}  // namespace quorvane::media
