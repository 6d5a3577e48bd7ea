// Whatever goes wrong: one line that names the file or value, the right exit code, and nothing left behind.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <thread>

#include "process.h"
#include "support/processes.h"
#include "support/temporary_folder.h"

namespace quorvane::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class Failure : public testing::Test {
  protected:
    void SetUp() override {
        nameInProcesses(folder.path());
        ASSERT_EQ(quorvane({"sample", photo, depth, "--size", "96x72"}).code, 0);
    }

    void expectRefused(const std::vector<std::string>& arguments, int code, const std::string& said,
                       const std::map<std::string, std::string>& environment = {}) {
        SCOPED_TRACE(testing::PrintToString(arguments));
        const std::vector<std::string> before = TemporaryFolder::names(folder.path());
        const Outcome outcome = quorvane(arguments, environment);
        EXPECT_EQ(outcome.code, code) << outcome.err;
        EXPECT_EQ(outcome.out, "");
        EXPECT_THAT(outcome.err, HasSubstr(said));
        EXPECT_THAT(outcome.err, testing::StartsWith("quorvane: "));
        EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
        EXPECT_EQ(TemporaryFolder::names(folder.path()), before) << "something was left behind";
    }

    std::vector<std::string> render(const std::string& out, std::vector<std::string> more = {}) const {
        std::vector<std::string> arguments = {"render", photo, depth, "-o", out};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return arguments;
    }

    const TemporaryFolder folder;
    const std::string photo = folder / "photo.png";
    const std::string depth = folder / "depth.png";
};

TEST_F(Failure, WrongUsageIsExitCode2) {
    expectRefused({}, 2, "subcommand");
    expectRefused({"paint"}, 2, "");
    expectRefused({"render"}, 2, "PHOTO");
    expectRefused({"render", photo}, 2, "--out");
    expectRefused({"render", photo, depth}, 2, "--out");
    expectRefused(render(folder / "a.png", {"--frames", "0"}), 2, "--frames");
    expectRefused(render(folder / "a.png", {"--fps", "1000"}), 2, "--fps");
    expectRefused(render(folder / "a.png", {"--amount", "1.5"}), 2, "--amount");
    expectRefused(render(folder / "a.png", {"--motion", "shake"}), 2, "--motion");
    expectRefused(render(folder / "a.png", {"--supersample", "5"}), 2, "--supersample");
    expectRefused(render(folder / "a.png", {"--samples", "3"}), 2, "--samples");
    expectRefused(render(folder / "a.png", {"--detail", "half"}), 2, "--detail");
    expectRefused(render(folder / "a.png", {"--supersample", "2", "--samples", "4"}), 2,
                  "--supersample 2 and --samples 4: one of the two is wanted");
    expectRefused(render(folder / "a.png", {"--size", "big"}), 2, "--size big");
    expectRefused(render(folder / "a.png", {"--at", "2,0"}), 2, "--at 2,0");
    expectRefused(render(folder / "a.png", {"--orientation", "-1"}), 2, "--orientation");
    expectRefused(render(folder / "a.mp4", {"--size", "63x48"}), 2, "such as 62x48");
    expectRefused(render(folder / "a.png", {"--set", "fov=1"}), 2, "known are rotate_z_trans,");
    expectRefused(render(folder / "a.png", {"--set", "fov_scale=7"}), 2, "from 0.05 to 1");
    expectRefused(render(folder / "a.png", {"--set", "fov_scale=wide"}), 2, "'wide' is not a number");
    expectRefused(render(folder / "a.png", {"--frame", "60"}), 2, "did you mean --frames 60?");
    expectRefused(render(folder / "a.png", {"--frames", "0.9"}), 2, "did you mean --frame 0.9?");
    expectRefused(render(folder / "a.png", {"--pivot", "1.5,0"}), 2, "--pivot 1.5,0");
    expectRefused(render(folder / "a.png", {"--edges", "hard"}), 2, "clean or soft is wanted");
    expectRefused(render(folder / "a.png", {"--grid", "huge"}), 2, "auto, fine or coarse is wanted");
    expectRefused({"sample", folder / "s.jpg", folder / "t.png"}, 2, ".png");
    expectRefused({"sample", folder / "s.png", folder / "t.png", "--size", "9x9"}, 2, "64 to 8192");
    expectRefused({"stages", photo, depth, "-o", folder / "a.mp4"}, 2, ".png");
}

TEST_F(Failure, OneParameterIsGivenInOneWay) {
    const std::vector<std::vector<std::string>> commands = {render(folder / "a.png"),
                                                            {"stages", photo, depth, "-o", folder / "a.png"},
                                                            {"inspect", photo, depth}};
    const auto refused = [&](const std::string& option, const std::string& value,
                             const std::string& setting) {
        for (std::vector<std::string> arguments : commands) {
            arguments.insert(arguments.end(), {option, value, "--set", setting});
            expectRefused(arguments, 2, option + " " + value + " and --set " + setting + ": one of the two");
        }
    };
    refused("--frame", "0.9", "fov_scale=0.8");
    refused("--frame", "auto", "fov_scale=0.8");
    refused("--pivot", "0.5,0.5", "rotate_z_trans=33");
    refused("--edges", "clean", "guided_filter_ry=1");
}

TEST_F(Failure, NumbersAreNumbers) {
    for (const char* number : {"nan", "inf", "-inf", "0x1", "", "1 ", "half"}) {
        const std::string said = std::string("--amount ") + number + ": a number from 0 to 1 is wanted";
        expectRefused(render(folder / "a.mp4", {"--amount", number}), 2, said);
    }
    expectRefused(render(folder / "a.mp4", {"--frames", "1.5"}), 2, "--frames 1.5: a whole number");
    expectRefused(render(folder / "a.mp4", {"--fps", "nan"}), 2, "--fps nan: a whole number");
}

TEST_F(Failure, OrientationIsADeviceOrientation) {
    for (const char* code : {"99", "9", "-1", "4294967300", "4.5"})
        expectRefused(render(folder / "a.png", {"--orientation", code}), 2,
                      std::string("--orientation ") + code + ": a whole number from 0 to 8 is wanted");
}

TEST_F(Failure, StandardOutputIsNoFolder) {
    const auto here = [this] {
        if (chdir(folder.path().c_str()) != 0) _exit(99);
    };
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"stages", photo, depth, "-o", "-"},
          {"inspect", photo, depth, "-o", "-"},
          {"extract", photo, "-o", "-"},
          {"extract", photo, "-o", "-", "--raw"},
          {"extract", photo, "-o", folder / "d.png", "--photo", "-"},
          {"sample", "-", "-"}}) {
        SCOPED_TRACE(testing::PrintToString(arguments));
        const Outcome outcome = quorvane(arguments, {}, here);
        EXPECT_EQ(outcome.code, 2);
        EXPECT_THAT(outcome.err, HasSubstr("-: nothing is written to standard output"));
        EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
        EXPECT_THAT(folder.names(), ElementsAre("depth.png", "photo.png"));
    }
}

TEST_F(Failure, MistypedWordsAreAnsweredWithTheRightOnes) {
    expectRefused({"rendr", photo, depth, "-o", folder / "a.png"}, 2,
                  "rendr: no such command; did you mean render?");
    expectRefused({"--verzion"}, 2, "--verzion: no such option; did you mean --version?");
    expectRefused(render(folder / "a.mp4", {"--frmaes", "9"}), 2,
                  "--frmaes: no such option; did you mean --frames?");
    expectRefused(render(folder / "a.mp4", {"--frmaes=9"}), 2, "did you mean --frames?");
    // The option that seems to be missing is the one that is mistyped.
    expectRefused({"render", photo, depth, "--ou", folder / "a.mp4"}, 2, "did you mean --out?");
    expectRefused({"render", photo, depth, "--output", folder / "a.mp4"}, 2, "did you mean --out?");
    expectRefused({"--force", "render", photo, depth, "-o", folder / "a.png"}, 2,
                  "--force: goes behind the command, as in quorvane render --force");
    expectRefused({photo, depth, "-o", folder / "a.mp4"}, 2,
                  photo + ": no such command; did you mean quorvane render " + photo + "?");
    expectRefused({"inspect", photo, "--jason"}, 2, "did you mean --json?");
    expectRefused(render(folder / "a.mp4", {"--motion", "swya"}), 2, "did you mean sway?");
    expectRefused({"paint"}, 2,
                  "render, batch, stages, inspect, extract, embed, shape, motions, info, sample or help");
    expectRefused(render(folder / "a.mp4", {"--brightness", "9"}), 2, "--brightness: no such option (");
    expectRefused({"render", photo, depth, "third.png", "-o", folder / "a.mp4"}, 2,
                  "third.png: one argument too many");
}

// What people type who know other programs, or have read the help in haste.
TEST_F(Failure, WhatIsSoughtIsNamed) {
    const std::string clip = folder / "a.mp4", none = folder / "none.mp4";
    expectRefused(render(clip, {"--duration", "4"}), 2, "did you mean --seconds?");
    expectRefused(render(clip, {"--width=800"}), 2, "--width: no such option; did you mean --size?");
    expectRefused(render(clip, {"--preset", "slow"}), 2, "did you mean --encoder-preset?");
    for (const char* name : {"--depth", "-d"})
        expectRefused({"render", photo, name, depth, "-o", clip}, 2,
                      std::string(name) +
                          ": no such option; DEPTH stands by itself, as in quorvane render PHOTO [DEPTH]");
    expectRefused({"render", photo, none}, 2, "--out is required; did you mean --out " + none + "?");
    expectRefused({"stages", photo, depth, none}, 2,
                  "one argument too many; did you mean --out " + none + "?");
    expectRefused({"render", photo, depth, photo, "-o", clip}, 2,
                  "one argument too many; quorvane batch renders many photos");
    expectRefused({"render", folder.path(), "-o", clip}, 2,
                  "a folder; quorvane batch renders the photos in it");
    expectRefused({"render", photo, "--invert-depth", "no", "-o", clip}, 2,
                  "no: no such file; did you mean --invert-depth=no?");
    expectRefused(render(clip, {"--size"}), 2, "--size: WxH is missing");
    expectRefused(render(clip, {"--motion-file", none}), 1, "none.mp4: cannot be read (No such file");
    expectRefused(render(clip, {"--profile", none}), 1, "none.mp4: cannot be read (No such file");
}

TEST_F(Failure, WrongUsageNamesTheHelpThatListsWhatIsRight) {
    expectRefused(render(folder / "a.mp4", {"--frmaes", "9"}), 2, " (see quorvane render --help)\n");
    expectRefused({"stages", photo, depth, "-o", folder / "a.mp4"}, 2, " (see quorvane stages --help)\n");
    expectRefused({"inspect"}, 2, " (see quorvane inspect --help)\n");
    expectRefused({"paint"}, 2, " (see quorvane --help)\n");
    expectRefused({}, 2, " (see quorvane --help)\n");
    expectRefused({"help", "paint"}, 2, " (see quorvane --help)\n");
}

TEST_F(Failure, NamesDoNothingToATerminal) {
    // U+202E turns what follows it round, U+009B begins an order to the terminal.
    for (const char* name : {"\xE2\x80\xAEgpj.png",
                             "\xC2\x9B"
                             "2J.png",
                             "\x9B"
                             "2J.png",
                             "a\xE2\x80\xA8"
                             "b.png"}) {
        const Outcome outcome = quorvane({"render", folder / name, depth, "-o", folder / "a.png"});
        EXPECT_EQ(outcome.code, 1);
        EXPECT_THAT(outcome.err, testing::Not(HasSubstr(name)));
        EXPECT_TRUE(std::all_of(outcome.err.begin(), outcome.err.end() - 1, [](char c) { return c >= ' '; }))
            << testing::PrintToString(outcome.err);
    }
}

TEST_F(Failure, MissingInputIsNamed) {
    expectRefused({"render", folder / "no.jpg", depth, "-o", folder / "a.png"}, 1, "no.jpg: No such file");
    expectRefused({"render", photo, folder / "no.png", "-o", folder / "a.mp4"}, 1, "no.png: No such file");
    expectRefused({"stages", photo, folder / "no.png", "-o", folder / "a.png"}, 1, "no.png: No such file");
}

TEST_F(Failure, UnreadableInputIsNamed) {
    writeBytes(folder / "text.jpg", "hello");
    writeBytes(folder / "cut.png", bytesOf(photo).substr(0, 900));
    for (const char* name : {"text.jpg", "cut.png"}) {
        expectRefused({"render", folder / name, depth, "-o", folder / "a.mp4"}, 1, std::string(name) + ": ");
        expectRefused({"render", photo, folder / name, "-o", folder / "a/"}, 1, std::string(name) + ": ");
    }
}

TEST_F(Failure, PhotoAsDepthMapIsNamed) {
    expectRefused({"render", photo, photo, "-o", folder / "a.png"}, 1,
                  "a colour picture; a depth map is gray");
}

TEST_F(Failure, OutputThatCannotBeIsNamed) {
    expectRefused(render(folder / "none/a.mp4"), 1, "there is no folder");
    expectRefused(render(folder / "none/a.png"), 1, "there is no folder");
    expectRefused(render(folder / "none/frames/"), 1, "there is no folder");
    expectRefused(render(folder / "a.avi"), 2, "write .mp4, .webm, .avif, .webp, .gif");
    expectRefused(render(folder.path()), 1, "the folder is not empty; --force");
    expectRefused(render(photo + "/"), 1, "is a file, not a folder");
    expectRefused(render(folder / "a.png", {"--timings", folder / "none/t.txt"}), 1,
                  "none/t.txt: there is no folder");
}

// A photo is not read for an output that cannot be: what is wrong with it would be told otherwise.
TEST_F(Failure, OutputThatCannotBeIsNamedBeforeThePhotoIsRead) {
    const std::string broken = folder / "broken.png";
    writeBytes(broken, bytesOf(photo).substr(0, 900));
    for (const char* name : {"none/a.mp4", "none/a.png", "none/a.html", "none/a.glb", "none/frames/"})
        expectRefused({"render", broken, depth, "-o", folder / name}, 1, "there is no folder");
    expectRefused({"render", broken, depth, "-o", folder.path()}, 1, "the folder is not empty; --force");
    expectRefused({"stages", broken, depth, "-o", folder / "none/a.png"}, 1, "there is no folder");
    expectRefused({"stages", broken, depth, "-o", folder / "none/stages/"}, 1, "there is no folder");
    std::filesystem::create_directory(folder / "full");
    writeBytes(folder / "full/notes.txt", "");
    expectRefused({"stages", broken, depth, "-o", folder / "full"}, 1, "the folder is not empty; --force");
}

TEST_F(Failure, InputIsNeverOverwritten) {
    const std::string before = bytesOf(photo);
    expectRefused(render(photo), 1, "is an input");
    expectRefused(render(depth), 1, "is an input");
    expectRefused({"stages", photo, depth, "-o", photo}, 1, "is an input");
    expectRefused(render(folder / "a.png", {"--timings", photo}), 1, "is an input");
    EXPECT_EQ(bytesOf(photo), before);
}

TEST_F(Failure, MissingFfmpegIsNamed) {
    expectRefused(render(folder / "a.mp4"), 1, "ffmpeg is not installed", {{"PATH", "/nonexistent"}});
}

TEST_F(Failure, FfmpegThatFailsLeavesNothing) {
    std::filesystem::create_directory(folder / "bin");
    writeBytes(folder / "bin/ffmpeg", "#!/bin/sh\necho 'first line' >&2\necho 'disk is full' >&2\nexit 1\n");
    std::filesystem::permissions(folder / "bin/ffmpeg", std::filesystem::perms::owner_all);
    expectRefused(render(folder / "a.mp4"), 1, "a.mp4: ffmpeg failed (disk is full)",
                  {{"PATH", folder / "bin" + std::string(":/usr/bin:/bin")}});
}

TEST_F(Failure, PictureTooLargeForTheDriverIsNamed) {
    expectRefused(render(folder / "a.png", {"--size", "16384x16384", "--supersample", "2"}), 1,
                  "--supersample 2");
}

TEST_F(Failure, BadPropertyLineIsReportedWithItsNumber) {
    writeBytes(folder / "p.prop", "quorvane.para12=0.8\nnonsense\n");
    const Outcome outcome = quorvane(render(folder / "a.png"), {{"QUORVANE_PROPERTIES", folder / "p.prop"}});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.err, (folder / "p.prop") + ":2: expected key=value\n");
}

TEST_F(Failure, SignalEndsInOrder) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGALRM, SIGUSR1, SIGUSR2, SIGXCPU})
        for (const char* name : {"a.mp4", "a.webp", "a.gif", "frames/"}) {
            const bool asked_for_often = signal == SIGINT || signal == SIGTERM || signal == SIGHUP;
            if (!asked_for_often && (name == std::string("a.webp") || name == std::string("a.gif"))) continue;
            SCOPED_TRACE(testing::Message() << "signal " << signal << ", " << name);
            Process process(render(folder / name, {"--frames", "99999"}));
            // Long enough to be in the middle of the frames: ffmpeg runs, or the folder's frames are there.
            for (int i = 0; i < 200 && folder.names().size() < 3 && processesNaming(folder.path()) < 2; ++i)
                std::this_thread::sleep_for(std::chrono::milliseconds(20));
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
            process.signal(signal);
            const Outcome outcome = process.wait();
            EXPECT_EQ(outcome.code, 1);
            EXPECT_EQ(outcome.err, "quorvane: interrupted\n");
            EXPECT_THAT(folder.names(), ElementsAre("depth.png", "photo.png"));
            EXPECT_TRUE(noProcessNames(folder.path())) << "ffmpeg still runs";
        }
}

TEST_F(Failure, EvenKilledItLeavesNoHalfClip) {
    for (const char* name : {"a.mp4", "a.webp", "a.gif"}) {
        SCOPED_TRACE(name);
        Process process(render(folder / name, {"--frames", "99999"}));
        for (int i = 0; i < 200 && processesNaming(folder.path()) < 2; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        process.signal(SIGKILL);
        EXPECT_EQ(process.wait().code, 128 + SIGKILL);
        EXPECT_TRUE(noProcessNames(folder.path())) << "ffmpeg still runs";
        EXPECT_THAT(folder.names(), ElementsAre("depth.png", "photo.png"));
    }
}

}  // namespace
}  // namespace quorvane::test
