#include "media/embedded/apple_pixels.h"

#include "media/embedded/bytes.h"

namespace quorvane::media {
namespace {

constexpr char kPixelData[] = "http://ns.apple.com/pixeldatainfo/1.0/";

/// The format in which the samples were measured, such as "hdis", which the file has as the number of its
/// four letters; "" where it has none.
std::string nativeFormat(const Xmp& xmp) {
    const std::string_view text = xmp.text(kPixelData, "NativeFormat");
    const std::optional<double> number = toNumber(text);
    if (!number) return std::string(text);
    if (*number < 0 || *number > UINT32_MAX) return "";
    const uint32_t code = static_cast<uint32_t>(*number);
    std::string letters;
    for (const int shift : {24, 16, 8, 0}) letters.push_back(static_cast<char>(code >> shift & 255));
    return letters;
}

bool isDisparity(const std::string& format) { return format == "hdis" || format == "fdis"; }
bool isDistance(const std::string& format) { return format == "hdep" || format == "fdep"; }

/// 1 / value where that is a distance.
std::optional<double> inverse(double value) {
    if (value <= 0) return std::nullopt;
    return 1 / value;
}

}  // namespace

ImageRole appleRole(std::string_view type) {
    constexpr auto has = [](std::string_view text, std::string_view word) {
        return text.find(word) != std::string_view::npos;
    };
    if (type == "urn:mpeg:hevc:2015:auxid:2" || type == "urn:mpeg:mpegB:cicp:systems:auxiliary:depth")
        return ImageRole::kDepth;
    if (has(type, "hdrgainmap")) return ImageRole::kGainMap;
    // portraiteffectsmatte, semanticskinmatte, semantichairmatte and more.
    if (has(type, "matte")) return ImageRole::kMatte;
    return ImageRole::kOther;
}

std::optional<ImageRole> appleRole(const Xmp& xmp) {
    bool is_apples = false, calls_itself_depth = false;
    for (const XmpNode& node : xmp.nodes()) {
        is_apples = is_apples || startsWith(node.ns, "http://ns.apple.com/");
        calls_itself_depth = calls_itself_depth || startsWith(node.ns, "http://ns.apple.com/depthData/");
    }
    if (!is_apples) return std::nullopt;
    const std::string format = nativeFormat(xmp);
    if (isDisparity(format) || isDistance(format)) return ImageRole::kDepth;
    const ImageRole role = appleRole(xmp.text(kPixelData, "AuxiliaryImageType"));
    if (role == ImageRole::kGainMap || role == ImageRole::kMatte) return role;
    return calls_itself_depth && format == "L008" ? ImageRole::kMatte : ImageRole::kOther;
}

void describeAppleDepth(const Xmp& xmp, int most, EmbeddedDepth* depth) {
    const std::string format = nativeFormat(xmp);
    if (!isDisparity(format) && !isDistance(format)) return;
    const bool distance = isDistance(format);
    depth->larger_is_nearer = !distance;
    depth->polarity_reason = "NativeFormat " + format + (distance ? " is distance" : " is disparity");
    depth->kind = distance ? DepthKind::kUnknown : DepthKind::kDisparity;
    depth->near = depth->far = std::nullopt;
    depth->units.clear();

    // The samples from IntMinValue to IntMaxValue stand for the values from FloatMinValue to FloatMaxValue.
    const auto number = [&](const char* name) { return toNumber(xmp.text(kPixelData, name)); };
    const auto low = number("FloatMinValue"), high = number("FloatMaxValue");
    const double first = number("IntMinValue").value_or(0), last = number("IntMaxValue").value_or(most);
    if (!low || !high || !(*low < *high) || !(first < last)) return;
    const double step = (*high - *low) / (last - first);
    const double at_zero = *low - first * step, at_most = *low + (most - first) * step;
    if (distance) {
        if (at_zero <= 0) return;  // no 1 / distance there
        depth->kind = DepthKind::kLinearRange;
        depth->near = at_zero;
        depth->far = at_most;
    } else {
        depth->near = inverse(at_most);
        depth->far = inverse(at_zero);
    }
    if (depth->near || depth->far) depth->units = "m";
}

}  // namespace quorvane::media
