#include "bench/views/shifted_views.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "depth/depth_curve.h"

namespace quorvane::bench {
namespace {

constexpr double kDegrees = 180.0 / 3.14159265358979323846;

}  // namespace

// The depth map goes through the curve unchanged at a contrast of 32.
uint8_t depthByteAt(double distance) {
    const double shaped = (ShiftedViews::kFarthest - distance) / 14.0 * 255.0;
    int best = 0;
    for (int i = 1; i < 256; ++i)
        if (std::abs(u_depth_table[i] - shaped) < std::abs(u_depth_table[best] - shaped)) best = i;
    return static_cast<uint8_t>(best);
}

double distanceOf(uint8_t depth_byte) {
    return ShiftedViews::kFarthest - 14.0 * u_depth_table[depth_byte] / 255.0;
}

ShiftedViews::ShiftedViews(const Picture& photo, const DepthMap& depth, bool guided)
    : m_width(photo.width), m_height(photo.height) {
    const int width = 2 * m_width, height = 2 * m_height;
    m_renderer.getProperties(4);
    LibParam& params = m_renderer.params;
    params.rotate_z_trans = static_cast<float>(kPivot);
    params.trans_to_rotate_scale = 1.0f;
    params.depth_contrast = 32.0f;
    params.fov_scale = 2.0f;
    if (!guided) params.guided_filter_rx = params.guided_filter_ry = 0;

    m_block.resize(static_cast<size_t>(
        m_renderer.getRequiredMemSize(photo.width, photo.height, depth.width, depth.height)));
    m_renderer.assignMem(m_block.data());
    m_renderer.setupGraphics(width, height);
    m_renderer.setupVertices();
    m_renderer.setTexture(photo.width, photo.height, const_cast<uint8_t*>(photo.samples.data()));
    m_renderer.setDepth(depth.width, depth.height, const_cast<uint8_t*>(depth.samples.data()));
    m_target.emplace(&m_renderer, width, height);
}

Picture ShiftedViews::draw(double strength_right, double strength_down, int left, int top) {
    // A strength is a camera's way times its focal length in pixels.
    const auto turn_deg = [](double strength, int pixels, double half_extent) {
        const double focal_length = pixels / 2.0 * 32.0 / half_extent;
        return std::asin(strength / focal_length / kPivot) * kDegrees;
    };
    m_renderer.params.rotate_x_boundary =
        static_cast<float>(-turn_deg(strength_right, m_width, m_renderer.m_OBJ_CORD_X));
    m_renderer.params.rotate_y_boundary =
        static_cast<float>(turn_deg(strength_down, m_height, m_renderer.m_OBJ_CORD_Y));
    m_renderer.m_transX = m_renderer.m_transY = 1.0f;
    glBindFramebuffer(GL_FRAMEBUFFER, m_renderer.m_fbo);
    m_renderer.renderFrame();

    const int x0 = m_width / 2 + left, y0 = m_height / 2 + top;
    std::vector<uint8_t> rgba(size_t{16} * static_cast<size_t>(m_width) * static_cast<size_t>(m_height));
    glReadPixels(0, 0, 2 * m_width, 2 * m_height, GL_RGBA, GL_UNSIGNED_BYTE, rgba.data());
    Picture picture(m_width, m_height);
    for (int y = 0; y < m_height; ++y)
        for (int x = 0; x < m_width; ++x) {
            const int column = x0 + x, row = y0 + y;
            if (column < 0 || row < 0 || column >= 2 * m_width || row >= 2 * m_height) continue;
            const size_t pixel =
                static_cast<size_t>(row) * static_cast<size_t>(2 * m_width) + static_cast<size_t>(column);
            for (int c = 0; c < 3; ++c) picture.at(x, y, c) = rgba[4 * pixel + static_cast<size_t>(c)];
        }
    return picture;
}

}  // namespace quorvane::bench
