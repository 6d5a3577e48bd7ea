#ifndef QUORVANE_MEDIA_EMBEDDED_APPENDED_H
#define QUORVANE_MEDIA_EMBEDDED_APPENDED_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "media/embedded/container.h"
#include "media/embedded/depth_terms.h"

namespace quorvane::media {

/// A file appended to the photo and listed in the photo's directory.
struct AppendedItem {
    std::string_view semantic, mime, uri;  ///< as the directory says; "" where it does not
    std::optional<uint64_t> length;
    uint64_t padding = 0;

    uint64_t offset = 0;
    std::string_view bytes;  ///< a whole picture, or what starts as a film; empty: not found
    std::string remark;      ///< what is wrong with it, such as "lies outside the file"
};

/// The items of the first directory in these namespaces, at most 31; empty without such a directory. Its
/// first entry, the photo itself, is left out.
///
/// Items follow each other behind the photo, so one wrong length misplaces all that follow. Each item is
/// therefore looked for at the place computed from the photo's end, at the place computed from the file's
/// end, and among the pictures that follow the photo one after the other. A picture of the listed length is
/// preferred; otherwise one of the listed type is taken at either computed place.
std::vector<AppendedItem> appendedItems(const PhotoFile& file, const Namespaces& namespaces);

/// Whether there is such a directory, even an empty one.
bool hasDirectory(const PhotoFile& file, const Namespaces& namespaces);

/// Whether it was found and is a picture, not a film.
bool isPicture(const AppendedItem& item);

/// The item as an inner image.
InnerImage innerImage(const AppendedItem& item, ImageRole role);

/// Adds a remark if an expected item cannot be used, such as "its depth item lies outside the file".
void addRemark(const AppendedItem& item, const char* what, Contents* contents);

}  // namespace quorvane::media

#endif
