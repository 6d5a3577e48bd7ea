#include "egl_double.h"

#include <EGL/eglext.h>
#include <dlfcn.h>

#include <cstring>

#include "support/gl_recorder.h"

namespace quorvane::test {

EglDouble& EglDouble::instance() {
    static EglDouble egl;
    return egl;
}

}  // namespace quorvane::test

using quorvane::test::EglDouble;
using quorvane::test::GlRecorder;

namespace {

EglDouble& egl() { return EglDouble::instance(); }

/// The driver's own function, or null while it is faked.
template <typename Function>
Function* driver(Function*, const char* name) {
    if (GlRecorder::instance().fake()) return nullptr;
    static void* const library = dlopen("libEGL.so.1", RTLD_NOW | RTLD_LOCAL);
    return reinterpret_cast<Function*>(dlsym(library, name));
}
#define DRIVER(function) driver(&(function), #function)

bool succeeds(const char* function) {
    egl().calls.push_back(function);
    return egl().failing.count(function) == 0;
}

std::vector<EGLint> list(const EGLint* attributes) {
    std::vector<EGLint> values;
    while (*attributes != EGL_NONE) values.push_back(*attributes++);
    return values;
}

EGLDisplay platformDisplay(EGLenum platform, void* native, const EGLint*) {
    return platform == EGL_PLATFORM_SURFACELESS_MESA ? EglDouble::handle(EglDouble::kSurfaceless) : native;
}

EGLBoolean queryDevices(EGLint limit, EGLDeviceEXT* devices, EGLint* count) {
    if (!succeeds("eglQueryDevicesEXT") || limit < 2) return EGL_FALSE;
    devices[0] = EglDouble::handle(EglDouble::kDevice0);
    devices[1] = EglDouble::handle(EglDouble::kDevice1);
    *count = 2;
    return EGL_TRUE;
}

}  // namespace

EglDouble::Function eglGetProcAddress(const char* name) {
    if (auto* real = DRIVER(eglGetProcAddress)) return real(name);
    using Pointer = EglDouble::Function;
    if (egl().missing_functions.count(name) != 0) return nullptr;
    if (std::strcmp(name, "eglGetPlatformDisplayEXT") == 0) return reinterpret_cast<Pointer>(platformDisplay);
    if (std::strcmp(name, "eglQueryDevicesEXT") == 0) return reinterpret_cast<Pointer>(queryDevices);
    const auto more = egl().functions.find(name);
    return more != egl().functions.end() ? more->second : nullptr;
}

const char* eglQueryString(EGLDisplay display, EGLint name) {
    if (auto* real = DRIVER(eglQueryString)) return real(display, name);
    if (!succeeds("eglQueryString")) return nullptr;
    return (display == EGL_NO_DISPLAY ? egl().client_extensions : egl().display_extensions).c_str();
}

EGLDisplay eglGetDisplay(EGLNativeDisplayType native) {
    if (auto* real = DRIVER(eglGetDisplay)) return real(native);
    return egl().default_display;
}

EGLBoolean eglInitialize(EGLDisplay display, EGLint* major, EGLint* minor) {
    if (auto* real = DRIVER(eglInitialize)) return real(display, major, minor);
    if (!succeeds("eglInitialize") || egl().broken_displays.count(display) != 0) return EGL_FALSE;
    egl().initialised[display] = 1;
    return EGL_TRUE;
}

EGLBoolean eglTerminate(EGLDisplay display) {
    if (auto* real = DRIVER(eglTerminate)) return real(display);
    egl().calls.push_back("eglTerminate");
    egl().initialised.erase(display);
    return EGL_TRUE;
}

EGLBoolean eglBindAPI(EGLenum api) {
    if (auto* real = DRIVER(eglBindAPI)) return real(api);
    if (!succeeds("eglBindAPI")) return EGL_FALSE;
    egl().api = api;
    return EGL_TRUE;
}

EGLBoolean eglChooseConfig(EGLDisplay display, const EGLint* attributes, EGLConfig* configs, EGLint size,
                           EGLint* count) {
    if (auto* real = DRIVER(eglChooseConfig)) return real(display, attributes, configs, size, count);
    if (!succeeds("eglChooseConfig")) return EGL_FALSE;
    egl().config_wanted = list(attributes);
    *count = egl().configurations;
    if (*count > 0) *configs = EglDouble::handle(0xcf);
    return EGL_TRUE;
}

EGLContext eglCreateContext(EGLDisplay display, EGLConfig config, EGLContext share,
                            const EGLint* attributes) {
    if (auto* real = DRIVER(eglCreateContext)) return real(display, config, share, attributes);
    if (!succeeds("eglCreateContext")) return EGL_NO_CONTEXT;
    egl().context_wanted = list(attributes);
    return *egl().contexts.insert(EglDouble::handle(egl().next_context)).first;
}

EGLBoolean eglDestroyContext(EGLDisplay display, EGLContext context) {
    if (auto* real = DRIVER(eglDestroyContext)) return real(display, context);
    egl().calls.push_back("eglDestroyContext");
    return egl().contexts.erase(context) != 0 ? EGL_TRUE : EGL_FALSE;
}

EGLSurface eglCreatePbufferSurface(EGLDisplay display, EGLConfig config, const EGLint* attributes) {
    if (auto* real = DRIVER(eglCreatePbufferSurface)) return real(display, config, attributes);
    if (!succeeds("eglCreatePbufferSurface")) return EGL_NO_SURFACE;
    egl().surface_wanted = list(attributes);
    return *egl().surfaces.insert(EglDouble::handle(0x5f)).first;
}

EGLBoolean eglDestroySurface(EGLDisplay display, EGLSurface surface) {
    if (auto* real = DRIVER(eglDestroySurface)) return real(display, surface);
    egl().calls.push_back("eglDestroySurface");
    return egl().surfaces.erase(surface) != 0 ? EGL_TRUE : EGL_FALSE;
}

EGLBoolean eglMakeCurrent(EGLDisplay display, EGLSurface draw, EGLSurface read, EGLContext context) {
    if (auto* real = DRIVER(eglMakeCurrent)) return real(display, draw, read, context);
    if (!succeeds(context != EGL_NO_CONTEXT ? "eglMakeCurrent" : "eglMakeCurrent(none)")) return EGL_FALSE;
    egl().current_surface = draw;
    egl().current_context = context;
    return EGL_TRUE;
}
