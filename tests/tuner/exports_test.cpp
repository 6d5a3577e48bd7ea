#include "apps/tuner/core/exports.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cutils/properties.h>

#include <cstdlib>
#include <filesystem>
#include <set>
#include <sstream>

#include "quorvane/host/ParallaxView.h"
#include "support/temporary_folder.h"

namespace quorvane::tuner {
namespace {

using testing::HasSubstr;
using testing::Not;

/// A line for the shell.
bool succeeds(const std::string& line) { return std::system((line + " >&2").c_str()) == 0; }

Exported usual() { return {{}, LibParam(), "photo.jpg", "", false, ""}; }

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

TEST(TunerExports, LinesNameExportedFilesWhereTheyAre) {
    Exported exported = usual();
    exported.folder = "my tuned";
    exported.has_hand = true;
    EXPECT_THAT(commandLine(exported), HasSubstr("--motion-file 'my tuned/hand.jsonl'"));
    EXPECT_THAT(profileCommandLine(exported), HasSubstr("photo.jpg --profile 'my tuned/profile.json'"));
}

TEST(TunerExports, TheScriptFindsItsFilesFromAnywhere) {
    const test::TemporaryFolder folder;
    std::filesystem::create_directory(folder / "photo-tuned");
    for (const char* name : {"photo.jpg", "depth.png", "photo-tuned/hand.jsonl"})
        test::writeBytes(folder / name, "");
    test::writeBytes(folder / "quorvane",
                     "#!/bin/sh\n[ \"$1\" = render ] && [ -f \"$2\" ] && [ -f \"$3\" ] && "
                     "[ \"$6 $7\" = '--motion-file hand.jsonl' ] && [ -f hand.jsonl ] && : >\"$5\"\n");
    Exported exported = usual();
    exported.photo = folder / "photo.jpg";
    exported.depth = folder / "depth.png";
    exported.has_hand = true;
    exported.folder = folder / "photo-tuned";
    test::writeBytes(folder / "photo-tuned/render.sh", renderScript(exported));
    EXPECT_TRUE(succeeds("chmod +x " + (folder / "quorvane") + " && cd / && PATH=" + folder.path() +
                         ":$PATH sh -e " + (folder / "photo-tuned/render.sh")));
    EXPECT_TRUE(std::filesystem::exists(folder / "photo-tuned/clip.mp4"));
    EXPECT_THAT(renderScript(exported), HasSubstr("render ../photo.jpg ../depth.png "))
        << "the folders may be moved together";
}

/// Values that are far from the usual ones and have many digits.
LibParam unusual() {
    LibParam values;
    for (size_t i = 0; i < std::size(kParameters); ++i) {
        const ParameterInfo& info = ParallaxView::parameters()[i];
        kParameters[i].store(info.minimum + (info.maximum - info.minimum) / 7.0, &values);
    }
    values.guided_filter_eps = 1.2345678e-8f;
    return values;
}

// The lines themselves, run in a shell where adb sets the properties that the renderer reads here.
TEST(TunerExports, TheRendererTakesTheSetpropLines) {
    const test::TemporaryFolder folder;
    Exported exported = usual();
    exported.values = unusual();
    test::writeBytes(folder / "adb", "#!/bin/sh\necho \"$*\" >>" + (folder / "called") + "\n");
    test::writeBytes(folder / "setprop.sh", setpropLines(exported));
    ASSERT_TRUE(succeeds("chmod +x " + (folder / "adb") + " && PATH=" + folder.path() + ":$PATH sh -e " +
                         (folder / "setprop.sh")));
    std::istringstream calls(test::bytesOf(folder / "called"));
    std::string shell, command, name, value;
    std::set<std::string> names;
    while (calls >> shell >> command >> name >> value) {
        EXPECT_EQ(shell + " " + command, "shell setprop");
        EXPECT_LE(name.size(), 31u) << "no older Android takes a longer name";
        EXPECT_LE(value.size(), 91u) << "nor a longer value";
        EXPECT_EQ(property_set(name.c_str(), value.c_str()), 0);
        names.insert(name);
    }
    EXPECT_EQ(names.size(), std::size(kParameters));
    ESRenderer renderer;
    renderer.getProperties(4);
    for (const std::string& set : names) property_set(set.c_str(), "");
    for (const Parameter& parameter : kParameters)
        EXPECT_EQ(parameter.of(renderer.params), parameter.of(exported.values)) << parameter.name;
}

TEST(TunerExports, TheCppFileCompilesAndHasTheValues) {
    Exported exported = usual();
    exported.values.fov_scale = 0.875f;
    EXPECT_THAT(cppSnippet(exported), HasSubstr("{\"fov_scale\", 0.875},"));
    EXPECT_THAT(cppSnippet(exported), HasSubstr("{\"rotate_z_trans\", 40},"));
    EXPECT_THAT(cppSnippet(exported), HasSubstr("cleanDepth("));
    const test::TemporaryFolder folder;
    exported.values = unusual();
    test::writeBytes(folder / "clean.cpp", cppSnippet(exported));
    exported.tuning.clean_edges = false;
    exported.tuning.orientation = 0;
    EXPECT_THAT(cppSnippet(exported), Not(HasSubstr("cleanDepth(")));
    EXPECT_THAT(cppSnippet(exported), HasSubstr("create(width, height, 0, view)"));
    test::writeBytes(folder / "soft.cpp", cppSnippet(exported));
    EXPECT_TRUE(succeeds(
        COMPILER " -std=c++17 -fsyntax-only -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror -I" SOURCES
                 "/include -I" SOURCES "/host/include " +
        (folder / "clean.cpp") + " " + (folder / "soft.cpp")));
}

TEST(TunerExports, TheJavaLinesHaveTheValues) {
    Exported exported = usual();
    EXPECT_EQ(javaSnippet(exported), "view.setPivotAuto();\n") << "what the view begins with is not said";
    exported.tuning.parameters = {{"fov_scale", 0.875}};
    EXPECT_EQ(javaSnippet(exported), "view.setParameter(\"fov_scale\", 0.875);\nview.setPivotAuto();\n");
    setPivot(Pivot::kTuned, 0.5, 0.5, &exported.tuning);
    EXPECT_THAT(javaSnippet(exported), HasSubstr("view.setPivotOff();"));
    setPivot(Pivot::kPoint, 0.25, 0.5, &exported.tuning);
    exported.tuning.orientation = 0;
    exported.tuning.clean_edges = false;
    exported.tuning.amount = 0.5;
    exported.tuning.invert_depth = true;
    std::string all = javaSnippet(exported);
    EXPECT_THAT(all, HasSubstr("view.setPivot(0.25, 0.5);"));
    EXPECT_THAT(all, HasSubstr("view.setParameter(\"border_deadzone\", 18);")) << "of the second tuned set";
    EXPECT_THAT(all, HasSubstr("view.setCleanEdges(false);"));
    EXPECT_THAT(all, HasSubstr("setProfile"));
    exported.has_hand = true;
    setParameter("rotate_z_trans", 37.5, &exported.tuning);
    EXPECT_THAT(javaSnippet(exported), Not(HasSubstr("setPivot"))) << "the distance is set";
    all += javaSnippet(exported);
    EXPECT_THAT(all, HasSubstr("setReplay"));

    // For tests/android/java_test, which compiles them.
    if (const char* const path = std::getenv("QUORVANE_JAVA_LINES"))
        test::writeBytes(
            path, "final class Tuned {\n    static void tune(quorvane.parallax.ParallaxPhotoView view) {\n" +
                      all + "}\n}\n");
}

TEST(TunerExports, ShellWordsReachTheShellWhole) {
    EXPECT_EQ(shellWord("a-b_c.jpg"), "a-b_c.jpg");
    EXPECT_EQ(shellWord("a b"), "'a b'");
    EXPECT_EQ(shellWord("$(rm)"), "'$(rm)'");
    EXPECT_EQ(shellWord(""), "''");
}

}  // namespace
}  // namespace quorvane::tuner
