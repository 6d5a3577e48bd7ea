#ifndef QUORVANE_MEDIA_EMBEDDED_HEIF_BOXES_H
#define QUORVANE_MEDIA_EMBEDDED_HEIF_BOXES_H

#include <cstdint>
#include <map>
#include <string_view>

namespace quorvane::media {

// Facts about a file's items that libheif 1.15 reads but has no functions for.

struct HeifItem {
    std::string_view aux_type;  ///< of the auxC property; empty for what is no auxiliary picture
    bool turned = false;        ///< it has an irot or imir property
    int orientation = 1;        ///< their effect, as Exif's orientation
    uint64_t bytes = 0;         ///< that the file holds of it; 0 for what is made of other items
};

struct HeifItems {
    uint32_t primary = 0;                ///< the ID of the photo
    std::map<uint32_t, HeifItem> by_id;  ///< at most 10,000

    /// The left and the right view of the first stereo pair; zeroes without one.
    uint32_t left_view = 0, right_view = 0;

    /// For an ID that the boxes do not name, an item with nothing set.
    HeifItem at(uint32_t id) const {
        const auto found = by_id.find(id);
        return found == by_id.end() ? HeifItem() : found->second;
    }
};

/// Reading stops at the first broken box; what came before it is kept.
HeifItems readHeifItems(std::string_view file);

}  // namespace quorvane::media

#endif
