#include "media/embedded/bytes.h"

namespace quorvane::media {

std::string_view mimeOf(std::string_view bytes) {
    using namespace std::string_view_literals;
    if (startsWith(bytes, "\xff\xd8\xff"sv)) return "image/jpeg";
    if (startsWith(bytes, "\x89PNG\r\n\x1a\n"sv)) return "image/png";
    if (startsWith(bytes, "RIFF"sv) && part(bytes, 8, 4) == "WEBP"sv) return "image/webp";
    if (startsWith(bytes, "II*\0"sv) || startsWith(bytes, "MM\0*"sv)) return "image/tiff";
    if (part(bytes, 4, 4) == "ftyp"sv) {
        const std::string_view brand = bytes.substr(8, 4);
        if (brand == "avif"sv || brand == "avis"sv) return "image/avif";
        for (const std::string_view heif :
             {"heic"sv, "heix"sv, "heim"sv, "heis"sv, "hevc"sv, "hevm"sv, "hevs"sv, "mif1"sv, "msf1"sv})
            if (brand == heif) return "image/heic";
        return "video/mp4";
    }
    return "";
}

std::string_view formatName(std::string_view mime) {
    if (mime == "image/jpeg") return "JPEG";
    if (mime == "image/png") return "PNG";
    if (mime == "image/webp") return "WebP";
    if (mime == "image/tiff") return "TIFF";
    if (mime == "image/avif") return "AVIF";
    if (mime == "image/heic") return "HEIC";
    if (mime == "video/mp4") return "MP4";
    return "";
}

std::optional<std::string> fromBase64(std::string_view text) {
    std::string bytes;
    bytes.reserve(text.size() / 4 * 3 + 3);
    uint32_t group = 0;
    int letters = 0;
    bool padded = false;
    for (const char c : text) {
        uint32_t value = 0;
        if (c >= 'A' && c <= 'Z')
            value = static_cast<uint32_t>(c - 'A');
        else if (c >= 'a' && c <= 'z')
            value = static_cast<uint32_t>(c - 'a' + 26);
        else if (c >= '0' && c <= '9')
            value = static_cast<uint32_t>(c - '0' + 52);
        else if (c == '+')
            value = 62;
        else if (c == '/')
            value = 63;
        else if (c == ' ' || c == '\n' || c == '\r' || c == '\t')
            continue;
        else if (c == '=') {
            padded = true;
            continue;
        } else
            return std::nullopt;
        if (padded) return std::nullopt;
        group = group << 6 | value;
        if (++letters == 4) {
            for (const int shift : {16, 8, 0}) bytes.push_back(static_cast<char>(group >> shift & 255));
            group = 0;
            letters = 0;
        }
    }
    if (letters == 1) return std::nullopt;
    if (letters >= 2) bytes.push_back(static_cast<char>(group >> (letters == 2 ? 4 : 10) & 255));
    if (letters == 3) bytes.push_back(static_cast<char>(group >> 2 & 255));
    return bytes;
}

}  // namespace quorvane::media
