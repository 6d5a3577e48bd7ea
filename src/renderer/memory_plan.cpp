#include "renderer/memory_plan.h"

#include "diagnostics/log.h"
#include "kernels/guided_filter.h"
#include "quorvane/esRenderer.h"

namespace {

/// Bytes of the working areas, in the order in which they lie in the block.
struct MemoryPlan {
    int guided_filter;
    int vertices;
    int indices;
    int photo;
    int plane;    // depth, reduced photo and denoised guide: one byte a cell each
    int reserve;  // at the very end, named by no pointer; hosts size their block with it

    MemoryPlan(int grid_w, int grid_h, int tex_w, int tex_h)
        : guided_filter(quorvane::guidedFilterBufferSize(grid_w, grid_h)),
          vertices(2 * grid_h * (grid_w + 1) * static_cast<int>(sizeof(VTX_FMT))),
          indices(6 * grid_w * grid_h * static_cast<int>(sizeof(GLuint))),
          photo(tex_w * tex_h * 3),
          plane(grid_w * grid_h),
          reserve(guided_filter / 2) {}

    int total() const { return guided_filter + vertices + indices + photo + 3 * plane + reserve; }
};

}  // namespace

int ESRenderer::getRequiredMemSize(int texWidth, int texHeight, int depthWidth, int depthHeight) {
    m_vtxW = depthWidth / quorvane::kDepthPixelsPerCell;
    m_vtxH = depthHeight / quorvane::kDepthPixelsPerCell;
    m_texWidth = texWidth;
    m_texHeight = texHeight;
    LOGD("m_vtxW=%d, m_vtxH=%d\n", m_vtxW, m_vtxH);
    LOGD("m_texWidth=%d, m_texHeight=%d\n", m_texWidth, m_texHeight);
    return MemoryPlan(m_vtxW, m_vtxH, m_texWidth, m_texHeight).total();
}

bool ESRenderer::assignMem(unsigned char* pMemBuf) {
    const MemoryPlan plan(m_vtxW, m_vtxH, m_texWidth, m_texHeight);
    auto carve = [next = pMemBuf](int bytes) mutable {
        unsigned char* area = next;
        next += bytes;
        return area;
    };
    m_pGFBuf = reinterpret_cast<char*>(carve(plan.guided_filter));
    m_pVtxData = reinterpret_cast<VTX_FMT*>(carve(plan.vertices));
    m_pEleData = reinterpret_cast<GLuint*>(carve(plan.indices));
    m_pTextureData = reinterpret_cast<char*>(carve(plan.photo));
    m_pDepthData = reinterpret_cast<char*>(carve(plan.plane));
    m_pSmallTextureData = reinterpret_cast<char*>(carve(plan.plane));
    m_pDenoisedTextureBuf = carve(plan.plane);
    return true;
}
