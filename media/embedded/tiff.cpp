#include "media/embedded/tiff.h"

namespace quorvane::media {

std::optional<TiffDirectory> TiffDirectory::read(std::string_view tiff) {
    using namespace std::string_view_literals;
    TiffDirectory directory;
    directory.m_tiff = tiff;
    directory.m_big = startsWith(tiff, "MM\0*"sv);
    if (!directory.m_big && !startsWith(tiff, "II*\0"sv)) return std::nullopt;
    const auto start = directory.number(tiff, 4, 4);
    const auto count = start ? directory.number(tiff, *start, 2) : std::nullopt;
    if (!count) return std::nullopt;
    directory.m_entries = *start + 2;
    directory.m_count = *count;
    return directory;
}

std::string_view TiffDirectory::field(uint16_t tag) const {
    // By type: BYTE, ASCII, SHORT, LONG, RATIONAL, SBYTE, UNDEFINED, SSHORT, SLONG.
    constexpr uint64_t kSizes[] = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4};
    for (uint64_t i = 0; i < m_count; ++i) {
        const auto entry = part(m_tiff, m_entries + 12 * i, 12);
        if (!entry) break;
        if (number(*entry, 0, 2) != tag) continue;
        const uint64_t type = *number(*entry, 2, 2), count = *number(*entry, 4, 4);
        if (type >= sizeof kSizes / sizeof *kSizes) break;
        const uint64_t size = count * kSizes[type];
        // Up to four bytes stand in the entry, more elsewhere.
        const auto value = size <= 4 ? part(*entry, 8, size) : part(m_tiff, *number(*entry, 8, 4), size);
        return value.value_or(std::string_view());
    }
    return {};
}

}  // namespace quorvane::media
