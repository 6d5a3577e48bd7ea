// Photos: whatever the bytes, an upright RGB picture or one line; and the same size by its header alone, and
// a smaller picture where it is shrunk while it is decoded.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

#include "media/picture/picture_file.h"
#include "one_line.h"

using namespace quorvane;
using fuzz::orOneLine;
using fuzz::promised;

namespace {

// Larger pictures only cost time.
constexpr long long kMostFuzzedPixels = 4'000'000;

constexpr int kLeastSide = 20;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    orOneLine([&] { media::readPictureHeader(bytes, "photo", kMostFuzzedPixels); });
    orOneLine([&] {
        const media::RgbImage photo = media::decodePhotoShrunk(bytes, "photo", kLeastSide, kMostFuzzedPixels);
        promised(photo.width >= 1 && photo.height >= 1, "a shrunk photo has pixels");
    });
    orOneLine([&] {
        const Size least = {kLeastSide, 3 * kLeastSide};
        const media::RgbImage photo = media::decodePhotoAtLeast(bytes, "photo", least, kMostFuzzedPixels);
        const media::PictureHeader header = media::readPictureHeader(bytes, "photo", kMostFuzzedPixels);
        promised(photo.width >= std::min(header.width, least.width), "as wide as is wanted");
        promised(photo.height >= std::min(header.height, least.height), "as high as is wanted");
    });
    orOneLine([&] {
        const media::RgbImage photo = media::decodePhoto(bytes, "photo", kMostFuzzedPixels);
        promised(photo.width >= 1 && photo.height >= 1, "a photo has pixels");
        promised(
            photo.samples.size() == static_cast<size_t>(photo.width) * static_cast<size_t>(photo.height) * 3,
            "a photo has three bytes a pixel");
        const media::PictureHeader header = media::readPictureHeader(bytes, "photo", kMostFuzzedPixels);
        promised(header.width == photo.width && header.height == photo.height, "the header gives the size");
    });
    return 0;
}
