#include "media/depth/stereo_depth.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "media/depth/anaglyph.h"
#include "media/picture/turn.h"
#include "support/photo_writers/pictures.h"
#include "support/photo_writers/stereo_scene.h"
#include "system/error.h"

namespace quorvane::media {
namespace {

using test::displaced;
using test::stereoScene;
using test::StereoScene;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// The share of the pixels that the right view sees where the depth, brought to disparities by the line that
/// suits it best, is more than 2 pixels off.
double wrongShare(const Plane& depth, const Plane& disparity, const GrayImage& hidden) {
    std::vector<std::pair<double, double>> points;
    for (size_t i = 0; i < depth.samples.size(); ++i)
        if (hidden.samples[i] == 0) points.emplace_back(depth.samples[i], disparity.samples[i]);
    double slope = 0, start = 0;
    const auto isWrong = [&](const std::pair<double, double>& p) {
        return std::abs(slope * p.first + start - p.second) > 2;
    };
    for (int round = 0; round < 6; ++round) {
        double n = 0, x = 0, y = 0, xx = 0, xy = 0;
        for (const auto& p : points) {
            if (round > 0 && isWrong(p)) continue;
            n += 1;
            x += p.first;
            y += p.second;
            xx += p.first * p.first;
            xy += p.first * p.second;
        }
        slope = (n * xy - x * y) / (n * xx - x * x);
        start = (y - slope * x) / n;
    }
    // A depth that falls where disparities grow is all wrong.
    if (slope <= 0) return 1;
    return static_cast<double>(std::count_if(points.begin(), points.end(), isWrong)) /
           static_cast<double>(points.size());
}

template <typename Sample, int kChannels>
Image<Sample, kChannels> transposed(const Image<Sample, kChannels>& image) {
    Image<Sample, kChannels> out(image.height, image.width);
    for (int y = 0; y < out.height; ++y)
        for (int x = 0; x < out.width; ++x) std::copy_n(&image.at(y, x), kChannels, &out.at(x, y));
    return out;
}

std::string refusal(const StereoViews& views) {
    try {
        depthOfPair(views, "photo", nullptr);
        return "";
    } catch (const Error& error) {
        return error.what();
    }
}

const StereoScene& scene() {
    static const StereoScene made = stereoScene(480, 320);
    return made;
}

TEST(StereoDepth, FindsTheDisparitiesOfEverySurface) {
    std::vector<std::string> remarks;
    const DepthMap depth = depthOfPair({scene().left, scene().right}, "photo", &remarks);
    EXPECT_THAT(remarks, IsEmpty());
    EXPECT_EQ(depth.bits, 16);
    EXPECT_LT(wrongShare(depth.plane, scene().disparity, scene().hidden), 0.02);
    const auto [lowest, highest] =
        std::minmax_element(depth.plane.samples.begin(), depth.plane.samples.end());
    EXPECT_EQ(*lowest, 0.0f);
    EXPECT_EQ(*highest, 255.0f);
}

// What only the left eye sees, to the left of near things, belongs to what is behind.
TEST(StereoDepth, HiddenPartsTakeTheFarSide) {
    const DepthMap depth = depthOfPair({scene().left, scene().right}, "photo", nullptr);
    double hidden_like_near = 0, hidden = 0;
    for (int y = 130; y < 190; ++y)
        for (int x = 20; x < 480; ++x) {
            if (scene().hidden.at(x, y) == 0) continue;
            hidden += 1;
            hidden_like_near += depth.plane.at(x, y) > depth.plane.at(317, 160) - 20 ? 1 : 0;
        }
    ASSERT_GT(hidden, 500);
    EXPECT_LT(hidden_like_near / hidden, 0.15);
}

TEST(StereoDepth, TakesOutHowTheCamerasLieToEachOther) {
    const auto wrongWith = [](const RgbImage& right) {
        return wrongShare(depthOfPair({scene().left, right}, "photo", nullptr).plane, scene().disparity,
                          scene().hidden);
    };
    EXPECT_LT(wrongWith(displaced(scene().right, 0, 9, 1, 0)), 0.03) << "lower";
    EXPECT_LT(wrongWith(displaced(scene().right, 1.5, -4, 1, 0)), 0.04) << "turned";
    EXPECT_LT(wrongWith(displaced(scene().right, 0, 0, 0.6, 40)), 0.02) << "exposed otherwise";
}

TEST(StereoDepth, PutsExchangedViewsRight) {
    std::vector<std::string> remarks;
    const DepthMap depth = depthOfPair({scene().right, scene().left}, "photo", &remarks);
    EXPECT_THAT(remarks, ElementsAre(HasSubstr("exchanged")));
    // In the right view the disc lies 33.6 pixels further left.
    EXPECT_GT(depth.plane.at(317 - 34, 160), depth.plane.at(150, 160) + 50);
    EXPECT_GT(depth.plane.at(150 - 22, 160), depth.plane.at(20, 30) + 50);
}

TEST(StereoDepth, ReadsCamerasAboveEachOther) {
    // As if the camera had been turned by a quarter in either direction.
    const StereoViews upright = {transposed(scene().left), transposed(scene().right)};
    const DepthMap depth = depthOfPair(upright, "photo", nullptr);
    ASSERT_EQ(depth.plane.width, 320);
    EXPECT_LT(wrongShare(transposed(depth.plane), scene().disparity, scene().hidden), 0.03);
}

TEST(StereoDepth, EdgesOfLargePhotosLieWhereThePhotoHasThem) {
    const StereoScene large = stereoScene(1500, 1000);
    const DepthMap depth = depthOfPair({large.left, large.right}, "photo", nullptr);
    ASSERT_EQ(depth.plane.width, 1500);
    // Within 5 pixels of the disc's edge, in the middle of its height.
    const double threshold = (depth.plane.at(990, 500) + depth.plane.at(990, 230)) / 2;
    double wrong = 0, all = 0;
    for (int y = 270; y < 730; ++y)
        for (int x = 700; x < 1300; ++x) {
            const double away = std::hypot(x - 990.0, y - 500.0) - 240;
            if (std::abs(away) > 5 || std::abs(away) < 0.7) continue;
            all += 1;
            wrong += (depth.plane.at(x, y) > threshold) != (away < 0) ? 1 : 0;
        }
    EXPECT_LT(wrong / all, 0.2);
}

TEST(StereoDepth, AnEmptySkyTakesTheDepthAroundIt) {
    StereoScene outdoors = scene();
    for (RgbImage* view : {&outdoors.left, &outdoors.right})
        for (int y = 0; y < 60; ++y) std::fill_n(view->row(y), 480 * 3, uint8_t{255});
    const DepthMap depth = depthOfPair({outdoors.left, outdoors.right}, "photo", nullptr);
    float highest = 0;
    for (int y = 0; y < 50; ++y)
        for (int x = 0; x < 480; ++x) highest = std::max(highest, depth.plane.at(x, y));
    // The board's top, which begins at 64, is what is nearest around it.
    EXPECT_LE(highest, depth.plane.at(130, 100) + 5);
}

TEST(StereoDepth, RefusesWhatIsNoPair) {
    const RgbImage other = displaced(scene().left, 90, 0, 1, 0);
    EXPECT_THAT(refusal({scene().left, other}), HasSubstr("photo: its two views show different things"));
    EXPECT_THAT(refusal({scene().left, test::somePhoto(480, 320)}), HasSubstr("different things"));
    EXPECT_THAT(refusal({scene().left, displaced(scene().left, 0.4, 2, 0.95, 3)}),
                HasSubstr("from one place"));
}

TEST(StereoDepth, RefusesPicturesTooSmallOrEmptyToTell) {
    EXPECT_THAT(refusal({RgbImage(1, 1), RgbImage(1, 1)}), HasSubstr("different things"));
    EXPECT_THAT(refusal({RgbImage(300, 2), RgbImage(300, 2)}), HasSubstr("different things"));
    EXPECT_THAT(refusal({RgbImage(640, 480), RgbImage(640, 480)}), HasSubstr("different things"));
}

TEST(Anaglyph, IsToldByItsShiftedRed) {
    RgbImage anaglyph = scene().right, fringed = scene().left;
    for (int y = 0; y < 320; ++y)
        for (int x = 0; x < 480; ++x) {
            anaglyph.at(x, y) = scene().left.at(x, y);
            fringed.at(x, y) = scene().left.at(std::min(479, x + 1), y);
        }
    EXPECT_TRUE(isAnaglyph(anaglyph));
    EXPECT_FALSE(isAnaglyph(fringed));
    EXPECT_FALSE(isAnaglyph(scene().left));
    EXPECT_FALSE(isAnaglyph(RgbImage(3, 2)));
}

}  // namespace
}  // namespace quorvane::media
