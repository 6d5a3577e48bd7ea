#define EGL_EGLEXT_PROTOTYPES
#include <EGL/egl.h>
#include <EGL/eglext.h>
#include <GLES2/gl2.h>
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "quorvane/host/OffscreenContext.h"

namespace {

using Pointer = __eglMustCastToProperFunctionPointerType;

/// What the driver hands out, and what reached it.
struct Driver {
    bool has_fences = true;
    bool recorded = false;  ///< calls stop at the recorder
    EGLDisplay display;
    EGLSyncKHR fence;
    EGLenum type;
    const EGLint* attributes;
    EGLint flags;
    EGLTimeKHR timeout;
    std::string called;
};
Driver driver;

Pointer drivers(const char* name) {
    static void* const library = dlopen("libEGL.so.1", RTLD_NOW | RTLD_LOCAL);
    static auto* const find = reinterpret_cast<Pointer (*)(const char*)>(dlsym(library, "eglGetProcAddress"));
    return find(name);
}

EGLSyncKHR createFence(EGLDisplay display, EGLenum type, const EGLint* attributes) {
    driver.called += "create ";
    driver.display = display;
    driver.type = type;
    driver.attributes = attributes;
    if (driver.recorded) return reinterpret_cast<EGLSyncKHR>(uintptr_t{0x77});
    return reinterpret_cast<PFNEGLCREATESYNCKHRPROC>(drivers("eglCreateSyncKHR"))(display, type, attributes);
}

EGLint waitForFence(EGLDisplay display, EGLSyncKHR fence, EGLint flags, EGLTimeKHR timeout) {
    driver.called += "wait ";
    driver.display = display;
    driver.fence = fence;
    driver.flags = flags;
    driver.timeout = timeout;
    if (driver.recorded) return EGL_TIMEOUT_EXPIRED_KHR;
    return reinterpret_cast<PFNEGLCLIENTWAITSYNCKHRPROC>(drivers("eglClientWaitSyncKHR"))(display, fence,
                                                                                          flags, timeout);
}

EGLBoolean destroyFence(EGLDisplay display, EGLSyncKHR fence) {
    driver.called += "destroy ";
    driver.display = display;
    driver.fence = fence;
    if (driver.recorded) return EGL_TRUE;
    return reinterpret_cast<PFNEGLDESTROYSYNCKHRPROC>(drivers("eglDestroySyncKHR"))(display, fence);
}

class Fence : public testing::Test {
  protected:
    Fence() { driver = Driver(); }
    ~Fence() override { driver = Driver(); }
};

TEST_F(Fence, SignalsOnceTheWorkIsDone) {
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

TEST_F(Fence, NoFenceFailsInsteadOfCrashing) {
    EXPECT_EQ(eglClientWaitSyncKHR(EGL_NO_DISPLAY, EGL_NO_SYNC_KHR, 0, 0), EGL_FALSE);
    EXPECT_EQ(eglDestroySyncKHR(EGL_NO_DISPLAY, EGL_NO_SYNC_KHR), EGL_FALSE);
}

TEST_F(Fence, ArgumentsAndResultsPassUnchanged) {
    driver.recorded = true;
    const EGLDisplay display = reinterpret_cast<EGLDisplay>(uintptr_t{0x11});
    const EGLSyncKHR fence = reinterpret_cast<EGLSyncKHR>(uintptr_t{0x22});
    const EGLint attributes[] = {EGL_NONE};

    EXPECT_EQ(eglCreateSyncKHR(display, EGL_SYNC_REUSABLE_KHR, attributes),
              reinterpret_cast<EGLSyncKHR>(uintptr_t{0x77}));
    EXPECT_EQ(driver.display, display);
    EXPECT_EQ(driver.type, static_cast<EGLenum>(EGL_SYNC_REUSABLE_KHR));
    EXPECT_EQ(driver.attributes, attributes);

    EXPECT_EQ(eglClientWaitSyncKHR(display, fence, EGL_SYNC_FLUSH_COMMANDS_BIT_KHR, 12345),
              EGL_TIMEOUT_EXPIRED_KHR);
    EXPECT_EQ(driver.fence, fence);
    EXPECT_EQ(driver.flags, EGL_SYNC_FLUSH_COMMANDS_BIT_KHR);
    EXPECT_EQ(driver.timeout, EGLTimeKHR{12345});

    driver.fence = EGL_NO_SYNC_KHR;
    EXPECT_EQ(eglDestroySyncKHR(display, fence), EGL_TRUE);
    EXPECT_EQ(driver.fence, fence);
    EXPECT_EQ(driver.called, "create wait destroy ");
}

// The calls are looked up once in a process, so this takes one of its own.
TEST_F(Fence, DriverWithoutFencesMakesNoneAndFailsTheRest) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto without_fences = [] {
        driver.has_fences = false;
        const bool none = eglCreateSyncKHR(EGL_NO_DISPLAY, EGL_SYNC_FENCE_KHR, nullptr) == EGL_NO_SYNC_KHR;
        const bool no_wait = eglClientWaitSyncKHR(EGL_NO_DISPLAY, EGL_NO_SYNC_KHR, 0, 0) == EGL_FALSE;
        const bool no_end = eglDestroySyncKHR(EGL_NO_DISPLAY, EGL_NO_SYNC_KHR) == EGL_FALSE;
        std::_Exit(none && no_wait && no_end ? 0 : 1);
    };
    EXPECT_EXIT(without_fences(), testing::ExitedWithCode(0), "");
}

}  // namespace

// Between the platform and the driver.
Pointer eglGetProcAddress(const char* name) {
    const bool fence_call = std::strstr(name, "SyncKHR") != nullptr;
    if (fence_call && !driver.has_fences) return nullptr;
    if (std::strcmp(name, "eglCreateSyncKHR") == 0) return reinterpret_cast<Pointer>(createFence);
    if (std::strcmp(name, "eglClientWaitSyncKHR") == 0) return reinterpret_cast<Pointer>(waitForFence);
    if (std::strcmp(name, "eglDestroySyncKHR") == 0) return reinterpret_cast<Pointer>(destroyFence);
    return drivers(name);
}
