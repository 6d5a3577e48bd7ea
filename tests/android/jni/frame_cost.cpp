// Draws frames through the library's native methods, as Java calls them, without a Java machine: for
// callgrind, which tests/android/jni/frame_cost runs it under. frame_cost LIBRARY FRAMES

#include <EGL/egl.h>
#include <EGL/eglext.h>
#include <dlfcn.h>
#include <jni.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

namespace {

// A Java machine that knows as much as drawing asks for. A buffer is its own address.
std::map<std::string, void*> g_methods;
JNINativeInterface_ g_functions = {};
JNIEnv g_env = {&g_functions};
int g_class = 0;

jclass JNICALL findClass(JNIEnv*, const char*) { return reinterpret_cast<jclass>(&g_class); }

jint JNICALL registerNatives(JNIEnv*, jclass, const JNINativeMethod* methods, jint count) {
    for (jint i = 0; i < count; ++i) g_methods[methods[i].name] = methods[i].fnPtr;
    return JNI_OK;
}

jboolean JNICALL exceptionCheck(JNIEnv*) { return JNI_FALSE; }

void* JNICALL directBufferAddress(JNIEnv*, jobject buffer) { return buffer; }

[[noreturn]] void fail(const char* what) {
    std::fprintf(stderr, "frame_cost: %s\n", what);
    std::exit(1);
}

jint JNICALL throwNew(JNIEnv*, jclass, const char* sentence) { fail(sentence); }

jint JNICALL getEnv(JavaVM*, void** env, jint) {
    *env = &g_env;
    return JNI_OK;
}

template <typename Result, typename... Arguments>
Result call(const char* name, Arguments... arguments) {
    const auto method = reinterpret_cast<Result (*)(JNIEnv*, jclass, Arguments...)>(g_methods.at(name));
    return method(&g_env, nullptr, arguments...);
}

void makeContext() {
    const auto platform_display =
        reinterpret_cast<PFNEGLGETPLATFORMDISPLAYEXTPROC>(eglGetProcAddress("eglGetPlatformDisplayEXT"));
    const EGLDisplay display = platform_display(EGL_PLATFORM_SURFACELESS_MESA, nullptr, nullptr);
    const EGLint wanted[] = {EGL_RENDERABLE_TYPE, EGL_OPENGL_ES2_BIT, EGL_SURFACE_TYPE, EGL_PBUFFER_BIT,
                             EGL_NONE};
    const EGLint version_2[] = {EGL_CONTEXT_CLIENT_VERSION, 2, EGL_NONE};
    EGLConfig config = nullptr;
    EGLint found = 0;
    if (!eglInitialize(display, nullptr, nullptr) || !eglChooseConfig(display, wanted, &config, 1, &found) ||
        found == 0)
        fail("no graphics driver");
    const EGLContext context = eglCreateContext(display, config, EGL_NO_CONTEXT, version_2);
    if (!eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, context)) fail("no context");
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) fail("usage: frame_cost LIBRARY FRAMES");
    g_functions.FindClass = findClass;
    g_functions.RegisterNatives = registerNatives;
    g_functions.ExceptionCheck = exceptionCheck;
    g_functions.GetDirectBufferAddress = directBufferAddress;
    g_functions.ThrowNew = throwNew;
    JNIInvokeInterface_ invoke = {};
    invoke.GetEnv = getEnv;
    JavaVM machine = {&invoke};
    void* const library = dlopen(argv[1], RTLD_NOW);
    if (library == nullptr) fail(dlerror());
    const auto on_load = reinterpret_cast<jint (*)(JavaVM*, void*)>(dlsym(library, "JNI_OnLoad"));
    if (on_load(&machine, nullptr) != JNI_VERSION_1_6) fail("the library does not load");

    makeContext();
    constexpr jint kSide = 64;
    std::vector<uint8_t> photo(size_t{3} * kSide * kSide, 100), depth(size_t{kSide} * kSide, 128);
    const auto view = call<jlong>("nativeCreate", kSide, kSide, jint{4}, jboolean{JNI_FALSE});
    call<void>("nativeSetPhoto", view, kSide, kSide, reinterpret_cast<jobject>(photo.data()), jint{0},
               static_cast<jint>(photo.size()), jint{3});
    call<void>("nativeSetDepth", view, kSide, kSide, reinterpret_cast<jobject>(depth.data()), jint{0},
               static_cast<jint>(depth.size()));
    const int frames = std::atoi(argv[2]);
    for (int i = 0; i < frames; ++i) {
        call<void>("nativeLookAt", view, static_cast<float>(i) / 100.0f, 0.0f);
        call<jint>("nativeRender", view);
    }
    // Nothing is freed: callgrind counts the frames.
    std::fflush(stdout);
    std::_Exit(0);
}
