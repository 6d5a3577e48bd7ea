// Samsung's trailer: blocks behind the JPEG, a directory of them, the directory's length, "SEFT". All numbers
// have the lower byte first.
//
//   directory  "SEFH", u32 version, u32 entries; each u16 0, u16 type, u32 distance, u32 size: the block
//              begins `distance` bytes before the directory
//   block      u16 0, u16 type, u32 length of its name, name, data

#include <limits>
#include <utility>

#include "media/embedded/bytes.h"
#include "media/embedded/container.h"
#include "media/embedded/orientation.h"

namespace quorvane::media {
namespace {

constexpr uint64_t kUnblurred = 0x0001, kPlane = 0x0ab1, kExtra = 0x0ab3;

/// The data of the blocks that matter here; of several of one type the first.
struct Blocks {
    std::optional<std::string_view> unblurred, plane, extra;
};

/// The data of the block of `size` bytes that begins `distance` before the end of `before`.
std::optional<std::string_view> blockData(std::string_view before, uint64_t type, uint64_t distance,
                                          uint64_t size) {
    if (distance > before.size()) return std::nullopt;
    const auto block = part(before, before.size() - distance, size);
    if (!block || littleEndian(*block, 2, 2) != type) return std::nullopt;
    const auto name_size = littleEndian(*block, 4, 4);
    if (!name_size || *name_size > block->size() - 8) return std::nullopt;
    return cut(*block, 8 + *name_size);
}

std::optional<Blocks> findBlocks(std::string_view file, std::vector<std::string>* remarks) {
    constexpr uint64_t kEnd = 8, kHead = 12, kEntry = 12;
    const auto length = littleEndian(file, file.size() - kEnd, 4);
    const auto directory = length && *length <= file.size() - kEnd
                               ? part(file, file.size() - kEnd - *length, *length)
                               : std::nullopt;
    if (!directory || !startsWith(*directory, "SEFH")) {
        remarks->push_back("its directory is not where the file's end says");
        return std::nullopt;
    }
    const std::string_view before = file.substr(0, static_cast<size_t>(directory->data() - file.data()));
    const uint64_t entries = littleEndian(*directory, 8, 4).value_or(0);
    Blocks blocks;
    for (uint64_t i = 0; i < entries; ++i) {
        const auto entry = part(*directory, kHead + kEntry * i, kEntry);
        if (!entry) {
            remarks->push_back("its directory ends early");
            break;
        }
        const uint64_t type = littleEndian(*entry, 2, 2).value();
        std::optional<std::string_view>* place = type == kUnblurred ? &blocks.unblurred
                                                 : type == kPlane   ? &blocks.plane
                                                 : type == kExtra   ? &blocks.extra
                                                                    : nullptr;
        if (place == nullptr || place->has_value()) continue;
        *place =
            blockData(before, type, littleEndian(*entry, 4, 4).value(), littleEndian(*entry, 8, 4).value());
        if (!place->has_value())
            remarks->push_back(std::string("the block with the ") +
                               (type == kUnblurred ? "unblurred photo"
                                : type == kPlane   ? "depth"
                                                   : "depth's sides") +
                               " is not where the directory says");
    }
    return blocks;
}

/// The plane's sides. The extra information is 32-bit words, laid out by the version in the first one's lower
/// half.
struct Sides {
    uint64_t width, height;
};
std::optional<Sides> planeSides(std::string_view extra) {
    const auto sides = [extra](uint64_t width_word, uint64_t height_word) -> std::optional<Sides> {
        const auto width = littleEndian(extra, 4 * width_word, 4);
        const auto height = littleEndian(extra, 4 * height_word, 4);
        if (!width || !height) return std::nullopt;
        return Sides{*width, *height};
    };
    switch (littleEndian(extra, 0, 2).value_or(0)) {
        case 1: return sides(9, 10);
        case 3: return sides(12, 13);
        case 4: return sides(17, 18);
        case 5: return sides(20, 19);
        case 6: return sides(22, 21);
        default: return std::nullopt;
    }
}

/// Whether the plane lies across the photo. It lies as the sensor does, and so do the photo's stored pixels
/// wherever Exif has to turn them; it lies across them where they were turned before they were stored.
bool liesAcross(const Sides& plane, PixelSize photo) {
    return (plane.width > plane.height && photo.width < photo.height) ||
           (plane.width < plane.height && photo.width > photo.height);
}

InnerImage innerImage(ImageRole role, std::string_view data, std::string_view file) {
    return {role, "SEF data at byte " + std::to_string(data.data() - file.data()), std::string(mimeOf(data)),
            data.size()};
}

}  // namespace

void readSamsungTrailer(const PhotoFile& file, Contents* contents) {
    if (!file.jpeg || !endsWith(file.bytes, "SEFT")) return;
    const auto remark = [contents](const std::string& why) { contents->remarks.push_back(why); };
    const auto blocks = findBlocks(file.bytes, &contents->remarks);
    if (!blocks) return;

    std::optional<InnerImage> unblurred;
    if (blocks->unblurred) {
        if (walkJpeg(*blocks->unblurred)) {
            unblurred = innerImage(ImageRole::kOriginal, *blocks->unblurred, file.bytes);
            contents->images.push_back(*unblurred);
        } else {
            remark("the unblurred photo is no JPEG");
        }
    }
    // Most of these trailers hold the time and the like only.
    if (!blocks->plane) return;
    const InnerImage plane = innerImage(ImageRole::kDepth, *blocks->plane, file.bytes);
    contents->images.push_back({plane.role, plane.where, "", plane.bytes});
    if (!blocks->extra) return remark("a depth without the block that gives its sides");
    const auto sides = planeSides(*blocks->extra);
    if (!sides) return remark("the block with the depth's sides is cut short or of an unknown version");
    constexpr uint64_t kMostSide = std::numeric_limits<int>::max();
    if (sides->width == 0 || sides->width > kMostSide || sides->height > kMostSide ||
        sides->width * sides->height != blocks->plane->size())
        return remark("the depth has " + std::to_string(blocks->plane->size()) + " bytes, not " +
                      std::to_string(sides->width) + " x " + std::to_string(sides->height));

    EmbeddedDepth depth;
    depth.where = plane.where;
    depth.plane = DepthSamples{std::string(*blocks->plane), static_cast<int>(sides->width),
                               static_cast<int>(sides->height), 8};
    depth.kind = DepthKind::kDisparity;
    depth.larger_is_nearer = true;
    depth.polarity_reason = "Samsung stores larger for nearer";
    depth.orientation = contents->orientation;
    if (liesAcross(*sides, jpegSize(*file.jpeg))) {
        // Phones are mostly held so that the quarter is to the right.
        depth.orientation = exifOfTurn(followedBy(kClockwise90, turnOfExif(contents->orientation)));
        depth.orientation_known = false;
        remark(
            "the depth lies across the photo and nothing says which way; taken as turned by a quarter to the "
            "right");
    }
    contents->depth = std::move(depth);
    if (unblurred)
        contents->original =
            EmbeddedPhoto{unblurred->where, std::string(*blocks->unblurred), contents->orientation};
}

}  // namespace quorvane::media
