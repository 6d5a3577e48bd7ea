#ifndef QUORVANE_MEDIA_DEPTH_DEPTH_HOLES_H
#define QUORVANE_MEDIA_DEPTH_DEPTH_HOLES_H

#include <cstddef>
#include <vector>

#include "media/picture/image.h"

namespace quorvane::media {

/// The pixels at one end of a plane's range, where they stand apart from all the others.
struct Extreme {
    std::vector<size_t> pieces;  ///< the size of each connected piece, in pixels, smallest first
    size_t pixels = 0;
    size_t largest_at_border = 0;  ///< of the pieces that touch the plane's border
    GrayImage others;              ///< 0 at the pixels, 255 elsewhere
};

/// The lowest (`low`) or highest level of `plane`, which is on 0..255, where no other pixel comes within 8
/// levels of it, the others use at least 16 levels and are at least half of all; else no pixels.
Extreme findExtreme(const Plane& plane, bool low);

/// Gives the pixels where `known`, of the plane's size, is 0 a level from the known ones around them: means
/// of ever larger blocks, interpolated on the way back down (pull-push, Gortler et al., "The Lumigraph",
/// 1996). Known pixels keep theirs. Takes time and memory in proportion to the pixels; at least one pixel
/// must be known.
void fillFromNeighbours(GrayImage known, Plane* plane);

}  // namespace quorvane::media

#endif
