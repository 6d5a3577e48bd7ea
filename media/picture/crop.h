#ifndef QUORVANE_MEDIA_PICTURE_CROP_H
#define QUORVANE_MEDIA_PICTURE_CROP_H

#include "media/picture/image.h"
#include "sizes/sizes.h"

namespace quorvane::media {

/// Cuts `size` out of `image`, from the column `left` and the row `top` on.
RgbImage cut(const RgbImage& image, int left, int top, Size size);

/// Cuts the middle `size` out of `image`; where that is larger, the border pixels are repeated.
RgbImage crop(const RgbImage& image, Size size);
Plane crop(const Plane& image, Size size);
GrayImage crop(const GrayImage& image, Size size);

}  // namespace quorvane::media

#endif
