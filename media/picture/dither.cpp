#include "media/picture/dither.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace quorvane::media {
namespace {

// Bayer's 4 x 4 thresholds for ordered dithering: what is lost by taking bytes comes back in the mean of
// every block of 4 x 4, up to 1 / 32 of a level, and those blocks are what the renderer reduces to one
// sample. Noise without such a period, or errors carried on from pixel to pixel, would outlive that. Each
// lies in the middle of its sixteenth, so that whole levels stay, whatever scaling did to their last bits.
constexpr int kThresholdOrder[4][4] = {{0, 8, 2, 10}, {12, 4, 14, 6}, {3, 11, 1, 9}, {15, 7, 13, 5}};

}  // namespace

GrayImage dithered(const Plane& plane) {
    GrayImage bytes(plane.width, plane.height);
    for (int y = 0; y < plane.height; ++y)
        for (int x = 0; x < plane.width; ++x) {
            const float threshold = (static_cast<float>(kThresholdOrder[y % 4][x % 4]) + 0.5f) / 16.0f;
            bytes.at(x, y) =
                static_cast<uint8_t>(std::clamp(std::floor(plane.at(x, y) + threshold), 0.0f, 255.0f));
        }
    return bytes;
}

}  // namespace quorvane::media
