#include "apps/tuner/window/extra_pictures.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace quorvane::tuner {
namespace {

constexpr char kVertexShader[] =
    "attribute vec2 corner;\n"
    "varying vec2 at;\n"
    "void main() {\n"
    "    at = corner * 0.5 + 0.5;\n"
    "    gl_Position = vec4(corner, 0.0, 1.0);\n"
    "}\n";

constexpr char kDifferenceShader[] =
    "precision mediump float;\n"
    "uniform sampler2D a;\n"
    "uniform sampler2D b;\n"
    "uniform float gain;\n"
    "varying vec2 at;\n"
    "void main() {\n"
    "    vec3 apart = abs(texture2D(a, at).rgb - texture2D(b, at).rgb);\n"
    "    gl_FragColor = vec4(gain * apart, 1.0);\n"
    "}\n";

// More than so many on the longer side run together on a screen.
constexpr int kMostLines = 96;

}  // namespace

ExtraPictures::ExtraPictures() : m_program(makeProgram(kVertexShader, kDifferenceShader)) {
    m_a = glGetUniformLocation(m_program, "a");
    m_b = glGetUniformLocation(m_program, "b");
    m_gain = glGetUniformLocation(m_program, "gain");
    glGenBuffers(1, &m_corners);
    glBindBuffer(GL_ARRAY_BUFFER, m_corners);
    constexpr float kCorners[] = {-1, -1, 1, -1, -1, 1, 1, 1};
    glBufferData(GL_ARRAY_BUFFER, sizeof kCorners, kCorners, GL_STATIC_DRAW);
    glGenBuffers(1, &m_lines);
}

ExtraPictures::~ExtraPictures() {
    glDeleteBuffers(1, &m_corners);
    glDeleteBuffers(1, &m_lines);
    glDeleteProgram(m_program);
}

const Texture& ExtraPictures::difference(GLuint a, GLuint b, Size size) {
    m_difference.resize(size);
    const DrawingInto target(m_difference);
    drawFlat();
    glUseProgram(m_program);
    glUniform1i(m_a, 0);
    glUniform1i(m_b, 1);
    glUniform1f(m_gain, kDifferenceGain);
    glActiveTexture(GL_TEXTURE1);
    glBindTexture(GL_TEXTURE_2D, b);
    glActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_2D, a);
    const GLint corner = glGetAttribLocation(m_program, "corner");
    glBindBuffer(GL_ARRAY_BUFFER, m_corners);
    glEnableVertexAttribArray(static_cast<GLuint>(corner));
    glVertexAttribPointer(static_cast<GLuint>(corner), 2, GL_FLOAT, GL_FALSE, 0, nullptr);
    glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
    return m_difference;
}

void ExtraPictures::indexLines(int columns, int rows) {
    if (columns == m_columns && rows == m_rows) return;
    m_columns = columns;
    m_rows = rows;
    const int step = std::max(1, (std::max(columns, rows) + kMostLines - 1) / kMostLines);
    // The grid lies in bands of one cell's height, each with a pair of vertices a column: the first of a pair
    // is on the photo's upper side.
    const auto vertex = [columns](int column, int row, bool second) {
        return static_cast<uint32_t>(2 * (row * (columns + 1) + column) + (second ? 1 : 0));
    };
    std::vector<uint32_t> indices;
    for (int row = 0; row < rows; row += step)
        for (int column = 0; column < columns; ++column)
            indices.insert(indices.end(), {vertex(column, row, false), vertex(column + 1, row, false)});
    for (int column = 0; column < columns; ++column)
        indices.insert(indices.end(), {vertex(column, rows - 1, true), vertex(column + 1, rows - 1, true)});
    for (int column = 0; column <= columns; column += step)
        for (int row = 0; row < rows; ++row)
            indices.insert(indices.end(), {vertex(column, row, false), vertex(column, row, true)});
    m_line_indices = static_cast<GLsizei>(indices.size());
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, m_lines);
    glBufferData(GL_ELEMENT_ARRAY_BUFFER, static_cast<GLsizeiptr>(indices.size() * sizeof(uint32_t)),
                 indices.data(), GL_STATIC_DRAW);
}

const Texture& ExtraPictures::wires(const ParallaxView& view, Size size) {
    const ESRenderer& renderer = view.renderer();
    m_wires.resize(size);
    const DrawingInto target(m_wires);
    drawFlat();
    glClearColor(0.0f, 0.0f, 0.0f, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT);
    indexLines(renderer.m_vtxW, renderer.m_vtxH);

    constexpr GLsizei kStride = 5 * sizeof(float);
    glUseProgram(renderer.m_program);
    glActiveTexture(GL_TEXTURE1);
    glBindTexture(GL_TEXTURE_2D, renderer.m_texName);
    glUniform1i(static_cast<GLint>(renderer.m_texLocHandle), 1);
    glActiveTexture(GL_TEXTURE2);
    glBindTexture(GL_TEXTURE_2D, renderer.m_depthName);
    glUniform1i(static_cast<GLint>(renderer.m_depthLocHandle), 2);
    glUniformMatrix4fv(static_cast<GLint>(renderer.m_mvpLocHandle), 1, GL_FALSE, &renderer.m_mvpL.mat[0][0]);
    glBindBuffer(GL_ARRAY_BUFFER, renderer.m_gridVertexBuf[0]);
    glEnableVertexAttribArray(renderer.m_vPositionHandle);
    glVertexAttribPointer(renderer.m_vPositionHandle, 3, GL_FLOAT, GL_FALSE, kStride, nullptr);
    glEnableVertexAttribArray(renderer.m_texCoordHandle);
    glVertexAttribPointer(renderer.m_texCoordHandle, 2, GL_FLOAT, GL_FALSE, kStride,
                          reinterpret_cast<const void*>(3 * sizeof(float)));  // NOLINT
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, m_lines);
    glDrawElements(GL_LINES, m_line_indices, GL_UNSIGNED_INT, nullptr);
    return m_wires;
}

}  // namespace quorvane::tuner
