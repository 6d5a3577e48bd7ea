#ifndef QUORVANE_DEPTH_SHAPE_DEPTH_H
#define QUORVANE_DEPTH_SHAPE_DEPTH_H

#include <cstdint>
#include <functional>

#include "kernels/paths.h"

namespace quorvane {

/// What shapeDepth reads and writes. Planes are row-major without row padding, one byte a sample but for the
/// photo; none overlaps another.
struct DepthShaping {
    const uint8_t* photo;  ///< R, G, B; readable for 27 bytes past its end
    int photo_width;       ///< 1, 2, 4, 8, 16 or 32 times `width`
    int photo_height;      ///< as many times `height`, or another of these
    const uint8_t* depth;  ///< larger is nearer
    int depth_width;       ///< a multiple of `width`, as the photo's
    int depth_height;
    int width;   ///< of the result, cells; at least 1
    int height;  ///< of the result, cells; at least 1

    int rx;          ///< radius of the guided filter in cells, across
    int ry;          ///< radius of the guided filter in cells, down
    float eps;       ///< its regulariser, on intensities 0..1
    float contrast;  ///< gain before the depth curve; 32 leaves depths as they are

    uint8_t* guide;                ///< width * height bytes: becomes the photo's luma
    uint8_t* scratch;              ///< width * height bytes
    unsigned char* filter_buffer;  ///< guidedFilterBufferSize(width, height) bytes
    uint8_t* shaped;               ///< width * height bytes: becomes the result
};

enum class ShapingStep { kReducePhoto, kReduceDepth, kDenoiseGuide, kFilter, kDenoiseAndCurve };

/// Turns a photo and its depth map into the plane that displaces the mesh: both are reduced, the photo's luma
/// is denoised and guides the filter of the depth, which is then denoised and bent by the depth curve.
///
/// After each step, calls step_done(step, done). `done` is false where a reduction has no kernel for the
/// quotient of the sides: its plane keeps what it held, and the next step follows.
void shapeDepth(const Path& path, const DepthShaping& shaping,
                const std::function<void(ShapingStep step, bool done)>& step_done);

}  // namespace quorvane

#endif
