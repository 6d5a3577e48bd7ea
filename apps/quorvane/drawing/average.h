#ifndef QUORVANE_APPS_DRAWING_AVERAGE_H
#define QUORVANE_APPS_DRAWING_AVERAGE_H

#include "media/picture/image.h"
#include "sizes/sizes.h"

namespace quorvane::app {

/// Makes a picture of `size` from one drawn n times as large on both axes, n up to 16: each pixel is the mean
/// of n x n, rounded half up. `out` may hold an earlier picture of that size.
void average(const media::RgbaImage& drawn, Size size, media::RgbaImage* out);

}  // namespace quorvane::app

#endif
