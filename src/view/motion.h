#ifndef QUORVANE_VIEW_MOTION_H
#define QUORVANE_VIEW_MOTION_H

namespace quorvane {

/// Holds `position` off both borders of 0..extent. The far bound is tested last and lies a pixel further in.
float heldOffBorder(float position, float extent, float border) noexcept;

/// The view position of a position on the output, 0..extent: -1..1, 0 at the centre.
float viewPosition(float position, float extent) noexcept;

/// How far the view position moves for a displacement of x along the width, and of y along the height, in
/// output pixels. The gains pair the width with the mesh's half-height and the height with its half-width;
/// hosts are tuned to it.
float viewStepAcross(float x, float width, float half_height) noexcept;
float viewStepDown(float y, float height, float half_width) noexcept;

}  // namespace quorvane

#endif
