#include "diagnostics/log.h"
#include "quorvane/esRenderer.h"

namespace {

constexpr float kGridZ = -32.0f;

}  // namespace

void ESRenderer::setupVertices() {
    createVertexGrid(m_pVtxData);
    updateVerticesElement(m_pEleData);
}

// The grid lies in bands of one cell's height. A band holds a pair of vertices a column, the lower one first,
// and shares no vertex with its neighbours. Coordinates are running sums of float steps, so the last column
// reaches the mesh's edge only up to rounding.
void ESRenderer::createVertexGrid(VTX_FMT_STRUCT*) {
    const float left = -m_OBJ_CORD_X;
    const float bottom = -m_OBJ_CORD_Y;
    const float step_x = static_cast<float>(2.0 * static_cast<double>(m_OBJ_CORD_X) / m_vtxW);
    const float step_y = static_cast<float>(2.0 * static_cast<double>(m_OBJ_CORD_Y) / m_vtxH);
    const float step_u = 1.0f / static_cast<float>(m_vtxW);
    const float step_v = 1.0f / static_cast<float>(m_vtxH);

    LOGD("Start prepare vtx data.");
    VTX_FMT* out = m_pVtxData;
    *out++ = {left, bottom, kGridZ, 0.0f, 0.0f};
    *out++ = {left, bottom + step_y, kGridZ, 0.0f, step_v};
    for (int j = 0; j < m_vtxH; ++j) {
        for (int i = 1; i <= m_vtxW; ++i) {
            const VTX_FMT lower = out[-2];
            const VTX_FMT upper = out[-1];
            *out++ = {lower.x + step_x, lower.y, kGridZ, lower.u + step_u, lower.v};
            *out++ = {upper.x + step_x, upper.y, kGridZ, upper.u + step_u, upper.v};
        }
        if (j < m_vtxH - 1) {
            const VTX_FMT below = out[-1];
            *out++ = {left, below.y, kGridZ, 0.0f, below.v};
            *out++ = {left, below.y + step_y, kGridZ, 0.0f, below.v + step_v};
        }
    }

    LOGD("Start upload vtx data.");
    const GLsizeiptr vertices = GLsizeiptr{2} * (m_vtxW + 1) * m_vtxH;
    glBindBuffer(GL_ARRAY_BUFFER, m_gridVertexBuf[0]);
    glBufferData(GL_ARRAY_BUFFER, vertices * static_cast<GLsizeiptr>(sizeof(VTX_FMT)), m_pVtxData,
                 GL_STATIC_DRAW);
}

void ESRenderer::updateVerticesElement(uint32_t*) {
    GLuint* out = m_pEleData;
    for (int j = 0; j < m_vtxH; ++j) {
        for (int i = 0; i < m_vtxW; ++i) {
            const GLuint a = 2 * static_cast<GLuint>(j * (m_vtxW + 1) + i);
            *out++ = a;
            *out++ = a + 1;
            *out++ = a + 2;
            *out++ = a + 2;
            *out++ = a + 1;
            *out++ = a + 3;
        }
    }

    const int indices = m_vtxH * m_vtxW * 6;
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, m_gridVertexBuf[1]);
    glBufferData(GL_ELEMENT_ARRAY_BUFFER, GLsizeiptr{indices} * static_cast<GLsizeiptr>(sizeof(GLuint)),
                 m_pEleData, GL_STATIC_DRAW);
    m_eleCount = indices;
}
