#ifndef QUORVANE_HOST_CLEAN_DEPTH_H
#define QUORVANE_HOST_CLEAN_DEPTH_H

#include <cstdint>
#include <vector>

#include "Pixels.h"
#include "Status.h"

namespace quorvane {

/// A depth map that ParallaxView draws with clean silhouettes.
struct CleanDepth {
    int width = 0;                 ///< pixels, four a cell of the grid
    int height = 0;                ///< pixels
    std::vector<uint8_t> samples;  ///< width * height, for ParallaxView::setDepth
    /// The parameters `guided_filter_rx` and `guided_filter_ry` that go with it, set before `setDepth`: the
    /// filter would soften the silhouettes again.
    int guided_filter_radius = 0;
};

/// What a window or a phone draws in time.
constexpr int kLiveTriangles = 100000;

/// Prepares a depth map for a photo of `photo_width` x `photo_height` pixels as ParallaxView::setPhoto has
/// it, so that near things neither bend nor smear where they meet far ones. `depth` covers the photo, a byte
/// a pixel, larger is nearer; its size may be any. The grid is the finest of at most `most_triangles`
/// triangles that the photo's size allows, or the coarsest that it allows.
///
/// Arithmetic only: any thread, no context. On failure `*clean` stays as it was.
Status cleanDepth(const Pixels& depth, int photo_width, int photo_height, int most_triangles,
                  CleanDepth* clean);

}  // namespace quorvane

#endif
