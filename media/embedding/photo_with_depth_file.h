#ifndef QUORVANE_MEDIA_EMBEDDING_PHOTO_WITH_DEPTH_FILE_H
#define QUORVANE_MEDIA_EMBEDDING_PHOTO_WITH_DEPTH_FILE_H

#include <optional>
#include <string>
#include <string_view>

#include "media/picture/image.h"

namespace quorvane::media {

/// The distances that the nearest and the farthest level stand for, both above 0, in metres.
struct DepthRange {
    double near = 1.0;
    double far = 1.0;
};

/// A JPEG file's own picture with all that describes it alone: Exif, colour profile, comments. XMP, an index
/// of further pictures and what is appended would speak of a file that this is no longer, and are left out.
/// Throws Error, under the name `name`, for what is no whole JPEG.
std::string bareJpeg(std::string_view file, const std::string& name);

/// The bytes of a JPEG file with its depth map in two forms that hold the same PNG file: Dynamic Depth 1.0,
/// behind the picture, and GDepth, in XMP. `jpeg` is as bareJpeg gives it. `depth` lies as the picture is
/// stored, on the scale 0..255, larger = nearer; both formats store 0 for near, in steps of 8 or 16 `bits`,
/// linear in 1 / distance. Throws Error.
std::string jpegWithDepth(const std::string& jpeg, const Plane& depth, int bits,
                          const std::optional<DepthRange>& range);

/// The bytes of a HEIC file with the depth map as an auxiliary picture that loses nothing of its 8 bits,
/// larger = nearer. Both are upright; `quality` is the photo's, 1 to 100. Throws Error.
std::string heicWithDepth(const RgbImage& photo, const GrayImage& depth, int quality);

}  // namespace quorvane::media

#endif
