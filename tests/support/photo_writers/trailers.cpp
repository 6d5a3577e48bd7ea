#include "trailers.h"

#include <algorithm>
#include <stdexcept>
#include <utility>
#include <vector>

#include "media/picture/vips.h"
#include "pictures.h"

namespace quorvane::test {
namespace {

using media::DepthHalf;
using vips::VImage;

std::string bytesOf(const media::GrayImage& plane) { return {plane.samples.begin(), plane.samples.end()}; }

/// The extra information: 32-bit words with the version in the first one's lower half. Each version has the
/// plane's sides elsewhere.
std::string extraInformation(const SamsungOptions& options, uint32_t width, uint32_t height) {
    const auto [width_at, height_at] = [&]() -> std::pair<size_t, size_t> {
        switch (options.version) {
            case 1: return {9, 10};
            case 4: return {17, 18};
            case 5: return {20, 19};
            case 6: return {22, 21};
            default: return {12, 13};
        }
    }();
    std::vector<uint32_t> words(25, 0);
    words[0] = static_cast<uint32_t>(options.version);
    // What stands before the sides in the files of several phones.
    words[std::min(width_at, height_at) - 1] = 0xffff0001u;
    words[width_at] = options.width.value_or(width);
    words[height_at] = options.height.value_or(height);
    std::string bytes;
    for (const uint32_t word : words) bytes += little(word, 4);
    return bytes.substr(0, options.extra_bytes);
}

struct Block {
    uint16_t type;
    std::string name, data;
};

constexpr uint16_t kUnblurred = 0x0001, kTime = 0x0a01, kPlane = 0x0ab1, kExtra = 0x0ab3;

}  // namespace

std::string samsungFile(const std::string& photo, const media::GrayImage& depth,
                        const SamsungOptions& options) {
    std::vector<Block> blocks = {{kTime, "Image_UTC_Data", "1542000000000"}};
    if (!options.unblurred.empty()) blocks.push_back({kUnblurred, "DualShot_1", options.unblurred});
    if (options.with_plane) blocks.push_back({kPlane, "DualShot_DepthMap_1", bytesOf(depth)});
    if (options.with_sides)
        blocks.push_back({kExtra, "DualShot_Extra_Info",
                          extraInformation(options, static_cast<uint32_t>(depth.width),
                                           static_cast<uint32_t>(depth.height))});
    if (options.reversed) std::reverse(blocks.begin(), blocks.end());

    std::string data;
    std::vector<size_t> begins;
    for (const Block& block : blocks) {
        begins.push_back(data.size());
        uint32_t name_size = static_cast<uint32_t>(block.name.size());
        if (block.type == kPlane) name_size = options.name_size.value_or(name_size);
        data += little(0, 2) + little(block.type, 2) + little(name_size, 4) + block.name + block.data;
    }
    begins.push_back(data.size());

    std::string directory = "SEFH" + little(106, 4) + little(options.entries.value_or(blocks.size()), 4);
    for (size_t i = 0; i < blocks.size(); ++i) {
        uint64_t distance = data.size() - begins[i], size = begins[i + 1] - begins[i];
        if (blocks[i].type == kPlane) {
            distance = options.distance.value_or(distance);
            size = options.block_size.value_or(size);
        }
        directory += little(0, 2) + little(blocks[i].type, 2) + little(distance, 4) + little(size, 4);
    }
    return photo + data + directory + little(options.directory_length.value_or(directory.size()), 4) + "SEFT";
}

std::string huaweiFile(const std::string& photo, const media::GrayImage& depth,
                       const HuaweiOptions& options) {
    using namespace std::string_literals;
    std::string header = "edo"s + static_cast<char>(options.orientation) + std::string(8, '\0') +
                         little(options.width.value_or(static_cast<uint16_t>(depth.width)), 2) +
                         little(options.height.value_or(static_cast<uint16_t>(depth.height)), 2);
    header.resize(64);
    const std::string block = header + bytesOf(depth);
    return photo + options.unblurred + block + little(options.block_size.value_or(block.size()), 4) +
           "DepthEn\0"s;
}

std::string sideBySideFile(const media::RgbImage& photo, const media::GrayImage& depth, DepthHalf half,
                           int between) {
    if (photo.width != depth.width || photo.height != depth.height)
        throw std::logic_error("halves of different sizes");
    const VImage colours = media::toVips(photo), plane = media::toVips(depth);
    const VImage gray = plane.bandjoin(plane).bandjoin(plane);
    const bool photo_first = half == DepthHalf::kRight || half == DepthHalf::kBelow;
    const VipsDirection direction = half == DepthHalf::kRight || half == DepthHalf::kLeft
                                        ? VIPS_DIRECTION_HORIZONTAL
                                        : VIPS_DIRECTION_VERTICAL;
    const VImage joined =
        (photo_first ? colours : gray)
            .join(photo_first ? gray : colours, direction, VImage::option()->set("shim", between));
    VipsBlob* blob =
        joined.copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB)).pngsave_buffer();
    size_t size = 0;
    const void* bytes = vips_blob_get(blob, &size);
    std::string file(static_cast<const char*>(bytes), size);
    vips_area_unref(VIPS_AREA(blob));
    return file;
}

}  // namespace quorvane::test
