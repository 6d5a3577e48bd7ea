#ifndef QUORVANE_ANDROID_JNI_PICTURE_PLAN_H
#define QUORVANE_ANDROID_JNI_PICTURE_PLAN_H

#include <jni.h>

namespace quorvane {

/// Gives PicturePlan.java its native half. Where that fails an exception waits.
bool registerPicturePlan(JNIEnv* env);

}  // namespace quorvane

#endif
