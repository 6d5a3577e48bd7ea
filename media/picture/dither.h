#ifndef QUORVANE_MEDIA_PICTURE_DITHER_H
#define QUORVANE_MEDIA_PICTURE_DITHER_H

#include "media/picture/image.h"

namespace quorvane::media {

/// Makes bytes of a plane's levels: whole ones stay as they are, those in between are dithered, so that slow
/// slopes get no bands. The same plane gives the same bytes.
GrayImage dithered(const Plane& plane);

}  // namespace quorvane::media

#endif
