#ifndef QUORVANE_KERNELS_VERTEX_GRID_PARTS_H
#define QUORVANE_KERNELS_VERTEX_GRID_PARTS_H

#include "kernels/vertex_grid.h"

namespace quorvane {
// Each of the files that include this has its own: a function that all objects shared could come out with
// one path's instructions.
namespace {

constexpr float kGridZ = -32.0f;

/// The distances between neighbouring columns and rows.
struct Steps {
    explicit Steps(const VertexGrid& grid)
        : x(static_cast<float>(2.0 * static_cast<double>(grid.x) / grid.width)),
          y(static_cast<float>(2.0 * static_cast<double>(grid.y) / grid.height)),
          u(1.0f / static_cast<float>(grid.width)),
          v(1.0f / static_cast<float>(grid.height)) {}
    float x, y, u, v;
};

inline void writeVertex(float* out, float x, float y, float u, float v) {
    out[0] = x;
    out[1] = y;
    out[2] = kGridZ;
    out[3] = u;
    out[4] = v;
}

/// The first pair of a band whose lower edge is at y, v.
inline void writeFirstPair(const VertexGrid& grid, const Steps& steps, float y, float v, float* out) {
    writeVertex(out, -grid.x, y, 0.0f, v);
    writeVertex(out + kVertexFloats, -grid.x, y + steps.y, 0.0f, v + steps.v);
}

/// The pair to the right of the pair before it.
inline void writeNextPair(const Steps& steps, float* out) {
    const float* before = out - 2 * kVertexFloats;
    for (int i = 0; i < 2; ++i, before += kVertexFloats, out += kVertexFloats)
        writeVertex(out, before[0] + steps.x, before[1], before[3] + steps.u, before[4]);
}

/// The six indices of a cell whose lower left vertex is a.
inline void writeCell(uint32_t a, uint32_t* out) {
    constexpr uint32_t kCorners[6] = {0, 1, 2, 2, 1, 3};
    for (int i = 0; i < 6; ++i) out[i] = a + kCorners[i];
}

}  // namespace
}  // namespace quorvane

#endif
