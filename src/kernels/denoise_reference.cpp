#include <cstddef>

#include "kernels/denoise.h"

namespace quorvane::reference {

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

}  // namespace quorvane::reference
