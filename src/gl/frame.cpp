#define EGL_EGLEXT_PROTOTYPES
#include "gl/frame.h"

#include <EGL/egl.h>
#include <EGL/eglext.h>

#include <cstddef>

#include "diagnostics/log.h"
#include "gl/error_check.h"

namespace quorvane::gl {
namespace {

constexpr GLint kPhotoUnit = 1;
constexpr GLint kDepthUnit = 2;

constexpr GLsizei kVertexBytes = 5 * sizeof(float);
const void* const kPositionOffset = nullptr;
const void* const kCoordinateOffset = reinterpret_cast<const void*>(3 * sizeof(float));

void waitForGpu() {
    EGLDisplay display = eglGetCurrentDisplay();
    EGLSyncKHR sync = eglCreateSyncKHR(display, EGL_SYNC_FENCE_KHR, nullptr);
    if (eglClientWaitSyncKHR(display, sync, 0, EGL_FOREVER_KHR) == EGL_FALSE)
        LOGD("EGL FENCE: error waiting for fence: %#x\n", static_cast<unsigned>(eglGetError()));
    eglDestroySyncKHR(display, sync);

    // Some drivers signal the fence early; a read-back cannot return before the frame is whole.
    uint8_t pixel[4];
    readFrame(1, 1, pixel);
}

}  // namespace

void replaceFramebuffer(GLuint* name) {
    if (*name != 0) glDeleteFramebuffers(1, name);
    glGenFramebuffers(1, name);
    glBindFramebuffer(GL_FRAMEBUFFER, *name);
}

bool attachOutput(GLuint framebuffer, GLuint texture) {
    glBindTexture(GL_TEXTURE_2D, texture);
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, texture, 0);
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    return glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE;
}

void setViewport(int width, int height) {
    glViewport(0, 0, width, height);
    checkGlError("glViewport");
}

void beginFrame(GLuint program, int width, int height) {
    glUseProgram(program);
    checkGlError("glUseProgram");
    glViewport(0, 0, width, height);
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LEQUAL);
    glDepthMask(GL_TRUE);
    // Clears whatever framebuffer the host left bound; it is the renderer's own unless the host has bound
    // another.
    glClearColor(0.0f, 0.0f, 0.0f, 1.0f);
    checkGlError("glClearColor");
    glClearDepthf(1.0f);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    checkGlError("glClear");
}

void setMatrix(GLuint location, const float* matrix) {
    glUniformMatrix4fv(static_cast<GLint>(location), 1, GL_FALSE, matrix);
    checkGlError("glUniformMatrix4fv");
}

void bindInputs(const FrameInputs& inputs) {
    glActiveTexture(GL_TEXTURE0 + kPhotoUnit);
    glUniform1i(static_cast<GLint>(inputs.photo_location), kPhotoUnit);
    glBindTexture(GL_TEXTURE_2D, inputs.photo);

    glBindBuffer(GL_ARRAY_BUFFER, inputs.buffers[0]);
    glEnableVertexAttribArray(inputs.position_location);
    checkGlError("glEnableVertexAttribArray");
    glVertexAttribPointer(inputs.position_location, 3, GL_FLOAT, GL_FALSE, kVertexBytes, kPositionOffset);
    checkGlError("glVertexAttribPointer vPos");

    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, inputs.buffers[1]);
    glEnableVertexAttribArray(inputs.coordinate_location);
    glVertexAttribPointer(inputs.coordinate_location, 2, GL_FLOAT, GL_FALSE, kVertexBytes, kCoordinateOffset);
    checkGlError("glVertexAttribPointer tex");

    glActiveTexture(GL_TEXTURE0 + kDepthUnit);
    glUniform1i(static_cast<GLint>(inputs.depth_location), kDepthUnit);
    glBindTexture(GL_TEXTURE_2D, inputs.depth);

    glBindFramebuffer(GL_FRAMEBUFFER, inputs.framebuffer);
}

void draw(int count) {
    glDrawElements(GL_TRIANGLES, count, GL_UNSIGNED_INT, nullptr);
    waitForGpu();
}

void readFrame(int width, int height, uint8_t* pixels) {
    glReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, pixels);
}

void deleteObjects(const Objects& objects) {
    glDeleteTextures(1, &objects.textures[0]);
    glDeleteTextures(1, &objects.textures[1]);
    glDeleteFramebuffers(1, &objects.framebuffer);
    glDeleteBuffers(2, objects.buffers);
    glDeleteProgram(objects.program);
}

}  // namespace quorvane::gl
