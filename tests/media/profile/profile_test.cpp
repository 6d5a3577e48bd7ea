#include "media/profile/profile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/temporary_folder.h"
#include "system/error.h"

namespace quorvane::media {
namespace {

using quorvane::test::TemporaryFolder;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Pair;

/// What refuses the text, or "" where nothing does.
std::string refusal(const std::string& text) {
    try {
        readProfile(text, "p.json");
        return "";
    } catch (const Error& error) {
        return error.what();
    }
}

TEST(Profile, HoldsTextsNumbersAndFlags) {
    const Profile profile =
        readProfile(R"({"quorvane_profile": 1, "parameters": {"fov_scale": 0.75, "offset_len": 3},
            "options": {"frame": 0.9, "pivot": "0.5,0.4", "no-doctor": true, "size": 1280}})",
                    "p.json");
    EXPECT_THAT(profile.parameters, ElementsAre(Pair("fov_scale", 0.75), Pair("offset_len", 3.0)));
    EXPECT_THAT(profile.options,
                testing::UnorderedElementsAre(
                    Pair("frame", Profile::Value(0.9)), Pair("pivot", Profile::Value(std::string("0.5,0.4"))),
                    Pair("no-doctor", Profile::Value(true)), Pair("size", Profile::Value(1280.0))));
}

TEST(Profile, MaySayNothing) {
    const Profile profile = readProfile(R"({"quorvane_profile": 1})", "p.json");
    EXPECT_TRUE(profile.parameters.empty());
    EXPECT_TRUE(profile.options.empty());
}

TEST(Profile, IsRefusedInOneLineThatSaysWhy) {
    const auto with = [](const std::string& rest) {
        return refusal("{\"quorvane_profile\": 1, " + rest + "}");
    };
    EXPECT_EQ(refusal(""), "p.json: not JSON, from line 1 on");
    EXPECT_EQ(refusal("{\n\"quorvane_profile\": 1,\n\"options\": {,}}"), "p.json: not JSON, from line 3 on");
    EXPECT_EQ(refusal("{\"quorvane_profile\n\": 1}"), "p.json: not JSON, from line 1 on")
        << "no text goes on";
    EXPECT_EQ(refusal("[]"), "p.json: no profile; one is an object with \"quorvane_profile\": 1");
    EXPECT_EQ(refusal("{}"), "p.json: no profile; one is an object with \"quorvane_profile\": 1");
    EXPECT_EQ(refusal(R"({"quorvane_profile": 2})"),
              "p.json: a profile of version 2; this program reads version 1");
    EXPECT_EQ(refusal(R"({"quorvane_profile": "1"})"),
              "p.json: a profile of version \"1\"; this program reads version 1");
    EXPECT_EQ(with(R"("paramters": {}, "option": {})"),
              "p.json: option, paramters: not known; a profile has quorvane_profile, parameters and options");
    EXPECT_EQ(with(R"("options": [1])"), "p.json: options: an object {...} is wanted, not an array");
    EXPECT_EQ(with(R"("parameters": {"fov_scale": "0.8"})"),
              "p.json: parameters.fov_scale: a number is wanted, not \"0.8\"");
    for (const char* value : {"null", "[1]", "{}"})
        EXPECT_THAT(with(R"("options": {"frame": )" + std::string(value) + "}"),
                    HasSubstr("options.frame: a text, a number, true or false is wanted"))
            << value;
    EXPECT_THAT(with(R"("parameters": {"fov_scale": 1e999})"), HasSubstr("too large"));
}

TEST(Profile, RefusalsStayShortAndOneLine) {
    EXPECT_THAT(refusal(R"({"quorvane_profile": 1, "a\n\u001bb": 1})"), HasSubstr("p.json: a??b: not known"));
    const std::string longest(60000, 'k');
    std::string many;
    for (int i = 0; i < 1000; ++i) many += ", \"key" + std::to_string(i) + "\": 1";
    EXPECT_LT(refusal("{\"quorvane_profile\": 1, \"" + longest + "\": 1}").size(), 300u);
    EXPECT_LT(refusal("{\"quorvane_profile\": 1" + many + "}").size(), 300u);
    EXPECT_THAT(refusal("{\"quorvane_profile\": 1" + many + "}"), HasSubstr("and 992 more"));
    EXPECT_LT(refusal("{\"quorvane_profile\": \"" + longest + "\"}").size(), 300u);
    const std::string deep(30000, '['), shut(30000, ']');
    EXPECT_LT(refusal("{\"quorvane_profile\": 1, \"options\": {\"frame\": " + deep + shut + "}}").size(),
              300u);
    EXPECT_THAT(refusal("{\"quorvane_profile\": \"" + deep + "\"}"), testing::Not(HasSubstr("brackets")));
    EXPECT_EQ(refusal(R"({"quorvane_profile": 1, "options": {"alt": "\"[[[[[[[[[[[[[[[[[["}})"), "");
    EXPECT_THAT(refusal(R"({"quorvane_profile": 1, "x": [[],[],[],[],[],[],[],[],[],[],[],[],[],[],[],[]]})"),
                HasSubstr("x: not known"));
}

TEST(Profile, FilesAreBounded) {
    const TemporaryFolder folder;
    const std::string start = R"({"quorvane_profile": 1)", end = "}";
    const auto of_size = [&](size_t size) {
        test::writeBytes(folder / "p.json", start + std::string(size - start.size() - end.size(), ' ') + end);
    };
    of_size(65536);
    EXPECT_NO_THROW(loadProfile(folder / "p.json"));
    of_size(65537);
    EXPECT_THROW(loadProfile(folder / "p.json"), Error);
    EXPECT_THROW(loadProfile("/dev/zero"), Error);
    EXPECT_THROW(loadProfile(folder.path()), Error);
    EXPECT_THROW(loadProfile(folder / "none.json"), Error);
}

TEST(Profile, WhatIsWrittenIsReadBack) {
    Profile profile;
    profile.parameters = {
        {"depth_contrast", 20.5}, {"fov_scale", 0.1}, {"guided_filter_eps", 1e-6}, {"offset_len", -35}};
    profile.options = {{"at", std::string("-0.5,1")},
                       {"frame", 1.0 / 3.0},
                       {"no-doctor", false},
                       {"pivot", std::string("a \"b\"\n\xc3\xa4")},
                       {"size", 1e300}};
    const Profile read = readProfile(profileText(profile), "p.json");
    EXPECT_EQ(read.parameters, profile.parameters);
    EXPECT_EQ(read.options, profile.options);
}

TEST(Profile, IsTextForPeople) {
    Profile profile;
    profile.parameters = {{"offset_len", 35}, {"depth_contrast", 0.6}};
    profile.options = {{"size", 1280.0}, {"edges", std::string("soft")}};
    EXPECT_EQ(profileText(profile), R"({
  "quorvane_profile": 1,
  "parameters": {
    "offset_len": 35,
    "depth_contrast": 0.6
  },
  "options": {
    "size": 1280,
    "edges": "soft"
  }
}
)");
}

TEST(Profile, ValuesAreWhatStandsBehindAnOption) {
    for (const char* text :
         {"auto", "0.5,0.4", "1280x720", "1280", "0.81", "-3", "", "x=sin(1)", "0x10", "nan", "1 "})
        EXPECT_EQ(textOf(valueOf(text)), text);
    EXPECT_EQ(textOf(valueOf("1e3")), "1000");
    EXPECT_EQ(textOf(valueOf("0.50")), "0.5");
    EXPECT_EQ(textOf(Profile::Value(true)), "true");
    EXPECT_EQ(textOf(Profile::Value(false)), "false");
}

}  // namespace
}  // namespace quorvane::media
