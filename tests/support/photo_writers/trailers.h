#ifndef QUORVANE_TESTS_SUPPORT_PHOTO_WRITERS_TRAILERS_H
#define QUORVANE_TESTS_SUPPORT_PHOTO_WRITERS_TRAILERS_H

#include <cstdint>
#include <optional>
#include <string>

#include "media/depth/photo_with_depth.h"
#include "media/picture/image.h"

namespace quorvane::test {

/// What a Samsung trailer holds, and what is wrong with it.
struct SamsungOptions {
    int version = 3;         ///< of the extra information that gives the plane's sides: 1, 3, 4, 5 or 6
    std::string unblurred;   ///< a JPEG file; none where it is empty
    bool reversed = false;   ///< the blocks, and their entries, in the other order
    bool with_plane = true;  ///< the block with the depth's bytes
    bool with_sides = true;  ///< the block with the extra information

    std::optional<uint32_t> width, height;     ///< other sides than the plane's
    size_t extra_bytes = 100;                  ///< how much of the extra information there is
    std::optional<uint32_t> distance;          ///< from the directory back to the plane
    std::optional<uint32_t> block_size;        ///< of the plane's block
    std::optional<uint32_t> name_size;         ///< of the plane's block
    std::optional<uint32_t> entries;           ///< that the directory says it has
    std::optional<uint32_t> directory_length;  ///< that the file's end says it has
};

/// The JPEG file with the plane behind it, as it lies on the sensor.
std::string samsungFile(const std::string& photo, const media::GrayImage& depth,
                        const SamsungOptions& options = {});

/// The same for Huawei's trailer.
struct HuaweiOptions {
    uint8_t orientation = 0x10;  ///< Huawei's code: 0x10 to 0x13 for Exif's 1, 8, 3 and 6
    std::string unblurred;       ///< a JPEG file between photo and depth; none where it is empty

    std::optional<uint16_t> width, height;  ///< other sides than the plane's
    std::optional<uint32_t> block_size;     ///< that the file's end says
};

std::string huaweiFile(const std::string& photo, const media::GrayImage& depth,
                       const HuaweiOptions& options = {});

/// A PNG file with the photo and, in the half `half`, its depth map of the same size. `between` columns or
/// rows of black part them.
std::string sideBySideFile(const media::RgbImage& photo, const media::GrayImage& depth, media::DepthHalf half,
                           int between = 0);

}  // namespace quorvane::test

#endif
