#include "media/picture/file_cost.h"

#include <cstddef>
#include <cstdint>

#include "media/embedded/bytes.h"

namespace quorvane::media {

int jpegScans(std::string_view bytes) {
    constexpr uint8_t kEscape = 0xff, kEnd = 0xd9, kScan = 0xda;
    // Stuffing, fill bytes and markers that stand alone.
    const auto has_no_length = [](uint8_t marker) {
        return marker <= 0x01 || (marker >= 0xd0 && marker <= 0xd8) || marker == kEscape;
    };
    if (!startsWith(bytes, "\xff\xd8")) return 0;
    int scans = 0;
    size_t at = 2;
    // Between segments, as within a scan's data, the next marker counts.
    while ((at = bytes.find(static_cast<char>(kEscape), at)) < bytes.size() - 1) {
        const auto marker = static_cast<uint8_t>(bytes[at + 1]);
        if (marker == kEnd) break;
        scans += marker == kScan;
        // A fill byte may be the start of a marker.
        if (marker == kEscape)
            ++at;
        else
            at += 2 + (has_no_length(marker) ? 0 : bigEndian(bytes, at + 2, 2).value_or(0));
    }
    return scans;
}

std::optional<std::string> withoutPngTexts(std::string_view bytes) {
    constexpr size_t kSignature = 8, kAround = 12;  // a chunk's length, type and checksum
    if (!startsWith(bytes, "\x89PNG\r\n\x1a\n")) return std::nullopt;
    std::optional<std::string> lean;
    size_t at = kSignature, kept = 0;  // what lies before `kept` has been copied or left out
    while (const auto length = bigEndian(bytes, at, 4)) {
        const auto chunk = part(bytes, at, *length + kAround);
        if (!chunk) break;
        const std::string_view type = chunk->substr(4, 4);
        if (type == "zTXt" || type == "iTXt") {
            if (!lean) lean.emplace();
            lean->append(bytes.substr(kept, at - kept));
            kept = at + chunk->size();
        }
        at += chunk->size();
    }
    if (lean) lean->append(bytes.substr(kept));
    return lean;
}

}  // namespace quorvane::media
