#ifndef QUORVANE_MEDIA_PICTURE_RESAMPLE_H
#define QUORVANE_MEDIA_PICTURE_RESAMPLE_H

#include "media/picture/image.h"
#include "sizes/sizes.h"

namespace quorvane::media {

/// Resamples the photo to `size`; the same size gives the same bytes.
RgbImage resample(const RgbImage& image, Size size);

/// Scales the depth plane to `size` linearly, without overshoot, and makes bytes of it as `dithered` does.
GrayImage toBytes(const Plane& plane, Size size);

}  // namespace quorvane::media

#endif
