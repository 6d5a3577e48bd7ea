// Fixed-point low-pass reduction by 1, 2, 4, 8, 16 or 32 on each axis.
//
// Each output pixel is the weighted sum of a window of the source: the block it stands for and a margin
// around it. The weights are the outer product of a horizontal and a vertical kernel that sum to at most 256
// each, so a window of 255s sums to at most 255 * 65536 and, with the rounding term, stays below 2 to the 24.

#include <cstdint>

#include "diagnostics/log.h"
#include "quorvane/esRenderer.h"

namespace {

// The kernels for 16 and 32 sum to 254 and 248, the latter lopsided by its last 0: they darken the result a
// little, and every tuned depth map counts on it.
constexpr int32_t filter_32_H[52] = {1, 1, 1, 1, 2, 2, 2, 3, 3, 3, 4, 4, 5, 5, 6, 6, 7, 7,
                                     7, 8, 8, 8, 8, 9, 9, 9, 9, 8, 8, 8, 8, 8, 7, 7, 7, 6,
                                     6, 5, 5, 4, 4, 3, 3, 3, 2, 2, 2, 1, 1, 1, 1, 0};
constexpr int32_t filter_16_H[30] = {1,  1,  2,  3,  4,  5,  7,  8, 10, 12, 13, 14, 15, 16, 16,
                                     16, 16, 15, 14, 13, 12, 10, 8, 7,  5,  4,  3,  2,  1,  1};
constexpr int32_t filter_8_H[12] = {4, 10, 17, 26, 33, 38, 38, 33, 26, 17, 10, 4};
constexpr int32_t filter_4_H[8] = {4, 18, 43, 63, 63, 43, 18, 4};
constexpr int32_t filter_2_H[4] = {48, 80, 80, 48};
constexpr int32_t filter_1_H[1] = {256};

// The vertical kernels hold the same values.
constexpr const auto& filter_32_V = filter_32_H;
constexpr const auto& filter_16_V = filter_16_H;
constexpr const auto& filter_8_V = filter_8_H;
constexpr const auto& filter_4_V = filter_4_H;
constexpr const auto& filter_2_V = filter_2_H;
constexpr const auto& filter_1_V = filter_1_H;

/// The kernels of one ratio: ratio + 2 * margin weights; null when the ratio has none.
struct Kernels {
    const int32_t* horizontal;
    const int32_t* vertical;
    int margin;
};

Kernels kernelsFor(int ratio) {
    switch (ratio) {
        case 32: return {filter_32_H, filter_32_V, 10};
        case 16: return {filter_16_H, filter_16_V, 7};
        case 8: return {filter_8_H, filter_8_V, 2};
        case 4: return {filter_4_H, filter_4_V, 2};
        case 2: return {filter_2_H, filter_2_V, 1};
        case 1: return {filter_1_H, filter_1_V, 0};
        default: return {nullptr, nullptr, 0};
    }
}

/// Studio-swing luma of one R, G, B pixel, 16..235: ITU-R BT.601 in 8-bit fixed point.
int32_t luma(const uint8_t* rgb) { return ((66 * rgb[0] + 129 * rgb[1] + 25 * rgb[2] + 128) >> 8) + 16; }

}  // namespace

uint32_t ESRenderer::simple_log2(uint32_t value) const {
    for (uint32_t k = 1; k < 32; ++k)
        if (value == uint32_t{1} << k) return k;
    return 0;
}

void ESRenderer::downsize(int srcWidth, int srcHeight, const void* srcData, int dstWidth, int dstHeight,
                          void* dstData, bool isRGB) const {
    const int ds_h = dstWidth >= 1 ? srcWidth / dstWidth : 0;
    const int ds_v = dstHeight >= 1 ? srcHeight / dstHeight : 0;
    const Kernels across = kernelsFor(ds_h);
    const Kernels down = kernelsFor(ds_v);
    const int32_t* filter_H = across.horizontal;
    const int32_t* filter_V = down.vertical;
    if (filter_H == nullptr || filter_V == nullptr) {
        LOGD("downsize: cannot reduce %d x %d to %d x %d\n", srcWidth, srcHeight, dstWidth, dstHeight);
        return;
    }
    const uint32_t ds_h_shift = simple_log2(static_cast<uint32_t>(ds_h));
    const uint32_t ds_v_shift = simple_log2(static_cast<uint32_t>(ds_v));
    const int h_tap = across.margin;
    const int v_tap = down.margin;
    // The widest kernel ends in a 0. Without that tap, what is read past the photo stays inside the working
    // block even where the grid is a single cell.
    const int h_taps = ds_h + 2 * h_tap - (filter_H[ds_h + 2 * h_tap - 1] == 0 ? 1 : 0);
    const int v_taps = ds_v + 2 * v_tap;

    const uint8_t* source = static_cast<const uint8_t*>(srcData);
    const size_t pixel_bytes = isRGB ? 3 : 1;
    const size_t row_bytes = static_cast<size_t>(srcWidth) * pixel_bytes;
    uint8_t* out = static_cast<uint8_t*>(dstData);

    // The luma reduction measures its position in bytes of the block's origin but steps by one a tap, and so
    // never finds itself past the right border: there it reads on into the next row, and on the last row past
    // the image. The guide's right edge depends on it.
    const auto column = [=](int us_i, int k) {
        const int x = us_i - h_tap + k;
        if (x < 0) return 0;
        return !isRGB && x >= srcWidth ? srcWidth - 1 : x;
    };

    for (int j = 0; j < dstHeight; ++j) {
        const int us_j = j << ds_v_shift;
        for (int i = 0; i < dstWidth; ++i) {
            const int us_i = i << ds_h_shift;
            int32_t accum_pixels = 0;
            for (int l = 0; l < v_taps; ++l) {
                const int y = ClipABC_ESRenderer(us_j - v_tap + l, srcHeight - 1, 0);
                const uint8_t* row = source + static_cast<size_t>(y) * row_bytes;
                int32_t line_pixels = 0;
                for (int k = 0; k < h_taps; ++k) {
                    const uint8_t* pixel = row + static_cast<size_t>(column(us_i, k)) * pixel_bytes;
                    line_pixels += filter_H[k] * (isRGB ? luma(pixel) : *pixel);
                }
                accum_pixels += line_pixels * filter_V[l];
            }
            *out++ = static_cast<uint8_t>((accum_pixels + 32768) >> 16);
        }
    }
}
