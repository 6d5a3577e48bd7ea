#include "quorvane/esRenderer.h"

// m_mvpL and m_mvpR stay unset: the first frame writes both before anything reads them.
ESRenderer::ESRenderer()
    : m_program(0),
      m_vPositionHandle(0),
      m_mvpLocHandle(0),
      m_texLocHandle(0),
      m_depthLocHandle(0),
      m_texCoordHandle(0),
      m_padCordXHandle(0),
      m_zLimitHandle(0),
      m_gridVertexBuf{0, 0},
      m_pVtxData(nullptr),
      m_pEleData(nullptr),
      m_fbo(0),
      m_renderCount(0),
      m_debugEnable(0),
      m_OBJ_CORD_X(0.0f),
      m_OBJ_CORD_X2(0.0f),
      m_OBJ_CORD_Y(18.5f),
      m_accX(0.0f),
      m_accY(0.0f),
      m_accZ(0.0f),
      m_initAccX(-1000.0f),
      m_initAccY(-1000.0f),
      m_initAccZ(-1000.0f),
      m_transX(0.0f),
      m_transY(0.0f),
      m_transZ(0.0f),
      m_camTransX(0.0f),
      m_camTransY(0.0f),
      m_camTransZ(0.0f),
      m_targetTransX(0.0f),
      m_targetTransY(0.0f),
      m_targetTransZ(0.0f),
      m_transStep(0.1f),
      m_depthContrastWeight(8),
      m_width(0.0f),
      m_height(0.0f),
      m_vtxW(0),
      m_vtxH(0),
      m_texWidth(0),
      m_texHeight(0),
      m_baseline(2.4f),
      m_L_startX(0),
      m_L_startY(0),
      m_renderW(0),
      m_renderH(0),
      m_eleCount(0),
      m_texName(0),
      m_depthName(0),
      m_triangleVertices(nullptr),
      m_pDepthData(nullptr),
      m_pTextureData(nullptr),
      m_pSmallTextureData(nullptr),
      m_pDenoisedTextureBuf(nullptr),
      m_pGFBuf(nullptr),
      m_minDepth(255),
      m_maxDepth(0),
      m_z_factor(0.0f) {}

// Names that are still 0 go to GL as they are; it ignores them. The shader objects live as long as the
// context.
ESRenderer::~ESRenderer() {
    glDeleteTextures(1, &m_depthName);
    glDeleteTextures(1, &m_texName);
    glDeleteFramebuffers(1, &m_fbo);
    glDeleteBuffers(2, m_gridVertexBuf);
    glDeleteProgram(m_program);
}
