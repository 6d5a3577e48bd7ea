#include "diagnostics/log.h"
#include "kernels/vertex_grid.h"
#include "quorvane/esRenderer.h"
#include "renderer/chosen_path.h"

void ESRenderer::setupVertices() {
    createVertexGrid(m_pVtxData);
    updateVerticesElement(m_pEleData);
}

void ESRenderer::createVertexGrid(VTX_FMT_STRUCT*) {
    static_assert(sizeof(VTX_FMT) == quorvane::kVertexFloats * sizeof(float));
    LOGD("Start prepare vtx data.");
    const quorvane::VertexGrid grid = {m_vtxW, m_vtxH, m_OBJ_CORD_X, m_OBJ_CORD_Y};
    quorvane::chosenPath().createVertices(grid, &m_pVtxData->x);

    LOGD("Start upload vtx data.");
    const GLsizeiptr vertices = GLsizeiptr{2} * (m_vtxW + 1) * m_vtxH;
    glBindBuffer(GL_ARRAY_BUFFER, m_gridVertexBuf[0]);
    glBufferData(GL_ARRAY_BUFFER, vertices * static_cast<GLsizeiptr>(sizeof(VTX_FMT)), m_pVtxData,
                 GL_STATIC_DRAW);
}

void ESRenderer::updateVerticesElement(uint32_t*) {
    quorvane::chosenPath().createIndices(m_vtxW, m_vtxH, m_pEleData);

    const int indices = m_vtxH * m_vtxW * 6;
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, m_gridVertexBuf[1]);
    glBufferData(GL_ELEMENT_ARRAY_BUFFER, GLsizeiptr{indices} * static_cast<GLsizeiptr>(sizeof(GLuint)),
                 m_pEleData, GL_STATIC_DRAW);
    m_eleCount = indices;
}
