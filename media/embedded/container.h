#ifndef QUORVANE_MEDIA_EMBEDDED_CONTAINER_H
#define QUORVANE_MEDIA_EMBEDDED_CONTAINER_H

#include <optional>
#include <string_view>

#include "media/embedded/embedded.h"
#include "media/embedded/jpeg.h"
#include "media/embedded/xmp.h"

namespace quorvane::media {

/// A file as all containers look at it.
struct PhotoFile {
    std::string_view bytes;
    std::optional<Jpeg> jpeg;  ///< that the file starts with
    Xmp xmp;                   ///< of that JPEG
};

/// Faults of the XMP are added to `remarks`.
PhotoFile openPhoto(std::string_view bytes, std::vector<std::string>* remarks);

/// What one container adds: its images to `contents->images`, its faults to `contents->remarks`, and its
/// depth and unblurred photo, which are ignored where an earlier container has found a depth. Files of
/// another kind are none of its business: it returns without a remark. Never throws but std::bad_alloc.
using ContainerReader = void (*)(const PhotoFile& file, Contents* contents);

struct Container {
    const char* name;
    ContainerReader read;
};

void readGDepth(const PhotoFile& file, Contents* contents);
void readXdm(const PhotoFile& file, Contents* contents);
void readDynamicDepth(const PhotoFile& file, Contents* contents);
void readGContainer(const PhotoFile& file, Contents* contents);
void readAppleHeic(const PhotoFile& file, Contents* contents);
void readAppleJpeg(const PhotoFile& file, Contents* contents);
void readSamsungTrailer(const PhotoFile& file, Contents* contents);
void readHuaweiTrailer(const PhotoFile& file, Contents* contents);

}  // namespace quorvane::media

#endif
