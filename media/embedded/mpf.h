#ifndef QUORVANE_MEDIA_EMBEDDED_MPF_H
#define QUORVANE_MEDIA_EMBEDDED_MPF_H

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "media/embedded/jpeg.h"

namespace quorvane::media {

/// The offsets in `file` at which the JPEG's multi-picture index (CIPA DC-007, in an APP2 segment) says that
/// more pictures start, in its order and unchecked. Nothing if there is no index that can be read. Sizes are
/// left out: a JPEG shows where it ends.
std::optional<std::vector<uint64_t>> multiPictureOffsets(std::string_view file, const Jpeg& jpeg);

}  // namespace quorvane::media

#endif
