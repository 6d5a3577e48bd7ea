#ifndef QUORVANE_MEDIA_EMBEDDING_MPO_FILE_H
#define QUORVANE_MEDIA_EMBEDDING_MPO_FILE_H

#include <string>

#include "media/embedding/stereo_cameras.h"
#include "media/picture/image.h"

namespace quorvane::media {

/// Both views, of one size, as the bytes of an MPO file: two JPEGs of `quality` 1 to 100 with the index of
/// CIPA DC-007, which says the baseline in metres and that the cameras are parallel, and Exif with the focal
/// length. Throws Error.
std::string mpoFile(const RgbImage& left, const RgbImage& right, const StereoCameras& cameras, int quality);

}  // namespace quorvane::media

#endif
