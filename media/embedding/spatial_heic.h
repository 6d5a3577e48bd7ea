#ifndef QUORVANE_MEDIA_EMBEDDING_SPATIAL_HEIC_H
#define QUORVANE_MEDIA_EMBEDDING_SPATIAL_HEIC_H

#include <string>

#include "media/embedding/stereo_cameras.h"
#include "media/picture/image.h"

namespace quorvane::media {

/// Both views, of one size, as the bytes of a HEIC file as headsets write them: the left view is its picture,
/// and a stereo pair group names both. Each view has its camera as ISO/IEC 23008-12 says it (x to the right,
/// y up, z towards the viewer, from the left camera) and in XMP, and the focal length in Exif. `quality` is 1
/// to 100. Throws Error.
std::string spatialHeic(const RgbImage& left, const RgbImage& right, const StereoCameras& cameras,
                        int quality);

}  // namespace quorvane::media

#endif
