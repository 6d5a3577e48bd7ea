#include "media/embedded/appended.h"

namespace quorvane::media {
namespace {

ImageRole roleOf(std::string_view semantic) {
    if (semantic == "Original") return ImageRole::kOriginal;
    if (semantic == "Depth") return ImageRole::kDepth;
    if (semantic == "Confidence") return ImageRole::kConfidence;
    if (semantic == "GainMap") return ImageRole::kGainMap;
    if (semantic == "MotionPhoto") return ImageRole::kVideo;
    return ImageRole::kOther;
}

/// What the depth means stands in one of the older vocabularies.
EmbeddedDepth describedDepth(const Xmp& xmp, Contents* contents) {
    const std::vector<const XmpNode*> maps = nodesOf(xmp, kDynamicDepth, "DepthMap", nullptr, 1);
    return maps.empty() ? depthInTerms(xmp, kGDepth, nullptr, "GContainer", contents)
                        : depthInTerms(xmp, kDynamicDepth, maps[0], "GContainer", contents);
}

}  // namespace

/// An item's meaning decides: a gain map is as gray as a depth.
/// https://developer.android.com/media/platform/hdr-image-format
void readGContainer(const PhotoFile& file, Contents* contents) {
    for (const AppendedItem& item : appendedItems(file, kGContainer)) {
        if (item.semantic.empty()) continue;  // XDM's
        const ImageRole role = roleOf(item.semantic);
        const InnerImage image = innerImage(item, role);
        if (!item.bytes.empty()) contents->images.push_back(image);
        if (role == ImageRole::kDepth) {
            addRemark(item, "its depth item", contents);
            if (!isPicture(item) || contents->depth) continue;
            EmbeddedDepth depth = describedDepth(file.xmp, contents);
            depth.where = image.where;
            depth.plane = DepthPicture{std::string(item.bytes)};
            contents->depth = std::move(depth);
        } else if (role == ImageRole::kOriginal) {
            addRemark(item, "its unblurred photo", contents);
            if (isPicture(item) && !contents->original)
                contents->original = {image.where, std::string(item.bytes), contents->orientation};
        }
    }
}

}  // namespace quorvane::media
