// What the renderer offers and keeps no state for.

#include "diagnostics/ppm_dump.h"
#include "quorvane/esRenderer.h"

int ClipABC_ESRenderer(int p, int max, int min) {
    if (p > max) return max;
    if (p < min) return min;
    return p;
}

uint32_t ESRenderer::simple_log2(uint32_t value) const {
    for (uint32_t k = 1; k < 32; ++k)
        if (value == uint32_t{1} << k) return k;
    return 0;
}

void ESRenderer::_dump_ppm(int width, int height, const char* filename, unsigned char* target_ptr,
                           int format) {
    quorvane::dumpPpm(width, height, filename, target_ptr, format);
}
