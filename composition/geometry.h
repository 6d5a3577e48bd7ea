#ifndef QUORVANE_COMPOSITION_GEOMETRY_H
#define QUORVANE_COMPOSITION_GEOMETRY_H

#include <cstdint>

namespace quorvane {

/// A shaped depth map: width * height samples, the photo's first row first, larger is nearer.
struct ShapedDepth {
    int width = 0;   ///< at least 1
    int height = 0;  ///< at least 1
    const uint8_t* samples = nullptr;
};

/// How far in front of the camera the flat grid lies, object units.
constexpr double kGridDistance = 32.0;

/// How far in front of the camera a shaped depth of 0..255 puts the grid: 44.8 for 0, 30.8 for 255. The same
/// number as `rotate_z_trans` makes that depth stay in place while the view swings.
constexpr double distanceOf(double depth) { return kGridDistance - 0.4 * (depth / 255.0 * 35.0 - 32.0); }

/// The shaped depth that lies at a distance; beyond 0..255 where none does.
constexpr double depthAtDistance(double distance) {
    return ((kGridDistance - distance) / 0.4 + 32.0) / 35.0 * 255.0;
}

/// Where the view stands: -1 from the left .. 1 from the right, and -1 .. 1 in the direction of the picture's
/// rows, as `ESRenderer::m_transX` and `m_transY` hold it. (0, 0) is the rest position.
struct ViewPosition {
    double x = 0.0;
    double y = 0.0;
    double zoom = 1.0;  ///< the picture shows the part `fov_scale` / `zoom` of each side
};

/// What the renderer draws: a grid of cells that the shaped depth bends.
struct BentGrid {
    ShapedDepth depth;        ///< a sample a cell
    double half_width = 0.0;  ///< of the flat grid, object units
    double half_height = 0.0;
};

/// How the renderer looks at it.
struct Camera {
    double pivot_distance = 0.0;  ///< in front of the camera, object units
    double x_turn_deg = 0.0;      ///< at position x = 1: `rotate_x_boundary` * `trans_to_rotate_scale`
    double y_turn_deg = 0.0;      ///< at position y = 1
    double far_distance = 164.0;  ///< of the far plane: 64 + `far_offset_ext`
};

}  // namespace quorvane

#endif
