#include "media/clip/share_page.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <random>

#include "media/picture/picture_file.h"
#include "media/scene/sample_scene.h"
#include "support/share_page.h"

namespace quorvane::media {
namespace {

using testing::HasSubstr;
using testing::Not;

SharePage small() {
    SampleScene scene = makeSampleScene(96, 64);
    SharePage page;
    page.photo = std::move(scene.photo);
    page.depth = GrayImage(24, 16);
    for (size_t i = 0; i < page.depth.samples.size(); ++i) page.depth.samples[i] = static_cast<uint8_t>(i);
    page.title = "title";
    page.alt = "alt";
    page.motion = "pointer sway";
    return page;
}

TEST(SharePage, HoldsBothPictures) {
    const SharePage page = small();
    const std::string html = sharePage(page);
    const DepthMap depth = decodeDepthMap(test::fileInPage(html, "image/png"), "depth");
    ASSERT_EQ(depth.plane.samples.size(), page.depth.samples.size());
    EXPECT_EQ(depth.bits, 8);
    for (size_t i = 0; i < page.depth.samples.size(); ++i)
        ASSERT_EQ(depth.plane.samples[i], static_cast<float>(page.depth.samples[i]));

    const RgbImage photo = decodePhoto(test::fileInPage(html, "image/jpeg"), "photo");
    ASSERT_EQ(photo.samples.size(), page.photo.samples.size());
    double off = 0.0;
    for (size_t i = 0; i < photo.samples.size(); ++i)
        off += std::abs(int{photo.samples[i]} - int{page.photo.samples[i]});
    EXPECT_LT(off / static_cast<double>(photo.samples.size()), 8.0);
    EXPECT_THAT(html, HasSubstr("<img width=\"96\" height=\"64\" alt=\"alt\""));
}

TEST(SharePage, KeepsTextsWhateverTheyHold) {
    SharePage page = small();
    page.title = "</title><script>alert(1)</script>";
    page.alt = "a \"b\" & <c> \xC3\xA9 \xFF";
    const std::string words = test::wordsOfPage(sharePage(page));
    EXPECT_THAT(words, HasSubstr("<title>&lt;/title&gt;&lt;script&gt;alert(1)&lt;/script&gt;</title>"));
    // The last byte is no UTF-8 and becomes U+FFFD.
    EXPECT_THAT(words, HasSubstr("alt=\"a &quot;b&quot; &amp; &lt;c&gt; \xC3\xA9 \xEF\xBF\xBD\""));
}

// Noise is what codes worst.
TEST(SharePage, StaysSmallWhateverThePhoto) {
    SharePage page = small();
    page.photo = RgbImage(2048, 1536);
    std::mt19937 random(1);
    for (uint8_t& sample : page.photo.samples) sample = static_cast<uint8_t>(96 + random() % 64);
    const std::string html = sharePage(page);
    EXPECT_LT(html.size(), 600000U);
    const RgbImage scaled = decodePhoto(test::fileInPage(html, "image/jpeg"), "photo");
    EXPECT_LT(scaled.width, 2048);
    EXPECT_NEAR(static_cast<double>(scaled.width) / scaled.height, 4.0 / 3.0, 0.01);
    const std::string size = "<img width=\"" + std::to_string(scaled.width) + "\" height=\"" +
                             std::to_string(scaled.height) + "\"";
    EXPECT_THAT(html, HasSubstr(size));
    SharePage wide = small();
    wide.photo = RgbImage(2048, 600);
    for (uint8_t& sample : wide.photo.samples) sample = static_cast<uint8_t>(random());
    EXPECT_LT(sharePage(wide).size(), 600000U);
    page.keeps_size = true;
    EXPECT_EQ(decodePhoto(test::fileInPage(sharePage(page), "image/jpeg"), "photo").width, 2048);
}

TEST(SharePage, CarriesAmountAndParameters) {
    SharePage page = small();
    page.settings = {0.25, "3", {{"fov_scale", 0.5}, {"rotate_z_trans", 33.75}}};
    EXPECT_THAT(sharePage(page),
                HasSubstr("motion=\"pointer sway\" amount=\"0.25\" antialias=\"3\" "
                          "params=\"{&quot;fov_scale&quot;:0.5,&quot;rotate_z_trans&quot;:33.75}\""));
    EXPECT_EQ(elementAttributes({}), "");
}

TEST(SharePage, ForbidsItselfEveryRequest) {
    const std::string words = test::wordsOfPage(sharePage(small()));
    EXPECT_THAT(words, HasSubstr("content=\"default-src 'none'; base-uri 'none'; form-action 'none'; "
                                 "img-src data:; style-src 'unsafe-inline'; script-src 'sha256-"));
    for (const char* place : {"http:", "https:", "src=\"/", "href", "url("})
        EXPECT_THAT(words, Not(HasSubstr(place)));
}

TEST(SharePage, TakesMoreOutOfAPhotoThatIsFullOfDetail) {
    SharePage page = small();
    EXPECT_EQ(test::fileInPage(sharePage(page), "image/jpeg"), jpegBytes(page.photo, 85));
    page.photo = RgbImage(1280, 960);
    std::srand(1);
    for (uint8_t& sample : page.photo.samples) sample = static_cast<uint8_t>(std::rand() % 256);
    ASSERT_GT(jpegBytes(page.photo, 65).size(), 420000U);
    EXPECT_EQ(test::fileInPage(sharePage(page), "image/jpeg"), jpegBytes(page.photo, 65));
}

}  // namespace
}  // namespace quorvane::media
