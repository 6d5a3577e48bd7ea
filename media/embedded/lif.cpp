// What tablets with a light-field display write: a JPEG with a trailer of fields. All numbers have the higher
// byte first.
//
//   trailer  u32 count of fields; each u32 id, u32 length, data; u32 size of the trailer, u16 0x1e1a
//   field 7  JSON: {"views": [{"albedoId": n, "disparityId": n, "xLocation": n, ...}, ...], ...}
//
// An albedo of -1 is the JPEG itself; other numbers are those of fields that hold picture files.

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

#include "media/embedded/bytes.h"
#include "media/embedded/container.h"
#include "media/embedded/depth_terms.h"

namespace quorvane::media {
namespace {

constexpr uint64_t kFooter = 6, kViewsField = 7;
constexpr size_t kMostFields = 1000;

using Fields = std::map<uint64_t, std::string_view>;

/// The trailer's fields by their numbers; empty without a trailer.
Fields fieldsOf(std::string_view file) {
    constexpr uint64_t kMagic = 0x1e1a;
    if (file.size() < kFooter || bigEndian(file, file.size() - 2, 2) != kMagic) return {};
    const uint64_t size = *bigEndian(file, file.size() - kFooter, 4);
    if (size < kFooter || size > file.size()) return {};
    const std::string_view trailer = cut(file, file.size() - size, size - kFooter);
    Fields fields;
    uint64_t at = 4;
    while (fields.size() < kMostFields) {
        const auto id = bigEndian(trailer, at, 4), length = bigEndian(trailer, at + 4, 4);
        if (!length) break;
        const auto data = part(trailer, at + 8, *length);
        if (!data) break;
        fields.emplace(*id, *data);
        at += 8 + *length;
    }
    return fields;
}

struct View {
    double albedo = 0, disparity = 0, x = 0;
};

/// The number behind "key": in a JSON object without inner objects; 0 where there is none.
double numberOf(std::string_view object, std::string_view key) {
    const size_t at = object.find("\"" + std::string(key) + "\"");
    if (at == std::string_view::npos) return 0;
    const size_t begin = object.find_first_not_of(" \t\r\n:", at + key.size() + 2);
    if (begin == std::string_view::npos) return 0;
    const std::string_view number = object.substr(begin, object.find_first_of(",} \t\r\n", begin) - begin);
    return toNumber(number).value_or(0);
}

/// The first views that the JSON lists.
std::vector<View> viewsOf(std::string_view json) {
    constexpr size_t kMostViews = 64;
    std::vector<View> views;
    size_t at = json.find("\"views\"");
    if (at == std::string_view::npos) return views;
    const size_t end = std::min(json.find(']', at), json.size());
    while (views.size() < kMostViews && (at = json.find('{', at)) < end) {
        const size_t close = std::min(json.find('}', at), end);
        const std::string_view object = json.substr(at, close - at);
        views.push_back(
            {numberOf(object, "albedoId"), numberOf(object, "disparityId"), numberOf(object, "xLocation")});
        at = close;
    }
    return views;
}

/// The picture in the field of that number; empty where there is none.
std::string_view pictureIn(const Fields& fields, double number) {
    if (!(number >= 1 && number <= 0xffffffffu) || number != std::floor(number)) return {};
    const auto field = fields.find(static_cast<uint64_t>(number));
    if (field == fields.end() || !startsWith(mimeOf(field->second), "image/")) return {};
    return field->second;
}

std::string placeOf(std::string_view picture, std::string_view file) {
    return std::string(formatName(mimeOf(picture))) + " at byte " +
           std::to_string(picture.data() - file.data());
}

InnerImage innerImage(ImageRole role, std::string_view picture, std::string_view file) {
    return {role, placeOf(picture, file), std::string(mimeOf(picture)), picture.size()};
}

void addDepth(const PhotoFile& file, std::string_view picture, Contents* contents) {
    contents->images.push_back(innerImage(ImageRole::kDepth, picture, file.bytes));
    EmbeddedDepth depth;
    depth.where = contents->images.back().where;
    depth.plane = DepthPicture{std::string(picture)};
    depth.kind = DepthKind::kDisparity;
    depth.polarity_reason = "LIF stores disparity";
    depth.orientation = contents->orientation;
    contents->depth = std::move(depth);
}

/// The pair of the JPEG and the picture file `other`.
void addPair(std::string where, std::string other, bool jpeg_is_left, Contents* contents) {
    contents->images.push_back({ImageRole::kView, where, std::string(mimeOf(other)), other.size()});
    StereoPair pair;
    pair.left.where = "JPEG";
    pair.right = {std::move(where), std::move(other), 0, contents->orientation};
    if (!jpeg_is_left) std::swap(pair.left, pair.right);
    contents->pair = std::move(pair);
}

void readTrailer(const PhotoFile& file, const Fields& fields, Contents* contents) {
    const auto json = fields.find(kViewsField);
    const std::vector<View> views = viewsOf(json == fields.end() ? std::string_view() : json->second);
    const auto shown =
        std::find_if(views.begin(), views.end(), [](const View& view) { return view.albedo == -1; });
    if (shown == views.end()) {
        contents->remarks.emplace_back("its trailer does not say which view the photo is");
        return;
    }
    if (const std::string_view depth = pictureIn(fields, shown->disparity); !depth.empty())
        addDepth(file, depth, contents);
    else if (shown->disparity > 0)
        contents->remarks.emplace_back("the disparity that it names is missing");
    for (const View& view : views) {
        if (&view == &*shown) continue;
        const std::string_view other = pictureIn(fields, view.albedo);
        if (other.empty()) {
            contents->remarks.emplace_back("the second view that it names is missing");
            continue;
        }
        addPair(placeOf(other, file.bytes), std::string(other), shown->x <= view.x, contents);
        return;
    }
}

}  // namespace

void readLif(const PhotoFile& file, Contents* contents) {
    if (!file.jpeg) return;
    const Fields fields = fieldsOf(file.bytes);
    if (!fields.empty()) readTrailer(file, fields, contents);
    if (contents->pair) return;
    // Older files have the second view in extended XMP only.
    constexpr Namespaces kImage = {"http://ns.leiainc.com/photos/1.0/image",
                                   "http://ns.leiainc.com/photos/1.0/image"};
    const std::string_view data = textOf(file.xmp, kImage, "RightAlbedo");
    if (data.empty()) return;
    if (auto right = pictureFromBase64(data, "its right view", contents))
        addPair("LImage:RightAlbedo", std::move(*right), true, contents);
}

}  // namespace quorvane::media
