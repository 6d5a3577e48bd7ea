#ifndef QUORVANE_BENCH_VIEWS_PICTURE_H
#define QUORVANE_BENCH_VIEWS_PICTURE_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace quorvane::bench {

/// Rows from the top, no padding.
template <typename Sample, int kChannels>
struct Raster {
    int width = 0;
    int height = 0;
    std::vector<Sample> samples;

    Raster() = default;
    Raster(int w, int h, Sample value = Sample())
        : width(w), height(h), samples(static_cast<size_t>(w) * static_cast<size_t>(h) * kChannels, value) {}
    Sample& at(int x, int y, int channel = 0) { return samples[index(x, y, channel)]; }
    Sample at(int x, int y, int channel = 0) const { return samples[index(x, y, channel)]; }

  private:
    size_t index(int x, int y, int channel) const {
        return (static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)) * kChannels +
               static_cast<size_t>(channel);
    }
};

using Picture = Raster<uint8_t, 3>;
using DepthMap = Raster<uint8_t, 1>;  ///< larger is nearer
using Mask = Raster<uint8_t, 1>;      ///< 1 where a pixel belongs to it, 0 elsewhere
using Plane = Raster<float, 1>;

/// The part of `raster` from column `left` and row `top` on; all of it lies within.
template <typename Sample, int kChannels>
Raster<Sample, kChannels> cut(const Raster<Sample, kChannels>& raster, int left, int top, int width,
                              int height) {
    Raster<Sample, kChannels> part(width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (int c = 0; c < kChannels; ++c) part.at(x, y, c) = raster.at(left + x, top + y, c);
    return part;
}

}  // namespace quorvane::bench

#endif
