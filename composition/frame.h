#ifndef QUORVANE_COMPOSITION_FRAME_H
#define QUORVANE_COMPOSITION_FRAME_H

#include <vector>

#include "composition/geometry.h"

namespace quorvane {

/// The largest `fov_scale`, 0 to 1, with which the picture at `position` shows nothing but the photo; 0 where
/// there is none. Computed from the outline of the bent grid in the picture's plane. The part of a picture
/// that another fold of the photo hides behind the outline is not told apart, so that an outline folded
/// inwards costs more than it must.
double largestVisiblePart(const BentGrid& grid, const Camera& camera, ViewPosition position);

/// How much of the photo is shown, and how far the view swings.
struct Frame {
    double fov_scale = 1.0;  ///< where the zoom is 1
    double swing = 1.0;      ///< what x and y are multiplied by: 1 unless the swing had to be reduced
};

/// The picture that shows most shows no less than this part of each side; the swing is reduced instead.
constexpr double kLeastVisiblePart = 0.5;

/// The largest frame with which none of the pictures from `positions` shows anything but the photo, at most
/// 1.
Frame suggestFrame(const BentGrid& grid, const Camera& camera, const std::vector<ViewPosition>& positions);

/// The same for every position from (-reach.x, -reach.y) to (reach.x, reach.y).
Frame suggestFrame(const BentGrid& grid, const Camera& camera, ViewPosition reach);

}  // namespace quorvane

#endif
