#include "host/sample_buffers.h"

#include "host/gl_queries.h"
#include "host/gl_state.h"

namespace quorvane {
namespace {

// Of extensions and of OpenGL ES 3.2, which not every gl3.h has.
constexpr GLenum kMultisample = 0x809D;
constexpr GLenum kSampleShading = 0x8C36;

}  // namespace

SampleBuffers::SampleBuffers(const Target& target) : m_target(target) {
    const int version = glVersion();
    if (hasGlExtension("GL_EXT_multisampled_render_to_texture")) {
        loadFunction("glRenderbufferStorageMultisampleEXT", &m_storage);
        loadFunction("glFramebufferTexture2DMultisampleEXT", &m_attach_texture);
    }
    if (m_storage == nullptr || m_attach_texture == nullptr) {
        m_storage = nullptr;
        m_attach_texture = nullptr;
        if (version < 30) return;
        loadFunction("glRenderbufferStorageMultisample", &m_storage);
        loadFunction("glBlitFramebuffer", &m_blit);
        if (m_storage == nullptr || m_blit == nullptr) return;
    }
    m_most = glInteger(GL_MAX_SAMPLES);
    m_can_switch_off = hasGlExtension("GL_EXT_multisample_compatibility");
    m_can_shade_each = version >= 32 || hasGlExtension("GL_OES_sample_shading");
}

SampleBuffers::~SampleBuffers() {
    glDeleteRenderbuffers(1, &m_colour);
    glDeleteRenderbuffers(1, &m_depth);
    glDeleteFramebuffers(1, &m_resolved);
}

std::unique_ptr<SampleBuffers> SampleBuffers::create(const Target& target, int samples) {
    std::unique_ptr<SampleBuffers> buffers(new SampleBuffers(target));
    while (samples > buffers->m_most) samples /= 2;
    for (; samples > 1; samples /= 2)
        if (buffers->allocate(samples)) return buffers;
    return nullptr;
}

bool SampleBuffers::allocate(int samples) {
    m_samples = samples;
    forgetGlErrors();
    const auto makeBuffer = [this](GLenum format, GLuint* buffer) {
        if (*buffer == 0) glGenRenderbuffers(1, buffer);
        glBindRenderbuffer(GL_RENDERBUFFER, *buffer);
        m_storage(GL_RENDERBUFFER, m_samples, format, m_target.width, m_target.height);
    };
    const auto complete = [] { return glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE; };
    makeBuffer(m_target.depth_format, &m_depth);
    if (m_depth == 0) return false;
    if (m_attach_texture == nullptr) {
        makeBuffer(GL_RGBA8, &m_colour);
        if (m_resolved == 0) glGenFramebuffers(1, &m_resolved);
        if (m_colour == 0 || m_resolved == 0) return false;
        glBindFramebuffer(GL_FRAMEBUFFER, m_resolved);
        glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, m_target.texture, 0);
        if (!complete()) return false;
    }
    attach();
    const bool drawable = complete();
    return glStatus("").ok() && drawable;
}

void SampleBuffers::attach() const {
    glBindFramebuffer(GL_FRAMEBUFFER, m_target.framebuffer);
    if (m_attach_texture != nullptr)
        m_attach_texture(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, m_target.texture, 0, m_samples);
    else
        glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, m_colour);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER, m_depth);
}

void SampleBuffers::setForDrawing() const {
    if (m_can_switch_off) glEnable(kMultisample);
    if (m_can_shade_each) glDisable(kSampleShading);
}

void SampleBuffers::resolve(const GlState& gl_state) const {
    gl_state.bindFramebuffer(m_resolved);
    glBindFramebuffer(GL_READ_FRAMEBUFFER, m_target.framebuffer);
    m_blit(0, 0, m_target.width, m_target.height, 0, 0, m_target.width, m_target.height, GL_COLOR_BUFFER_BIT,
           GL_NEAREST);
    // A read-back cannot return before the pixels are whole.
    glBindFramebuffer(GL_READ_FRAMEBUFFER, m_resolved);
    GLubyte pixel[4];
    glReadPixels(0, 0, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, pixel);
}

}  // namespace quorvane
