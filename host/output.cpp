#include "host/output.h"

#include <new>
#include <utility>

#include "host/gl_queries.h"

namespace quorvane {
namespace {

constexpr GLenum kDepthComponent24 = 0x81A6;

}  // namespace

Status Output::create(int width, int height, std::unique_ptr<Output>* output) {
    std::unique_ptr<Output> made(new Output);
    forgetGlErrors();
    glGenTextures(1, &made->m_texture);
    glGenRenderbuffers(1, &made->m_depth_buffer);
    if (made->m_texture == 0 || made->m_depth_buffer == 0)
        return Status::failure("output: the graphics driver made no texture or depth buffer");
    glActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_2D, made->m_texture);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, width, height, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
    glBindRenderbuffer(GL_RENDERBUFFER, made->m_depth_buffer);
    glRenderbufferStorage(GL_RENDERBUFFER,
                          hasGlExtension("GL_OES_depth24") ? kDepthComponent24 : GL_DEPTH_COMPONENT16, width,
                          height);
    Status status = glStatus("output");
    if (status) *output = std::move(made);
    return status;
}

Output::~Output() {
    glDeleteTextures(1, &m_texture);
    glDeleteRenderbuffers(1, &m_depth_buffer);
}

bool Output::attachTo(ESRenderer* renderer) const {
    glBindFramebuffer(GL_FRAMEBUFFER, renderer->m_fbo);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER, m_depth_buffer);
    return renderer->setOutTexture(m_texture);
}

void Output::abandon() noexcept { m_texture = m_depth_buffer = 0; }

}  // namespace quorvane
