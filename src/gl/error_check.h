#ifndef QUORVANE_GL_ERROR_CHECK_H
#define QUORVANE_GL_ERROR_CHECK_H

#include <GLES2/gl2.h>

#include "diagnostics/log.h"

namespace quorvane::gl {

/// Logs and clears every pending GL error, one line each; `op` names the GL call just made.
static inline void checkGlError(const char* op) {
    for (GLenum error = glGetError(); error != GL_NO_ERROR; error = glGetError())
        LOGD("after %s() glError (0x%x)\n", op, error);
}

/// Logs the GL string `s` (GL_VERSION, ...) under `name`; "(null)" without a context.
static inline void printGLString(const char* name, GLenum s) {
    const GLubyte* text = glGetString(s);
    LOGD("GL %s = %s\n", name, text != nullptr ? reinterpret_cast<const char*>(text) : "(null)");
}

}  // namespace quorvane::gl

#endif
