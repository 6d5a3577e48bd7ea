#ifndef QUORVANE_ANDROID_JNI_JAVA_H
#define QUORVANE_ANDROID_JNI_JAVA_H

#include <jni.h>
#include <quorvane/host/Status.h>

namespace quorvane {

/// Throws a ParallaxException unless `status` is a success. After a failure Java may not be called again
/// before the return.
inline void report(JNIEnv* env, const Status& status) {
    if (status) return;
    const jclass type = env->FindClass("quorvane/parallax/ParallaxException");
    // Where there is no such class, FindClass has thrown.
    if (type != nullptr) env->ThrowNew(type, status.message().c_str());
}

template <typename Function>
JNINativeMethod nativeMethod(const char* name, const char* signature, Function* function) {
    // Older headers take both texts as char*; they are only read.
    return {const_cast<char*>(name), const_cast<char*>(signature), reinterpret_cast<void*>(function)};
}

}  // namespace quorvane

#endif
