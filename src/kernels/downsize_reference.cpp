// Fixed-point low-pass reduction by 1, 2, 4, 8, 16 or 32 on each axis, as it is defined: every output pixel
// sums up its own window.

#include "kernels/downsize.h"
#include "kernels/downsize_weights.h"

namespace quorvane {
namespace {

/// Studio-swing luma of one R, G, B pixel, 16..235: ITU-R BT.601 in 8-bit fixed point.
int32_t luma(const uint8_t* rgb) {
    return ((66 * rgb[0] + 129 * rgb[1] + 25 * rgb[2] + 128) >> 8) + kLumaOffset;
}

}  // namespace

void reference::downsize(const Reduction& r) {
    const Kernels across = kernelsFor(r.across);
    const Kernels down = kernelsFor(r.down);

    // The luma reduction measures its position in bytes of the block's origin but steps by one a tap, and so
    // never finds itself past the right border: there it reads on into the next row, and on the last row past
    // the image. The guide's right edge depends on it.
    const auto column = [&](int x) {
        if (x < 0) return 0;
        return !r.rgb && x >= r.width ? r.width - 1 : x;
    };

    uint8_t* out = r.out;
    for (int j = 0; j < r.out_height; ++j) {
        for (int i = 0; i < r.out_width; ++i) {
            int32_t accum_pixels = 0;
            for (int l = 0; l < down.taps; ++l) {
                const uint8_t* row = clampedRow(r, j * r.down - down.margin + l);
                int32_t line_pixels = 0;
                for (int k = 0; k < across.taps; ++k) {
                    const int x = column(i * r.across - across.margin + k);
                    line_pixels +=
                        across.horizontal[k] * (r.rgb ? luma(row + 3 * static_cast<ptrdiff_t>(x)) : row[x]);
                }
                accum_pixels += line_pixels * down.vertical[l];
            }
            *out++ = static_cast<uint8_t>((accum_pixels + 32768) >> 16);
        }
    }
}

}  // namespace quorvane
