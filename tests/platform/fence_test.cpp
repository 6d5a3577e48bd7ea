#define EGL_EGLEXT_PROTOTYPES
#include <EGL/egl.h>
#include <EGL/eglext.h>
#include <GLES2/gl2.h>
#include <gtest/gtest.h>

#include "quorvane/host/OffscreenContext.h"

namespace {

TEST(Fence, SignalsOnceTheWorkIsDone) {
    std::unique_ptr<quorvane::OffscreenContext> context;
    const quorvane::Status made = quorvane::OffscreenContext::create(&context);
    if (!made) GTEST_SKIP() << "NO GRAPHICS DRIVER, NOT TESTED: " << made.message();
    const EGLDisplay display = eglGetCurrentDisplay();
    const EGLSyncKHR fence = eglCreateSyncKHR(display, EGL_SYNC_FENCE_KHR, nullptr);
    ASSERT_NE(fence, EGL_NO_SYNC_KHR);
    glFlush();
    EXPECT_EQ(eglClientWaitSyncKHR(display, fence, 0, EGL_FOREVER_KHR), EGL_CONDITION_SATISFIED_KHR);
    EXPECT_EQ(eglDestroySyncKHR(display, fence), EGL_TRUE);
}

TEST(Fence, NoFenceFailsInsteadOfCrashing) {
    EXPECT_EQ(eglClientWaitSyncKHR(EGL_NO_DISPLAY, EGL_NO_SYNC_KHR, 0, 0), EGL_FALSE);
    EXPECT_EQ(eglDestroySyncKHR(EGL_NO_DISPLAY, EGL_NO_SYNC_KHR), EGL_FALSE);
}

}  // namespace
