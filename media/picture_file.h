#ifndef QUORVANE_MEDIA_PICTURE_FILE_H
#define QUORVANE_MEDIA_PICTURE_FILE_H

#include <string>

#include "image.h"

namespace quorvane::media {

/// Pictures with more pixels are refused before their pixels are allocated.
constexpr long long kMostPixels = 16384LL * 16384LL;

/// Larger files are refused, and pictures whose pixels take more: four samples of 16 bit for each of the most
/// pixels.
constexpr long long kMostBytes = kMostPixels * 8;

/// A depth map on the scale 0..255, larger = nearer, unrounded so that scaling loses nothing of 16-bit input.
struct DepthMap {
    int bits = 8;  ///< of the file: 8 or 16
    Image<float, 1> plane;
};

/// Reads a photo: JPEG, PNG, WebP, HEIC, AVIF or TIFF, of 8 or 16 bit, gray, RGB or CMYK. The Exif
/// orientation is applied, colours are converted to sRGB and transparency is laid over white. Throws Error,
/// also for a picture that ends early, and "interrupted" after a signal.
RgbImage readPhoto(const std::string& path);

/// Reads a depth map from a gray picture (RGB will do where all channels agree) of 8 or 16 bit, larger =
/// nearer. 16-bit samples are spread over the range they use. An alpha channel is ignored. Throws Error
/// like readPhoto.
DepthMap readDepthMap(const std::string& path);

// The same from a file's bytes; messages call them `name`.

RgbImage decodePhoto(std::string bytes, const std::string& name, long long most_pixels = kMostPixels);
DepthMap decodeDepthMap(std::string bytes, const std::string& name, long long most_pixels = kMostPixels);

/// Writes a PNG file, whole or not at all. Throws Error.
void writePng(const RgbImage& image, const std::string& path);
void writePng(const RgbaImage& image, const std::string& path);
void writePng(const GrayImage& image, const std::string& path);

}  // namespace quorvane::media

#endif
