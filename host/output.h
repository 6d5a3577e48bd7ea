#ifndef QUORVANE_HOST_OUTPUT_H
#define QUORVANE_HOST_OUTPUT_H

#include <memory>

#include "host/sample_buffers.h"
#include "quorvane/esRenderer.h"
#include "quorvane/host/Status.h"

namespace quorvane {

/// What is drawn into: an RGBA texture, a depth buffer so that near things hide far things, and where they
/// are wished for buffers for several samples a pixel. Every call needs the context current in which it was
/// made.
class Output {
  public:
    /// Sides in pixels, within the driver's limits. Leaves the texture bound to unit 0.
    static Status create(int width, int height, std::unique_ptr<Output>* output);

    ~Output();

    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    /// Has `renderer` draw into it, and leaves the renderer's framebuffer bound. False where the driver
    /// cannot.
    bool attachTo(ESRenderer* renderer);

    /// Has `renderer`, to which it is attached, draw up to so many samples a pixel: fewer, or one as before,
    /// where the driver can or has memory for no more.
    void addSamples(const ESRenderer& renderer, int samples);

    /// How many a pixel are drawn.
    int samples() const noexcept { return m_samples != nullptr ? m_samples->samples() : 1; }

    /// Before a frame, after the rest of the state.
    void begin(const ESRenderer& renderer, const GlState& gl_state);

    /// After a frame: what drawing has left for an error, or success, and then the texture holds the picture.
    Status finish(const GlState& gl_state) const;

    /// The framebuffer from which the picture can be read.
    GLuint readable(const ESRenderer& renderer) const noexcept;

    /// Leaves the objects to their context, where that is not current at the end.
    void abandon() noexcept;

    GLuint texture() const noexcept { return m_texture; }

  private:
    Output() = default;
    void attachPlainly(const ESRenderer& renderer) const;

    GLuint m_texture = 0;
    GLuint m_depth_buffer = 0;
    GLenum m_depth_format = 0;
    int m_width = 0, m_height = 0;
    std::unique_ptr<SampleBuffers> m_samples;
    bool m_draws_samples = false;  ///< rather than the texture being attached plainly
};

}  // namespace quorvane

#endif
