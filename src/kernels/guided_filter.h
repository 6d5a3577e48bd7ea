#ifndef QUORVANE_KERNELS_GUIDED_FILTER_H
#define QUORVANE_KERNELS_GUIDED_FILTER_H

#include <cstdint>

#include "kernels/paths.h"

namespace quorvane {

/// One filtering, as guided_filter_qrv describes it.
struct GuidedFiltering {
    const uint8_t* guide;
    const uint8_t* input;
    uint8_t* output;
    int width;
    int height;
    int rx;  ///< 0..width
    int ry;  ///< 0..height
    float eps;
    unsigned char* buffer;  ///< 20 bytes a pixel and 8 for every entry of a (width + 1) x (height + 1) table
};

QUORVANE_IN_EVERY_PATH(void guidedFilter(const GuidedFiltering& filtering);)

inline constexpr void (*guidedFilterPaths[])(const GuidedFiltering&) = QUORVANE_EVERY_PATH(guidedFilter);

}  // namespace quorvane

#endif
