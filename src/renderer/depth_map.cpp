#include <cstdint>
#include <cstdio>

#include "depth/shape_depth.h"
#include "diagnostics/QRVNProf.h"
#include "diagnostics/log.h"
#include "diagnostics/ppm_dump.h"
#include "gl/textures.h"
#include "kernels/clamped_cast.h"
#include "kernels/downsize.h"
#include "quorvane/esRenderer.h"
#include "renderer/chosen_path.h"
#include "renderer/memory_plan.h"

using quorvane::ShapingStep;

namespace {

void logNotReduced(int width, int height, int out_width, int out_height) {
    LOGD("downsize: cannot reduce %d x %d to %d x %d\n", width, height, out_width, out_height);
}

}  // namespace

void ESRenderer::downsize(int srcWidth, int srcHeight, const void* srcData, int dstWidth, int dstHeight,
                          void* dstData, bool isRGB) const {
    if (dstWidth < 1 || dstHeight < 1) return;
    if (!quorvane::downsize(quorvane::chosenPath(), srcWidth, srcHeight, static_cast<const uint8_t*>(srcData),
                            dstWidth, dstHeight, static_cast<uint8_t*>(dstData), isRGB))
        logNotReduced(srcWidth, srcHeight, dstWidth, dstHeight);
}

void ESRenderer::setDepth(int depthWidth, int depthHeight, unsigned char* imageData) {
    if (depthWidth < quorvane::kDepthPixelsPerCell || depthHeight < quorvane::kDepthPixelsPerCell) {
        LOGD("setDepth: %d x %d is below 4 x 4, the last depth map stays\n", depthWidth, depthHeight);
        return;
    }

    time_start();
    m_vtxW = depthWidth / quorvane::kDepthPixelsPerCell;
    m_vtxH = depthHeight / quorvane::kDepthPixelsPerCell;
    mGF.assignBuffer(m_vtxW, m_vtxH, reinterpret_cast<unsigned char*>(m_pGFBuf));

    quorvane::DepthShaping shaping = {};
    shaping.photo = reinterpret_cast<const uint8_t*>(m_pTextureData);
    shaping.photo_width = m_texWidth;
    shaping.photo_height = m_texHeight;
    shaping.depth = imageData;
    shaping.depth_width = depthWidth;
    shaping.depth_height = depthHeight;
    shaping.width = m_vtxW;
    shaping.height = m_vtxH;
    shaping.rx = params.guided_filter_rx;
    shaping.ry = params.guided_filter_ry;
    shaping.eps = params.guided_filter_eps;
    shaping.contrast = params.depth_contrast;
    shaping.guide = reinterpret_cast<uint8_t*>(m_pSmallTextureData);
    shaping.scratch = m_pDenoisedTextureBuf;
    shaping.filter_buffer = mGF.buffer();
    shaping.shaped = reinterpret_cast<uint8_t*>(m_pDepthData);
    quorvane::shapeDepth(quorvane::chosenPath(), shaping, [&](ShapingStep step, bool done) {
        switch (step) {
            case ShapingStep::kReducePhoto:
                if (!done) logNotReduced(m_texWidth, m_texHeight, m_vtxW, m_vtxH);
                return time_step("    downsize input image   ");
            case ShapingStep::kReduceDepth:
                if (!done) logNotReduced(depthWidth, depthHeight, m_vtxW, m_vtxH);
                return time_step("    downsize depth image   ");
            case ShapingStep::kDenoiseGuide: return time_step("    denoise depth image    ");
            case ShapingStep::kFilter:
                time_step("    do GF on depth image   ");
                m_z_factor = params.rotate_z_trans;
                m_depthContrastWeight = quorvane::clampedCast<int32_t>(params.depth_contrast);
                return time_step("    border process         ");
            case ShapingStep::kDenoiseAndCurve: return time_step("    denoise and contrast   ");
        }
    });

    quorvane::gl::replaceTexture(&m_depthName);
    LOGD("GL SetDepth(): texImage2D");
    quorvane::gl::unpackTightRows();
    time_step("    gen depth map texture  ");

    quorvane::gl::uploadDepth(m_vtxW, m_vtxH, shaping.shaped);
    time_step("    upload depth texture   ");

    if (m_debugEnable == 0) return;
    LOGD("Dump depth after GF\n");
    char filename[quorvane::kDumpNameSize];
    std::snprintf(filename, sizeof filename, "%sdepth_In.ppm", quorvane::kDumpDirectory);
    _dump_ppm(depthWidth, depthHeight, filename, imageData, quorvane::kDumpGray);
    std::snprintf(filename, sizeof filename, "%sdepth_GF.ppm", quorvane::kDumpDirectory);
    _dump_ppm(m_vtxW, m_vtxH, filename, shaping.shaped, quorvane::kDumpGray);
}
