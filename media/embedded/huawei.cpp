// Huawei's trailer: behind the JPEG, often an unblurred one, then the depth, the u32 of its size and
// "DepthEn\0". The depth begins with a header of 64 bytes: at 3 its orientation, at 12 and 14 its width and
// height of 16 bit. All numbers have the lower byte first.

#include "media/embedded/bytes.h"
#include "media/embedded/container.h"

namespace quorvane::media {
namespace {

using namespace std::string_view_literals;

/// Exif's code for Huawei's, 0 for another.
int exifCode(uint64_t code) {
    switch (code) {
        case 0x10: return 1;
        case 0x11: return 8;
        case 0x12: return 3;
        case 0x13: return 6;
        default: return 0;
    }
}

int64_t pixels(const Jpeg& jpeg) {
    const PixelSize size = jpegSize(jpeg);
    return int64_t{size.width} * size.height;
}

/// The first whole JPEG between the photo and the depth with at least half the photo's pixels; smaller ones
/// are previews.
std::optional<Jpeg> findUnblurred(std::string_view before_depth, const Jpeg& photo) {
    uint64_t at = photo.end;
    while (true) {
        at = before_depth.find("\xff\xd8\xff"sv, static_cast<size_t>(at));
        if (at == std::string_view::npos) return std::nullopt;
        auto jpeg = walkJpeg(before_depth, at);
        if (!jpeg || !jpeg->complete) return std::nullopt;
        if (2 * pixels(*jpeg) >= pixels(photo)) return jpeg;
        at = jpeg->end;
    }
}

}  // namespace

void readHuaweiTrailer(const PhotoFile& file, Contents* contents) {
    constexpr auto kEnd = "DepthEn\0"sv;
    if (!file.jpeg || !endsWith(file.bytes, kEnd)) return;
    const auto remark = [contents](const std::string& why) { contents->remarks.push_back(why); };

    constexpr uint64_t kHeader = 64;
    const uint64_t end = file.bytes.size() - kEnd.size() - 4;
    const auto size = littleEndian(file.bytes, end, 4);
    if (!size || *size < kHeader || *size > end) return remark("the size of its depth is impossible");
    const uint64_t begin = end - *size;
    const std::string_view block = cut(file.bytes, begin, *size);
    const uint64_t width = littleEndian(block, 12, 2).value(), height = littleEndian(block, 14, 2).value();
    const std::string where = "edof block at byte " + std::to_string(begin);
    contents->images.push_back({ImageRole::kDepth, where, "", *size});
    const auto samples = part(block, kHeader, width * height);
    if (!samples || samples->empty())
        return remark("its depth of " + std::to_string(*size - kHeader) + " bytes cannot be " +
                      std::to_string(width) + " x " + std::to_string(height));

    EmbeddedDepth depth;
    depth.where = where;
    depth.plane = DepthSamples{std::string(*samples), static_cast<int>(width), static_cast<int>(height), 8};
    depth.kind = DepthKind::kDisparity;
    depth.larger_is_nearer = true;
    depth.polarity_reason = "Huawei stores larger for nearer";
    depth.orientation = exifCode(littleEndian(block, 3, 1).value());
    if (depth.orientation == 0) {
        remark("an unknown orientation; its depth is turned as the photo is");
        depth.orientation = contents->orientation;
    }
    contents->depth = std::move(depth);

    const auto unblurred = findUnblurred(cut(file.bytes, 0, begin), *file.jpeg);
    if (!unblurred) return;
    const std::string_view bytes = cut(file.bytes, unblurred->begin, unblurred->end - unblurred->begin);
    const std::string place = "JPEG at byte " + std::to_string(unblurred->begin);
    contents->images.push_back({ImageRole::kOriginal, place, "image/jpeg", bytes.size()});
    contents->original = EmbeddedPhoto{place, std::string(bytes), contents->orientation};
}

}  // namespace quorvane::media
