#ifndef QUORVANE_MEDIA_EMBEDDED_PNG_H
#define QUORVANE_MEDIA_EMBEDDED_PNG_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quorvane::media {

/// How many bytes the PNG file that `bytes` start with takes; nothing where it does not end inside.
std::optional<uint64_t> pngSize(std::string_view bytes);

/// Bits a sample, as its header says; nothing for other files.
std::optional<int> pngBits(std::string_view bytes);

/// A PNG file without its compressed texts, which nothing here reads and libvips would unpack, however much
/// they unpack to. Nothing where `bytes` have none, so that a file without them need not be copied.
std::optional<std::string> withoutPngTexts(std::string_view bytes);

}  // namespace quorvane::media

#endif
