#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "media/embedded/embedded.h"
#include "support/photo_writers/pictures.h"
#include "support/photo_writers/trailers.h"

namespace quorvane::media {
namespace {

using test::huaweiFile;
using test::HuaweiOptions;
using test::jpegFile;
using test::somePhoto;
using test::somePlane;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const GrayImage kPlane = somePlane(32, 24);

std::string photoFile() { return jpegFile(somePhoto(160, 120)); }

std::string bytesOf(const GrayImage& plane) { return {plane.samples.begin(), plane.samples.end()}; }

TEST(Huawei, GivesThePlaneAsItIs) {
    const std::string photo = photoFile();
    const Contents contents = lookInside(huaweiFile(photo, kPlane));
    EXPECT_THAT(contents.remarks, IsEmpty());
    ASSERT_TRUE(contents.depth);
    const EmbeddedDepth& depth = *contents.depth;
    EXPECT_EQ(depth.container, "Huawei edof trailer");
    EXPECT_EQ(depth.where, "edof block at byte " + std::to_string(photo.size()));
    const auto& samples = std::get<DepthSamples>(depth.plane);
    EXPECT_EQ(samples.bits, 8);
    EXPECT_EQ(samples.width, 32);
    EXPECT_EQ(samples.height, 24);
    EXPECT_EQ(planeBytes(depth), bytesOf(kPlane));
    EXPECT_EQ(depth.kind, DepthKind::kDisparity);
    EXPECT_TRUE(depth.larger_is_nearer);
    EXPECT_THAT(depth.polarity_reason, HasSubstr("Huawei"));
    EXPECT_EQ(depth.orientation, 1);
    EXPECT_FALSE(contents.original);
}

TEST(Huawei, SaysHowThePlaneLiesWhateverExifSaysOfThePhoto) {
    const std::string photo = test::withSegments(photoFile(), {test::exifSegment(3)});
    const std::vector<std::pair<int, int>> codes = {{0x10, 1}, {0x11, 8}, {0x12, 3}, {0x13, 6}};
    for (const auto& [code, exif] : codes) {
        HuaweiOptions options;
        options.orientation = static_cast<uint8_t>(code);
        const Contents contents = lookInside(huaweiFile(photo, kPlane, options));
        ASSERT_TRUE(contents.depth);
        EXPECT_EQ(contents.depth->orientation, exif);
        EXPECT_THAT(contents.remarks, IsEmpty());
    }
    HuaweiOptions options;
    options.orientation = 0x14;
    const Contents contents = lookInside(huaweiFile(photo, kPlane, options));
    ASSERT_TRUE(contents.depth);
    EXPECT_EQ(contents.depth->orientation, 3) << "as the photo, where the code is unknown";
    EXPECT_THAT(contents.remarks, ElementsAre(HasSubstr("unknown orientation")));
}

TEST(Huawei, GivesTheUnblurredPhotoBetween) {
    HuaweiOptions options;
    options.unblurred = jpegFile(somePhoto(158, 118));
    const std::string photo = test::withSegments(photoFile(), {test::exifSegment(6)});
    const Contents contents = lookInside(huaweiFile(photo, kPlane, options));
    EXPECT_THAT(contents.remarks, IsEmpty());
    ASSERT_TRUE(contents.depth);
    EXPECT_EQ(planeBytes(*contents.depth), bytesOf(kPlane));
    ASSERT_TRUE(contents.original);
    EXPECT_EQ(contents.original->bytes, options.unblurred);
    EXPECT_EQ(contents.original->where, "JPEG at byte " + std::to_string(photo.size()));
    EXPECT_EQ(contents.original->orientation, 6);
}

TEST(Huawei, PassesOverAPreviewBetween) {
    const std::string preview = jpegFile(somePhoto(40, 30)), full = photoFile();
    HuaweiOptions options;
    options.unblurred = preview;
    EXPECT_FALSE(lookInside(huaweiFile(photoFile(), kPlane, options)).original);
    options.unblurred = preview + "padding" + full;
    const Contents contents = lookInside(huaweiFile(photoFile(), kPlane, options));
    ASSERT_TRUE(contents.original);
    EXPECT_EQ(contents.original->bytes, full);
}

TEST(Huawei, LeavesOutAnUnblurredPhotoThatIsCutShort) {
    HuaweiOptions options;
    const std::string full = photoFile();
    options.unblurred = full.substr(0, full.size() - 2);
    const Contents contents = lookInside(huaweiFile(photoFile(), kPlane, options));
    EXPECT_TRUE(contents.depth);
    EXPECT_FALSE(contents.original);
}

TEST(Huawei, HasNoBusinessWithOtherFiles) {
    const std::string trailer = huaweiFile("", kPlane);
    for (const std::string& file : {photoFile(), trailer, "PNG" + trailer, photoFile() + "DepthEn"}) {
        const Contents contents = lookInside(file);
        EXPECT_FALSE(contents.depth);
        EXPECT_THAT(contents.remarks, IsEmpty());
    }
}

std::string remarkOf(const HuaweiOptions& options) {
    const Contents contents = lookInside(huaweiFile(photoFile(), kPlane, options));
    EXPECT_FALSE(contents.depth);
    EXPECT_FALSE(contents.original);
    EXPECT_EQ(contents.remarks.size(), 1u);
    return contents.remarks.empty() ? "" : contents.remarks.front();
}

TEST(Huawei, RemarksAnImpossibleSize) {
    HuaweiOptions options;
    for (const uint32_t size : {0U, 63U, 0x00ffffffU, 0xffffffffU}) {
        options.block_size = size;
        EXPECT_EQ(remarkOf(options), "Huawei edof trailer: the size of its depth is impossible");
    }
}

TEST(Huawei, RemarksSidesThatThePlaneCannotHave) {
    HuaweiOptions options;
    options.width = 33;
    EXPECT_EQ(remarkOf(options), "Huawei edof trailer: its depth of 768 bytes cannot be 33 x 24");
    for (const auto& [width, height] :
         std::vector<std::pair<uint16_t, uint16_t>>{{0, 24}, {32, 0}, {0xffff, 0xffff}, {32, 25}}) {
        options.width = width;
        options.height = height;
        EXPECT_THAT(remarkOf(options), HasSubstr("768 bytes cannot be"));
    }
}

TEST(Huawei, BearsEveryCut) {
    HuaweiOptions options;
    options.unblurred = jpegFile(somePhoto(16, 12));
    const std::string whole = huaweiFile(jpegFile(somePhoto(16, 12)), somePlane(8, 6), options);
    const std::string end = whole.substr(whole.size() - 12);
    for (size_t kept = 0; kept < whole.size(); ++kept) {
        lookInside(whole.substr(0, kept) + end);
        lookInside(whole.substr(0, 3) + whole.substr(whole.size() - kept));
    }
}

}  // namespace
}  // namespace quorvane::media
