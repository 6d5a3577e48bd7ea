#include "media/embedded/mpf.h"

#include "media/embedded/bytes.h"
#include "media/embedded/tiff.h"

namespace quorvane::media {

std::optional<std::vector<IndexedPicture>> multiPictureIndex(std::string_view file, const Jpeg& jpeg) {
    using namespace std::string_view_literals;
    constexpr auto kSignature = "MPF\0"sv;
    constexpr uint8_t kApp2 = 0xe2;
    for (const JpegSegment& segment : jpeg.segments) {
        if (segment.marker != kApp2 || !startsWith(segment.body, kSignature)) continue;
        const std::string_view tiff = segment.body.substr(kSignature.size());
        const auto directory = TiffDirectory::read(tiff);
        if (!directory) continue;
        // Offsets count from the index's own byte order mark; 0 stands for the picture that holds it.
        const uint64_t origin = static_cast<uint64_t>(tiff.data() - file.data());
        constexpr uint16_t kEntries = 0xb002;
        constexpr uint64_t kEntrySize = 16, kOffset = 8;
        constexpr uint32_t kTypeBits = 0xffffff;
        const std::string_view entries = directory->field(kEntries);
        std::vector<IndexedPicture> pictures;
        for (uint64_t at = 0; at + kEntrySize <= entries.size(); at += kEntrySize) {
            const uint64_t offset = *directory->number(entries, at + kOffset, 4);
            const auto type = static_cast<uint32_t>(*directory->number(entries, at, 4)) & kTypeBits;
            pictures.push_back({offset == 0 ? 0 : origin + offset, type});
        }
        return pictures;
    }
    return std::nullopt;
}

}  // namespace quorvane::media
