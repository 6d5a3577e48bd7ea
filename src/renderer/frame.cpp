#include "gl/frame.h"

#include <cstddef>
#include <cstdio>
#include <memory>
#include <new>

#include "diagnostics/QRVNProf.h"
#include "diagnostics/ppm_dump.h"
#include "kernels/clamped_cast.h"
#include "quorvane/esRenderer.h"

using quorvane::clampedCast;

bool ESRenderer::setOutTexture(GLuint outputTexID) { return quorvane::gl::attachOutput(m_fbo, outputTexID); }

void ESRenderer::renderFrame() {
    time_start();
    quorvane::gl::beginFrame(m_program, static_cast<int>(m_width), static_cast<int>(m_height));
    time_step("GL setup1                  ");

    setupProjection();
    time_step("setupProjection            ");

    quorvane::gl::FrameInputs inputs = {};
    inputs.photo = m_texName;
    inputs.photo_location = m_texLocHandle;
    inputs.depth = m_depthName;
    inputs.depth_location = m_depthLocHandle;
    inputs.buffers = m_gridVertexBuf;
    inputs.position_location = m_vPositionHandle;
    inputs.coordinate_location = m_texCoordHandle;
    inputs.framebuffer = m_fbo;
    quorvane::gl::bindInputs(inputs);
    time_step("enable texture             ");

    quorvane::gl::draw(m_eleCount);
    time_step("draw time                  ");

    ++m_renderCount;
    if (m_debugEnable == 0) return;

    const int width = static_cast<int>(clampedCast<unsigned>(m_width));
    const int height = static_cast<int>(clampedCast<unsigned>(m_height));
    const size_t bytes = static_cast<size_t>(width) * static_cast<size_t>(height) * 4;
    const std::unique_ptr<unsigned char[]> pixels(new (std::nothrow) unsigned char[bytes]);
    if (pixels != nullptr) quorvane::gl::readFrame(width, height, pixels.get());
    char filename[quorvane::kDumpNameSize];
    std::snprintf(filename, sizeof filename, "%soutput_%d_%d_%d_%d_%d.ppm", quorvane::kDumpDirectory,
                  static_cast<int>(m_renderCount), width, height, clampedCast<int>(m_accX),
                  clampedCast<int>(m_accY));
    _dump_ppm(width, height, filename, pixels.get(), quorvane::kDumpRgba);
}
