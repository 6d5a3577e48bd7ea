// Five-point averages and the look-up of their results.
//
// A sum of five bytes is at most 1275. Up to 16,383, a fifth of it, truncated, is the upper half of the
// 32-bit product with 13108, which exceeds a fifth of 2 to the 16 by 0.8: too little to reach the next whole
// number.

#include "kernels/denoise.h"

#ifdef QUORVANE_PATH
#include "kernels/lanes.h"
#endif

namespace quorvane {

#ifndef QUORVANE_PATH

namespace reference {

void crossDenoise(const uint8_t* src, uint8_t* dst, int width, int height) {
    const ptrdiff_t stride = width;
    for (int y = 0; y < height; ++y) {
        const uint8_t* row = src + y * stride;
        const uint8_t* above = y > 0 ? row - stride : row;
        const uint8_t* below = y < height - 1 ? row + stride : row;
        for (int x = 0; x < width; ++x) {
            const int left = row[x > 0 ? x - 1 : 0];
            const int right = row[x < width - 1 ? x + 1 : x];
            *dst++ = static_cast<uint8_t>((row[x] + left + right + above[x] + below[x]) / 5);
        }
    }
}

void lookUp(uint8_t* samples, size_t count, const uint8_t* table) {
    for (size_t i = 0; i < count; ++i) samples[i] = table[samples[i]];
}

}  // namespace reference

#else

namespace QUORVANE_PATH {

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

void lookUp(uint8_t* samples, size_t count, const uint8_t* bytes) {
    const Table table(bytes);
    size_t i = 0;
    for (; i + 2 * kBytes <= count; i += 2 * kBytes) {
        const u8 first = load(samples + i), second = load(samples + i + kBytes);
        store(samples + i, table[first]);
        store(samples + i + kBytes, table[second]);
    }
    for (; i < count; ++i) samples[i] = bytes[samples[i]];
}

}  // namespace QUORVANE_PATH

#endif

}  // namespace quorvane
