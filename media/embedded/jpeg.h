#ifndef QUORVANE_MEDIA_EMBEDDED_JPEG_H
#define QUORVANE_MEDIA_EMBEDDED_JPEG_H

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace quorvane::media {

struct JpegSegment {
    uint8_t marker;
    std::string_view body;  ///< behind the length
};

/// A JPEG picture somewhere in a file.
struct Jpeg {
    uint64_t begin = 0;
    uint64_t end = 0;                   ///< behind its own EOI; the file's end where that is missing
    bool complete = false;              ///< its EOI was found
    std::vector<JpegSegment> segments;  ///< those before the first scan, at most 65,536
};

/// Walks the JPEG that starts at `begin`: segments, entropy-coded data, to its own EOI and not to that of a
/// thumbnail or of a picture behind it. Nothing where no JPEG starts there.
std::optional<Jpeg> walkJpeg(std::string_view file, uint64_t begin = 0);

/// Exif's orientation, 1 to 8; 1 where none is given or it makes no sense.
int exifOrientation(const Jpeg& jpeg);

/// Whether there is an Exif orientation at all.
bool hasExifOrientation(const Jpeg& jpeg);

/// Pixels as its frame header says; zeroes without one.
struct PixelSize {
    int width = 0;
    int height = 0;
};
PixelSize jpegSize(const Jpeg& jpeg);

}  // namespace quorvane::media

#endif
