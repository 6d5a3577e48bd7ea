#ifndef QUORVANE_APPS_TUNER_WINDOW_GL_OBJECTS_H
#define QUORVANE_APPS_TUNER_WINDOW_GL_OBJECTS_H

#include <GLES2/gl2.h>

#include <utility>

#include "media/picture/image.h"
#include "sizes/sizes.h"

namespace quorvane::tuner {

/// A texture, RGBA, its first row the picture's top. Every call needs the window's context.
class Texture {
  public:
    Texture() = default;
    ~Texture();
    Texture(const Texture&) = delete;
    Texture& operator=(const Texture&) = delete;

    /// Takes over a picture's pixels.
    void fill(const media::RgbImage& image);

    /// Gives it a size; what it shows is undefined then, unless it had that size.
    void resize(Size size);

    GLuint name() const { return m_name; }
    Size size() const { return m_size; }

  private:
    void bind();

    GLuint m_name = 0;
    Size m_size;
};

/// A program of two shaders. Throws Error with the driver's words.
GLuint makeProgram(const char* vertex, const char* fragment);

/// A framebuffer with `texture`, bound with a viewport of its size. Deleted at the end; framebuffer 0 is
/// bound then.
class DrawingInto {
  public:
    explicit DrawingInto(const Texture& texture);
    ~DrawingInto();
    DrawingInto(const DrawingInto&) = delete;
    DrawingInto& operator=(const DrawingInto&) = delete;

  private:
    GLuint m_framebuffer = 0;
};

/// Sets aside what ParallaxView::render leaves on that drawing in two dimensions must not have.
void drawFlat();

}  // namespace quorvane::tuner

#endif
