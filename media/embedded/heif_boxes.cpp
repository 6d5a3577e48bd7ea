#include "media/embedded/heif_boxes.h"

#include <optional>
#include <vector>

#include "media/embedded/bytes.h"
#include "media/embedded/orientation.h"

// The boxes of ISO/IEC 14496-12 and, for the properties, ISO/IEC 23008-12.

namespace quorvane::media {
namespace {

using Items = std::map<uint32_t, HeifItem>;

constexpr size_t kMostItems = 10'000;

struct Box {
    std::string_view type;
    std::string_view body;
};

/// Takes the first box off `rest`; nothing where there is no whole one.
std::optional<Box> takeBox(std::string_view* rest) {
    const auto short_size = bigEndian(*rest, 0, 4);
    const auto type = part(*rest, 4, 4);
    if (!short_size || !type) return std::nullopt;
    uint64_t header = 8, size = *short_size;
    if (size == 0) size = rest->size();
    if (size == 1) {
        size = bigEndian(*rest, 8, 8).value_or(0);
        header = 16;
    }
    if (size < header) return std::nullopt;
    const auto body = part(*rest, header, size - header);
    if (!body) return std::nullopt;
    rest->remove_prefix(size);
    return Box{*type, *body};
}

/// The body of the first box of that type; empty where there is none.
std::string_view bodyOf(std::string_view type, std::string_view boxes) {
    while (const auto box = takeBox(&boxes))
        if (box->type == type) return box->body;
    return {};
}

/// Reads numbers one after the other. Behind the end they are 0 and `failed` is set.
struct Reader {
    std::string_view bytes;
    uint64_t at = 0;
    bool failed = false;

    uint64_t next(int count) {
        if (count == 0) return 0;
        const auto value = bigEndian(bytes, at, count);
        if (!value) failed = true;
        at += static_cast<uint64_t>(count);
        return value.value_or(0);
    }
};

/// What an irot box, in quarters against the clock, or an imir box, by its axis, does to a picture.
Turn turnOf(const Box& box) {
    const uint64_t value = bigEndian(box.body, 0, 1).value_or(0);
    if (box.type == "imir") return (value & 1) == 1 ? kMirrored : kFlipped;
    constexpr Turn kQuarters[] = {0, kClockwise270, kClockwise180, kClockwise90};
    return kQuarters[value & 3];
}

void readProperties(std::string_view iprp, Items* items) {
    std::vector<Box> properties;
    std::string_view ipco = bodyOf("ipco", iprp);
    constexpr size_t kMostProperties = 0x7fff;  // an association has no more bits
    while (const auto box = takeBox(&ipco)) {
        if (properties.size() == kMostProperties) break;
        properties.push_back(*box);
    }
    Reader ipma = {bodyOf("ipma", iprp)};
    const uint64_t version_and_flags = ipma.next(4);
    const int id_bytes = version_and_flags >> 24 == 0 ? 2 : 4;
    const bool long_index = (version_and_flags & 1) != 0;
    const uint64_t count = ipma.next(4);
    for (uint64_t i = 0; i < count && !ipma.failed && items->size() < kMostItems; ++i) {
        HeifItem& item = (*items)[static_cast<uint32_t>(ipma.next(id_bytes))];
        for (uint64_t left = ipma.next(1); left > 0 && !ipma.failed; --left) {
            const uint64_t index = long_index ? ipma.next(2) & 0x7fff : ipma.next(1) & 0x7f;
            if (index == 0 || index > properties.size()) continue;
            const Box& property = properties[index - 1];
            if (property.type == "auxC") {
                const std::string_view text = property.body.substr(property.body.size() < 4 ? 0 : 4);
                item.aux_type = text.substr(0, text.find('\0'));
            } else if (property.type == "irot" || property.type == "imir") {
                item.turned = true;
                item.orientation = exifOfTurn(followedBy(turnOfExif(item.orientation), turnOf(property)));
            }
        }
    }
}

void readLocations(std::string_view file, std::string_view body, Items* items) {
    Reader iloc = {body};
    const uint64_t version = iloc.next(4) >> 24;
    const uint64_t sizes = iloc.next(2);
    const int offset_bytes = sizes >> 12 & 15, length_bytes = sizes >> 8 & 15, base_bytes = sizes >> 4 & 15;
    const int index_bytes = version == 0 ? 0 : sizes & 15;
    if (version > 2 || offset_bytes > 8 || length_bytes > 8 || base_bytes > 8 || index_bytes > 8) return;
    // Extents without any bytes of their own would be a loop without input.
    if (offset_bytes + length_bytes == 0) return;
    const uint64_t count = iloc.next(version < 2 ? 2 : 4);
    for (uint64_t i = 0; i < count && !iloc.failed; ++i) {
        const auto item = items->find(static_cast<uint32_t>(iloc.next(version < 2 ? 2 : 4)));
        const uint64_t construction = version == 0 ? 0 : iloc.next(2) & 15;
        iloc.next(2);  // where the data is; always this file
        const uint64_t base = iloc.next(base_bytes);
        const uint64_t extents = iloc.next(2);
        for (uint64_t k = 0; k < extents && !iloc.failed; ++k) {
            iloc.next(index_bytes);
            const uint64_t offset = iloc.next(offset_bytes), length = iloc.next(length_bytes);
            // Other constructions count from a box or from other items.
            if (iloc.failed || item == items->end() || construction != 0) continue;
            if (offset <= UINT64_MAX - base && part(file, base + offset, length))
                item->second.bytes += length;
        }
    }
}

/// Gives a picture that is put together of others, such as a grid of tiles, the bytes of those.
void addPieces(std::string_view iref, Items* items) {
    const int id_bytes = bigEndian(iref, 0, 1) == 0u ? 2 : 4;
    iref.remove_prefix(iref.size() < 4 ? iref.size() : 4);
    while (const auto box = takeBox(&iref)) {
        if (box->type != "dimg") continue;
        Reader reference = {box->body};
        const auto whole = items->find(static_cast<uint32_t>(reference.next(id_bytes)));
        uint64_t bytes = 0;
        for (uint64_t left = reference.next(2); left > 0 && !reference.failed; --left) {
            const auto piece = items->find(static_cast<uint32_t>(reference.next(id_bytes)));
            if (piece != items->end()) bytes += piece->second.bytes;
        }
        if (whole != items->end() && whole->second.bytes == 0) whole->second.bytes = bytes;
    }
}

/// Of ISO/IEC 23008-12's stereo pair groups, which name the left view first, the first one.
void readStereoGroup(std::string_view grpl, HeifItems* items) {
    Reader group = {bodyOf("ster", grpl)};
    group.next(4);  // version and flags
    group.next(4);  // the group's own ID
    if (group.next(4) < 2) return;
    const auto left = static_cast<uint32_t>(group.next(4)), right = static_cast<uint32_t>(group.next(4));
    if (group.failed) return;
    items->left_view = left;
    items->right_view = right;
}

}  // namespace

HeifItems readHeifItems(std::string_view file) {
    HeifItems items;
    std::string_view meta = bodyOf("meta", file);
    meta.remove_prefix(meta.size() < 4 ? meta.size() : 4);  // its version and flags
    const std::string_view pitm = bodyOf("pitm", meta);
    const int id_bytes = bigEndian(pitm, 0, 1) == 0u ? 2 : 4;
    items.primary = static_cast<uint32_t>(bigEndian(pitm, 4, id_bytes).value_or(0));
    readProperties(bodyOf("iprp", meta), &items.by_id);
    readLocations(file, bodyOf("iloc", meta), &items.by_id);
    addPieces(bodyOf("iref", meta), &items.by_id);
    readStereoGroup(bodyOf("grpl", meta), &items);
    return items;
}

}  // namespace quorvane::media
