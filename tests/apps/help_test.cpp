// What --help prints: examples that work, lines that fit the terminal, and what the tables hold.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "apps/quorvane/drawing/motion.h"
#include "process.h"
#include "quorvane/version.h"
#include "support/temporary_folder.h"

namespace quorvane::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

constexpr const char* kCommands[] = {"render", "batch", "stages",  "inspect", "extract",
                                     "embed",  "shape", "motions", "info",    "sample"};

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

/// The help of a command, or of the program where `command` is empty.
std::string help(const std::string& command, const std::map<std::string, std::string>& environment = {}) {
    std::vector<std::string> arguments = {"--help"};
    if (!command.empty()) arguments.insert(arguments.begin(), command);
    const Outcome outcome = quorvane(arguments, environment);
    EXPECT_EQ(outcome.code, 0) << outcome.err;
    EXPECT_EQ(outcome.err, "");
    return outcome.out;
}

std::vector<std::string> examplesIn(const std::string& text) {
    std::vector<std::string> examples;
    for (const std::string& line : linesOf(text))
        if (line.rfind("  quorvane ", 0) == 0) examples.push_back(line.substr(2));
    return examples;
}

size_t longestLine(const std::string& text) {
    size_t longest = 0;
    // Examples are to be copied whole.
    for (const std::string& line : linesOf(text))
        if (line.rfind("  quorvane ", 0) != 0) longest = std::max(longest, line.size());
    return longest;
}

TEST(Help, OpensWithExamples) {
    const Outcome outcome = quorvane({"--help"});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_THAT(outcome.out, HasSubstr("quorvane render photo.jpg depth.png -o sway.mp4"));
}

TEST(Help, OpensWithAnExampleForEveryTask) {
    const std::string text = help("");
    for (const char* command : kCommands)
        EXPECT_THAT(text, HasSubstr(std::string("\n  quorvane ") + command));
    EXPECT_LT(text.find("quorvane render photo.jpg depth.png -o sway.mp4"), text.find("Commands:"));
}

TEST(Help, ShowsTheCommandsBeforeATerminalsHeightIsFull) {
    const std::vector<std::string> lines = linesOf(help(""));
    EXPECT_LE(std::find(lines.begin(), lines.end(), "Commands:") - lines.begin(), 25);
}

TEST(Help, EveryCommandShowsItsOwnExamples) {
    for (const char* command : kCommands) {
        SCOPED_TRACE(command);
        const std::vector<std::string> examples = examplesIn(help(command));
        EXPECT_FALSE(examples.empty());
        for (const std::string& example : examples)
            EXPECT_THAT(example, StartsWith(std::string("quorvane ") + command));
    }
}

// In a folder without a photo, each ends for want of files, not for what it says.
TEST(Help, ExamplesAreRightUsage) {
    const TemporaryFolder folder;
    for (const char* command : kCommands)
        for (const std::string& example : examplesIn(help(command))) {
            const std::string line = "cd '" + folder.path() + "' && '" QUORVANE_PROGRAM "'" +
                                     example.substr(8) + " > /dev/null 2>&1";
            const int status = std::system(line.c_str());
            EXPECT_NE(WEXITSTATUS(status), 2) << example;
        }
}

TEST(Help, LinesFitEightyColumnsInAPipe) {
    EXPECT_LE(longestLine(help("")), 80u);
    for (const char* command : kCommands) {
        const std::string text = help(command);
        EXPECT_LE(longestLine(text), 80u) << text;
        for (const std::string& example : examplesIn(text)) EXPECT_LE(example.size() + 2, 80u) << example;
    }
}

TEST(Help, LinesFitTheColumnsThatTheEnvironmentTells) {
    for (const char* command : {"", "render", "extract"}) {
        EXPECT_LE(longestLine(help(command, {{"COLUMNS", "50"}})), 50u);
        EXPECT_GT(longestLine(help(command, {{"COLUMNS", "120"}})), 100u);
        for (const char* nonsense : {"0", "-3", "wide", "1e99", ""})
            EXPECT_LE(longestLine(help(command, {{"COLUMNS", nonsense}})), 80u) << nonsense;
    }
}

TEST(Help, LinesFitTheTerminal) {
    int terminal[2];
    winsize size = {};
    size.ws_row = 25;
    size.ws_col = 54;
    if (openpty(&terminal[0], &terminal[1], nullptr, nullptr, &size) != 0)
        GTEST_SKIP() << "NO PSEUDO-TERMINALS HERE, THE TERMINAL'S WIDTH WAS NOT TESTED";
    Process process({"render", "--help"}, {}, false, [&terminal] {
        unsetenv("COLUMNS");
        dup2(terminal[1], STDOUT_FILENO);
    });
    close(terminal[1]);
    std::string text;
    char chunk[4096];
    // The last close of the other end reads as a failure.
    for (ssize_t got = 0; (got = read(terminal[0], chunk, sizeof chunk)) > 0;)
        text.append(chunk, static_cast<size_t>(got));
    close(terminal[0]);
    EXPECT_EQ(process.wait().code, 0);
    text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
    EXPECT_THAT(text, HasSubstr("--supersample"));
    EXPECT_LE(longestLine(text), 54u);
    EXPECT_GT(longestLine(text), 45u);
}

TEST(Help, IsACommandToo) {
    EXPECT_EQ(quorvane({"help"}).out, help(""));
    EXPECT_EQ(quorvane({"help"}).code, 0);
    for (const char* command : kCommands)
        EXPECT_EQ(quorvane({"help", command}).out, help(command)) << command;
    const Outcome mistyped = quorvane({"help", "rendr"});
    EXPECT_EQ(mistyped.code, 2);
    EXPECT_THAT(mistyped.err, HasSubstr("rendr: no such command; did you mean render?"));
    EXPECT_EQ(quorvane({"help", "render", "stages"}).code, 2);
}

TEST(Help, TheVersionHasTwoSpellings) {
    const Outcome outcome = quorvane({"--version"});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.out, "quorvane " QUORVANE_VERSION "\n");
    EXPECT_EQ(quorvane({"-V"}).out, outcome.out);
}

TEST(Help, NamesEveryMotion) {
    const std::string text = help("render");
    for (const app::NamedMotion& motion : app::motions()) {
        EXPECT_THAT(text, HasSubstr(std::string("\n  ") + motion.name + " "));
    }
    const Outcome outcome = quorvane({"render", "p.png", "d.png", "-o", "a.mp4", "--motion", "shake"});
    for (const app::NamedMotion& motion : app::motions()) EXPECT_THAT(outcome.err, HasSubstr(motion.name));
}

/// The rows of README.md's table that has the given head.
std::vector<std::string> readmeTable(const std::string& head) {
    std::ifstream file(QUORVANE_README);
    std::vector<std::string> rows;
    bool inside = false;
    for (std::string line; std::getline(file, line);) {
        inside = inside ? !line.empty() : line == head;
        if (inside) rows.push_back(line);
    }
    // The head and the line below it.
    rows.erase(rows.begin(), rows.begin() + static_cast<std::ptrdiff_t>(std::min<size_t>(2, rows.size())));
    return rows;
}

TEST(Readme, ListsTheMotions) {
    std::vector<std::string> rows;
    for (const app::NamedMotion& motion : app::motions())
        rows.push_back(std::string("| `") + motion.name + "` | " + motion.meaning + " |");
    EXPECT_EQ(readmeTable("| `--motion` | the view goes |"), rows);
}

TEST(Help, ExplainsEveryCommandInOneLine) {
    const std::string text = help("", {{"COLUMNS", "100"}});
    for (const char* command : kCommands) EXPECT_THAT(text, HasSubstr(std::string("\n  ") + command + "  "));
}

}  // namespace
}  // namespace quorvane::test
