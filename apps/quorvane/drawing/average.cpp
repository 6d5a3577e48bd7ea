#include "apps/quorvane/drawing/average.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace quorvane::app {

void average(const media::RgbaImage& drawn, Size size, media::RgbaImage* out) {
    constexpr size_t kChannels = 4;
    if (out->samples.empty()) *out = media::RgbaImage(size.width, size.height);
    const size_t n = static_cast<size_t>(drawn.width / size.width);
    const unsigned count = static_cast<unsigned>(n * n);
    // Rows first, which takes plain additions of neighbours: at most 16 * 255 each.
    std::vector<uint16_t> sums(static_cast<size_t>(drawn.width) * kChannels);
    for (int y = 0; y < size.height; ++y) {
        std::fill(sums.begin(), sums.end(), uint16_t{0});
        for (size_t j = 0; j < n; ++j) {
            const uint8_t* row = drawn.row(y * static_cast<int>(n) + static_cast<int>(j));
            for (size_t i = 0; i < sums.size(); ++i) sums[i] = static_cast<uint16_t>(sums[i] + row[i]);
        }
        const uint16_t* block = sums.data();
        uint8_t* pixel = out->row(y);
        for (int x = 0; x < size.width; ++x, block += n * kChannels, pixel += kChannels)
            for (size_t c = 0; c < kChannels; ++c) {
                unsigned sum = count / 2;
                for (size_t i = 0; i < n; ++i) sum += block[i * kChannels + c];
                pixel[c] = static_cast<uint8_t>(sum / count);
            }
    }
}

}  // namespace quorvane::app
