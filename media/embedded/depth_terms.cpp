#include "media/embedded/depth_terms.h"

#include "media/embedded/bytes.h"

namespace quorvane::media {
namespace {

std::optional<double> positive(std::string_view text) {
    const auto value = toNumber(text);
    return value && *value > 0 ? value : std::nullopt;
}

}  // namespace

std::vector<const XmpNode*> nodesOf(const Xmp& xmp, const Namespaces& namespaces, std::string_view name,
                                    const XmpNode* ancestor, size_t most) {
    const std::vector<XmpNode>& nodes = xmp.nodes();
    const size_t first = ancestor == nullptr ? 0 : static_cast<size_t>(ancestor - nodes.data()) + 1;
    const size_t last = ancestor == nullptr ? nodes.size() : ancestor->end;
    std::vector<const XmpNode*> found;
    for (size_t i = first; i < last && found.size() < most; ++i)
        if (nodes[i].name == name &&
            (startsWith(nodes[i].ns, namespaces[0]) || startsWith(nodes[i].ns, namespaces[1])))
            found.push_back(&nodes[i]);
    return found;
}

std::string_view textOf(const Xmp& xmp, const Namespaces& namespaces, std::string_view name,
                        const XmpNode* ancestor) {
    const std::vector<const XmpNode*> nodes = nodesOf(xmp, namespaces, name, ancestor, 1);
    return nodes.empty() ? std::string_view() : xmp.text(nodes[0]->ns, name, ancestor);
}

EmbeddedDepth depthInTerms(const Xmp& xmp, const Namespaces& namespaces, const XmpNode* ancestor,
                           const char* container, Contents* contents) {
    const auto property = [&](std::string_view name) { return textOf(xmp, namespaces, name, ancestor); };
    EmbeddedDepth depth;
    depth.orientation = contents->orientation;
    depth.larger_is_nearer = false;
    depth.polarity_reason = std::string(container) + " stores 0 for near";
    const std::string_view format = property("Format");
    if (format == "RangeInverse") depth.kind = DepthKind::kInverseRange;
    if (format == "RangeLinear") depth.kind = DepthKind::kLinearRange;

    const std::string_view near_text = property("Near"), far_text = property("Far");
    depth.units = property("Units");
    auto near = positive(near_text), far = positive(far_text);
    if (depth.units == "Diopters" || depth.units == "diopters") {
        // 1 / m: the near end has the larger number.
        if (near) near = 1 / *near;
        if (far) far = 1 / *far;
        depth.units = "m";
    }
    if (near && far && *near < *far) {
        depth.near = near;
        depth.far = far;
    } else if (!near_text.empty() || !far_text.empty()) {
        contents->remarks.push_back("its nearest and farthest distance make no sense and are not used");
    }
    return depth;
}

std::optional<std::string> pictureFromBase64(std::string_view text, const std::string& what,
                                             Contents* contents) {
    std::optional<std::string> bytes = fromBase64(text);
    if (!bytes) {
        contents->remarks.push_back(what + " is not base 64");
    } else if (!startsWith(mimeOf(*bytes), "image/")) {
        contents->remarks.push_back(what + " is no JPEG, PNG, WebP, TIFF, HEIC or AVIF picture");
        bytes.reset();
    }
    return bytes;
}

}  // namespace quorvane::media
