#ifndef QUORVANE_KERNELS_VERTEX_GRID_H
#define QUORVANE_KERNELS_VERTEX_GRID_H

#include <cstdint>

namespace quorvane {

/// x y z u v.
constexpr int kVertexFloats = 5;

/// The grid of `width` x `height` cells that createVertices lays between -x..x and -y..y.
struct VertexGrid {
    int width;
    int height;
    float x;
    float y;
};

namespace reference {

/// Writes 2 (width + 1) height vertices of five floats, x y z u v; two where height is 0.
void createVertices(const VertexGrid& grid, float* out);

/// Writes six indices a cell, two triangles.
void createIndices(int width, int height, uint32_t* out);

}  // namespace reference
}  // namespace quorvane

#endif
