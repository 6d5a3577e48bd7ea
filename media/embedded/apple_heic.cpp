#include <algorithm>
#include <cstring>
#include <set>
#include <stdexcept>
#include <type_traits>

#include "media/embedded/apple_pixels.h"
#include "media/embedded/bytes.h"
#include "media/embedded/container.h"
#include "media/embedded/heif_boxes.h"
#include "media/embedded/heif_file.h"

namespace quorvane::media {
namespace {

std::string nameOf(uint32_t item) { return "HEIF item " + std::to_string(item); }

/// The depth representation information of HEVC's annex G: how the samples lie to the distance, and its range
/// as distances Z, whose unit it leaves open, or as disparities D, which phones write in 1 / metre.
void describeByHevc(const heif_depth_representation_info& info, EmbeddedDepth* depth) {
    // libheif takes over any number that a file has, and an enumeration must not be read with one.
    std::underlying_type_t<heif_depth_representation_type> type = 0;
    std::memcpy(&type, &info.depth_representation_type, sizeof type);
    if (type == heif_depth_representation_type_uniform_Z) {
        depth->larger_is_nearer = false;
        depth->polarity_reason = "its representation is Z, the distance";
    }
    if (type != heif_depth_representation_type_uniform_inverse_Z &&
        type != heif_depth_representation_type_uniform_disparity)
        depth->kind = DepthKind::kUnknown;
    const auto positive = [](bool given, double value) { return given && value > 0 && value < 1e9; };
    if (positive(info.has_z_near, info.z_near) && positive(info.has_z_far, info.z_far) &&
        info.z_near < info.z_far) {
        depth->near = info.z_near;
        depth->far = info.z_far;
        if (!depth->larger_is_nearer) depth->kind = DepthKind::kLinearRange;
    } else if (depth->kind == DepthKind::kDisparity) {
        if (positive(info.has_d_max, info.d_max)) depth->near = 1 / info.d_max;
        if (positive(info.has_d_min, info.d_min)) depth->far = 1 / info.d_min;
        if (depth->near || depth->far) depth->units = "m";
    }
}

/// The item's own XMP.
Xmp xmpOf(const heif_image_handle* handle, std::vector<std::string>* remarks) {
    Xmp xmp;
    const int count = heif_image_handle_get_number_of_metadata_blocks(handle, "mime");
    std::vector<heif_item_id> ids(static_cast<size_t>(count));
    heif_image_handle_get_list_of_metadata_block_IDs(handle, "mime", ids.data(), count);
    for (const heif_item_id id : ids) {
        const char* type = heif_image_handle_get_metadata_content_type(handle, id);
        if (type == nullptr || type != std::string_view("application/rdf+xml")) continue;
        std::string packet(heif_image_handle_get_metadata_size(handle, id), '\0');
        if (packet.empty() || heif_image_handle_get_metadata(handle, id, packet.data()).code != heif_error_Ok)
            continue;
        const std::string fault = xmp.add(packet);
        if (!fault.empty()) remarks->push_back("XMP of " + nameOf(id) + ": " + fault);
        break;  // thousands of items may name the same bytes
    }
    return xmp;
}

EmbeddedDepth depthIn(std::string_view file, const heif_image_handle* primary, uint32_t id,
                      const HeifItems& items, std::vector<std::string>* remarks) {
    const HeifHandle handle = auxiliaryPicture(primary, id);
    EmbeddedDepth depth;
    depth.where = nameOf(id);
    depth.plane = DepthHeifItem{file, id};
    depth.kind = DepthKind::kDisparity;
    depth.polarity_reason = "HEIF's depth pictures hold disparity";
    const heif_depth_representation_info* info = nullptr;
    if (heif_image_handle_get_depth_image_representation_info(primary, id, &info) != 0 && info != nullptr) {
        describeByHevc(*info, &depth);
        heif_depth_representation_info_free(info);
    }
    const int bits = heif_image_handle_get_luma_bits_per_pixel(handle.get());
    describeAppleDepth(xmpOf(handle.get(), remarks), bits > 8 && bits <= 16 ? (1 << bits) - 1 : 255, &depth);

    // libheif turns each item as that one says. Phones write the same for both; a depth that says nothing is
    // kept as the photo is.
    if (!items.at(id).turned) depth.orientation = items.at(items.primary).orientation;
    return depth;
}

std::vector<heif_item_id> auxiliaryPictures(const heif_image_handle* primary) {
    constexpr int kMost = 1000;  // phones write up to about ten
    const int count = std::min(heif_image_handle_get_number_of_auxiliary_images(primary, 0), kMost);
    std::vector<heif_item_id> ids(static_cast<size_t>(std::max(count, 0)));
    heif_image_handle_get_list_of_auxiliary_image_IDs(primary, 0, ids.data(), count);
    return ids;
}

void addAuxiliaryPictures(std::string_view file, Contents* contents) {
    const HeifItems items = readHeifItems(file);
    const HeifFile opened = openHeif(file);
    const heif_image_handle* primary = opened.primary.get();
    std::set<uint32_t> seen;
    for (const heif_item_id id : auxiliaryPictures(primary)) {
        const HeifItem item = items.at(id);
        const ImageRole role = appleRole(item.aux_type);
        seen.insert(id);
        contents->images.push_back({role, nameOf(id), std::string(mimeOf(file)), item.bytes});
        if (role == ImageRole::kDepth && !contents->depth)
            contents->depth = depthIn(file, primary, id, items, &contents->remarks);
    }
    for (const auto& [id, item] : items.by_id) {
        if (appleRole(item.aux_type) != ImageRole::kDepth || seen.count(id) != 0) continue;
        contents->remarks.push_back(nameOf(id) + " is a depth picture, but not the photo's");
        break;
    }
}

}  // namespace

void readAppleHeic(const PhotoFile& file, Contents* contents) {
    const std::string_view mime = mimeOf(file.bytes);
    if (mime != "image/heic" && mime != "image/avif") return;
    try {
        addAuxiliaryPictures(file.bytes, contents);
    } catch (const std::runtime_error& error) {
        contents->remarks.push_back(error.what());
    }
}

}  // namespace quorvane::media
