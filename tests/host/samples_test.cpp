// ParallaxView with several samples a pixel, on the driver and against recorded calls.

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "egl_double.h"
#include "host_test.h"
#include "support/dump_directory.h"

namespace quorvane::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr int kSide = 160;
constexpr int kPhoto = 64;
constexpr int kDepth = 4 * kPhoto;
constexpr size_t kPicture = size_t{4} * kSide * kSide;

class SamplesTest : public DriverTest {
  protected:
    void SetUp() override {
        DriverTest::SetUp();
        if (IsSkipped()) return;
        // A near disc before a far wall, each with a slight shade. The disc's colour reaches over the slope
        // that leads to the wall, so that what is seen beyond its silhouette is the wall behind it.
        for (int y = 0; y < kPhoto; ++y)
            for (int x = 0; x < kPhoto; ++x)
                photo.insert(photo.end(), 3,
                             static_cast<uint8_t>((inDisc(x, y, kPhoto, 0.34) ? 220 : 20) + y / 8));
        for (int y = 0; y < kDepth; ++y)
            for (int x = 0; x < kDepth; ++x) depth.push_back(inDisc(x, y, kDepth, 0.28) ? 255 : 0);
    }

    static bool inDisc(int x, int y, int side, double radius) {
        return std::hypot(x + 0.5 - side / 2.0, y + 0.5 - side / 2.0) < side * radius;
    }

    template <typename Action>
    static auto quietly(Action action) {
        const OutputToTimeline output;
        return action();
    }

    std::unique_ptr<ParallaxView> viewWith(int samples) {
        std::unique_ptr<ParallaxView> view;
        const Status made = quietly([&] {
            return ParallaxView::create(kSide, kSide, ViewOptions{4, samples}, &view);
        });
        EXPECT_EQ(sentence(made), "succeeded");
        if (!made) return view;
        EXPECT_TRUE(quietly([&] { return view->setPhoto({photo, kPhoto, kPhoto}); }).ok());
        EXPECT_TRUE(quietly([&] { return view->setDepth({depth, kDepth, kDepth}); }).ok());
        EXPECT_TRUE(view->setParameter("rotate_x_boundary", 40).ok());
        EXPECT_TRUE(quietly([&] { return view->lookAt(0.83f, -0.61f); }).ok());
        return view;
    }

    /// With four samples; null, and the test is skipped, where the driver has no four.
    std::unique_ptr<ParallaxView> smoothView() {
        std::unique_ptr<ParallaxView> view = viewWith(4);
        return view != nullptr && view->samples() == 4 ? std::move(view) : nullptr;
    }

    static Bytes picture(ParallaxView& view) {
        EXPECT_EQ(sentence(quietly([&] { return view.render(); })), "succeeded");
        EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR)) << "left for the app";
        Bytes pixels(4 * static_cast<size_t>(view.width()) * static_cast<size_t>(view.height()));
        EXPECT_EQ(sentence(view.readPixels({pixels, view.width(), view.height()})), "succeeded");
        return pixels;
    }

    static int red(const Bytes& picture, int x, int y) {
        return picture[4 * (static_cast<size_t>(y) * kSide + static_cast<size_t>(x))];
    }

    /// Neighbours in a row of which one shows nothing but the disc and the other nothing but the wall.
    static int steps(const Bytes& picture) {
        int count = 0;
        for (int y = 0; y < kSide; ++y)
            for (int x = 1; x < kSide; ++x)
                count += std::abs(red(picture, x, y) - red(picture, x - 1, y)) > 175 ? 1 : 0;
        return count;
    }

    Bytes photo, depth;
};

#define SMOOTH_VIEW_OR_SKIP(view)                            \
    const std::unique_ptr<ParallaxView> view = smoothView(); \
    if ((view) == nullptr) GTEST_SKIP() << "NO FOUR SAMPLES A PIXEL, NOT TESTED"

TEST_F(SamplesTest, SilhouettesTakeValuesInBetween) {
    SMOOTH_VIEW_OR_SKIP(smooth);
    const std::unique_ptr<ParallaxView> plain = viewWith(1);
    const Bytes hard = picture(*plain), soft = picture(*smooth);
    const int hard_steps = steps(hard);
    ASSERT_GT(hard_steps, 30);
    // A steep edge misses all four samples, or covers them, over a quarter of a pixel's width.
    EXPECT_LT(steps(soft), hard_steps / 2);
    // Where one surface is seen, the picture is the same.
    int same = 0;
    for (int y = 2; y < kSide - 2; ++y)
        for (int x = 2; x < kSide - 2; ++x) {
            int least = 255, most = 0;
            for (int j = -2; j <= 2; ++j)
                for (int i = -2; i <= 2; ++i) {
                    least = std::min(least, red(hard, x + i, y + j));
                    most = std::max(most, red(hard, x + i, y + j));
                }
            if (most - least > 6) continue;
            ++same;
            ASSERT_NEAR(red(soft, x, y), red(hard, x, y), 1) << x << ", " << y;
        }
    EXPECT_GT(same, kSide * kSide / 2);
}

TEST_F(SamplesTest, OneSampleIsThePictureThatAPlainViewDraws) {
    std::unique_ptr<ParallaxView> old;
    ASSERT_TRUE(quietly([&] { return ParallaxView::create(kSide, kSide, 4, &old); }).ok());
    EXPECT_EQ(old->samples(), 1);
    ASSERT_TRUE(quietly([&] { return old->setPhoto({photo, kPhoto, kPhoto}); }).ok());
    ASSERT_TRUE(quietly([&] { return old->setDepth({depth, kDepth, kDepth}); }).ok());
    ASSERT_TRUE(old->setParameter("rotate_x_boundary", 40).ok());
    ASSERT_TRUE(quietly([&] { return old->lookAt(0.83f, -0.61f); }).ok());
    const Bytes wanted = picture(*old);
    const std::unique_ptr<ParallaxView> one = viewWith(1);
    EXPECT_EQ(one->samples(), 1);
    EXPECT_TRUE(picture(*one) == wanted);
    ASSERT_TRUE(quietly([&] { return one->setSamples(4); }).ok());
    picture(*one);
    ASSERT_TRUE(quietly([&] { return one->setSamples(1); }).ok());
    EXPECT_TRUE(picture(*one) == wanted) << "and again after several";
}

TEST_F(SamplesTest, SamplesCanBeChanged) {
    SMOOTH_VIEW_OR_SKIP(smooth);
    const Bytes wanted = picture(*smooth);
    const std::unique_ptr<ParallaxView> view = viewWith(1);
    picture(*view);
    ASSERT_TRUE(quietly([&] { return view->setSamples(4); }).ok());
    EXPECT_EQ(view->samples(), 4);
    Bytes none(kPicture);
    EXPECT_THAT(sentence(view->readPixels({none, kSide, kSide})), HasSubstr("no picture of this size"));
    EXPECT_TRUE(picture(*view) == wanted);
    EXPECT_TRUE(pixelsOf(view->texture(), kSide, kSide) == wanted) << "the texture has the picture too";
}

TEST_F(SamplesTest, MoreThanTheDriverHasAreAsManyAsItHas) {
    SMOOTH_VIEW_OR_SKIP(smooth);
    GLint most = 0;
    glGetIntegerv(0x8D57, &most);
    EXPECT_EQ(viewWith(8)->samples(), most >= 8 ? 8 : 4);
}

TEST_F(SamplesTest, ResizedPicturesAreAsSmooth) {
    SMOOTH_VIEW_OR_SKIP(smooth);
    const Bytes wanted = picture(*smooth);
    ASSERT_TRUE(quietly([&] { return smooth->resize(31, 77); }).ok());
    EXPECT_EQ(smooth->samples(), 4);
    picture(*smooth);
    ASSERT_TRUE(quietly([&] { return smooth->resize(kSide, kSide); }).ok());
    ASSERT_TRUE(quietly([&] { return smooth->lookAt(0.83f, -0.61f); }).ok());
    EXPECT_TRUE(picture(*smooth) == wanted);
}

TEST_F(SamplesTest, FramesThatAreDumpedAreDrawnPlainly) {
    SMOOTH_VIEW_OR_SKIP(smooth);
    const std::unique_ptr<ParallaxView> plain = viewWith(1);
    const Bytes hard = picture(*plain), soft = picture(*smooth);
    const DumpDirectory dumps(DumpDirectory::State::present);
    properties.set("quorvane.debug", "1");
    ASSERT_TRUE(smooth->applyProperties(4).ok());
    EXPECT_TRUE(picture(*smooth) == hard);
    if (dumps.obstacle().empty()) {
        Bytes rgb;
        for (size_t i = 0; i < hard.size(); i += 4)
            rgb.insert(rgb.end(), hard.begin() + static_cast<std::ptrdiff_t>(i),
                       hard.begin() + static_cast<std::ptrdiff_t>(i) + 3);
        std::string output;
        for (const std::string& file : dumps.files())
            if (file.rfind("output_2_", 0) == 0) output = file;
        EXPECT_TRUE(fileBytes(DumpDirectory::path(output)) == netpbm("P6", kSide, kSide, rgb)) << output;
    }
    properties.set("quorvane.debug", "0");
    ASSERT_TRUE(smooth->applyProperties(4).ok());
    EXPECT_TRUE(picture(*smooth) == soft);
    EXPECT_THAT(log.texts(), Not(Contains(HasSubstr("glError"))));
}

TEST_F(SamplesTest, SaysNothingNewInTheLog) {
    SMOOTH_VIEW_OR_SKIP(smooth);
    const std::unique_ptr<ParallaxView> plain = viewWith(1);
    const auto saidBy = [&](ParallaxView& view) {
        forget();
        picture(view);
        picture(view);
        return log.texts();
    };
    EXPECT_EQ(saidBy(*smooth), saidBy(*plain));
}

TEST_F(SamplesTest, RefusesOtherCountsAndStaysAsItWas) {
    const std::unique_ptr<ParallaxView> view = viewWith(1);
    const Bytes before = picture(*view);
    const GLuint texture = view->texture();
    for (const int samples : {-1, 3, 5, 16})
        EXPECT_EQ(
            sentence(quietly([&] { return view->setSamples(samples); })),
            std::to_string(samples) + " samples a pixel; 1, 2, 4, 8 and 0 (as many as are good) are known");
    EXPECT_EQ(view->texture(), texture);
    EXPECT_TRUE(picture(*view) == before);
    std::unique_ptr<ParallaxView> none;
    EXPECT_THAT(sentence(quietly([&] {
                    return ParallaxView::create(8, 8, ViewOptions{4, 3}, &none);
                })),
                HasSubstr("3 samples a pixel"));
    EXPECT_EQ(none, nullptr);
}

TEST_F(SamplesTest, NothingIsLeftAfterItsEnd) {
    {
        const std::unique_ptr<ParallaxView> view = viewWith(4);
        picture(*view);
        ASSERT_TRUE(quietly([&] { return view->resize(30, 30); }).ok());
        picture(*view);
        ASSERT_TRUE(quietly([&] { return view->setSamples(2); }).ok());
    }
    EXPECT_THAT(gl.live_textures, IsEmpty());
    EXPECT_THAT(gl.live_renderbuffers, IsEmpty());
    EXPECT_THAT(gl.live_framebuffers, IsEmpty());
    EXPECT_THAT(gl.live_buffers, IsEmpty());
}

// Against recorded calls

Timeline& calls() { return Timeline::instance(); }

std::string numbers(const char* name, std::initializer_list<long> values) {
    std::string text;
    for (const long value : values) text += (text.empty() ? "" : ", ") + std::to_string(value);
    return std::string(name) + "(" + text + ")";
}

void storage(const char* name, GLsizei samples, GLenum format, GLsizei width, GLsizei height) {
    calls().addCall(numbers(name, {samples, static_cast<long>(format), width, height}));
    GlRecorder::instance().noteCall(name);
}

void storageOfEs3(GLenum, GLsizei samples, GLenum format, GLsizei width, GLsizei height) {
    storage("glRenderbufferStorageMultisample", samples, format, width, height);
}

void storageOfExtension(GLenum, GLsizei samples, GLenum format, GLsizei width, GLsizei height) {
    storage("glRenderbufferStorageMultisampleEXT", samples, format, width, height);
}

void attachTexture(GLenum, GLenum attachment, GLenum, GLuint texture, GLint level, GLsizei samples) {
    EXPECT_EQ(attachment, static_cast<GLenum>(GL_COLOR_ATTACHMENT0));
    constexpr char kName[] = "glFramebufferTexture2DMultisampleEXT";
    calls().addCall(numbers(kName, {static_cast<long>(texture), level, samples}));
    GlRecorder::instance().noteCall(kName);
}

void blit(GLint x0, GLint y0, GLint x1, GLint y1, GLint to_x0, GLint to_y0, GLint to_x1, GLint to_y1,
          GLbitfield mask, GLenum filter) {
    EXPECT_EQ(mask, static_cast<GLbitfield>(GL_COLOR_BUFFER_BIT));
    EXPECT_EQ(filter, static_cast<GLenum>(GL_NEAREST));
    calls().addCall(numbers("glBlitFramebuffer", {x0, y0, x1, y1, to_x0, to_y0, to_x1, to_y1}));
    GlRecorder::instance().noteCall("glBlitFramebuffer");
}

template <typename Function>
EglDouble::Function pointer(Function* function) {
    return reinterpret_cast<EglDouble::Function>(function);
}

class SamplesCalls : public ComponentTest {
  protected:
    SamplesCalls() {
        EglDouble::instance() = EglDouble();
        EglDouble::instance().functions = {
            {"glRenderbufferStorageMultisample", pointer(storageOfEs3)},
            {"glBlitFramebuffer", pointer(blit)},
            {"glRenderbufferStorageMultisampleEXT", pointer(storageOfExtension)},
            {"glFramebufferTexture2DMultisampleEXT", pointer(attachTexture)}};
        gl.strings[GL_VERSION] = "OpenGL ES 2.0 pretended";
        gl.strings[GL_EXTENSIONS] = "GL_OES_element_index_uint GL_OES_depth24";
        gl.integers[GL_MAX_RENDERBUFFER_SIZE] = 2048;
        gl.integers[GL_MAX_VIEWPORT_DIMS] = 4096;
        gl.integers[GL_MAX_VERTEX_TEXTURE_IMAGE_UNITS] = 4;
        gl.integers[kMaxSamples] = 4;
    }
    ~SamplesCalls() override {
        view.reset();
        EglDouble::instance() = EglDouble();
        EXPECT_THAT(gl.live_renderbuffers, IsEmpty());
        EXPECT_THAT(gl.live_framebuffers, IsEmpty());
        EXPECT_THAT(gl.live_textures, IsEmpty());
    }

    void isPhone() {
        gl.strings[GL_EXTENSIONS] =
            "GL_OES_element_index_uint GL_OES_depth24 GL_EXT_multisampled_render_to_texture";
    }
    void isEs3() { gl.strings[GL_VERSION] = "OpenGL ES 3.1 pretended"; }

    void create(int samples) {
        const OutputToTimeline output;
        ASSERT_TRUE(ParallaxView::create(64, 48, ViewOptions{4, samples}, &view).ok());
        ASSERT_TRUE(view->setPhoto({photo, 32, 32}).ok());
        ASSERT_TRUE(view->setDepth({depth, 32, 32}).ok());
    }

    std::string render() {
        const OutputToTimeline output;
        return sentence(view->render());
    }

    /// The draw call and what follows it.
    std::vector<std::string> callsAfterDrawing() const {
        const std::vector<std::string> all = timeline.calls();
        const auto drawn = std::find_if(all.begin(), all.end(), [](const std::string& call) {
            return call.rfind("glDrawElements", 0) == 0;
        });
        return {drawn, all.end()};
    }

    static constexpr GLenum kMaxSamples = 0x8D57;
    static constexpr long kDepth24 = 0x81A6, kRgba8 = 0x8058;
    std::unique_ptr<ParallaxView> view;
    const Bytes photo = Bytes(32 * 32 * 3, 9);
    const Bytes depth = Bytes(32 * 32, 9);
};

TEST_F(SamplesCalls, PhonesAttachTheTextureItself) {
    isPhone();
    create(4);
    EXPECT_EQ(view->samples(), 4);
    EXPECT_THAT(timeline.callsOf("glRenderbufferStorageMultisampleEXT"),
                ElementsAre(numbers("glRenderbufferStorageMultisampleEXT", {4, kDepth24, 64, 48})));
    EXPECT_THAT(timeline.callsOf("glFramebufferTexture2DMultisampleEXT"),
                ElementsAre(numbers("glFramebufferTexture2DMultisampleEXT", {long{view->texture()}, 0, 4})));
    forget();
    EXPECT_EQ(render(), "succeeded");
    EXPECT_THAT(timeline.callsOf("glBlitFramebuffer"), IsEmpty());
    EXPECT_THAT(timeline.callsOf("glFramebufferTexture2DMultisampleEXT"), IsEmpty()) << "once is enough";
    EXPECT_EQ(timeline.callsOf("glReadPixels").size(), 1u) << "the renderer's own waits for the texture";
    Bytes pixels(64 * 48 * 4);
    EXPECT_TRUE(view->readPixels({pixels, 64, 48}).ok());
    EXPECT_EQ(gl.bound_framebuffer, view->renderer().m_fbo);
}

TEST_F(SamplesCalls, PhonesMakeNoErrorThatIsOurs) {
    isPhone();
    create(4);
    gl.errorAfter("glDrawElements", GL_INVALID_OPERATION);
    EXPECT_THAT(render(), HasSubstr("error 0x0502"));
}

TEST_F(SamplesCalls, PhonesDumpFramesOfOneSample) {
    const DumpDirectory nowhere(DumpDirectory::State::absent);
    isPhone();
    create(4);
    properties.set("quorvane.debug", "1");
    ASSERT_TRUE(view->applyProperties(4).ok());
    forget();
    EXPECT_EQ(render(), "succeeded");
    EXPECT_THAT(timeline.callsOf("glFramebufferTexture2D"),
                ElementsAre("glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, " +
                            std::to_string(view->texture()) + ", 0)"));
    properties.set("quorvane.debug", "0");
    ASSERT_TRUE(view->applyProperties(4).ok());
    forget();
    EXPECT_EQ(render(), "succeeded");
    EXPECT_EQ(timeline.callsOf("glFramebufferTexture2DMultisampleEXT").size(), 1u);
}

TEST_F(SamplesCalls, LessMemoryMakesFewerSamples) {
    isPhone();
    gl.errorAfter("glRenderbufferStorageMultisampleEXT", GL_OUT_OF_MEMORY);
    create(4);
    EXPECT_EQ(view->samples(), 2);
    view.reset();

    isEs3();
    gl.strings[GL_EXTENSIONS] = "";
    gl.errorAfter("glRenderbufferStorageMultisample", GL_OUT_OF_MEMORY, 1);
    create(kAutoSamples);
    EXPECT_EQ(view->samples(), 2) << "depth had memory, colour had none";
    EXPECT_EQ(render(), "succeeded");
}

TEST_F(SamplesCalls, NoMemoryAtAllMakesOneSample) {
    isEs3();
    gl.errorAfter("glRenderbufferStorageMultisample", GL_OUT_OF_MEMORY, 0);
    gl.errorAfter("glRenderbufferStorageMultisample", GL_OUT_OF_MEMORY, 2);
    create(4);
    EXPECT_EQ(view->samples(), 1);
    EXPECT_EQ(timeline.callsOf("glFramebufferTexture2D").back(),
              "glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, " +
                  std::to_string(view->texture()) + ", 0)")
        << "attached plainly in the end";
    EXPECT_EQ(gl.live_renderbuffers.size(), 1u);
    EXPECT_EQ(render(), "succeeded");
    EXPECT_THAT(timeline.callsOf("glBlitFramebuffer"), IsEmpty());
}

TEST_F(SamplesCalls, CountsThatTheDriverDoesNotHaveAreNotAskedFor) {
    isPhone();
    create(8);
    EXPECT_EQ(view->samples(), 4);
    EXPECT_EQ(timeline.callsOf("glRenderbufferStorageMultisampleEXT").size(), 1u);
    view.reset();
    gl.integers[kMaxSamples] = 1;
    create(8);
    EXPECT_EQ(view->samples(), 1);
}

TEST_F(SamplesCalls, SoftwareDrawsSeveralOnlyWhenItIsAsked) {
    isEs3();
    gl.integers[kMaxSamples] = 8;
    gl.strings[GL_RENDERER] = "a graphics processor";
    create(kAutoSamples);
    EXPECT_EQ(view->samples(), 4);
    for (const char* name : {"llvmpipe (LLVM 15.0.6, 256 bits)", "softpipe", "Google SwiftShader"}) {
        view.reset();
        gl.strings[GL_RENDERER] = name;
        create(kAutoSamples);
        EXPECT_EQ(view->samples(), 1) << name;
        view.reset();
        create(8);
        EXPECT_EQ(view->samples(), 8) << name;
    }
}

TEST_F(SamplesCalls, OneSampleMakesTheCallsOfAPlainOutput) {
    isEs3();
    gl.strings[GL_EXTENSIONS] = "GL_OES_depth24 GL_EXT_multisampled_render_to_texture";
    create(1);
    forget();
    {
        const OutputToTimeline output;
        ASSERT_TRUE(view->resize(20, 10).ok());
    }
    const std::string texture = std::to_string(view->texture());
    const std::string depth_buffer = std::to_string(gl.bound_renderbuffer);
    const std::string framebuffer = std::to_string(view->renderer().m_fbo);
    const std::vector<std::string> made = timeline.calls();
    const auto first = std::find(made.begin(), made.end(), "glGenTextures(1) = {" + texture + "}");
    const auto last = std::find_if(
        first, made.end(), [](const std::string& call) { return call.rfind("glDeleteTextures", 0) == 0; });
    const std::string bind = "glBindFramebuffer(GL_FRAMEBUFFER, " + framebuffer + ")";
    EXPECT_THAT(
        std::vector<std::string>(first, last),
        ElementsAre(
            "glGenTextures(1) = {" + texture + "}", "glGenRenderbuffers(1) = {" + depth_buffer + "}",
            "glActiveTexture(GL_TEXTURE0)", "glBindTexture(GL_TEXTURE_2D, " + texture + ")",
            HasSubstr("GL_TEXTURE_WRAP_S"), HasSubstr("GL_TEXTURE_WRAP_T"),
            HasSubstr("GL_TEXTURE_MIN_FILTER"), HasSubstr("GL_TEXTURE_MAG_FILTER"),
            "glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 20, 10, 0, GL_RGBA, GL_UNSIGNED_BYTE, null)",
            "glBindRenderbuffer(GL_RENDERBUFFER, " + depth_buffer + ")", "glGetString(GL_EXTENSIONS)",
            "glRenderbufferStorage(GL_RENDERBUFFER, 0x81a6, 20, 10)", "glGetError()",
            "glGetString(GL_VERSION)", "glGetString(GL_VENDOR)", "glGetString(GL_RENDERER)",
            "glGetString(GL_EXTENSIONS)", "glViewport(0, 0, 20, 10)", "glGetError()", bind,
            "glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER, " +
                depth_buffer + ")",
            "glBindTexture(GL_TEXTURE_2D, " + texture + ")", bind,
            "glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, " + texture + ", 0)",
            bind, "glCheckFramebufferStatus(GL_FRAMEBUFFER)"));
    forget();
    EXPECT_EQ(render(), "succeeded");
    const std::vector<std::string> drawn = timeline.calls();
    const auto use = std::find_if(drawn.begin(), drawn.end(),
                                  [](const std::string& call) { return call.rfind("glUseProgram", 0) == 0; });
    ASSERT_GE(use - drawn.begin(), 2);
    EXPECT_EQ(use[-2], bind);
    EXPECT_EQ(use[-1], "glGetError()");
    EXPECT_THAT(
        callsAfterDrawing(),
        ElementsAre(HasSubstr("glDrawElements"), "eglGetCurrentDisplay()", HasSubstr("eglCreateSyncKHR"),
                    HasSubstr("eglClientWaitSyncKHR"), HasSubstr("eglDestroySyncKHR"),
                    HasSubstr("glReadPixels(0, 0, 1, 1"), "glGetError()"));
    for (const char* call : {"glEnable", "glDisable"})
        EXPECT_THAT(timeline.callsOf(call),
                    Not(Contains(testing::AnyOf(HasSubstr("0x8c36"), HasSubstr("0x809d")))));
}

TEST_F(SamplesCalls, OldDriversDrawOne) {
    create(4);
    EXPECT_EQ(view->samples(), 1);
    EXPECT_EQ(render(), "succeeded");
    view.reset();
    isEs3();
    EglDouble::instance().functions.clear();
    create(4);
    EXPECT_EQ(view->samples(), 1) << "of OpenGL ES 3 without its functions";
    view.reset();
    isPhone();
    create(4);
    EXPECT_EQ(view->samples(), 1) << "with an extension without its functions";
}

TEST_F(SamplesCalls, SamplesAreReducedAndWaitedForAfterTheFrame) {
    isEs3();
    create(4);
    EXPECT_THAT(timeline.callsOf("glRenderbufferStorageMultisample"),
                ElementsAre(numbers("glRenderbufferStorageMultisample", {4, kDepth24, 64, 48}),
                            numbers("glRenderbufferStorageMultisample", {4, kRgba8, 64, 48})));
    forget();
    // As drivers answer the renderer's read-back.
    gl.errorAfter("glReadPixels", GL_INVALID_OPERATION);
    EXPECT_EQ(render(), "succeeded");
    EXPECT_EQ(gl.pendingErrors(), 0u);
    const std::vector<std::string> last = callsAfterDrawing();
    const std::string drawn_into = std::to_string(view->renderer().m_fbo);
    const std::string resolved = std::to_string(gl.bound_framebuffer);
    EXPECT_NE(resolved, drawn_into);
    EXPECT_THAT(last, ElementsAre(HasSubstr("glDrawElements"), "eglGetCurrentDisplay()",
                                  HasSubstr("eglCreateSyncKHR"), HasSubstr("eglClientWaitSyncKHR"),
                                  HasSubstr("eglDestroySyncKHR"), HasSubstr("glReadPixels(0, 0, 1, 1"),
                                  "glGetError()", "glGetError()",
                                  "glBindFramebuffer(GL_FRAMEBUFFER, " + resolved + ")",
                                  "glBindFramebuffer(0x8ca8, " + drawn_into + ")",
                                  numbers("glBlitFramebuffer", {0, 0, 64, 48, 0, 0, 64, 48}),
                                  "glBindFramebuffer(0x8ca8, " + resolved + ")",
                                  HasSubstr("glReadPixels(0, 0, 1, 1"), "glGetError()"));
    Bytes pixels(64 * 48 * 4);
    EXPECT_TRUE(view->readPixels({pixels, 64, 48}).ok());
    EXPECT_EQ(std::to_string(gl.bound_framebuffer), resolved);
}

TEST_F(SamplesCalls, OtherErrorsAreReported) {
    isEs3();
    create(4);
    gl.errorAfter("glDrawElements", GL_OUT_OF_MEMORY);
    gl.errorAfter("glReadPixels", GL_INVALID_OPERATION);
    EXPECT_EQ(render(), "drawing: the graphics driver is out of memory");
    EXPECT_EQ(gl.pendingErrors(), 0u);
    gl.errorAfter("glReadPixels", GL_INVALID_OPERATION);
    gl.errorAfter("glBlitFramebuffer", GL_OUT_OF_MEMORY);
    EXPECT_EQ(render(), "drawing: the graphics driver is out of memory");
    Bytes pixels(64 * 48 * 4);
    EXPECT_THAT(sentence(view->readPixels({pixels, 64, 48})), HasSubstr("no picture"));
}

TEST_F(SamplesCalls, FailedResizeStaysSmooth) {
    isEs3();
    create(4);
    gl.errorAfter("glTexImage2D", GL_OUT_OF_MEMORY);
    {
        const OutputToTimeline output;
        EXPECT_FALSE(view->resize(100, 100).ok());
    }
    EXPECT_EQ(view->samples(), 4);
    forget();
    EXPECT_EQ(render(), "succeeded");
    EXPECT_THAT(timeline.calls(), Contains(HasSubstr("GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER")));
    EXPECT_EQ(timeline.callsOf("glBlitFramebuffer").size(), 1u);
}

TEST_F(SamplesCalls, EndInAnotherContextLeavesItsBuffers) {
    isEs3();
    create(4);
    const std::set<GLuint> renderbuffers = gl.live_renderbuffers, framebuffers = gl.live_framebuffers;
    EXPECT_EQ(renderbuffers.size(), 3u);
    gl.current_context = reinterpret_cast<EGLContext>(uintptr_t{0xc9});
    view.reset();
    EXPECT_EQ(gl.live_renderbuffers, renderbuffers);
    EXPECT_EQ(gl.live_framebuffers, framebuffers);
    gl.reset();
}

}  // namespace
}  // namespace quorvane::test
