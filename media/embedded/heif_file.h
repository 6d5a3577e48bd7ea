#ifndef QUORVANE_MEDIA_EMBEDDED_HEIF_FILE_H
#define QUORVANE_MEDIA_EMBEDDED_HEIF_FILE_H

#include <libheif/heif.h>

#include <memory>
#include <string>
#include <string_view>

namespace quorvane::media {

struct HeifDeleter {
    void operator()(heif_context* context) const { heif_context_free(context); }
    void operator()(heif_image_handle* handle) const { heif_image_handle_release(handle); }
    void operator()(heif_image* image) const { heif_image_release(image); }
};
using HeifContext = std::unique_ptr<heif_context, HeifDeleter>;
using HeifHandle = std::unique_ptr<heif_image_handle, HeifDeleter>;
using HeifImage = std::unique_ptr<heif_image, HeifDeleter>;

/// Throws std::runtime_error with libheif's message unless `error` says that all went well.
void throwIfFailed(const heif_error& error);

struct HeifFile {
    HeifContext context;
    HeifHandle primary;  ///< the photo
};

/// Opens a file, which must outlive what is returned. Throws std::runtime_error.
HeifFile openHeif(std::string_view file);

/// The place of a picture that stands for itself among those that do, from 0. Throws std::runtime_error where
/// it is none of them.
int pageOf(heif_context* context, uint32_t item);

/// An auxiliary picture of `primary`, the depth or another. Throws std::runtime_error.
HeifHandle auxiliaryPicture(const heif_image_handle* primary, uint32_t item);

}  // namespace quorvane::media

#endif
