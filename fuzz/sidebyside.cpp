// Pictures of colour and depth side by side: whatever the bytes, two halves of one size, or one line.

#include <cstddef>
#include <cstdint>
#include <string>

#include "media/depth/photo_with_depth.h"
#include "one_line.h"

using namespace quorvane;
using fuzz::orOneLine;
using fuzz::promised;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    const std::string bytes(reinterpret_cast<const char*>(data), size - 1);
    const auto half = static_cast<media::DepthHalf>(data[size - 1] % 4);
    orOneLine([&] {
        const media::SplitPicture split = media::decodeSideBySide(bytes, half, "photo", 4'000'000);
        promised(
            split.photo.width == split.depth.plane.width && split.photo.height == split.depth.plane.height,
            "the halves are of one size");
        promised(split.photo.width >= 1 && split.photo.height >= 1, "a half has pixels");
        for (const float level : split.depth.plane.samples)
            promised(level >= 0.0f && level <= 255.0f, "levels from 0 to 255");
    });
    return 0;
}
