#ifndef QUORVANE_MEDIA_DEPTH_POLARITY_H
#define QUORVANE_MEDIA_DEPTH_POLARITY_H

#include "media/picture/image.h"

namespace quorvane::media {

/// How sure it is that the larger levels of `plane` are the farther ones: 0 no, 0.5 nothing shows, 1 yes.
/// `known`, of the plane's size, is 0 where a level says nothing, or empty; both lie as the photo does.
///
/// Evidence, from a grid of 128 cells: the ground rises towards the viewer, so levels go with the picture's
/// height, as a whole, from row to row of smooth surfaces, and from its lower to its upper border; and where
/// depth steps, the near thing shows more of the photo's contrast than what lies behind it, which is out of
/// focus, in haze or far. Sensors write distances of 16 bits, most programs the opposite. The weights were
/// set by hand on two dozen pairs of photos and depth maps; each piece alone errs on some of them.
///
/// Cost: a pass over both, 20 ms for 12 megapixels.
double confidenceLargerIsFarther(const RgbImage& photo, const Plane& plane, const GrayImage& known);

}  // namespace quorvane::media

#endif
