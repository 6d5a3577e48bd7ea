#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <stdexcept>

#include "media/embedded/bytes.h"
#include "media/embedded/embedded.h"
#include "media/embedded/heif_plane.h"
#include "media/picture/picture_file.h"
#include "support/photo_writers/apple_heic.h"
#include "support/photo_writers/apple_jpeg.h"
#include "support/photo_writers/pictures.h"
#include "support/photo_writers/turned.h"
#include "support/temporary_folder.h"

namespace quorvane::media {
namespace {

using test::appleHeicFile;
using test::AppleHeicOptions;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Fault = AppleHeicOptions::Fault;
using Plane16 = Image<uint16_t, 1>;

constexpr int kWidth = 160, kHeight = 128;
constexpr long long kEnough = 1'000'000;

RgbImage photo() { return test::somePhoto(2 * kWidth, 2 * kHeight); }
GrayImage plane() { return test::somePlane(kWidth, kHeight); }
std::string heicWith(const AppleHeicOptions& options) { return appleHeicFile(photo(), plane(), options); }

/// The depth's item.
uint32_t itemOf(const Contents& contents) { return std::get<DepthHeifItem>(contents.depth->plane).id; }

/// The depth of a file that has one, decoded.
Plane16 decoded(const std::string& file) {
    const Contents contents = lookInside(file);
    if (!contents.depth) throw std::runtime_error("no depth");
    const HeifPlane heif = decodeHeifItem(file, itemOf(contents), kEnough);
    Plane16 image(heif.width, heif.height);
    image.samples = heif.samples;
    return image;
}

Plane16 widened(const GrayImage& image) {
    Plane16 wide(image.width, image.height);
    wide.samples.assign(image.samples.begin(), image.samples.end());
    return wide;
}

void expectSame(const Plane16& image, const Plane16& expected) {
    EXPECT_EQ(image.width, expected.width);
    EXPECT_EQ(image.height, expected.height);
    EXPECT_TRUE(image.samples == expected.samples);
}

std::vector<ImageRole> rolesOf(const Contents& contents) {
    std::vector<ImageRole> roles;
    for (const InnerImage& image : contents.images) roles.push_back(image.role);
    return roles;
}

TEST(AppleHeic, GivesTheDepthAsItIsStored) {
    const std::string file = heicWith({});
    const Contents contents = lookInside(file);
    EXPECT_THAT(contents.remarks, IsEmpty());
    EXPECT_EQ(contents.file_kind, "HEIC");
    EXPECT_THAT(rolesOf(contents), ElementsAre(ImageRole::kPhoto, ImageRole::kDepth));
    ASSERT_TRUE(contents.depth);
    const EmbeddedDepth& depth = *contents.depth;
    EXPECT_EQ(depth.container, "Apple HEIC");
    EXPECT_EQ(depth.where, "HEIF item 2");
    EXPECT_EQ(depth.where, contents.images[1].where);
    EXPECT_EQ(itemOf(contents), test::kHeicDepth);
    EXPECT_EQ(planeBytes(depth).data(), file.data()) << "the file's own bytes, not a copy of them";
    EXPECT_EQ(planeBytes(depth).size(), file.size());
    EXPECT_EQ(depth.kind, DepthKind::kDisparity);
    EXPECT_TRUE(depth.larger_is_nearer);
    EXPECT_EQ(depth.orientation, 1);
    EXPECT_FALSE(depth.near || depth.far);
    EXPECT_FALSE(contents.original);
    EXPECT_EQ(decodeHeifItem(file, test::kHeicDepth, kEnough).bits, 8);
    expectSame(decoded(file), widened(plane()));
}

// The file ends with the depth: length and bytes of one NAL unit after the other.
TEST(AppleHeic, SaysHowManyBytesThePictureTakes) {
    const std::string file = heicWith({});
    const uint64_t bytes = lookInside(file).images.at(1).bytes;
    ASSERT_LT(bytes, file.size());
    uint64_t at = file.size() - bytes;
    while (at < file.size()) at += 4 + bigEndian(file, at, 4).value_or(0);
    EXPECT_EQ(at, file.size());
    EXPECT_GT(bytes, 100u);
}

TEST(AppleHeic, KeepsSamplesOfTenBits) {
    Plane16 ten(kWidth, kHeight);
    for (size_t i = 0; i < ten.samples.size(); ++i) ten.samples[i] = static_cast<uint16_t>(i * 7 % 1024);
    const std::string file = appleHeicFile(photo(), ten, 10);
    EXPECT_EQ(decodeHeifItem(file, test::kHeicDepth, kEnough).bits, 10);
    expectSame(decoded(file), ten);
}

TEST(AppleHeic, ReadsAvifToo) {
    AppleHeicOptions options;
    options.avif = true;
    const std::string file = heicWith(options);
    EXPECT_EQ(lookInside(file).file_kind, "AVIF");
    expectSame(decoded(file), widened(plane()));
}

TEST(AppleHeic, TakesNeitherMatteNorGainMapForTheDepth) {
    AppleHeicOptions options;
    options.matte = options.gain_map = true;
    const Contents all = lookInside(heicWith(options));
    EXPECT_THAT(rolesOf(all), testing::UnorderedElementsAre(ImageRole::kPhoto, ImageRole::kDepth,
                                                            ImageRole::kMatte, ImageRole::kGainMap));
    ASSERT_TRUE(all.depth);
    EXPECT_EQ(itemOf(all), test::kHeicDepth);

    options.depth = false;
    const Contents others = lookInside(heicWith(options));
    EXPECT_THAT(rolesOf(others),
                testing::UnorderedElementsAre(ImageRole::kPhoto, ImageRole::kMatte, ImageRole::kGainMap));
    EXPECT_FALSE(others.depth);
    EXPECT_THAT(others.remarks, IsEmpty());
}

EmbeddedDepth depthWith(const AppleHeicOptions::Range& range) {
    AppleHeicOptions options;
    options.range = range;
    return lookInside(heicWith(options)).depth.value();
}

TEST(AppleHeic, ReadsTheRangeOfDisparities) {
    const EmbeddedDepth depth = depthWith({1, 0.5, 2.5, {}, {}});
    EXPECT_EQ(depth.kind, DepthKind::kDisparity);
    EXPECT_NEAR(depth.near.value(), 0.4, 1e-5);
    EXPECT_NEAR(depth.far.value(), 2, 1e-5);
    EXPECT_EQ(depth.units, "m");
}

TEST(AppleHeic, ReadsTheRangeOfDistances) {
    const EmbeddedDepth inverse = depthWith({0, {}, {}, 0.75, 12.0});
    EXPECT_EQ(inverse.kind, DepthKind::kDisparity);
    EXPECT_TRUE(inverse.larger_is_nearer);
    EXPECT_NEAR(inverse.near.value(), 0.75, 1e-5);
    EXPECT_NEAR(inverse.far.value(), 12, 1e-5);

    const EmbeddedDepth linear = depthWith({2, {}, {}, 0.75, 12.0});
    EXPECT_EQ(linear.kind, DepthKind::kLinearRange);
    EXPECT_FALSE(linear.larger_is_nearer);
    EXPECT_NEAR(linear.near.value(), 0.75, 1e-5);
    EXPECT_NEAR(linear.far.value(), 12, 1e-5);

    // Without a range, 1 / distance cannot be worked out.
    EXPECT_EQ(depthWith({2, {}, {}, {}, {}}).kind, DepthKind::kUnknown);
    EXPECT_EQ(depthWith({3, 0.5, 2.5, {}, {}}).kind, DepthKind::kUnknown);
}

TEST(AppleHeic, TheDepthsOwnXmpSaysWhatWasMeasured) {
    test::AppleJpegOptions xmp;
    xmp.native_format = "hdep";
    xmp.min_value = 0.5;
    xmp.max_value = 4;
    AppleHeicOptions options;
    options.depth_xmp = test::appleDepthPacket(xmp);
    const EmbeddedDepth depth = lookInside(heicWith(options)).depth.value();
    EXPECT_EQ(depth.kind, DepthKind::kLinearRange);
    EXPECT_FALSE(depth.larger_is_nearer);
    EXPECT_DOUBLE_EQ(depth.near.value(), 0.5);
    EXPECT_DOUBLE_EQ(depth.far.value(), 4);

    options.depth_xmp = "<no XMP";
    const Contents broken = lookInside(heicWith(options));
    EXPECT_TRUE(broken.depth);
    EXPECT_THAT(broken.remarks, ElementsAre(HasSubstr("XMP")));
}

struct Turn {
    int quarters;
    std::optional<int> mirror;
    int code;  ///< Exif's, from the definitions of irot (against the clock) and imir (0: top and bottom)
};

// libheif turns an item as that one says; where only the photo says it, the code does the same to the plane.
TEST(AppleHeic, TurnsTheDepthAsThePhotoIsTurned) {
    const Turn turns[] = {{0, {}, 1}, {1, {}, 8}, {2, {}, 3}, {3, {}, 6}, {0, 0, 4}, {0, 1, 2},
                          {1, 0, 5},  {1, 1, 7},  {2, 0, 2},  {2, 1, 4},  {3, 0, 7}, {3, 1, 5}};
    for (const Turn& turn : turns) {
        SCOPED_TRACE(testing::Message() << "irot " << turn.quarters << ", imir " << turn.mirror.value_or(-1));
        AppleHeicOptions photo_only;
        photo_only.photo_turns = turn.quarters;
        photo_only.photo_mirror = turn.mirror;
        const std::string unturned = heicWith(photo_only);
        EXPECT_EQ(lookInside(unturned).depth.value().orientation, turn.code);
        expectSame(decoded(unturned), widened(plane()));

        AppleHeicOptions both = photo_only;
        both.depth_turns = turn.quarters;
        both.depth_mirror = turn.mirror;
        const std::string turned = heicWith(both);
        EXPECT_EQ(lookInside(turned).depth.value().orientation, 1);
        expectSame(decoded(turned), test::turned(widened(plane()), turn.code));
    }
}

/// Why the depth is not decoded.
std::string refusal(const std::string& file, long long most_pixels) {
    try {
        decodeHeifItem(file, test::kHeicDepth, most_pixels);
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "decoded";
}

TEST(AppleHeic, RefusesAPlaneOfTooManyPixels) {
    const std::string file = heicWith({});
    EXPECT_EQ(refusal(file, kWidth * kHeight), "decoded");
    EXPECT_EQ(refusal(file, kWidth * kHeight - 1), "160 x 128 pixels; at most 20479 are read");
}

// What is coded has few pixels, so that only what the file says tells.
TEST(AppleHeic, RefusesAPlaneThatIsSaidToHaveTooManyPixels) {
    AppleHeicOptions options;
    options.fault = Fault::kHugeDepth;
    EXPECT_EQ(refusal(heicWith(options), kEnough), "20000 x 20000 pixels; at most 1000000 are read");
}

TEST(AppleHeic, RefusesAnItemThatIsNoAuxiliaryPicture) {
    const std::string file = heicWith({});
    EXPECT_THROW(decodeHeifItem(file, test::kHeicPhoto, kEnough), std::runtime_error);
    EXPECT_THROW(decodeHeifItem(file, 77, kEnough), std::runtime_error);
    EXPECT_THROW(decodeHeifItem("", test::kHeicDepth, kEnough), std::runtime_error);
}

TEST(AppleHeic, BrokenFilesGiveOneRemark) {
    for (const Fault fault : {Fault::kDepthBeyondFile, Fault::kNoReference, Fault::kNoAuxType}) {
        SCOPED_TRACE(static_cast<int>(fault));
        AppleHeicOptions options;
        options.fault = fault;
        const Contents contents = lookInside(heicWith(options));
        EXPECT_FALSE(contents.depth);
        ASSERT_EQ(contents.remarks.size(), 1u);
        EXPECT_THAT(contents.remarks[0], testing::StartsWith("Apple HEIC: "));
        EXPECT_THAT(contents.remarks[0], testing::Not(HasSubstr("\n")));
    }
    AppleHeicOptions options;
    options.fault = Fault::kNoReference;
    EXPECT_THAT(lookInside(heicWith(options)).remarks[0], HasSubstr("HEIF item 2 is a depth picture"));
}

TEST(AppleHeic, APlaneThatIsNotCodedIsRefusedWhenDecoded) {
    AppleHeicOptions options;
    options.fault = Fault::kDepthNotCoded;
    EXPECT_THROW(decoded(heicWith(options)), std::runtime_error);
}

// Whatever comes out, it comes out.
TEST(AppleHeic, SurvivesCutAndDamagedFiles) {
    AppleHeicOptions options;
    options.matte = true;
    options.range = AppleHeicOptions::Range{1, 0.5, 2.5, {}, {}};
    options.photo_turns = 1;
    const std::string file = heicWith(options);
    for (size_t size = 0; size < file.size(); size += size < 1000 ? 1 : 97) {
        const Contents contents = lookInside(file.substr(0, size));
        EXPECT_FALSE(contents.depth) << size;
    }
    const size_t data = file.find("mdat");
    ASSERT_NE(data, file.npos);
    for (size_t at = 0; at < data; ++at)
        for (const char value : {'\0', '\x7f', '\xff'}) {
            std::string damaged = file;
            damaged[at] = value;
            const Contents contents = lookInside(damaged);
            if (!contents.depth) continue;
            try {
                decodeHeifItem(damaged, itemOf(contents), kEnough);
            } catch (const std::runtime_error&) {
            }
        }
}

TEST(AppleHeic, HeifConvertGivesTheSamePlane) {
    if (std::system("heif-convert --version > /dev/null 2>&1; test $? != 127") != 0)
        GTEST_SKIP() << "heif-convert is not installed; it comes with libheif-examples";
    const test::TemporaryFolder folder;
    AppleHeicOptions options;
    options.matte = options.gain_map = true;
    options.photo_turns = options.depth_turns = 3;
    const std::string file = heicWith(options);
    test::writeBytes(folder / "photo.heic", file);
    const std::string command =
        "cd " + folder.path() + " && heif-convert --with-aux photo.heic photo.png > /dev/null 2>&1";
    ASSERT_EQ(std::system(command.c_str()), 0);
    const DepthMap theirs = readDepthMap(folder / "photo-depth.png");
    const Plane16 ours = decoded(file);
    ASSERT_EQ(theirs.plane.width, ours.width);
    ASSERT_EQ(theirs.plane.height, ours.height);
    for (size_t i = 0; i < ours.samples.size(); ++i)
        ASSERT_EQ(theirs.plane.samples[i], static_cast<float>(ours.samples[i])) << "sample " << i;
}

}  // namespace
}  // namespace quorvane::media
