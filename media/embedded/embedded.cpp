#include "media/embedded/embedded.h"

#include <cmath>
#include <map>
#include <utility>

#include "media/embedded/bytes.h"
#include "media/embedded/container.h"

namespace quorvane::media {
namespace {

// Newer containers first: their files often hold the older ones too, for older readers.
constexpr Container kContainers[] = {
    {"Dynamic Depth 1.0", readDynamicDepth},
    {"GContainer", readGContainer},
    {"GDepth", readGDepth},
    {"XDM 1.0", readXdm},
#ifdef QUORVANE_EMBEDDED_HEIF
    {"Apple HEIC", readAppleHeic},
#endif
    {"Apple JPEG", readAppleJpeg},
    {"Samsung SEF trailer", readSamsungTrailer},
    {"Huawei edof trailer", readHuaweiTrailer},
    // Stereo pairs; one may come with a depth map.
    {"LIF", readLif},
#ifdef QUORVANE_EMBEDDED_HEIF
    {"stereo HEIC", readStereoHeic},
#endif
    {"MPO", readMpo},
    {"VR photo", readVrPhoto},
    {"JPS", readJps},
};

/// Adds an image, unless it is known already: newer phones list the same one in several containers.
void addImage(InnerImage image, std::map<std::string, size_t>* places, std::vector<InnerImage>* images) {
    const auto [known, is_new] = places->emplace(image.where, images->size());
    if (is_new) return images->push_back(std::move(image));
    InnerImage& first = (*images)[known->second];
    if (first.role == ImageRole::kOther) first.role = image.role;
}

/// With the share t of the way from near to far, d = near + t (far - near), this is
/// (1 / d - 1 / far) / (1 / near - 1 / far), brought to a form that no near or far takes out of range.
double inverseRange(double t, double near, double far) {
    return near * (1.0 - t) / (near + t * (far - near));
}

}  // namespace

std::string_view planeBytes(const EmbeddedDepth& depth) {
    if (const auto* item = std::get_if<DepthHeifItem>(&depth.plane)) return item->file;
    if (const auto* samples = std::get_if<DepthSamples>(&depth.plane)) return samples->bytes;
    return std::get<DepthPicture>(depth.plane).bytes;
}

bool givesDistances(const EmbeddedDepth& depth) {
    const double near = depth.near.value_or(0.0), far = depth.far.value_or(0.0);
    return depth.kind == DepthKind::kLinearRange && near > 0.0 && far > near && std::isfinite(far);
}

double nearness(const EmbeddedDepth& depth, double level) {
    if (!givesDistances(depth)) return depth.larger_is_nearer ? level : 255.0 - level;
    const double share = level / 255.0;
    return 255.0 * inverseRange(depth.larger_is_nearer ? 1.0 - share : share, *depth.near, *depth.far);
}

StereoPair pairOfHalves(PairLayout layout) {
    StereoPair pair;
    const char* const first = layout.one_above_other ? "upper half" : "left half";
    const char* const second = layout.one_above_other ? "lower half" : "right half";
    pair.left.where = layout.right_first ? second : first;
    pair.right.where = layout.right_first ? first : second;
    pair.layout = layout;
    return pair;
}

PhotoFile openPhoto(std::string_view bytes, std::vector<std::string>* remarks) {
    PhotoFile file = {bytes, walkJpeg(bytes), {}};
    if (file.jpeg) file.xmp = xmpOf(*file.jpeg, remarks);
    return file;
}

Contents lookInside(std::string_view bytes) {
    Contents contents;
    const std::string_view mime = mimeOf(bytes);
    if (startsWith(mime, "image/")) contents.file_kind = formatName(mime);
    const PhotoFile file = openPhoto(bytes, &contents.remarks);
    if (file.jpeg) contents.orientation = exifOrientation(*file.jpeg).value_or(1);
    InnerImage photo;
    photo.role = ImageRole::kPhoto;
    photo.where = contents.file_kind;
    photo.mime = mime;
    photo.bytes = file.jpeg ? file.jpeg->end : bytes.size();
    if (!contents.file_kind.empty()) contents.images.push_back(photo);
#ifndef QUORVANE_EMBEDDED_HEIF
    if (contents.file_kind == "HEIC") contents.remarks.emplace_back("HEIC: not looked into; JPEG is");
#endif

    std::map<std::string, size_t> places;
    for (const Container& container : kContainers) {
        Contents found;
        found.orientation = contents.orientation;
        container.read(file, &found);
        for (InnerImage& image : found.images) addImage(std::move(image), &places, &contents.images);
        for (std::string& remark : found.remarks)
            contents.remarks.push_back(std::string(container.name) + ": " + std::move(remark));
        if (found.pair && !contents.pair) {
            found.pair->container = container.name;
            contents.pair = std::move(found.pair);
        }
        if (!found.depth) continue;
        if (contents.depth) {
            if (planeBytes(*found.depth) != planeBytes(*contents.depth))
                contents.remarks.push_back(std::string(container.name) +
                                           ": not used, its depth is not that of " +
                                           contents.depth->container);
            continue;
        }
        found.depth->container = container.name;
        contents.depth = std::move(found.depth);
        contents.original = std::move(found.original);
    }
    return contents;
}

std::vector<std::string> knownContainers() {
    std::vector<std::string> names;
    for (const Container& container : kContainers) names.push_back(container.name);
    return names;
}

}  // namespace quorvane::media
