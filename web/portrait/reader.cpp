// The reader of what portrait photos hold, for WebAssembly: web/demo/portrait_reader.js holds it, and
// web/demo/portrait.js calls it. The page reads the XML of XMP.

#include <cmath>
#include <cstdlib>
#include <string>
#include <variant>

#include "media/embedded/bytes.h"
#include "media/embedded/embedded.h"
#include "media/embedded/jpeg.h"
#include "media/embedded/orientation.h"
#include "media/embedded/xmp.h"

namespace quorvane::media {
namespace {

/// What look() returns, as portrait.js reads it.
struct Found {
    double nearness[256];  ///< of each level of the plane
    const char* plane;
    uint32_t size;
    int32_t width, height;  ///< of a byte for each sample; 0: the plane is a picture file
    uint32_t turn;          ///< that brings the plane upright as a browser decodes it
};
static_assert(sizeof(const char*) == 4, "portrait.js reads numbers of 32 bits");

std::string g_file, g_nodes;
Contents g_contents;
Found g_found;

/// Reads an XMP packet. The page puts its nodes into roomForNodes(): of each the namespace, the name, the
/// text and the index behind its last descendant, each with a zero behind it. Returns whether it could.
extern "C" __attribute__((import_module("page"), import_name("readXmp"))) bool readXmp(const char* packet,
                                                                                       size_t size);

char* roomIn(std::string* bytes, size_t size) {
    bytes->assign(size, '\0');
    return bytes->data();
}

}  // namespace

std::string Xmp::add(std::string_view packet) {
    // Writers pad packets with zeroes.
    while (!packet.empty() && packet.back() == '\0') packet.remove_suffix(1);
    if (!readXmp(packet.data(), packet.size())) return "not read";
    const size_t first = m_nodes.size();
    size_t at = 0;
    const auto next = [&at] {
        const char* const field = g_nodes.c_str() + at;
        const std::string_view text(field);
        at += text.size() + 1;
        return text;
    };
    while (at < g_nodes.size()) {
        XmpNode& node = m_nodes.emplace_back();
        node.ns = next();
        node.name = next();
        node.text = next();
        node.end = first + std::strtoul(next().data(), nullptr, 10);
    }
    return "";
}

std::optional<double> toNumber(std::string_view text) {
    const std::string copy(text);
    char* end = nullptr;
    const double value = std::strtod(copy.c_str(), &end);
    if (end == copy.c_str() || *end != '\0' || !std::isfinite(value)) return std::nullopt;
    return value;
}

extern "C" {

__attribute__((export_name("roomForFile"))) char* roomForFile(size_t size) { return roomIn(&g_file, size); }
__attribute__((export_name("roomForNodes"))) char* roomForNodes(size_t size) {
    return roomIn(&g_nodes, size);
}

/// Looks for a depth in the file. Null where it has none.
__attribute__((export_name("look"))) const Found* look() {
    g_contents = lookInside(g_file);
    if (!g_contents.depth) return nullptr;
    EmbeddedDepth& depth = *g_contents.depth;
    for (int level = 0; level < 256; ++level) g_found.nearness[level] = nearness(depth, level);
    g_found.turn = turnOfExif(depth.orientation);
    g_found.width = g_found.height = 0;
    if (auto* samples = std::get_if<DepthSamples>(&depth.plane)) {
        g_found.width = samples->width;
        g_found.height = samples->height;
    } else if (const auto jpeg = walkJpeg(planeBytes(depth)); jpeg && exifOrientation(*jpeg)) {
        // A browser turns pictures as they say themselves.
        g_found.turn = 0;
    }
    g_found.plane = planeBytes(depth).data();
    g_found.size = static_cast<uint32_t>(planeBytes(depth).size());
    return &g_found;
}
}

}  // namespace quorvane::media
