#ifndef QUORVANE_MEDIA_DEPTH_STEREO_ALIGN_H
#define QUORVANE_MEDIA_DEPTH_STEREO_ALIGN_H

#include <vector>

#include "media/picture/image.h"

namespace quorvane::media {

/// A point of the left view, in pixels from the middle, and how far the same point lies in the right view.
struct Correspondence {
    double x, y;
    double dx, dy;
};

/// Corners of the left view that are found again in the right one, and back: up to a quarter of the width
/// away to either side, and a twelfth of the height up or down. `tried` is set to how many corners were
/// looked for. Views of one size, the longer side of at most about 500 pixels: 0.3 s on one core.
std::vector<Correspondence> correspondences(const Plane& left, const Plane& right, int* tried);

/// How the right view lies to the left one, but for the disparities. Lengths are shares of the height.
struct Alignment {
    double down = 0.0;      ///< it lies lower by this
    double turn = 0.0;      ///< radians clockwise
    double scale = 0.0;     ///< larger by this share
    double keystone = 0.0;  ///< lower by this on one diagonal, higher on the other
};

/// The alignment that most correspondences of views of that height agree on; `agreeing` keeps those.
Alignment align(const std::vector<Correspondence>& found, int height, std::vector<Correspondence>* agreeing);

/// The right view as a camera beside the left one would have it, so that rows match rows.
Plane aligned(const Plane& right, const Alignment& alignment);

}  // namespace quorvane::media

#endif
