#include <array>

#include "media/embedded/bytes.h"
#include "media/embedded/container.h"
#include "media/embedded/mpf.h"

namespace quorvane::media {
namespace {

/// The places of the disparity pictures in the file. What else an index lists are previews.
std::vector<uint64_t> viewOffsets(std::string_view file, const Jpeg& jpeg) {
    std::vector<uint64_t> offsets;
    if (const auto index = multiPictureIndex(file, jpeg))
        for (const IndexedPicture& picture : *index)
            if (picture.type == kDisparityPicture) offsets.push_back(picture.offset);
    return offsets;
}

/// The JPEG at that place, which is the photo's own or lies behind that one, so that no thumbnail is taken.
std::optional<Jpeg> viewAt(const PhotoFile& file, uint64_t offset) {
    if (offset == 0) return file.jpeg;
    return offset >= file.jpeg->end ? walkJpeg(file.bytes, offset) : std::nullopt;
}

}  // namespace

/// CIPA DC-007 lists the views from the leftmost to the rightmost; of several the first two are a pair.
void readMpo(const PhotoFile& file, Contents* contents) {
    if (!file.jpeg) return;
    const std::vector<uint64_t> offsets = viewOffsets(file.bytes, *file.jpeg);
    if (offsets.size() < 2) return;
    const std::array<std::optional<Jpeg>, 2> jpegs = {viewAt(file, offsets[0]), viewAt(file, offsets[1])};
    const auto remark = [contents](const char* text) { contents->remarks.emplace_back(text); };
    if (!jpegs[0] || !jpegs[1])
        return remark("its index names a view that is not there; the file was changed or cut");
    if (jpegs[0]->end > jpegs[1]->begin && jpegs[1]->end > jpegs[0]->begin)
        return remark("its index names views that are not apart");
    if (!jpegs[0]->complete || !jpegs[1]->complete) return remark("a view ends early; the file was cut");

    const auto view = [&](const Jpeg& jpeg) {
        StereoView named;
        named.where = "JPEG";
        if (jpeg.begin == 0) return named;
        named.where += " at byte " + std::to_string(jpeg.begin);
        named.bytes = cut(file.bytes, jpeg.begin, jpeg.end - jpeg.begin);
        named.orientation = contents->orientation;
        contents->images.push_back({ImageRole::kView, named.where, "image/jpeg", named.bytes.size()});
        return named;
    };
    StereoPair pair;
    pair.left = view(*jpegs[0]);
    pair.right = view(*jpegs[1]);
    contents->pair = std::move(pair);
}

}  // namespace quorvane::media
