#ifndef QUORVANE_MEDIA_PICTURE_PICTURE_FILE_H
#define QUORVANE_MEDIA_PICTURE_PICTURE_FILE_H

#include <string>
#include <string_view>

#include "media/picture/image.h"
#include "sizes/sizes.h"

namespace quorvane::media {

/// Pictures with more pixels are refused before their pixels are allocated.
constexpr long long kMostPixels = 16384LL * 16384LL;

/// Larger files are refused, and pictures that take more memory: four samples of 16 bit for each of
/// kMostPixels.
constexpr long long kMostBytes = kMostPixels * 8;

/// A depth map on the scale 0..255, larger = nearer, unrounded so that scaling loses nothing of 16-bit input.
struct DepthMap {
    int bits = 8;  ///< of the file: 8 or 16
    Plane plane;
    /// 255 where there is a depth; 0 where an alpha channel, or a colour that is not in the colour map, shows
    /// that there is none. It has the plane's size, or is empty if there is a depth everywhere.
    GrayImage known;
    /// The colour map from which the levels were read, such as "turbo"; empty for gray pictures.
    std::string colour_map;
};

/// Reads a photo: JPEG, PNG, WebP, HEIC, AVIF or TIFF, of 8 or 16 bit, gray, RGB or CMYK. The Exif
/// orientation is applied, colours are converted to sRGB and transparency is laid over white. Throws Error,
/// also for a picture that ends early, and Cancelled after a signal.
RgbImage readPhoto(const std::string& path);

/// Reads a depth map of 8 or 16 bit, larger = nearer, from a gray picture (RGB will do where all channels
/// agree) or from one in a known colour map: jet, rainbow, turbo, viridis, plasma, inferno, magma or hot.
/// 0..255 stands for all that the samples can hold. Pixels less than half opaque are not `known`. Throws
/// Error like readPhoto.
DepthMap readDepthMap(const std::string& path);

/// The bytes of a picture's file; messages call it `name`, or by its path. Throws Error, also for what is no
/// picture, and Cancelled after a signal.
std::string readPictureFile(const std::string& path, const std::string& name);
std::string readPictureFile(const std::string& path);

// The same from a file's bytes, which messages call `name`. `orientation`, Exif's, counts for pictures that
// give none themselves.

RgbImage decodePhoto(std::string_view bytes, const std::string& name, long long most_pixels = kMostPixels,
                     int orientation = 1);
DepthMap decodeDepthMap(std::string_view bytes, const std::string& name, long long most_pixels = kMostPixels,
                        int orientation = 1);

/// What a picture's header says. No pixel is decoded for it, so damage behind the header goes unnoticed.
struct PictureHeader {
    int width = 0;  ///< pixels, upright
    int height = 0;
    int bands = 0;  ///< samples a pixel, alpha included
    int bits = 0;   ///< bits a sample: 8, 16 or 32
};
PictureHeader readPictureHeader(std::string_view bytes, const std::string& name,
                                long long most_pixels = kMostPixels, int orientation = 1);

/// Like decodePhoto, but shrunk by a whole factor: the shorter side keeps at least `least_side` pixels and
/// fewer than twice as many. Smaller photos stay as they are. JPEG and WebP are shrunk while they are
/// decoded, in a fraction of the time; of no format but HEIC and AVIF is the whole photo ever in memory.
RgbImage decodePhotoShrunk(std::string_view bytes, const std::string& name, int least_side,
                           long long most_pixels = kMostPixels, int orientation = 1);

/// Like decodePhoto, of one of the pictures in a HEIC or AVIF file: `page` counts them from 0.
RgbImage decodePhotoPage(std::string_view bytes, int page, const std::string& name,
                         long long most_pixels = kMostPixels);

/// Like decodePhoto, but a JPEG picture of at least twice `least` on both sides, upright, is shrunk by 2, 4
/// or 8 while it is decoded, to no less than that. It takes a fraction of the time and the memory and leaves
/// all that so many pixels can show. Other formats would have to be decoded in full first.
RgbImage decodePhotoAtLeast(std::string_view bytes, const std::string& name, Size least,
                            long long most_pixels = kMostPixels, int orientation = 1);

/// Takes a decoded picture for a depth map.
DepthMap toDepthMap(const RgbImage& picture, const std::string& name);

/// Brings the lowest level to 0 and the highest to 255. False, with nothing done, if all levels are equal.
bool spread(Plane* plane);

/// A depth map's plane, on the scale 0..255, as the bytes of a gray PNG file of 8 bits a sample, or of 16,
/// over which the scale is spread. Throws Error.
std::string grayPng(const Plane& plane, int bits);

/// The bytes of a PNG file, as small as can be, and of a JPEG file of `quality` 1 to 100. Throws Error.
std::string pngBytes(const GrayImage& image);
std::string jpegBytes(const RgbImage& image, int quality);

/// Writes a PNG file, whole or not at all. Throws Error.
void writePng(const RgbImage& image, const std::string& path);
void writePng(const RgbaImage& image, const std::string& path);
void writePng(const GrayImage& image, const std::string& path);

/// Writes a PNG file into an open one; messages call it `name`. Throws Error.
void savePng(const RgbImage& image, int descriptor, const std::string& name);
void savePng(const RgbaImage& image, int descriptor, const std::string& name);
void savePng(const GrayImage& image, int descriptor, const std::string& name);

/// Writes a JPEG file of `quality` 1 to 100 into an open one, without alpha. Throws Error.
void saveJpeg(const RgbaImage& image, int quality, int descriptor, const std::string& name);

}  // namespace quorvane::media

#endif
