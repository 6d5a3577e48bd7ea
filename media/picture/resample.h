#ifndef QUORVANE_MEDIA_PICTURE_RESAMPLE_H
#define QUORVANE_MEDIA_PICTURE_RESAMPLE_H

#include "media/picture/image.h"
#include "sizes/sizes.h"

namespace quorvane::media {

/// Cuts `size` out of `image`, from the column `left` and the row `top` on.
RgbImage cut(const RgbImage& image, int left, int top, Size size);

/// Cuts the middle `size` out of `image`; where that is larger, the border pixels are repeated.
RgbImage crop(const RgbImage& image, Size size);
Plane crop(const Plane& image, Size size);
GrayImage crop(const GrayImage& image, Size size);

/// Resamples the photo to `size`; the same size gives the same bytes.
RgbImage resample(const RgbImage& image, Size size);

/// Scales the depth plane to `size` linearly, without overshoot, and makes bytes of it: whole levels stay as
/// they are, levels in between are dithered, so that slow slopes get no bands. The same plane gives the same
/// bytes.
GrayImage toBytes(const Plane& plane, Size size);

}  // namespace quorvane::media

#endif
