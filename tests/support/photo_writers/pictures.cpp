#include "pictures.h"

#include <algorithm>
#include <vips/vips8>

#include "media/picture/vips.h"

namespace quorvane::test {
namespace {

using vips::VImage;

std::string jpegOf(const VImage& image) {
    return media::takeBytes(image.jpegsave_buffer(VImage::option()->set("Q", 95)->set("strip", true)));
}

std::string pngOf(const VImage& image) {
    return media::takeBytes(image.pngsave_buffer(VImage::option()->set("strip", true)));
}

}  // namespace

std::string jpegFile(const media::RgbImage& image) { return jpegOf(media::toVips(image)); }
std::string jpegFile(const media::GrayImage& image) { return jpegOf(media::toVips(image)); }
std::string pngFile(const media::GrayImage& image) { return pngOf(media::toVips(image)); }

std::string pngFile(const media::Image<uint16_t, 1>& image) {
    media::startVips();
    return pngOf(VImage::new_from_memory(const_cast<uint16_t*>(image.samples.data()),
                                         image.samples.size() * 2, image.width, image.height, 1,
                                         VIPS_FORMAT_USHORT)
                     .copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_GREY16)));
}

media::RgbImage somePhoto(int width, int height) {
    media::RgbImage image(width, height);
    uint8_t* next = image.samples.data();
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const bool inside = x > width / 3 && x < width * 2 / 3 && y > height / 2;
            *next++ = static_cast<uint8_t>(inside ? 220 : x * 160 / width);
            *next++ = static_cast<uint8_t>(y * 200 / height);
            *next++ = static_cast<uint8_t>(inside ? 40 : 120);
        }
    return image;
}

media::GrayImage somePlane(int width, int height) {
    media::GrayImage image(width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const bool corner = x < width / 4 && y < height / 4;
            image.samples[static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)] =
                static_cast<uint8_t>(corner ? 255 : 20 + x * 150 / width + y * 60 / height);
        }
    return image;
}

std::string big(uint64_t value, int bytes) {
    std::string text = little(value, bytes);
    std::reverse(text.begin(), text.end());
    return text;
}

std::string little(uint64_t value, int bytes) {
    std::string text;
    for (int i = 0; i < bytes; ++i) text.push_back(static_cast<char>(value >> 8 * i & 255));
    return text;
}

std::string segment(uint8_t marker, std::string_view body) {
    return '\xff' + std::string(1, static_cast<char>(marker)) + big(body.size() + 2, 2) + std::string(body);
}

std::string withSegments(const std::string& jpeg, const std::vector<std::string>& segments) {
    size_t at = 2;
    if (jpeg.compare(2, 2, "\xff\xe0") == 0)
        at += 2 + (static_cast<uint8_t>(jpeg[4]) * size_t{256} + static_cast<uint8_t>(jpeg[5]));
    std::string file = jpeg.substr(0, at);
    for (const std::string& each : segments) file += each;
    return file + jpeg.substr(at);
}

std::string exifSegment(int orientation) {
    using namespace std::string_literals;
    return segment(0xe1, "Exif\0\0MM\0*\0\0\0\x8\0\x1\x1\x12\0\x3\0\0\0\x1\0"s +
                             static_cast<char>(orientation) + "\0\0\0\0\0\0"s);
}

std::string xmpSegment(std::string_view packet) {
    using namespace std::string_literals;
    return segment(0xe1, "http://ns.adobe.com/xap/1.0/\0"s + std::string(packet));
}

std::vector<std::string> extendedXmpSegments(std::string_view guid, std::string_view packet, size_t piece) {
    using namespace std::string_literals;
    std::vector<std::string> segments;
    for (size_t at = 0; at < packet.size(); at += piece)
        segments.push_back(segment(0xe1, "http://ns.adobe.com/xmp/extension/\0"s + std::string(guid) +
                                             big(packet.size(), 4) + big(at, 4) +
                                             std::string(packet.substr(at, piece))));
    return segments;
}

std::string base64(std::string_view bytes) {
    constexpr char kLetters[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (size_t i = 0; i < bytes.size(); i += 3) {
        uint32_t group = 0;
        for (size_t k = 0; k < 3; ++k)
            group = group << 8 | (i + k < bytes.size() ? static_cast<uint8_t>(bytes[i + k]) : 0U);
        for (size_t k = 0; k < 4; ++k)
            text.push_back(i + k > bytes.size() ? '=' : kLetters[group >> (18 - 6 * k) & 63]);
    }
    return text;
}

}  // namespace quorvane::test
