// Several views in a picture, from the photo to what a player is given.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "media/picture/crop.h"
#include "media/picture/picture_file.h"
#include "on_sample_scene.h"
#include "process.h"
#include "support/temporary_folder.h"

namespace quorvane::test {
namespace {

using media::RgbImage;
using testing::HasSubstr;

class StereoOutput : public OnSampleScene<StereoOutput> {
  public:
    static constexpr const char* kSceneSize = "240x180";

  protected:
    Outcome render(const std::string& name, std::vector<std::string> more) const {
        std::vector<std::string> arguments = {"render", scene("photo.png"), scene("depth.png"), "-o",
                                              folder / name};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return quorvane(arguments);
    }
    RgbImage rendered(const std::string& name, const std::vector<std::string>& more) const {
        const Outcome outcome = render(name, more);
        EXPECT_EQ(outcome.code, 0) << outcome.err;
        return media::readPhoto(folder / name);
    }
};
TEST_F(StereoOutput, EyesLookFromBothSidesOfThePosition) {
    for (const char* renderer : {"software", "gl"}) {
        const auto half = [&](const char* layout, const char* eyes, int left) {
            return media::cut(rendered("both.png", {"--renderer", renderer, "--stereo", layout, "--eyes",
                                                    eyes, "--at", "0.25,0.5"}),
                              left, 0, {240, 180});
        };
        // Without a distance both see what a still shows.
        const RgbImage still = rendered("still.png", {"--renderer", renderer, "--at", "0.25,0.5"});
        EXPECT_EQ(half("sbs", "0", 0).samples, still.samples) << renderer;
        EXPECT_EQ(half("sbs", "0", 240).samples, still.samples) << renderer;
        const RgbImage left = half("sbs", "0.5", 0), right = half("sbs", "0.5", 240);
        EXPECT_NE(left.samples, right.samples) << renderer;
        EXPECT_EQ(half("cross", "0.5", 0).samples, right.samples) << renderer;
        EXPECT_EQ(half("cross", "0.5", 240).samples, left.samples) << renderer;
    }
}

TEST_F(StereoOutput, NoEyeSeesABorderAnywhereInAClip) {
    const TemporaryFolder bright;
    RgbImage photo(240, 180);
    for (size_t i = 0; i < photo.samples.size(); ++i)
        photo.samples[i] = static_cast<uint8_t>(150 + (i / 3 * 7 + i / 720 * 13) % 100);
    media::writePng(photo, bright / "photo.png");
    for (const char* layout : {"sbs", "quilt:3x1", "wiggle"}) {
        const std::string frames = bright / (std::string(layout, 3) + "/");
        ASSERT_EQ(quorvane({"render", bright / "photo.png", scene("depth.png"), "-o", frames, "--stereo",
                            layout, "--motion", "circle", "--frames", "8"})
                      .code,
                  0);
        for (int number = 1; number <= 8; ++number) {
            const RgbImage frame = media::readPhoto(frames + "0000" + std::to_string(number) + ".png");
            EXPECT_GT(*std::min_element(frame.samples.begin(), frame.samples.end()), 120)
                << layout << " " << number;
        }
    }
}

TEST_F(StereoOutput, AWiggleHasTwoFrames) {
    ASSERT_EQ(render("wiggle/", {"--stereo", "wiggle"}).code, 0);
    EXPECT_EQ(media::readPhoto(folder / "wiggle/00001.png").samples,
              rendered("still.png", {"--at", "-1,0"}).samples);
    EXPECT_EQ(media::readPhoto(folder / "wiggle/00002.png").samples,
              rendered("still.png", {"--at", "1,0"}).samples);
    EXPECT_EQ(TemporaryFolder::names(folder / "wiggle").size(), 2u);
}

TEST_F(StereoOutput, DepthLiesNextToThePictureItBelongsTo) {
    const RgbImage bright = rendered("a.png", {"--stereo", "rgbd-bright-near", "--no-doctor"});
    const RgbImage dark = rendered("b.png", {"--stereo", "rgbd-dark-near", "--no-doctor"});
    ASSERT_EQ(bright.width, 480);
    const media::DepthMap truth = media::readDepthMap(scene("depth.png"));
    // Nothing moves, so all of the photo is seen, undistorted.
    int alike = 0;
    for (int y = 0; y < 180; ++y)
        for (int x = 0; x < 240; ++x) {
            const int level = bright.at(240 + x, y);
            EXPECT_EQ(level + dark.at(240 + x, y), 255);
            if (std::fabs(level - static_cast<double>(truth.plane.at(x, y))) <= 2.0) ++alike;
        }
    EXPECT_GT(alike, 240 * 180 * 3 / 4) << "all but silhouettes";
    // In a clip it goes with the picture.
    ASSERT_EQ(render("clip/", {"--stereo", "rgbd-bright-near", "--frames", "4", "--motion", "sway"}).code, 0);
    const RgbImage rest = media::readPhoto(folder / "clip/00001.png");
    const RgbImage right = media::readPhoto(folder / "clip/00002.png");
    EXPECT_NE(media::cut(rest, 240, 0, {240, 180}).samples, media::cut(right, 240, 0, {240, 180}).samples);
    EXPECT_EQ(media::readPhoto(folder / "clip/00003.png").samples, rest.samples)
        << "the photo comes back after the depth";
}

TEST_F(StereoOutput, NamesAreTakenAsTheyAreAndABetterOneIsSaid) {
    const Outcome outcome = render("view.png", {"--stereo", "sbs"});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_THAT(outcome.err, HasSubstr("view_SBS.png"));
    EXPECT_EQ(folder.names(), std::vector<std::string>{"view.png"});
    EXPECT_EQ(render("view_SBS.png", {"--stereo", "sbs"}).err, "");
    EXPECT_EQ(render("view.png", {"--stereo", "sbs", "--quiet"}).err, "");
}

TEST_F(StereoOutput, WhatCannotBeIsRefusedBeforeAnyWork) {
    const auto refused = [&](const std::string& name, const std::vector<std::string>& more,
                             const char* said) {
        const Outcome outcome = render(name, more);
        EXPECT_EQ(outcome.code, 2) << outcome.err;
        EXPECT_THAT(outcome.err, HasSubstr(said));
        EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
    };
    refused("a.png", {"--stereo", "wiggle"}, "is a still");
    refused("a.html", {"--stereo", "sbs"}, "an .html");
    refused("a.gif", {"--stereo", "wiggle", "--frames", "3"}, "even number");
    refused("a.png", {"--stereo", "sbs", "--eyes", "1.5"}, "0 to 1");
    refused("a.png", {"--stereo", "sbs", "--size", "9000x20"}, "--size makes them smaller");
    EXPECT_TRUE(folder.names().empty());
    EXPECT_THAT(render("a.png", {"--eyes", "0.5"}).err, HasSubstr("--eyes: of no effect"));
}

}  // namespace
}  // namespace quorvane::test
