#ifndef QUORVANE_MEDIA_EMBEDDED_JPEG_H
#define QUORVANE_MEDIA_EMBEDDED_JPEG_H

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "media/embedded/tiff.h"

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

/// Walks the JPEG that starts at `begin` to its own EOI, past those of thumbnails in its segments. Nothing if
/// no JPEG starts there.
std::optional<Jpeg> walkJpeg(std::string_view file, uint64_t begin = 0);

/// How many scans a JPEG file makes over its picture; 0 for other files. A progressive one has about ten;
/// each takes as long as decoding the whole picture, however short it is in the file. Damage is passed over
/// as decoders pass over it, so that no scan hides behind it.
int jpegScans(std::string_view file);

/// Exif's directory of the photo; nothing where there is none that can be read.
std::optional<TiffDirectory> exifDirectory(const Jpeg& jpeg);

/// Exif's orientation, 1 to 8; nothing where none is given or it makes no sense.
std::optional<int> exifOrientation(const Jpeg& jpeg);

/// The size that the frame header gives; zeroes without one.
struct PixelSize {
    int width = 0;
    int height = 0;
};
PixelSize jpegSize(const Jpeg& jpeg);

}  // namespace quorvane::media

#endif
