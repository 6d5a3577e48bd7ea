#ifndef QUORVANE_HOST_SHAPING_H
#define QUORVANE_HOST_SHAPING_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "quorvane/parameters.h"
#include "sizes/sizes.h"

// What ESRenderer does without GL, for whoever does without ESRenderer.

namespace quorvane {

// As ESRenderer has them.
constexpr float kMeshHalfHeight = 18.5f;
constexpr float kMeshBaseline = 2.4f;

/// What the photo's reduction may read past the photo, and finds cleared there.
constexpr size_t kReadBehindPhoto = 27;

/// Planes of a byte a cell.
struct ShapedPlanes {
    std::vector<uint8_t> guide;   ///< the photo's luma
    std::vector<uint8_t> shaped;  ///< the depth that bends the mesh
};

/// Shapes a depth map as ESRenderer::setDepth does. Sizes have been checked; `photo` is readable for
/// kReadBehindPhoto bytes past its end. Throws std::bad_alloc.
ShapedPlanes shapedAsByRenderer(const uint8_t* photo, Size photo_size, const uint8_t* depth, Size depth_size,
                                Size grid, const LibParam& parameters);

}  // namespace quorvane

#endif
