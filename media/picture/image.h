#ifndef QUORVANE_MEDIA_PICTURE_IMAGE_H
#define QUORVANE_MEDIA_PICTURE_IMAGE_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace quorvane::media {

/// An interleaved picture, rows from the top, no padding.
template <typename Sample, int kChannels>
struct Image {
    int width = 0;
    int height = 0;
    std::vector<Sample> samples;  ///< width * height * kChannels

    Image() = default;
    Image(int w, int h)
        : width(w), height(h), samples(static_cast<size_t>(w) * static_cast<size_t>(h) * kChannels) {}
};

using RgbImage = Image<uint8_t, 3>;
using RgbaImage = Image<uint8_t, 4>;
using GrayImage = Image<uint8_t, 1>;

}  // namespace quorvane::media

#endif
