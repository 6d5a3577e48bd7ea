#ifndef QUORVANE_KERNELS_DOWNSIZE_WEIGHTS_H
#define QUORVANE_KERNELS_DOWNSIZE_WEIGHTS_H

// Each output pixel is the weighted sum of a window of the source: the block it stands for and a margin
// around it. The weights are the outer product of a horizontal and a vertical kernel that sum to at most 256
// each, so a window of 255s sums to at most 255 * 65536 and, with the rounding term, stays below 2 to the 24.

#include <cstddef>
#include <cstdint>

#include "kernels/downsize.h"

namespace quorvane {
// Each of the files that include this has its own: a function that all objects shared could come out with
// one path's instructions.
namespace {

// The kernels for 16 and 32 sum to 254 and 248, the latter lopsided by its last 0: they darken the result a
// little, and every tuned depth map counts on it. A vertical kernel holds the values of the horizontal one.
constexpr int32_t filter_32_H[52] = {1, 1, 1, 1, 2, 2, 2, 3, 3, 3, 4, 4, 5, 5, 6, 6, 7, 7,
                                     7, 8, 8, 8, 8, 9, 9, 9, 9, 8, 8, 8, 8, 8, 7, 7, 7, 6,
                                     6, 5, 5, 4, 4, 3, 3, 3, 2, 2, 2, 1, 1, 1, 1, 0};
constexpr int32_t filter_16_H[30] = {1,  1,  2,  3,  4,  5,  7,  8, 10, 12, 13, 14, 15, 16, 16,
                                     16, 16, 15, 14, 13, 12, 10, 8, 7,  5,  4,  3,  2,  1,  1};
constexpr int32_t filter_8_H[12] = {4, 10, 17, 26, 33, 38, 38, 33, 26, 17, 10, 4};
constexpr int32_t filter_4_H[8] = {4, 18, 43, 63, 63, 43, 18, 4};
constexpr int32_t filter_2_H[4] = {48, 80, 80, 48};
constexpr int32_t filter_1_H[1] = {256};

constexpr const auto& filter_32_V = filter_32_H;
constexpr const auto& filter_16_V = filter_16_H;
constexpr const auto& filter_8_V = filter_8_H;
constexpr const auto& filter_4_V = filter_4_H;
constexpr const auto& filter_2_V = filter_2_H;
constexpr const auto& filter_1_V = filter_1_H;

/// The kernels of one ratio: `taps` weights, `margin` of them before the block.
struct Kernels {
    const int32_t* horizontal;
    const int32_t* vertical;
    int margin;
    int taps;
};

/// The widest kernel's last tap, a 0, is left out: without it, what is read past the photo stays inside the
/// working block even where the grid is a single cell. Ratios without a kernel have no taps.
constexpr Kernels kernelsFor(int ratio) {
    switch (ratio) {
        case 32: return {filter_32_H, filter_32_V, 10, 51};
        case 16: return {filter_16_H, filter_16_V, 7, 30};
        case 8: return {filter_8_H, filter_8_V, 2, 12};
        case 4: return {filter_4_H, filter_4_V, 2, 8};
        case 2: return {filter_2_H, filter_2_V, 1, 4};
        case 1: return {filter_1_H, filter_1_V, 0, 1};
        default: return {filter_1_H, filter_1_V, 0, 0};
    }
}

/// Row y of the source, the first and the last row repeated beyond it.
inline const uint8_t* clampedRow(const Reduction& r, int y) {
    const int inside = y < 0 ? 0 : y > r.height - 1 ? r.height - 1 : y;
    return r.source + static_cast<size_t>(inside) * static_cast<size_t>(r.width) * (r.rgb ? 3 : 1);
}

/// Luma of black.
constexpr int kLumaOffset = 16;

}  // namespace
}  // namespace quorvane

#endif
