#ifndef QUORVANE_ANDROID_JNI_JAVA_H
#define QUORVANE_ANDROID_JNI_JAVA_H

#include <jni.h>
#include <quorvane/host/Status.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace quorvane {

/// Throws a ParallaxException. After it Java may not be called again before the return.
inline void throwSentence(JNIEnv* env, const char* sentence) {
    const jclass type = env->FindClass("quorvane/parallax/ParallaxException");
    // Where there is no such class, FindClass has thrown.
    if (type != nullptr) env->ThrowNew(type, sentence);
}

/// Throws a ParallaxException unless `status` is a success.
inline void report(JNIEnv* env, const Status& status) {
    if (!status) throwSentence(env, status.message().c_str());
}

template <auto kFunction>
struct Guarded;

/// A native method that Java may call: no C++ exception gets through to it. Only memory that does not suffice
/// throws.
template <typename Result, typename... Arguments, Result (*kFunction)(JNIEnv*, jclass, Arguments...)>
struct Guarded<kFunction> {
    static JNICALL Result call(JNIEnv* env, jclass type, Arguments... arguments) {
        try {
            return kFunction(env, type, arguments...);
        } catch (...) {
            if (!env->ExceptionCheck()) throwSentence(env, "too little memory");
            return Result();
        }
    }
};

template <auto kFunction>
JNINativeMethod nativeMethod(const char* name, const char* signature) {
    // Older headers take both texts as char*; they are only read.
    return {const_cast<char*>(name), const_cast<char*>(signature),
            reinterpret_cast<void*>(Guarded<kFunction>::call)};
}

/// A part of a direct buffer.
struct DirectBytes {
    uint8_t* data = nullptr;
    size_t bytes = 0;
};

/// The `bytes` bytes of a direct buffer from `position` on; the Java half has checked both. `what` begins the
/// sentence.
inline Status directBytes(JNIEnv* env, const char* what, jobject buffer, jint position, jint bytes,
                          DirectBytes* found) {
    void* address = env->GetDirectBufferAddress(buffer);
    if (address == nullptr)
        return Status::failure(std::string(what) + ": native code cannot reach the buffer's memory");
    *found = {static_cast<uint8_t*>(address) + position, static_cast<size_t>(bytes)};
    return Status::success();
}

}  // namespace quorvane

#endif
