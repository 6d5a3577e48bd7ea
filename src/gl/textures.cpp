#include "gl/textures.h"

#include "gl/error_check.h"

namespace quorvane::gl {

void replaceTexture(GLuint* name) {
    if (*name != 0) glDeleteTextures(1, name);
    glGenTextures(1, name);
    glBindTexture(GL_TEXTURE_2D, *name);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
}

void uploadPhoto(int width, int height, const void* pixels) {
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGB, width, height, 0, GL_RGB, GL_UNSIGNED_BYTE, pixels);
    flush();
}

void unpackTightRows() { glPixelStorei(GL_UNPACK_ALIGNMENT, 1); }

void uploadDepth(int width, int height, const uint8_t* samples) {
    glTexImage2D(GL_TEXTURE_2D, 0, GL_LUMINANCE, width, height, 0, GL_LUMINANCE, GL_UNSIGNED_BYTE, samples);
    checkGlError("glTexImage2D depth");
    flush();
}

void flush() { glFlush(); }

}  // namespace quorvane::gl
