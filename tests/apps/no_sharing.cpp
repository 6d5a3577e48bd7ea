// An EGL that makes no contexts that share objects, for a program to be started with.

#include <EGL/egl.h>
#include <dlfcn.h>

EGLContext eglCreateContext(EGLDisplay display, EGLConfig config, EGLContext share,
                            const EGLint* attributes) {
    if (share != EGL_NO_CONTEXT) return EGL_NO_CONTEXT;
    const auto driver = reinterpret_cast<decltype(&eglCreateContext)>(dlsym(RTLD_NEXT, "eglCreateContext"));
    return driver(display, config, share, attributes);
}
