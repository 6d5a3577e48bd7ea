#ifndef QUORVANE_MEDIA_EMBEDDED_BYTES_H
#define QUORVANE_MEDIA_EMBEDDED_BYTES_H

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quorvane::media {

/// `size` bytes at `offset`, or nothing where they do not all lie inside.
inline std::optional<std::string_view> part(std::string_view bytes, uint64_t offset, uint64_t size) {
    if (offset > bytes.size() || size > bytes.size() - offset) return std::nullopt;
    return bytes.substr(static_cast<size_t>(offset), static_cast<size_t>(size));
}

/// The bytes from `offset` on, `size` of them at most; none where it lies outside.
inline std::string_view cut(std::string_view bytes, uint64_t offset, uint64_t size = UINT64_MAX) {
    const uint64_t begin = std::min<uint64_t>(offset, bytes.size());
    return *part(bytes, begin, std::min<uint64_t>(size, bytes.size() - begin));
}

inline bool startsWith(std::string_view bytes, std::string_view start) {
    return bytes.substr(0, start.size()) == start;
}

inline bool endsWith(std::string_view bytes, std::string_view end) {
    return bytes.size() >= end.size() && bytes.substr(bytes.size() - end.size()) == end;
}

/// Whole numbers at an offset that lies inside with all its bytes, or nothing.
inline std::optional<uint64_t> littleEndian(std::string_view bytes, uint64_t offset, int count) {
    const auto field = part(bytes, offset, static_cast<uint64_t>(count));
    if (!field) return std::nullopt;
    uint64_t value = 0;
    for (size_t i = field->size(); i-- > 0;) value = value << 8 | static_cast<uint8_t>((*field)[i]);
    return value;
}

inline std::optional<uint64_t> bigEndian(std::string_view bytes, uint64_t offset, int count) {
    const auto field = part(bytes, offset, static_cast<uint64_t>(count));
    if (!field) return std::nullopt;
    uint64_t value = 0;
    for (const char c : *field) value = value << 8 | static_cast<uint8_t>(c);
    return value;
}

/// The type of a picture or film by its first bytes, such as "image/jpeg"; "" for others.
std::string_view mimeOf(std::string_view bytes);

/// The name that people know such a type by, such as "JPEG"; "" for others.
std::string_view formatName(std::string_view mime);

/// RFC 4648's base 64, white space between the letters passed over, the padding at the end optional; nothing
/// for other letters.
std::optional<std::string> fromBase64(std::string_view text);

/// A number as XMP writes it, whole and finite with nothing behind it, or nothing.
std::optional<double> toNumber(std::string_view text);

}  // namespace quorvane::media

#endif
