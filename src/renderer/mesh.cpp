#include "gl/mesh.h"

#include <cstddef>

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
    const size_t vertices = size_t{2} * static_cast<size_t>(m_vtxW + 1) * static_cast<size_t>(m_vtxH);
    quorvane::gl::uploadVertices(m_gridVertexBuf[0], m_pVtxData, vertices * sizeof(VTX_FMT));
}

void ESRenderer::updateVerticesElement(uint32_t*) {
    quorvane::chosenPath().createIndices(m_vtxW, m_vtxH, m_pEleData);
    m_eleCount = m_vtxH * m_vtxW * 6;
    quorvane::gl::uploadIndices(m_gridVertexBuf[1], m_pEleData,
                                static_cast<size_t>(m_eleCount) * sizeof(GLuint));
}
