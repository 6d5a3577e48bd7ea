#ifndef QUORVANE_TESTS_SUPPORT_MODEL_RENDERER_H
#define QUORVANE_TESTS_SUPPORT_MODEL_RENDERER_H

#include <cstdint>
#include <vector>

namespace quorvane::test {

/// Everything that a picture depends on.
struct ModelScene {
    int photo_width, photo_height;
    std::vector<uint8_t> photo;  ///< R, G, B as uploaded
    int grid_width, grid_height;
    std::vector<uint8_t> depth;  ///< as uploaded, a byte a cell
    int width, height;           ///< of the picture
    double half_width, half_height;
    double view_x, view_y;  ///< m_transX, m_transY
    double gain = 0.6;
    double x_boundary_deg = 12.0, y_boundary_deg = 12.0;
    double pivot = 40.0;
    double fov_scale = 0.81;
    double far_plane = 164.0;
    bool depth_tested = true;  ///< false: in index order, the last one drawn wins
};

/// The picture in double precision, R, G, B, the photo's first row first: the displaced mesh through the
/// camera, pixel centres sampled, perspective-correct texture coordinates, bilinear lookups clamped at the
/// edges. Where the mesh is not, black.
std::vector<double> modelPicture(const ModelScene& scene);

}  // namespace quorvane::test

#endif
