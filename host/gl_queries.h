#ifndef QUORVANE_HOST_GL_QUERIES_H
#define QUORVANE_HOST_GL_QUERIES_H

#include <EGL/egl.h>
#include <GLES2/gl2.h>

#include "quorvane/host/Status.h"

// What the context that is current says about itself.

namespace quorvane {

/// Whether a list of words with a blank between them, which may be null, has `name`.
bool hasWord(const char* words, const char* name) noexcept;

bool hasGlExtension(const char* name) noexcept;

/// Whether the context's driver draws on the processor.
bool drawsInSoftware() noexcept;

/// 32 for OpenGL ES 3.2; 0 where the driver does not say.
int glVersion() noexcept;

GLint glInteger(GLenum name) noexcept;

/// Null where the driver does not give it out.
template <typename Function>
void loadFunction(const char* name, Function* function) noexcept {
    *function = reinterpret_cast<Function>(eglGetProcAddress(name));
}

/// Errors that the app left behind are not ours to report.
void forgetGlErrors() noexcept;

/// Failure for an error but GL_NO_ERROR; `doing` begins the sentence.
Status glStatus(const char* doing, GLenum error);

/// The error that the calls since `forgetGlErrors` have left; `doing` begins the sentence.
Status glStatus(const char* doing);

}  // namespace quorvane

#endif
