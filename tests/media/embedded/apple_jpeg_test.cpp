#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

#include "media/embedded/embedded.h"
#include "support/photo_writers/apple_jpeg.h"
#include "support/photo_writers/pictures.h"
#include "support/temporary_folder.h"

namespace quorvane::media {
namespace {

using test::appleDepthJpeg;
using test::AppleJpegOptions;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

RgbImage photo() { return test::somePhoto(96, 64); }
GrayImage plane() { return test::somePlane(48, 32); }
std::string jpegWith(const AppleJpegOptions& options) {
    return test::appleJpegFile(photo(), plane(), options);
}

std::vector<ImageRole> rolesOf(const Contents& contents) {
    std::vector<ImageRole> roles;
    for (const InnerImage& image : contents.images) roles.push_back(image.role);
    return roles;
}

/// Puts `to` wherever `from`, of the same length, stands.
std::string replaced(std::string bytes, const std::string& from, const std::string& to) {
    for (size_t at = bytes.find(from); at != std::string::npos; at = bytes.find(from, at))
        bytes.replace(at, from.size(), to);
    return bytes;
}

TEST(AppleJpeg, GivesTheDepthAsItIsStored) {
    for (const bool big_endian : {true, false}) {
        AppleJpegOptions options;
        options.big_endian = big_endian;
        const std::string file = jpegWith(options), payload = appleDepthJpeg(plane(), options);
        const Contents contents = lookInside(file);
        EXPECT_THAT(contents.remarks, IsEmpty());
        EXPECT_THAT(rolesOf(contents), ElementsAre(ImageRole::kPhoto, ImageRole::kDepth));
        ASSERT_TRUE(contents.depth);
        const EmbeddedDepth& depth = *contents.depth;
        EXPECT_EQ(depth.container, "Apple JPEG");
        EXPECT_EQ(depth.where, "JPEG at byte " + std::to_string(file.size() - payload.size()));
        EXPECT_EQ(depth.where, contents.images[1].where);
        EXPECT_EQ(contents.images[1].bytes, payload.size());
        EXPECT_TRUE(std::holds_alternative<DepthPicture>(depth.plane));
        EXPECT_TRUE(planeBytes(depth) == payload);
        EXPECT_EQ(depth.kind, DepthKind::kDisparity);
        EXPECT_TRUE(depth.larger_is_nearer);
        // 0.5 to 2.5 of 1 / metre.
        EXPECT_DOUBLE_EQ(depth.near.value(), 0.4);
        EXPECT_DOUBLE_EQ(depth.far.value(), 2);
        EXPECT_EQ(depth.units, "m");
        EXPECT_EQ(depth.orientation, 1);
        EXPECT_FALSE(contents.original);
    }
}

TEST(AppleJpeg, FindsTheDepthAmongOthers) {
    AppleJpegOptions options;
    options.gain_map_first = options.matte_first = options.matte_last = true;
    const Contents contents = lookInside(jpegWith(options));
    EXPECT_THAT(rolesOf(contents), ElementsAre(ImageRole::kPhoto, ImageRole::kGainMap, ImageRole::kMatte,
                                               ImageRole::kDepth, ImageRole::kMatte));
    EXPECT_THAT(contents.remarks, IsEmpty());
    ASSERT_TRUE(contents.depth);
    EXPECT_TRUE(planeBytes(*contents.depth) == appleDepthJpeg(plane(), options));
}

TEST(AppleJpeg, AMatteThatCallsItselfDepthIsNone) {
    for (const std::string type :
         {"urn:com:apple:photo:2018:aux:portraiteffectsmatte", "depth", "disparity"}) {
        SCOPED_TRACE(type);
        AppleJpegOptions options;
        options.matte_first = true;
        options.matte_type = type;
        options.depth = false;
        const Contents contents = lookInside(jpegWith(options));
        EXPECT_THAT(rolesOf(contents), ElementsAre(ImageRole::kPhoto, ImageRole::kMatte));
        EXPECT_FALSE(contents.depth);
        EXPECT_THAT(contents.remarks, IsEmpty());
    }
}

TEST(AppleJpeg, ReadsPropertiesAsAttributesAndUnderAnyPrefix) {
    AppleJpegOptions options;
    options.attributes = true;
    options.prefix = "p";
    const Contents contents = lookInside(jpegWith(options));
    ASSERT_TRUE(contents.depth);
    EXPECT_DOUBLE_EQ(contents.depth->near.value(), 0.4);
}

EmbeddedDepth depthWith(const std::string& format, double min_value, double max_value, int int_min = 0,
                        int int_max = 255) {
    AppleJpegOptions options;
    options.native_format = format;
    options.min_value = min_value;
    options.max_value = max_value;
    options.int_min = int_min;
    options.int_max = int_max;
    return lookInside(jpegWith(options)).depth.value();
}

TEST(AppleJpeg, TellsDistanceFromDisparity) {
    for (const std::string format : {"hdis", "fdis"}) {
        const EmbeddedDepth depth = depthWith(format, 0.25, 4);
        EXPECT_EQ(depth.kind, DepthKind::kDisparity);
        EXPECT_TRUE(depth.larger_is_nearer);
        EXPECT_DOUBLE_EQ(depth.near.value(), 0.25);
        EXPECT_DOUBLE_EQ(depth.far.value(), 4);
        EXPECT_THAT(depth.polarity_reason, HasSubstr(format));
    }
    for (const std::string format : {"hdep", "fdep"}) {
        const EmbeddedDepth depth = depthWith(format, 0.5, 3);
        EXPECT_EQ(depth.kind, DepthKind::kLinearRange);
        EXPECT_FALSE(depth.larger_is_nearer);
        EXPECT_DOUBLE_EQ(depth.near.value(), 0.5);
        EXPECT_DOUBLE_EQ(depth.far.value(), 3);
        EXPECT_EQ(depth.units, "m");
    }
}

// The samples 51 to 204 stand for 1 to 2, so that 0 stands for 1 - 1/3 and 255 for 2 + 1/3.
TEST(AppleJpeg, NearAndFarAreThoseOfTheWholeScale) {
    const EmbeddedDepth disparity = depthWith("hdis", 1, 2, 51, 204);
    EXPECT_NEAR(disparity.near.value(), 3.0 / 7, 1e-12);
    EXPECT_NEAR(disparity.far.value(), 1.5, 1e-12);
    const EmbeddedDepth distance = depthWith("hdep", 1, 2, 51, 204);
    EXPECT_NEAR(distance.near.value(), 2.0 / 3, 1e-12);
    EXPECT_NEAR(distance.far.value(), 7.0 / 3, 1e-12);
}

TEST(AppleJpeg, DoesWithoutARangeThatGivesNoDistances) {
    // Disparities of things behind the plane at infinity occur in real files.
    const EmbeddedDepth beyond = depthWith("hdis", -0.25, 2);
    EXPECT_EQ(beyond.kind, DepthKind::kDisparity);
    EXPECT_DOUBLE_EQ(beyond.near.value(), 0.5);
    EXPECT_FALSE(beyond.far);
    EXPECT_FALSE(depthWith("hdis", 2, 1).near);
    EXPECT_FALSE(depthWith("hdis", 1, 2, 255, 0).near);

    const EmbeddedDepth from_zero = depthWith("hdep", 0, 2);
    EXPECT_EQ(from_zero.kind, DepthKind::kUnknown);
    EXPECT_FALSE(from_zero.larger_is_nearer);
    EXPECT_FALSE(from_zero.near || from_zero.far);
}

TEST(AppleJpeg, TurnsTheDepthAsThePhotoUnlessItSaysItself) {
    AppleJpegOptions options;
    options.orientation = 6;
    const Contents contents = lookInside(jpegWith(options));
    EXPECT_EQ(contents.orientation, 6);
    EXPECT_EQ(contents.depth.value().orientation, 6);
    options.depth_orientation = 8;
    EXPECT_EQ(lookInside(jpegWith(options)).depth.value().orientation, 8);
}

TEST(AppleJpeg, FindsTheDepthBehindAnIndexThatDoesNotFit) {
    AppleJpegOptions honest;
    honest.gain_map_first = honest.matte_last = true;
    std::vector<AppleJpegOptions> wrong(6, honest);
    wrong[0].offset_error = 3;
    wrong[1].offset_error = -200;
    wrong[2].offset_error = 1 << 30;
    wrong[3].count = 0;
    wrong[4].count = 2;  // not the depth
    wrong[5].count = 0x10000000;
    for (const AppleJpegOptions& options : wrong) {
        SCOPED_TRACE(testing::Message() << options.offset_error << ", " << options.count.value_or(77));
        const Contents contents = lookInside(jpegWith(options));
        EXPECT_THAT(rolesOf(contents), ElementsAre(ImageRole::kPhoto, ImageRole::kGainMap, ImageRole::kDepth,
                                                   ImageRole::kMatte));
        ASSERT_TRUE(contents.depth);
        EXPECT_TRUE(planeBytes(*contents.depth) == appleDepthJpeg(plane(), options));
        EXPECT_THAT(contents.remarks, ElementsAre(HasSubstr("found by a search")));
    }
}

// The search gives up after pictures enough to hide a file's cost, and starts enough to hide that they are
// none.
TEST(AppleJpeg, SearchPassesOverSevenFalseStartsAndSixtyThreePictures) {
    const AppleJpegOptions options;
    const std::string payload = appleDepthJpeg(plane(), options), file = jpegWith(options);
    const auto foundBehind = [&](const std::string& start, int count) {
        std::string shifted = file;
        std::string inserted = "x";
        for (int i = 0; i < count; ++i) inserted += start;
        shifted.insert(shifted.size() - payload.size(), inserted);
        const Contents contents = lookInside(shifted);
        return contents.depth && planeBytes(*contents.depth) == payload;
    };
    using namespace std::string_literals;
    EXPECT_TRUE(foundBehind("\xff\xd8\xff\0"s, 7));
    EXPECT_FALSE(foundBehind("\xff\xd8\xff\0"s, 8));
    EXPECT_TRUE(foundBehind("\xff\xd8\xff\xd9"s, 63));
    EXPECT_FALSE(foundBehind("\xff\xd8\xff\xd9"s, 64));
}

TEST(AppleJpeg, DoesNotTakeAThumbnailInThePhotoForAPictureBehindIt) {
    AppleJpegOptions options;
    options.thumbnail = test::jpegFile(test::somePhoto(16, 16));
    const std::string payload = appleDepthJpeg(plane(), options), honest = jpegWith(options);
    EXPECT_THAT(lookInside(honest).remarks, IsEmpty());
    options.offset_error =
        static_cast<int>(honest.find(options.thumbnail)) - static_cast<int>(honest.size() - payload.size());
    const Contents contents = lookInside(jpegWith(options));
    EXPECT_THAT(rolesOf(contents), ElementsAre(ImageRole::kPhoto, ImageRole::kDepth));
    ASSERT_TRUE(contents.depth);
    EXPECT_TRUE(planeBytes(*contents.depth) == payload);
}

TEST(AppleJpeg, ACutDepthIsNotUsed) {
    AppleJpegOptions options;
    options.truncated_by = 20;
    const Contents contents = lookInside(jpegWith(options));
    EXPECT_FALSE(contents.depth);
    EXPECT_THAT(rolesOf(contents), ElementsAre(ImageRole::kPhoto, ImageRole::kDepth));
    EXPECT_THAT(contents.remarks, ElementsAre(HasSubstr("the depth, ends early")));
}

TEST(AppleJpeg, SaysThatWhatTheIndexNamesIsGone) {
    AppleJpegOptions options;
    options.truncated_by = appleDepthJpeg(plane(), options).size();
    const Contents contents = lookInside(jpegWith(options));
    EXPECT_FALSE(contents.depth);
    EXPECT_THAT(rolesOf(contents), ElementsAre(ImageRole::kPhoto));
    EXPECT_THAT(contents.remarks, ElementsAre(HasSubstr("pictures that are not there")));
}

TEST(AppleJpeg, LeavesOtherMakersFilesAlone) {
    AppleJpegOptions options;
    options.matte_first = true;
    options.depth = false;
    for (const int offset_error : {0, 5}) {
        options.offset_error = offset_error;
        std::string file = jpegWith(options);
        file = replaced(std::move(file), "ns.apple.com", "ns.other.com");
        file = replaced(std::move(file), std::string("Apple\0", 6), std::string("Other\0", 6));
        const Contents contents = lookInside(file);
        EXPECT_THAT(rolesOf(contents), ElementsAre(ImageRole::kPhoto));
        EXPECT_THAT(contents.remarks, IsEmpty());
    }
}

TEST(AppleJpeg, SurvivesCutAndDamagedFiles) {
    AppleJpegOptions options;
    options.matte_first = true;
    const std::string file = jpegWith(options);
    for (size_t size = 0; size < file.size(); size += 7) lookInside(file.substr(0, size));
    const size_t index = file.find(std::string("MPF\0", 4));
    ASSERT_NE(index, file.npos);
    for (size_t at = index; at < index + 120; ++at)
        for (const char value : {'\0', '\x7f', '\xff'}) {
            std::string damaged = file;
            damaged[at] = value;
            const Contents contents = lookInside(damaged);
            if (!contents.depth) continue;
            EXPECT_TRUE(planeBytes(*contents.depth) == appleDepthJpeg(plane(), options));
        }
}

// Thousands of pictures whose first segments all end where a million empty segments begin.
TEST(AppleJpeg, TakesLinearTimeForPicturesThatShareTheirEnd) {
    using namespace std::string_literals;
    constexpr size_t kPictures = 4000, kStart = 6, kFirst = 100'000;
    const std::string bare = test::jpegFile(photo());
    for (const size_t index_error : {size_t{0}, size_t{1}}) {
        std::string entries(16, '\0');
        for (size_t i = 0; i < kPictures; ++i)
            entries += test::big(0, 8) + test::big(kFirst + i * kStart + index_error, 4) + test::big(0, 4);
        const std::string index = "MPF\0MM\0*\0\0\0\x8\0\x1\xb0\x02\0\x7"s + test::big(entries.size(), 4) +
                                  test::big(26, 4) + test::big(0, 4) + entries;
        std::string file = test::withSegments(bare, {test::segment(0xe2, index)});
        file.resize(file.find("MPF\0"s) + 4 + kFirst, '\0');
        for (size_t i = 0; i < kPictures; ++i)
            file += "\xff\xd8\xff\xe0" + test::big((kPictures - i) * kStart - 4, 2);
        for (int i = 0; i < 1'000'000; ++i) file += "\xff\xe0\0\x2"s;
        const std::clock_t begin = std::clock();
        EXPECT_FALSE(lookInside(file).depth);
        EXPECT_LT(std::clock() - begin, 4 * CLOCKS_PER_SEC);
    }
}

TEST(AppleJpeg, ExiftoolGivesTheSameBytes) {
    if (std::system("exiftool -ver > /dev/null 2>&1") != 0)
        GTEST_SKIP() << "exiftool is not installed; it comes with libimage-exiftool-perl";
    const test::TemporaryFolder folder;
    AppleJpegOptions options;
    options.gain_map_first = true;
    const std::string file = jpegWith(options);
    test::writeBytes(folder / "photo.jpg", file);
    const std::string command = "cd " + folder.path() + " && exiftool -b -MPImage3 photo.jpg > depth.jpg";
    ASSERT_EQ(std::system(command.c_str()), 0);
    const Contents contents = lookInside(file);
    ASSERT_TRUE(contents.depth);
    EXPECT_TRUE(planeBytes(*contents.depth) == test::bytesOf(folder / "depth.jpg"));
}

TEST(AppleJpeg, ReadsAPhonesOwnPhoto) {
    const char* photos = std::getenv("QUORVANE_SHARED_PHOTOS");
    if (photos == nullptr) GTEST_SKIP() << "QUORVANE_SHARED_PHOTOS names no folder of real photos";
    const std::string folder = std::string(photos) + "/embedded/";
    const std::string file = test::bytesOf(folder + "iphonex_vase.jpg");
    ASSERT_FALSE(file.empty()) << folder;
    const Contents contents = lookInside(file);
    EXPECT_THAT(contents.remarks, IsEmpty());
    EXPECT_THAT(rolesOf(contents), ElementsAre(ImageRole::kPhoto, ImageRole::kDepth));
    ASSERT_TRUE(contents.depth);
    EXPECT_TRUE(planeBytes(*contents.depth) == test::bytesOf(folder + "extracted/iphonex_vase_depth.jpg"));
    EXPECT_EQ(contents.depth->kind, DepthKind::kDisparity);
    EXPECT_TRUE(contents.depth->larger_is_nearer);
    // Disparities from 0.650879 to 2.509766.
    EXPECT_DOUBLE_EQ(contents.depth->near.value(), 1 / 2.509766);
    EXPECT_DOUBLE_EQ(contents.depth->far.value(), 1 / 0.650879);
    EXPECT_EQ(contents.depth->orientation, 1);
}

}  // namespace
}  // namespace quorvane::media
