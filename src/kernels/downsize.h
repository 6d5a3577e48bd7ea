#ifndef QUORVANE_KERNELS_DOWNSIZE_H
#define QUORVANE_KERNELS_DOWNSIZE_H

#include <cstdint>

#include "kernels/paths.h"

namespace quorvane {

/// One reduction, as ESRenderer::downsize describes it: both ratios are 1, 2, 4, 8, 16 or 32.
struct Reduction {
    int width;              ///< of the source, pixels
    int height;             ///< of the source, pixels
    const uint8_t* source;  ///< R, G, B where `rgb`, else one byte a pixel; no row padding
    int out_width;
    int out_height;
    uint8_t* out;
    int across;  ///< source columns an output
    int down;    ///< source rows an output
    bool rgb;
};

QUORVANE_IN_EVERY_PATH(void downsize(const Reduction& reduction);)

inline constexpr void (*downsizePaths[])(const Reduction&) = QUORVANE_EVERY_PATH(downsize);

}  // namespace quorvane

#endif
