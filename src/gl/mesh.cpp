#include "gl/mesh.h"

namespace quorvane::gl {

void provideBuffers(GLuint (&buffers)[2]) {
    if (buffers[0] == 0 || buffers[1] == 0) glGenBuffers(2, buffers);
}

void uploadVertices(GLuint buffer, const void* vertices, size_t bytes) {
    glBindBuffer(GL_ARRAY_BUFFER, buffer);
    glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(bytes), vertices, GL_STATIC_DRAW);
}

void uploadIndices(GLuint buffer, const void* indices, size_t bytes) {
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, buffer);
    glBufferData(GL_ELEMENT_ARRAY_BUFFER, static_cast<GLsizeiptr>(bytes), indices, GL_STATIC_DRAW);
}

}  // namespace quorvane::gl
