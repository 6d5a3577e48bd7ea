#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>

#include "media/embedded/embedded.h"
#include "support/photo_writers/pictures.h"
#include "support/photo_writers/xmp_depth.h"
#include "support/processes.h"
#include "support/temporary_folder.h"

namespace quorvane::media {
namespace {

using test::gdepthFile;
using test::GDepthOptions;
using test::jpegFile;
using test::pngFile;
using test::somePhoto;
using test::somePlane;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const RgbImage kPhoto = somePhoto(160, 120);
const GrayImage kPlane = somePlane(80, 60);

Contents inside(const GDepthOptions& options) { return lookInside(gdepthFile(kPhoto, kPlane, options)); }

TEST(GDepth, GivesThePlaneAndWhatItMeans) {
    const Contents contents = inside(GDepthOptions());
    EXPECT_EQ(contents.file_kind, "JPEG");
    EXPECT_THAT(contents.remarks, IsEmpty());
    ASSERT_TRUE(contents.depth);
    const EmbeddedDepth& depth = *contents.depth;
    EXPECT_EQ(depth.container, "GDepth");
    EXPECT_EQ(depth.where, "GDepth:Data");
    EXPECT_EQ(planeBytes(depth), pngFile(kPlane));
    EXPECT_TRUE(std::holds_alternative<DepthPicture>(depth.plane));
    EXPECT_EQ(depth.kind, DepthKind::kInverseRange);
    EXPECT_FALSE(depth.larger_is_nearer);
    EXPECT_EQ(depth.polarity_reason, "GDepth stores 0 for near");
    EXPECT_EQ(depth.near, 0.5);
    EXPECT_EQ(depth.far, 8.0);
    EXPECT_EQ(depth.units, "m");
    EXPECT_EQ(depth.orientation, 1);
    EXPECT_FALSE(contents.original);
}

TEST(GDepth, IsTheSameInEveryMannerOfWriting) {
    for (const bool elements : {false, true})
        for (const char* suffix : {"", "7"})
            for (const bool extended : {false, true}) {
                SCOPED_TRACE(std::to_string(elements) + suffix + std::to_string(extended));
                GDepthOptions options;
                options.manner = {elements, suffix};
                options.extended = extended;
                options.piece = 1000;
                options.terms.format = "RangeLinear";
                const Contents contents = inside(options);
                EXPECT_THAT(contents.remarks, IsEmpty());
                ASSERT_TRUE(contents.depth);
                EXPECT_EQ(planeBytes(*contents.depth), pngFile(kPlane));
                EXPECT_EQ(contents.depth->kind, DepthKind::kLinearRange);
                EXPECT_FALSE(contents.depth->larger_is_nearer);
                EXPECT_EQ(contents.depth->far, 8.0);
            }
}

TEST(GDepth, GivesTheUnblurredPhotoAndListsWhatIsInside) {
    GDepthOptions options;
    options.original = jpegFile(somePhoto(158, 118));
    options.confidence = pngFile(somePlane(20, 15));
    options.orientation = 6;
    const std::string file = gdepthFile(kPhoto, kPlane, options);
    const Contents contents = lookInside(file);
    EXPECT_THAT(contents.remarks, IsEmpty());
    EXPECT_EQ(contents.orientation, 6);
    ASSERT_TRUE(contents.depth);
    EXPECT_EQ(planeBytes(*contents.depth), pngFile(kPlane));
    EXPECT_EQ(contents.depth->orientation, 6) << "the plane lies as the photo is stored";
    ASSERT_TRUE(contents.original);
    EXPECT_EQ(contents.original->where, "GImage:Data");
    EXPECT_EQ(contents.original->bytes, options.original);
    EXPECT_EQ(contents.original->orientation, 6);

    ASSERT_EQ(contents.images.size(), 4u);
    EXPECT_EQ(contents.images[0].role, ImageRole::kPhoto);
    EXPECT_EQ(contents.images[0].bytes, file.size());
    EXPECT_EQ(contents.images[1].role, ImageRole::kDepth);
    EXPECT_EQ(contents.images[1].where, "GDepth:Data");
    EXPECT_EQ(contents.images[1].mime, "image/png");
    EXPECT_EQ(contents.images[1].bytes, pngFile(kPlane).size());
    EXPECT_EQ(contents.images[2].role, ImageRole::kConfidence);
    EXPECT_EQ(contents.images[2].bytes, options.confidence.size());
    EXPECT_EQ(contents.images[3].role, ImageRole::kOriginal);
    EXPECT_EQ(contents.images[3].mime, "image/jpeg");
}

TEST(GDepth, TypeIsToldByTheBytesNotByTheirLabel) {
    GDepthOptions options;
    options.mime = "image/jpeg";
    const Contents contents = inside(options);
    ASSERT_TRUE(contents.depth);
    ASSERT_EQ(contents.images.size(), 2u);
    EXPECT_EQ(contents.images[1].mime, "image/png");
}

TEST(GDepth, TermsThatMakeNoSenseAreNotUsed) {
    const std::pair<const char*, const char*> distances[] = {
        {"8", "0.5"}, {"0", "8"}, {"-1", "8"}, {"x", "8"}, {"", "8"}, {"2", "2"}, {"0.5", "inf"}};
    for (const auto& [near, far] : distances) {
        SCOPED_TRACE(std::string(near) + " to " + far);
        GDepthOptions options;
        options.terms.near = near;
        options.terms.far = far;
        const Contents contents = inside(options);
        ASSERT_TRUE(contents.depth);
        EXPECT_EQ(contents.depth->kind, DepthKind::kInverseRange);
        EXPECT_FALSE(contents.depth->near);
        EXPECT_FALSE(contents.depth->far);
        EXPECT_THAT(contents.remarks, ElementsAre(HasSubstr("nearest and farthest distance make no sense")));
    }
}

TEST(GDepth, TermsMayBeMissing) {
    GDepthOptions options;
    options.terms = {"", "", "", ""};
    const Contents contents = inside(options);
    EXPECT_THAT(contents.remarks, IsEmpty());
    ASSERT_TRUE(contents.depth);
    EXPECT_EQ(contents.depth->kind, DepthKind::kUnknown);
    EXPECT_FALSE(contents.depth->larger_is_nearer);
    EXPECT_FALSE(contents.depth->near);
    EXPECT_EQ(contents.depth->units, "");
}

TEST(GDepth, DioptersBecomeDistances) {
    GDepthOptions options;
    options.terms = {"RangeInverse", "4", "0.25", "Diopters"};
    const Contents contents = inside(options);
    EXPECT_THAT(contents.remarks, IsEmpty());
    ASSERT_TRUE(contents.depth);
    EXPECT_EQ(contents.depth->near, 0.25);
    EXPECT_EQ(contents.depth->far, 4.0);
    EXPECT_EQ(contents.depth->units, "m");
}

TEST(GDepth, SaysWhyItsDataCannotBeUsed) {
    const auto remarks = [](const std::string& data) {
        GDepthOptions options;
        options.data = data;
        const Contents contents = inside(options);
        EXPECT_FALSE(contents.depth);
        EXPECT_EQ(contents.images.size(), 1u);
        return contents.remarks;
    };
    EXPECT_THAT(remarks("no base 64!"), ElementsAre("GDepth: its depth is not base 64"));
    EXPECT_THAT(remarks(test::base64("no picture")),
                ElementsAre(HasSubstr("GDepth: its depth is no JPEG, PNG")));
    EXPECT_THAT(remarks(" "), ElementsAre(HasSubstr("GDepth: the depth that it describes is missing")));
}

TEST(GDepth, LostPieceOfItsDataIsSaid) {
    GDepthOptions options;
    options.piece = 1000;
    std::string file = gdepthFile(kPhoto, kPlane, options);
    const size_t second = file.rfind("http://ns.adobe.com/xmp/extension/") - 4;
    const size_t length =
        static_cast<uint8_t>(file[second + 2]) * size_t{256} + static_cast<uint8_t>(file[second + 3]);
    file.erase(second, 2 + length);
    const Contents contents = lookInside(file);
    EXPECT_FALSE(contents.depth);
    EXPECT_THAT(contents.remarks, ElementsAre("extended XMP: pieces are missing",
                                              "GDepth: the depth that it describes is missing"));
}

TEST(GDepth, PlainPhotosHoldNone) {
    const Contents contents = lookInside(jpegFile(kPhoto));
    EXPECT_FALSE(contents.depth);
    EXPECT_THAT(contents.remarks, IsEmpty());
    EXPECT_EQ(contents.images.size(), 1u);
}

TEST(GDepth, EveryCutIsSurvived) {
    GDepthOptions options;
    options.original = jpegFile(somePhoto(40, 30));
    const std::string file = gdepthFile(kPhoto, kPlane, options);
    for (size_t size = 0; size < file.size(); size += 37) lookInside(file.substr(0, size));
}

TEST(GDepth, IsTheBytesThatExifToolFinds) {
    if (test::outputOf("exiftool -ver 2>/dev/null").empty()) GTEST_SKIP() << "no exiftool to compare with";
    const test::TemporaryFolder folder;
    GDepthOptions options;
    options.original = jpegFile(somePhoto(158, 118));
    options.piece = 2000;
    for (const bool elements : {false, true}) {
        options.manner.elements = elements;
        const std::string file = gdepthFile(kPhoto, kPlane, options);
        test::writeBytes(folder / "a.jpg", file);
        const Contents contents = lookInside(file);
        ASSERT_TRUE(contents.depth && contents.original);
        EXPECT_EQ(planeBytes(*contents.depth),
                  test::outputOf("exiftool -b -XMP-GDepth:DepthImage " + folder / "a.jpg"));
        EXPECT_EQ(contents.original->bytes,
                  test::outputOf("exiftool -b -XMP-GImage:ImageData " + folder / "a.jpg"));
    }
}

TEST(GDepth, PhonesPhotoGivesItsPlane) {
    const char* const photos = std::getenv("QUORVANE_SHARED_PHOTOS");
    if (photos == nullptr) GTEST_SKIP() << "QUORVANE_SHARED_PHOTOS names no folder of phones' photos";
    const std::string folder = std::string(photos) + "/embedded";
    const Contents contents = lookInside(test::bytesOf(folder + "/gdepth_table.jpg"));
    EXPECT_THAT(contents.remarks, IsEmpty());
    ASSERT_TRUE(contents.depth);
    EXPECT_TRUE(planeBytes(*contents.depth) == test::bytesOf(folder + "/extracted/gdepth_table_depth.png"));
    EXPECT_EQ(contents.depth->kind, DepthKind::kInverseRange);
    EXPECT_NEAR(contents.depth->near.value_or(0), 12.4236, 1e-4);
    EXPECT_NEAR(contents.depth->far.value_or(0), 390.5393, 1e-4);
    ASSERT_TRUE(contents.original);
    EXPECT_EQ(contents.original->bytes.size(), 189118u);
}

}  // namespace
}  // namespace quorvane::media
