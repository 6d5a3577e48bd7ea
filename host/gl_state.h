#ifndef QUORVANE_HOST_GL_STATE_H
#define QUORVANE_HOST_GL_STATE_H

#include <GLES3/gl3.h>

#include <vector>

namespace quorvane {

/// The GL state that the renderer relies on and does not set itself. An app that draws in the same context
/// may have changed any of it, and then pictures would silently be wrong, or pixels be read from or written
/// to the wrong place.
class GlState {
  public:
    /// Asks the current context for its version and loads what OpenGL ES 3 adds where it has that.
    GlState();

    /// Before pixels and buffers are uploaded. Makes unit 0 the active one.
    void setForUploads() const;

    /// Before the mesh is drawn and waited for, but for the framebuffer. Leaves transform feedback that the
    /// app has begun paused.
    void setForDrawing() const;

    /// Before pixels are read, but for the framebuffer.
    void setForReading() const;

    /// Binds a framebuffer with its colour attachment 0 as what is drawn into and read from.
    void bindFramebuffer(GLuint framebuffer) const;

  private:
    void setPlaceToRead() const;

    int m_version;
    GLint m_attributes;
    std::vector<GLenum> m_switches;  ///< to be off
    bool m_packs_from_below;         ///< may have been told so

    // Of OpenGL ES 3. Null in a context that is older.
    decltype(&glBindSampler) m_bind_sampler = nullptr;
    decltype(&glBindVertexArray) m_bind_vertex_array = nullptr;
    decltype(&glDrawBuffers) m_draw_buffers = nullptr;
    decltype(&glPauseTransformFeedback) m_pause_transform_feedback = nullptr;
    decltype(&glReadBuffer) m_read_buffer = nullptr;
    decltype(&glVertexAttribDivisor) m_vertex_attrib_divisor = nullptr;

    // Of OpenGL ES 3.2 and of an extension.
    void (*m_primitive_bounding_box)(GLfloat min_x, GLfloat min_y, GLfloat min_z, GLfloat min_w,
                                     GLfloat max_x, GLfloat max_y, GLfloat max_z, GLfloat max_w) = nullptr;
    void (*m_clip_control)(GLenum origin, GLenum depth) = nullptr;
};

}  // namespace quorvane

#endif
