#ifndef QUORVANE_MEDIA_DEPTH_DEPTH_HOLES_H
#define QUORVANE_MEDIA_DEPTH_DEPTH_HOLES_H

#include <cstddef>
#include <vector>

#include "media/picture/image.h"

namespace quorvane::media {

// In what follows `known`, of the plane's size or empty, is 0 where a pixel has no level.

/// Half a million of the levels at most, evenly taken, in ascending order.
std::vector<float> someLevels(const Plane& plane, const GrayImage& known);

/// The pixels at one end of a plane's range, where they stand apart from all the others.
struct Extreme {
    std::vector<size_t> pieces;  ///< the size of each connected piece, in pixels, smallest first
    size_t pixels = 0;
    size_t largest_at_border = 0;  ///< of the pieces that touch the plane's border
    GrayImage others;              ///< 0 at the pixels, 255 elsewhere
};

/// The lowest (`low`) or highest level that is used, where the others stand apart from it and use a range of
/// their own; else no pixels. They do by 8 of 255 parts of all that is used, and where it is the level 0 of
/// 16 `bits`, by a twentieth of their own median. They have at least 16 levels and, unless it is the level 0,
/// are at least half of all.
Extreme findExtreme(const Plane& plane, const GrayImage& known, int bits, bool low);

/// Gives the pixels without a level one from the known ones around them: means of ever larger blocks,
/// interpolated on the way back down (pull-push, Gortler et al., "The Lumigraph", 1996). Known pixels keep
/// theirs. Takes time and memory in proportion to the pixels; at least one pixel must be known.
void fillFromNeighbours(GrayImage known, Plane* plane);

/// The same, but where the known pixels around a hole are parted by a gap in their levels, only those below
/// it count: where larger is nearer, the far side. What a near thing hides from a sensor goes on behind it.
void fillFromFarSide(const GrayImage& known, Plane* plane);

}  // namespace quorvane::media

#endif
