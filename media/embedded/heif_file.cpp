#include "media/embedded/heif_file.h"

#include <algorithm>
#include <new>
#include <stdexcept>
#include <vector>

namespace quorvane::media {

void throwIfFailed(const heif_error& error) {
    if (error.code == heif_error_Ok) return;
    std::string text = error.message == nullptr ? "libheif gave no reason" : error.message;
    std::replace_if(
        text.begin(), text.end(), [](unsigned char c) { return c < ' '; }, ' ');
    text.erase(text.find_last_not_of(' ') + 1);
    throw std::runtime_error(text);
}

HeifFile openHeif(std::string_view file) {
    HeifFile opened = {HeifContext(heif_context_alloc()), nullptr};
    if (opened.context == nullptr) throw std::bad_alloc();
    throwIfFailed(
        heif_context_read_from_memory_without_copy(opened.context.get(), file.data(), file.size(), nullptr));
    heif_image_handle* handle = nullptr;
    throwIfFailed(heif_context_get_primary_image_handle(opened.context.get(), &handle));
    opened.primary.reset(handle);
    return opened;
}

int pageOf(heif_context* context, uint32_t item) {
    const int count = heif_context_get_number_of_top_level_images(context);
    std::vector<heif_item_id> ids(static_cast<size_t>(std::max(count, 0)));
    heif_context_get_list_of_top_level_image_IDs(context, ids.data(), count);
    const auto found = std::find(ids.begin(), ids.end(), item);
    if (found == ids.end())
        throw std::runtime_error("HEIF item " + std::to_string(item) + " is no picture of its own");
    return static_cast<int>(found - ids.begin());
}

HeifHandle auxiliaryPicture(const heif_image_handle* primary, uint32_t item) {
    heif_image_handle* handle = nullptr;
    throwIfFailed(heif_image_handle_get_auxiliary_image_handle(primary, item, &handle));
    return HeifHandle(handle);
}

}  // namespace quorvane::media
