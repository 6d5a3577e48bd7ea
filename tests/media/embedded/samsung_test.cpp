#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "media/embedded/embedded.h"
#include "support/photo_writers/pictures.h"
#include "support/photo_writers/trailers.h"
#include "support/photo_writers/turned.h"

namespace quorvane::media {
namespace {

using test::exifSegment;
using test::jpegFile;
using test::samsungFile;
using test::SamsungOptions;
using test::somePhoto;
using test::somePlane;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const GrayImage kPlane = somePlane(32, 24);

std::string bytesOf(const GrayImage& plane) { return {plane.samples.begin(), plane.samples.end()}; }

/// What lies as the plane does.
std::string landscape() { return jpegFile(somePhoto(160, 120)); }

std::string withExif(const std::string& jpeg, int code) {
    return test::withSegments(jpeg, {exifSegment(code)});
}

std::vector<ImageRole> rolesIn(const Contents& contents) {
    std::vector<ImageRole> roles;
    for (const InnerImage& image : contents.images) roles.push_back(image.role);
    return roles;
}

TEST(Samsung, GivesThePlaneAsItIs) {
    const std::string photo = landscape();
    const Contents contents = lookInside(samsungFile(photo, kPlane));
    EXPECT_THAT(contents.remarks, IsEmpty());
    ASSERT_TRUE(contents.depth);
    const EmbeddedDepth& depth = *contents.depth;
    EXPECT_EQ(depth.container, "Samsung SEF trailer");
    const auto& samples = std::get<DepthSamples>(depth.plane);
    EXPECT_EQ(samples.bits, 8);
    EXPECT_EQ(samples.width, 32);
    EXPECT_EQ(samples.height, 24);
    EXPECT_EQ(planeBytes(depth), bytesOf(kPlane));
    EXPECT_EQ(depth.kind, DepthKind::kDisparity);
    EXPECT_TRUE(depth.larger_is_nearer);
    EXPECT_THAT(depth.polarity_reason, HasSubstr("Samsung"));
    EXPECT_EQ(depth.orientation, 1);
    EXPECT_FALSE(contents.original);
    EXPECT_THAT(rolesIn(contents), ElementsAre(ImageRole::kPhoto, ImageRole::kDepth));
    // Behind the photo, a block of the time (8 + 14 + 13 bytes) and the head of its own (8 + 19).
    EXPECT_EQ(depth.where, "SEF data at byte " + std::to_string(photo.size() + 62));
}

TEST(Samsung, FindsTheSidesInEveryVersion) {
    for (const int version : {1, 3, 4, 5, 6}) {
        SCOPED_TRACE(version);
        SamsungOptions options;
        options.version = version;
        const Contents contents = lookInside(samsungFile(landscape(), kPlane, options));
        EXPECT_THAT(contents.remarks, IsEmpty());
        ASSERT_TRUE(contents.depth);
        EXPECT_EQ(std::get<DepthSamples>(contents.depth->plane).width, 32);
        EXPECT_EQ(std::get<DepthSamples>(contents.depth->plane).height, 24);
    }
}

TEST(Samsung, TakesBlocksInAnyOrder) {
    SamsungOptions options;
    options.reversed = true;
    options.unblurred = landscape();
    const Contents contents = lookInside(samsungFile(landscape(), kPlane, options));
    EXPECT_THAT(contents.remarks, IsEmpty());
    ASSERT_TRUE(contents.depth);
    EXPECT_EQ(planeBytes(*contents.depth), bytesOf(kPlane));
    ASSERT_TRUE(contents.original);
    EXPECT_EQ(contents.original->bytes, options.unblurred);
}

TEST(Samsung, GivesTheUnblurredPhotoAsItWasStored) {
    SamsungOptions options;
    options.unblurred = jpegFile(somePhoto(80, 60));
    const Contents contents = lookInside(samsungFile(withExif(landscape(), 6), kPlane, options));
    ASSERT_TRUE(contents.original);
    EXPECT_EQ(contents.original->bytes, options.unblurred);
    EXPECT_EQ(contents.original->orientation, 6) << "it lies as the photo does";
    EXPECT_THAT(rolesIn(contents), ElementsAre(ImageRole::kPhoto, ImageRole::kOriginal, ImageRole::kDepth));
}

TEST(Samsung, LeavesOutAnUnblurredPhotoThatIsNone) {
    SamsungOptions options;
    options.unblurred = "\x89PNG or so";
    const Contents contents = lookInside(samsungFile(landscape(), kPlane, options));
    EXPECT_TRUE(contents.depth);
    EXPECT_FALSE(contents.original);
    EXPECT_THAT(contents.remarks, ElementsAre("Samsung SEF trailer: the unblurred photo is no JPEG"));
}

TEST(Samsung, TurnsThePlaneAsExifTurnsAPhotoThatLiesAsTheSensor) {
    for (int code = 1; code <= 8; ++code) {
        SCOPED_TRACE(code);
        const Contents contents = lookInside(samsungFile(withExif(landscape(), code), kPlane));
        ASSERT_TRUE(contents.depth);
        EXPECT_EQ(contents.depth->orientation, code);
        EXPECT_THAT(contents.remarks, IsEmpty());
    }
}

TEST(Samsung, TurnsAPlaneThatLiesAcrossThePhotoToTheRightFirst) {
    for (int code = 1; code <= 8; ++code) {
        SCOPED_TRACE(code);
        const std::string portrait = withExif(jpegFile(somePhoto(120, 160)), code);
        const Contents contents = lookInside(samsungFile(portrait, kPlane));
        ASSERT_TRUE(contents.depth);
        const GrayImage as_the_photo = test::turned(kPlane, 6);
        EXPECT_EQ(test::turned(kPlane, contents.depth->orientation).samples,
                  test::turned(as_the_photo, code).samples);
        EXPECT_THAT(contents.remarks, ElementsAre(HasSubstr("across the photo")));
    }
    const Contents upright = lookInside(samsungFile(jpegFile(somePhoto(120, 160)), kPlane));
    EXPECT_EQ(upright.depth->orientation, 6);
}

TEST(Samsung, TakesASquareOrCroppedPhotoToLieAsThePlane) {
    for (const auto& photo : {somePhoto(100, 100), somePhoto(160, 90), somePhoto(110, 100)}) {
        const Contents contents = lookInside(samsungFile(withExif(jpegFile(photo), 6), kPlane));
        ASSERT_TRUE(contents.depth);
        EXPECT_EQ(contents.depth->orientation, 6);
        EXPECT_THAT(contents.remarks, IsEmpty());
    }
}

TEST(Samsung, SaysNothingOfATrailerWithoutADepth) {
    SamsungOptions options;
    options.with_plane = false;
    options.with_sides = false;
    options.unblurred = landscape();
    const Contents contents = lookInside(samsungFile(landscape(), kPlane, options));
    EXPECT_FALSE(contents.depth);
    EXPECT_FALSE(contents.original);
    EXPECT_THAT(contents.remarks, IsEmpty());
}

TEST(Samsung, HasNoBusinessWithOtherFiles) {
    const std::string trailer = samsungFile("", kPlane);
    for (const std::string& file : {landscape(), "PNG" + trailer, trailer, landscape() + "SEFT\n"}) {
        const Contents contents = lookInside(file);
        EXPECT_FALSE(contents.depth);
        EXPECT_THAT(contents.remarks, IsEmpty());
    }
}

/// What is said of a file whose depth cannot be used.
std::string remarkOf(const SamsungOptions& options) {
    const Contents contents = lookInside(samsungFile(landscape(), kPlane, options));
    EXPECT_FALSE(contents.depth);
    EXPECT_FALSE(contents.original);
    EXPECT_FALSE(contents.remarks.empty());
    return contents.remarks.empty() ? "" : contents.remarks.front();
}

TEST(Samsung, RemarksSidesThatDoNotMakeThePlane) {
    SamsungOptions options;
    options.width = 31;
    EXPECT_EQ(remarkOf(options), "Samsung SEF trailer: the depth has 768 bytes, not 31 x 24");
    for (const auto& [width, height] : std::vector<std::pair<uint32_t, uint32_t>>{
             {0, 24}, {32, 0}, {0xffffffff, 0xffffffff}, {0x80000000, 2}, {33, 24}}) {
        options.width = width;
        options.height = height;
        EXPECT_THAT(remarkOf(options), HasSubstr("the depth has 768 bytes"));
    }
    // An empty plane is none.
    const Contents contents = lookInside(samsungFile(landscape(), GrayImage()));
    EXPECT_FALSE(contents.depth);
    EXPECT_THAT(contents.remarks, ElementsAre(HasSubstr("0 bytes, not 0 x 0")));
}

TEST(Samsung, RemarksSidesThatAreNotThere) {
    SamsungOptions options;
    options.with_sides = false;
    EXPECT_THAT(remarkOf(options), HasSubstr("without the block that gives its sides"));
    options = {};
    for (const int version : {0, 2, 7, 65535}) {
        options.version = version;
        EXPECT_THAT(remarkOf(options), HasSubstr("cut short or of an unknown version"));
    }
    options = {};
    // One byte before the end of the height in word 13.
    for (const size_t bytes : {0U, 1U, 13U, 55U}) {
        options.extra_bytes = bytes;
        EXPECT_THAT(remarkOf(options), HasSubstr("cut short or of an unknown version"));
    }
    options.extra_bytes = 56;
    EXPECT_TRUE(lookInside(samsungFile(landscape(), kPlane, options)).depth);
}

TEST(Samsung, RemarksBlocksThatAreNotWhereTheDirectorySays) {
    std::vector<SamsungOptions> damaged(7);
    damaged[0].distance = 0;
    damaged[1].distance = 1;
    damaged[2].distance = 0xffffffff;
    damaged[3].block_size = 0xffffffff;
    damaged[4].block_size = 7;
    damaged[5].name_size = 0xffffffff;
    // To the block of the time, of 8 + 14 + 13 bytes before the plane's (8 + 19 + 768) and the sides' (8 + 19
    // + 100).
    damaged[6].distance = 35 + 795 + 127;
    damaged[6].block_size = 35;
    for (size_t i = 0; i < damaged.size(); ++i) {
        SCOPED_TRACE(i);
        EXPECT_THAT(remarkOf(damaged[i]), HasSubstr("with the depth is not where the directory says"));
    }
}

TEST(Samsung, RemarksADirectoryThatIsNotThere) {
    SamsungOptions options;
    for (const uint32_t length : {0U, 3U, 12U, 0xfffffffcU, 0xffffffffU}) {
        options.directory_length = length;
        EXPECT_EQ(remarkOf(options), "Samsung SEF trailer: its directory is not where the file's end says");
    }
}

TEST(Samsung, KeepsWhatADirectoryThatEndsEarlyDoesList) {
    SamsungOptions options;
    options.entries = 0xffffffff;
    const Contents contents = lookInside(samsungFile(landscape(), kPlane, options));
    EXPECT_TRUE(contents.depth);
    EXPECT_THAT(contents.remarks, ElementsAre("Samsung SEF trailer: its directory ends early"));
}

TEST(Samsung, BearsEveryCut) {
    SamsungOptions options;
    options.unblurred = jpegFile(somePhoto(16, 12));
    const std::string whole = samsungFile(jpegFile(somePhoto(16, 12)), somePlane(8, 6), options);
    // The trailer's end behind less and less before it.
    const std::string end = whole.substr(whole.size() - 8);
    for (size_t kept = 0; kept < whole.size(); ++kept) {
        lookInside(whole.substr(0, kept) + end);
        lookInside(whole.substr(0, 3) + whole.substr(whole.size() - kept));
    }
}

}  // namespace
}  // namespace quorvane::media
