#ifndef QUORVANE_GL_MESH_H
#define QUORVANE_GL_MESH_H

#include <GLES2/gl2.h>

#include <cstddef>

// All of these need the context current.
namespace quorvane::gl {

/// Makes both buffers, of vertices and of indices, unless both are there.
void provideBuffers(GLuint (&buffers)[2]);

/// Fills a buffer with vertices, or with indices; it stays bound.
void uploadVertices(GLuint buffer, const void* vertices, size_t bytes);
void uploadIndices(GLuint buffer, const void* indices, size_t bytes);

}  // namespace quorvane::gl

#endif
