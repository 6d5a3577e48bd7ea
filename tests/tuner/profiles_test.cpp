// Tunings as profiles, and profiles with a name.

#include "apps/tuner/core/profiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "support/temporary_folder.h"
#include "system/error.h"

namespace quorvane::tuner {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

Tuning everythingSet() {
    Tuning tuning;
    tuning.orientation = 0;
    tuning.parameters = {{"depth_contrast", 21.5}, {"fov_scale", 0.87}, {"guided_filter_rx", 3}};
    setPivot(Pivot::kPoint, 0.25, 0.625, &tuning);
    tuning.clean_edges = false;
    tuning.grid = Grid::kFine;
    tuning.invert_depth = true;
    tuning.holes = media::Holes::kFill;
    tuning.samples = 4;
    tuning.motion = "x=sin(1) y=0.5cos(2)";
    tuning.amount = 0.75;
    tuning.frames = 90;
    tuning.fps = 24;
    tuning.longest = 1280;
    tuning.others = {{"codec", std::string("h264")}, {"no-doctor", true}};
    return tuning;
}

Tuning throughText(const Tuning& tuning) {
    return tuningOf(media::readProfile(media::profileText(profileOf(tuning)), "a.json"), "a.json");
}

TEST(TunerProfiles, ATuningComesBackAsItWas) {
    EXPECT_TRUE(throughText({}) == Tuning());
    EXPECT_TRUE(throughText(everythingSet()) == everythingSet());
    Tuning distance;
    setPivot(Pivot::kPoint, 0.3, 0.4, &distance);
    setParameter("rotate_z_trans", 37.25, &distance);
    EXPECT_TRUE(throughText(distance) == distance);
    Tuning tuned;
    setPivot(Pivot::kTuned, 0.5, 0.5, &tuned);
    EXPECT_TRUE(throughText(tuned) == tuned);
    tuned.orientation = 0;
    EXPECT_TRUE(throughText(tuned) == tuned);
}

TEST(TunerProfiles, WithThePivotOffTheDistanceOfTheSetIsNamed) {
    Tuning tuned;
    tuned.orientation = 0;
    setPivot(Pivot::kTuned, 0.5, 0.5, &tuned);
    const auto json = nlohmann::json::parse(media::profileText(profileOf(tuned)));
    EXPECT_EQ(json["options"]["pivot"], "off");
    EXPECT_EQ(json["parameters"]["rotate_z_trans"], 50.0) << "a phone knows only the first set by itself";
}

TEST(TunerProfiles, EveryParameterIsNamedButThoseChosenForThePhoto) {
    const auto json = nlohmann::json::parse(media::profileText(profileOf({})));
    for (const Parameter& parameter : kParameters) {
        const std::string name = parameter.name;
        const bool open = name == "rotate_z_trans" || name == "fov_scale" || name == "guided_filter_rx" ||
                          name == "guided_filter_ry";
        EXPECT_EQ(json["parameters"].contains(name), !open) << name;
    }
    EXPECT_EQ(json["parameters"]["trans_to_rotate_scale"], 0.6) << "as people write it";
    const auto fixed = nlohmann::json::parse(media::profileText(fixedProfileOf({}, LibParam())));
    EXPECT_EQ(fixed["parameters"].size(), std::size(kParameters));
    EXPECT_EQ(fixed["parameters"]["fov_scale"], 0.81);
}

TEST(TunerProfiles, AValueThatIsNotWantedIsNamed) {
    for (const auto& [json, words] : {
             std::pair{R"({"quorvane_profile":1,"options":{"grid":"huge"}})", "grid is 'huge'"},
             {R"({"quorvane_profile":1,"options":{"amount":2}})", "0 to 1 is wanted"},
             {R"({"quorvane_profile":1,"options":{"pivot":"2,0"}})", "auto, off or X,Y"},
             {R"({"quorvane_profile":1,"options":{"motion":"fly"}})", "a motion's name"},
             {R"({"quorvane_profile":1,"parameters":{"fov_scale":9}})", "fov_scale"},
             {R"({"quorvane_profile":1,"parameters":{"size":9}})", "unknown parameter"},
         }) {
        try {
            tuningOf(media::readProfile(json, "a.json"), "a.json");
            ADD_FAILURE() << json;
        } catch (const Error& error) {
            EXPECT_THAT(error.what(), testing::AllOf(HasSubstr("a.json"), HasSubstr(words)));
        }
    }
}

TEST(TunerProfiles, AParameterCountsBeforeThePivot) {
    const Tuning tuning = tuningOf(
        media::readProfile(
            R"({"quorvane_profile":1,"parameters":{"rotate_z_trans":36},"options":{"pivot":"0.1,0.2"}})",
            "a"),
        "a");
    EXPECT_EQ(tuning.pivot, Pivot::kAuto);
    EXPECT_EQ(tuning.parameters.at("rotate_z_trans"), 36.0);
}

TEST(NamedProfiles, AreKeptByTheirNames) {
    const test::TemporaryFolder folder;
    const NamedProfiles profiles(folder / "new/profiles");
    EXPECT_THAT(profiles.names(), ElementsAre());
    profiles.save("soft light", everythingSet());
    profiles.save("Bäume (2)", {});
    EXPECT_THAT(profiles.names(), ElementsAre("Bäume (2)", "soft light"));
    EXPECT_TRUE(profiles.load("soft light") == everythingSet());
    profiles.save("soft light", {});
    EXPECT_TRUE(profiles.load("soft light") == Tuning());
    profiles.remove("Bäume (2)");
    EXPECT_THAT(profiles.names(), ElementsAre("soft light"));
    EXPECT_THAT(test::TemporaryFolder::names(folder / "new/profiles"), ElementsAre("soft light.json"));
    EXPECT_THROW(profiles.remove("Bäume (2)"), Error);
    EXPECT_THROW(profiles.load("none"), Error);
}

TEST(NamedProfiles, ANameIsNoPath) {
    const test::TemporaryFolder folder;
    const NamedProfiles profiles(folder / "profiles");
    for (const char* const name : {"", ".", "..", "../a", "a/b", ".hidden", " a", "a ", "a\nb", "a\\b"}) {
        EXPECT_FALSE(NamedProfiles::isName(name)) << name;
        EXPECT_THROW(profiles.save(name, {}), Error) << name;
    }
    EXPECT_FALSE(NamedProfiles::isName(std::string(81, 'a')));
    EXPECT_THAT(folder.names(), ElementsAre());
}

}  // namespace
}  // namespace quorvane::tuner
