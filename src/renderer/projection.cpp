#include "diagnostics/log.h"
#include "gl/frame.h"
#include "quorvane/esRenderer.h"
#include "view/view_matrix.h"

void ESRenderer::setupProjection() {
    quorvane::View view = {};
    view.x = m_transX;
    view.y = m_transY;
    view.x_boundary = params.rotate_x_boundary;
    view.y_boundary = params.rotate_y_boundary;
    view.gain = params.trans_to_rotate_scale;
    view.fov_scale = params.fov_scale;
    view.far_offset = params.far_offset_ext;
    view.pivot = m_z_factor;
    view.half_width = m_OBJ_CORD_X;
    view.half_height = m_OBJ_CORD_Y;

    const quorvane::ViewCost cost = quorvane::viewCost(view);
    LOGD(
        "x_offset: %f, y_offset: %f, Pre_shift_z: %f, z_axis: %f, m_z_factor: %f, axis_angle: %f, "
        "axis_angle_limit: %f, weight: %d\n",
        static_cast<double>(cost.x_offset), static_cast<double>(cost.y_offset),
        static_cast<double>(cost.pre_shift), static_cast<double>(view.pivot), static_cast<double>(m_z_factor),
        static_cast<double>(cost.angle), static_cast<double>(cost.angle_limit), m_depthContrastWeight);

    m_mvpL = quorvane::viewMatrix(view);
    // The second view's.
    renderMatrixLoadIdentity(&m_mvpR);
    quorvane::gl::setMatrix(m_mvpLocHandle, &m_mvpL.mat[0][0]);
}
