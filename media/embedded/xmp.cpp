#include "media/embedded/xmp.h"

#include <algorithm>
#include <cstddef>

#include "media/embedded/bytes.h"

namespace quorvane::media {
namespace {

using namespace std::string_view_literals;

std::string_view trimmed(std::string_view text) {
    constexpr auto kSpace = " \t\r\n"sv;
    const size_t first = text.find_first_not_of(kSpace);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kSpace) - first + 1);
}

/// Puts the pieces of the extended packet `guid` together, in whatever order they come; a piece may come
/// twice. "" with a remark where they do not cover it.
std::string extendedPacket(const Jpeg& jpeg, std::string_view guid, std::vector<std::string>* remarks) {
    constexpr auto kSignature = "http://ns.adobe.com/xmp/extension/\0"sv;
    constexpr uint64_t kGuidSize = 32;
    using Piece = std::pair<uint64_t, std::string_view>;  // offset and bytes
    std::vector<Piece> pieces;
    std::optional<uint64_t> full;
    size_t held = 0;
    const auto refuse = [&](const char* why) {
        remarks->push_back(std::string("extended XMP: ") + why);
        return std::string();
    };
    for (const JpegSegment& segment : jpeg.segments) {
        if (segment.marker != 0xe1 || !startsWith(segment.body, kSignature)) continue;
        const std::string_view body = segment.body.substr(kSignature.size());
        if (body.substr(0, kGuidSize) != guid) continue;
        const auto length = bigEndian(body, kGuidSize, 4), offset = bigEndian(body, kGuidSize + 4, 4);
        if (!length || !offset) return refuse("a piece without its place");
        if (full && *full != *length) return refuse("its pieces disagree on its length");
        full = length;
        pieces.emplace_back(*offset, body.substr(kGuidSize + 8));
        held += pieces.back().second.size();
    }
    if (!full) return refuse("named, but no piece of that GUID is there");
    std::sort(pieces.begin(), pieces.end());
    pieces.erase(std::unique(pieces.begin(), pieces.end()), pieces.end());
    std::string packet;
    packet.reserve(held);
    for (const auto& [offset, bytes] : pieces) {
        if (offset != packet.size())
            return refuse(offset > packet.size() ? "pieces are missing" : "pieces overlap");
        packet += bytes;
    }
    if (packet.size() < *full) return refuse("pieces are missing");
    if (packet.size() > *full) return refuse("its pieces are longer than it");
    return packet;
}

}  // namespace

const XmpNode* Xmp::find(std::string_view ns, std::string_view name, const XmpNode* ancestor) const {
    const size_t first = ancestor == nullptr ? 0 : static_cast<size_t>(ancestor - m_nodes.data()) + 1;
    const size_t last = ancestor == nullptr ? m_nodes.size() : ancestor->end;
    for (size_t i = first; i < last; ++i)
        if (m_nodes[i].name == name && m_nodes[i].ns == ns) return &m_nodes[i];
    return nullptr;
}

std::string_view Xmp::text(std::string_view ns, std::string_view name, const XmpNode* ancestor) const {
    const XmpNode* node = find(ns, name, ancestor);
    return node == nullptr ? std::string_view() : trimmed(node->text);
}

Xmp xmpOf(const Jpeg& jpeg, std::vector<std::string>* remarks) {
    // One is usual, and some editors leave another.
    constexpr int kMostPackets = 16;
    Xmp xmp;
    int packets = 0;
    for (const JpegSegment& segment : jpeg.segments) {
        constexpr auto kSignature = "http://ns.adobe.com/xap/1.0/\0"sv;
        if (segment.marker != 0xe1 || !startsWith(segment.body, kSignature)) continue;
        if (++packets > kMostPackets) break;
        const std::string fault = xmp.add(segment.body.substr(kSignature.size()));
        if (!fault.empty()) remarks->push_back("XMP: " + fault);
    }
    const std::string guid(xmp.text("http://ns.adobe.com/xmp/note/", "HasExtendedXMP"));
    if (guid.empty()) return xmp;
    const std::string packet = extendedPacket(jpeg, guid, remarks);
    if (packet.empty()) return xmp;
    const std::string fault = xmp.add(packet);
    if (!fault.empty()) remarks->push_back("extended XMP: " + fault);
    return xmp;
}

}  // namespace quorvane::media
