#include "apps/tuner/window/controls_drawing.h"

#include <cstddef>

#include "apps/tuner/window/gl_objects.h"

namespace quorvane::tuner {
namespace {

enum Attribute : GLuint { kPosition = 0, kPlace = 1, kColour = 2 };

constexpr char kVertexShader[] =
    "attribute vec2 position;\n"
    "attribute vec2 place;\n"
    "attribute vec4 colour;\n"
    "uniform vec2 scale;\n"
    "uniform vec2 offset;\n"
    "varying vec2 at;\n"
    "varying vec4 tint;\n"
    "void main() {\n"
    "    at = place;\n"
    "    tint = colour;\n"
    "    gl_Position = vec4(position * scale + offset, 0.0, 1.0);\n"
    "}\n";

constexpr char kFragmentShader[] =
    "precision mediump float;\n"
    "uniform sampler2D image;\n"
    "varying vec2 at;\n"
    "varying vec4 tint;\n"
    "void main() { gl_FragColor = tint * texture2D(image, at); }\n";

const void* offsetOf(size_t bytes) {
    return reinterpret_cast<const void*>(bytes);  // NOLINT(performance-no-int-to-ptr)
}

}  // namespace

ControlsDrawing::ControlsDrawing() : m_program(makeProgram(kVertexShader, kFragmentShader)) {
    glBindAttribLocation(m_program, kPosition, "position");
    glBindAttribLocation(m_program, kPlace, "place");
    glBindAttribLocation(m_program, kColour, "colour");
    glLinkProgram(m_program);
    m_scale = glGetUniformLocation(m_program, "scale");
    m_offset = glGetUniformLocation(m_program, "offset");
    m_texture = glGetUniformLocation(m_program, "image");
    glGenBuffers(2, m_buffers);

    ImGuiIO& io = ImGui::GetIO();
    unsigned char* pixels = nullptr;
    int width = 0, height = 0;
    io.Fonts->GetTexDataAsRGBA32(&pixels, &width, &height);
    glGenTextures(1, &m_fonts);
    glActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_2D, m_fonts);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    // OpenGL ES 2 wraps textures of other sides than powers of two not at all.
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, width, height, 0, GL_RGBA, GL_UNSIGNED_BYTE, pixels);
    io.Fonts->SetTexID(asImTexture(m_fonts));
    io.BackendRendererName = "quorvane_es2";
}

ControlsDrawing::~ControlsDrawing() {
    ImGui::GetIO().Fonts->SetTexID(nullptr);
    glDeleteTextures(1, &m_fonts);
    glDeleteBuffers(2, m_buffers);
    glDeleteProgram(m_program);
}

void ControlsDrawing::draw(const ImDrawData& data) {
    const float width = data.DisplaySize.x * data.FramebufferScale.x;
    const float height = data.DisplaySize.y * data.FramebufferScale.y;
    if (width <= 0.0f || height <= 0.0f) return;
    drawFlat();
    glEnable(GL_BLEND);
    glBlendEquation(GL_FUNC_ADD);
    glBlendFuncSeparate(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
    glEnable(GL_SCISSOR_TEST);
    glViewport(0, 0, static_cast<GLsizei>(width), static_cast<GLsizei>(height));
    glUseProgram(m_program);
    const float scale_x = 2.0f / data.DisplaySize.x, scale_y = -2.0f / data.DisplaySize.y;
    glUniform2f(m_scale, scale_x, scale_y);
    glUniform2f(m_offset, -1.0f - data.DisplayPos.x * scale_x, 1.0f - data.DisplayPos.y * scale_y);
    glActiveTexture(GL_TEXTURE0);
    glUniform1i(m_texture, 0);
    glBindBuffer(GL_ARRAY_BUFFER, m_buffers[0]);
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, m_buffers[1]);
    for (const GLuint attribute : {kPosition, kPlace, kColour}) glEnableVertexAttribArray(attribute);
    constexpr GLsizei kStride = sizeof(ImDrawVert);
    glVertexAttribPointer(kPosition, 2, GL_FLOAT, GL_FALSE, kStride, offsetOf(offsetof(ImDrawVert, pos)));
    glVertexAttribPointer(kPlace, 2, GL_FLOAT, GL_FALSE, kStride, offsetOf(offsetof(ImDrawVert, uv)));
    glVertexAttribPointer(kColour, 4, GL_UNSIGNED_BYTE, GL_TRUE, kStride,
                          offsetOf(offsetof(ImDrawVert, col)));
    for (int n = 0; n < data.CmdListsCount; ++n) {
        const ImDrawList& list = *data.CmdLists[n];
        glBufferData(GL_ARRAY_BUFFER, list.VtxBuffer.Size * kStride, list.VtxBuffer.Data, GL_STREAM_DRAW);
        glBufferData(GL_ELEMENT_ARRAY_BUFFER,
                     list.IdxBuffer.Size * static_cast<GLsizeiptr>(sizeof(ImDrawIdx)), list.IdxBuffer.Data,
                     GL_STREAM_DRAW);
        for (const ImDrawCmd& command : list.CmdBuffer) {
            const auto pixels = [](float points, float per_point) {
                return static_cast<GLint>(points * per_point);
            };
            const ImVec4& clip = command.ClipRect;
            const GLint left = pixels(clip.x - data.DisplayPos.x, data.FramebufferScale.x);
            const GLint right = pixels(clip.z - data.DisplayPos.x, data.FramebufferScale.x);
            const GLint top = pixels(clip.y - data.DisplayPos.y, data.FramebufferScale.y);
            const GLint low = pixels(clip.w - data.DisplayPos.y, data.FramebufferScale.y);
            if (right <= left || low <= top) continue;
            glScissor(left, static_cast<GLint>(height) - low, right - left, low - top);
            glBindTexture(GL_TEXTURE_2D, static_cast<GLuint>(reinterpret_cast<intptr_t>(command.GetTexID())));
            glDrawElements(GL_TRIANGLES, static_cast<GLsizei>(command.ElemCount), GL_UNSIGNED_SHORT,
                           offsetOf(command.IdxOffset * sizeof(ImDrawIdx)));
        }
    }
    glDisable(GL_SCISSOR_TEST);
    glDisable(GL_BLEND);
}

}  // namespace quorvane::tuner
