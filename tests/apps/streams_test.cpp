#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <unistd.h>

#include <string>

#include "apps/process.h"
#include "media/picture/picture_file.h"
#include "media/scene/sample_scene.h"
#include "support/temporary_folder.h"

namespace quorvane::test {
namespace {

using testing::HasSubstr;

/// A photo and its depth map in a folder, drawn through standard input and output.
class Streams : public testing::Test {
  protected:
    Streams() {
        const media::SampleScene scene = media::makeSampleScene(160, 120);
        media::writePng(scene.photo, folder / "photo.png");
        media::writePng(scene.depth, folder / "depth.png");
    }

    /// `render - DEPTH -o -`, with the file `input` on standard input.
    Outcome run(const std::string& format, const std::string& input,
                std::vector<std::string> more = {}) const {
        std::vector<std::string> arguments = {
            "render",   "-", folder / "depth.png", "-o",   "-",          "--size",  "96x72",
            "--frames", "3", "--format",           format, "--renderer", "software"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return quorvane(arguments, {}, [input] {
            const int file = open(input.c_str(), O_RDONLY | O_CLOEXEC);
            dup2(file, STDIN_FILENO);
        });
    }

    const TemporaryFolder folder;
};

TEST_F(Streams, CarryThePhotoInAndTheClipOut) {
    const Outcome raw = run("rgba", folder / "photo.png");
    EXPECT_EQ(raw.code, 0) << raw.err;
    EXPECT_EQ(raw.out.size(), size_t{3} * 96 * 72 * 4);
    const Outcome y4m = run("y4m", folder / "photo.png");
    EXPECT_EQ(y4m.code, 0) << y4m.err;
    EXPECT_THAT(y4m.out, testing::StartsWith("YUV4MPEG2 W96 H72 F30:1 "));
    EXPECT_THAT(folder.names(), testing::ElementsAre("depth.png", "photo.png"));
}

// What the program says, however much, goes elsewhere.
TEST_F(Streams, CarryNothingElseOut) {
    const Outcome quiet = run("png", folder / "photo.png", {"-q"});
    const Outcome loud = run("png", folder / "photo.png", {"-v", "-v", "--stats"});
    EXPECT_EQ(loud.code, 0);
    EXPECT_THAT(loud.err, HasSubstr("stage"));
    EXPECT_EQ(loud.out, quiet.out);
    EXPECT_EQ(loud.out.substr(1, 3), "PNG");
}

TEST_F(Streams, CarryAWholeFileAndAPage) {
    EXPECT_EQ(run("mp4", folder / "photo.png").out.substr(4, 4), "ftyp");
    EXPECT_THAT(run("html", folder / "photo.png").out, testing::StartsWith("<!"));
}

TEST_F(Streams, ThatHoldNoPhotoAreRefused) {
    for (const auto& [input, said] : {std::pair("/dev/null", "/dev/stdin: the file is empty"),
                                      std::pair("/dev/zero", "/dev/stdin: not a JPEG")}) {
        const Outcome outcome = run("rgba", input);
        EXPECT_EQ(outcome.code, 1);
        EXPECT_THAT(outcome.err, HasSubstr(said));
        EXPECT_EQ(outcome.out, "");
    }
}

TEST_F(Streams, AreSaidByFormatAndNeverATerminal) {
    const std::vector<std::string> line = {"render", folder / "photo.png", folder / "depth.png", "-o", "-"};
    const Outcome unsaid = quorvane(line);
    EXPECT_EQ(unsaid.code, 2);
    EXPECT_THAT(unsaid.err, HasSubstr("-: what goes to standard output is said by --format: mp4, "));
    int terminal[2];
    if (openpty(&terminal[0], &terminal[1], nullptr, nullptr, nullptr) != 0)
        GTEST_SKIP() << "NO PSEUDO-TERMINALS HERE";
    std::vector<std::string> said = line;
    said.insert(said.end(), {"--format", "y4m"});
    const Outcome outcome = quorvane(said, {}, [&terminal] { dup2(terminal[1], STDOUT_FILENO); });
    EXPECT_EQ(outcome.code, 2);
    EXPECT_THAT(outcome.err, HasSubstr("-o -: standard output is a terminal"));
    for (const int end : terminal) close(end);
}

}  // namespace
}  // namespace quorvane::test
