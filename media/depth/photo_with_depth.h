#ifndef QUORVANE_MEDIA_DEPTH_PHOTO_WITH_DEPTH_H
#define QUORVANE_MEDIA_DEPTH_PHOTO_WITH_DEPTH_H

#include <string>

#include "media/embedded/embedded.h"
#include "media/picture/image.h"
#include "media/picture/picture_file.h"

namespace quorvane::media {

// All of these throw Error under the name `name`. Where what is there cannot be used as it should be, they
// do what is next best and say so in one line, which is left in `remark` where that is not null.

/// The photo to show of a file that `contents` was found in, upright: the unblurred original; where there is
/// none, or it cannot be decoded, the file's own picture.
RgbImage decodePhoto(const std::string& file, const Contents& contents, const std::string& name,
                     long long most_pixels = kMostPixels, std::string* remark = nullptr);

/// What to know of that photo without its every pixel: its header, and the picture shrunk as
/// decodePhotoShrunk() does.
struct PhotoPreview {
    PictureHeader header;
    RgbImage shrunk;
};
PhotoPreview previewPhoto(const std::string& file, const Contents& contents, const std::string& name,
                          int least_side, long long most_pixels = kMostPixels, std::string* remark = nullptr);

/// An embedded plane on the scale of a depth map, larger = nearer, turned as the photo is turned and linear
/// in 1 / distance wherever its kind is known: a linear range is converted, which takes its near and far.
/// Planes of more than 8 bit and converted ones are spread over 0 to 255. DepthMap::bits are the plane's own.
DepthMap decodeDepth(const EmbeddedDepth& depth, const std::string& name, long long most_pixels = kMostPixels,
                     std::string* remark = nullptr);

/// Which half of a picture is the depth map.
enum class DepthHalf { kRight, kLeft, kBelow, kAbove };

/// A picture with colour and depth side by side, in halves of the same size; a middle column or row that
/// belongs to none is dropped. The depth is gray, larger = nearer.
struct SplitPicture {
    RgbImage photo;
    DepthMap depth;
};
SplitPicture decodeSideBySide(const std::string& file, DepthHalf half, const std::string& name,
                              long long most_pixels = kMostPixels);

}  // namespace quorvane::media

#endif
