// Five-point averages.
//
// A sum of five bytes is at most 1275. Up to 16,383, a fifth of it, truncated, is the upper half of the
// 32-bit product with 13108, which exceeds a fifth of 2 to the 16 by 0.8: too little to reach the next whole
// number.

#include "kernels/denoise.h"
#include "kernels/lanes.h"

namespace quorvane::QUORVANE_PATH {

void crossDenoise(const uint8_t* src, uint8_t* dst, int width, int height) {
    if (width < kBytes) return reference::crossDenoise(src, dst, width, height);
    const ptrdiff_t stride = width;
    const int last = width - kBytes;
    const u8 ones = splat8(1);
    for (int y = 0; y < height; ++y, dst += stride) {
        const uint8_t* row = src + y * stride;
        const uint8_t* above = y > 0 ? row - stride : row;
        const uint8_t* below = y < height - 1 ? row + stride : row;
        // The last vector overlaps the one before it.
        for (int i = 0; i < width; i += kBytes) {
            const int x = i < last ? i : last;
            const u8 centre = load(row + x), up = load(above + x), down = load(below + x);
            const u8 left = x > 0 ? load(row + x - 1) : slide<kBytes - 1>(splat8(row[0]), centre);
            const u8 right = x < last ? load(row + x + 1) : slide<1>(centre, splat8(row[width - 1]));
            const i16 even = pairSums(left, ones) + oddBytes(centre) + evenBytes(up) + evenBytes(down);
            const i16 odd = pairSums(right, ones) + evenBytes(centre) + oddBytes(up) + oddBytes(down);
            store(dst + x, mulHigh((u16)even, 13108) | mulHigh((u16)odd, 13108) << 8);
        }
    }
}

}  // namespace quorvane::QUORVANE_PATH
