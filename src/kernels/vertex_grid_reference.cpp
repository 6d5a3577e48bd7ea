// The flat mesh: a regular grid of quads over the photo.
//
// The grid lies in bands of one cell's height. A band holds a pair of vertices a column, the lower one first,
// and shares no vertex with its neighbours. Coordinates are running sums of float steps, so the last column
// reaches the mesh's edge only up to rounding.

#include "kernels/vertex_grid.h"
#include "kernels/vertex_grid_parts.h"

namespace quorvane::reference {

void createVertices(const VertexGrid& grid, float* out) {
    const Steps steps(grid);
    writeFirstPair(grid, steps, -grid.y, 0.0f, out);
    for (int j = 0; j < grid.height; ++j) {
        out += 2 * kVertexFloats;
        for (int i = 1; i <= grid.width; ++i, out += 2 * kVertexFloats) writeNextPair(steps, out);
        const float* upper = out - kVertexFloats;
        if (j < grid.height - 1) writeFirstPair(grid, steps, upper[1], upper[4], out);
    }
}

void createIndices(int width, int height, uint32_t* out) {
    for (int j = 0; j < height; ++j)
        for (int i = 0; i < width; ++i, out += 6)
            writeCell(
                2 * (static_cast<uint32_t>(j) * static_cast<uint32_t>(width + 1) + static_cast<uint32_t>(i)),
                out);
}

}  // namespace quorvane::reference
