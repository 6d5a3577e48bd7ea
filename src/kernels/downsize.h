#ifndef QUORVANE_KERNELS_DOWNSIZE_H
#define QUORVANE_KERNELS_DOWNSIZE_H

#include <cstdint>

namespace quorvane {

struct Path;

/// One reduction, as ESRenderer::downsize describes it: both ratios are 1, 2, 4, 8, 16 or 32.
struct Reduction {
    int width;              ///< of the source, pixels
    int height;             ///< of the source, pixels
    const uint8_t* source;  ///< R, G, B where `rgb`, else one byte a pixel; no row padding
    int out_width;          ///< at least 1
    int out_height;         ///< at least 1
    uint8_t* out;           ///< out_width * out_height bytes; does not overlap the source
    int across;             ///< source columns an output
    int down;               ///< source rows an output
    bool rgb;               ///< the result is the source's luma
};

namespace reference {

/// Carries out a reduction. Where `rgb`, up to 27 bytes past the source are read and must be readable.
void downsize(const Reduction& reduction);

}  // namespace reference

/// Reduces `source`, width x height pixels, to out_width x out_height on `path`; the ratios are the quotients
/// of the sides, truncated. False, with nothing written, where a side of the output is below 1 or a ratio is
/// none of those above.
bool downsize(const Path& path, int width, int height, const uint8_t* source, int out_width, int out_height,
              uint8_t* out, bool rgb);

}  // namespace quorvane

#endif
