#ifndef QUORVANE_TESTS_SUPPORT_PHOTO_WRITERS_APPLE_JPEG_H
#define QUORVANE_TESTS_SUPPORT_PHOTO_WRITERS_APPLE_JPEG_H

#include <optional>
#include <string>
#include <vector>

#include "media/picture/image.h"

namespace quorvane::test {

struct AppleJpegOptions {
    int orientation = 1;                 ///< Exif's, of the photo
    std::string native_format = "hdis";  ///< of the depth: hdis or fdis (disparity), hdep or fdep (metres)
    double min_value = 0.5, max_value = 2.5;
    int int_min = 0, int_max = 255;  ///< the samples that stand for min_value and max_value
    bool attributes = false;         ///< XMP properties as attributes rather than as elements
    std::string prefix = "apdi";

    bool depth = true;
    bool matte_first = false, gain_map_first = false;  ///< more pictures, before the depth
    bool matte_last = false;
    std::string matte_type = "urn:com:apple:photo:2018:aux:portraiteffectsmatte";
    bool big_endian = true;  ///< of the multi-picture index

    std::string thumbnail;  ///< a JPEG in a segment of the photo behind the index

    std::optional<int> depth_orientation;  ///< the depth's own Exif orientation

    int offset_error = 0;           ///< added to every offset of the index
    std::optional<uint32_t> count;  ///< of pictures, as the index says
    size_t truncated_by = 0;        ///< bytes that the file lacks at its end
};

/// The XMP of the depth.
std::string appleDepthPacket(const AppleJpegOptions& options = {});

/// The appended depth picture of such a file.
std::string appleDepthJpeg(const media::GrayImage& depth, const AppleJpegOptions& options = {});

/// A JPEG file as iPhones write it in portrait mode: a photo with a multi-picture index, behind it JPEGs
/// with their own XMP.
std::string appleJpegFile(const media::RgbImage& photo, const media::GrayImage& depth,
                          const AppleJpegOptions& options = {});

}  // namespace quorvane::test

#endif
