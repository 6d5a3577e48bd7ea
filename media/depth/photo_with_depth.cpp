#include "media/depth/photo_with_depth.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <utility>

#include "media/embedded/heif_plane.h"
#include "media/picture/crop.h"
#include "media/picture/turn.h"
#include "media/picture/vips.h"

namespace quorvane::media {
namespace {

void setRemark(std::string* remark, std::string text) {
    if (remark != nullptr) *remark = std::move(text);
}

/// The samples on the scale of 0 to 255.
Plane toPlane(const DepthSamples& samples, const std::string& name, long long most_pixels) {
    const size_t sample_size = samples.bits == 16 ? 2 : 1;
    const long long pixels = static_cast<long long>(samples.width) * samples.height;
    if (samples.width < 1 || samples.height < 1 ||
        static_cast<size_t>(pixels) > samples.bytes.size() / sample_size)
        throw Error(name + ": a depth plane of " + std::to_string(samples.bytes.size()) +
                    " bytes, too few for " + std::to_string(samples.width) + " x " +
                    std::to_string(samples.height) + " samples");
    if (pixels > most_pixels)
        throw Error(name + ": " + std::to_string(samples.width) + " x " + std::to_string(samples.height) +
                    " pixels; at most " + std::to_string(most_pixels / 1000000) + " million are read");
    Plane plane(samples.width, samples.height);
    const auto byte = [&samples](size_t i) { return static_cast<uint8_t>(samples.bytes[i]); };
    for (size_t i = 0; i < plane.samples.size(); ++i)
        plane.samples[i] = sample_size == 1
                               ? static_cast<float>(byte(i))
                               : static_cast<float>(byte(2 * i) + 256 * byte(2 * i + 1)) * 255.0f / 65535.0f;
    return plane;
}

/// The item's samples on the scale of 0 to 255.
Plane toPlane(const HeifPlane& item) {
    Plane plane(item.width, item.height);
    const float full = static_cast<float>((1 << item.bits) - 1);
    std::transform(item.samples.begin(), item.samples.end(), plane.samples.begin(),
                   [full](uint16_t sample) { return static_cast<float>(sample) * 255.0f / full; });
    return plane;
}

/// A plane's samples, upright, on the scale of 0 to 255, which stands for all that its bits can hold.
DepthMap decodeSamples(const EmbeddedDepth& depth, const std::string& name, long long most_pixels) {
    if (const auto* picture = std::get_if<DepthPicture>(&depth.plane))
        return decodeDepthMap(picture->bytes, name, most_pixels, depth.orientation);
    DepthMap map;
    if (const auto* samples = std::get_if<DepthSamples>(&depth.plane)) {
        map.bits = samples->bits;
        map.plane = toPlane(*samples, name, most_pixels);
    } else {
        const auto& item = std::get<DepthHeifItem>(depth.plane);
        try {
            const HeifPlane decoded = decodeHeifItem(item.file, item.id, most_pixels);
            map.bits = decoded.bits;
            map.plane = toPlane(decoded);
        } catch (const std::runtime_error& error) {
            throw Error(name + ": " + error.what());
        }
    }
    map.plane = turned(map.plane, turnOfExif(depth.orientation));
    return map;
}

/// decode(bytes, name, orientation) of the unblurred original; where that is missing or fails, of the file.
template <typename Decode>
auto originalOr(std::string_view file, const Contents& contents, const std::string& name, std::string* remark,
                Decode decode) {
    if (contents.original) {
        const EmbeddedPhoto& original = *contents.original;
        try {
            return decode(original.bytes, original.where, original.orientation);
        } catch (const Error& error) {
            setRemark(remark, "the unblurred photo is left out: " + std::string(error.what()));
        }
    }
    return decode(file, name, 1);
}

}  // namespace

RgbImage decodePhoto(std::string_view file, const Contents& contents, const std::string& name,
                     long long most_pixels, std::string* remark) {
    return originalOr(file, contents, name, remark,
                      [&](std::string_view bytes, const std::string& where, int orientation) {
                          return decodePhoto(bytes, where, most_pixels, orientation);
                      });
}

ShrunkPhoto previewPhoto(std::string_view file, const Contents& contents, const std::string& name,
                         int least_side, long long most_pixels, std::string* remark) {
    return originalOr(file, contents, name, remark,
                      [&](std::string_view bytes, const std::string& where, int orientation) -> ShrunkPhoto {
                          return {readPictureHeader(bytes, where, most_pixels, orientation),
                                  decodePhotoShrunk(bytes, where, least_side, most_pixels, orientation)};
                      });
}

ShrunkPhoto decodePhotoAtLeast(std::string_view file, const Contents& contents, const std::string& name,
                               Size least, long long most_pixels, std::string* remark) {
    return originalOr(file, contents, name, remark,
                      [&](std::string_view bytes, const std::string& where, int orientation) -> ShrunkPhoto {
                          return {readPictureHeader(bytes, where, most_pixels, orientation),
                                  decodePhotoAtLeast(bytes, where, least, most_pixels, orientation)};
                      });
}

DepthMap decodeDepth(const EmbeddedDepth& depth, const std::string& name, long long most_pixels,
                     std::string* remark) {
    DepthMap map = decodeSamples(depth, name, most_pixels);
    for (float& level : map.plane.samples) level = static_cast<float>(nearness(depth, level));
    if (givesDistances(depth))
        spread(&map.plane);
    else if (depth.kind == DepthKind::kLinearRange)
        setRemark(remark,
                  "the depth is linear in distance, but gives no usable near and far; taken as it is");
    return map;
}

SplitPicture decodeSideBySide(std::string_view file, DepthHalf half, const std::string& name,
                              long long most_pixels) {
    const RgbImage whole = decodePhoto(file, name, most_pixels);
    const bool across = half == DepthHalf::kRight || half == DepthHalf::kLeft;
    const int width = across ? whole.width / 2 : whole.width;
    const int height = across ? whole.height : whole.height / 2;
    if (width < 1 || height < 1)
        throw Error(name + ": " + std::to_string(whole.width) + " x " + std::to_string(whole.height) +
                    " pixels cannot be parted into a photo and its depth map");
    const auto part = [&](bool second) {
        return second ? cut(whole, whole.width - width, whole.height - height, {width, height})
                      : cut(whole, 0, 0, {width, height});
    };
    const bool depth_first = half == DepthHalf::kLeft || half == DepthHalf::kAbove;
    DepthMap depth = toDepthMap(part(!depth_first), name);
    return {part(depth_first), std::move(depth)};
}

}  // namespace quorvane::media
