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

/// A file behind the photo that the photo's directory lists.
struct AppendedItem {
    std::string_view semantic, mime, uri;  ///< as the directory says; "" where it does not
    std::optional<uint64_t> length;
    uint64_t padding = 0;

    uint64_t offset = 0;
    std::string_view bytes;  ///< a whole picture, or what starts as a film; empty: not found
    std::string remark;      ///< what is wrong with it, such as "lies outside the file"
};

/// The items of the first directory in these namespaces, without the photo itself, which comes first there;
/// at most 31. Empty without such a directory.
///
/// They lie in order behind the photo's own end, so one wrong length misplaces all behind it. An item is
/// therefore looked for forwards from there, backwards from the file's end, and among the pictures that
/// follow each other behind the photo, and is found where a picture of its length lies, else where one of
/// its type starts.
std::vector<AppendedItem> appendedItems(const PhotoFile& file, const Namespaces& namespaces);

/// Whether there is such a directory, be it empty.
bool hasDirectory(const PhotoFile& file, const Namespaces& namespaces);

/// Whether it was found and is a picture, not a film.
bool isPicture(const AppendedItem& item);

/// The item as an inner image.
InnerImage innerImage(const AppendedItem& item, ImageRole role);

/// What to say of an item that was expected, such as "its depth item lies outside the file".
void addRemark(const AppendedItem& item, const char* what, Contents* contents);

}  // namespace quorvane::media

#endif
