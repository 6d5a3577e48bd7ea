#ifndef QUORVANE_APPS_TUNER_WINDOW_CONTROLS_DRAWING_H
#define QUORVANE_APPS_TUNER_WINDOW_CONTROLS_DRAWING_H

#include <GLES2/gl2.h>
#include <imgui.h>

namespace quorvane::tuner {

/// Draws Dear ImGui's lists with OpenGL ES 2. The library as Debian builds it has a drawing of its own for
/// desktop OpenGL only. Every call needs the window's context.
class ControlsDrawing {
  public:
    /// Uploads the fonts of the current ImGui context. Throws Error.
    ControlsDrawing();
    ~ControlsDrawing();
    ControlsDrawing(const ControlsDrawing&) = delete;
    ControlsDrawing& operator=(const ControlsDrawing&) = delete;

    /// Into the framebuffer that is bound.
    void draw(const ImDrawData& data);

  private:
    GLuint m_program = 0;
    GLuint m_fonts = 0;
    GLuint m_buffers[2] = {0, 0};  ///< vertices, indices
    GLint m_scale = 0, m_offset = 0, m_texture = 0;
};

/// A texture as ImGui names it.
inline ImTextureID asImTexture(GLuint name) {
    return reinterpret_cast<ImTextureID>(static_cast<intptr_t>(name));  // NOLINT(performance-no-int-to-ptr)
}

}  // namespace quorvane::tuner

#endif
