#include <algorithm>

#include "../memory.h"
#include "support/clock.h"
#include "support/component_test.h"
#include "support/dump_directory.h"
#include "support/models.h"

namespace quorvane::test {
namespace {

using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;

/// A renderer with easily told names, as after setting everything up.
class Frame : public ComponentTest {
  protected:
    Frame() {
        renderer.m_program = 31;
        renderer.m_vPositionHandle = 1;
        renderer.m_texCoordHandle = 2;
        renderer.m_mvpLocHandle = 3;
        renderer.m_texLocHandle = 4;
        renderer.m_depthLocHandle = 5;
        renderer.m_fbo = 61;
        renderer.m_gridVertexBuf[0] = 71;
        renderer.m_gridVertexBuf[1] = 72;
        renderer.m_texName = 81;
        renderer.m_depthName = 82;
        renderer.m_width = 1080.0f;
        renderer.m_height = 1920.0f;
        renderer.m_OBJ_CORD_X = 11.580738f;
        renderer.m_eleCount = 4242;
    }

    void render() {
        observed([this] { renderer.renderFrame(); });
    }

    ESRenderer renderer;
};

TEST_F(Frame, DoesThisInThisOrder) {
    render();
    EXPECT_THAT(
        timeline.lines(),
        ElementsAre(
            "glUseProgram(31)", "glGetError()", "glViewport(0, 0, 1080, 1920)", "glEnable(GL_DEPTH_TEST)",
            "glDepthFunc(GL_LEQUAL)", "glDepthMask(GL_TRUE)", "glClearColor(0, 0, 0, 1)", "glGetError()",
            "glClearDepthf(1)", "glClear(GL_COLOR_BUFFER_BIT|GL_DEPTH_BUFFER_BIT)", "glGetError()",
            "time GL setup1                  ",
            // the view
            StartsWith("D x_offset: "), "glUniformMatrix4fv(3, 1, GL_FALSE, data)", "glGetError()",
            "time setupProjection            ",
            // the photo
            "glActiveTexture(GL_TEXTURE1)", "glUniform1i(4, 1)", "glBindTexture(GL_TEXTURE_2D, 81)",
            // the grid
            "glBindBuffer(GL_ARRAY_BUFFER, 71)", "glEnableVertexAttribArray(1)", "glGetError()",
            "glVertexAttribPointer(1, 3, GL_FLOAT, GL_FALSE, 20, offset 0)", "glGetError()",
            "glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 72)", "glEnableVertexAttribArray(2)",
            "glVertexAttribPointer(2, 2, GL_FLOAT, GL_FALSE, 20, offset 12)", "glGetError()",
            // the depth
            "glActiveTexture(GL_TEXTURE2)", "glUniform1i(5, 2)", "glBindTexture(GL_TEXTURE_2D, 82)",
            "glBindFramebuffer(GL_FRAMEBUFFER, 61)", "time enable texture             ",
            "glDrawElements(GL_TRIANGLES, 4242, GL_UNSIGNED_INT, offset 0)",
            // the wait
            "eglGetCurrentDisplay()", "eglCreateSyncKHR(0xd1, EGL_SYNC_FENCE_KHR, null)",
            "eglClientWaitSyncKHR(0xd1, 0x5a, 0, EGL_FOREVER_KHR)", "eglDestroySyncKHR(0xd1, 0x5a)",
            "glReadPixels(0, 0, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, data)", "time draw time                  "));
}

TEST_F(Frame, ClearsBeforeItBindsItsFramebuffer) {
    glBindFramebuffer(GL_FRAMEBUFFER, 99);  // the host has bound another one in between
    GLuint bound_at_clear = 0;
    render();
    for (const std::string& call : timeline.calls()) {
        if (call.compare(0, 18, "glBindFramebuffer(") == 0) break;
        if (call.compare(0, 8, "glClear(") == 0) bound_at_clear = 99;
    }
    EXPECT_EQ(bound_at_clear, 99u);
    EXPECT_EQ(gl.bound_framebuffer, 61u);
}

TEST_F(Frame, LeavesTheseBindings) {
    render();
    EXPECT_EQ(gl.current_program, 31u);
    EXPECT_EQ(gl.active_texture, static_cast<GLenum>(GL_TEXTURE2));
    EXPECT_EQ(gl.bound_textures[GL_TEXTURE1], 81u);
    EXPECT_EQ(gl.bound_textures[GL_TEXTURE2], 82u);
    EXPECT_EQ(gl.bound_textures.count(GL_TEXTURE0), 0u);
    EXPECT_EQ(gl.bound_buffers[GL_ARRAY_BUFFER], 71u);
    EXPECT_EQ(gl.bound_buffers[GL_ELEMENT_ARRAY_BUFFER], 72u);
    EXPECT_EQ(gl.bound_framebuffer, 61u);
    EXPECT_THAT(gl.enabled, Contains(static_cast<GLenum>(GL_DEPTH_TEST)));
    EXPECT_THAT(timeline.callsOf("glDisableVertexAttribArray"), IsEmpty());
}

TEST_F(Frame, ChangesNoFieldButTheCount) {
    renderer.setRotation(300.0f, 900.0f, 2.0f);
    renderer.m_mvpL = renderer.m_mvpR = {};
    const float trans_x = renderer.m_transX, trans_y = renderer.m_transY, acc_x = renderer.m_accX;
    render();
    EXPECT_EQ(renderer.m_transX, trans_x);
    EXPECT_EQ(renderer.m_transY, trans_y);
    EXPECT_EQ(renderer.m_accX, acc_x);
    EXPECT_EQ(renderer.m_eleCount, 4242);
    EXPECT_EQ(renderer.m_width, 1080.0f);
    EXPECT_EQ(renderer.m_texName, 81u);
    EXPECT_EQ(renderer.m_depthName, 82u);
}

TEST_F(Frame, CountsFrames) {
    for (uint32_t n = 1; n <= 5; ++n) {
        render();
        EXPECT_EQ(renderer.m_renderCount, n);
    }
}

TEST_F(Frame, SecondFrameDoesTheSame) {
    render();
    const auto first = timeline.lines();
    render();
    EXPECT_EQ(timeline.lines(), first);
}

TEST_F(Frame, PrintsFourTimingLabelsOf27Characters) {
    render();
    const auto labels = timeline.timingLabels();
    EXPECT_THAT(labels, ElementsAre("GL setup1                  ", "setupProjection            ",
                                    "enable texture             ", "draw time                  "));
    for (const std::string& label : labels) EXPECT_EQ(label.size(), 27u);
}

TEST_F(Frame, EachStepIsMeasuredFromTheOneBefore) {
    const SteppingClock clock(250);
    render();
    EXPECT_THAT(timeline.timingLines(), Each(EndsWith(":      250(us) = 0.2500(ms)")));
}

TEST_F(Frame, GlErrorsAreLoggedUnderTheirCallAndStopNothing) {
    for (const char* function : {"glUseProgram", "glClearColor", "glClear", "glUniformMatrix4fv"})
        gl.errorAfter(function, GL_INVALID_OPERATION);
    gl.errorAfter("glEnableVertexAttribArray", GL_INVALID_VALUE);
    gl.errorAfter("glBindFramebuffer", GL_INVALID_ENUM);
    render();
    EXPECT_THAT(
        log.textsStartingWith("after "),
        ElementsAre("after glUseProgram() glError (0x502)\n", "after glClearColor() glError (0x502)\n",
                    "after glClear() glError (0x502)\n", "after glUniformMatrix4fv() glError (0x502)\n",
                    "after glEnableVertexAttribArray() glError (0x501)\n"));
    EXPECT_THAT(timeline.callsOf("glDrawElements"), SizeIs(1));
    EXPECT_EQ(gl.pendingErrors(), 1u);  // nothing is checked behind the texture's attribute
    EXPECT_EQ(renderer.m_renderCount, 1u);
}

TEST_F(Frame, AttributeErrorsAreToldApart) {
    gl.errorAfter("glVertexAttribPointer", GL_INVALID_VALUE);
    render();
    EXPECT_THAT(log.textsStartingWith("after "),
                ElementsAre("after glVertexAttribPointer vPos() glError (0x501)\n"));
    // Whatever is pending from the texture unit up to the second attribute is found there.
    gl.errorAfter("glBindBuffer", GL_INVALID_ENUM);
    gl.errorAfter("glUniform1i", GL_INVALID_OPERATION);
    render();
    EXPECT_THAT(log.textsStartingWith("after "),
                ElementsAre("after glEnableVertexAttribArray() glError (0x502)\n",
                            "after glEnableVertexAttribArray() glError (0x500)\n"));
}

TEST_F(Frame, TextureAttributeErrorsAreNamed) {
    gl.errorAfter("glVertexAttribPointer", GL_INVALID_VALUE, 1);
    render();
    EXPECT_THAT(log.textsStartingWith("after "),
                ElementsAre("after glVertexAttribPointer tex() glError (0x501)\n"));
}

TEST_F(Frame, FenceThatFailsIsLoggedAndDestroyed) {
    gl.wait_result = EGL_FALSE;
    gl.egl_error = EGL_BAD_PARAMETER;
    render();
    EXPECT_THAT(log.lines(), Contains(debugLine("EGL FENCE: error waiting for fence: 0x300c\n")));
    const auto lines = timeline.lines();
    const auto waited =
        std::find(lines.begin(), lines.end(), "eglClientWaitSyncKHR(0xd1, 0x5a, 0, EGL_FOREVER_KHR)");
    ASSERT_NE(waited, lines.end());
    EXPECT_EQ(*(waited + 1), "eglGetError()");
    EXPECT_EQ(*(waited + 2), "D EGL FENCE: error waiting for fence: 0x300c\n");
    EXPECT_EQ(*(waited + 3), "eglDestroySyncKHR(0xd1, 0x5a)");
    EXPECT_EQ(renderer.m_renderCount, 1u);
}

TEST_F(Frame, FenceThatTimesOutIsNoFailure) {
    gl.wait_result = EGL_TIMEOUT_EXPIRED_KHR;
    render();
    EXPECT_THAT(timeline.callsOf("eglGetError"), IsEmpty());
    EXPECT_THAT(timeline.callsOf("eglDestroySyncKHR"), SizeIs(1));
    EXPECT_THAT(log.textsStartingWith("EGL"), IsEmpty());
}

TEST_F(Frame, FenceThatWasNotCreatedIsWaitedForAllTheSame) {
    gl.created_sync = EGL_NO_SYNC_KHR;
    render();
    EXPECT_THAT(timeline.calls(), Contains("eglClientWaitSyncKHR(0xd1, 0x0, 0, EGL_FOREVER_KHR)"));
    EXPECT_THAT(timeline.calls(), Contains("eglDestroySyncKHR(0xd1, 0x0)"));
}

TEST_F(Frame, OfAnUntouchedRendererReturnsNormally) {
    ESRenderer fresh;
    observed([&] { fresh.renderFrame(); });
    EXPECT_EQ(fresh.m_renderCount, 1u);
    EXPECT_THAT(timeline.calls(), Contains("glDrawElements(GL_TRIANGLES, 0, GL_UNSIGNED_INT, offset 0)"));
}

// The output and the adopted photo

TEST_F(Frame, OutputTextureIsAttachedInThisOrder) {
    EXPECT_TRUE(observed([this] { return renderer.setOutTexture(44); }));
    EXPECT_THAT(
        timeline.lines(),
        ElementsAre("glBindTexture(GL_TEXTURE_2D, 44)", "glBindFramebuffer(GL_FRAMEBUFFER, 61)",
                    "glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, 44, 0)",
                    "glBindFramebuffer(GL_FRAMEBUFFER, 61)", "glCheckFramebufferStatus(GL_FRAMEBUFFER)"));
}

TEST_F(Frame, OutputThatDoesNotCompleteTheFramebufferGivesFalseAndLogsNothing) {
    for (const GLenum status :
         {GL_FRAMEBUFFER_INCOMPLETE_ATTACHMENT, GL_FRAMEBUFFER_INCOMPLETE_MISSING_ATTACHMENT,
          GL_FRAMEBUFFER_UNSUPPORTED, 0}) {
        gl.framebuffer_status = status;
        EXPECT_FALSE(observed([this] { return renderer.setOutTexture(44); }));
        EXPECT_THAT(log.lines(), IsEmpty());
        EXPECT_THAT(timeline.callsOf("glGetError"), IsEmpty());
    }
}

TEST_F(Frame, AdoptingAPhotoStoresItAndFlushes) {
    observed([this] { renderer.setTexture(640, 480, GLuint{900}); });
    EXPECT_THAT(timeline.lines(), ElementsAre("glFlush()"));
    EXPECT_EQ(renderer.m_texWidth, 640);
    EXPECT_EQ(renderer.m_texHeight, 480);
    EXPECT_EQ(renderer.m_texName, 900u);
}

TEST_F(Frame, AdoptingAPhotoDoesNotDeleteTheEarlierTexture) {
    observed([this] { renderer.setTexture(640, 480, GLuint{900}); });
    EXPECT_THAT(timeline.callsOf("glDeleteTextures"), IsEmpty());
}

TEST_F(Frame, AdoptedPhotoIsDeletedByTheDestructor) {
    GLuint hosts = 0;
    glGenTextures(1, &hosts);
    {
        ESRenderer other;
        prepared([&] { other.setTexture(64, 64, hosts); });
    }
    EXPECT_THAT(gl.live_textures, Not(Contains(hosts)));
    EXPECT_THAT(
        timeline.callsOf("glDeleteTextures"),
        ElementsAre("glDeleteTextures(1, {0})", "glDeleteTextures(1, {" + std::to_string(hosts) + "})"));
}

TEST_F(Frame, AdoptedPhotoIsDrawn) {
    prepared([this] { renderer.setTexture(640, 480, GLuint{900}); });
    render();
    EXPECT_EQ(gl.bound_textures[GL_TEXTURE1], 900u);
}

// Dumps

class FrameDump : public Frame {
  protected:
    FrameDump() {
        gl.pixel_byte = [](size_t i) { return static_cast<uint8_t>(i * 7 + i / 256); };
    }

    static Bytes expectedPixels(size_t pixels) {
        Bytes rgb;
        for (size_t i = 0; i < 4 * pixels; ++i)
            if (i % 4 != 3) rgb.push_back(static_cast<uint8_t>(i * 7 + i / 256));
        return rgb;
    }
};

TEST_F(FrameDump, WithDebuggingOffNoFileIsWritten) {
    const DumpDirectory directory(DumpDirectory::State::present);
    if (!directory.obstacle().empty()) GTEST_SKIP() << directory.obstacle();
    render();
    EXPECT_THAT(directory.files(), IsEmpty());
    EXPECT_EQ(renderer.m_renderCount, 1u);
}

TEST_F(FrameDump, ThirdFrameIsNamedAfterItsCountSizeAndTruncatedSample) {
    const DumpDirectory directory(DumpDirectory::State::present);
    if (!directory.obstacle().empty()) GTEST_SKIP() << directory.obstacle();
    render();
    render();
    renderer.m_accX = -2.7f;
    renderer.m_accY = 9.6f;
    renderer.m_debugEnable = 1;
    render();
    EXPECT_THAT(directory.files(), ElementsAre("output_3_1080_1920_-2_9.ppm"));
    EXPECT_EQ(fileBytes(DumpDirectory::path("output_3_1080_1920_-2_9.ppm")),
              netpbm("P6", 1080, 1920, expectedPixels(size_t{1080} * 1920)));
}

TEST_F(FrameDump, FirstFrameIsNumber1AndEveryFrameHasItsOwnFile) {
    const DumpDirectory directory(DumpDirectory::State::present);
    if (!directory.obstacle().empty()) GTEST_SKIP() << directory.obstacle();
    renderer.m_width = 5.0f;
    renderer.m_height = 3.0f;
    renderer.m_debugEnable = 0xffffffffu;
    render();
    render();
    EXPECT_THAT(directory.files(), ElementsAre("output_1_5_3_0_0.ppm", "output_2_5_3_0_0.ppm"));
    EXPECT_EQ(fileBytes(DumpDirectory::path("output_1_5_3_0_0.ppm")), netpbm("P6", 5, 3, expectedPixels(15)));
}

TEST_F(FrameDump, IsReadBackAfterTheLastTimingLine) {
    const DumpDirectory directory(DumpDirectory::State::absent);
    if (!directory.obstacle().empty()) GTEST_SKIP() << directory.obstacle();
    renderer.m_debugEnable = 1;
    renderer.m_width = 5.0f;
    renderer.m_height = 3.0f;
    render();
    const auto lines = timeline.lines();
    const auto last_time = std::find(lines.begin(), lines.end(), "time draw time                  ");
    ASSERT_NE(last_time, lines.end());
    EXPECT_EQ(*(last_time + 1), "glReadPixels(0, 0, 5, 3, GL_RGBA, GL_UNSIGNED_BYTE, data)");
}

TEST_F(FrameDump, MissingDirectoryIsLoggedAndTheFrameCounts) {
    const DumpDirectory directory(DumpDirectory::State::absent);
    if (!directory.obstacle().empty()) GTEST_SKIP() << directory.obstacle();
    renderer.m_debugEnable = 1;
    renderer.m_width = 5.0f;
    renderer.m_height = 3.0f;
    render();
    EXPECT_EQ(log.lines().back(),
              debugLine("[ERROR] Cannot open file /storage/sdcard0/qrvn/output_1_5_3_0_0.ppm\n"));
    EXPECT_EQ(renderer.m_renderCount, 1u);
    EXPECT_FALSE(fileExists("/storage/sdcard0/qrvn"));
}

TEST_F(FrameDump, ThatMemoryDoesNotSufficeForIsNotReadBackAndTheFrameCounts) {
    if (kSanitized) GTEST_SKIP() << "the sanitizer stops at an allocation of this size";
    renderer.m_debugEnable = 1;
    renderer.m_width = renderer.m_height = 1e9f;  // 4e18 bytes
    render();
    EXPECT_THAT(timeline.callsOf("glReadPixels"), SizeIs(1)) << "the one that waits";
    EXPECT_EQ(log.lines().back(), debugLine("[ERROR] Invalid image\n"));
    EXPECT_EQ(renderer.m_renderCount, 1u);
}

TEST_F(FrameDump, LeavesNoMemoryBehind) {
    const DumpDirectory directory(DumpDirectory::State::present);
    if (!directory.obstacle().empty()) GTEST_SKIP() << directory.obstacle();
    renderer.m_debugEnable = 1;
    renderer.m_width = renderer.m_height = 128.0f;
    EXPECT_LT(bytesKept([this] { render(); }), 1 << 18) << "32 frames are 2 MB";
}

}  // namespace
}  // namespace quorvane::test
