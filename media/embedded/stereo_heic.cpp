#include "media/embedded/bytes.h"
#include "media/embedded/container.h"
#include "media/embedded/heif_boxes.h"

namespace quorvane::media {

/// What headsets and phones write in their spatial mode: two pictures and a stereo pair group that names
/// them.
void readStereoHeic(const PhotoFile& file, Contents* contents) {
    const std::string_view mime = mimeOf(file.bytes);
    if (mime != "image/heic" && mime != "image/avif") return;
    const HeifItems items = readHeifItems(file.bytes);
    if (items.left_view == 0 && items.right_view == 0) return;
    const auto known = [&items](uint32_t id) { return id != 0 && items.by_id.count(id) != 0; };
    if (items.left_view == items.right_view || !known(items.left_view) || !known(items.right_view)) {
        contents->remarks.emplace_back("its stereo pair names pictures that are not there");
        return;
    }
    const auto view = [&](uint32_t id) {
        StereoView named;
        named.where = "HEIF item " + std::to_string(id);
        named.heif_item = id;
        if (id != items.primary)
            contents->images.push_back(
                {ImageRole::kView, named.where, std::string(mime), items.at(id).bytes});
        return named;
    };
    StereoPair pair;
    pair.left = view(items.left_view);
    pair.right = view(items.right_view);
    contents->pair = std::move(pair);
}

}  // namespace quorvane::media
