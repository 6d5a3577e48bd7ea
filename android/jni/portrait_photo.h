#ifndef QUORVANE_ANDROID_JNI_PORTRAIT_PHOTO_H
#define QUORVANE_ANDROID_JNI_PORTRAIT_PHOTO_H

#include <jni.h>

namespace quorvane {

/// Gives PortraitPhoto.java its native half. Where that fails an exception waits.
bool registerPortraitPhoto(JNIEnv* env);

}  // namespace quorvane

#endif
