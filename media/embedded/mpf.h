#ifndef QUORVANE_MEDIA_EMBEDDED_MPF_H
#define QUORVANE_MEDIA_EMBEDDED_MPF_H

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "media/embedded/jpeg.h"

namespace quorvane::media {

/// A picture in a JPEG's multi-picture index.
struct IndexedPicture {
    uint64_t offset;  ///< in the file, unchecked; 0: the JPEG that holds the index
    uint32_t type;    ///< such as kDisparityPicture
};

/// A view of a scene that other views show from other places.
constexpr uint32_t kDisparityPicture = 0x020002;

/// What the JPEG's multi-picture index (CIPA DC-007, in an APP2 segment) lists, in its order. Nothing if
/// there is no index that can be read. Sizes are left out: a JPEG shows where it ends.
std::optional<std::vector<IndexedPicture>> multiPictureIndex(std::string_view file, const Jpeg& jpeg);

}  // namespace quorvane::media

#endif
