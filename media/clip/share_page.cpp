#include "media/clip/share_page.h"

#include <glib.h>

#include <algorithm>
#include <map>
#include <memory>
#include <string_view>

#include "media/clip/share_script.h"
#include "media/embedding/written_bytes.h"
#include "media/picture/picture_file.h"
#include "media/picture/resample.h"
#include "sizes/sizes.h"

namespace quorvane::media {
namespace {

/// What it takes to see no loss while the picture moves, and how low it goes for photos with much detail,
/// where loss is hardest to see.
constexpr int kPhotoQuality = 85;
constexpr int kLeastPhotoQuality = 65;
constexpr int kLeastSide = 1280;  ///< of the longer sides that a photo is scaled down to
/// A page of 600 KB, which mail and messengers pass on without a thought.
constexpr size_t kPhotoBytes = 420000;

using GlibText = std::unique_ptr<char, void (*)(void*)>;

std::string dataAddress(const char* type, const std::string& bytes) {
    return std::string("data:") + type + ";base64," + toBase64(bytes);
}

/// The source by which a content security policy allows this script and no other.
std::string sourceOf(std::string_view script) {
    const std::unique_ptr<GChecksum, void (*)(GChecksum*)> sum(g_checksum_new(G_CHECKSUM_SHA256),
                                                               g_checksum_free);
    g_checksum_update(sum.get(), reinterpret_cast<const guchar*>(script.data()),
                      static_cast<gssize>(script.size()));
    char digest[32];
    gsize size = sizeof digest;
    g_checksum_get_digest(sum.get(), reinterpret_cast<guint8*>(digest), &size);
    return "'sha256-" + toBase64({digest, size}) + "'";
}

/// For text and for attributes in double quotes. What is no UTF-8 becomes a replacement character.
std::string escaped(const std::string& text) {
    const GlibText valid(g_utf8_make_valid(text.data(), static_cast<gssize>(text.size())), g_free);
    std::string out;
    for (const char* next = valid.get(); *next != '\0'; ++next) switch (*next) {
            case '&': out += "&amp;"; break;
            case '<': out += "&lt;"; break;
            case '>': out += "&gt;"; break;
            case '"': out += "&quot;"; break;
            default: out += *next;
        }
    return out;
}

std::string number(double value) {
    char text[32];
    // As many digits as tell floats apart, with a point in every language.
    g_ascii_formatd(text, sizeof text, "%.9g", value);
    return text;
}

struct PhotoFile {
    std::string bytes;
    Size size;
};

PhotoFile photoFile(const RgbImage& photo, bool keeps_size) {
    const Size size = {photo.width, photo.height};
    std::string bytes;
    for (int quality = kPhotoQuality; quality >= kLeastPhotoQuality; quality -= 5) {
        bytes = jpegBytes(photo, quality);
        if (bytes.size() <= kPhotoBytes) return {bytes, size};
    }
    // A coarser photo shows its loss less than a coarser coding.
    Size smaller = size;
    while (!keeps_size && bytes.size() > kPhotoBytes &&
           std::max(smaller.width, smaller.height) > kLeastSide) {
        smaller = {smaller.width * 9 / 10, smaller.height * 9 / 10};
        bytes = jpegBytes(resample(photo, smaller), kLeastPhotoQuality);
    }
    return {bytes, smaller};
}

std::string json(const std::vector<std::pair<std::string, double>>& values) {
    std::string out;
    for (const auto& [name, value] : values)
        out += (out.empty() ? "{\"" : ",\"") + name + "\":" + number(value);
    return out.empty() ? "{}" : out + "}";
}

}  // namespace

std::string elementAttributes(const ElementSettings& settings) {
    std::string out;
    const auto add = [&](const char* name, const std::string& value) {
        out += (out.empty() ? "" : " ") + std::string(name) + "=\"" + escaped(value) + "\"";
    };
    if (settings.amount != 1.0) add("amount", number(settings.amount));
    if (settings.antialias != ElementSettings().antialias) add("antialias", settings.antialias);
    if (!settings.parameters.empty()) add("params", json(settings.parameters));
    return out;
}

std::string sharePage(const SharePage& page) {
    const std::string script(kShareScript);
    const PhotoFile photo = photoFile(page.photo, page.keeps_size);
    const std::map<std::string_view, std::string> parts = {
        {"script-source", sourceOf(script)},
        {"title", escaped(page.title)},
        {"width", std::to_string(photo.size.width)},
        {"height", std::to_string(photo.size.height)},
        {"motion", escaped(page.motion)},
        {"attributes", elementAttributes(page.settings)},
        {"depth", dataAddress("image/png", pngBytes(page.depth))},
        {"alt", escaped(page.alt)},
        {"photo", dataAddress("image/jpeg", photo.bytes)},
        {"script", script},
    };
    std::string html;
    std::string_view rest = kShareTemplate;
    for (size_t at; (at = rest.find("{{")) != std::string_view::npos;) {
        const size_t end = rest.find("}}", at);
        html += rest.substr(0, at);
        html += parts.at(rest.substr(at + 2, end - at - 2));
        rest.remove_prefix(end + 2);
    }
    return html.append(rest);
}

}  // namespace quorvane::media
