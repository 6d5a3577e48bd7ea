#ifndef QUORVANE_HOST_SAMPLE_BUFFERS_H
#define QUORVANE_HOST_SAMPLE_BUFFERS_H

#include <GLES3/gl3.h>

#include <memory>

#include "quorvane/host/Status.h"

namespace quorvane {

class GlState;

/// Draws several samples a pixel into a texture, so that silhouettes are smooth. Where the driver has
/// EXT_multisampled_render_to_texture the texture itself is attached with samples, and the driver reduces
/// them by itself; else, in OpenGL ES 3, samples are drawn into a buffer of their own and then reduced into
/// the texture. Every call needs the context current in which it was made.
class SampleBuffers {
  public:
    /// What is drawn into where there is one sample a pixel.
    struct Target {
        GLuint framebuffer;
        GLuint texture;
        int width, height;
        GLenum depth_format;
    };

    /// As many samples a pixel as the driver makes, `samples` at most: where it has too little memory for
    /// them, or does not know that count, half as many are tried. Null where that comes to one. On success
    /// attached to the framebuffer, else that has lost its attachments; it is left bound.
    static std::unique_ptr<SampleBuffers> create(const Target& target, int samples);

    ~SampleBuffers();

    SampleBuffers(const SampleBuffers&) = delete;
    SampleBuffers& operator=(const SampleBuffers&) = delete;

    /// To the framebuffer, which is bound, in the place of one sample's texture and depth buffer.
    void attach() const;

    /// Sets what drawing several samples depends on and drawing one does not.
    void setForDrawing() const;

    /// Whether samples have a buffer of their own: then nothing can be read from the framebuffer while this
    /// is attached to it, and `resolve` brings the picture into the texture.
    bool hasOwnColour() const noexcept { return m_colour != 0; }

    /// Reduces the samples to the texture's pixels and waits until that is finished.
    void resolve(const GlState& gl_state) const;

    /// The framebuffer from which the texture's pixels can be read.
    GLuint readable() const noexcept { return hasOwnColour() ? m_resolved : m_target.framebuffer; }

    int samples() const noexcept { return m_samples; }

    /// Leaves the objects to their context, where that is not current at the end.
    void abandon() noexcept { m_colour = m_depth = m_resolved = 0; }

  private:
    using RenderbufferStorage = void(GLenum target, GLsizei samples, GLenum format, GLsizei width,
                                     GLsizei height);
    using FramebufferTexture = void(GLenum target, GLenum attachment, GLenum texture_target, GLuint texture,
                                    GLint level, GLsizei samples);

    explicit SampleBuffers(const Target& target);
    bool allocate(int samples);

    Target m_target;
    int m_most = 1;
    int m_samples = 1;
    bool m_can_switch_off = false;  ///< samples
    bool m_can_shade_each = false;  ///< sample apart
    GLuint m_colour = 0, m_depth = 0;
    GLuint m_resolved = 0;  ///< a framebuffer with the texture

    RenderbufferStorage* m_storage = nullptr;
    FramebufferTexture* m_attach_texture = nullptr;  ///< null where the driver does not reduce samples itself
    decltype(&glBlitFramebuffer) m_blit = nullptr;
};

}  // namespace quorvane

#endif
