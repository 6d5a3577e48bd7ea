#include "media/embedded/appended.h"

#include <algorithm>

#include "media/embedded/bytes.h"
#include "media/embedded/png.h"

namespace quorvane::media {
namespace {

// Phones list up to six. Each is looked for in passes over the file.
constexpr size_t kMostItems = 32;

std::optional<uint64_t> wholeNumber(std::string_view text) {
    const auto value = toNumber(text);
    constexpr double kMost = 1e15;
    if (!value || *value < 0 || *value > kMost) return std::nullopt;
    return static_cast<uint64_t>(*value);
}

/// What starts at an offset.
struct Found {
    std::string_view mime;         ///< "" for what is neither a picture nor a film
    std::optional<uint64_t> size;  ///< by its own structure
    bool knows_size = true;        ///< files of its type say where they end
};

Found foundAt(std::string_view file, uint64_t offset) {
    Found found;
    if (offset >= file.size()) return found;
    const std::string_view bytes = cut(file, offset);
    found.mime = mimeOf(bytes);
    if (found.mime == "image/jpeg") {
        const auto jpeg = walkJpeg(bytes);
        if (jpeg && jpeg->complete) found.size = jpeg->end;
    } else if (found.mime == "image/png") {
        found.size = pngSize(bytes);
    } else if (found.mime == "image/webp") {
        const auto size = littleEndian(bytes, 4, 4);
        if (size && part(bytes, 0, *size + 8)) found.size = *size + 8;
    } else {
        found.knows_size = false;
    }
    return found;
}

struct Candidate {
    uint64_t offset;
    Found found;
};

class Placing {
  public:
    Placing(const PhotoFile& file, uint64_t photo_padding, std::vector<AppendedItem>* items)
        : m_file(file.bytes), m_items(*items), m_forwards(items->size()), m_backwards(items->size()) {
        // The sums stay far below 64 bits: a length is at most 10^15, and there are few.
        uint64_t at = file.jpeg->end + photo_padding;
        for (size_t i = 0; i < m_items.size(); ++i) {
            m_forwards[i] = Candidate{at, foundAt(m_file, at)};
            if (!m_items[i].length) break;
            at += *m_items[i].length + m_items[i].padding;
        }
        // A photo without an end of its own may have the items anywhere behind its start.
        const uint64_t first = file.jpeg->complete ? file.jpeg->end : file.jpeg->begin + 1;
        uint64_t behind = m_file.size();
        for (size_t i = m_items.size(); i-- > 0;) {
            const uint64_t taken = m_items[i].length.value_or(0) + m_items[i].padding;
            if (!m_items[i].length || taken > behind - first) break;
            behind -= taken;
            m_backwards[i] = Candidate{behind, foundAt(m_file, behind)};
        }
        for (uint64_t next = file.jpeg->end; m_pictures.size() < kMostItems;) {
            const Found found = foundAt(m_file, next);
            if (!found.size) break;
            m_pictures.push_back({next, found});
            next += *found.size;
        }
    }

    void place() {
        // Those that fit first: what is left must not take a place of theirs.
        for (size_t i = 0; i < m_items.size(); ++i)
            if (m_items[i].length != uint64_t{0}) placeWhereItFits(i);
        for (size_t i = 0; i < m_items.size(); ++i)
            if (m_items[i].bytes.empty() && m_items[i].length != uint64_t{0}) placeWhereItStarts(i);
        // Without bytes of its own an item shares those of the one before it.
        for (size_t i = 0; i < m_items.size(); ++i) {
            if (m_items[i].length != uint64_t{0}) continue;
            if (i == 0 || m_items[i - 1].bytes.empty()) {
                m_items[i].remark = "has no bytes";
                continue;
            }
            m_items[i].offset = m_items[i - 1].offset;
            m_items[i].bytes = m_items[i - 1].bytes;
        }
    }

  private:
    bool isTaken(uint64_t offset) const {
        return std::any_of(m_items.begin(), m_items.end(), [offset](const AppendedItem& item) {
            return !item.bytes.empty() && item.offset == offset;
        });
    }

    /// Whether what was found there is as long as the directory says; zeroes may follow it.
    bool fits(const AppendedItem& item, const Candidate& candidate) const {
        const Found& found = candidate.found;
        if (!item.length || found.mime.empty()) return false;
        const auto bytes = part(m_file, candidate.offset, *item.length);
        if (!bytes) return false;
        if (!found.knows_size) return true;
        return found.size && *found.size <= bytes->size() &&
               cut(*bytes, *found.size).find_first_not_of('\0') == std::string_view::npos;
    }

    void take(AppendedItem* item, uint64_t offset, uint64_t size) {
        item->offset = offset;
        item->bytes = cut(m_file, offset, size);
    }

    void placeWhereItFits(size_t i) {
        AppendedItem& item = m_items[i];
        std::vector<Candidate> candidates;
        for (const auto& computed : {m_forwards[i], m_backwards[i]})
            if (computed) candidates.push_back(*computed);
        candidates.insert(candidates.end(), m_pictures.begin(), m_pictures.end());
        for (const Candidate& candidate : candidates) {
            if (!fits(item, candidate) || isTaken(candidate.offset)) continue;
            take(&item, candidate.offset, candidate.found.size.value_or(*item.length));
            if (!m_forwards[i] || candidate.offset != m_forwards[i]->offset)
                item.remark = "does not lie where its directory puts it; it was found by its length";
            return;
        }
    }

    void placeWhereItStarts(size_t i) {
        AppendedItem& item = m_items[i];
        for (const auto& candidate : {m_forwards[i], m_backwards[i]}) {
            if (!candidate || !candidate->found.size || isTaken(candidate->offset)) continue;
            if (!item.mime.empty() && item.mime != candidate->found.mime) continue;
            take(&item, candidate->offset, *candidate->found.size);
            item.remark = "is not as long as its directory says";
            return;
        }
        const bool inside = m_forwards[i] && part(m_file, m_forwards[i]->offset, item.length.value_or(1));
        item.remark = inside ? "is no whole picture where its directory puts it" : "lies outside the file";
    }

    std::string_view m_file;
    std::vector<AppendedItem>& m_items;
    // What is where the lengths put each item, and the pictures that follow each other behind the photo.
    std::vector<std::optional<Candidate>> m_forwards, m_backwards;
    std::vector<Candidate> m_pictures;
};

/// The first directory in these namespaces; null without one.
const XmpNode* directoryOf(const Xmp& xmp, const Namespaces& namespaces) {
    const std::vector<const XmpNode*> directories = nodesOf(xmp, namespaces, "Directory", nullptr, 1);
    return directories.empty() ? nullptr : directories[0];
}

}  // namespace

bool hasDirectory(const PhotoFile& file, const Namespaces& namespaces) {
    return directoryOf(file.xmp, namespaces) != nullptr;
}

std::vector<AppendedItem> appendedItems(const PhotoFile& file, const Namespaces& namespaces) {
    const XmpNode* directory = directoryOf(file.xmp, namespaces);
    if (directory == nullptr || !file.jpeg) return {};
    const std::vector<XmpNode>& nodes = file.xmp.nodes();
    std::vector<AppendedItem> items;
    for (size_t i = static_cast<size_t>(directory - nodes.data()) + 1;
         i < directory->end && items.size() < kMostItems; ++i) {
        const XmpNode& entry = nodes[i];
        if (entry.ns != kRdf || entry.name != "li") continue;
        const auto property = [&](std::string_view name) {
            return textOf(file.xmp, namespaces, name, &entry);
        };
        AppendedItem item;
        item.semantic = property("Semantic");
        item.mime = property("Mime");
        item.uri = property("DataURI");
        item.length = wholeNumber(property("Length"));
        item.padding = wholeNumber(property("Padding")).value_or(0);
        items.push_back(std::move(item));
        i = entry.end - 1;
    }
    if (items.empty()) return {};
    const uint64_t photo_padding = items[0].padding;
    items.erase(items.begin());
    Placing(file, photo_padding, &items).place();
    return items;
}

bool isPicture(const AppendedItem& item) { return startsWith(mimeOf(item.bytes), "image/"); }

InnerImage innerImage(const AppendedItem& item, ImageRole role) {
    const std::string_view mime = mimeOf(item.bytes);
    InnerImage image;
    image.role = mime == "video/mp4" ? ImageRole::kVideo : role;
    image.where = std::string(formatName(mime)) + " at byte " + std::to_string(item.offset);
    image.mime = mime;
    image.bytes = item.bytes.size();
    return image;
}

void addRemark(const AppendedItem& item, const char* what, Contents* contents) {
    if (!item.remark.empty())
        contents->remarks.push_back(std::string(what) + " " + item.remark);
    else if (!isPicture(item))
        contents->remarks.push_back(std::string(what) + " is a film");
}

}  // namespace quorvane::media
