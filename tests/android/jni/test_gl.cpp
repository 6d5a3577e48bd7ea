// What an app does with EGL and GL beside the renderer, for the Java tests. Everything is on the calling
// thread.

#include <EGL/egl.h>
#include <EGL/eglext.h>
#include <GLES2/gl2.h>
#include <jni.h>

#include <vector>

namespace {

// Not the display that the renderer takes for contexts of its own: on Linux, unlike on a device, the last of
// those ends all contexts of its display.
EGLDisplay display() {
    static const EGLDisplay only = [] {
        const auto query_devices =
            reinterpret_cast<PFNEGLQUERYDEVICESEXTPROC>(eglGetProcAddress("eglQueryDevicesEXT"));
        const auto platform_display =
            reinterpret_cast<PFNEGLGETPLATFORMDISPLAYEXTPROC>(eglGetProcAddress("eglGetPlatformDisplayEXT"));
        EGLDeviceEXT device = nullptr;
        EGLint count = 0;
        if (query_devices == nullptr || platform_display == nullptr || !query_devices(1, &device, &count) ||
            count == 0)
            return EGL_NO_DISPLAY;
        const EGLDisplay found = platform_display(EGL_PLATFORM_DEVICE_EXT, device, nullptr);
        return eglInitialize(found, nullptr, nullptr) ? found : EGL_NO_DISPLAY;
    }();
    return only;
}

std::vector<GLubyte> solid(jint width, jint height) {
    return std::vector<GLubyte>(size_t{4} * static_cast<size_t>(width) * static_cast<size_t>(height), 99);
}

GLuint generated() {
    GLuint name = 0;
    glGenTextures(1, &name);
    return name;
}

}  // namespace

extern "C" {

/// 0 where there is no driver.
JNIEXPORT jlong JNICALL Java_quorvane_parallax_TestGl_makeContext(JNIEnv*, jclass) {
    const EGLint config_wanted[] = {EGL_RENDERABLE_TYPE, EGL_OPENGL_ES2_BIT, EGL_SURFACE_TYPE, 0, EGL_NONE};
    const EGLint version_2[] = {EGL_CONTEXT_CLIENT_VERSION, 2, EGL_NONE};
    EGLConfig config = nullptr;
    EGLint configs = 0;
    if (display() == EGL_NO_DISPLAY || !eglChooseConfig(display(), config_wanted, &config, 1, &configs) ||
        configs == 0)
        return 0;
    return reinterpret_cast<jlong>(eglCreateContext(display(), config, EGL_NO_CONTEXT, version_2));
}

JNIEXPORT jboolean JNICALL Java_quorvane_parallax_TestGl_makeCurrent(JNIEnv*, jclass, jlong context) {
    return static_cast<jboolean>(eglMakeCurrent(display(), EGL_NO_SURFACE, EGL_NO_SURFACE,
                                                reinterpret_cast<EGLContext>(context)) == EGL_TRUE);
}

JNIEXPORT jlong JNICALL Java_quorvane_parallax_TestGl_current(JNIEnv*, jclass) {
    return reinterpret_cast<jlong>(eglGetCurrentContext());
}

JNIEXPORT void JNICALL Java_quorvane_parallax_TestGl_destroy(JNIEnv*, jclass, jlong context) {
    eglDestroyContext(display(), reinterpret_cast<EGLContext>(context));
}

JNIEXPORT jint JNICALL Java_quorvane_parallax_TestGl_nameOnly(JNIEnv*, jclass) {
    return static_cast<jint>(generated());
}

JNIEXPORT jint JNICALL Java_quorvane_parallax_TestGl_cube(JNIEnv*, jclass) {
    const GLuint name = generated();
    glBindTexture(GL_TEXTURE_CUBE_MAP, name);
    return static_cast<jint>(name);
}

/// RGBA, each byte 99; of size 0 x 0 for none.
JNIEXPORT jint JNICALL Java_quorvane_parallax_TestGl_texture(JNIEnv*, jclass, jint width, jint height) {
    const GLuint name = generated();
    glBindTexture(GL_TEXTURE_2D, name);
    if (width > 0)
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, width, height, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                     solid(width, height).data());
    return static_cast<jint>(name);
}

JNIEXPORT jboolean JNICALL Java_quorvane_parallax_TestGl_isTexture(JNIEnv*, jclass, jint name) {
    return glIsTexture(static_cast<GLuint>(name));
}

JNIEXPORT jobject JNICALL Java_quorvane_parallax_TestGl_nowhere(JNIEnv* env, jclass, jint bytes) {
    return env->NewDirectByteBuffer(nullptr, bytes);
}

/// The texture's bytes, 4 a pixel.
JNIEXPORT jbyteArray JNICALL Java_quorvane_parallax_TestGl_read(JNIEnv* env, jclass, jint name, jint width,
                                                                jint height) {
    GLuint framebuffer = 0;
    glGenFramebuffers(1, &framebuffer);
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, static_cast<GLuint>(name), 0);
    std::vector<GLubyte> pixels = solid(width, height);
    glReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    glDeleteFramebuffers(1, &framebuffer);
    const jsize size = static_cast<jsize>(pixels.size());
    const jbyteArray bytes = env->NewByteArray(size);
    if (bytes != nullptr)
        env->SetByteArrayRegion(bytes, 0, size, reinterpret_cast<const jbyte*>(pixels.data()));
    return bytes;
}

}  // extern "C"
