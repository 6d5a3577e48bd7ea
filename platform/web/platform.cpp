// What a page lacks of the interfaces that the component is written against.

#define EGL_EGLEXT_PROTOTYPES
#include <EGL/egl.h>
#include <EGL/eglext.h>
#include <android/log.h>
#include <cutils/properties.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>

int __android_log_print(int priority, const char* tag, const char* format, ...) {
    if (priority < ANDROID_LOG_WARN) return 0;
    std::fprintf(stderr, "%s: ", tag);
    std::va_list values;
    va_start(values, format);
    const int written = std::vfprintf(stderr, format, values);
    va_end(values);
    return written;
}

int property_get(const char*, char* value, const char* fallback) {
    value[0] = '\0';
    if (fallback != nullptr) std::strncat(value, fallback, PROPERTY_VALUE_MAX - 1);
    return static_cast<int>(std::strlen(value));
}

// WebGL has no fences that can be waited for. The component reads a pixel back after each frame, which waits.

EGLSyncKHR eglCreateSyncKHR(EGLDisplay, EGLenum, const EGLint*) {
    static int fence;
    return &fence;
}

EGLint eglClientWaitSyncKHR(EGLDisplay, EGLSyncKHR, EGLint, EGLTimeKHR) {
    return EGL_CONDITION_SATISFIED_KHR;
}

EGLBoolean eglDestroySyncKHR(EGLDisplay, EGLSyncKHR) { return EGL_TRUE; }
