#ifndef QUORVANE_MEDIA_DEPTH_PHOTO_WITH_DEPTH_H
#define QUORVANE_MEDIA_DEPTH_PHOTO_WITH_DEPTH_H

#include <string>
#include <string_view>

#include "media/embedded/embedded.h"
#include "media/picture/image.h"
#include "media/picture/picture_file.h"

namespace quorvane::media {

// All of these throw Error, with messages about `name`. If something has to be left out or taken as it is,
// they set `remark`, unless it is null, to one line that says so.

/// The photo to show, upright: the unblurred original in `contents`, or the file's own picture if there is no
/// original or it cannot be decoded.
RgbImage decodePhoto(std::string_view file, const Contents& contents, const std::string& name,
                     long long most_pixels = kMostPixels, std::string* remark = nullptr);

/// The same photo's header, and the photo shrunk as decodePhotoShrunk() does.
struct ShrunkPhoto {
    PictureHeader header;
    RgbImage shrunk;
};
ShrunkPhoto previewPhoto(std::string_view file, const Contents& contents, const std::string& name,
                         int least_side, long long most_pixels = kMostPixels, std::string* remark = nullptr);

/// The same photo's header, and the photo as decodePhotoAtLeast() makes it.
ShrunkPhoto decodePhotoAtLeast(std::string_view file, const Contents& contents, const std::string& name,
                               Size least, long long most_pixels = kMostPixels,
                               std::string* remark = nullptr);

/// An embedded plane as a depth map: upright, larger = nearer, and linear in 1 / distance if its kind is
/// known. A linear range is converted, for which it needs near and far, and spread over 0 to 255; else these
/// stand for all that the stored samples, of DepthMap::bits, can hold.
DepthMap decodeDepth(const EmbeddedDepth& depth, const std::string& name, long long most_pixels = kMostPixels,
                     std::string* remark = nullptr);

/// Which half of a picture is the depth map.
enum class DepthHalf { kRight, kLeft, kBelow, kAbove };

/// A picture with colour in one half and depth in the other. A middle column or row that belongs to neither
/// is dropped. The depth is gray, larger = nearer.
struct SplitPicture {
    RgbImage photo;
    DepthMap depth;
};
SplitPicture decodeSideBySide(std::string_view file, DepthHalf half, const std::string& name,
                              long long most_pixels = kMostPixels);

}  // namespace quorvane::media

#endif
