#ifndef QUORVANE_MEDIA_EMBEDDED_TIFF_H
#define QUORVANE_MEDIA_EMBEDDED_TIFF_H

#include <cstdint>
#include <optional>
#include <string_view>

#include "media/embedded/bytes.h"

namespace quorvane::media {

/// The first directory of a TIFF structure, such as Exif and the multi-picture index are.
class TiffDirectory {
  public:
    /// Nothing where none starts there.
    static std::optional<TiffDirectory> read(std::string_view tiff);

    /// The value's bytes; empty where the field is missing or lies outside.
    std::string_view field(uint16_t tag) const;

    /// A whole number of `count` bytes in the structure's byte order.
    std::optional<uint64_t> number(std::string_view bytes, uint64_t offset, int count) const {
        return m_big ? bigEndian(bytes, offset, count) : littleEndian(bytes, offset, count);
    }

  private:
    std::string_view m_tiff;
    bool m_big = false;
    uint64_t m_entries = 0, m_count = 0;
};

}  // namespace quorvane::media

#endif
