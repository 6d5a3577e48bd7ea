#ifndef QUORVANE_MEDIA_EMBEDDED_MPF_H
#define QUORVANE_MEDIA_EMBEDDED_MPF_H

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "media/embedded/jpeg.h"

namespace quorvane::media {

/// Where the multi-picture index (CIPA DC-007) in an APP2 segment of the JPEG says that more pictures of
/// `file` start, in its order and unchecked; nothing where there is no index that can be read. The size of
/// each is left out: a JPEG knows its own end.
std::optional<std::vector<uint64_t>> multiPictureOffsets(std::string_view file, const Jpeg& jpeg);

}  // namespace quorvane::media

#endif
