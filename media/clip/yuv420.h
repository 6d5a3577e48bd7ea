#ifndef QUORVANE_MEDIA_CLIP_YUV420_H
#define QUORVANE_MEDIA_CLIP_YUV420_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "media/picture/image.h"
#include "sizes/sizes.h"

namespace quorvane::media {

/// Bytes of a picture of even sides with its colours at half the size.
size_t yuv420Bytes(Size size);

/// Brings `image`, of even sides and without transparency, to Y'CbCr by BT.709 (ITU-R BT.709-6, 3.2 and 3.4)
/// in limited range: luma 16 to 235, then Cb and Cr 16 to 240, each for the mean of 2 x 2 pixels, as planes
/// one after another. Every sample is within 1 of the exact value.
void toYuv420(const RgbaImage& image, std::vector<uint8_t>* planes);

}  // namespace quorvane::media

#endif
