#ifndef QUORVANE_ANDROID_JNI_FIT_SIZES_H
#define QUORVANE_ANDROID_JNI_FIT_SIZES_H

#include <jni.h>

namespace quorvane {

/// Gives FitSizes.java its native half. Where that fails an exception waits.
bool registerFitSizes(JNIEnv* env);

}  // namespace quorvane

#endif
