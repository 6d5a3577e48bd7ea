// A container of depth or a stereo pair, CONTAINER by name: whatever the bytes, what is found decodes to
// levels from 0 to 255 and to views of one size, or there is one line.

#include <cstddef>
#include <cstdint>
#include <string>

#include "media/depth/photo_with_depth.h"
#include "media/depth/stereo_views.h"
#include "media/embedded/container.h"
#include "one_line.h"

using namespace quorvane;
using fuzz::isOneLine;
using fuzz::orOneLine;
using fuzz::promised;

namespace {

// Larger pictures only cost time.
constexpr long long kMostFuzzedPixels = 1'000'000;

void checkDepth(const media::EmbeddedDepth& depth) {
    promised(depth.orientation >= 1 && depth.orientation <= 8, "a depth has one of Exif's orientations");
    orOneLine([&] {
        const media::DepthMap map = media::decodeDepth(depth, "photo", kMostFuzzedPixels);
        promised(map.plane.width >= 1 && map.plane.height >= 1, "a depth map has pixels");
        for (const float level : map.plane.samples)
            promised(level >= 0.0f && level <= 255.0f, "levels from 0 to 255");
    });
}

void checkPair(std::string_view file, const media::StereoPair& pair) {
    for (const media::StereoView* view : {&pair.left, &pair.right}) {
        promised(!view->where.empty(), "a view is somewhere");
        promised(view->orientation >= 1 && view->orientation <= 8, "a view has one of Exif's orientations");
    }
    orOneLine([&] {
        const media::StereoViews views = media::decodeViews(file, pair, "photo", kMostFuzzedPixels);
        promised(views.left.width >= 1 && views.left.height >= 1, "a view has pixels");
        promised(views.left.width == views.right.width && views.left.height == views.right.height,
                 "views of one size");
    });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    media::Contents contents;
    const media::PhotoFile file = media::openPhoto(bytes, &contents.remarks);
    media::CONTAINER(file, &contents);
    size_t held = 0;
    for (const media::InnerImage& image : contents.images)
        promised(!image.where.empty(), "an image is somewhere");
    for (const std::string& remark : contents.remarks) promised(isOneLine(remark), "a remark is one line");
    if (contents.original) held += contents.original->bytes.size();
    if (contents.depth && !std::holds_alternative<media::DepthHeifItem>(contents.depth->plane))
        held += media::planeBytes(*contents.depth).size();
    if (contents.pair) held += contents.pair->left.bytes.size() + contents.pair->right.bytes.size();
    promised(held <= 3 * bytes.size(), "at most three times the file is kept");
    if (contents.depth) checkDepth(*contents.depth);
    if (contents.pair) checkPair(bytes, *contents.pair);
    return 0;
}
