#ifndef QUORVANE_GL_TEXTURES_H
#define QUORVANE_GL_TEXTURES_H

#include <GLES2/gl2.h>

#include <cstdint>

// All of these need the context current.
namespace quorvane::gl {

/// Deletes *name unless it is 0, makes a new 2D texture in its place and leaves it bound: clamped to the edge
/// (the only wrapping that ES 2.0 allows sizes other than powers of two), linear, without mipmaps.
void replaceTexture(GLuint* name);

/// Fills the bound texture with width x height pixels of R, G, B. The unpack alignment in force is the host's
/// business here, unlike that of a depth map.
void uploadPhoto(int width, int height, const void* pixels);

/// Sets the unpack alignment to 1, for rows without padding.
void unpackTightRows();

/// Fills the bound texture with width x height samples of one byte, in rows without padding.
void uploadDepth(int width, int height, const uint8_t* samples);

/// Sends what has been uploaded to the GPU.
void flush();

}  // namespace quorvane::gl

#endif
