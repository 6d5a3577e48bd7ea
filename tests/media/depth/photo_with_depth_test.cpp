#include "media/depth/photo_with_depth.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

#include "media/picture/vips.h"
#include "support/photo_writers/apple_heic.h"
#include "support/photo_writers/pictures.h"
#include "support/photo_writers/trailers.h"
#include "support/photo_writers/turned.h"
#include "system/error.h"

namespace quorvane::media {
namespace {

using test::huaweiFile;
using test::jpegFile;
using test::pngFile;
using test::samsungFile;
using test::sideBySideFile;
using test::somePhoto;
using test::somePlane;
using testing::AllOf;
using testing::Each;
using testing::ElementsAre;
using testing::FloatNear;
using testing::HasSubstr;
using testing::Pointwise;
using testing::StartsWith;

/// What is said of a file that is refused.
template <typename Decode>
std::string refusal(Decode decode) {
    try {
        decode();
    } catch (const Error& error) {
        EXPECT_EQ(std::string(error.what()).find('\n'), std::string::npos) << "more than one line";
        return error.what();
    }
    return "not refused";
}

Image<float, 1> floats(const GrayImage& image) {
    Image<float, 1> plane(image.width, image.height);
    plane.samples.assign(image.samples.begin(), image.samples.end());
    return plane;
}

/// A plane of 8 bit as bare samples.
EmbeddedDepth bare(const GrayImage& plane) {
    EmbeddedDepth depth;
    depth.plane = DepthSamples{{plane.samples.begin(), plane.samples.end()}, plane.width, plane.height, 8};
    return depth;
}

/// One row of 16 bit as bare samples.
EmbeddedDepth bareRow(const std::vector<uint16_t>& samples) {
    DepthSamples row = {"", static_cast<int>(samples.size()), 1, 16};
    for (const uint16_t sample : samples) row.bytes += test::little(sample, 2);
    EmbeddedDepth depth;
    depth.plane = row;
    return depth;
}

template <typename Sample>
Image<Sample, 1> row(std::vector<Sample> samples) {
    Image<Sample, 1> image(static_cast<int>(samples.size()), 1);
    image.samples = std::move(samples);
    return image;
}

EmbeddedDepth picture(std::string file) {
    EmbeddedDepth depth;
    depth.plane = DepthPicture{std::move(file)};
    return depth;
}

/// The levels of a row.
std::vector<float> levels(const EmbeddedDepth& depth) { return decodeDepth(depth, "it").plane.samples; }

EmbeddedDepth linear(EmbeddedDepth depth, double near, double far) {
    depth.kind = DepthKind::kLinearRange;
    depth.larger_is_nearer = false;
    depth.near = near;
    depth.far = far;
    return depth;
}

// Bare samples, and pictures whose own files say nothing, are turned by the code that comes with them.
TEST(DecodeDepth, GivesEveryCodingBackTurnedByEveryOrientation) {
    const GrayImage plane = somePlane(9, 5);
    Image<uint16_t, 1> deep(9, 5);
    DepthSamples deep_samples = {"", 9, 5, 16};
    for (size_t i = 0; i < plane.samples.size(); ++i) {
        deep.samples[i] = static_cast<uint16_t>(plane.samples[i] * 257);
        deep_samples.bytes += test::little(deep.samples[i], 2);
    }
    EmbeddedDepth deep_bare;
    deep_bare.plane = deep_samples;
    struct Case {
        EmbeddedDepth depth;
        GrayImage plane;
        int bits;
    };
    for (Case each : {Case{bare(plane), plane, 8}, Case{picture(pngFile(plane)), plane, 8},
                      Case{deep_bare, plane, 16}, Case{picture(pngFile(deep)), plane, 16}})
        for (int code = 1; code <= 8; ++code) {
            SCOPED_TRACE(testing::Message() << "coding " << each.depth.plane.index() << ", " << each.bits
                                            << " bit, orientation " << code);
            each.depth.orientation = code;
            const DepthMap map = decodeDepth(each.depth, "it");
            const Image<float, 1> expected = test::turned(floats(each.plane), code);
            EXPECT_EQ(map.bits, each.bits);
            EXPECT_EQ(map.plane.width, expected.width);
            EXPECT_EQ(map.plane.height, expected.height);
            if (each.bits == 8)
                EXPECT_EQ(map.plane.samples, expected.samples);
            else
                EXPECT_THAT(map.plane.samples, Pointwise(FloatNear(1e-3f), expected.samples));
        }
}

TEST(DecodeDepth, GivesThePlanesOfTrailersBack) {
    const std::string photo = test::withSegments(jpegFile(somePhoto(160, 120)), {test::exifSegment(6)});
    const GrayImage plane = somePlane(32, 24);
    test::HuaweiOptions quarter;
    quarter.orientation = 0x13;
    for (const std::string& file : {samsungFile(photo, plane), huaweiFile(photo, plane, quarter)}) {
        const Contents contents = lookInside(file);
        ASSERT_TRUE(contents.depth);
        const DepthMap map = decodeDepth(*contents.depth, "it");
        EXPECT_EQ(map.plane.width, 24);
        EXPECT_EQ(map.plane.height, 32);
        EXPECT_EQ(map.plane.samples, floats(test::turned(plane, 6)).samples);
    }
}

TEST(DecodeDepth, TurnsPlanesOfOtherPolarityOver) {
    EmbeddedDepth depth = bare(row<uint8_t>({0, 60, 200}));
    for (const DepthKind kind : {DepthKind::kDisparity, DepthKind::kInverseRange, DepthKind::kUnknown}) {
        depth.kind = kind;
        depth.larger_is_nearer = true;
        EXPECT_THAT(levels(depth), ElementsAre(0.0f, 60.0f, 200.0f));
        depth.larger_is_nearer = false;
        EXPECT_THAT(levels(depth), ElementsAre(255.0f, 195.0f, 55.0f));
    }
    EmbeddedDepth deep = picture(pngFile(row<uint16_t>({2570, 5140, 12850})));
    EXPECT_THAT(levels(deep), Pointwise(FloatNear(1e-3f), {10.0f, 20.0f, 50.0f}));
    deep.larger_is_nearer = false;
    EXPECT_THAT(levels(deep), Pointwise(FloatNear(1e-3f), {245.0f, 235.0f, 205.0f}));
}

TEST(DecodeDepth, ReadsSixteenBitWithTheLowerByteFirst) {
    EXPECT_THAT(levels(bareRow({0x0101, 0x0202, 0x6464})), Pointwise(FloatNear(1e-3f), {1.0f, 2.0f, 100.0f}));
}

// From 1 to 256 in 255 steps a sample s lies at s + 1, and (1 / d - 1 / 256) / (1 - 1 / 256) * 255 is
// 256 / d - 1.
TEST(DecodeDepth, MakesALinearRangeLinearInOneOverDistance) {
    EmbeddedDepth depth = linear(bare(row<uint8_t>({0, 1, 3, 7, 15, 63, 127, 255})), 1.0, 256.0);
    const std::vector<float> expected = {255, 127, 63, 31, 15, 3, 1, 0};
    EXPECT_THAT(levels(depth), Pointwise(FloatNear(1e-3f), expected));
    // The unit does not matter.
    EXPECT_THAT(levels(linear(depth, 1000.0, 256000.0)), Pointwise(FloatNear(1e-3f), expected));

    depth = linear(bare(row<uint8_t>({255, 254, 252, 248, 240, 192, 128, 0})), 1.0, 256.0);
    depth.larger_is_nearer = true;
    EXPECT_THAT(levels(depth), Pointwise(FloatNear(1e-3f), expected));
}

// Samples 85, 170 and 255 from 2 to 8 lie at 4, 6 and 8: 1/4, 1/6 and 1/8, of which 1/6 is a third of the
// way.
TEST(DecodeDepth, SpreadsALinearRangeOverWhatItUses) {
    EXPECT_THAT(levels(linear(bare(row<uint8_t>({85, 170, 255})), 2.0, 8.0)),
                Pointwise(FloatNear(1e-3f), {255.0f, 85.0f, 0.0f}));
}

// From 1 to 65536 a sample s lies at s + 1: 2, 4 and 8. Read as spread samples they would lie elsewhere.
TEST(DecodeDepth, TakesALinearRangeOfSixteenBitOverItsFullScale) {
    for (const EmbeddedDepth& depth : {bareRow({1, 3, 7}), picture(pngFile(row<uint16_t>({1, 3, 7})))}) {
        const DepthMap map = decodeDepth(linear(depth, 1.0, 65536.0), "it");
        EXPECT_EQ(map.bits, 16);
        EXPECT_THAT(map.plane.samples, Pointwise(FloatNear(0.01f), {255.0f, 85.0f, 0.0f}));
    }
}

TEST(DecodeDepth, TakesALinearRangeFromNowhereAsItIsAndSaysSo) {
    const EmbeddedDepth depth = bare(row<uint8_t>({10, 100, 250}));
    const double infinity = std::numeric_limits<double>::infinity(), nan = std::nan("");
    std::vector<EmbeddedDepth> without(7, linear(depth, 0.0, 5.0));
    without[1] = linear(depth, -1.0, 5.0);
    without[2] = linear(depth, 5.0, 5.0);
    without[3] = linear(depth, 5.0, 1.0);
    without[4] = linear(depth, 1.0, infinity);
    without[5] = linear(depth, nan, nan);
    without[6].near.reset();
    for (size_t i = 0; i < without.size(); ++i) {
        SCOPED_TRACE(i);
        std::string remark;
        EXPECT_THAT(decodeDepth(without[i], "it", kMostPixels, &remark).plane.samples,
                    ElementsAre(245.0f, 155.0f, 5.0f));
        EXPECT_THAT(remark, HasSubstr("linear in distance"));
    }
    std::string remark;
    decodeDepth(linear(depth, 1.0, 5.0), "it", kMostPixels, &remark);
    decodeDepth(depth, "it", kMostPixels, &remark);
    EXPECT_EQ(remark, "");
}

TEST(DecodeDepth, StaysInRangeForEveryNearAndFar) {
    const std::vector<double> distances = {5e-324, 1e-300, 1e-3, 1.0, 1.0000000001, 1e3, 1e308};
    for (const double near : distances)
        for (const double far : distances) {
            const std::vector<float> seen = levels(linear(bareRow({0, 1, 30000, 65535}), near, far));
            EXPECT_THAT(seen, Each(AllOf(testing::Ge(0.0f), testing::Le(255.0f)))) << near << " " << far;
        }
}

TEST(DecodeDepth, TakesAPictureWithEqualChannelsAndAlpha) {
    startVips();
    // Gray 40 and 200, the second transparent.
    std::vector<uint8_t> samples = {40, 40, 40, 255, 200, 200, 200, 0};
    const vips::VImage rgba =
        vips::VImage::new_from_memory(samples.data(), samples.size(), 2, 1, 4, VIPS_FORMAT_UCHAR)
            .copy(vips::VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB));
    VipsBlob* blob = rgba.pngsave_buffer();
    size_t size = 0;
    const void* bytes = vips_blob_get(blob, &size);
    EmbeddedDepth depth = picture({static_cast<const char*>(bytes), size});
    vips_area_unref(VIPS_AREA(blob));
    depth.larger_is_nearer = false;
    EXPECT_THAT(levels(depth), Pointwise(FloatNear(0.01f), {215.0f, 55.0f}));
}

TEST(DecodeDepth, TakesAHeifItem) {
    const GrayImage plane = somePlane(160, 128);
    std::string file = test::appleHeicFile(somePhoto(320, 256), plane);
    EmbeddedDepth depth;
    depth.plane = DepthHeifItem{file, test::kHeicDepth};
    depth.orientation = 6;
    DepthMap map = decodeDepth(depth, "it");
    EXPECT_EQ(map.bits, 8);
    EXPECT_EQ(map.plane.width, 128);
    EXPECT_EQ(map.plane.samples, floats(test::turned(plane, 6)).samples);

    // 10 bit, from 200 to 710 of 1023.
    Image<uint16_t, 1> deep(plane.width, plane.height);
    for (size_t i = 0; i < deep.samples.size(); ++i)
        deep.samples[i] = static_cast<uint16_t>(200 + 2 * plane.samples[i]);
    deep.samples[0] = 200;
    deep.samples[1] = 710;
    file = test::appleHeicFile(somePhoto(320, 256), deep, 10);
    depth.plane = DepthHeifItem{file, test::kHeicDepth};
    depth.orientation = 1;
    depth.larger_is_nearer = false;
    map = decodeDepth(depth, "it");
    EXPECT_EQ(map.bits, 10);
    std::vector<float> expected;
    for (const uint16_t sample : deep.samples)
        expected.push_back(static_cast<float>(1023 - sample) * 255.0f / 1023.0f);
    EXPECT_THAT(map.plane.samples, Pointwise(FloatNear(1e-3f), expected));

    // A third of 1023.
    std::fill(deep.samples.begin(), deep.samples.end(), uint16_t{341});
    file = test::appleHeicFile(somePhoto(320, 256), deep, 10);
    depth.plane = DepthHeifItem{file, test::kHeicDepth};
    EXPECT_THAT(levels(depth), Each(FloatNear(170.0f, 1e-3f)));
    EXPECT_EQ(decodeDepth(depth, "a.heic", 160 * 128).plane.width, 160);
    EXPECT_THAT(refusal([&] { decodeDepth(depth, "a.heic", 160 * 128 - 1); }), StartsWith("a.heic: "));
}

TEST(DecodeDepth, RefusesWhatIsNoPlane) {
    EXPECT_EQ(refusal([] { decodeDepth(picture("nothing"), "a.jpg"); }),
              "a.jpg: not a JPEG, PNG, WebP, HEIC, AVIF or TIFF picture");
    EXPECT_EQ(refusal([] { decodeDepth(picture(jpegFile(somePhoto(40, 30))), "a.jpg"); }),
              "a.jpg: a colour picture; a depth map is gray");
    EmbeddedDepth item;
    item.plane = DepthHeifItem{"no HEIC", 1};
    EXPECT_THAT(refusal([&] { decodeDepth(item, "a.heic"); }), StartsWith("a.heic: "));
}

/// Peak memory of this process so far, in MB.
long peakMegabytes() {
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss / 1024;
}

TEST(DecodeDepth, RefusesSizesBeforeTheyTakeMemory) {
    const long before = peakMegabytes();
    constexpr int kMost = std::numeric_limits<int>::max();
    for (const int bits : {8, 16})
        for (const auto& [width, height] : std::vector<std::pair<int, int>>{
                 {kMost, kMost}, {kMost, 1}, {50000, 50000}, {0, 9}, {9, 0}, {-3, -3}, {11, 10}}) {
            EmbeddedDepth depth = bare(somePlane(10, 10));
            auto& samples = std::get<DepthSamples>(depth.plane);
            samples.bits = bits;
            samples.width = width;
            samples.height = height;
            EXPECT_THAT(refusal([&] { decodeDepth(depth, "a.jpg"); }),
                        AllOf(StartsWith("a.jpg: "), HasSubstr("100 bytes")));
        }
    EmbeddedDepth half = bare(somePlane(10, 10));
    std::get<DepthSamples>(half.plane).bits = 16;
    EXPECT_THAT(refusal([&] { decodeDepth(half, "a.jpg"); }), HasSubstr("too few for 10 x 10 samples"));

    const EmbeddedDepth hundred = bare(somePlane(10, 10));
    EXPECT_EQ(decodeDepth(hundred, "a.jpg", 100).plane.width, 10);
    EXPECT_THAT(refusal([&] { decodeDepth(hundred, "a.jpg", 99); }), HasSubstr("10 x 10 pixels; at most"));

    EmbeddedDepth large = bare(GrayImage(5000, 4001));
    EXPECT_EQ(refusal([&] { decodeDepth(large, "a.jpg", 20'000'000); }),
              "a.jpg: 5000 x 4001 pixels; at most 20 million are read");
    large.plane = DepthPicture{pngFile(GrayImage(5000, 4001))};
    EXPECT_EQ(refusal([&] { decodeDepth(large, "a.jpg", 20'000'000); }),
              "a.jpg: 5000 x 4001 pixels; at most 20 million are read");
    // As floats the large plane would take 80 MB.
    EXPECT_LT(peakMegabytes() - before, 75);
}

/// A photo of one colour.
RgbImage flat(int width, int height, uint8_t red, uint8_t green, uint8_t blue) {
    RgbImage image(width, height);
    for (size_t i = 0; i < image.samples.size(); i += 3) {
        image.samples[i] = red;
        image.samples[i + 1] = green;
        image.samples[i + 2] = blue;
    }
    return image;
}

bool isReddish(const RgbImage& image) { return image.samples[0] > 150 && image.samples[2] < 100; }

const std::string kBluePhoto = jpegFile(flat(40, 30, 20, 20, 200));
const std::string kRedPhoto = jpegFile(flat(40, 30, 200, 20, 20));

TEST(DecodePhotoFile, PrefersTheUnblurredPhoto) {
    Contents contents;
    std::string remark;
    EXPECT_FALSE(isReddish(decodePhoto(kBluePhoto, contents, "a.jpg")));
    contents.original = EmbeddedPhoto{"there", kRedPhoto, 1};
    EXPECT_TRUE(isReddish(decodePhoto(kBluePhoto, contents, "a.jpg", kMostPixels, &remark)));
    EXPECT_EQ(remark, "");
}

TEST(DecodePhotoFile, FallsBackToThePhotoAndSaysSo) {
    Contents contents;
    for (const std::string& broken : {kRedPhoto.substr(0, kRedPhoto.size() / 2), std::string("nothing"),
                                      std::string(), jpegFile(flat(400, 300, 200, 20, 20))}) {
        contents.original = EmbeddedPhoto{"JPEG at byte 7", broken, 1};
        std::string remark;
        EXPECT_FALSE(isReddish(decodePhoto(kBluePhoto, contents, "a.jpg", 40 * 30, &remark)));
        EXPECT_THAT(remark, StartsWith("the unblurred photo is left out: JPEG at byte 7: "));
        EXPECT_FALSE(isReddish(decodePhoto(kBluePhoto, contents, "a.jpg", 40 * 30)));
    }
    EXPECT_THAT(refusal([&] { decodePhoto("nothing", contents, "a.jpg"); }), StartsWith("not refused"));
    contents.original->bytes.clear();
    EXPECT_THAT(refusal([&] { decodePhoto("nothing", contents, "a.jpg"); }), StartsWith("a.jpg: "));
}

TEST(DecodePhotoFile, TurnsAnUnblurredPhotoThatDoesNotSayHowItLies) {
    Contents contents;
    contents.original = EmbeddedPhoto{"there", kRedPhoto, 6};
    EXPECT_EQ(decodePhoto(kBluePhoto, contents, "a.jpg").width, 30);
    contents.original->bytes = test::withSegments(kRedPhoto, {test::exifSegment(3)});
    EXPECT_EQ(decodePhoto(kBluePhoto, contents, "a.jpg").width, 40) << "its own orientation counts";
}

TEST(PreviewPhoto, IsThePhotoThatWouldBeDecoded) {
    Contents contents;
    const ShrunkPhoto blue = previewPhoto(kBluePhoto, contents, "a.jpg", 15);
    EXPECT_FALSE(isReddish(blue.shrunk));
    EXPECT_EQ(blue.header.width, 40);
    EXPECT_EQ(blue.header.height, 30);
    EXPECT_EQ(blue.shrunk.width, 20);
    EXPECT_EQ(blue.shrunk.height, 15);
    contents.original = EmbeddedPhoto{"there", kRedPhoto, 6};
    const ShrunkPhoto red = previewPhoto(kBluePhoto, contents, "a.jpg", 15);
    EXPECT_TRUE(isReddish(red.shrunk));
    EXPECT_EQ(red.header.width, 30);
    EXPECT_EQ(red.shrunk.width, 15);
    contents.original->bytes.resize(kRedPhoto.size() / 2);
    std::string remark;
    EXPECT_FALSE(isReddish(previewPhoto(kBluePhoto, contents, "a.jpg", 15, kMostPixels, &remark).shrunk));
    EXPECT_THAT(remark, StartsWith("the unblurred photo is left out: there: "));
}

TEST(SideBySide, PartsPhotoAndDepthWhereverTheDepthIs) {
    const RgbImage photo = somePhoto(21, 13);
    const GrayImage depth = somePlane(21, 13);
    for (const DepthHalf half : {DepthHalf::kRight, DepthHalf::kLeft, DepthHalf::kBelow, DepthHalf::kAbove})
        for (const int between : {0, 1}) {
            SCOPED_TRACE(testing::Message()
                         << "half " << static_cast<int>(half) << ", " << between << " between");
            const SplitPicture split =
                decodeSideBySide(sideBySideFile(photo, depth, half, between), half, "it");
            EXPECT_EQ(split.photo.width, 21);
            EXPECT_EQ(split.photo.height, 13);
            EXPECT_EQ(split.photo.samples, photo.samples);
            EXPECT_EQ(split.depth.plane.width, 21);
            EXPECT_EQ(split.depth.plane.height, 13);
            EXPECT_THAT(split.depth.plane.samples, Pointwise(FloatNear(0.01f), floats(depth).samples));
        }
}

TEST(SideBySide, RefusesAColourHalf) {
    const std::string file = sideBySideFile(somePhoto(20, 20), somePlane(20, 20), DepthHalf::kRight);
    EXPECT_EQ(refusal([&] { decodeSideBySide(file, DepthHalf::kLeft, "a.png"); }),
              "a.png: a colour picture; a depth map is gray");
}

TEST(SideBySide, RefusesWhatHasNoHalves) {
    const std::string pixel = pngFile(GrayImage(1, 1)), column = pngFile(GrayImage(1, 8));
    EXPECT_EQ(refusal([&] { decodeSideBySide(pixel, DepthHalf::kRight, "a.png"); }),
              "a.png: 1 x 1 pixels cannot be parted into a photo and its depth map");
    EXPECT_THAT(refusal([&] { decodeSideBySide(column, DepthHalf::kLeft, "a.png"); }),
                HasSubstr("cannot be parted"));
    EXPECT_EQ(decodeSideBySide(column, DepthHalf::kAbove, "a.png").photo.height, 4);
    EXPECT_THAT(refusal([&] { decodeSideBySide(column, DepthHalf::kAbove, "a.png", 7); }),
                HasSubstr("1 x 8 pixels; at most"));
}

/// The first channel of a picture as libvips alone reads it.
std::vector<float> firstChannel(const std::string& path) {
    startVips();
    const vips::VImage image = vips::VImage::new_from_file(path.c_str());
    return fromVips<float, 1>(image.extract_band(0)).samples;
}

/// Photos from phones lie in the folder that QUORVANE_SHARED_PHOTOS names; they are not ours to hand on.
class PhotosFromPhones : public testing::Test {
  protected:
    void SetUp() override {
        const char* photos = std::getenv("QUORVANE_SHARED_PHOTOS");
        if (photos == nullptr)
            GTEST_SKIP() << "QUORVANE_SHARED_PHOTOS names no folder: photos from phones are not tried";
        folder = std::string(photos) + "/embedded/";
    }

    std::string folder;
};

TEST_F(PhotosFromPhones, GivesTheDepthOfAGoogleLensBlurPhoto) {
    const Contents contents = lookInside(readPictureFile(folder + "gdepth_table.jpg"));
    ASSERT_TRUE(contents.depth);
    EXPECT_FALSE(contents.depth->larger_is_nearer);
    EXPECT_EQ(contents.depth->kind, DepthKind::kInverseRange);
    const DepthMap map = decodeDepth(*contents.depth, "it");
    std::vector<float> expected = firstChannel(folder + "extracted/gdepth_table_depth.png");
    for (float& level : expected) level = 255.0f - level;
    EXPECT_EQ(map.plane.width, 768);
    EXPECT_EQ(map.plane.height, 1024);
    EXPECT_THAT(map.plane.samples, Pointwise(FloatNear(0.01f), expected));
}

TEST_F(PhotosFromPhones, GivesTheDepthOfAnIphonesJpeg) {
    const Contents contents = lookInside(readPictureFile(folder + "iphonex_vase.jpg"));
    ASSERT_TRUE(contents.depth);
    EXPECT_TRUE(contents.depth->larger_is_nearer);
    EXPECT_EQ(contents.depth->kind, DepthKind::kDisparity);
    const DepthMap map = decodeDepth(*contents.depth, "it");
    EXPECT_EQ(map.plane.width, 576);
    EXPECT_EQ(map.plane.height, 768);
    EXPECT_EQ(map.plane.samples, firstChannel(folder + "extracted/iphonex_vase_depth.jpg"));
}

}  // namespace
}  // namespace quorvane::media
