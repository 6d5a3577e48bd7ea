#define EGL_EGLEXT_PROTOTYPES
#include <EGL/egl.h>
#include <EGL/eglext.h>

#include <cstddef>
#include <cstdio>
#include <new>

#include "diagnostics/QRVNProf.h"
#include "diagnostics/log.h"
#include "diagnostics/ppm_dump.h"
#include "diagnostics/truncated.h"
#include "gl/error_check.h"
#include "quorvane/esRenderer.h"

namespace {

// Unit 0 is left to the host, which binds there while it uploads.
constexpr GLint kPhotoUnit = 1;
constexpr GLint kDepthUnit = 2;

const void* bufferOffset(size_t bytes) { return reinterpret_cast<const void*>(bytes); }

void waitForGpu() {
    EGLDisplay display = eglGetCurrentDisplay();
    EGLSyncKHR sync = eglCreateSyncKHR(display, EGL_SYNC_FENCE_KHR, nullptr);
    if (eglClientWaitSyncKHR(display, sync, 0, EGL_FOREVER_KHR) == EGL_FALSE)
        LOGD("EGL FENCE: error waiting for fence: %#x\n", static_cast<unsigned>(eglGetError()));
    eglDestroySyncKHR(display, sync);

    // Some drivers signal the fence early; a read-back cannot return before the frame is whole.
    GLubyte pixelValue[4];
    glReadPixels(0, 0, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, pixelValue);
}

}  // namespace

bool ESRenderer::setOutTexture(GLuint outputTexID) {
    glBindTexture(GL_TEXTURE_2D, outputTexID);
    glBindFramebuffer(GL_FRAMEBUFFER, m_fbo);
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, outputTexID, 0);
    glBindFramebuffer(GL_FRAMEBUFFER, m_fbo);
    const GLenum status = glCheckFramebufferStatus(GL_FRAMEBUFFER);
    return status == GL_FRAMEBUFFER_COMPLETE;
}

void ESRenderer::setTexture(int texWidth, int texHeight, GLuint textureID) {
    m_texWidth = texWidth;
    m_texHeight = texHeight;
    m_texName = textureID;
    glFlush();
}

void ESRenderer::renderFrame() {
    time_start();
    static float grey;
    grey = 0.0f;

    glUseProgram(m_program);
    checkGlError("glUseProgram");
    glViewport(0, 0, static_cast<GLsizei>(m_width), static_cast<GLsizei>(m_height));
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LEQUAL);
    glDepthMask(GL_TRUE);
    // Clears whatever framebuffer the host left bound; it is ours unless the host has bound another.
    glClearColor(grey, grey, grey, 1.0f);
    checkGlError("glClearColor");
    glClearDepthf(1.0f);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    checkGlError("glClear");
    time_step("GL setup1                  ");

    setupProjection();
    time_step("setupProjection            ");

    glActiveTexture(GL_TEXTURE0 + kPhotoUnit);
    glUniform1i(static_cast<GLint>(m_texLocHandle), kPhotoUnit);
    glBindTexture(GL_TEXTURE_2D, m_texName);

    glBindBuffer(GL_ARRAY_BUFFER, m_gridVertexBuf[0]);
    glEnableVertexAttribArray(m_vPositionHandle);
    checkGlError("glEnableVertexAttribArray");
    glVertexAttribPointer(m_vPositionHandle, 3, GL_FLOAT, GL_FALSE, sizeof(VTX_FMT),
                          bufferOffset(offsetof(VTX_FMT, x)));
    checkGlError("glVertexAttribPointer vPos");

    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, m_gridVertexBuf[1]);
    glEnableVertexAttribArray(m_texCoordHandle);
    glVertexAttribPointer(m_texCoordHandle, 2, GL_FLOAT, GL_FALSE, sizeof(VTX_FMT),
                          bufferOffset(offsetof(VTX_FMT, u)));
    checkGlError("glVertexAttribPointer tex");

    glActiveTexture(GL_TEXTURE0 + kDepthUnit);
    glUniform1i(static_cast<GLint>(m_depthLocHandle), kDepthUnit);
    glBindTexture(GL_TEXTURE_2D, m_depthName);

    glBindFramebuffer(GL_FRAMEBUFFER, m_fbo);
    time_step("enable texture             ");

    glDrawElements(GL_TRIANGLES, m_eleCount, GL_UNSIGNED_INT, nullptr);
    waitForGpu();
    time_step("draw time                  ");

    ++m_renderCount;
    if (m_debugEnable == 0) return;

    const unsigned width = truncated<unsigned>(m_width);
    const unsigned height = truncated<unsigned>(m_height);
    unsigned char* tempPixel = new (std::nothrow) unsigned char[size_t{width} * height * 4];
    if (tempPixel != nullptr)
        glReadPixels(0, 0, static_cast<GLsizei>(width), static_cast<GLsizei>(height), GL_RGBA,
                     GL_UNSIGNED_BYTE, tempPixel);
    char filename[kDumpNameSize];
    std::snprintf(filename, sizeof filename, "%soutput_%d_%d_%d_%d_%d.ppm", kDumpDirectory,
                  static_cast<int>(m_renderCount), static_cast<int>(width), static_cast<int>(height),
                  truncated<int>(m_accX), truncated<int>(m_accY));
    _dump_ppm(static_cast<int>(width), static_cast<int>(height), filename, tempPixel, kDumpRgba);
    delete[] tempPixel;
}
