#include "media/embedded/jpeg.h"

#include <cstring>

#include "media/embedded/bytes.h"

namespace quorvane::media {
namespace {

constexpr uint8_t kStartOfImage = 0xd8, kEndOfImage = 0xd9, kStartOfScan = 0xda, kApp1 = 0xe1;

// Hundreds of times what extended XMP takes in the largest photos; of empty segments a file could hold so
// many that their list outgrows it.
constexpr size_t kMostSegments = 65'536;

/// Markers that stand alone, without a length.
bool standsAlone(uint8_t marker) { return marker == 0x01 || (marker >= 0xd0 && marker <= 0xd8); }

/// The first marker in entropy-coded data at or behind `at`; the file's end where there is none.
uint64_t behindEntropyCoded(std::string_view file, uint64_t at) {
    while (at + 1 < file.size()) {
        const void* found = std::memchr(file.data() + at, 0xff, static_cast<size_t>(file.size() - 1 - at));
        if (found == nullptr) break;
        at = static_cast<uint64_t>(static_cast<const char*>(found) - file.data());
        const uint8_t next = static_cast<uint8_t>(file[static_cast<size_t>(at + 1)]);
        // FF 00 is a coded FF, FF FF fills, restart markers part the data.
        if (next != 0x00 && next != 0xff && !(next >= 0xd0 && next <= 0xd7)) return at;
        at += next == 0xff ? 1 : 2;
    }
    return file.size();
}

}  // namespace

std::optional<Jpeg> walkJpeg(std::string_view file, uint64_t begin) {
    if (bigEndian(file, begin, 3) != 0xffd8ffu) return std::nullopt;
    Jpeg jpeg;
    jpeg.begin = begin;
    jpeg.end = file.size();
    bool scanned = false;
    uint64_t at = begin + 2;
    while (const auto start = bigEndian(file, at, 2)) {
        const uint8_t marker = static_cast<uint8_t>(*start);
        if (*start >> 8 != 0xff) break;  // neither a marker nor entropy-coded data
        if (marker == 0xff) {            // fill
            ++at;
            continue;
        }
        at += 2;
        if (marker == kEndOfImage) {
            jpeg.end = at;
            jpeg.complete = true;
            break;
        }
        // Another picture starts where this one should have ended.
        if (marker == kStartOfImage || marker == 0x00) break;
        if (standsAlone(marker)) continue;
        const auto length = bigEndian(file, at, 2);
        if (!length || *length < 2) break;
        const auto body = part(file, at + 2, *length - 2);
        if (!body) break;
        if (!scanned && jpeg.segments.size() < kMostSegments) jpeg.segments.push_back({marker, *body});
        at += *length;
        if (marker == kStartOfScan) {
            scanned = true;
            at = behindEntropyCoded(file, at);
        }
    }
    return jpeg;
}

int jpegScans(std::string_view file) {
    if (!startsWith(file, "\xff\xd8")) return 0;
    int scans = 0;
    size_t at = 2;
    // Between segments, as within a scan's data, the next marker counts.
    while ((at = file.find('\xff', at)) < file.size() - 1) {
        const auto marker = static_cast<uint8_t>(file[at + 1]);
        if (marker == kEndOfImage) break;
        scans += marker == kStartOfScan;
        // A fill byte may be the start of a marker.
        if (marker == 0xff)
            ++at;
        else if (marker == 0x00 || standsAlone(marker))
            at += 2;
        else
            at += 2 + bigEndian(file, at + 2, 2).value_or(0);
    }
    return scans;
}

std::optional<TiffDirectory> exifDirectory(const Jpeg& jpeg) {
    using namespace std::string_view_literals;
    constexpr auto kSignature = "Exif\0\0"sv;
    for (const JpegSegment& segment : jpeg.segments) {
        if (segment.marker != kApp1 || !startsWith(segment.body, kSignature)) continue;
        if (auto directory = TiffDirectory::read(segment.body.substr(kSignature.size()))) return directory;
    }
    return std::nullopt;
}

std::optional<int> exifOrientation(const Jpeg& jpeg) {
    constexpr uint16_t kOrientation = 0x0112;
    const auto directory = exifDirectory(jpeg);
    if (!directory) return std::nullopt;
    // Usually of 16 bit, but some writers take 32.
    const std::string_view field = directory->field(kOrientation);
    const auto value = directory->number(field, 0, field.size() < 4 ? 2 : 4);
    if (!value || *value < 1 || *value > 8) return std::nullopt;
    return static_cast<int>(*value);
}

PixelSize jpegSize(const Jpeg& jpeg) {
    for (const JpegSegment& segment : jpeg.segments) {
        // SOF0 to SOF15; three codes among them are other markers.
        const uint8_t m = segment.marker;
        if (m < 0xc0 || m > 0xcf || m == 0xc4 || m == 0xc8 || m == 0xcc) continue;
        return {static_cast<int>(bigEndian(segment.body, 3, 2).value_or(0)),
                static_cast<int>(bigEndian(segment.body, 1, 2).value_or(0))};
    }
    return {};
}

}  // namespace quorvane::media
