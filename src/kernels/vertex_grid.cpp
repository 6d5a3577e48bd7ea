// The flat mesh: a regular grid of quads over the photo.
//
// The grid lies in bands of one cell's height. A band holds a pair of vertices a column, the lower one first,
// and shares no vertex with its neighbours. Coordinates are running sums of float steps, so the last column
// reaches the mesh's edge only up to rounding.

#include "kernels/vertex_grid.h"

#ifdef QUORVANE_PATH
#include "kernels/lanes.h"
#else
#include "diagnostics/log.h"
#include "quorvane/esRenderer.h"
#endif

namespace quorvane {
namespace {

constexpr float kGridZ = -32.0f;
constexpr int kVertexFloats = 5;

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

#ifndef QUORVANE_PATH

namespace reference {

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

}  // namespace reference

#else

// Vectors. All bands are alike but for y and v, each of which has two values in a band. So the first band is
// made as the reference makes it, and every other one from it by replacing those. The ten floats of a pair
// and whole vectors end together after kPeriod pairs. The indices of kCells cells are three vectors, and
// those of other cells the same ones raised by a number.
namespace QUORVANE_PATH {
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

}  // namespace QUORVANE_PATH

#endif

}  // namespace quorvane

#ifndef QUORVANE_PATH

void ESRenderer::setupVertices() {
    createVertexGrid(m_pVtxData);
    updateVerticesElement(m_pEleData);
}

void ESRenderer::createVertexGrid(VTX_FMT_STRUCT*) {
    static_assert(sizeof(VTX_FMT) == quorvane::kVertexFloats * sizeof(float));
    LOGD("Start prepare vtx data.");
    const quorvane::VertexGrid grid = {m_vtxW, m_vtxH, m_OBJ_CORD_X, m_OBJ_CORD_Y};
    quorvane::createVerticesPaths[quorvane::chosenPath()](grid, &m_pVtxData->x);

    LOGD("Start upload vtx data.");
    const GLsizeiptr vertices = GLsizeiptr{2} * (m_vtxW + 1) * m_vtxH;
    glBindBuffer(GL_ARRAY_BUFFER, m_gridVertexBuf[0]);
    glBufferData(GL_ARRAY_BUFFER, vertices * static_cast<GLsizeiptr>(sizeof(VTX_FMT)), m_pVtxData,
                 GL_STATIC_DRAW);
}

void ESRenderer::updateVerticesElement(uint32_t*) {
    quorvane::createIndicesPaths[quorvane::chosenPath()](m_vtxW, m_vtxH, m_pEleData);

    const int indices = m_vtxH * m_vtxW * 6;
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, m_gridVertexBuf[1]);
    glBufferData(GL_ELEMENT_ARRAY_BUFFER, GLsizeiptr{indices} * static_cast<GLsizeiptr>(sizeof(GLuint)),
                 m_pEleData, GL_STATIC_DRAW);
    m_eleCount = indices;
}

#endif
