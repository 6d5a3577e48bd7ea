// --profile and --save-profile: the same picture again, and who wins.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "media/picture/picture_file.h"
#include "media/scene/sample_scene.h"
#include "process.h"
#include "support/temporary_folder.h"

namespace quorvane::test {
namespace {

using nlohmann::json;
using testing::HasSubstr;
using Arguments = std::vector<std::string>;

class Profiles : public testing::Test {
  protected:
    void SetUp() override {
        const media::SampleScene scene = media::makeSampleScene(160, 120);
        media::writePng(scene.photo, folder / "p.png");
        media::writePng(scene.depth, folder / "d.png");
    }

    Outcome render(const std::string& out, const Arguments& options,
                   const std::map<std::string, std::string>& environment = {}) const {
        Arguments arguments = {"render",     folder / "p.png", folder / "d.png", "-o",   folder / out,
                               "--renderer", "software",       "--size",         "96x72"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return quorvane(arguments, environment);
    }

    /// The bytes of a still that is drawn with `options`.
    std::string still(const Arguments& options,
                      const std::map<std::string, std::string>& environment = {}) const {
        const Outcome outcome = render("still.png", options, environment);
        EXPECT_EQ(outcome.code, 0) << outcome.err;
        return bytesOf(folder / "still.png");
    }

    std::string write(const json& profile) const {
        writeBytes(folder / "given.json", profile.dump());
        return folder / "given.json";
    }

    static json profile(const json& parameters, const json& options) {
        return {{"quorvane_profile", 1}, {"parameters", parameters}, {"options", options}};
    }

    const TemporaryFolder folder;
};

TEST_F(Profiles, ASavedOneDrawsTheSameBytesAgain) {
    const std::string saved = folder / "saved.json";
    const std::string property = folder / "properties";
    writeBytes(property, "quorvane.para10=17\nquorvane.para1=33\n");
    const std::vector<std::pair<Arguments, std::map<std::string, std::string>>> pictures = {
        {{}, {}},
        {{"--at", "0.7,-0.4", "--frame", "0.85", "--pivot", "0.2,0.7"}, {}},
        {{"--at", "1,0", "--edges", "soft", "--set", "guided_filter_rx=5", "--set", "fov_scale=0.77"}, {}},
        {{"--at", "1,0", "--pivot", "off", "--orientation", "3", "--samples", "2", "--detail", "full"}, {}},
        {{"--at", "-1,1", "--set", "rotate_x_boundary=7.3", "--set", "rotate_z_trans=37.123456"}, {}},
        {{"--at", "-1,0", "--supersample", "2", "--invert-depth", "--rotate-depth", "mirror", "--no-doctor"},
         {}},
        {{"--at", "1,1"}, {{"QUORVANE_PROPERTIES", property}}},
    };
    std::vector<std::string> all;
    for (const auto& [options, environment] : pictures) {
        SCOPED_TRACE(testing::PrintToString(options));
        Arguments saving = options;
        saving.insert(saving.end(), {"--save-profile", saved});
        const std::string first = still(saving, environment);
        const Outcome again =
            quorvane({"render", folder / "p.png", folder / "d.png", "-o", folder / "again.png", "--profile",
                      saved, "--save-profile", folder / "twice.json"});
        EXPECT_EQ(again.code, 0) << again.err;
        EXPECT_EQ(bytesOf(folder / "again.png"), first);
        EXPECT_EQ(bytesOf(folder / "twice.json"), bytesOf(saved));
        all.push_back(first);
    }
    std::sort(all.begin(), all.end());
    EXPECT_EQ(std::unique(all.begin(), all.end()), all.end())
        << "two of the pictures are alike, and show little";
}

TEST_F(Profiles, AnOptionsValueIsThatOfTheCommandLine) {
    EXPECT_EQ(still({"--profile", write(profile({{"depth_contrast", 12}}, {{"at", "1,0"}, {"frame", 0.7}}))}),
              still({"--set", "depth_contrast=12", "--at", "1,0", "--frame", "0.7"}));
    EXPECT_EQ(still({"--profile", write(profile(json::object(), {{"frame", "0.7"}, {"no-doctor", false}}))}),
              still({"--frame", "0.7"}));
}

TEST_F(Profiles, WhatIsGivenWins) {
    struct Case {
        json parameters, options;
        Arguments given, alone;
    };
    const json none = json::object();
    const std::vector<Case> cases = {
        {none, {{"at", "1,0"}}, {"--at", "-1,0"}, {"--at", "-1,0"}},
        {{{"depth_contrast", 12}}, none, {"--set", "depth_contrast=20"}, {"--set", "depth_contrast=20"}},
        {{{"fov_scale", 0.5}}, none, {"--frame", "0.8"}, {"--frame", "0.8"}},
        {none, {{"frame", 0.5}}, {"--set", "fov_scale=0.8"}, {"--set", "fov_scale=0.8"}},
        {{{"rotate_z_trans", 30}},
         none,
         {"--pivot", "0.2,0.2", "--at", "1,0"},
         {"--pivot", "0.2,0.2", "--at", "1,0"}},
        {{{"guided_filter_rx", 9}}, none, {"--edges", "clean"}, {"--edges", "clean"}},
        {none, {{"samples", 8}}, {"--supersample", "2"}, {"--supersample", "2"}},
        {none, {{"supersample", 3}}, {"--samples", "2"}, {"--samples", "2"}},
        {none, {{"rgbd", "left"}}, {}, {}},
        {{{"rotate_x_boundary", 5}, {"depth_contrast", 12}},
         {{"orientation", 4}},
         {"--orientation", "3", "--at", "1,0"},
         {"--orientation", "3", "--at", "1,0"}},
        {{{"depth_contrast", 12}}, none, {"--orientation", "4"}, {"--set", "depth_contrast=12"}},
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(testing::PrintToString(one.given) + " over " + one.parameters.dump() +
                     one.options.dump());
        Arguments given = one.given;
        given.insert(given.begin(), {"--profile", write(profile(one.parameters, one.options))});
        const std::string before = still(given);
        EXPECT_EQ(before, still(one.alone));
        // Wherever it stands on the line.
        std::rotate(given.begin(), given.begin() + 2, given.end());
        EXPECT_EQ(before, still(given));
    }
}

TEST_F(Profiles, AParameterOfItCountsBeforeWhatWouldChooseIt) {
    EXPECT_EQ(
        still({"--profile", write(profile({{"fov_scale", 0.6}}, {{"frame", "auto"}, {"edges", "clean"}}))}),
        still({"--set", "fov_scale=0.6"}));
}

TEST_F(Profiles, OneLineRefusesWhatIsNotKnownOrOutOfRange) {
    const auto refusal = [&](const json& text) {
        const Outcome outcome = render("never.png", {"--profile", write(text)});
        EXPECT_EQ(outcome.code, 1);
        EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
        EXPECT_THAT(outcome.err, HasSubstr("given.json: "));
        return outcome.err;
    };
    const json none = json::object();
    EXPECT_THAT(refusal(profile(none, {{"framez", 1}, {"shine", "much"}, {"edges", "soft"}})),
                HasSubstr("options.framez, options.shine: not known"));
    EXPECT_THAT(refusal(profile(none, {{"edgs", "soft"}})),
                HasSubstr("options.edgs: not known; did you mean edges?"));
    EXPECT_THAT(refusal(profile({{"fov_scal", 1}}, none)), HasSubstr("did you mean fov_scale?"));
    EXPECT_THAT(refusal(profile({{"fov_scale", 2}}, none)), HasSubstr("parameters.fov_scale: 2 is not"));
    EXPECT_THAT(refusal(profile({{"guided_filter_rx", 1.5}}, none)),
                HasSubstr("a whole number from 0 to 1024"));
    EXPECT_THAT(refusal(profile(none, {{"frame", 7}})), HasSubstr("options.frame: --frame 7"));
    EXPECT_THAT(refusal(profile(none, {{"edges", true}})), HasSubstr("clean or soft is wanted"));
    EXPECT_THAT(refusal(profile(none, {{"no-doctor", "maybe"}})), HasSubstr("true or false is wanted"));
    EXPECT_THAT(refusal({{"quorvane_profile", 9}}), HasSubstr("version 9"));
    EXPECT_THAT(folder.names(), testing::Not(testing::Contains("never.png")));
}

TEST_F(Profiles, RunsNoProgramAndNamesNoFile) {
    for (const char* key :
         {"depth-cmd", "depth-model", "right", "out", "timings", "save-profile", "profile", "set"}) {
        const Outcome outcome =
            render("never.png", {"--profile", write(profile(json::object(), {{key, "x"}}))});
        EXPECT_EQ(outcome.code, 1) << key;
        EXPECT_THAT(outcome.err, HasSubstr("not known"));
    }
}

TEST_F(Profiles, TwoSourcesOfDepthAreRefused) {
    const std::string path = write(profile(json::object(), {{"rgbd", "left"}, {"pair", "sbs"}}));
    const Outcome outcome = quorvane({"render", folder / "p.png", "-o", folder / "a.png", "--profile", path});
    EXPECT_EQ(outcome.code, 1);
    EXPECT_THAT(outcome.err, HasSubstr("one of the two is wanted"));
}

TEST_F(Profiles, OneCommandsProfileServesTheOthers) {
    const std::string saved = folder / "saved.json";
    still({"--frames", "7", "--fps", "5", "--at", "1,0", "--frame", "0.6", "--save-profile", saved});
    for (const Arguments& command : {Arguments{"inspect"}, Arguments{"shape", "-o", folder / "shaped.png"},
                                     Arguments{"stages", "-o", folder / "stages.png"}}) {
        Arguments arguments = command;
        arguments.insert(arguments.begin() + 1, {folder / "p.png", folder / "d.png", "--profile", saved});
        const Outcome outcome = quorvane(arguments);
        EXPECT_EQ(outcome.code, 0) << outcome.err;
    }
    const Outcome inspected =
        quorvane({"inspect", folder / "p.png", folder / "d.png", "--json", "--profile", saved});
    EXPECT_NEAR(json::parse(inspected.out)["plan"]["frame"].get<double>(), 0.6, 1e-6);
}

TEST_F(Profiles, ABatchTakesOneForAllOfItsPhotos) {
    writeBytes(folder / "p_depth.png", bytesOf(folder / "d.png"));
    const std::string path = write(profile({{"depth_contrast", 12}}, {{"at", "1,0"}, {"size", "96x72"}}));
    const Outcome outcome = quorvane({"batch", folder / "p.png", "-o", folder / "{name}-out.png",
                                      "--renderer", "software", "--profile", path});
    EXPECT_EQ(outcome.code, 0) << outcome.err;
    const Outcome alone =
        quorvane({"render", folder / "p.png", "-o", folder / "alone.png", "--renderer", "software", "--set",
                  "depth_contrast=12", "--at", "1,0", "--size", "96x72"});
    EXPECT_EQ(alone.code, 0) << alone.err;
    EXPECT_EQ(bytesOf(folder / "p-out.png"), bytesOf(folder / "alone.png"));
    const Outcome refused = quorvane({"batch", folder / "p.png", "-o", folder / "{name}-two.png", "--profile",
                                      write(profile(json::object(), {{"jobs", 2}}))});
    EXPECT_NE(refused.code, 0);
    EXPECT_THAT(refused.err, HasSubstr("options.jobs: not known"));
}

TEST_F(Profiles, AreWrittenWholeOrNotAtAll) {
    const std::string saved = folder / "saved.json";
    EXPECT_EQ(render("a.png", {"--set", "fov_scale=9", "--save-profile", saved}).code, 2);
    EXPECT_EQ(quorvane({"render", folder / "none.png", "-o", folder / "a.png", "--save-profile", saved}).code,
              1);
    EXPECT_EQ(render("a.png", {"--save-profile", folder / "missing/saved.json"}).code, 1);
    EXPECT_THAT(folder.names(), testing::ElementsAre("d.png", "p.png"));

    // Neither an input nor the picture is replaced, and one may be changed in its place.
    EXPECT_EQ(render("a.png", {"--save-profile", folder / "p.png"}).code, 2);
    EXPECT_EQ(render("a.png", {"--save-profile", folder / "a.png"}).code, 2);
    EXPECT_EQ(render("a.png", {"--save-profile", saved, "--frame", "0.9"}).code, 0);
    EXPECT_EQ(render("a.png", {"--profile", saved, "--save-profile", saved, "--amount", "0.5"}).code, 0);
    const json changed = json::parse(bytesOf(saved));
    EXPECT_EQ(changed["options"]["frame"], 0.9);
    EXPECT_EQ(changed["options"]["amount"], 0.5);
}

TEST_F(Profiles, KeepNoMotionWhereAFileHasIt) {
    writeBytes(folder / "hand.jsonl", "{\"t\":0,\"x\":1,\"y\":0}\n{\"t\":1,\"x\":-1,\"y\":0}\n");
    const std::string saved = folder / "s.json";
    const Outcome outcome =
        render("a.png", {"--motion-file", folder / "hand.jsonl", "--save-profile", saved});
    EXPECT_EQ(outcome.code, 0) << outcome.err;
    EXPECT_THAT(outcome.err, HasSubstr("does not hold --motion-file"));
    EXPECT_EQ(json::parse(bytesOf(saved))["options"].count("motion"), 0u);
    // One that has a motion gives way to the file.
    const std::string other = write(profile(json::object(), {{"motion", "circle"}}));
    EXPECT_EQ(still({"--motion-file", folder / "hand.jsonl", "--profile", other}),
              still({"--motion-file", folder / "hand.jsonl"}));
}

TEST_F(Profiles, SayWhatHasToBeGivenAgain) {
    const Outcome outcome = quorvane({"render", folder / "p.png", "-o", folder / "a.png", "--depth-cmd",
                                      "sh -c 'cp " + (folder / "d.png") + " {out}; : {in}'", "--save-profile",
                                      folder / "s.json"});
    EXPECT_EQ(outcome.code, 0) << outcome.err;
    EXPECT_THAT(outcome.err, HasSubstr("s.json: does not hold --depth-cmd; give it again with the profile"));
    EXPECT_EQ(json::parse(bytesOf(folder / "s.json"))["options"].count("depth-cmd"), 0u);
}

}  // namespace
}  // namespace quorvane::test
