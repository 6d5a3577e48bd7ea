#include "host/gl_state.h"

#include "host/gl_queries.h"

namespace quorvane {
namespace {

// The renderer draws with these units.
constexpr GLuint kPhotoUnit = 1, kDepthUnit = 2;

// Of OpenGL ES 3.1 and of extensions, which not every gl3.h has.
constexpr GLenum kSampleMask = 0x8E51;
constexpr GLenum kClipDistance0 = 0x3000;
constexpr GLenum kDepthClamp = 0x864F;
constexpr GLenum kPackReverseRowOrder = 0x93A4;
constexpr GLenum kLowerLeft = 0x8CA1;
constexpr GLenum kNegativeOneToOne = 0x935E;

/// A driver that does not give a function out has no app that called it.
template <typename Function, typename... Arguments>
void call(Function* function, Arguments... arguments) {
    if (function != nullptr) function(arguments...);
}

}  // namespace

GlState::GlState()
    : m_version(glVersion()),
      m_attributes(glInteger(GL_MAX_VERTEX_ATTRIBS)),
      m_switches{GL_BLEND,          GL_CULL_FACE,           GL_SCISSOR_TEST,
                 GL_STENCIL_TEST,   GL_POLYGON_OFFSET_FILL, GL_SAMPLE_ALPHA_TO_COVERAGE,
                 GL_SAMPLE_COVERAGE},
      m_packs_from_below(hasGlExtension("GL_ANGLE_pack_reverse_row_order")) {
    if (hasGlExtension("GL_EXT_depth_clamp")) m_switches.push_back(kDepthClamp);
    if (m_version < 30) return;

    m_switches.push_back(GL_RASTERIZER_DISCARD);
    if (m_version >= 31) m_switches.push_back(kSampleMask);
    if (hasGlExtension("GL_EXT_clip_cull_distance"))
        for (GLenum i = 0; i < 8; ++i) m_switches.push_back(kClipDistance0 + i);
    loadFunction("glBindSampler", &m_bind_sampler);
    loadFunction("glBindVertexArray", &m_bind_vertex_array);
    loadFunction("glDrawBuffers", &m_draw_buffers);
    loadFunction("glPauseTransformFeedback", &m_pause_transform_feedback);
    loadFunction("glReadBuffer", &m_read_buffer);
    loadFunction("glVertexAttribDivisor", &m_vertex_attrib_divisor);
    if (m_version >= 32) loadFunction("glPrimitiveBoundingBox", &m_primitive_bounding_box);
    if (hasGlExtension("GL_EXT_clip_control")) loadFunction("glClipControlEXT", &m_clip_control);
}

void GlState::setForUploads() const {
    // It keeps which buffer the indices are in.
    call(m_bind_vertex_array, 0u);
    glActiveTexture(GL_TEXTURE0);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    if (m_version < 30) return;
    glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0);
    glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
    glPixelStorei(GL_UNPACK_SKIP_ROWS, 0);
    glPixelStorei(GL_UNPACK_SKIP_PIXELS, 0);
}

void GlState::setForDrawing() const {
    // While it runs, no other program can be used.
    if (m_version >= 30 && glInteger(GL_TRANSFORM_FEEDBACK_ACTIVE) != 0 &&
        glInteger(GL_TRANSFORM_FEEDBACK_PAUSED) == 0)
        call(m_pause_transform_feedback);
    for (const GLenum name : m_switches) glDisable(name);
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    glDepthRangef(0.0f, 1.0f);
    call(m_primitive_bounding_box, -1.0f, -1.0f, -1.0f, 1.0f, 1.0f, 1.0f, 1.0f, 1.0f);
    call(m_clip_control, kLowerLeft, kNegativeOneToOne);
    call(m_bind_sampler, kPhotoUnit, 0u);
    call(m_bind_sampler, kDepthUnit, 0u);
    call(m_bind_vertex_array, 0u);
    for (GLuint i = 0; i < static_cast<GLuint>(m_attributes); ++i) {
        glDisableVertexAttribArray(i);
        call(m_vertex_attrib_divisor, i, 0u);
    }
    // The renderer reads a pixel back.
    setPlaceToRead();
}

void GlState::setForReading() const {
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    if (m_packs_from_below) glPixelStorei(kPackReverseRowOrder, 0);
    setPlaceToRead();
}

void GlState::setPlaceToRead() const {
    if (m_version < 30) return;
    glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
    glPixelStorei(GL_PACK_ROW_LENGTH, 0);
    glPixelStorei(GL_PACK_SKIP_ROWS, 0);
    glPixelStorei(GL_PACK_SKIP_PIXELS, 0);
}

void GlState::bindFramebuffer(GLuint framebuffer) const {
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    const GLenum colour = GL_COLOR_ATTACHMENT0;
    call(m_draw_buffers, 1, &colour);
    call(m_read_buffer, colour);
}

}  // namespace quorvane
