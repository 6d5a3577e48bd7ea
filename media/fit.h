#ifndef QUORVANE_MEDIA_FIT_H
#define QUORVANE_MEDIA_FIT_H

#include "image.h"
#include "picture_file.h"

namespace quorvane::media {

struct Size {
    int width = 0;
    int height = 0;
    bool operator==(const Size& other) const { return width == other.width && height == other.height; }
    bool operator!=(const Size& other) const { return !(*this == other); }
};

/// Sizes that the renderer takes together: photo = ratio * grid and depth = 4 * grid on both axes.
struct Fit {
    int ratio = 1;  ///< photo pixels a grid cell: 1, 2, 4, 8, 16 or 32
    Size grid;
    Size photo;
    Size depth;
};

/// The coarsest grid that keeps every sample of the depth map, for a photo of its size or, where it is larger
/// than `largest_photo_side`, scaled down to that. The photo grows by less than one cell. Where the photo is
/// too small for that grid or the working memory would pass 2 GB, the nearest grid that fits; where none
/// does, the photo is scaled down further. All sides are at least 1.
Fit fitSizes(Size photo, Size depth, int largest_photo_side);

/// The picture size for a photo: its aspect, the long side at most `longest`, never larger than the photo.
/// `even` rounds both sides down to even numbers (2 at least), as 4:2:0 video needs.
Size pictureSize(Size photo, int longest, bool even);

/// The largest part of `image` that has the aspect of `wanted`, from its middle.
Size croppedSize(Size image, Size wanted);

/// Cuts `size` out of `image`, from the column `left` and the row `top` on.
RgbImage cut(const RgbImage& image, int left, int top, Size size);

/// Cuts the middle `size` out of `image`.
RgbImage crop(const RgbImage& image, Size size);
Image<float, 1> crop(const Image<float, 1>& image, Size size);

/// Resamples the photo to `size`; the same size gives the same bytes.
RgbImage resample(RgbImage image, Size size);

/// Scales the depth plane to `size` linearly, without overshoot, and makes bytes of it: whole levels stay as
/// they are, levels in between are dithered, so that slow slopes get no bands. The same plane gives the same
/// bytes.
GrayImage toBytes(const Image<float, 1>& plane, Size size);

}  // namespace quorvane::media

#endif
