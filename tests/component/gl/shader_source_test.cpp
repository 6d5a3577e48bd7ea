#include "gl/program.h"

#include <cstring>

#include "../memory.h"
#include "support/component_test.h"

namespace quorvane::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

std::vector<std::string> linesOf(const char* text) {
    std::vector<std::string> lines;
    for (const char* at = text; *at != '\0';) {
        const char* end = std::strchr(at, '\n');
        if (end == nullptr) return {};
        lines.emplace_back(at, end);
        at = end + 1;
    }
    return lines;
}

std::string withoutPadding(const std::string& line) { return line.substr(0, line.find_last_not_of(' ') + 1); }

TEST(ShaderSources, VertexTextHas19LinesIn1597Bytes) {
    EXPECT_EQ(sizeof gVertexShader, 1597u);
    EXPECT_EQ(std::strlen(gVertexShader), 1596u);
    EXPECT_THAT(linesOf(gVertexShader), SizeIs(19));
}

TEST(ShaderSources, FragmentTextHas8LinesIn673Bytes) {
    EXPECT_EQ(sizeof gFragmentShader, 673u);
    EXPECT_EQ(std::strlen(gFragmentShader), 672u);
    EXPECT_THAT(linesOf(gFragmentShader), SizeIs(8));
}

TEST(ShaderSources, EveryLineIsPaddedTo83Characters) {
    for (const char* text : {gVertexShader, gFragmentShader})
        for (const std::string& line : linesOf(text)) EXPECT_EQ(line.size(), 83u) << line;
}

TEST(ShaderSources, VertexStageDeclaresItsInputs) {
    std::vector<std::string> lines;
    for (const std::string& line : linesOf(gVertexShader)) lines.push_back(withoutPadding(line));
    for (const char* declaration :
         {"attribute vec4 vPosition;", "attribute highp vec2 a_texCoord;", "varying highp vec2 v_texCoord;",
          "uniform mat4 mvp;", "uniform sampler2D depthMap;", "uniform float z_limit;"})
        EXPECT_THAT(lines, Contains(declaration));
    EXPECT_EQ(std::string(gVertexShader).find("precision"), std::string::npos);
}

TEST(ShaderSources, VertexStageMovesAlongTheLineOfSightByTheGreenDepth) {
    std::vector<std::string> lines;
    for (const std::string& line : linesOf(gVertexShader)) lines.push_back(withoutPadding(line));
    for (const char* step : {"    v_texCoord = a_texCoord;", "    offset = 0.4*(depthValue*35.0-32.0);",
                             "    gl_Position = mvp*(new_position);"})
        EXPECT_THAT(lines, Contains(step));
    EXPECT_NE(std::string(gVertexShader).find(").g;"), std::string::npos);
}

TEST(ShaderSources, FragmentStageIsMediumPrecisionAndOnlySamples) {
    std::vector<std::string> lines;
    for (const std::string& line : linesOf(gFragmentShader)) lines.push_back(withoutPadding(line));
    EXPECT_THAT(lines, ElementsAre("precision mediump float;", "varying vec2 v_texCoord;",
                                   "uniform sampler2D s_texture;", "varying vec4 color;", "void main()", "{",
                                   "    gl_FragColor = texture2D( s_texture, v_texCoord );", "}"));
}

/// Programs are built by the first setupGraphics; what follows it is not looked at here.
class ShaderProgram : public ComponentTest {
  protected:
    bool build() {
        return observed([this] { return renderer.setupGraphics(64, 64); });
    }

    /// The calls up to the first location look-up.
    std::vector<std::string> buildCalls() const {
        std::vector<std::string> calls;
        for (const std::string& call : timeline.calls()) {
            if (call.compare(0, 11, "glGetString") == 0) continue;
            if (call.compare(0, 19, "glGetAttribLocation") == 0) break;
            calls.push_back(call);
        }
        return calls;
    }

    void failCompiling(GLenum type, const std::string& message) {
        gl.compile_result[type].status = GL_FALSE;
        gl.compile_result[type].log = message;
    }

    void expectNoProgram() {
        EXPECT_EQ(renderer.m_program, 0u);
        EXPECT_THAT(gl.live_programs, IsEmpty());
        EXPECT_EQ(log.lines().back(), errorLine("Could not create program."));
    }

    std::vector<LogLine> errors() const {
        std::vector<LogLine> found;
        for (const LogLine& line : log.lines())
            if (line.priority != 3) found.push_back(line);
        return found;
    }

    ESRenderer renderer;
};

TEST_F(ShaderProgram, IsCompiledAttachedAndLinkedInThisOrder) {
    EXPECT_TRUE(build());
    EXPECT_THAT(
        buildCalls(),
        ElementsAre("glCreateShader(GL_VERTEX_SHADER) = 1", "glShaderSource(1, 1, data, null)",
                    "glCompileShader(1)", "glGetShaderiv(1, GL_COMPILE_STATUS)",
                    "glCreateShader(GL_FRAGMENT_SHADER) = 2", "glShaderSource(2, 1, data, null)",
                    "glCompileShader(2)", "glGetShaderiv(2, GL_COMPILE_STATUS)", "glCreateProgram() = 3",
                    "glAttachShader(3, 1)", "glGetError()", "glAttachShader(3, 2)", "glGetError()",
                    "glLinkProgram(3)", "glGetProgramiv(3, GL_LINK_STATUS)"));
    EXPECT_EQ(renderer.m_program, 3u);
    EXPECT_THAT(errors(), IsEmpty());
}

TEST_F(ShaderProgram, IsMadeOfTheTwoTexts) {
    build();
    EXPECT_EQ(gl.shader_sources[1], gVertexShader);
    EXPECT_EQ(gl.shader_sources[2], gFragmentShader);
}

TEST_F(ShaderProgram, KeepsItsShadersAttachedAndAlive) {
    build();
    EXPECT_THAT(gl.live_shaders, SizeIs(2));
    EXPECT_THAT(timeline.callsOf("glDetachShader"), IsEmpty());
    EXPECT_THAT(timeline.callsOf("glDeleteShader"), IsEmpty());
}

TEST_F(ShaderProgram, VertexShaderThatDoesNotCompileIsReportedWithItsLog) {
    failCompiling(GL_VERTEX_SHADER, "0:3: syntax error");
    EXPECT_FALSE(build());
    EXPECT_THAT(errors(), ElementsAre(errorLine("Could not compile shader 35633:\n0:3: syntax error\n"),
                                      errorLine("Could not create program.")));
    expectNoProgram();
}

TEST_F(ShaderProgram, VertexShaderThatDoesNotCompileIsDeletedAndNothingElseIsTried) {
    failCompiling(GL_VERTEX_SHADER, "bad");
    build();
    EXPECT_THAT(
        buildCalls(),
        ElementsAre("glCreateShader(GL_VERTEX_SHADER) = 1", "glShaderSource(1, 1, data, null)",
                    "glCompileShader(1)", "glGetShaderiv(1, GL_COMPILE_STATUS)",
                    "glGetShaderiv(1, GL_INFO_LOG_LENGTH)", "glGetShaderInfoLog(1, 4)", "glDeleteShader(1)"));
    EXPECT_THAT(gl.live_shaders, IsEmpty());
}

TEST_F(ShaderProgram, FragmentShaderThatDoesNotCompileLeavesTheVertexShader) {
    failCompiling(GL_FRAGMENT_SHADER, "bad");
    EXPECT_FALSE(build());
    EXPECT_THAT(errors(), ElementsAre(errorLine("Could not compile shader 35632:\nbad\n"),
                                      errorLine("Could not create program.")));
    EXPECT_THAT(gl.live_shaders, ElementsAre(1u));
    EXPECT_THAT(timeline.callsOf("glCreateProgram"), IsEmpty());
    expectNoProgram();
}

TEST_F(ShaderProgram, LongInfoLogIsReportedWhole) {
    const std::string message(3000, 'w');
    failCompiling(GL_VERTEX_SHADER, message);
    build();
    EXPECT_EQ(errors().at(0).text, "Could not compile shader 35633:\n" + message + "\n");
}

TEST_F(ShaderProgram, ShaderThatFailsWithoutALogIsHandedOnAndFailsTheLink) {
    failCompiling(GL_VERTEX_SHADER, "");
    gl.link_result.status = GL_FALSE;
    gl.link_result.log = "vertex stage missing";
    EXPECT_FALSE(build());
    EXPECT_THAT(timeline.calls(), Contains("glAttachShader(3, 1)"));
    EXPECT_THAT(timeline.callsOf("glGetShaderInfoLog"), IsEmpty());
    EXPECT_THAT(timeline.callsOf("glDeleteShader"), IsEmpty());
    EXPECT_THAT(errors(), ElementsAre(errorLine("Could not link program:\nvertex stage missing\n"),
                                      errorLine("Could not create program.")));
    expectNoProgram();
}

TEST_F(ShaderProgram, ShaderThatFailsWithoutALogDoesNotFailByItself) {
    failCompiling(GL_VERTEX_SHADER, "");
    failCompiling(GL_FRAGMENT_SHADER, "");
    EXPECT_TRUE(build());
    EXPECT_THAT(errors(), IsEmpty());
}

TEST_F(ShaderProgram, ShaderThatIsNotCreatedIsNotReportedByItself) {
    gl.shaders_not_created = {GL_VERTEX_SHADER};
    EXPECT_FALSE(build());
    EXPECT_THAT(buildCalls(), ElementsAre("glCreateShader(GL_VERTEX_SHADER) = 0"));
    EXPECT_THAT(errors(), ElementsAre(errorLine("Could not create program.")));
    expectNoProgram();
}

TEST_F(ShaderProgram, FragmentShaderThatIsNotCreatedLeavesTheVertexShader) {
    gl.shaders_not_created = {GL_FRAGMENT_SHADER};
    EXPECT_FALSE(build());
    EXPECT_THAT(gl.live_shaders, SizeIs(1));
    EXPECT_THAT(timeline.callsOf("glCreateProgram"), IsEmpty());
    expectNoProgram();
}

TEST_F(ShaderProgram, ProgramThatIsNotCreatedIsNotLinked) {
    gl.program_not_created = true;
    EXPECT_FALSE(build());
    EXPECT_EQ(timeline.calls().back(), "glCreateProgram() = 0");
    EXPECT_THAT(errors(), ElementsAre(errorLine("Could not create program.")));
}

TEST_F(ShaderProgram, ProgramThatDoesNotLinkIsReportedWithItsLogAndDeleted) {
    gl.link_result.status = GL_FALSE;
    gl.link_result.log = "too many varyings";
    EXPECT_FALSE(build());
    EXPECT_THAT(errors(), ElementsAre(errorLine("Could not link program:\ntoo many varyings\n"),
                                      errorLine("Could not create program.")));
    const std::vector<std::string> calls = timeline.calls();
    ASSERT_GE(calls.size(), 5u);
    EXPECT_THAT(std::vector<std::string>(calls.end() - 4, calls.end()),
                ElementsAre("glGetProgramiv(3, GL_LINK_STATUS)", "glGetProgramiv(3, GL_INFO_LOG_LENGTH)",
                            "glGetProgramInfoLog(3, 18)", "glDeleteProgram(3)"));
    expectNoProgram();
}

TEST_F(ShaderProgram, ProgramThatDoesNotLinkWithoutALogIsDeletedSilently) {
    gl.link_result.status = GL_FALSE;
    EXPECT_FALSE(build());
    EXPECT_THAT(errors(), ElementsAre(errorLine("Could not create program.")));
    EXPECT_THAT(timeline.callsOf("glGetProgramInfoLog"), IsEmpty());
    EXPECT_EQ(timeline.calls().back(), "glDeleteProgram(3)");
    EXPECT_THAT(gl.live_shaders, SizeIs(2));
    expectNoProgram();
}

TEST_F(ShaderProgram, OnlyTrueCountsAsLinked) {
    gl.link_result.status = 2;
    EXPECT_FALSE(build());
    expectNoProgram();
}

TEST_F(ShaderProgram, LogThatMemoryDoesNotSufficeForIsNotReportedButStillFails) {
    if (kSanitized) GTEST_SKIP() << "the sanitizer stops at an allocation of this size";
    // As an unsigned size, -1 is more than any allocation gives.
    gl.compile_result[GL_VERTEX_SHADER].status = GL_FALSE;
    gl.compile_result[GL_VERTEX_SHADER].log_length = -1;
    EXPECT_FALSE(build());
    EXPECT_THAT(timeline.callsOf("glGetShaderInfoLog"), IsEmpty());
    EXPECT_THAT(timeline.callsOf("glDeleteShader"), SizeIs(1));
    EXPECT_THAT(errors(), ElementsAre(errorLine("Could not create program.")));
}

TEST_F(ShaderProgram, LinkLogThatMemoryDoesNotSufficeForIsNotReportedButStillFails) {
    if (kSanitized) GTEST_SKIP() << "the sanitizer stops at an allocation of this size";
    gl.link_result.status = GL_FALSE;
    gl.link_result.log_length = -1;
    EXPECT_FALSE(build());
    EXPECT_THAT(timeline.callsOf("glGetProgramInfoLog"), IsEmpty());
    EXPECT_EQ(timeline.calls().back(), "glDeleteProgram(3)");
    EXPECT_THAT(errors(), ElementsAre(errorLine("Could not create program.")));
}

TEST_F(ShaderProgram, EveryStatusButFalseCountsAsCompiled) {
    gl.compile_result[GL_VERTEX_SHADER] = {2, "a remark", {}};
    gl.compile_result[GL_FRAGMENT_SHADER] = {-1, "another", {}};
    EXPECT_TRUE(build());
    EXPECT_THAT(timeline.callsOf("glDeleteShader"), IsEmpty());
}

TEST_F(ShaderProgram, LogsAreFreedOnceReported) {
    const std::string log_text(1 << 16, 'l');
    const auto fail = [this] {
        gl.shader_sources.clear();
        build();
    };
    gl.compile_result[GL_VERTEX_SHADER] = {GL_FALSE, log_text, {}};
    EXPECT_LT(bytesKept(fail), 1 << 18) << "32 compile logs are 2 MB";
    gl.compile_result.clear();
    gl.link_result = {GL_FALSE, log_text, {}};
    EXPECT_LT(bytesKept(fail), 1 << 18) << "32 link logs are 2 MB";
}

TEST_F(ShaderProgram, AttachErrorsAreLoggedAndDoNotStop) {
    gl.errorAfter("glAttachShader", GL_INVALID_VALUE);
    EXPECT_TRUE(build());
    EXPECT_THAT(log.lines(), Contains(debugLine("after glAttachShader() glError (0x501)\n")));
}

}  // namespace
}  // namespace quorvane::test
