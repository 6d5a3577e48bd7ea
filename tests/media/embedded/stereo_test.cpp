#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "media/depth/stereo_views.h"
#include "media/embedded/embedded.h"
#include "support/photo_writers/apple_heic.h"
#include "support/photo_writers/pictures.h"
#include "support/photo_writers/stereo.h"
#include "support/photo_writers/xmp_depth.h"
#include "support/temporary_folder.h"
#include "system/error.h"

namespace quorvane::media {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

RgbImage leftView() { return test::somePhoto(128, 96); }
/// Of other colours, so that the views are told apart.
RgbImage rightView() {
    RgbImage view = test::somePhoto(128, 96);
    for (uint8_t& sample : view.samples) sample = static_cast<uint8_t>(255 - sample);
    return view;
}
std::string leftJpeg() { return test::jpegFile(leftView()); }
std::string rightJpeg() { return test::jpegFile(rightView()); }

std::vector<ImageRole> rolesOf(const Contents& contents) {
    std::vector<ImageRole> roles;
    for (const InnerImage& image : contents.images) roles.push_back(image.role);
    return roles;
}

double difference(const RgbImage& a, const RgbImage& b) {
    if (a.width != b.width || a.height != b.height) return 255;
    double sum = 0;
    for (size_t i = 0; i < a.samples.size(); ++i) sum += std::abs(a.samples[i] - b.samples[i]);
    return sum / static_cast<double>(a.samples.size());
}

/// Whether the file's pair decodes to the views above, each in its place.
void expectViews(const std::string& file, const std::string& container, double tolerance = 4) {
    const Contents contents = lookInside(file);
    EXPECT_THAT(contents.remarks, IsEmpty());
    ASSERT_TRUE(contents.pair);
    EXPECT_EQ(contents.pair->container, container);
    const StereoViews views = decodeViews(file, *contents.pair, "photo");
    EXPECT_LT(difference(views.left, leftView()), tolerance);
    EXPECT_LT(difference(views.right, rightView()), tolerance);
}

TEST(Mpo, GivesTheFirstTwoViewsLeftFirst) {
    test::MpoOptions plain, little_endian, with_preview, padded;
    little_endian.big_endian = false;
    with_preview.preview = test::jpegFile(test::somePhoto(32, 24));
    with_preview.third = with_preview.preview;
    padded.padding = 210;
    for (const test::MpoOptions& options : {plain, little_endian, with_preview, padded})
        expectViews(test::mpoFile(leftJpeg(), rightJpeg(), options), "MPO");
}

TEST(Mpo, NamesTheSecondView) {
    const std::string file = test::mpoFile(leftJpeg(), rightJpeg());
    const Contents contents = lookInside(file);
    EXPECT_THAT(rolesOf(contents), ElementsAre(ImageRole::kPhoto, ImageRole::kView));
    EXPECT_EQ(contents.pair.value().left.where, "JPEG");
    EXPECT_EQ(contents.pair->right.where, "JPEG at byte " + std::to_string(file.size() - rightJpeg().size()));
    EXPECT_EQ(contents.images[1].where, contents.pair->right.where);
    EXPECT_EQ(contents.images[1].bytes, rightJpeg().size());
}

TEST(Mpo, LeavesPanoramasAndPreviewsAlone) {
    for (const uint32_t type : {0x020001u, 0x020003u, 0x010001u, 0x000000u}) {
        test::MpoOptions options;
        options.type = type;
        const Contents contents = lookInside(test::mpoFile(leftJpeg(), rightJpeg(), options));
        EXPECT_FALSE(contents.pair);
        EXPECT_THAT(contents.remarks, IsEmpty());
    }
}

TEST(Mpo, SaysWhatIsWrong) {
    test::MpoOptions options;
    options.offset_error = 5;
    EXPECT_THAT(lookInside(test::mpoFile(leftJpeg(), rightJpeg(), options)).remarks,
                ElementsAre(HasSubstr("not there")));
    std::string cut = test::mpoFile(leftJpeg(), rightJpeg());
    cut.resize(cut.size() - 40);
    const Contents contents = lookInside(cut);
    EXPECT_FALSE(contents.pair);
    EXPECT_THAT(contents.remarks, ElementsAre(HasSubstr("ends early")));
}

TEST(Mpo, SurvivesCutAndDamagedFiles) {
    const std::string file = test::mpoFile(leftJpeg(), rightJpeg());
    for (size_t size = 0; size < file.size(); size += 11) lookInside(file.substr(0, size));
    const size_t index = file.find(std::string("MPF\0", 4));
    for (size_t at = index; at < index + 90; ++at)
        for (const char value : {'\0', '\x7f', '\xff'}) {
            std::string damaged = file;
            damaged[at] = value;
            const Contents contents = lookInside(damaged);
            if (contents.pair) {
                EXPECT_TRUE(contents.pair->right.bytes == rightJpeg());
            }
        }
}

TEST(StereoHeic, GivesTheViewsLeftFirstWhicheverIsShown) {
    for (const bool avif : {false, true})
        for (const bool photo_is_right : {false, true}) {
            SCOPED_TRACE(testing::Message() << avif << photo_is_right);
            test::StereoHeicOptions options;
            options.avif = avif;
            options.photo_is_right = photo_is_right;
            const std::string file = test::stereoHeicFile(leftView(), rightView(), options);
            expectViews(file, "stereo HEIC", 8);
            const Contents contents = lookInside(file);
            EXPECT_THAT(rolesOf(contents), ElementsAre(ImageRole::kPhoto, ImageRole::kView));
            EXPECT_EQ(contents.images[1].where, "HEIF item 6");
            EXPECT_GT(contents.images[1].bytes, 100u);
        }
}

TEST(StereoHeic, SaysThatAViewIsMissing) {
    test::StereoHeicOptions options;
    options.second_view = 77;
    const Contents contents = lookInside(test::stereoHeicFile(leftView(), rightView(), options));
    EXPECT_FALSE(contents.pair);
    EXPECT_THAT(contents.remarks, ElementsAre(HasSubstr("not there")));
}

TEST(StereoHeic, ALoneHeicHasNoPair) {
    const std::string file = test::appleHeicFile(test::somePhoto(128, 128), test::somePlane(128, 128));
    EXPECT_FALSE(lookInside(file).pair);
}

TEST(Lif, GivesBothViews) {
    for (const bool jpeg_is_right : {false, true})
        for (const bool spaces : {false, true}) {
            test::LifOptions options;
            options.jpeg_is_right = jpeg_is_right;
            options.spaces = spaces;
            expectViews(test::lifFile(leftJpeg(), rightJpeg(), options), "LIF");
        }
    expectViews(test::lifXmpFile(leftJpeg(), rightJpeg()), "LIF");
}

TEST(Lif, GivesTheDisparityOfTheViewThatIsShown) {
    test::LifOptions options;
    options.disparity = test::pngFile(test::somePlane(64, 48));
    const Contents contents = lookInside(test::lifFile(leftJpeg(), rightJpeg(), options));
    EXPECT_THAT(contents.remarks, IsEmpty());
    ASSERT_TRUE(contents.depth && contents.pair);
    EXPECT_EQ(contents.depth->container, "LIF");
    EXPECT_EQ(contents.depth->kind, DepthKind::kDisparity);
    EXPECT_TRUE(contents.depth->larger_is_nearer);
    EXPECT_TRUE(planeBytes(*contents.depth) == options.disparity);
    EXPECT_THAT(rolesOf(contents), ElementsAre(ImageRole::kPhoto, ImageRole::kDepth, ImageRole::kView));
}

TEST(Lif, LeavesOtherTrailersAloneAndSaysWhatIsMissing) {
    const auto remarksOf = [](const test::LifOptions& options) {
        const Contents contents = lookInside(test::lifFile(leftJpeg(), rightJpeg(), options));
        EXPECT_FALSE(contents.pair);
        return contents.remarks;
    };
    test::LifOptions options;
    for (const uint32_t size : {0u, 5u, 0xffffffffu}) {
        options.trailer_size = size;
        EXPECT_THAT(remarksOf(options), IsEmpty());
    }
    options.trailer_size.reset();
    options.json = "{\"views\": []}";
    EXPECT_THAT(remarksOf(options), ElementsAre(HasSubstr("which view the photo is")));
    options.json = "{\"views\": [{\"albedoId\": -1, \"disparityId\": 5}, {\"albedoId\": 1e300}]}";
    EXPECT_THAT(remarksOf(options), ElementsAre(HasSubstr("disparity"), HasSubstr("second view")));
}

TEST(Lif, SurvivesCutAndDamagedFiles) {
    const std::string file = test::lifFile(leftJpeg(), rightJpeg());
    for (size_t size = 0; size < file.size(); size += 11) lookInside(file.substr(0, size));
    for (size_t at = file.size() - 300; at < file.size(); ++at)
        for (const char value : {'\0', '"', '\xff'}) {
            std::string damaged = file;
            damaged[at] = value;
            lookInside(damaged);
        }
}

TEST(VrPhoto, GivesBothEyes) {
    expectViews(test::vrPhotoFile(leftJpeg(), rightJpeg()), "VR photo");
    // Without a panorama the same property holds an unblurred photo.
    EXPECT_FALSE(lookInside(test::vrPhotoFile(leftJpeg(), rightJpeg(), false)).pair);
    test::GDepthOptions options;
    options.original = rightJpeg();
    EXPECT_FALSE(lookInside(test::gdepthFile(leftView(), test::somePlane(16, 12), options)).pair);
}

TEST(Jps, KnowsEveryLayout) {
    constexpr uint8_t kHalfHeight = 1, kHalfWidth = 2, kLeftFirst = 4, kBelow = 3, kBeside = 2;
    const auto layoutOf = [](uint8_t flags, uint8_t layout) {
        return lookInside(test::jpsFile(leftJpeg(), flags, layout)).pair.value().layout.value();
    };
    for (const bool left_first : {false, true})
        for (const bool squeezed : {false, true})
            for (const bool below : {false, true}) {
                const int flags =
                    (left_first ? kLeftFirst : 0) | (squeezed ? (below ? kHalfHeight : kHalfWidth) : 0);
                const PairLayout layout = layoutOf(static_cast<uint8_t>(flags), below ? kBelow : kBeside);
                EXPECT_EQ(layout.one_above_other, below);
                EXPECT_EQ(layout.squeezed, squeezed);
                EXPECT_EQ(layout.right_first, !left_first);
            }
}

TEST(Jps, RefusesWhatCannotBeParted) {
    const auto remarksOf = [](uint8_t layout) {
        const Contents contents = lookInside(test::jpsFile(leftJpeg(), 4, layout));
        EXPECT_FALSE(contents.pair);
        return contents.remarks;
    };
    EXPECT_THAT(remarksOf(4), ElementsAre(HasSubstr("anaglyph")));
    EXPECT_THAT(remarksOf(1), ElementsAre(HasSubstr("alternate rows")));
    const Contents mono = lookInside(test::jpsFile(leftJpeg(), 4, 2, 0));
    EXPECT_FALSE(mono.pair);
    EXPECT_THAT(mono.remarks, IsEmpty());
}

// The views' colours are constant over pairs of columns and rows, so that squeezing them loses nothing.
TEST(StereoViews, PartsEveryLayoutOfHalves) {
    const auto doubled = [](const RgbImage& image) {
        RgbImage out(image.width * 2, image.height * 2);
        for (int y = 0; y < out.height; ++y)
            for (int x = 0; x < out.width; ++x) std::copy_n(&image.at(x / 2, y / 2), 3, &out.at(x, y));
        return out;
    };
    const RgbImage left = doubled(leftView()), right = doubled(rightView());
    for (const bool below : {false, true})
        for (const bool squeezed : {false, true})
            for (const bool right_first : {false, true}) {
                const PairLayout layout = {below, squeezed, right_first};
                const std::string file = test::jpegFile(test::joined(left, right, layout));
                const StereoViews views = decodeViews(file, pairOfHalves(layout), "photo");
                EXPECT_LT(difference(views.left, left), 4);
                EXPECT_LT(difference(views.right, right), 4);
            }
}

TEST(StereoViews, BringsTheRightViewToTheLeftOnesSize) {
    const RgbImage half = test::somePhoto(64, 48);
    const std::string file = test::mpoFile(leftJpeg(), test::jpegFile(half));
    const StereoViews views = decodeViews(file, lookInside(file).pair.value(), "photo");
    EXPECT_EQ(views.right.width, 128);
    EXPECT_EQ(views.right.height, 96);
}

TEST(StereoViews, RefusesViewsOfDifferentShape) {
    const std::string file = test::mpoFile(leftJpeg(), test::jpegFile(test::somePhoto(96, 96)));
    try {
        decodeViews(file, lookInside(file).pair.value(), "photo");
        FAIL();
    } catch (const Error& error) {
        EXPECT_THAT(error.what(), testing::AllOf(HasSubstr("128 x 96"), HasSubstr("96 x 96")));
    }
}

TEST(StereoViews, ReadsWhatDevicesWrite) {
    const char* photos = std::getenv("QUORVANE_SHARED_PHOTOS");
    if (photos == nullptr) GTEST_SKIP() << "QUORVANE_SHARED_PHOTOS names no folder of real photos";
    struct Expected {
        const char *name, *container, *right;
        int width, height;
    };
    for (const Expected& expected :
         {Expected{"stereo/3ds_sugarshack.mpo", "MPO", "JPEG at byte 60008", 640, 480},
          {"stereo/fuji_w3_bottles.mpo", "MPO", "JPEG at byte 695872", 1920, 1080},
          {"stereo/panasonic_gx880_wall.mpo", "MPO", "JPEG at byte 1630720", 1712, 1712},
          {"stereo/vision_pro_spatial.heic", "stereo HEIC", "HEIF item 52", 2560, 2560},
          {"stereo/lif_cat.jpg", "LIF", "JPEG at byte 1031730", 2560, 1600},
          {"embedded/lif_cactus.jpg", "LIF", "JPEG at byte 1462680", 2560, 1440},
          {"stereo/vr180_pattern.vr.jpg", "VR photo", "GImage:Data", 3000, 3000}}) {
        SCOPED_TRACE(expected.name);
        const std::string file = test::bytesOf(std::string(photos) + "/" + expected.name);
        ASSERT_FALSE(file.empty());
        const Contents contents = lookInside(file);
        EXPECT_THAT(contents.remarks, IsEmpty());
        ASSERT_TRUE(contents.pair);
        EXPECT_EQ(contents.pair->container, expected.container);
        EXPECT_EQ(contents.pair->right.where, expected.right);
        EXPECT_EQ(contents.depth.has_value(), std::string(expected.name) == "embedded/lif_cactus.jpg");
        const StereoViews views = decodeViews(file, *contents.pair, expected.name);
        for (const RgbImage* view : {&views.left, &views.right}) {
            EXPECT_EQ(view->width, expected.width);
            EXPECT_EQ(view->height, expected.height);
        }
        EXPECT_GT(difference(views.left, views.right), 1);
    }
}

}  // namespace
}  // namespace quorvane::media
