#include "host/output.h"

#include <new>
#include <utility>

#include "host/gl_queries.h"
#include "host/gl_state.h"

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
    made->m_depth_format = hasGlExtension("GL_OES_depth24") ? kDepthComponent24 : GL_DEPTH_COMPONENT16;
    glRenderbufferStorage(GL_RENDERBUFFER, made->m_depth_format, width, height);
    made->m_width = width;
    made->m_height = height;
    Status status = glStatus("output");
    if (status) *output = std::move(made);
    return status;
}

Output::~Output() {
    glDeleteTextures(1, &m_texture);
    glDeleteRenderbuffers(1, &m_depth_buffer);
}

bool Output::attachTo(ESRenderer* renderer) {
    m_draws_samples = false;
    glBindFramebuffer(GL_FRAMEBUFFER, renderer->m_fbo);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER, m_depth_buffer);
    return renderer->setOutTexture(m_texture);
}

void Output::attachPlainly(const ESRenderer& renderer) const {
    glBindFramebuffer(GL_FRAMEBUFFER, renderer.m_fbo);
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, m_texture, 0);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER, m_depth_buffer);
}

void Output::addSamples(const ESRenderer& renderer, int samples) {
    m_samples =
        SampleBuffers::create({renderer.m_fbo, m_texture, m_width, m_height, m_depth_format}, samples);
    m_draws_samples = m_samples != nullptr;
    if (!m_draws_samples) attachPlainly(renderer);
}

void Output::begin(const ESRenderer& renderer, const GlState& gl_state) {
    if (m_samples != nullptr) {
        // With the debug switch on, the renderer dumps what it reads back from its framebuffer.
        const bool wanted = renderer.m_debugEnable == 0;
        if (wanted != m_draws_samples) {
            m_draws_samples = wanted;
            if (wanted)
                m_samples->attach();
            else
                attachPlainly(renderer);
        }
        if (wanted) m_samples->setForDrawing();
    }
    // The renderer clears what is bound on entry.
    gl_state.bindFramebuffer(renderer.m_fbo);
}

Status Output::finish(const GlState& gl_state) const {
    constexpr char kDoing[] = "drawing";
    if (!m_draws_samples || !m_samples->hasOwnColour()) return glStatus(kDoing);
    // The renderer reads a pixel back while it waits, which from several samples is an error.
    GLenum error = glGetError();
    if (error == GL_INVALID_OPERATION) error = glGetError();
    if (error == GL_NO_ERROR) {
        m_samples->resolve(gl_state);
        error = glGetError();
    }
    if (error != GL_NO_ERROR) forgetGlErrors();
    return glStatus(kDoing, error);
}

GLuint Output::readable(const ESRenderer& renderer) const noexcept {
    return m_samples != nullptr ? m_samples->readable() : renderer.m_fbo;
}

void Output::abandon() noexcept {
    m_texture = m_depth_buffer = 0;
    if (m_samples != nullptr) m_samples->abandon();
}

}  // namespace quorvane
