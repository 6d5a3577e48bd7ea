#include <cmath>

#include "diagnostics/log.h"
#include "gl/error_check.h"
#include "quorvane/esRenderer.h"
#include "view/angle.h"

namespace {

constexpr float kNear = 12.0f;
constexpr float kFarBase = 64.0f;

// The mesh's distance before displacement, where the field of view is measured.
constexpr double kReferenceDistance = 32.0;

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
float edgeOffset(float half_extent, float limit_deg, float z_axis) {
    return static_cast<float>(static_cast<double>(half_extent) * (1.0 - std::cos(limit_deg * PI / 180.0)) *
                              static_cast<double>(z_axis / half_extent));
}

}  // namespace

void ESRenderer::setupProjection() {
    // The second slot of each pair belongs to a second view and stays the identity.
    RENDERMatrix modelview, modelview2, rotMat, projection;
    renderMatrixLoadIdentity(&m_mvpL);
    renderMatrixLoadIdentity(&m_mvpR);
    renderMatrixLoadIdentity(&modelview);
    renderMatrixLoadIdentity(&modelview2);

    const float scale = static_cast<float>(static_cast<double>(params.fov_scale) * 12.0 / kReferenceDistance);
    const float z_axis = m_z_factor;

    const float x_angle = m_transX * params.trans_to_rotate_scale * params.rotate_x_boundary;
    const float y_angle = m_transY * params.trans_to_rotate_scale * params.rotate_y_boundary;

    renderMatrixLoadIdentity(&rotMat);
    renderRotate(&rotMat, -params.rotate_x_boundary, 0.0f, 1.0f, 0.0f);
    renderRotate(&rotMat, -params.rotate_y_boundary, 1.0f, 0.0f, 0.0f);
    const float axis_angle_limit = rotationAngle(rotMat);

    renderMatrixLoadIdentity(&rotMat);
    renderRotate(&rotMat, -x_angle, 0.0f, 1.0f, 0.0f);
    renderRotate(&rotMat, -y_angle, 1.0f, 0.0f, 0.0f);
    const float axis_angle = rotationAngle(rotMat);

    // What the limits would cost in depth, for whoever tunes them from the log.
    const float x_angle_limit = std::fabs(params.rotate_x_boundary);
    const float y_angle_limit = std::fabs(params.rotate_y_boundary);
    const float x_post_offset = 0.0f;
    const float y_post_offset = 0.0f;
    const float x_shift = edgeShift(m_OBJ_CORD_X, x_angle_limit);
    const float y_shift = edgeShift(m_OBJ_CORD_Y, y_angle_limit);
    const float ortho_shift = params.far_offset_ext;
    const float x_offset = edgeOffset(m_OBJ_CORD_X, x_angle_limit, z_axis);
    const float y_offset = edgeOffset(m_OBJ_CORD_Y, y_angle_limit, z_axis);
    const float x_total = (x_shift + x_offset) + x_post_offset;
    const float y_total = (y_shift + y_offset) + y_post_offset;
    const float final_transZ = x_total > y_total ? x_total : y_total;
    LOGD(
        "x_offset: %f, y_offset: %f, Pre_shift_z: %f, z_axis: %f, m_z_factor: %f, axis_angle: %f, "
        "axis_angle_limit: %f, weight: %d\n",
        static_cast<double>(x_offset), static_cast<double>(y_offset), static_cast<double>(final_transZ),
        static_cast<double>(z_axis), static_cast<double>(m_z_factor), static_cast<double>(axis_angle),
        static_cast<double>(axis_angle_limit), m_depthContrastWeight);

    // Turn about the pivot (0, 0, -z_axis), which stays where it is.
    renderTranslate(&modelview, x_post_offset, -y_post_offset, -z_axis);
    renderMatrixMultiply(&modelview, &rotMat, &modelview);
    renderTranslate(&modelview, 0.0f, 0.0f, z_axis);

    renderMatrixLoadIdentity(&projection);
    renderFrustum(&projection, -(m_OBJ_CORD_X * scale), m_OBJ_CORD_X * scale, -(m_OBJ_CORD_Y * scale),
                  m_OBJ_CORD_Y * scale, kNear, ortho_shift + kFarBase);
    renderMatrixMultiply(&m_mvpL, &modelview, &projection);

    glUniformMatrix4fv(static_cast<GLint>(m_mvpLocHandle), 1, GL_FALSE, &m_mvpL.mat[0][0]);
    checkGlError("glUniformMatrix4fv");
}
