#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

#include "media/picture/picture_file.h"
#include "media/scene/sample_scene.h"
#include "process.h"
#include "support/temporary_folder.h"

namespace quorvane::test {
namespace {

namespace fs = std::filesystem;

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using Arguments = std::vector<std::string>;
using Json = nlohmann::json;

class StagesTest : public testing::Test {
  protected:
    void SetUp() override {
        const media::SampleScene scene = media::makeSampleScene(320, 240);
        media::writePng(scene.photo, photo);
        media::writePng(scene.depth, depth);
    }

    Outcome stages(const std::string& out, const Arguments& more = {}) const {
        Arguments arguments = {"stages", photo, depth, "-o", out};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return quorvane(arguments);
    }

    Json plan(const Arguments& more = {}) const {
        Arguments arguments = {"inspect", photo, depth, "--json"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return Json::parse(quorvane(arguments).out)["plan"];
    }

    media::RgbImage stage(const std::string& name) const { return media::readPhoto(folder / "st/" + name); }

    const TemporaryFolder folder;
    const std::string photo = folder / "a.png";
    const std::string depth = folder / "b.png";
};

TEST_F(StagesTest, FolderHoldsEachStage) {
    const Outcome outcome = stages(folder / "st/");
    EXPECT_EQ(outcome.code, 0) << outcome.err;
    EXPECT_EQ(outcome.out, "");
    EXPECT_THAT(folder.names(), ElementsAre("a.png", "b.png", "st"));
    EXPECT_THAT(TemporaryFolder::names(folder / "st"),
                ElementsAre("depth.png", "guide.png", "left.png", "photo.png", "rest.png", "right.png",
                            "shaped.png"));
    // As it is uploaded: there is no reason to resample it.
    EXPECT_EQ(stage("photo.png").samples, media::readPhoto(photo).samples);
    const Json grid = plan()["grid"];
    for (const auto& [name, times] : {std::pair{"guide.png", 1}, {"shaped.png", 1}, {"depth.png", 4}}) {
        EXPECT_EQ(stage(name).width, times * grid["width"].get<int>()) << name;
        EXPECT_EQ(stage(name).height, times * grid["height"].get<int>()) << name;
    }
    for (const char* name : {"left.png", "rest.png", "right.png"}) {
        EXPECT_EQ(stage(name).width, 320) << name;
        EXPECT_EQ(stage(name).height, 240) << name;
    }
    EXPECT_NE(stage("left.png").samples, stage("rest.png").samples);
    EXPECT_NE(stage("left.png").samples, stage("right.png").samples);
}

TEST_F(StagesTest, FolderSaysWhatTheRendererWasGiven) {
    // A photo in one gray, and something near at the left of its depth map.
    media::RgbImage plain(64, 48);
    std::fill(plain.samples.begin(), plain.samples.end(), uint8_t{100});
    media::GrayImage step(64, 48);
    for (int y = 0; y < 48; ++y)
        for (int x = 0; x < 64; ++x) step.at(x, y) = x < 24 ? 220 : 40;
    media::writePng(plain, photo);
    media::writePng(step, depth);
    ASSERT_EQ(stages(folder / "st", {"--no-doctor"}).code, 0);
    const media::RgbImage guide = stage("guide.png");
    for (const uint8_t sample : guide.samples) ASSERT_NEAR(sample, 100, 3);
    const media::RgbImage given = stage("depth.png"), shaped = stage("shaped.png");
    for (const auto* image : {&given, &shaped}) {
        const auto level = [image](double u) {
            return image->at(static_cast<int>(u * image->width), image->height / 2);
        };
        EXPECT_GT(level(0.2), level(0.8) + 50) << "larger = nearer";
    }
    EXPECT_EQ(given.at(given.width / 8, given.height / 2), 220);
    EXPECT_EQ(given.at(given.width * 7 / 8, given.height / 2), 40);
}

TEST_F(StagesTest, RenderMakesTheSamePicturesOfTheFiles) {
    // Smaller than the photo, of which less is uploaded then.
    ASSERT_EQ(stages(folder / "st/", {"--size", "90"}).code, 0);
    EXPECT_LT(stage("photo.png").width, 320);
    const Json planned = plan({"--size", "90"});
    const auto number = [&planned](const char* name) { return Json(planned[name]).dump(); };
    for (const auto& [name, at] :
         {std::pair{"left.png", "-1,0"}, {"rest.png", "0,0"}, {"right.png", "1,0"}}) {
        // The files are what came of the options: nothing is done again.
        const Outcome outcome = quorvane({"render",
                                          folder / "st/photo.png",
                                          folder / "st/depth.png",
                                          "-o",
                                          folder / "again.png",
                                          "--at",
                                          at,
                                          "--size",
                                          "90x68",
                                          "--no-doctor",
                                          "--edges",
                                          "soft",
                                          "--grid",
                                          "coarse",
                                          "--set",
                                          "guided_filter_rx=0",
                                          "--set",
                                          "guided_filter_ry=0",
                                          "--set",
                                          "fov_scale=" + number("frame"),
                                          "--set",
                                          "rotate_z_trans=" + number("pivot")});
        ASSERT_EQ(outcome.code, 0) << outcome.err;
        EXPECT_TRUE(bytesOf(folder / "again.png") == bytesOf(folder / (std::string("st/") + name))) << name;
    }
}

TEST_F(StagesTest, PicturesAreTheStillsOfRender) {
    for (const Arguments& more : {Arguments{}, Arguments{"--edges", "soft", "--pivot", "off"}}) {
        Arguments arguments = {"--force"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        ASSERT_EQ(stages(folder / "st/", arguments).code, 0);
        arguments = {"render", photo, depth, "-o", folder / "still.png", "--at=-1,0"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        ASSERT_EQ(quorvane(arguments).code, 0);
        EXPECT_TRUE(bytesOf(folder / "still.png") == bytesOf(folder / "st/left.png"));
    }
}

TEST_F(StagesTest, PicturesAreOfTheMotionAndTheSizeAskedFor) {
    ASSERT_EQ(stages(folder / "st/", {"--size", "160", "--motion", "nod", "--amount", "0.5"}).code, 0);
    EXPECT_EQ(stage("left.png").width, 160);
    EXPECT_EQ(stage("left.png").height, 120);
    for (const auto& [name, at] : {std::pair{"left.png", "--at=0,-0.5"}, {"right.png", "--at=0,0.5"}}) {
        ASSERT_EQ(quorvane({"render", photo, depth, "-o", folder / "still.png", "--size", "160", "--motion",
                            "nod", "--amount", "0.5", at})
                      .code,
                  0);
        EXPECT_TRUE(bytesOf(folder / "still.png") == bytesOf(folder / (std::string("st/") + name))) << name;
    }
    const Json small = plan({"--size", "160", "--motion", "nod", "--amount", "0.5"});
    EXPECT_LT(small["stretch"].get<double>(), plan()["stretch"].get<double>());
}

TEST_F(StagesTest, FolderWithOtherFilesTakesForce) {
    fs::create_directory(folder / "st");
    writeBytes(folder / "st/mine", "mine");
    writeBytes(folder / "st/left.png", "old");
    const Outcome refused = stages(folder / "st");
    EXPECT_EQ(refused.code, 1);
    EXPECT_THAT(refused.err, AllOf(HasSubstr("st: the folder is not empty"), HasSubstr("--force")));
    EXPECT_EQ(bytesOf(folder / "st/left.png"), "old");
    EXPECT_EQ(stages(folder / "st", {"--force"}).code, 0);
    EXPECT_EQ(bytesOf(folder / "st/mine"), "mine");
    EXPECT_GT(fs::file_size(folder / "st/left.png"), 1000u);
    EXPECT_EQ(TemporaryFolder::names(folder / "st").size(), 8u);
}

TEST_F(StagesTest, NothingIsLeftOfWhatFails) {
    const std::vector<std::string> before = folder.names();
    for (const Arguments& arguments :
         {Arguments{"stages", photo, folder / "none.png", "-o", folder / "st/"},
          Arguments{"stages", photo, depth, "-o", folder / "none/st/"},
          Arguments{"stages", photo, depth, "-o", photo + "/"},
          Arguments{"stages", photo, depth, "-o", folder / "st/", "--timings", folder / "none/t.txt"}}) {
        const Outcome outcome = quorvane(arguments);
        EXPECT_EQ(outcome.code, 1) << testing::PrintToString(arguments);
        EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
        EXPECT_EQ(folder.names(), before);
    }
}

TEST_F(StagesTest, NoStageReplacesAnInput) {
    fs::create_directory(folder / "st");
    for (const char* name : {"photo.png", "depth.png"}) {
        const bool is_photo = name[0] == 'p';
        fs::copy_file(is_photo ? photo : depth, folder / (std::string("st/") + name));
        const std::string kept = bytesOf(folder / (std::string("st/") + name));
        const std::string input = folder / (std::string("st/") + name);
        const Outcome outcome = quorvane(
            {"stages", is_photo ? input : photo, is_photo ? depth : input, "-o", folder / "st/", "--force"});
        EXPECT_EQ(outcome.code, 1);
        EXPECT_THAT(outcome.err, HasSubstr("is an input"));
        EXPECT_EQ(bytesOf(input), kept);
        fs::remove(input);
    }
}

TEST_F(StagesTest, StretchGrowsWithTheSwingAndIsNoneOfAFlatPhoto) {
    const Json usual = plan(), wide = plan({"--set", "rotate_x_boundary=24"});
    const double stretch = usual["stretch"];
    EXPECT_GT(stretch, 0.0);
    EXPECT_LT(stretch, 0.3);
    EXPECT_GT(wide["stretch"].get<double>(), stretch);
    EXPECT_GT(wide["stretch_worst"]["times"].get<double>(), usual["stretch_worst"]["times"].get<double>());
    for (const char* axis : {"x", "y"}) {
        EXPECT_GT(usual["stretch_worst"][axis].get<double>(), 0.0);
        EXPECT_LT(usual["stretch_worst"][axis].get<double>(), 1.0);
    }
    media::GrayImage flat(320, 240);
    std::fill(flat.samples.begin(), flat.samples.end(), uint8_t{128});
    media::writePng(flat, depth);
    const Json none = plan({"--no-doctor"});
    EXPECT_EQ(none["stretch"].get<double>(), 0.0);
    EXPECT_LT(none["stretch_worst"]["times"].get<double>(), 1.5);
}

}  // namespace
}  // namespace quorvane::test
