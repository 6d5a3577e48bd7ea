// The flat mesh on vectors.
//
// All bands are alike but for y and v, and each of these has two values in a band. So the first band is made
// as the reference makes it, and the others are copies of it with y and v replaced. The ten floats of a pair
// and whole vectors end together after kPeriod pairs. The indices of kCells cells are three vectors; those of
// other cells are the same vectors with a number added.

#include "kernels/lanes.h"
#include "kernels/vertex_grid.h"
#include "kernels/vertex_grid_parts.h"

namespace quorvane::QUORVANE_PATH {
namespace {

constexpr int kLanes = kBytes / 4;
constexpr int kPairFloats = 2 * kVertexFloats;
constexpr int kPeriod = 4;
constexpr int kPeriodVectors = kPeriod * kPairFloats / kLanes;
constexpr int kCells = kBytes / 8;

inline uint32_t bitsOf(float value) {
    uint32_t bits;
    __builtin_memcpy(&bits, &value, sizeof bits);
    return bits;
}

/// A period of pairs that hold these bits in the places of y and v, and 0 elsewhere.
struct Heights {
    Heights(uint32_t lower_y, uint32_t lower_v, uint32_t upper_y, uint32_t upper_v) {
        uint32_t floats[kPeriod * kPairFloats] = {};
        for (int k = 0; k < kPeriod; ++k) {
            uint32_t* pair = floats + k * kPairFloats;
            pair[1] = lower_y;
            pair[4] = lower_v;
            pair[kVertexFloats + 1] = upper_y;
            pair[kVertexFloats + 4] = upper_v;
        }
        for (int k = 0; k < kPeriodVectors; ++k) vectors[k] = load<u32>(floats + k * kLanes);
    }
    u32 vectors[kPeriodVectors];
};

}  // namespace

void createVertices(const VertexGrid& grid, float* out) {
    const int pairs = grid.width + 1;
    if (grid.height < 1 || pairs < kPeriod) return reference::createVertices(grid, out);
    const Steps steps(grid);
    const float* first_band = out;
    writeFirstPair(grid, steps, -grid.y, 0.0f, out);
    for (int i = 1; i < pairs; ++i) writeNextPair(steps, out + i * kPairFloats);

    const Heights places(~0u, ~0u, ~0u, ~0u);
    float lower_y = first_band[kVertexFloats + 1], lower_v = first_band[kVertexFloats + 4];
    for (int j = 1; j < grid.height; ++j) {
        out += static_cast<ptrdiff_t>(pairs) * kPairFloats;
        const float upper_y = lower_y + steps.y, upper_v = lower_v + steps.v;
        const Heights heights(bitsOf(lower_y), bitsOf(lower_v), bitsOf(upper_y), bitsOf(upper_v));
        for (int i = 0; i < pairs; i += kPeriod) {
            // The last period overlaps the one before it.
            const ptrdiff_t at = ptrdiff_t{i < pairs - kPeriod ? i : pairs - kPeriod} * kPairFloats;
            QUORVANE_UNROLLED
            for (int k = 0; k < kPeriodVectors; ++k) {
                const u32 band = load<u32>(first_band + at + k * kLanes);
                store(out + at + k * kLanes, (band & ~places.vectors[k]) | heights.vectors[k]);
            }
        }
        lower_y = upper_y;
        lower_v = upper_v;
    }
}

void createIndices(int width, int height, uint32_t* out) {
    if (width < kCells) return reference::createIndices(width, height, out);
    uint32_t corners[6 * kCells];
    for (uint32_t i = 0; i < kCells; ++i) writeCell(2 * i, corners + 6 * i);
    const u32 first = load<u32>(corners), second = load<u32>(corners + kLanes),
              third = load<u32>(corners + 2 * kLanes);
    for (int j = 0; j < height; ++j, out += 6 * static_cast<ptrdiff_t>(width)) {
        const uint32_t row = 2 * static_cast<uint32_t>(j) * static_cast<uint32_t>(width + 1);
        for (int i = 0; i < width; i += kCells) {
            // The last cells overlap those before them.
            const int cell = i < width - kCells ? i : width - kCells;
            const uint32_t a = row + 2 * static_cast<uint32_t>(cell);
            store(out + 6 * cell, first + a);
            store(out + 6 * cell + kLanes, second + a);
            store(out + 6 * cell + 2 * kLanes, third + a);
        }
    }
}

}  // namespace quorvane::QUORVANE_PATH
