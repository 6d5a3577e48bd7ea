#ifndef QUORVANE_MEDIA_PICTURE_LANCZOS_H
#define QUORVANE_MEDIA_PICTURE_LANCZOS_H

#include "media/picture/image.h"
#include "sizes/sizes.h"

namespace quorvane::media {

/// A smaller photo: a sinc windowed by the middle lobe of another three times as wide (Duchon, "Lanczos
/// filtering in one and two dimensions", 1979), stretched by the ratio of the sizes. Pixels beyond the border
/// are those at it. Neither side of `size` may be longer than the photo's. Off by less than a level from the
/// exact sums.
RgbImage reducedByLanczos(const RgbImage& photo, Size size);

}  // namespace quorvane::media

#endif
