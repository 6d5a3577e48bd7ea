#include "media/embedded/appended.h"
#include "media/embedded/bytes.h"

namespace quorvane::media {
namespace {

/// A picture that XDM refers to.
struct Payload {
    std::string where;
    std::string bytes;
};

/// The picture of a property such as Depthmap:Data: its base 64, or the URI of an item behind the photo.
/// Nothing, with a remark about `what` unless the property is missing.
std::optional<Payload> payloadOf(std::string_view data, const char* where,
                                 const std::vector<AppendedItem>& items, const char* what,
                                 Contents* contents) {
    if (data.empty()) return std::nullopt;
    for (const AppendedItem& item : items) {
        if (item.uri != data) continue;
        addRemark(item, what, contents);
        if (!isPicture(item)) return std::nullopt;
        return Payload{innerImage(item, ImageRole::kOther).where, std::string(item.bytes)};
    }
    auto bytes = pictureFromBase64(data, what, contents);
    if (!bytes) return std::nullopt;
    return Payload{where, std::move(*bytes)};
}

/// The camera that a depth map belongs to; null where it stands alone.
const XmpNode* cameraOf(const Xmp& xmp, const XmpNode* map) {
    const XmpNode* camera = nullptr;
    for (const XmpNode* each : nodesOf(xmp, kXdm, "Camera"))
        if (each < map && static_cast<size_t>(map - xmp.nodes().data()) < each->end) camera = each;
    return camera;
}

}  // namespace

/// eXtensible Device Metadata 1.0, 2015: http://www.xdm.org
void readXdm(const PhotoFile& file, Contents* contents) {
    const Xmp& xmp = file.xmp;
    const std::vector<const XmpNode*> maps = nodesOf(xmp, kXdm, "DepthMap");
    if (maps.empty()) return;
    std::vector<AppendedItem> items = appendedItems(file, kXdm);
    if (items.empty()) items = appendedItems(file, kGContainer);
    const auto keep = [contents](const Payload& payload, ImageRole role) {
        contents->images.push_back(
            {role, payload.where, std::string(mimeOf(payload.bytes)), payload.bytes.size()});
    };
    for (const XmpNode* map : maps) {
        const auto property = [&](std::string_view name) { return textOf(xmp, kXdm, name, map); };
        if (property("Data").empty())
            contents->remarks.emplace_back("the depth that it describes is missing");
        auto plane = payloadOf(property("Data"), "Depthmap:Data", items, "its depth", contents);
        if (!plane) continue;
        EmbeddedDepth depth = depthInTerms(xmp, kXdm, map, "XDM", contents);
        keep(*plane, ImageRole::kDepth);
        depth.where = plane->where;
        depth.plane = DepthPicture{std::move(plane->bytes)};
        contents->depth = std::move(depth);

        if (const auto payload =
                payloadOf(property("Confidence"), "Depthmap:Confidence", items, "its confidence", contents))
            keep(*payload, ImageRole::kConfidence);
        // Other cameras' photos show the scene from elsewhere.
        const std::vector<const XmpNode*> images = nodesOf(xmp, kXdm, "Image", cameraOf(xmp, map), 1);
        if (images.empty()) return;
        auto photo = payloadOf(textOf(xmp, kXdm, "Data", images[0]), "Image:Data", items,
                               "its unblurred photo", contents);
        if (!photo) return;
        keep(*photo, ImageRole::kOriginal);
        contents->original = {photo->where, std::move(photo->bytes), contents->orientation};
        return;
    }
}

}  // namespace quorvane::media
