#include "apps/quorvane/input/depth_command.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <thread>

#include "apps/quorvane/terminal/usage_error.h"
#include "process.h"
#include "support/photo_writers/pictures.h"
#include "support/processes.h"
#include "support/temporary_folder.h"

namespace quorvane::app {
namespace {

using testing::ElementsAre;

TEST(ParseDepthCommand, PartsWordsAtBlanks) {
    EXPECT_THAT(parseDepthCommand("  run\t--in {in}\n--out={out} "),
                ElementsAre("run", "--in", "{in}", "--out={out}"));
}

TEST(ParseDepthCommand, KeepsQuotedWordsTogetherAsAShellDoes) {
    EXPECT_THAT(parseDepthCommand(R"('my prog' "{in}" a'b c'd"e f" '' {out})"),
                ElementsAre("my prog", "{in}", "ab cde f", "", "{out}"));
    EXPECT_THAT(parseDepthCommand(R"(a\ b \'{in}\" '\n' "\n\"\\\$" {out})"),
                ElementsAre("a b", "'{in}\"", R"(\n)", R"(\n"\$)", "{out}"));
    EXPECT_THAT(parseDepthCommand("~/x $HOME *.png {in}|{out} ;"),
                ElementsAre("~/x", "$HOME", "*.png", "{in}|{out}", ";"));
}

TEST(ParseDepthCommand, RefusesWhatCannotBeMeant) {
    for (const char* text :
         {"", " ", "x {in}", "x {out}", "x in out", "x {in} {out} 'a", "x {in} {out} \"a", "x {in} {out} \\"})
        EXPECT_THROW(parseDepthCommand(text), UsageError) << text;
}

}  // namespace
}  // namespace quorvane::app

namespace quorvane::test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::IsEmpty;

class DepthCommand : public testing::Test {
  protected:
    void SetUp() override {
        writeBytes(photo, jpegFile(somePhoto(96, 72)));
        writeBytes(depth, pngFile(somePlane(96, 72)));
        fs::create_directory(temporary);
    }

    /// A command line that runs a shell script with the paths as its arguments.
    std::string estimator(const std::string& script, const std::string& name = "estimate") const {
        writeBytes(folder / name, "#!/bin/sh\n" + script);
        fs::permissions(folder / name, fs::perms::owner_all);
        return "'" + (folder / name) + "' {in} {out}";
    }

    std::vector<std::string> render(const std::string& command) const {
        return {"render", photo, "--depth-cmd", command, "-o", folder / "a.png", "--no-doctor"};
    }

    Outcome run(const std::string& command) const {
        const Outcome outcome = quorvane(render(command), {{"TMPDIR", temporary}});
        EXPECT_EQ(outcome.out, "");
        EXPECT_THAT(TemporaryFolder::names(temporary), IsEmpty());
        return outcome;
    }

    void expectRefused(const std::string& command, const std::string& said,
                       const std::string& before = "") const {
        SCOPED_TRACE(command);
        const Outcome outcome = run(command);
        EXPECT_EQ(outcome.code, 1);
        EXPECT_THAT(outcome.err, testing::StartsWith(before + "quorvane: --depth-cmd: "));
        EXPECT_THAT(outcome.err, HasSubstr(said));
        EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), before.empty() ? 1 : 2);
        EXPECT_FALSE(fs::exists(folder / "a.png"));
    }

    std::string copy() const { return "cp '" + depth + "' \"$2\"\n"; }

    const TemporaryFolder folder;
    const std::string photo = folder / "photo.jpg";
    const std::string depth = folder / "depth.png";
    const std::string temporary = folder / "a \"place' of its own";
};

TEST_F(DepthCommand, GivesTheDepthOfThePhoto) {
    ASSERT_EQ(quorvane({"render", photo, depth, "-o", folder / "given.png", "--no-doctor"}).code, 0);
    const Outcome outcome = run(estimator("cp \"$1\" '" + (folder / "seen.png") + "'\n" + copy()));
    EXPECT_EQ(outcome.code, 0) << outcome.err;
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(bytesOf(folder / "a.png"), bytesOf(folder / "given.png"));
    EXPECT_EQ(media::readPhoto(folder / "seen.png").samples, media::readPhoto(photo).samples);
    EXPECT_THAT(bytesOf(folder / "seen.png"), testing::StartsWith("\x89PNG"));
}

TEST_F(DepthCommand, SeesThePhotoUpright) {
    writeBytes(photo, withSegments(jpegFile(somePhoto(96, 72)), {exifSegment(6)}));
    EXPECT_EQ(run(estimator("cp \"$1\" '" + (folder / "seen.png") + "'\n" + copy())).code, 0);
    EXPECT_EQ(media::readPhoto(folder / "seen.png").width, 72);
}

TEST_F(DepthCommand, WinsOverANeighbour) {
    fs::copy_file(depth, folder / "photo_depth.png");
    const Outcome outcome = run(estimator(copy()));
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.err, "");
}

TEST_F(DepthCommand, NamesWithBlanksAndQuotesAreWords) {
    const std::string name = "my \"own\" prog";
    estimator(copy(), name);
    EXPECT_EQ(run("'" + (folder / name) + "' '{in}' \"{out}\"").code, 0);
    // The same path within a longer word.
    estimator("cp '" + depth + "' \"${2#--out=}\"\n", name);
    EXPECT_EQ(run("'" + (folder / name) + "' --in={in} --out={out}").code, 0);
}

TEST_F(DepthCommand, HasNoInputAndPrintsToStandardError) {
    const Outcome outcome = run(estimator("cat\necho said\n" + copy()));
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.err, "said\n");
}

TEST_F(DepthCommand, BrokenPipesInsideItEndItsPrograms) {
    // Where the signal is ignored `yes` goes on, and complains.
    const Outcome outcome = run(estimator("yes | head -n 1 > /dev/null\n" + copy()));
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.err, "");
}

TEST_F(DepthCommand, FailuresAreOneLine) {
    expectRefused("no-such-program {in} {out}", "no-such-program does not start (No such file");
    expectRefused(estimator("exit 3\n"), "estimate failed with exit code 3");
    expectRefused(estimator("echo no model\nexit 1\n"), "exit code 1", "no model\n");
    expectRefused(estimator("kill -9 $$\n"), "estimate was ended by signal 9 (Killed)");
    expectRefused(estimator("exit 0\n"), "has written no {out}");
    expectRefused(estimator("mkdir \"$2\"\n"), "has written no {out}");
    expectRefused(estimator(": > \"$2\"\n"), "{out}: the file is empty");
    expectRefused(estimator("echo hello > \"$2\"\n"), "{out}: not a JPEG");
    expectRefused(estimator("head -c 200 '" + depth + "' > \"$2\"\n"), "{out}: cannot be read");
    // The photo is none.
    expectRefused(estimator("cp \"$1\" \"$2\"\n"), "{out}: a colour picture");
}

TEST_F(DepthCommand, WrongUsageIsExitCode2) {
    for (const char* command : {"estimate {in}", "estimate {out}", "'estimate {in} {out}"}) {
        const Outcome outcome = quorvane(render(command));
        EXPECT_EQ(outcome.code, 2);
        EXPECT_THAT(outcome.err, testing::StartsWith("quorvane: --depth-cmd: "));
    }
}

TEST_F(DepthCommand, SignalEndsItAndAllItStarted) {
    const std::string started = "touch '" + (folder / "started") + "'\n";
    for (const std::string& script : {started + "while :; do sleep 0.1; done\n",
                                      started + "trap '' INT TERM HUP\nsh -c 'while :; do sleep 0.1; done' " +
                                          (folder / "inner") + "; :\n"})
        for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
            SCOPED_TRACE(testing::Message() << "signal " << signal << ": " << script);
            Process process(render(estimator(script)), {{"TMPDIR", temporary}});
            for (int i = 0; i < 1000 && !fs::exists(folder / "started"); ++i)
                std::this_thread::sleep_for(std::chrono::milliseconds(10));
            ASSERT_TRUE(fs::exists(folder / "started"));
            process.signal(signal);
            const Outcome outcome = process.wait();
            EXPECT_EQ(outcome.code, 1);
            EXPECT_EQ(outcome.err, "quorvane: interrupted\n");
            EXPECT_THAT(TemporaryFolder::names(temporary), IsEmpty());
            EXPECT_TRUE(noProcessNames(folder.path())) << "a process still runs";
            fs::remove(folder / "started");
        }
}

TEST_F(DepthCommand, NoPlaceForItsFilesIsTold) {
    const Outcome outcome = quorvane(render(estimator(copy())), {{"TMPDIR", "/proc"}});
    EXPECT_EQ(outcome.code, 1);
    EXPECT_THAT(outcome.err, testing::StartsWith("quorvane: no temporary folder can be made"));
}

}  // namespace
}  // namespace quorvane::test
