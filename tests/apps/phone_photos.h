#ifndef QUORVANE_TESTS_APPS_PHONE_PHOTOS_H
#define QUORVANE_TESTS_APPS_PHONE_PHOTOS_H

#include <string>
#include <utility>
#include <vector>

#include "media/picture/image.h"
#include "support/photo_writers/apple_heic.h"
#include "support/photo_writers/apple_jpeg.h"
#include "support/photo_writers/pictures.h"
#include "support/photo_writers/trailers.h"
#include "support/photo_writers/xmp_depth.h"

namespace quorvane::test {

struct PhonePhoto {
    std::string container;
    std::string bytes;
    std::string raw;    ///< the depth as the file holds it; empty: not as bytes of their own
    bool zero_is_near;  ///< as it is stored
    bool bare = false;  ///< samples without a header
    bool lossy = false;
};

/// A file of every container with the same photo and plane, both at least 128 pixels wide and high.
inline std::vector<PhonePhoto> phonePhotos(const media::RgbImage& photo, const media::GrayImage& plane) {
    const std::string jpeg = jpegFile(photo);
    const std::string png = pngFile(plane);
    const std::string samples(plane.samples.begin(), plane.samples.end());
    std::vector<PhonePhoto> photos;
    const auto add = [&photos](const char* container, std::string bytes, std::string raw, bool zero_is_near) {
        PhonePhoto& added = photos.emplace_back();
        added.container = container;
        added.bytes = std::move(bytes);
        added.raw = std::move(raw);
        added.zero_is_near = zero_is_near;
        return &added;
    };
    add("GDepth", gdepthFile(photo, plane), png, true);
    add("XDM 1.0", xdmFile(photo, plane), png, true);
    add("Dynamic Depth 1.0", dynamicDepthFile(photo, plane), png, true);
    add("GContainer", gcontainerFile(photo, plane), png, true);
    add("Apple HEIC", appleHeicFile(photo, plane), "", false);
    add("Apple JPEG", appleJpegFile(photo, plane), appleDepthJpeg(plane), false)->lossy = true;
    add("Samsung SEF trailer", samsungFile(jpeg, plane), samples, false)->bare = true;
    add("Huawei edof trailer", huaweiFile(jpeg, plane), samples, false)->bare = true;
    return photos;
}

inline media::GrayImage inverted(media::GrayImage plane) {
    for (uint8_t& sample : plane.samples) sample = static_cast<uint8_t>(255 - sample);
    return plane;
}

}  // namespace quorvane::test

#endif
