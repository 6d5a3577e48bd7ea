#include "media/picture/file_cost.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace quorvane::media {
namespace {

/// The big-endian number of `length` bytes at `at`.
size_t numberAt(const std::string& bytes, size_t at, size_t length) {
    size_t number = 0;
    for (size_t i = 0; i < length; ++i) number = number << 8 | static_cast<uint8_t>(bytes[at + i]);
    return number;
}

bool startsWith(const std::string& bytes, const char* signature, size_t length) {
    return bytes.compare(0, length, signature, length) == 0;
}

}  // namespace

int jpegScans(const std::string& bytes) {
    constexpr uint8_t kEscape = 0xff, kEnd = 0xd9, kScan = 0xda;
    // Stuffing, fill bytes and markers that stand alone.
    const auto has_no_length = [](uint8_t marker) {
        return marker <= 0x01 || (marker >= 0xd0 && marker <= 0xd8) || marker == kEscape;
    };
    if (!startsWith(bytes, "\xff\xd8", 2)) return 0;
    int scans = 0;
    size_t at = 2;
    // Between segments, as within a scan's data, the next marker counts.
    while ((at = bytes.find(static_cast<char>(kEscape), at)) < bytes.size() - 1) {
        const auto marker = static_cast<uint8_t>(bytes[at + 1]);
        if (marker == kEnd) break;
        scans += marker == kScan;
        const bool alone = has_no_length(marker) || bytes.size() - at < 4;
        // A fill byte may be the start of a marker.
        at += marker == kEscape ? 1 : alone ? 2 : 2 + numberAt(bytes, at + 2, 2);
    }
    return scans;
}

std::string withoutPngTexts(std::string bytes) {
    constexpr size_t kSignature = 8, kAround = 12;  // a chunk's length, type and checksum
    if (!startsWith(bytes, "\x89PNG\r\n\x1a\n", kSignature)) return bytes;
    size_t at = kSignature, kept = kSignature;
    const auto keep = [&](size_t length) {
        if (kept != at) std::memmove(&bytes[kept], &bytes[at], length);
        kept += length;
        at += length;
    };
    while (bytes.size() - at >= kAround) {
        const size_t length = kAround + numberAt(bytes, at, 4);
        if (length > bytes.size() - at) break;
        if (bytes.compare(at + 4, 4, "zTXt") == 0 || bytes.compare(at + 4, 4, "iTXt") == 0)
            at += length;
        else
            keep(length);
    }
    keep(bytes.size() - at);
    bytes.resize(kept);
    return bytes;
}

}  // namespace quorvane::media
