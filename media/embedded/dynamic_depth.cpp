#include <algorithm>

#include "media/embedded/appended.h"

namespace quorvane::media {
namespace {

/// The item of that URI, else the one of that meaning; null where there is none.
const AppendedItem* itemOf(const std::vector<AppendedItem>& items, std::string_view uri,
                           std::string_view semantic) {
    for (const AppendedItem& item : items)
        if (!uri.empty() && item.uri == uri) return &item;
    for (const AppendedItem& item : items)
        if (item.semantic == semantic) return &item;
    return nullptr;
}

std::string_view originalUri(const Xmp& xmp) {
    for (const XmpNode* image : nodesOf(xmp, kDynamicDepth, "Image"))
        if (textOf(xmp, kDynamicDepth, "ItemSemantic", image) == "Original")
            return textOf(xmp, kDynamicDepth, "ItemURI", image);
    return {};
}

}  // namespace

/// https://developer.android.com/static/media/camera/camera2/Dynamic-depth-v1.0.pdf
void readDynamicDepth(const PhotoFile& file, Contents* contents) {
    const Xmp& xmp = file.xmp;
    const std::vector<const XmpNode*> maps = nodesOf(xmp, kDynamicDepth, "DepthMap");
    if (!hasDirectory(file, kDynamicDepth)) {
        // Today's phones describe the depth here and list it in the other directory.
        if (!maps.empty() && !hasDirectory(file, kGContainer))
            contents->remarks.emplace_back("the directory of its items is missing");
        return;
    }
    const std::vector<AppendedItem> items = appendedItems(file, kDynamicDepth);
    const AppendedItem* const original = itemOf(items, originalUri(xmp), "Original");
    std::vector<const AppendedItem*> planes, confidences;
    for (const XmpNode* map : maps) {
        const auto uri = [&](std::string_view name) { return textOf(xmp, kDynamicDepth, name, map); };
        const AppendedItem* plane = itemOf(items, uri("DepthURI"), "Depth");
        planes.push_back(plane);
        confidences.push_back(itemOf(items, uri("ConfidenceURI"), "Confidence"));
        if (plane == nullptr) {
            contents->remarks.emplace_back("its depth item is not in its directory");
            continue;
        }
        addRemark(*plane, "its depth item", contents);
        if (!isPicture(*plane) || contents->depth) continue;
        EmbeddedDepth depth = depthInTerms(xmp, kDynamicDepth, map, "Dynamic Depth", contents);
        depth.where = innerImage(*plane, ImageRole::kDepth).where;
        depth.plane = DepthPicture{std::string(plane->bytes)};
        contents->depth = std::move(depth);
    }

    const auto among = [](const std::vector<const AppendedItem*>& some, const AppendedItem& item) {
        return std::find(some.begin(), some.end(), &item) != some.end();
    };
    for (const AppendedItem& item : items) {
        if (item.bytes.empty()) continue;
        const ImageRole role = among(planes, item)        ? ImageRole::kDepth
                               : among(confidences, item) ? ImageRole::kConfidence
                               : &item == original        ? ImageRole::kOriginal
                                                          : ImageRole::kOther;
        contents->images.push_back(innerImage(item, role));
    }
    if (original == nullptr) return;
    addRemark(*original, "its unblurred photo", contents);
    if (isPicture(*original))
        contents->original = {innerImage(*original, ImageRole::kOriginal).where, std::string(original->bytes),
                              contents->orientation};
}

}  // namespace quorvane::media
