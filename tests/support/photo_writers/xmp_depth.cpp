#include "xmp_depth.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "pictures.h"

namespace quorvane::test {
namespace {

constexpr char kGuid[] = "0123456789ABCDEF0123456789ABCDEF";
constexpr char kDynamicDepth[] = "http://ns.google.com/photos/dd/1.0/";
constexpr char kGoogle[] = "http://ns.google.com/photos/1.0/";
constexpr char kXdm[] = "http://ns.xdm.org/photos/1.0/";

using Properties = std::vector<std::pair<std::string, std::string>>;

class XmpText {
  public:
    explicit XmpText(XmpManner manner) : m_manner(std::move(manner)) {}

    /// Declares `prefix` for `uri`.
    void declare(const std::string& prefix, const std::string& uri) {
        m_declared += " xmlns:" + prefix + m_manner.prefix_suffix + "=\"" + uri + "\"";
    }

    /// "Prefix:Name" as it is written here.
    std::string named(const std::string& name) const {
        const size_t colon = name.find(':');
        return name.substr(0, colon) + m_manner.prefix_suffix + name.substr(colon);
    }

    std::string element(const std::string& name, const std::string& inside) const {
        return "<" + named(name) + ">" + inside + "</" + named(name) + ">";
    }

    /// A structure of simple properties, those without a value left out, with `inside` behind them.
    std::string structure(const std::string& name, const Properties& properties,
                          const std::string& inside = "") const {
        if (m_manner.elements)
            return "<" + named(name) + " rdf:parseType=\"Resource\">" + elements(properties) + inside + "</" +
                   named(name) + ">";
        return "<" + named(name) + attributes(properties) + ">" + inside + "</" + named(name) + ">";
    }

    /// A whole packet around one description.
    std::string packet(const Properties& properties, const std::string& inside = "") const {
        const std::string start =
            "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\"><rdf:RDF"
            " xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\">"
            "<rdf:Description rdf:about=\"\"" +
            m_declared;
        const std::string end = inside + "</rdf:Description></rdf:RDF></x:xmpmeta>";
        if (m_manner.elements) return start + ">" + elements(properties) + end;
        return start + attributes(properties) + ">" + end;
    }

  private:
    std::string attributes(const Properties& properties) const {
        std::string text;
        for (const auto& [name, value] : properties)
            if (!value.empty()) text += " " + named(name) + "=\"" + value + "\"";
        return text;
    }

    std::string elements(const Properties& properties) const {
        std::string text;
        for (const auto& [name, value] : properties)
            if (!value.empty()) text += element(name, value);
        return text;
    }

    XmpManner m_manner;
    std::string m_declared;
};

std::string sequence(const std::vector<std::string>& items) {
    std::string text = "<rdf:Seq>";
    for (const std::string& item : items) text += "<rdf:li rdf:parseType=\"Resource\">" + item + "</rdf:li>";
    return text + "</rdf:Seq>";
}

Properties termsOf(const DepthTerms& terms, const std::string& prefix) {
    return {{prefix + ":Format", terms.format},
            {prefix + ":Near", terms.near},
            {prefix + ":Far", terms.far},
            {prefix + ":Units", terms.units}};
}

Properties joined(Properties first, const Properties& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

/// The photo with Exif and XMP; `extended` may be empty.
std::string photoWith(const media::RgbImage& photo, int orientation, const std::string& packet,
                      const std::string& extended = "", size_t piece = 60'000) {
    std::vector<std::string> segments;
    if (orientation != 0) segments.push_back(exifSegment(orientation));
    segments.push_back(xmpSegment(packet));
    if (!extended.empty())
        for (std::string& each : extendedXmpSegments(kGuid, extended, piece))
            segments.push_back(std::move(each));
    return withSegments(jpegFile(photo), segments);
}

/// A file behind the photo, and what the directories say of it.
struct Item {
    std::string semantic, mime, uri, length, bytes;
};

std::vector<Item> itemsOf(const media::GrayImage& depth, const AppendedOptions& options) {
    std::vector<Item> items;
    const auto add = [&items](const char* semantic, const std::string& mime, const char* uri,
                              const std::string& bytes, const std::string& length) {
        if (!bytes.empty())
            items.push_back(
                {semantic, mime, uri, length.empty() ? std::to_string(bytes.size()) : length, bytes});
    };
    add("Original", "image/jpeg", "android/original_image", options.original, options.original_length);
    add("GainMap", "image/jpeg", "android/gainmap", options.gain_map, "");
    add("Matte", "image/png", "android/matte", options.matte, "");
    add("Depth", options.depth_mime, "android/depthmap", pngFile(depth), options.depth_length);
    add("Confidence", "image/png", "android/confidencemap", options.confidence, "");
    add("MotionPhoto", "video/mp4", "android/video", options.video, "");
    return items;
}

/// `prefix` + "Directory" of the photo and the items. Dynamic Depth names items by URI, the other by
/// semantic.
std::string directory(const XmpText& xmp, const std::string& container, const std::string& item, bool by_uri,
                      int padding, const std::vector<Item>& items) {
    const auto entry = [&](const Item& each, const std::string& entry_padding) {
        return xmp.structure(container + ":Item", {{item + ":Mime", each.mime},
                                                   {item + ":Length", each.length},
                                                   {item + ":Padding", entry_padding},
                                                   {by_uri ? item + ":DataURI" : item + ":Semantic",
                                                    by_uri ? each.uri : each.semantic}});
    };
    std::vector<std::string> entries = {
        entry({"Primary", "image/jpeg", "primary_image", "0", ""}, std::to_string(padding))};
    for (const Item& each : items) entries.push_back(entry(each, ""));
    return xmp.element(container + ":Directory", sequence(entries));
}

void declareDynamicDepth(XmpText* xmp) {
    for (const auto& [prefix, name] : Properties{{"Device", "device"},
                                                 {"Camera", "camera"},
                                                 {"DepthMap", "depthmap"},
                                                 {"Image", "image"},
                                                 {"Container", "container"},
                                                 {"Item", "item"}})
        xmp->declare(prefix, kDynamicDepth + name + "/");
}

void declareGContainer(XmpText* xmp) {
    xmp->declare("GContainer", std::string(kGoogle) + "container/");
    xmp->declare("GItem", std::string(kGoogle) + "container/item/");
}

std::string dynamicDepthProperties(const XmpText& xmp, const AppendedOptions& options,
                                   const std::vector<Item>& items) {
    std::string camera = xmp.structure(
        "Camera:DepthMap",
        joined(termsOf(options.terms, "DepthMap"),
               {{"DepthMap:DepthURI", "android/depthmap"},
                {"DepthMap:ConfidenceURI", options.confidence.empty() ? "" : "android/confidencemap"},
                {"DepthMap:ItemSemantic", "Depth"}}));
    camera += options.original.empty()
                  ? xmp.structure("Camera:Image",
                                  {{"Image:ItemSemantic", "Primary"}, {"Image:ItemURI", "primary_image"}})
                  : xmp.structure("Camera:Image", {{"Image:ItemSemantic", "Original"},
                                                   {"Image:ItemURI", "android/original_image"}});
    return xmp.structure("Device:Container", {},
                         directory(xmp, "Container", "Item", true, options.padding, items)) +
           xmp.element("Device:Cameras", sequence({xmp.structure("Device:Camera", {}, camera)}));
}

/// What lies behind the photo.
std::string appended(const AppendedOptions& options, std::vector<Item> items) {
    if (options.reversed) std::reverse(items.begin(), items.end());
    std::string bytes = std::string(static_cast<size_t>(options.padding), '\0') + options.gap;
    for (const Item& item : items) bytes += item.bytes;
    return bytes + options.behind;
}

}  // namespace

std::string gdepthFile(const media::RgbImage& photo, const media::GrayImage& depth,
                       const GDepthOptions& options) {
    XmpText xmp(options.manner);
    xmp.declare("GDepth", std::string(kGoogle) + "depthmap/");
    xmp.declare("GImage", std::string(kGoogle) + "image/");
    xmp.declare("Note", "http://ns.adobe.com/xmp/note/");
    const bool has_original = !options.original.empty(), has_confidence = !options.confidence.empty();
    const Properties terms = joined(termsOf(options.terms, "GDepth"),
                                    {{"GDepth:Mime", options.mime},
                                     {"GDepth:ConfidenceMime", has_confidence ? "image/png" : ""},
                                     {"GImage:Mime", has_original ? "image/jpeg" : ""}});
    const Properties data = {{"GDepth:Data", options.data.empty() ? base64(pngFile(depth)) : options.data},
                             {"GDepth:Confidence", base64(options.confidence)},
                             {"GImage:Data", base64(options.original)}};
    if (!options.extended) return photoWith(photo, options.orientation, xmp.packet(joined(terms, data)));
    return photoWith(photo, options.orientation, xmp.packet(joined(terms, {{"Note:HasExtendedXMP", kGuid}})),
                     xmp.packet(data), options.piece);
}

std::string xdmFile(const media::RgbImage& photo, const media::GrayImage& depth, const XdmOptions& options) {
    XmpText xmp(options.manner);
    for (const auto& [prefix, name] :
         Properties{{"Device", "device"}, {"Camera", "camera"}, {"Depthmap", "depthmap"}, {"Image", "image"}})
        xmp.declare(prefix, kXdm + name + "/");
    const std::string container = std::string(options.google_directory ? kGoogle : kXdm) + "container/";
    xmp.declare("Container", container);
    xmp.declare("Item", container + "item/");
    xmp.declare("Note", "http://ns.adobe.com/xmp/note/");

    AppendedOptions appended_options;
    appended_options.original = options.original;
    const std::vector<Item> items = itemsOf(depth, appended_options);
    const bool has_original = !options.original.empty();
    std::string camera = xmp.structure(
        "Camera:DepthMap",
        joined(termsOf(options.terms, "Depthmap"),
               {{"Depthmap:Mime", "image/png"},
                {"Depthmap:Data", options.appended ? "android/depthmap" : base64(pngFile(depth))}}));
    if (has_original)
        camera += xmp.structure(
            "Camera:Image",
            {{"Image:Mime", "image/jpeg"},
             {"Image:Data", options.appended ? "android/original_image" : base64(options.original)}});
    const std::string cameras =
        xmp.element("Device:Cameras", sequence({xmp.structure("Device:Camera", {}, camera)}));
    if (!options.appended)
        return photoWith(photo, options.orientation, xmp.packet({{"Note:HasExtendedXMP", kGuid}}),
                         xmp.packet({}, cameras));
    const std::string list =
        xmp.structure("Device:Container", {}, directory(xmp, "Container", "Item", true, 0, items));
    return photoWith(photo, options.orientation, xmp.packet({}, list + cameras)) +
           appended(appended_options, items);
}

std::string dynamicDepthFile(const media::RgbImage& photo, const media::GrayImage& depth,
                             const AppendedOptions& options) {
    XmpText xmp(options.manner);
    declareDynamicDepth(&xmp);
    const std::vector<Item> items = itemsOf(depth, options);
    return photoWith(photo, options.orientation,
                     xmp.packet({}, dynamicDepthProperties(xmp, options, items))) +
           appended(options, items);
}

std::string gcontainerFile(const media::RgbImage& photo, const media::GrayImage& depth,
                           const AppendedOptions& options) {
    XmpText xmp(options.manner);
    xmp.declare("GDepth", std::string(kGoogle) + "depthmap/");
    declareGContainer(&xmp);
    const std::vector<Item> items = itemsOf(depth, options);
    return photoWith(photo, options.orientation,
                     xmp.packet(termsOf(options.terms, "GDepth"),
                                directory(xmp, "GContainer", "GItem", false, options.padding, items))) +
           appended(options, items);
}

std::string twoDirectoriesFile(const media::RgbImage& photo, const media::GrayImage& depth,
                               const AppendedOptions& dynamic_depth, const AppendedOptions& gcontainer) {
    XmpText xmp(dynamic_depth.manner);
    declareDynamicDepth(&xmp);
    declareGContainer(&xmp);
    const std::vector<Item> items = itemsOf(depth, dynamic_depth);
    return photoWith(photo, dynamic_depth.orientation,
                     xmp.packet({}, dynamicDepthProperties(xmp, dynamic_depth, items) +
                                        directory(xmp, "GContainer", "GItem", false, gcontainer.padding,
                                                  itemsOf(depth, gcontainer)))) +
           appended(dynamic_depth, items);
}

}  // namespace quorvane::test
