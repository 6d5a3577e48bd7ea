#ifndef QUORVANE_KERNELS_VERTEX_GRID_H
#define QUORVANE_KERNELS_VERTEX_GRID_H

#include <cstdint>

#include "kernels/paths.h"

namespace quorvane {

/// The grid of `width` x `height` cells that createVertexGrid lays between -x..x and -y..y.
struct VertexGrid {
    int width;
    int height;
    float x;
    float y;
};

QUORVANE_IN_EVERY_PATH(
    /// Writes 2 (width + 1) height vertices of five floats, x y z u v; two where height is 0.
    void createVertices(const VertexGrid& grid, float* out);

    /// Writes six indices a cell, two triangles.
    void createIndices(int width, int height, uint32_t* out);)

inline constexpr void (*createVerticesPaths[])(const VertexGrid&,
                                               float*) = QUORVANE_EVERY_PATH(createVertices);
inline constexpr void (*createIndicesPaths[])(int, int, uint32_t*) = QUORVANE_EVERY_PATH(createIndices);

}  // namespace quorvane

#endif
