#ifndef QUORVANE_COMPOSITION_FRAME_H
#define QUORVANE_COMPOSITION_FRAME_H

#include <cstdint>
#include <vector>

namespace quorvane {

/// Where the view stands: -1 from the left .. 1 from the right, and -1 .. 1 in the direction of the picture's
/// rows, as `ESRenderer::m_transX` and `m_transY` hold it. (0, 0) is the rest position.
struct ViewPosition {
    double x = 0.0;
    double y = 0.0;
};

/// What the renderer draws: a grid of cells that the shaped depth bends.
struct BentGrid {
    int width = 0;                          ///< cells, at least 1
    int height = 0;                         ///< cells, at least 1
    const uint8_t* shaped_depth = nullptr;  ///< width * height samples, the photo's first row first
    double half_width = 0.0;                ///< of the flat grid, object units
    double half_height = 0.0;
};

/// How the renderer looks at it.
struct Camera {
    double pivot_distance = 0.0;  ///< in front of the camera, object units
    double x_turn_deg = 0.0;      ///< at position x = 1: `rotate_x_boundary` * `trans_to_rotate_scale`
    double y_turn_deg = 0.0;      ///< at position y = 1
    double far_distance = 164.0;  ///< of the far plane: 64 + `far_offset_ext`
};

/// The largest `fov_scale`, 0 to 1, with which the picture at `position` shows nothing but the photo; 0 where
/// there is none. Computed from the outline of the bent grid in the picture's plane. The part of a picture
/// that another fold of the photo hides behind the outline is not told apart, so that an outline folded
/// inwards costs more than it must.
double largestVisiblePart(const BentGrid& grid, const Camera& camera, ViewPosition position);

/// How much of the photo is shown, and how far the view swings.
struct Frame {
    double fov_scale = 1.0;
    double swing = 1.0;  ///< what every position is multiplied by: 1 unless the swing had to be reduced
};

/// The frame never shows less than this part of each side; the swing is reduced instead.
constexpr double kLeastVisiblePart = 0.5;

/// The largest frame with which none of the pictures from `positions` shows anything but the photo.
Frame suggestFrame(const BentGrid& grid, const Camera& camera, const std::vector<ViewPosition>& positions);

/// The same for every position from (-reach.x, -reach.y) to (reach.x, reach.y).
Frame suggestFrame(const BentGrid& grid, const Camera& camera, ViewPosition reach);

}  // namespace quorvane

#endif
