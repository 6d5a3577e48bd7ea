// Stereo pairs, from the file to what is made of them.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "media/picture/picture_file.h"
#include "process.h"
#include "support/photo_writers/pictures.h"
#include "support/photo_writers/stereo.h"
#include "support/photo_writers/stereo_scene.h"
#include "support/temporary_folder.h"

namespace quorvane::test {
namespace {

using media::DepthMap;
using media::RgbImage;
using testing::HasSubstr;
using Json = nlohmann::json;

class Stereo : public testing::Test {
  protected:
    static const StereoScene& scene() {
        static const StereoScene made = stereoScene(320, 240);
        return made;
    }

    std::string write(const std::string& name, const std::string& bytes) const {
        writeBytes(folder / name, bytes);
        return folder / name;
    }
    std::string leftFile() const { return write("left.jpg", jpegFile(scene().left)); }
    std::string rightFile() const { return write("right.jpg", jpegFile(scene().right)); }
    std::string mpo() const { return mpoFile(jpegFile(scene().left), jpegFile(scene().right)); }
    std::string halves(const std::string& name, const media::PairLayout& layout) const {
        return write(name, jpegFile(joined(scene().left, scene().right, layout)));
    }

    /// That the depth of the scene is in that file: disc before board before floor.
    void expectDepth(const std::string& path) const {
        const DepthMap depth = media::readDepthMap(path);
        EXPECT_EQ(depth.bits, 16);
        ASSERT_EQ(depth.plane.width, 320);
        ASSERT_EQ(depth.plane.height, 240);
        const float disc = depth.plane.at(211, 120), board = depth.plane.at(100, 120),
                    floor = depth.plane.at(290, 30);
        EXPECT_GT(disc, board + 50);
        EXPECT_GT(board, floor + 50);
    }

    /// Extracts the depth and checks it. Returns what was said.
    std::string extracted(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), "extract");
        arguments.insert(arguments.end(), {"-o", out});
        const Outcome outcome = quorvane(arguments);
        EXPECT_EQ(outcome.code, 0) << outcome.err;
        expectDepth(out);
        return outcome.err;
    }

    void expectRefused(const std::vector<std::string>& arguments, int code, const std::string& said) const {
        const std::vector<std::string> before = folder.names();
        const Outcome outcome = quorvane(arguments);
        EXPECT_EQ(outcome.code, code);
        EXPECT_THAT(outcome.err, HasSubstr(said));
        EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
        EXPECT_EQ(folder.names(), before);
    }

    Json inspected(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), "inspect");
        arguments.emplace_back("--json");
        const Outcome outcome = quorvane(arguments);
        EXPECT_EQ(outcome.code, 0) << outcome.err;
        return Json::parse(outcome.out);
    }

    const TemporaryFolder folder;
    const std::string out = folder / "depth.png";
};

TEST_F(Stereo, DepthComesFromAnyKindOfPair) {
    EXPECT_EQ(extracted({write("photo.mpo", mpo())}), "");
    EXPECT_EQ(extracted({leftFile(), "--right", rightFile()}), "");
    EXPECT_EQ(extracted({halves("a.jpg", {false, false, false}), "--pair", "sbs"}), "");
    EXPECT_EQ(extracted({halves("b.jpg", {true, false, false}), "--pair", "tb"}), "");
    EXPECT_EQ(extracted({halves("c.jps", {false, false, true})}), "");
    EXPECT_EQ(extracted({halves("d_sbs.jpg", {false, false, false})}), "");
}

TEST_F(Stereo, ExchangedViewsArePutRightAndSaid) {
    const std::string photo = halves("a.jpg", {false, false, true});
    const Outcome outcome = quorvane({"extract", photo, "--pair", "sbs", "-o", out});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_THAT(outcome.err, HasSubstr("exchanged"));
    // In the right eye's view, which is then shown, everything near lies further left.
    const DepthMap depth = media::readDepthMap(out);
    EXPECT_GT(depth.plane.at(211 - 22, 120), depth.plane.at(290, 30) + 100);
}

TEST_F(Stereo, ExtractGivesTheLeftView) {
    const std::string photo = folder / "view.jpg", part = folder / "view.png";
    extracted({write("photo.mpo", mpo()), "--photo", photo});
    EXPECT_EQ(media::readPhoto(photo).width, 320);
    extracted({halves("c.jps", {false, false, true}), "--photo", part});
    const RgbImage view = media::readPhoto(part);
    ASSERT_EQ(view.width, 320);
    double difference = 0;
    for (size_t i = 0; i < view.samples.size(); ++i)
        difference += std::abs(view.samples[i] - scene().left.samples[i]);
    EXPECT_LT(difference / static_cast<double>(view.samples.size()), 6);
    expectRefused({"extract", folder / "c.jps", "-o", folder / "new.png", "--photo", folder / "new.jpg"}, 2,
                  "written as .png");
    expectRefused({"extract", folder / "c.jps", "-o", folder / "new.png", "--raw"}, 2, "--raw");
}

TEST_F(Stereo, RendersAndShowsStages) {
    const std::string photo = write("photo.mpo", mpo()), still = folder / "still.png";
    const Outcome outcome = quorvane({"render", photo, "-o", still, "--at", "0.5,0", "-v"});
    EXPECT_EQ(outcome.code, 0) << outcome.err;
    EXPECT_THAT(outcome.err, HasSubstr("JPEG and JPEG at byte"));
    EXPECT_EQ(quorvane({"stages", leftFile(), "--right", rightFile(), "-o", folder / "stages.png"}).code, 0);
}

TEST_F(Stereo, InspectNamesBothViews) {
    const Json json = inspected({write("photo.mpo", mpo())});
    EXPECT_EQ(json["pair"]["left"], "JPEG");
    EXPECT_THAT(json["pair"]["right"].get<std::string>(), HasSubstr("JPEG at byte"));
    EXPECT_EQ(json["pair"]["container"], "MPO");
    EXPECT_EQ(json["depth"]["source"], "pair");
    EXPECT_EQ(json["depth"]["bits"], 16);
    EXPECT_TRUE(inspected({leftFile()})["pair"].is_null());
}

TEST_F(Stereo, AStoredDepthMapGoesBeforeAPair) {
    LifOptions options;
    options.disparity = pngFile(somePlane(160, 120));
    const std::string lif =
        write("photo.jpg", lifFile(jpegFile(scene().left), jpegFile(scene().right), options));
    const Json inside = inspected({lif});
    EXPECT_EQ(inside["depth"]["source"], "inside");
    EXPECT_EQ(inside["depth"]["container"], "LIF");
    EXPECT_EQ(inside["pair"]["container"], "LIF");

    const std::string photo = write("other.mpo", mpo());
    write("other_depth.png", pngFile(somePlane(160, 120)));
    const Json beside = inspected({photo});
    EXPECT_EQ(beside["depth"]["source"], "neighbour");
    EXPECT_EQ(beside["pair"]["container"], "MPO");
}

TEST_F(Stereo, OnlyOneSourceOfDepthIsTaken) {
    const std::string photo = leftFile(), other = rightFile();
    for (const std::vector<std::string>& more :
         std::vector<std::vector<std::string>>{{"--right", other, "--pair", "sbs"},
                                               {other, "--right", other},
                                               {other, "--pair", "sbs"},
                                               {"--right", other, "--rgbd", "right"},
                                               {"--pair", "tb", "--depth-cmd", "x {in} {out}"}}) {
        std::vector<std::string> arguments = {"render", photo, "-o", folder / "x.png"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        expectRefused(arguments, 2, "excludes");
    }
}

TEST_F(Stereo, WhatIsNoPairIsToldInOneLine) {
    const std::string photo = leftFile();
    const std::string same = write("same.jpg", jpegFile(displaced(scene().left, 0.2, 1, 1, 2)));
    const std::string different = write("different.jpg", jpegFile(displaced(scene().left, 180, 0, 1, 0)));
    expectRefused({"extract", photo, "--right", same, "-o", out}, 1, "from one place");
    expectRefused({"render", photo, "--right", different, "-o", out}, 1, "different things");
    expectRefused({"render", photo, "--right", folder / "none.jpg", "-o", out}, 1, "none.jpg");
    expectRefused({"render", photo, "--right", photo, "-o", photo + ".png", "--size", "64"}, 1, "one place");
}

TEST_F(Stereo, AnAnaglyphIsRefused) {
    RgbImage anaglyph = scene().right;
    for (int y = 0; y < 240; ++y)
        for (int x = 0; x < 320; ++x) anaglyph.at(x, y) = scene().left.at(x, y);
    const std::string photo = write("anaglyph.jpg", jpegFile(anaglyph));
    expectRefused({"render", photo, "-o", out}, 1, "anaglyph");
    EXPECT_THAT(inspected({photo})["no_depth"].get<std::string>(), HasSubstr("anaglyph"));
}

TEST_F(Stereo, NoOutputReplacesTheRightView) {
    const std::string right = write("right.png", jpegFile(scene().right));
    expectRefused({"render", leftFile(), "--right", right, "-o", right}, 1, "right.png");
    expectRefused({"extract", folder / "left.jpg", "--right", right, "-o", right}, 1, "right.png");
}

}  // namespace
}  // namespace quorvane::test
