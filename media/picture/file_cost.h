#ifndef QUORVANE_MEDIA_PICTURE_FILE_COST_H
#define QUORVANE_MEDIA_PICTURE_FILE_COST_H

#include <optional>
#include <string>
#include <string_view>

namespace quorvane::media {

// What a picture file can cost its reader beyond its pixels: small parts that unpack to a lot of work. Any
// bytes will do; those of another format cost nothing here.

/// How many scans a JPEG file makes over its picture. A progressive one has about ten; each takes as long as
/// the whole picture, however short it is in the file.
int jpegScans(std::string_view bytes);

/// A PNG file without its compressed texts, which nothing here reads and libvips would unpack. Nothing where
/// `bytes` have none, so that a file without them need not be copied.
std::optional<std::string> withoutPngTexts(std::string_view bytes);

}  // namespace quorvane::media

#endif
