#include <sys/time.h>

#include <algorithm>

#include "support/clock.h"
#include "support/component_test.h"

namespace quorvane::test {
namespace {

using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;

const char* const kCreateShader = "    create shader          ";
const char* const kGetUniform = "    get uniform            ";
const char* const kGenFbo = "    gen fbo                ";
const char* const kInitVariable = "    init variable              ";

class GraphicsSetup : public ComponentTest {
  protected:
    bool setUp(int w, int h) {
        return observed([&] { return renderer.setupGraphics(w, h); });
    }

    ESRenderer renderer;
};

TEST_F(GraphicsSetup, FirstCallDoesThisInThisOrder) {
    EXPECT_TRUE(setUp(1080, 1920));
    EXPECT_THAT(
        timeline.lines(),
        ElementsAre(
            "glGetString(GL_VERSION)", "D GL Version = OpenGL ES 2.0 fake\n", "glGetString(GL_VENDOR)",
            "D GL Vendor = nobody\n", "glGetString(GL_RENDERER)", "D GL Renderer = recorder\n",
            "glGetString(GL_EXTENSIONS)", "D GL Extensions = GL_OES_element_index_uint\n",
            "D setupGraphics(1080, 1920)",
            // the program
            "glCreateShader(GL_VERTEX_SHADER) = 1", "glShaderSource(1, 1, data, null)", "glCompileShader(1)",
            "glGetShaderiv(1, GL_COMPILE_STATUS)", "glCreateShader(GL_FRAGMENT_SHADER) = 2",
            "glShaderSource(2, 1, data, null)", "glCompileShader(2)", "glGetShaderiv(2, GL_COMPILE_STATUS)",
            "glCreateProgram() = 3", "glAttachShader(3, 1)", "glGetError()", "glAttachShader(3, 2)",
            "glGetError()", "glLinkProgram(3)", "glGetProgramiv(3, GL_LINK_STATUS)",
            "time     create shader          ",
            // the locations
            "glGetAttribLocation(3, vPosition)", "glGetError()",
            "D glGetAttribLocation(\"vPosition\") = 11\n", "glGetAttribLocation(3, a_texCoord)",
            "glGetError()", "D glGetAttribLocation(\"a_texCoord\") = 12\n", "glGetUniformLocation(3, mvp)",
            "glGetError()", "D glGetUniformLocation(\"mvp\") = 21\n", "glGetUniformLocation(3, s_texture)",
            "glGetError()", "D glGetUniformLocation(\"s_texture\") = 22\n",
            "glGetUniformLocation(3, depthMap)", "glGetError()",
            "D glGetUniformLocation(\"depthMap\") = 23\n", "time     get uniform            ",
            // the framebuffer
            "glGenFramebuffers(1) = {4}", "glBindFramebuffer(GL_FRAMEBUFFER, 4)",
            "time     gen fbo                ",
            // the size
            "glViewport(0, 0, 1080, 1920)", "glGetError()", "D unit2pix = 1662\n", "D dc = 124\n",
            "D dispz= 61\n", "D CROPPING= 123\n",
            "D m_OBJ_CORD_X: 11.580738, m_OBJ_CORD_X2: 9.231762, m_OBJ_CORD_Y: 18.500000",
            "glGenBuffers(2) = {5, 6}", "time     init variable              "));
}

TEST_F(GraphicsSetup, ResultsAreStored) {
    setUp(1080, 1920);
    EXPECT_EQ(renderer.m_program, 3u);
    EXPECT_EQ(renderer.m_vPositionHandle, 11u);
    EXPECT_EQ(renderer.m_texCoordHandle, 12u);
    EXPECT_EQ(renderer.m_mvpLocHandle, 21u);
    EXPECT_EQ(renderer.m_texLocHandle, 22u);
    EXPECT_EQ(renderer.m_depthLocHandle, 23u);
    EXPECT_EQ(renderer.m_fbo, 4u);
    EXPECT_EQ(renderer.m_gridVertexBuf[0], 5u);
    EXPECT_EQ(renderer.m_gridVertexBuf[1], 6u);
    EXPECT_EQ(renderer.m_width, 1080.0f);
    EXPECT_EQ(renderer.m_height, 1920.0f);
    EXPECT_EQ(renderer.m_padCordXHandle, 0);
    EXPECT_EQ(renderer.m_zLimitHandle, 0);
}

struct Geometry {
    int w, h, unit2pix, dc, dispz, cropping;
    const char* extents;
    float object_x, object_x2;
    int render_w;
};

// GoogleTest prints bytes otherwise, padding and all, which valgrind objects to.
void PrintTo(const Geometry& geometry, std::ostream* out) { *out << geometry.w << " x " << geometry.h; }

class GraphicsSetupGeometry : public GraphicsSetup, public ::testing::WithParamInterface<Geometry> {};

TEST_P(GraphicsSetupGeometry, HasItsWorkedValues) {
    const Geometry& g = GetParam();
    EXPECT_TRUE(setUp(g.w, g.h));
    EXPECT_THAT(log.texts(), Contains("unit2pix = " + std::to_string(g.unit2pix) + "\n"));
    EXPECT_THAT(log.texts(), Contains("dc = " + std::to_string(g.dc) + "\n"));
    EXPECT_THAT(log.texts(), Contains("dispz= " + std::to_string(g.dispz) + "\n"));
    EXPECT_THAT(log.texts(), Contains("CROPPING= " + std::to_string(g.cropping) + "\n"));
    EXPECT_THAT(log.texts(), Contains(g.extents));
    EXPECT_NEAR(renderer.m_OBJ_CORD_X, g.object_x, 1e-6);
    EXPECT_NEAR(renderer.m_OBJ_CORD_X2, g.object_x2, 1e-6);
    EXPECT_EQ(renderer.m_OBJ_CORD_Y, 18.5f);
    EXPECT_EQ(renderer.m_L_startX, -g.cropping);
    EXPECT_EQ(renderer.m_L_startY, 0);
    EXPECT_EQ(renderer.m_renderW, g.render_w);
    EXPECT_EQ(renderer.m_renderH, g.h);
}

INSTANTIATE_TEST_SUITE_P(
    Outputs, GraphicsSetupGeometry,
    ::testing::Values(Geometry{1080, 1920, 1662, 124, 61, 123,
                               "m_OBJ_CORD_X: 11.580738, m_OBJ_CORD_X2: 9.231762, m_OBJ_CORD_Y: 18.500000",
                               11.580738f, 9.231762f, 1203},
                      Geometry{1920, 1080, 935, 70, 34, 69,
                               "m_OBJ_CORD_X: 34.052525, m_OBJ_CORD_X2: 31.725252, m_OBJ_CORD_Y: 18.500000",
                               34.052525f, 31.725252f, 1989},
                      Geometry{720, 1280, 1108, 83, 41, 83,
                               "m_OBJ_CORD_X: 11.590365, m_OBJ_CORD_X2: 9.222135, m_OBJ_CORD_Y: 18.500000",
                               11.590365f, 9.222135f, 803},
                      // 2911 / 1.1547005145615656 is 2521.000002, where all digits of 2 tan 30 degrees would
                      // give 2520.99995. The ratio 640 / 2911 is rounded up to float, which gives 2520.99993.
                      Geometry{2911, 2911, 2521, 189, 94, 189,
                               "m_OBJ_CORD_X: 19.693178, m_OBJ_CORD_X2: 17.306822, m_OBJ_CORD_Y: 18.500000",
                               19.693178f, 17.306822f, 3100},
                      Geometry{640, 2911, 2520, 189, 94, 189,
                               "m_OBJ_CORD_X: 5.260982, m_OBJ_CORD_X2: 2.873680, m_OBJ_CORD_Y: 18.500000",
                               5.260982f, 2.873680f, 829}),
    [](const auto& output) { return std::to_string(output.param.w) + "x" + std::to_string(output.param.h); });

TEST_F(GraphicsSetup, ExtentsFollowTheirRulesAtManySizes) {
    for (int w = 1; w <= 2000; w += 37)
        for (int h = 2; h <= 2000; h += 61) {
            SCOPED_TRACE(testing::Message() << w << " x " << h);
            prepared([&] { renderer.setupGraphics(w, h); });
            const volatile float ratio = static_cast<float>(w) / static_cast<float>(h);
            const double baseline = 2.4f;
            const int unit2pix = static_cast<int>(w / (ratio * 1.1547005145615656));
            const int dc = static_cast<int>(baseline * 0.03125 * unit2pix);
            const int dispz = static_cast<int>(dc - unit2pix * (baseline * 0.015625));
            const int cropping = dispz + static_cast<int>(0.5 + unit2pix * (baseline * 0.5) * 0.03125);
            const volatile float product = 18.5f * static_cast<float>(w);
            const volatile float base = product / static_cast<float>(h);
            ASSERT_EQ(renderer.m_L_startX, -cropping);
            ASSERT_EQ(renderer.m_renderW, w + cropping);
            ASSERT_EQ(renderer.m_renderH, h);
            const volatile float quotient = static_cast<float>(dispz) / static_cast<float>(unit2pix);
            ASSERT_EQ(renderer.m_OBJ_CORD_X, static_cast<float>(double{base} + 32.0 * double{quotient}));
            ASSERT_EQ(renderer.m_OBJ_CORD_X2, static_cast<float>(double{base} - 32.0 * double{quotient}));
        }
}

TEST_F(GraphicsSetup, OtherBaselineAndHalfHeightCount) {
    renderer.m_baseline = 4.0f;
    renderer.m_OBJ_CORD_Y = 10.0f;
    setUp(1000, 1000);
    // unit2pix 866; dc 108.25; 108 - 54.125 = 53.875; 0.5 + 54.125 = 54.625.
    EXPECT_EQ(renderer.m_L_startX, -(53 + 54));
    EXPECT_FLOAT_EQ(renderer.m_OBJ_CORD_X, static_cast<float>(10 + 32 * 53.0 / 866.0));
}

TEST_F(GraphicsSetup, FirstCallPrintsFourTimingLines) {
    setUp(64, 64);
    EXPECT_THAT(timeline.timingLabels(), ElementsAre(kCreateShader, kGetUniform, kGenFbo, kInitVariable));
}

TEST_F(GraphicsSetup, InitVariableLabelIs31CharactersAndTheOthersAre27) {
    setUp(64, 64);
    std::vector<size_t> lengths;
    for (const std::string& label : timeline.timingLabels()) lengths.push_back(label.size());
    EXPECT_THAT(lengths, ElementsAre(27u, 27u, 27u, 31u));
}

TEST_F(GraphicsSetup, EachStepIsMeasuredFromTheOneBefore) {
    const SteppingClock clock(1000);
    setUp(64, 64);
    EXPECT_THAT(timeline.timingLines(), Each(EndsWith(":     1000(us) = 1.0000(ms)")));
}

TEST_F(GraphicsSetup, SecondCallIsMeasuredFromItsOwnStart) {
    const SteppingClock clock(1000);
    setUp(64, 64);
    timeval elsewhere;
    for (int i = 0; i < 5; ++i) gettimeofday(&elsewhere, nullptr);
    setUp(32, 32);
    EXPECT_THAT(timeline.timingLines(),
                ElementsAre("    init variable              :     1000(us) = 1.0000(ms)"));
}

TEST_F(GraphicsSetup, SecondCallKeepsProgramLocationsFramebufferAndBuffers) {
    setUp(1080, 1920);
    gl.attribute_locations["vPosition"] = 99;
    EXPECT_TRUE(setUp(1920, 1080));
    EXPECT_EQ(renderer.m_program, 3u);
    EXPECT_EQ(renderer.m_vPositionHandle, 11u);
    EXPECT_EQ(renderer.m_fbo, 4u);
    EXPECT_EQ(renderer.m_gridVertexBuf[0], 5u);
    EXPECT_NEAR(renderer.m_OBJ_CORD_X, 34.052525, 1e-6);
    EXPECT_THAT(gl.live_framebuffers, SizeIs(1));
}

TEST_F(GraphicsSetup, SecondCallOnlySetsTheSizeAgain) {
    setUp(1080, 1920);
    setUp(1920, 1080);
    EXPECT_THAT(timeline.lines(),
                ElementsAre("glGetString(GL_VERSION)", "D GL Version = OpenGL ES 2.0 fake\n",
                            "glGetString(GL_VENDOR)", "D GL Vendor = nobody\n", "glGetString(GL_RENDERER)",
                            "D GL Renderer = recorder\n", "glGetString(GL_EXTENSIONS)",
                            "D GL Extensions = GL_OES_element_index_uint\n", "D setupGraphics(1920, 1080)",
                            "glViewport(0, 0, 1920, 1080)", "glGetError()", "D unit2pix = 935\n",
                            "D dc = 70\n", "D dispz= 34\n", "D CROPPING= 69\n",
                            "D m_OBJ_CORD_X: 34.052525, m_OBJ_CORD_X2: 31.725252, m_OBJ_CORD_Y: 18.500000",
                            "time     init variable              "));
}

TEST_F(GraphicsSetup, FailureChangesNothingAndPrintsNoTiming) {
    gl.link_result.status = GL_FALSE;
    EXPECT_FALSE(setUp(640, 480));
    EXPECT_EQ(log.lines().back(), errorLine("Could not create program."));
    EXPECT_THAT(timeline.timingLabels(), IsEmpty());
    EXPECT_THAT(timeline.callsOf("glViewport"), IsEmpty());
    EXPECT_THAT(timeline.callsOf("glGenBuffers"), IsEmpty());
    EXPECT_THAT(timeline.callsOf("glGenFramebuffers"), IsEmpty());
    EXPECT_EQ(renderer.m_program, 0u);
    EXPECT_EQ(renderer.m_fbo, 0u);
    EXPECT_EQ(renderer.m_width, 0.0f);
    EXPECT_EQ(renderer.m_height, 0.0f);
    EXPECT_EQ(renderer.m_OBJ_CORD_X, 0.0f);
    EXPECT_EQ(renderer.m_gridVertexBuf[0], 0u);
}

TEST_F(GraphicsSetup, FailureIsTriedAgainByTheNextCall) {
    gl.link_result.status = GL_FALSE;
    EXPECT_FALSE(setUp(640, 480));
    gl.link_result.status = GL_TRUE;
    EXPECT_TRUE(setUp(640, 480));
    EXPECT_NE(renderer.m_program, 0u);
    EXPECT_THAT(timeline.timingLabels(), ElementsAre(kCreateShader, kGetUniform, kGenFbo, kInitVariable));
}

TEST_F(GraphicsSetup, MissingLocationsAreKeptAsMinusOne) {
    gl.attribute_locations.clear();
    gl.uniform_locations.clear();
    EXPECT_TRUE(setUp(64, 64));
    EXPECT_EQ(renderer.m_vPositionHandle, 0xffffffffu);
    EXPECT_EQ(renderer.m_depthLocHandle, 0xffffffffu);
    EXPECT_THAT(log.texts(), Contains("glGetUniformLocation(\"mvp\") = -1\n"));
}

TEST_F(GraphicsSetup, DepthLimitIsNotLookedUp) {
    setUp(64, 64);
    EXPECT_THAT(timeline.callsOf("glGetUniformLocation"), SizeIs(3));
    EXPECT_THAT(timeline.calls(), Not(Contains(HasSubstr("z_limit"))));
}

TEST_F(GraphicsSetup, OlderFramebufferIsDeletedFirst) {
    renderer.m_fbo = 77;
    setUp(64, 64);
    const auto lines = timeline.lines();
    const auto deleted = std::find(lines.begin(), lines.end(), "glDeleteFramebuffers(1, {77})");
    ASSERT_NE(deleted, lines.end());
    EXPECT_EQ(*(deleted + 1), "glGenFramebuffers(1) = {4}");
    EXPECT_EQ(*(deleted + 2), "glBindFramebuffer(GL_FRAMEBUFFER, 4)");
    EXPECT_EQ(renderer.m_fbo, 4u);
}

TEST_F(GraphicsSetup, OneMissingBufferNameReplacesBoth) {
    renderer.m_gridVertexBuf[0] = 55;
    setUp(64, 64);
    EXPECT_EQ(renderer.m_gridVertexBuf[0], 5u);
    EXPECT_EQ(renderer.m_gridVertexBuf[1], 6u);
    renderer.m_gridVertexBuf[0] = 0;
    setUp(64, 64);
    EXPECT_EQ(renderer.m_gridVertexBuf[0], 7u);
    EXPECT_EQ(renderer.m_gridVertexBuf[1], 8u);
    EXPECT_THAT(timeline.callsOf("glDeleteBuffers"), IsEmpty());
}

TEST_F(GraphicsSetup, GlErrorsAreLoggedAndDoNotFail) {
    gl.errorAfter("glGetAttribLocation", GL_INVALID_OPERATION);
    gl.errorAfter("glGetUniformLocation", GL_INVALID_VALUE);
    gl.errorAfter("glViewport", GL_INVALID_ENUM);
    EXPECT_TRUE(setUp(64, 64));
    EXPECT_THAT(log.textsStartingWith("after "), ElementsAre("after glGetAttribLocation() glError (0x502)\n",
                                                             "after glGetUniformLocation() glError (0x501)\n",
                                                             "after glViewport() glError (0x500)\n"));
}

TEST_F(GraphicsSetup, EveryLineButTheFailureIsDebug) {
    setUp(64, 64);
    for (const LogLine& line : log.lines()) {
        EXPECT_EQ(line.priority, 3) << line;
        EXPECT_EQ(line.tag, "AppQRVN") << line;
    }
}

}  // namespace
}  // namespace quorvane::test
