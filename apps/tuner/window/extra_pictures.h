#ifndef QUORVANE_APPS_TUNER_WINDOW_EXTRA_PICTURES_H
#define QUORVANE_APPS_TUNER_WINDOW_EXTRA_PICTURES_H

#include <GLES2/gl2.h>

#include "apps/tuner/window/gl_objects.h"
#include "quorvane/host/ParallaxView.h"

namespace quorvane::tuner {

/// What the window draws of two pictures or of a mesh, besides the pictures themselves. Every call needs the
/// window's context.
class ExtraPictures {
  public:
    /// How many times as large as they are differences are shown.
    static constexpr float kDifferenceGain = 8.0f;

    /// Throws Error.
    ExtraPictures();
    ~ExtraPictures();
    ExtraPictures(const ExtraPictures&) = delete;
    ExtraPictures& operator=(const ExtraPictures&) = delete;

    /// The difference of two textures of `size`, each colour for itself.
    const Texture& difference(GLuint a, GLuint b, Size size);

    /// The lines of the mesh as `view` drew it last, every few cells where there are many, in the photo's
    /// colours. The vertices, the program and its matrix are the renderer's own.
    const Texture& wires(const ParallaxView& view, Size size);

  private:
    void indexLines(int columns, int rows);

    GLuint m_program = 0;
    GLint m_a = 0, m_b = 0, m_gain = 0;
    GLuint m_corners = 0;
    GLuint m_lines = 0;
    int m_columns = 0, m_rows = 0;  ///< that the lines are of
    GLsizei m_line_indices = 0;
    Texture m_difference, m_wires;
};

}  // namespace quorvane::tuner

#endif
