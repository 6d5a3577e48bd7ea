#include "stereo.h"

#include <algorithm>

#include "pictures.h"

namespace quorvane::test {

using namespace std::string_literals;

namespace {

constexpr char kGuid[] = "0123456789ABCDEF0123456789ABCDEF";

std::string packetOf(const std::string& name_spaces, const std::string& attributes) {
    return "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\"><rdf:RDF "
           "xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\"><rdf:Description rdf:about=\"\" " +
           name_spaces + " " + attributes + "/></rdf:RDF></x:xmpmeta>";
}

/// The JPEG with a packet of XMP and an extended one.
std::string withXmp(const std::string& jpeg, const std::string& name_spaces, const std::string& attributes,
                    const std::string& extended) {
    std::vector<std::string> segments = {
        xmpSegment(packetOf(name_spaces + " xmlns:xmpNote=\"http://ns.adobe.com/xmp/note/\"",
                            attributes + " xmpNote:HasExtendedXMP=\"" + kGuid + "\""))};
    for (const std::string& piece : extendedXmpSegments(kGuid, packetOf(name_spaces, extended)))
        segments.push_back(piece);
    return withSegments(jpeg, segments);
}

struct Picture {
    uint32_t type;
    uint64_t size, offset;
};

std::string indexSegment(const std::vector<Picture>& pictures, bool big_endian) {
    const auto number = [big_endian](uint64_t value, int bytes) {
        return big_endian ? big(value, bytes) : little(value, bytes);
    };
    const auto field = [&](uint64_t tag, uint64_t type, uint64_t count, const std::string& value) {
        return number(tag, 2) + number(type, 2) + number(count, 4) + value;
    };
    constexpr uint64_t kLong = 4, kUndefined = 7, kBehindDirectory = 8 + 2 + 3 * 12 + 4;
    std::string body =
        "MPF\0"s + (big_endian ? "MM"s : "II"s) + number(42, 2) + number(8, 4) + number(3, 2) +
        field(0xb000, kUndefined, 4, "0100") + field(0xb001, kLong, 1, number(pictures.size(), 4)) +
        field(0xb002, kUndefined, 16 * pictures.size(), number(kBehindDirectory, 4)) + number(0, 4);
    for (const Picture& picture : pictures)
        body += number(picture.type, 4) + number(picture.size, 4) + number(picture.offset, 4) + number(0, 4);
    return segment(0xe2, body);
}

}  // namespace

std::string mpoFile(const std::string& left, const std::string& right, const MpoOptions& options) {
    constexpr uint32_t kRepresentative = 0x20000000, kLargeThumbnail = 0x010002;
    struct Behind {
        std::string bytes;
        uint32_t type;
        int64_t error;
    };
    std::vector<Behind> behind;
    if (!options.preview.empty()) behind.push_back({options.preview, kLargeThumbnail, 0});
    behind.push_back({right, options.type, options.offset_error});
    if (!options.third.empty()) behind.push_back({options.third, options.type, 0});

    std::vector<Picture> pictures(behind.size() + 1);
    const auto first = [&] { return withSegments(left, {indexSegment(pictures, options.big_endian)}); };
    const std::string draft = first();
    pictures[0] = {options.type | kRepresentative, draft.size(), 0};
    uint64_t at = draft.size() + options.padding - (draft.find("MPF\0"s) + 4);
    for (size_t i = 0; i < behind.size(); ++i) {
        pictures[i + 1] = {behind[i].type, behind[i].bytes.size(),
                           at + static_cast<uint64_t>(behind[i].error)};
        at += behind[i].bytes.size();
    }
    std::string file = first() + std::string(options.padding, '\0');
    for (const Behind& picture : behind) file += picture.bytes;
    return file;
}

std::string lifFile(const std::string& left, const std::string& right, const LifOptions& options) {
    const std::string& shown = options.jpeg_is_right ? right : left;
    const std::string& other = options.jpeg_is_right ? left : right;
    const auto field = [](uint64_t id, const std::string& data) {
        return big(id, 4) + big(data.size(), 4) + data;
    };
    constexpr uint64_t kViews = 7, kDisparity = 1000001, kOther = 1000002;
    const auto view = [&](int64_t albedo, uint64_t disparity, const char* x) {
        return "{\"albedoId\": " + std::to_string(albedo) + ", \"xLocation\": " + x +
               ", \"yLocation\": 0, \"disparityId\": " + std::to_string(disparity) +
               ", \"monodisparityId\": 0}";
    };
    std::string json =
        "{\"convergence\": -0.009, \"views\": [" +
        view(-1, options.disparity.empty() ? 0 : kDisparity, options.jpeg_is_right ? "1" : "0") + ", " +
        view(kOther, 0, options.jpeg_is_right ? "0.0" : "1.0") + "], \"disparitySource\": \"UNKNOWN\"}";
    if (!options.spaces)
        for (size_t at; (at = json.find(' ')) != std::string::npos;) json.erase(at, 1);
    std::string trailer =
        big(options.disparity.empty() ? 4 : 5, 4) + field(0, big(4, 4)) + field(1, big(1, 4));
    if (!options.disparity.empty()) trailer += field(kDisparity, options.disparity);
    trailer += field(kOther, other) + field(kViews, options.json.value_or(json));
    constexpr size_t kFooter = 6;
    return shown + trailer +
           big(options.trailer_size.value_or(static_cast<uint32_t>(trailer.size() + kFooter)), 4) +
           big(0x1e1a, 2);
}

std::string lifXmpFile(const std::string& left, const std::string& right) {
    return withXmp(left, "xmlns:LImage=\"http://ns.leiainc.com/photos/1.0/image/\"",
                   "LImage:MajorVersion=\"2\"", "LImage:RightAlbedo=\"" + base64(right) + "\"");
}

std::string vrPhotoFile(const std::string& left, const std::string& right, bool panorama) {
    return withXmp(left,
                   "xmlns:GImage=\"http://ns.google.com/photos/1.0/image/\" "
                   "xmlns:GPano=\"http://ns.google.com/photos/1.0/panorama/\"",
                   std::string("GImage:Mime=\"image/jpeg\"") +
                       (panorama ? " GPano:ProjectionType=\"equirectangular\"" : ""),
                   "GImage:Data=\"" + base64(right) + "\"");
}

media::RgbImage joined(const media::RgbImage& left, const media::RgbImage& right,
                       const media::PairLayout& layout) {
    const media::RgbImage& first = layout.right_first ? right : left;
    const media::RgbImage& second = layout.right_first ? left : right;
    const bool below = layout.one_above_other;
    // Every second column or row is left out where they are squeezed.
    const int step_x = layout.squeezed && !below ? 2 : 1, step_y = layout.squeezed && below ? 2 : 1;
    const int width = left.width / step_x, height = left.height / step_y;
    media::RgbImage out(below ? width : 2 * width, below ? 2 * height : height);
    for (int y = 0; y < out.height; ++y)
        for (int x = 0; x < out.width; ++x) {
            const bool later = below ? y >= height : x >= width;
            const uint8_t* from = &(later ? second : first).at((x % width) * step_x, (y % height) * step_y);
            std::copy(from, from + 3, &out.at(x, y));
        }
    return out;
}

std::string jpsFile(const std::string& jpeg, uint8_t flags, uint8_t layout, uint8_t type) {
    return withSegments(jpeg, {segment(0xe3, "_JPSJPS_" + big(4, 2) + big(0, 1) + big(flags, 1) +
                                                 big(layout, 1) + big(type, 1) + big(0, 2))});
}

}  // namespace quorvane::test
