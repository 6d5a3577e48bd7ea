#include <algorithm>

#include "media/embedded/apple_pixels.h"
#include "media/embedded/bytes.h"
#include "media/embedded/container.h"
#include "media/embedded/mpf.h"

namespace quorvane::media {
namespace {

bool startsJpeg(std::string_view file, uint64_t offset) { return bigEndian(file, offset, 3) == 0xffd8ffu; }

/// The JPEGs that start at `offsets`, in this order. Each is walked to the next one's start at most, so that
/// no byte is walked twice.
std::vector<Jpeg> jpegsAt(std::string_view file, const std::vector<uint64_t>& offsets) {
    std::vector<Jpeg> jpegs;
    for (size_t i = 0; i < offsets.size(); ++i) {
        const uint64_t limit = i + 1 < offsets.size() ? offsets[i + 1] : file.size();
        if (const auto jpeg = walkJpeg(cut(file, 0, limit), offsets[i])) jpegs.push_back(*jpeg);
    }
    return jpegs;
}

/// The JPEGs behind `from`, wherever they are.
std::vector<Jpeg> jpegsBehind(std::string_view file, uint64_t from) {
    using namespace std::string_view_literals;
    // Phones append up to about ten.
    constexpr size_t kMostJpegs = 64;
    // What starts as a JPEG and has no end may be walked again and again.
    constexpr int kMostFalseStarts = 8;
    std::vector<Jpeg> jpegs;
    for (int false_starts = 0; false_starts < kMostFalseStarts && jpegs.size() < kMostJpegs;) {
        const size_t start = file.find("\xff\xd8\xff"sv, static_cast<size_t>(from));
        if (start == std::string_view::npos) break;
        const auto jpeg = walkJpeg(file, start);
        const bool whole = jpeg && jpeg->complete;
        if (whole)
            jpegs.push_back(*jpeg);
        else
            ++false_starts;
        from = whole ? jpeg->end : start + 3;
    }
    return jpegs;
}

bool isMadeByApple(const Jpeg& jpeg) {
    constexpr uint16_t kMake = 0x010f;
    const auto directory = exifDirectory(jpeg);
    return directory && startsWith(directory->field(kMake), "Apple");
}

EmbeddedDepth depthIn(std::string_view file, const Jpeg& jpeg, const Xmp& xmp, int photo_orientation) {
    EmbeddedDepth depth;
    depth.plane = DepthPicture{std::string(cut(file, jpeg.begin, jpeg.end - jpeg.begin))};
    describeAppleDepth(xmp, 255, &depth);
    // It is stored the way the photo is, and seldom has an orientation of its own.
    depth.orientation = exifOrientation(jpeg).value_or(photo_orientation);
    return depth;
}

/// What the JPEGs behind a photo hold, and whether the XMP of one of them is Apple's.
struct Found {
    Contents contents;
    bool made_by_apple = false;
};

Found lookInto(std::string_view file, const std::vector<Jpeg>& jpegs, int photo_orientation) {
    Found found;
    Contents& contents = found.contents;
    for (const Jpeg& jpeg : jpegs) {
        const std::string where = "JPEG at byte " + std::to_string(jpeg.begin);
        std::vector<std::string> faults;
        const Xmp xmp = xmpOf(jpeg, &faults);
        for (const std::string& fault : faults) contents.remarks.push_back(where + ": " + fault);
        const std::optional<ImageRole> role = appleRole(xmp);
        found.made_by_apple = found.made_by_apple || role;
        contents.images.push_back(
            {role.value_or(ImageRole::kOther), where, "image/jpeg", jpeg.end - jpeg.begin});
        if (role != ImageRole::kDepth || contents.depth) continue;
        if (!jpeg.complete) {
            contents.remarks.push_back(where + ", the depth, ends early");
            continue;
        }
        contents.depth = depthIn(file, jpeg, xmp, photo_orientation);
        contents.depth->where = where;
    }
    return found;
}

}  // namespace

void readAppleJpeg(const PhotoFile& file, Contents* contents) {
    if (!file.jpeg) return;
    const auto index = multiPictureIndex(file.bytes, *file.jpeg);
    if (!index) return;

    std::vector<uint64_t> offsets;
    size_t listed = 0;
    for (const IndexedPicture& picture : *index) {
        listed += picture.offset != 0;
        if (picture.offset >= file.jpeg->end && startsJpeg(file.bytes, picture.offset))
            offsets.push_back(picture.offset);
    }
    const bool true_index = listed > 0 && offsets.size() == listed;
    std::sort(offsets.begin(), offsets.end());
    offsets.erase(std::unique(offsets.begin(), offsets.end()), offsets.end());

    const int orientation = contents->orientation;
    Found found = lookInto(file.bytes, jpegsAt(file.bytes, offsets), orientation);
    bool by_search = false;
    if (!true_index || (found.made_by_apple && !found.contents.depth)) {
        Found more = lookInto(file.bytes, jpegsBehind(file.bytes, file.jpeg->end), orientation);
        by_search = more.contents.depth.has_value();
        if (by_search || more.contents.images.size() > found.contents.images.size()) found = std::move(more);
    }
    // Other makers' files have such an index for previews and gain maps.
    if (!found.made_by_apple && !isMadeByApple(*file.jpeg)) return;
    if (by_search)
        found.contents.remarks.push_back(
            "the multi-picture index does not fit the file; its depth was found by a search");
    else if (!true_index)
        found.contents.remarks.push_back(
            "the multi-picture index names pictures that are not there; the file was changed or cut");
    found.contents.orientation = orientation;
    *contents = std::move(found.contents);
}

}  // namespace quorvane::media
