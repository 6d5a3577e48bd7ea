#include "media/embedded/bytes.h"
#include "media/embedded/container.h"
#include "media/embedded/depth_terms.h"

namespace quorvane::media {
namespace {

constexpr Namespaces kPanorama = {"http://ns.google.com/photos/1.0/panorama",
                                  "http://ns.google.com/photos/1.0/panorama"};

}  // namespace

/// https://developers.google.com/vr/reference/cardboard-camera-vr-photo-format: the JPEG is the left eye's
/// view of a panorama, and the right eye's is a picture in its XMP.
void readVrPhoto(const PhotoFile& file, Contents* contents) {
    const Xmp& xmp = file.xmp;
    const std::string_view data = textOf(xmp, kGImage, "Data");
    // The same property holds the unblurred photo where there is a depth.
    if (data.empty() || textOf(xmp, kPanorama, "ProjectionType").empty() ||
        !textOf(xmp, kGDepth, "Data").empty())
        return;
    auto right = pictureFromBase64(data, "its right view", contents);
    if (!right) return;
    StereoPair pair;
    pair.left.where = "JPEG";
    pair.right = {"GImage:Data", std::move(*right), 0, contents->orientation};
    contents->images.push_back(
        {ImageRole::kView, pair.right.where, std::string(mimeOf(pair.right.bytes)), pair.right.bytes.size()});
    contents->pair = std::move(pair);
}

}  // namespace quorvane::media
