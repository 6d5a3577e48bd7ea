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

    /// The first sample of a row, and of a pixel.
    Sample* row(int y) { return samples.data() + rowStart(y); }
    const Sample* row(int y) const { return samples.data() + rowStart(y); }
    Sample& at(int x, int y) { return row(y)[static_cast<size_t>(x) * kChannels]; }
    const Sample& at(int x, int y) const { return row(y)[static_cast<size_t>(x) * kChannels]; }

  private:
    size_t rowStart(int y) const { return static_cast<size_t>(y) * static_cast<size_t>(width) * kChannels; }
};

using RgbImage = Image<uint8_t, 3>;
using RgbaImage = Image<uint8_t, 4>;
using GrayImage = Image<uint8_t, 1>;
using Plane = Image<float, 1>;

}  // namespace quorvane::media

#endif
