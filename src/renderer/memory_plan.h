#ifndef QUORVANE_RENDERER_MEMORY_PLAN_H
#define QUORVANE_RENDERER_MEMORY_PLAN_H

namespace quorvane {

/// Columns, and rows, of the depth map that make one cell of the grid.
constexpr int kDepthPixelsPerCell = 4;

}  // namespace quorvane

#endif
