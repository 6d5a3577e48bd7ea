#include <cstdint>
#include <cstdio>
#include <cstring>

#include "depth/depth_curve.h"
#include "diagnostics/QRVNProf.h"
#include "diagnostics/log.h"
#include "diagnostics/ppm_dump.h"
#include "diagnostics/truncated.h"
#include "gl/error_check.h"
#include "gl/textures.h"
#include "quorvane/esRenderer.h"
#include "renderer/chosen_path.h"

namespace {

constexpr int depthDownScaleRate = 4;

/// The curve's value for every average: scaled by contrast / 32, then looked up. Only the low 8 bits of the
/// scaled value count, so a contrast above 32 folds the brightest depths over.
void contrastTable(float depth_contrast, uint8_t table[256]) {
    for (int average = 0; average < 256; ++average) {
        const float scaled = (static_cast<float>(average) * depth_contrast) * 0.03125f + 0.0f;
        table[average] = u_depth_table[truncated<uint32_t>(scaled) & 0xff];
    }
}

}  // namespace

void ESRenderer::setDepth(int depthWidth, int depthHeight, unsigned char* imageData) {
    if (depthWidth < depthDownScaleRate || depthHeight < depthDownScaleRate) {
        LOGD("setDepth: %d x %d is below 4 x 4, the last depth map stays\n", depthWidth, depthHeight);
        return;
    }

    time_start();
    m_vtxW = depthWidth / depthDownScaleRate;
    m_vtxH = depthHeight / depthDownScaleRate;
    const size_t plane_size = static_cast<size_t>(m_vtxW) * static_cast<size_t>(m_vtxH);
    uint8_t* depth = reinterpret_cast<uint8_t*>(m_pDepthData);
    const uint8_t* guide = reinterpret_cast<const uint8_t*>(m_pSmallTextureData);

    downsize(m_texWidth, m_texHeight, m_pTextureData, m_vtxW, m_vtxH, m_pSmallTextureData, true);
    time_step("    downsize input image   ");

    downsize(depthWidth, depthHeight, imageData, m_vtxW, m_vtxH, depth, false);
    time_step("    downsize depth image   ");

    const quorvane::Path& path = quorvane::chosenPath();
    path.crossDenoise(guide, m_pDenoisedTextureBuf, m_vtxW, m_vtxH);
    time_step("    denoise depth image    ");

    mGF.assignBuffer(m_vtxW, m_vtxH, reinterpret_cast<unsigned char*>(m_pGFBuf));
    mGF(m_pDenoisedTextureBuf, depth, depth, m_vtxW, m_vtxH, params.guided_filter_rx, params.guided_filter_ry,
        params.guided_filter_eps);
    time_step("    do GF on depth image   ");

    m_z_factor = params.rotate_z_trans;
    m_depthContrastWeight = truncated<int32_t>(params.depth_contrast);
    time_step("    border process         ");

    std::memcpy(m_pDenoisedTextureBuf, depth, plane_size);
    path.crossDenoise(m_pDenoisedTextureBuf, depth, m_vtxW, m_vtxH);
    uint8_t shaped[256];
    contrastTable(params.depth_contrast, shaped);
    path.lookUp(depth, plane_size, shaped);
    time_step("    denoise and contrast   ");

    replaceTexture(&m_depthName);
    LOGD("GL SetDepth(): texImage2D");
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    time_step("    gen depth map texture  ");

    glTexImage2D(GL_TEXTURE_2D, 0, GL_LUMINANCE, m_vtxW, m_vtxH, 0, GL_LUMINANCE, GL_UNSIGNED_BYTE, depth);
    checkGlError("glTexImage2D depth");
    glFlush();
    time_step("    upload depth texture   ");

    if (m_debugEnable == 0) return;
    LOGD("Dump depth after GF\n");
    char filename[kDumpNameSize];
    std::snprintf(filename, sizeof filename, "%sdepth_In.ppm", kDumpDirectory);
    _dump_ppm(depthWidth, depthHeight, filename, imageData, kDumpGray);
    std::snprintf(filename, sizeof filename, "%sdepth_GF.ppm", kDumpDirectory);
    _dump_ppm(m_vtxW, m_vtxH, filename, depth, kDumpGray);
}
