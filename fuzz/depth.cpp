// Depth maps: whatever the bytes, levels from 0 to 255, before and after the doctor, that scale to the sizes
// the renderer takes, or one line.

#include <cstddef>
#include <cstdint>
#include <string>

#include "media/depth/depth_doctor.h"
#include "media/picture/picture_file.h"
#include "media/picture/resample.h"
#include "one_line.h"

using namespace quorvane;
using fuzz::isOneLine;
using fuzz::orOneLine;
using fuzz::promised;

namespace {

// Larger pictures only cost time.
constexpr long long kMostFuzzedPixels = 4'000'000;

void checkScaling(const media::DepthMap& depth, Size photo) {
    const Fit fit = fitSizes(photo, {depth.plane.width, depth.plane.height}, 2048);
    const media::GrayImage scaled = media::toBytes(depth.plane, fit.depth);
    promised(scaled.width == fit.depth.width && scaled.height == fit.depth.height,
             "a depth map scales to any size");
}

/// A photo with an edge every few pixels.
media::RgbImage anyPhoto() {
    media::RgbImage photo(48, 36);
    for (size_t i = 0; i < photo.samples.size(); ++i) photo.samples[i] = static_cast<uint8_t>(i * i / 7);
    return photo;
}

void checkLevels(const media::DepthMap& depth) {
    promised(depth.plane.width >= 1 && depth.plane.height >= 1, "a depth map has pixels");
    for (const float level : depth.plane.samples)
        promised(level >= 0.0f && level <= 255.0f, "levels from 0 to 255");
    promised(depth.known.samples.empty() || depth.known.samples.size() == depth.plane.samples.size(),
             "known of the plane's size");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    orOneLine([&] {
        media::DepthMap depth = media::decodeDepthMap(bytes, "depth", kMostFuzzedPixels);
        promised(depth.bits == 8 || depth.bits == 16, "8 or 16 bit");
        checkLevels(depth);
        checkScaling(depth, {depth.plane.width, depth.plane.height});
        checkScaling(depth, {64, 48});
        for (const media::Finding& finding : media::examine(anyPhoto(), {}, &depth))
            promised(isOneLine(finding.text), "a finding is one line");
        checkLevels(depth);
        promised(depth.known.samples.empty(), "all is known after the doctor");
    });
    return 0;
}
