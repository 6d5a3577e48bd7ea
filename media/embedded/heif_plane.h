#ifndef QUORVANE_MEDIA_EMBEDDED_HEIF_PLANE_H
#define QUORVANE_MEDIA_EMBEDDED_HEIF_PLANE_H

#include <cstdint>
#include <string_view>
#include <vector>

namespace quorvane::media {

/// The luma of a HEIF picture.
struct HeifPlane {
    int width = 0;
    int height = 0;
    int bits = 0;                   ///< 8 to 16
    std::vector<uint16_t> samples;  ///< width * height, rows from the top, each 0 to 2^bits - 1
};

/// Decodes an auxiliary picture of the primary one of the HEIC or AVIF file, turned and cropped as the item
/// itself says. Throws std::runtime_error with one line, also where it has more than `most_pixels`.
HeifPlane decodeHeifItem(std::string_view file, uint32_t item, long long most_pixels);

}  // namespace quorvane::media

#endif
