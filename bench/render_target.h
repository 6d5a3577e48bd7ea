#ifndef QUORVANE_BENCH_RENDER_TARGET_H
#define QUORVANE_BENCH_RENDER_TARGET_H

#include <GLES2/gl2.h>

#include "quorvane/esRenderer.h"

namespace quorvane::bench {

/// The texture that a renderer draws into, and its depth buffer. `renderer` has been set up for graphics.
class RenderTarget {
  public:
    RenderTarget(ESRenderer* renderer, int width, int height) {
        glGenTextures(1, &m_texture);
        glBindTexture(GL_TEXTURE_2D, m_texture);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, width, height, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
        glGenRenderbuffers(1, &m_depth_buffer);
        glBindRenderbuffer(GL_RENDERBUFFER, m_depth_buffer);
        glRenderbufferStorage(GL_RENDERBUFFER, GL_DEPTH_COMPONENT16, width, height);
        glBindFramebuffer(GL_FRAMEBUFFER, renderer->m_fbo);
        glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER, m_depth_buffer);
        renderer->setOutTexture(m_texture);
    }
    ~RenderTarget() {
        glDeleteTextures(1, &m_texture);
        glDeleteRenderbuffers(1, &m_depth_buffer);
    }
    RenderTarget(const RenderTarget&) = delete;
    RenderTarget& operator=(const RenderTarget&) = delete;

  private:
    GLuint m_texture = 0, m_depth_buffer = 0;
};

}  // namespace quorvane::bench

#endif
