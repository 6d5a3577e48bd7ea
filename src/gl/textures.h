#ifndef QUORVANE_GL_TEXTURES_H
#define QUORVANE_GL_TEXTURES_H

#include <GLES2/gl2.h>

/// Deletes *name unless it is 0, makes a new 2D texture in its place and leaves it bound: clamped to the edge
/// (the only wrapping that ES 2.0 allows sizes other than powers of two), linear, without mipmaps.
inline void replaceTexture(GLuint* name) {
    if (*name != 0) glDeleteTextures(1, name);
    glGenTextures(1, name);
    glBindTexture(GL_TEXTURE_2D, *name);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
}

#endif
