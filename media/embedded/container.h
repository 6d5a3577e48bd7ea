#ifndef QUORVANE_MEDIA_EMBEDDED_CONTAINER_H
#define QUORVANE_MEDIA_EMBEDDED_CONTAINER_H

#include <optional>
#include <string_view>

#include "media/embedded/embedded.h"
#include "media/embedded/jpeg.h"
#include "media/embedded/xmp.h"

namespace quorvane::media {

/// What every container reader is given.
struct PhotoFile {
    std::string_view bytes;
    std::optional<Jpeg> jpeg;  ///< at the start of the file
    Xmp xmp;                   ///< of that JPEG
};

/// Adds what is wrong with the XMP to `remarks`.
PhotoFile openPhoto(std::string_view bytes, std::vector<std::string>* remarks);

/// Reads one kind of container. Adds its images to `contents->images` and what is wrong with it to
/// `contents->remarks`, and sets the depth, the unblurred photo and the stereo pair; lookInside() ignores
/// what an earlier container had. Leaves files of other kinds alone, without a remark. Throws only
/// std::bad_alloc.
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
void readLif(const PhotoFile& file, Contents* contents);
void readStereoHeic(const PhotoFile& file, Contents* contents);
void readMpo(const PhotoFile& file, Contents* contents);
void readVrPhoto(const PhotoFile& file, Contents* contents);
void readJps(const PhotoFile& file, Contents* contents);

}  // namespace quorvane::media

#endif
