// OffscreenContext on an EGL that fails where we want it to.

#include <algorithm>

#include "egl_double.h"
#include "host_test.h"

namespace quorvane::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

class OffscreenContextFault : public ComponentTest {
  protected:
    OffscreenContextFault() { egl = EglDouble(); }
    ~OffscreenContextFault() override { context.reset(); }

    std::string create() { return sentence(OffscreenContext::create(&context)); }

    /// Only the default display is there, so that one failure ends the search.
    void leaveOneDisplay() { egl.client_extensions = ""; }

    void expectNothingLeft() {
        EXPECT_THAT(egl.contexts, IsEmpty());
        EXPECT_THAT(egl.surfaces, IsEmpty());
        EXPECT_THAT(egl.initialised, IsEmpty());
    }

    static std::vector<EGLint>::const_iterator valueOf(const std::vector<EGLint>& list, EGLint name) {
        for (auto at = list.begin(); at != list.end(); at += 2)
            if (*at == name) return at + 1;
        return list.end();
    }

    EglDouble& egl = EglDouble::instance();
    std::unique_ptr<OffscreenContext> context;
};

TEST_F(OffscreenContextFault, TriesEveryDisplayAndNamesThemAll) {
    egl.failing = {"eglInitialize"};
    gl.egl_error = EGL_NOT_INITIALIZED;
    EXPECT_EQ(create(),
              "no OpenGL ES 2 context could be made; tried "
              "Mesa surfaceless: eglInitialize failed (EGL error 0x3001); "
              "EGL device 0: eglInitialize failed (EGL error 0x3001); "
              "EGL device 1: eglInitialize failed (EGL error 0x3001); "
              "default display: eglInitialize failed (EGL error 0x3001)");
    EXPECT_EQ(context, nullptr);
    expectNothingLeft();
}

TEST_F(OffscreenContextFault, TakesTheFirstDisplayThatWorks) {
    EXPECT_EQ(create(), "succeeded");
    EXPECT_EQ(context->platform(), "Mesa surfaceless");
    EXPECT_EQ(egl.initialised.count(egl.handle(EglDouble::kSurfaceless)), 1u);
    context.reset();
    egl.broken_displays = {egl.handle(EglDouble::kSurfaceless), egl.handle(EglDouble::kDevice0)};
    EXPECT_EQ(create(), "succeeded");
    EXPECT_EQ(context->platform(), "EGL device 1");
    context.reset();
    egl.broken_displays.insert(egl.handle(EglDouble::kDevice1));
    EXPECT_EQ(create(), "succeeded");
    EXPECT_EQ(context->platform(), "default display");
    context.reset();
    expectNothingLeft();
}

TEST_F(OffscreenContextFault, ExtensionsAreWholeWords) {
    for (const char* others :
         {"EGL_MESA_platform_surfaceless_not EGL_EXT_platform_device2",
          "NOT_EGL_MESA_platform_surfaceless MY_EGL_EXT_platform_device", "", "EGL_MESA_platform"}) {
        egl.client_extensions = others;
        EXPECT_EQ(create(), "succeeded");
        EXPECT_EQ(context->platform(), "default display") << others;
    }
    // Found behind a longer name that begins the same.
    egl.client_extensions = "EGL_EXT_platform_device2 EGL_EXT_platform_device";
    EXPECT_EQ(create(), "succeeded");
    EXPECT_EQ(context->platform(), "EGL device 0");
}

TEST_F(OffscreenContextFault, WithoutClientExtensionsTheDefaultDisplayIsLeft) {
    for (const std::set<std::string>& missing :
         {std::set<std::string>{"eglGetPlatformDisplayEXT"},
          std::set<std::string>{"eglGetPlatformDisplayEXT", "eglQueryDevicesEXT"}}) {
        egl.missing_functions = missing;
        EXPECT_EQ(create(), "succeeded");
        EXPECT_EQ(context->platform(), "default display");
    }
    egl.missing_functions.clear();
    egl.failing = {"eglQueryDevicesEXT"};
    egl.broken_displays = {egl.handle(EglDouble::kSurfaceless)};
    EXPECT_EQ(create(), "succeeded");
    EXPECT_EQ(context->platform(), "default display");
}

TEST_F(OffscreenContextFault, MissingDisplayIsSaidSo) {
    leaveOneDisplay();
    egl.default_display = EGL_NO_DISPLAY;
    EXPECT_EQ(create(), "no OpenGL ES 2 context could be made; tried default display: no display");
    EXPECT_THAT(egl.calls, Not(Contains("eglInitialize")));
}

TEST_F(OffscreenContextFault, AsksForAnEs2ContextWithoutASurface) {
    leaveOneDisplay();
    EXPECT_EQ(create(), "succeeded");
    EXPECT_EQ(egl.api, static_cast<EGLenum>(EGL_OPENGL_ES_API));
    EXPECT_EQ(*valueOf(egl.config_wanted, EGL_RENDERABLE_TYPE), EGL_OPENGL_ES2_BIT);
    EXPECT_EQ(*valueOf(egl.config_wanted, EGL_SURFACE_TYPE), 0);
    EXPECT_THAT(egl.context_wanted, ElementsAre(EGL_CONTEXT_CLIENT_VERSION, 2));
    EXPECT_EQ(egl.current_context, egl.handle(0xc1));
    EXPECT_EQ(egl.current_surface, EGL_NO_SURFACE);
    EXPECT_THAT(egl.surfaces, IsEmpty());
}

TEST_F(OffscreenContextFault, OnePixelStandsInWhereASurfaceIsNeeded) {
    leaveOneDisplay();
    egl.display_extensions = "EGL_KHR_surfaceless_context_not";
    EXPECT_EQ(create(), "succeeded");
    EXPECT_EQ(*valueOf(egl.config_wanted, EGL_SURFACE_TYPE), EGL_PBUFFER_BIT);
    EXPECT_THAT(egl.surface_wanted, ElementsAre(EGL_WIDTH, 1, EGL_HEIGHT, 1));
    ASSERT_THAT(egl.surfaces, SizeIs(1));
    EXPECT_EQ(egl.current_surface, *egl.surfaces.begin());
    context.reset();
    expectNothingLeft();
}

TEST_F(OffscreenContextFault, EveryFailureIsNamedAndLeavesNothing) {
    leaveOneDisplay();
    egl.display_extensions = "";
    gl.egl_error = EGL_BAD_ALLOC;
    for (const char* function :
         {"eglBindAPI", "eglChooseConfig", "eglCreateContext", "eglCreatePbufferSurface", "eglMakeCurrent"}) {
        egl.failing = {function};
        EXPECT_EQ(create(), "no OpenGL ES 2 context could be made; tried default display: " +
                                std::string(function) + " failed (EGL error 0x3003)");
        EXPECT_EQ(context, nullptr);
        expectNothingLeft();
    }
}

TEST_F(OffscreenContextFault, NoConfigurationIsAFailure) {
    leaveOneDisplay();
    egl.configurations = 0;
    EXPECT_THAT(create(), HasSubstr("default display: no OpenGL ES 2 configuration"));
    EXPECT_THAT(egl.calls, Not(Contains("eglCreateContext")));
    expectNothingLeft();
}

TEST_F(OffscreenContextFault, FailedCreationLeavesNoContext) {
    ASSERT_EQ(create(), "succeeded");
    egl.failing = {"eglInitialize"};
    EXPECT_THAT(create(), HasSubstr("could be made"));
    EXPECT_EQ(context, nullptr);
    expectNothingLeft();
}

TEST_F(OffscreenContextFault, LastUserOfADisplayTerminatesIt) {
    ASSERT_EQ(create(), "succeeded");
    std::unique_ptr<OffscreenContext> other;
    egl.next_context = 0xc2;
    ASSERT_TRUE(OffscreenContext::create(&other).ok());
    context.reset();
    EXPECT_THAT(egl.calls, Not(Contains("eglTerminate")));
    EXPECT_THAT(egl.contexts, ElementsAre(egl.handle(0xc2)));
    other.reset();
    EXPECT_EQ(std::count(egl.calls.begin(), egl.calls.end(), "eglTerminate"), 1);
    expectNothingLeft();
}

TEST_F(OffscreenContextFault, EndReleasesTheThreadOnlyWhereItIsCurrent) {
    ASSERT_EQ(create(), "succeeded");
    context.reset();
    EXPECT_THAT(egl.calls, Contains("eglMakeCurrent(none)"));
    EXPECT_EQ(egl.current_context, EGL_NO_CONTEXT);

    egl.next_context = 0xc2;  // another one is current, as the recorder has it
    ASSERT_EQ(create(), "succeeded");
    EXPECT_FALSE(context->isCurrent());
    egl.calls.clear();
    context.reset();
    EXPECT_THAT(egl.calls, Not(Contains("eglMakeCurrent(none)")));
    expectNothingLeft();
}

}  // namespace
}  // namespace quorvane::test
