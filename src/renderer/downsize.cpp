#include "kernels/downsize.h"

#include "diagnostics/log.h"
#include "quorvane/esRenderer.h"
#include "renderer/chosen_path.h"

uint32_t ESRenderer::simple_log2(uint32_t value) const {
    for (uint32_t k = 1; k < 32; ++k)
        if (value == uint32_t{1} << k) return k;
    return 0;
}

void ESRenderer::downsize(int srcWidth, int srcHeight, const void* srcData, int dstWidth, int dstHeight,
                          void* dstData, bool isRGB) const {
    if (dstWidth < 1 || dstHeight < 1) return;
    if (!quorvane::downsize(quorvane::chosenPath(), srcWidth, srcHeight, static_cast<const uint8_t*>(srcData),
                            dstWidth, dstHeight, static_cast<uint8_t*>(dstData), isRGB))
        LOGD("downsize: cannot reduce %d x %d to %d x %d\n", srcWidth, srcHeight, dstWidth, dstHeight);
}
