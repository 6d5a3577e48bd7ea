#ifndef QUORVANE_TESTS_SUPPORT_PHOTO_WRITERS_STEREO_H
#define QUORVANE_TESTS_SUPPORT_PHOTO_WRITERS_STEREO_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "media/embedded/embedded.h"
#include "media/picture/image.h"

namespace quorvane::test {

// Files with two views of a scene. `left` and `right` are whole JPEG files.

struct MpoOptions {
    std::string preview;  ///< a JPEG listed between the views as a large thumbnail
    std::string third;    ///< one more view
    bool big_endian = true;
    uint32_t type = 0x020002;  ///< of the views in the index
    int64_t offset_error = 0;  ///< of the right view in the index
    size_t padding = 0;        ///< zeroes behind the left view
};
std::string mpoFile(const std::string& left, const std::string& right, const MpoOptions& options = {});

struct LifOptions {
    std::string disparity;  ///< a picture file; none where it is empty
    bool jpeg_is_right = false;
    bool spaces = true;  ///< in the JSON, behind colons and commas
    std::optional<uint32_t> trailer_size;
    std::optional<std::string> json;  ///< in place of the true one
};
std::string lifFile(const std::string& left, const std::string& right, const LifOptions& options = {});

/// The older kind, with the right view in extended XMP and no trailer.
std::string lifXmpFile(const std::string& left, const std::string& right);

/// With `panorama` unset, what is left is a JPEG with an unblurred photo and no depth.
std::string vrPhotoFile(const std::string& left, const std::string& right, bool panorama = true);

/// Both views in one picture, without a word about it.
media::RgbImage joined(const media::RgbImage& left, const media::RgbImage& right,
                       const media::PairLayout& layout);

/// The JPEG with the block of a JPS file; `layout` and `type` are the block's codes.
std::string jpsFile(const std::string& jpeg, uint8_t flags, uint8_t layout = 2, uint8_t type = 1);

}  // namespace quorvane::test

#endif
