#include "apple_jpeg.h"

#include "pictures.h"

namespace quorvane::test {
namespace {

using namespace std::string_literals;

struct Property {
    std::string name, value;
};

/// An XMP packet with properties of Apple's name space for pixels, and one of depth data as both depths and
/// mattes have it.
std::string packetOf(const std::vector<Property>& properties, const AppleJpegOptions& options) {
    const std::string name_space = "xmlns:" + options.prefix +
                                   "=\"http://ns.apple.com/pixeldatainfo/1.0/\""
                                   " xmlns:depthData=\"http://ns.apple.com/depthData/1.0/\"";
    std::string attributes, elements;
    for (const auto& [name, value] : properties) {
        const std::string full = options.prefix + ":" + name;
        if (options.attributes)
            attributes += " " + full + "=\"" + value + "\"";
        else
            elements += "<" + full + ">" + value + "</" + full + ">";
    }
    return "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\"><rdf:RDF "
           "xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\"><rdf:Description rdf:about=\"\" " +
           name_space + attributes + "><depthData:DepthDataVersion>65538</depthData:DepthDataVersion>" +
           elements + "</rdf:Description></rdf:RDF></x:xmpmeta>";
}

/// Four letters as the decimal number of their bytes.
std::string fourLetters(const std::string& letters) {
    uint32_t code = 0;
    for (const char c : letters) code = code << 8 | static_cast<uint8_t>(c);
    return std::to_string(code);
}

/// A picture that is no depth; `type` says what it is.
std::string otherJpeg(const media::GrayImage& plane, const std::string& type,
                      const AppleJpegOptions& options) {
    const std::string packet = packetOf({{"NativeFormat", fourLetters("L008")},
                                         {"StoredFormat", fourLetters("L008")},
                                         {"AuxiliaryImageType", type}},
                                        options);
    return withSegments(jpegFile(plane), {xmpSegment(packet)});
}

/// Exif with the maker's name and the orientation.
std::string appleExif(int orientation) {
    const auto entry = [](int tag, int type, int count, const std::string& value) {
        return big(static_cast<uint64_t>(tag), 2) + big(static_cast<uint64_t>(type), 2) +
               big(static_cast<uint64_t>(count), 4) + value;
    };
    constexpr int kAscii = 2, kShort = 3, kBehindDirectory = 8 + 2 + 2 * 12 + 4;
    return segment(0xe1, "Exif\0\0MM\0*\0\0\0\x8\0\x2"s + entry(0x010f, kAscii, 6, big(kBehindDirectory, 4)) +
                             entry(0x0112, kShort, 1, big(static_cast<uint64_t>(orientation), 2) + "\0\0"s) +
                             "\0\0\0\0Apple\0"s);
}

/// The multi-picture index of pictures of these sizes, at these distances from its byte order mark.
std::string indexSegment(const std::vector<uint64_t>& sizes, const std::vector<uint64_t>& offsets,
                         const AppleJpegOptions& options) {
    const auto number = [&](uint64_t value, int bytes) {
        return options.big_endian ? big(value, bytes) : little(value, bytes);
    };
    const auto entry = [&](uint64_t tag, uint64_t type, uint64_t count, const std::string& value) {
        return number(tag, 2) + number(type, 2) + number(count, 4) + value;
    };
    constexpr uint64_t kLong = 4, kUndefined = 7, kBehindDirectory = 8 + 2 + 3 * 12 + 4;
    const uint64_t count = options.count.value_or(sizes.size());
    std::string body = "MPF\0"s + (options.big_endian ? "MM"s : "II"s) + number(42, 2) + number(8, 4) +
                       number(3, 2) + entry(0xb000, kUndefined, 4, "0100") +
                       entry(0xb001, kLong, 1, number(count, 4)) +
                       entry(0xb002, kUndefined, 16 * count, number(kBehindDirectory, 4)) + number(0, 4);
    for (size_t i = 0; i < sizes.size(); ++i)
        body += number(i == 0 ? 0x030000 : 0, 4) + number(sizes[i], 4) + number(offsets[i], 4) + number(0, 4);
    return segment(0xe2, body);
}

}  // namespace

std::string appleDepthPacket(const AppleJpegOptions& options) {
    const bool distance = options.native_format == "hdep" || options.native_format == "fdep";
    return packetOf({{"IntMinValue", std::to_string(options.int_min)},
                     {"IntMaxValue", std::to_string(options.int_max)},
                     {"FloatMinValue", std::to_string(options.min_value)},
                     {"FloatMaxValue", std::to_string(options.max_value)},
                     {"NativeFormat", fourLetters(options.native_format)},
                     {"StoredFormat", fourLetters("L008")},
                     {"AuxiliaryImageType", distance ? "depth" : "disparity"}},
                    options);
}

std::string appleDepthJpeg(const media::GrayImage& depth, const AppleJpegOptions& options) {
    std::vector<std::string> segments;
    if (options.depth_orientation) segments.push_back(exifSegment(*options.depth_orientation));
    segments.push_back(xmpSegment(appleDepthPacket(options)));
    return withSegments(jpegFile(depth), segments);
}

std::string appleJpegFile(const media::RgbImage& photo, const media::GrayImage& depth,
                          const AppleJpegOptions& options) {
    std::vector<std::string> behind;
    if (options.gain_map_first)
        behind.push_back(otherJpeg(depth, "urn:com:apple:photo:2020:aux:hdrgainmap", options));
    if (options.matte_first) behind.push_back(otherJpeg(depth, options.matte_type, options));
    if (options.depth) behind.push_back(appleDepthJpeg(depth, options));
    if (options.matte_last) behind.push_back(otherJpeg(depth, options.matte_type, options));

    const std::string bare = jpegFile(photo);
    // Its own length does not depend on the numbers in it.
    const auto photoWith = [&](const std::vector<uint64_t>& sizes, const std::vector<uint64_t>& offsets) {
        return withSegments(bare, {appleExif(options.orientation), indexSegment(sizes, offsets, options),
                                   options.thumbnail.empty() ? "" : segment(0xed, options.thumbnail)});
    };
    std::vector<uint64_t> sizes(behind.size() + 1), offsets(behind.size() + 1);
    const std::string draft = photoWith(sizes, offsets);
    const size_t origin = draft.find("MPF\0"s) + 4;
    sizes[0] = draft.size();
    uint64_t at = draft.size() - origin;
    for (size_t i = 0; i < behind.size(); ++i) {
        sizes[i + 1] = behind[i].size();
        offsets[i + 1] = at + static_cast<uint64_t>(int64_t{options.offset_error});
        at += behind[i].size();
    }
    std::string file = photoWith(sizes, offsets);
    for (const std::string& picture : behind) file += picture;
    file.resize(file.size() - options.truncated_by);
    return file;
}

}  // namespace quorvane::test
