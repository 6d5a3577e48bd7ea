#ifndef QUORVANE_TESTS_COMPOSITION_MODEL_SCENE_H
#define QUORVANE_TESTS_COMPOSITION_MODEL_SCENE_H

#include "composition/geometry.h"
#include "support/model_renderer.h"

namespace quorvane {

/// The picture of a bent grid, for a renderer that knows nothing of composition. Its photo and its size are
/// the test's.
inline test::ModelScene modelScene(const BentGrid& grid, const Camera& camera, ViewPosition position,
                                   double fov_scale) {
    test::ModelScene scene = {};
    scene.grid_width = grid.depth.width;
    scene.grid_height = grid.depth.height;
    scene.depth.assign(grid.depth.samples, grid.depth.samples + grid.depth.width * grid.depth.height);
    scene.half_width = grid.half_width;
    scene.half_height = grid.half_height;
    scene.view_x = position.x;
    scene.view_y = position.y;
    scene.gain = 1.0;
    scene.x_boundary_deg = camera.x_turn_deg;
    scene.y_boundary_deg = camera.y_turn_deg;
    scene.pivot = camera.pivot_distance;
    scene.fov_scale = fov_scale;
    scene.far_plane = camera.far_distance;
    return scene;
}

}  // namespace quorvane

#endif
