#include "apps/tuner/core/exports.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>

namespace quorvane::tuner {
namespace {

using testing::HasSubstr;
using testing::Not;

Exported usual() { return {{}, LibParam(), "photo.jpg", "", false}; }

TEST(TunerExports, UsualSettingsNeedNoOption) {
    EXPECT_EQ(commandLine(usual()), "quorvane render photo.jpg -o clip.mp4");
}

TEST(TunerExports, TheCommandLineSaysWhatWasChanged) {
    Exported exported = usual();
    exported.photo = "my 'best' photo.jpg";
    exported.depth = "depth.png";
    exported.tuning.parameters = {{"depth_contrast", 20.5}};
    setPivot(Pivot::kPoint, 0.25, 0.5, &exported.tuning);
    exported.tuning.invert_depth = true;
    exported.tuning.motion = "x=sin(1) y=0.5cos(2)";
    exported.tuning.clean_edges = false;
    exported.tuning.longest = 1280;
    EXPECT_EQ(
        commandLine(exported),
        "quorvane render 'my '\\''best'\\'' photo.jpg' depth.png -o clip.mp4 --pivot 0.25,0.5 --edges soft "
        "--invert-depth=yes --motion 'x=sin(1) y=0.5cos(2)' --size 1280 --set depth_contrast=20.5");
    exported.has_hand = true;
    EXPECT_THAT(commandLine(exported), HasSubstr("--motion-file hand.jsonl"));
    EXPECT_THAT(commandLine(exported), Not(HasSubstr("--motion ")));
    EXPECT_THAT(profileCommandLine(exported), HasSubstr("--profile profile.json --motion-file hand.jsonl"));
}

TEST(TunerExports, SetpropHasALineForEachParameter) {
    Exported exported = usual();
    exported.values.fov_scale = 0.875f;
    std::istringstream lines(setpropLines(exported));
    std::string line;
    size_t count = 0;
    for (; std::getline(lines, line); ++count) {
        const std::string start = std::string("adb shell setprop ") + kParameters[count].property + " ";
        ASSERT_EQ(line.substr(0, start.size()), start);
        const std::string value = line.substr(start.size());
        EXPECT_LT(value.size(), 92u);
        EXPECT_LT(std::string(kParameters[count].property).size(), 32u);
        // As the renderer reads them.
        const double read =
            kParameters[count].integer != nullptr ? std::atoi(value.c_str()) : std::atof(value.c_str());
        EXPECT_EQ(static_cast<float>(read), static_cast<float>(kParameters[count].of(exported.values)))
            << line;
    }
    EXPECT_EQ(count, std::size(kParameters));
    EXPECT_THAT(setpropLines(exported), HasSubstr("quorvane.para12 0.875\n"));
    EXPECT_THAT(setpropLines(exported), HasSubstr("quorvane.para4 0.6\n"));
}

TEST(TunerExports, SnippetsHaveTheValues) {
    Exported exported = usual();
    exported.tuning.parameters = {{"fov_scale", 0.875}};
    exported.values.fov_scale = 0.875f;
    EXPECT_THAT(cppSnippet(exported), HasSubstr("{\"fov_scale\", 0.875},"));
    EXPECT_THAT(cppSnippet(exported), HasSubstr("{\"rotate_z_trans\", 40},"));
    EXPECT_THAT(cppSnippet(exported), HasSubstr("view->setParameter(name, value)"));
    EXPECT_EQ(javaSnippet(exported), "view.setParameter(\"fov_scale\", 0.875);\nview.setPivotAuto();\n");
    setPivot(Pivot::kPoint, 0.25, 0.5, &exported.tuning);
    EXPECT_THAT(javaSnippet(exported), HasSubstr("view.setPivot(0.25, 0.5);"));
}

TEST(TunerExports, ShellWordsReachTheShellWhole) {
    EXPECT_EQ(shellWord("a-b_c.jpg"), "a-b_c.jpg");
    EXPECT_EQ(shellWord("a b"), "'a b'");
    EXPECT_EQ(shellWord("$(rm)"), "'$(rm)'");
    EXPECT_EQ(shellWord(""), "''");
}

}  // namespace
}  // namespace quorvane::tuner
