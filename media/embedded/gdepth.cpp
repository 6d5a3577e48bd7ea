#include "media/embedded/bytes.h"
#include "media/embedded/container.h"
#include "media/embedded/depth_terms.h"

namespace quorvane::media {
namespace {

void addImage(ImageRole role, const char* where, const std::string& bytes, Contents* contents) {
    contents->images.push_back({role, where, std::string(mimeOf(bytes)), bytes.size()});
}

}  // namespace

/// https://developers.google.com/depthmap-metadata/reference
void readGDepth(const PhotoFile& file, Contents* contents) {
    const Xmp& xmp = file.xmp;
    const std::string_view data = textOf(xmp, kGDepth, "Data");
    if (data.empty()) {
        // Newer containers borrow its terms and keep the plane elsewhere.
        const bool elsewhere = !nodesOf(xmp, kGContainer, "Directory", nullptr, 1).empty() ||
                               !nodesOf(xmp, kDynamicDepth, "Directory", nullptr, 1).empty();
        if (!elsewhere && !nodesOf(xmp, kGDepth, "Format", nullptr, 1).empty())
            contents->remarks.emplace_back("the depth that it describes is missing");
        return;
    }
    auto plane = pictureFromBase64(data, "its depth", contents);
    if (!plane) return;

    EmbeddedDepth depth = depthInTerms(xmp, kGDepth, nullptr, "GDepth", contents);
    depth.where = "GDepth:Data";
    addImage(ImageRole::kDepth, "GDepth:Data", *plane, contents);
    depth.plane = DepthPicture{std::move(*plane)};
    contents->depth = std::move(depth);

    if (const std::string_view text = textOf(xmp, kGDepth, "Confidence"); !text.empty())
        if (const auto bytes = pictureFromBase64(text, "its confidence", contents))
            addImage(ImageRole::kConfidence, "GDepth:Confidence", *bytes, contents);
    if (const std::string_view text = textOf(xmp, kGImage, "Data"); !text.empty())
        if (auto bytes = pictureFromBase64(text, "its unblurred photo", contents)) {
            addImage(ImageRole::kOriginal, "GImage:Data", *bytes, contents);
            contents->original = {"GImage:Data", std::move(*bytes), contents->orientation};
        }
}

}  // namespace quorvane::media
