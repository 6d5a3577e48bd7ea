#ifndef QUORVANE_TESTS_COMPONENT_GL_SCENE_H
#define QUORVANE_TESTS_COMPONENT_GL_SCENE_H

#include <quorvane/host/OffscreenContext.h>

#include <memory>
#include <vector>

#include "support/component_test.h"
#include "support/models.h"

namespace quorvane::test {

struct Colour {
    int r, g, b;
};
bool operator==(const Colour& a, const Colour& b);
std::ostream& operator<<(std::ostream& out, const Colour& colour);

/// No photo here holds it, so what has it was never drawn.
constexpr Colour kMarker = {255, 0, 255};

/// A read-back; row 0 is what glReadPixels gives first.
struct Picture {
    int width = 0;
    int height = 0;
    Bytes rgba;

    Colour at(int x, int y) const;
    int countOf(const Colour& colour) const;
};

/// The largest difference of any channel anywhere.
int largestDifference(const Picture& a, const Picture& b);
double meanDifference(const Picture& a, const Picture& b);

/// A test with a real GL ES 2 context, recorded; skipped, loudly, where there is none.
class GlTest : public ComponentTest {
  protected:
    GlTest() : ComponentTest(GlRecorder::Mode::driver) {}
    void SetUp() override;

    std::unique_ptr<OffscreenContext> context;
};

/// A texture to draw into, with a framebuffer of its own to fill and read it.
class Target {
  public:
    Target(int width, int height);
    ~Target();

    Target(const Target&) = delete;
    Target& operator=(const Target&) = delete;

    GLuint texture() const { return m_texture; }
    GLuint framebuffer() const { return m_framebuffer; }
    /// Both leave the framebuffer binding as it was.
    void fill(const Colour& colour);
    Picture read() const;

  private:
    int m_width, m_height;
    GLuint m_texture = 0;
    GLuint m_framebuffer = 0;
};

/// The texture's content, read through a framebuffer.
Picture readTexture(GLuint texture, int width, int height);

/// A renderer brought up as a host does it, drawing into a target.
class Scene {
  public:
    struct Sizes {
        int out_w, out_h, photo_w, photo_h, depth_w, depth_h;
    };
    explicit Scene(const Sizes& sizes);
    ~Scene();

    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;

    ESRenderer& renderer() { return m_rig->renderer; }
    unsigned char* block() { return m_rig->block.data(); }
    Target& target() { return m_target; }

    void setPhoto(Bytes rgb);
    void setDepth(Bytes depth);
    void setFlatDepth(int value);
    /// Gives the framebuffer a depth buffer, as a host may.
    void attachDepthBuffer();
    /// Fills the target with the marker, draws and reads.
    Picture frame();

    /// Destroys the renderer; the target stays.
    void destroyRenderer();

    /// Where the shader should put a point of the mesh, in pixels from the picture's left and first row.
    struct Point {
        double x, y;
    };
    Point projected(double u, double v, int shaped_depth) const;

  private:
    Sizes m_sizes;
    Target m_target;
    std::unique_ptr<Rig> m_rig;
    GLuint m_depth_buffer = 0;
};

/// A photo from a function of the pixel.
template <typename PixelColour>
Bytes paintedPhoto(int width, int height, PixelColour pixel) {
    Bytes rgb;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const Colour colour = pixel(x, y);
            rgb.push_back(static_cast<uint8_t>(colour.r));
            rgb.push_back(static_cast<uint8_t>(colour.g));
            rgb.push_back(static_cast<uint8_t>(colour.b));
        }
    return rgb;
}

/// What a flat mesh at rest should show: the middle 0.81 of either axis of the photo, sampled bilinearly.
Picture croppedPhoto(const Bytes& rgb, int photo_w, int photo_h, int out_w, int out_h);

}  // namespace quorvane::test

#endif
