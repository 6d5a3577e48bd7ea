#include <algorithm>

#include "gl/program.h"
#include "scene.h"

namespace quorvane::test {
namespace {

using ::testing::IsEmpty;
using ::testing::SizeIs;

class GlProgram : public GlTest {};

TEST_F(GlProgram, CompilesAndLinks) {
    ESRenderer renderer;
    ASSERT_TRUE(observed([&] { return renderer.setupGraphics(64, 48); }));
    GLint linked = GL_FALSE;
    glGetProgramiv(renderer.m_program, GL_LINK_STATUS, &linked);
    EXPECT_EQ(linked, GL_TRUE);
    EXPECT_TRUE(glIsProgram(renderer.m_program));
    for (const LogLine& line : log.lines()) EXPECT_EQ(line.priority, 3) << line;
    EXPECT_THAT(log.textsStartingWith("after "), IsEmpty());
}

TEST_F(GlProgram, FindsEveryInput) {
    ESRenderer renderer;
    prepared([&] { renderer.setupGraphics(64, 48); });
    for (const GLuint location :
         {renderer.m_vPositionHandle, renderer.m_texCoordHandle, renderer.m_mvpLocHandle,
          renderer.m_texLocHandle, renderer.m_depthLocHandle})
        EXPECT_LT(location, 64u);
    EXPECT_NE(renderer.m_vPositionHandle, renderer.m_texCoordHandle);
}

TEST_F(GlProgram, SecondSetupMakesNoNewObjects) {
    ESRenderer renderer;
    prepared([&] { renderer.setupGraphics(64, 48); });
    const auto programs = gl.live_programs;
    prepared([&] { renderer.setupGraphics(32, 80); });
    EXPECT_EQ(gl.live_programs, programs);
    EXPECT_THAT(gl.live_framebuffers, SizeIs(1));
    EXPECT_THAT(gl.live_buffers, SizeIs(2));
}

GLuint compiled(GLenum type, const char* source) {
    const GLuint shader = glCreateShader(type);
    glShaderSource(shader, 1, &source, nullptr);
    glCompileShader(shader);
    GLint status = GL_FALSE;
    glGetShaderiv(shader, GL_COMPILE_STATUS, &status);
    EXPECT_EQ(status, GL_TRUE);
    return shader;
}

/// Draws a white square of half-width 8 at z = -32 through the vertex stage, with a matrix that is easy to
/// read back from, over a depth texture of one texel.
class GlVertexStage : public GlTest {
  protected:
    static constexpr int kSize = 256;

    void SetUp() override {
        GlTest::SetUp();
        if (IsSkipped()) return;
        const char* const white = "void main() { gl_FragColor = vec4(1.0); }";
        m_program = glCreateProgram();
        glAttachShader(m_program, compiled(GL_VERTEX_SHADER, gVertexShader));
        glAttachShader(m_program, compiled(GL_FRAGMENT_SHADER, white));
        glBindAttribLocation(m_program, 0, "vPosition");
        glLinkProgram(m_program);
        GLint linked = GL_FALSE;
        glGetProgramiv(m_program, GL_LINK_STATUS, &linked);
        ASSERT_EQ(linked, GL_TRUE);
        m_target = std::make_unique<Target>(kSize, kSize);
    }

    struct Extent {
        int left, right, bottom, top;  // first and one past the last pixel
        int width() const { return right - left; }
        int height() const { return top - bottom; }
        double middle() const { return (left + right) / 2.0; }
    };

    /// `texel` is the depth as red, green and blue. The matrix makes clip x = x * x_scale + (z + 32) *
    /// z_scale.
    Extent drawn(const Colour& texel, float x_scale, float z_scale) {
        GLuint depth = 0;
        glGenTextures(1, &depth);
        glActiveTexture(GL_TEXTURE0);
        glBindTexture(GL_TEXTURE_2D, depth);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
        const uint8_t rgb[] = {static_cast<uint8_t>(texel.r), static_cast<uint8_t>(texel.g),
                               static_cast<uint8_t>(texel.b)};
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGB, 1, 1, 0, GL_RGB, GL_UNSIGNED_BYTE, rgb);

        const float matrix[16] = {x_scale,         0, 0, 0, 0, 1.0f / 16.0f, 0, 0, z_scale, 0, 0, 0,
                                  32.0f * z_scale, 0, 0, 1};
        const float square[] = {-8, -8, -32, 8, -8, -32, -8, 8, -32, 8, 8, -32};
        m_target->fill({0, 0, 0});
        glBindFramebuffer(GL_FRAMEBUFFER, m_target->framebuffer());
        glViewport(0, 0, kSize, kSize);
        glUseProgram(m_program);
        glUniformMatrix4fv(glGetUniformLocation(m_program, "mvp"), 1, GL_FALSE, matrix);
        glUniform1i(glGetUniformLocation(m_program, "depthMap"), 0);
        glBindBuffer(GL_ARRAY_BUFFER, 0);
        glEnableVertexAttribArray(0);
        glVertexAttribPointer(0, 3, GL_FLOAT, GL_FALSE, 0, square);
        glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
        EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
        glDeleteTextures(1, &depth);

        const Picture picture = m_target->read();
        Extent extent = {kSize, 0, kSize, 0};
        for (int y = 0; y < kSize; ++y)
            for (int x = 0; x < kSize; ++x) {
                if (picture.at(x, y).r < 128) continue;
                extent.left = std::min(extent.left, x);
                extent.right = std::max(extent.right, x + 1);
                extent.bottom = std::min(extent.bottom, y);
                extent.top = std::max(extent.top, y + 1);
            }
        return extent;
    }

    // A unit is 8 pixels, and the square at rest 128.
    static constexpr float kSixteenth = 1.0f / 16.0f;

    GLuint m_program = 0;
    std::unique_ptr<Target> m_target;
};

TEST_F(GlVertexStage, DepthOf32By35LeavesTheVertexInPlace) {
    // 233 is the nearest byte: it moves the vertex by less than 0.01.
    const Extent extent = drawn({233, 233, 233}, kSixteenth, 0.0f);
    EXPECT_NEAR(extent.width(), 128, 1);
    EXPECT_NEAR(extent.height(), 128, 1);
    EXPECT_NEAR(drawn({233, 233, 233}, kSixteenth / 4, kSixteenth).middle(), 128.0, 0.6);
}

TEST_F(GlVertexStage, FullDepthShrinksBy0Point9625AndComes1Point2Nearer) {
    const Extent extent = drawn({255, 255, 255}, kSixteenth, 0.0f);
    EXPECT_NEAR(extent.width(), 128 * 0.9625, 1.01);
    EXPECT_NEAR(extent.height(), 128 * 0.9625, 1.01);
    // z = -30.8 is 1.2 units of 8 pixels right of the middle.
    EXPECT_NEAR(drawn({255, 255, 255}, kSixteenth / 4, kSixteenth).middle(), 128 + 1.2 * 8, 0.6);
}

TEST_F(GlVertexStage, ZeroDepthGrowsBy1Point4AndMoves12Point8Away) {
    const Extent extent = drawn({0, 0, 0}, kSixteenth, 0.0f);
    EXPECT_NEAR(extent.width(), 128 * 1.4, 1.01);
    EXPECT_NEAR(extent.height(), 128 * 1.4, 1.01);
    // Narrow, to stay within the picture.
    EXPECT_NEAR(drawn({0, 0, 0}, kSixteenth / 16, kSixteenth).middle(), 128 - 12.8 * 8, 0.6);
}

TEST_F(GlVertexStage, DepthIsReadFromTheGreenChannel) {
    EXPECT_NEAR(drawn({0, 255, 0}, kSixteenth, 0.0f).width(), 128 * 0.9625, 1.01);
    EXPECT_NEAR(drawn({255, 0, 255}, kSixteenth, 0.0f).width(), 128 * 1.4, 1.01);
}

}  // namespace
}  // namespace quorvane::test
