// Android's EGL14 and GLES20 on Mesa: as much as a view calls, by the same names, for tests on OpenJDK.

#include <EGL/egl.h>
#include <EGL/eglext.h>
#include <GLES2/gl2.h>
#include <jni.h>

#include <string>
#include <vector>

namespace {

EGLDisplay opened() {
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

template <typename Handle>
Handle handle(jlong number) {
    return reinterpret_cast<Handle>(number);
}

std::vector<EGLint> attributes(JNIEnv* env, jintArray array) {
    std::vector<EGLint> list(static_cast<size_t>(env->GetArrayLength(array)));
    env->GetIntArrayRegion(array, 0, static_cast<jsize>(list.size()), list.data());
    return list;
}

std::string utf8(JNIEnv* env, jstring text) {
    const char* const characters = env->GetStringUTFChars(text, nullptr);
    std::string copy(characters);
    env->ReleaseStringUTFChars(text, characters);
    return copy;
}

}  // namespace

#define EGL14(type, name) extern "C" JNIEXPORT type JNICALL Java_android_opengl_EGL14_##name
#define GLES20(type, name) extern "C" JNIEXPORT type JNICALL Java_android_opengl_GLES20_##name

EGL14(jlong, display)(JNIEnv*, jclass) { return reinterpret_cast<jlong>(opened()); }

EGL14(jint, chooseConfig)(JNIEnv* env, jclass, jlong display, jintArray wanted, jlongArray found) {
    std::vector<EGLint> list = attributes(env, wanted);
    for (size_t i = 0; i + 1 < list.size(); i += 2)
        if (list[i] == EGL_SURFACE_TYPE) list[i + 1] = EGL_PBUFFER_BIT;
    std::vector<EGLConfig> configs(static_cast<size_t>(env->GetArrayLength(found)));
    EGLint count = 0;
    eglChooseConfig(handle<EGLDisplay>(display), list.data(), configs.data(),
                    static_cast<EGLint>(configs.size()), &count);
    for (jint i = 0; i < count; ++i) {
        const auto number = reinterpret_cast<jlong>(configs[static_cast<size_t>(i)]);
        env->SetLongArrayRegion(found, i, 1, &number);
    }
    return count;
}

EGL14(jint, attribute)(JNIEnv*, jclass, jlong display, jlong config, jint name) {
    EGLint value = 0;
    eglGetConfigAttrib(handle<EGLDisplay>(display), handle<EGLConfig>(config), name, &value);
    return value;
}

EGL14(jlong, createContext)(JNIEnv* env, jclass, jlong display, jlong config, jintArray wanted) {
    return reinterpret_cast<jlong>(eglCreateContext(handle<EGLDisplay>(display), handle<EGLConfig>(config),
                                                    EGL_NO_CONTEXT, attributes(env, wanted).data()));
}

EGL14(jlong, createSurface)(JNIEnv*, jclass, jlong display, jlong config, jint width, jint height) {
    const EGLint size[] = {EGL_WIDTH, width, EGL_HEIGHT, height, EGL_NONE};
    return reinterpret_cast<jlong>(
        eglCreatePbufferSurface(handle<EGLDisplay>(display), handle<EGLConfig>(config), size));
}

EGL14(jboolean, makeCurrent)(JNIEnv*, jclass, jlong display, jlong surface, jlong context) {
    const auto drawn = handle<EGLSurface>(surface);
    return eglMakeCurrent(handle<EGLDisplay>(display), drawn, drawn, handle<EGLContext>(context)) == EGL_TRUE;
}

EGL14(jboolean, destroySurface)(JNIEnv*, jclass, jlong display, jlong surface) {
    return eglDestroySurface(handle<EGLDisplay>(display), handle<EGLSurface>(surface)) == EGL_TRUE;
}

EGL14(jboolean, destroyContext)(JNIEnv*, jclass, jlong display, jlong context) {
    return eglDestroyContext(handle<EGLDisplay>(display), handle<EGLContext>(context)) == EGL_TRUE;
}

EGL14(void, readPicture)(JNIEnv* env, jclass, jint width, jint height, jbyteArray picture) {
    std::vector<jbyte> pixels(static_cast<size_t>(env->GetArrayLength(picture)));
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    env->SetByteArrayRegion(picture, 0, static_cast<jsize>(pixels.size()), pixels.data());
}

GLES20(void, glGetIntegerv)(JNIEnv* env, jclass, jint name, jintArray values, jint offset) {
    GLint value = 0;
    glGetIntegerv(static_cast<GLenum>(name), &value);
    env->SetIntArrayRegion(values, offset, 1, &value);
}

GLES20(void, glBindFramebuffer)(JNIEnv*, jclass, jint target, jint framebuffer) {
    glBindFramebuffer(static_cast<GLenum>(target), static_cast<GLuint>(framebuffer));
}

GLES20(void, glViewport)(JNIEnv*, jclass, jint x, jint y, jint width, jint height) {
    glViewport(x, y, width, height);
}

GLES20(void, glDisable)(JNIEnv*, jclass, jint capability) { glDisable(static_cast<GLenum>(capability)); }

GLES20(void, glUseProgram)(JNIEnv*, jclass, jint program) { glUseProgram(static_cast<GLuint>(program)); }

GLES20(void, glActiveTexture)(JNIEnv*, jclass, jint unit) { glActiveTexture(static_cast<GLenum>(unit)); }

GLES20(void, glBindTexture)(JNIEnv*, jclass, jint target, jint texture) {
    glBindTexture(static_cast<GLenum>(target), static_cast<GLuint>(texture));
}

GLES20(jint, glGetUniformLocation)(JNIEnv* env, jclass, jint program, jstring name) {
    return glGetUniformLocation(static_cast<GLuint>(program), utf8(env, name).c_str());
}

GLES20(void, glUniform1i)(JNIEnv*, jclass, jint location, jint x) { glUniform1i(location, x); }

GLES20(void, glBindBuffer)(JNIEnv*, jclass, jint target, jint buffer) {
    glBindBuffer(static_cast<GLenum>(target), static_cast<GLuint>(buffer));
}

GLES20(void, glVertexAttribPointer)
(JNIEnv* env, jclass, jint index, jint size, jint type, jboolean normalized, jint stride, jobject pointer) {
    glVertexAttribPointer(static_cast<GLuint>(index), size, static_cast<GLenum>(type), normalized, stride,
                          env->GetDirectBufferAddress(pointer));
}

GLES20(void, glEnableVertexAttribArray)(JNIEnv*, jclass, jint index) {
    glEnableVertexAttribArray(static_cast<GLuint>(index));
}

GLES20(void, glDrawArrays)(JNIEnv*, jclass, jint mode, jint first, jint count) {
    glDrawArrays(static_cast<GLenum>(mode), first, count);
}

GLES20(jint, glCreateProgram)(JNIEnv*, jclass) { return static_cast<jint>(glCreateProgram()); }

GLES20(jint, glCreateShader)(JNIEnv*, jclass, jint type) {
    return static_cast<jint>(glCreateShader(static_cast<GLenum>(type)));
}

GLES20(void, glShaderSource)(JNIEnv* env, jclass, jint shader, jstring source) {
    const std::string text = utf8(env, source);
    const char* const lines = text.c_str();
    glShaderSource(static_cast<GLuint>(shader), 1, &lines, nullptr);
}

GLES20(void, glCompileShader)(JNIEnv*, jclass, jint shader) { glCompileShader(static_cast<GLuint>(shader)); }

GLES20(void, glAttachShader)(JNIEnv*, jclass, jint program, jint shader) {
    glAttachShader(static_cast<GLuint>(program), static_cast<GLuint>(shader));
}

GLES20(void, glDeleteShader)(JNIEnv*, jclass, jint shader) { glDeleteShader(static_cast<GLuint>(shader)); }

GLES20(void, glBindAttribLocation)(JNIEnv* env, jclass, jint program, jint index, jstring name) {
    glBindAttribLocation(static_cast<GLuint>(program), static_cast<GLuint>(index), utf8(env, name).c_str());
}

GLES20(void, glLinkProgram)(JNIEnv*, jclass, jint program) { glLinkProgram(static_cast<GLuint>(program)); }

GLES20(void, glGetProgramiv)(JNIEnv* env, jclass, jint program, jint name, jintArray values, jint offset) {
    GLint value = 0;
    glGetProgramiv(static_cast<GLuint>(program), static_cast<GLenum>(name), &value);
    env->SetIntArrayRegion(values, offset, 1, &value);
}

GLES20(jstring, glGetProgramInfoLog)(JNIEnv* env, jclass, jint program) {
    char log[1000] = "";
    glGetProgramInfoLog(static_cast<GLuint>(program), sizeof log, nullptr, log);
    return env->NewStringUTF(log);
}
