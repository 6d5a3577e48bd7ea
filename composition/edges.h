#ifndef QUORVANE_COMPOSITION_EDGES_H
#define QUORVANE_COMPOSITION_EDGES_H

#include <cstdint>
#include <vector>

#include "sizes/sizes.h"

namespace quorvane {

/// The guided filter's radius, `guided_filter_rx` and `guided_filter_ry`, for a depth map from `cleanEdges`:
/// none, since the filter would soften what has been made clean.
constexpr int kCleanEdgesFilterRadius = 0;

/// How wide a depth map's silhouettes are: the samples over which a strong jump rises from a tenth to nine
/// tenths of its height, the median of those found in rows and columns. 0.8 where all jumps are from one
/// sample to the next; 0 where there are none, or none narrower than 14 samples. `depth` is size.width *
/// size.height bytes, rows from the top, no padding.
double edgeBlur(const uint8_t* depth, Size size);

/// A depth map that the renderer draws with clean silhouettes: what it needs to slope from near to far comes
/// to lie wholly on the far side, so that near things neither bend nor smear.
///
/// `depth` as for `edgeBlur`, larger is nearer, both sides at least 1. The result has 4 samples a cell of
/// `grid` on each axis, all of a cell the same, which is what ParallaxView::setDepth and
/// ESRenderer::setDepth take. It goes with a guided filter of radius `kCleanEdgesFilterRadius`.
std::vector<uint8_t> cleanEdges(const uint8_t* depth, Size size, Size grid);

}  // namespace quorvane

#endif
