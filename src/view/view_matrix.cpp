#include "view/view_matrix.h"

#include <cmath>

#include "view/angle.h"

namespace quorvane {
namespace {

constexpr float kNear = 12.0f;
constexpr float kFarBase = 64.0f;

// The mesh's distance before displacement, where the field of view is measured.
constexpr double kReferenceDistance = 32.0;

/// Turns by degrees about the Y axis, then about the X axis.
RENDERMatrix turned(float y_axis_deg, float x_axis_deg) {
    RENDERMatrix rotation;
    renderMatrixLoadIdentity(&rotation);
    renderRotate(&rotation, -y_axis_deg, 0.0f, 1.0f, 0.0f);
    renderRotate(&rotation, -x_axis_deg, 1.0f, 0.0f, 0.0f);
    return rotation;
}

RENDERMatrix turnedTo(const View& view) {
    return turned(view.x * view.gain * view.x_boundary, view.y * view.gain * view.y_boundary);
}

/// Angle in degrees of the one turn that equals the rotation `m`, from its trace 1 + 2 cos(angle).
float rotationAngle(const RENDERMatrix& m) {
    const float t = ((m.mat[0][0] + m.mat[1][1]) + m.mat[2][2] - 1.0f) * 0.5f;
    return static_cast<float>(std::acos(static_cast<double>(t)) * 180.0 / PI);
}

/// How far the mesh's edge moves sideways at the limit angle.
float edgeShift(float half_extent, float limit_deg) {
    return static_cast<float>(static_cast<double>(half_extent) * std::sin(limit_deg * PI / 180.0));
}

/// How far the pivot's surroundings move in depth at the limit angle. The division and multiplication by the
/// extent cancel but for rounding, which is part of the logged value.
float edgeOffset(float half_extent, float limit_deg, float pivot) {
    return static_cast<float>(static_cast<double>(half_extent) * (1.0 - std::cos(limit_deg * PI / 180.0)) *
                              static_cast<double>(pivot / half_extent));
}

}  // namespace

RENDERMatrix viewMatrix(const View& view) {
    // Turn about the pivot (0, 0, -pivot).
    const RENDERMatrix rotation = turnedTo(view);
    RENDERMatrix modelview;
    renderMatrixLoadIdentity(&modelview);
    renderTranslate(&modelview, 0.0f, -0.0f, -view.pivot);
    renderMatrixMultiply(&modelview, &rotation, &modelview);
    renderTranslate(&modelview, 0.0f, 0.0f, view.pivot);

    const float scale = static_cast<float>(static_cast<double>(view.fov_scale) * 12.0 / kReferenceDistance);
    RENDERMatrix projection;
    renderMatrixLoadIdentity(&projection);
    renderFrustum(&projection, -(view.half_width * scale), view.half_width * scale,
                  -(view.half_height * scale), view.half_height * scale, kNear, view.far_offset + kFarBase);

    RENDERMatrix result;
    renderMatrixMultiply(&result, &modelview, &projection);
    return result;
}

ViewCost viewCost(const View& view) {
    const float x_limit = std::fabs(view.x_boundary);
    const float y_limit = std::fabs(view.y_boundary);
    ViewCost cost = {};
    cost.x_offset = edgeOffset(view.half_width, x_limit, view.pivot);
    cost.y_offset = edgeOffset(view.half_height, y_limit, view.pivot);
    const float x_total = edgeShift(view.half_width, x_limit) + cost.x_offset;
    const float y_total = edgeShift(view.half_height, y_limit) + cost.y_offset;
    cost.pre_shift = x_total > y_total ? x_total : y_total;
    cost.angle = rotationAngle(turnedTo(view));
    cost.angle_limit = rotationAngle(turned(view.x_boundary, view.y_boundary));
    return cost;
}

}  // namespace quorvane
