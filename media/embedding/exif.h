#ifndef QUORVANE_MEDIA_EMBEDDING_EXIF_H
#define QUORVANE_MEDIA_EMBEDDING_EXIF_H

#include <string>

#include "media/embedding/stereo_cameras.h"
#include "sizes/sizes.h"

namespace quorvane::media {

/// Exif's block, from "II" on, for a view of that size: how long the lens would be in front of a sensor 36 mm
/// wide, and how finely that sensor would be divided.
std::string exifOf(const StereoCameras& cameras, Size picture);

}  // namespace quorvane::media

#endif
