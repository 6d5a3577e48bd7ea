#ifndef QUORVANE_ANDROID_JNI_COPY_PICTURE_H
#define QUORVANE_ANDROID_JNI_COPY_PICTURE_H

#include <quorvane/host/ParallaxView.h>

namespace quorvane {

/// Copies the picture that `view` has just drawn into a texture of the app's and waits until that is
/// finished. The texture needs an RGBA or RGB image of the picture's size or larger. Leaves it bound to unit
/// 0, and the view's framebuffer.
Status copyPicture(const ParallaxView& view, GLuint texture);

}  // namespace quorvane

#endif
