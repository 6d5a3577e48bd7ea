#include "system/child_process.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <string>
#include <thread>

#include "support/processes.h"
#include "support/temporary_folder.h"

namespace quorvane {
namespace {

using test::bytesOf;
using test::TemporaryFolder;

/// What the shell prints to its standard output and standard error when it runs `script`.
std::string printed(const std::string& script) {
    const Descriptor file = memoryFile();
    ChildProcess({"sh", "-c", script}, {-1, file.number(), file.number(), {}}).wait();
    std::string text(4096, '\0');
    const ssize_t got = pread(file.number(), text.data(), text.size(), 0);
    text.resize(static_cast<size_t>(got));
    return text;
}

std::string endOf(const std::string& script) { return ChildProcess({"sh", "-c", script}, {}).wait().words(); }

TEST(ChildProcess, SaysHowItEnded) {
    EXPECT_TRUE(ChildProcess({"true"}, {}).wait().succeeded());
    EXPECT_FALSE(ChildProcess({"false"}, {}).wait().succeeded());
    EXPECT_EQ(endOf("exit 0"), "ended with exit code 0");
    EXPECT_EQ(endOf("exit 3"), "failed with exit code 3");
    EXPECT_EQ(endOf("kill -9 $$"), "was ended by signal 9 (Killed)");
}

TEST(ChildProcess, RunsUntilItEnds) {
    Connection input = connection();
    ChildProcess cat({"cat"}, {input.there.number(), -1, -1, {}});
    input.there.close();
    EXPECT_FALSE(cat.ended());
    input.here.close();
    EXPECT_TRUE(cat.wait().succeeded());
    EXPECT_TRUE(cat.ended()->succeeded());
}

std::chrono::steady_clock::time_point inSeconds(int seconds) {
    return std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
}

TEST(ChildProcess, WhatItSendsIsReceivedWhole) {
    Connection line = connection();
    ChildProcess writer({"sh", "-c", "printf ab; sleep 0.1; printf cdef"}, {-1, line.there.number(), -1, {}});
    line.there.close();
    std::string text(5, '\0');
    EXPECT_TRUE(receiveAll(line.here, text.data(), text.size(), inSeconds(60)));
    EXPECT_EQ(text, "abcde");
    // It ends with one more byte on the way.
    EXPECT_FALSE(receiveAll(line.here, text.data(), text.size(), inSeconds(60)));
}

TEST(ChildProcess, WhatDoesNotComeInTimeIsNotWaitedFor) {
    const Connection line = connection();
    std::string text(5, '\0');
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(receiveAll(line.here, text.data(), text.size(), inSeconds(0)));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

TEST(ChildProcess, GetsNoMoreMemoryThanItMay) {
    Connection input = connection();
    const Descriptor file = memoryFile();
    ChildProcess shell({"sh", "-c", "read go && ulimit -d"}, {input.there.number(), file.number(), -1, {}});
    shell.limitMemory(uint64_t{1} << 30);
    EXPECT_TRUE(sendAll(input.here, "go\n", 3));
    EXPECT_TRUE(shell.wait().succeeded());
    // In kilobytes.
    char text[32] = {};
    EXPECT_GT(pread(file.number(), text, sizeof text - 1, 0), 0);
    EXPECT_STREQ(text, "1048576\n");
}

TEST(ChildProcess, WhatDoesNotStartIsNamed) {
    const TemporaryFolder folder;
    test::writeBytes(folder / "text", "no program");
    for (const auto& [program, said] :
         {std::pair{std::string("no-such-program"), "No such file or directory"},
          std::pair{folder / "text", "Permission denied"}}) {
        try {
            ChildProcess({program, "word"}, {});
            FAIL() << "started";
        } catch (const StartError& error) {
            EXPECT_EQ(error.what(), program + " does not start (" + said + ")");
            EXPECT_EQ(error.notFound(), program == "no-such-program");
        }
    }
}

TEST(ChildProcess, WordsAreNotAShells) {
    const Descriptor file = memoryFile();
    ChildProcess({"printf", "%s|", "a b", "$HOME", "*", ""}, {-1, file.number(), -1, {}}).wait();
    char text[64] = {};
    EXPECT_GT(pread(file.number(), text, sizeof text - 1, 0), 0);
    EXPECT_STREQ(text, "a b|$HOME|*||");
}

TEST(ChildProcess, HasItsFilesAndNoOthers) {
    EXPECT_EQ(printed("cat; echo out; echo err >&2"), "out\nerr\n") << "standard input is not empty";
    const TemporaryFolder folder;
    test::writeBytes(folder / "a", "kept");
    const Descriptor kept(open((folder / "a").c_str(), O_RDONLY | O_CLOEXEC));
    const Descriptor other(open((folder / "a").c_str(), O_RDONLY | O_CLOEXEC));
    const Descriptor out = memoryFile();
    const auto opens = [&out](const Descriptor& file, const std::vector<int>& given) {
        ChildProcess cat({"cat", "/proc/self/fd/" + std::to_string(file.number())},
                         {-1, out.number(), -1, given});
        return cat.wait().succeeded();
    };
    EXPECT_TRUE(opens(kept, {kept.number()}));
    EXPECT_FALSE(opens(other, {kept.number()}));
    char text[8] = {};
    EXPECT_EQ(pread(out.number(), text, sizeof text, 0), 4);
    EXPECT_STREQ(text, "kept");
}

TEST(ChildProcess, BrokenPipesKillItThoughTheyAreIgnoredHere) {
    const auto before = std::signal(SIGPIPE, SIG_IGN);
    // With the signal ignored, `yes` would complain of a broken pipe.
    EXPECT_EQ(printed("LC_ALL=C yes | head -n 1"), "y\n");
    std::signal(SIGPIPE, before);
}

TEST(ChildProcess, IsKilledWithAllThatItHasStarted) {
    const TemporaryFolder folder;
    {
        ChildProcess shell({"sh", "-c",
                            "trap '' TERM; touch " + (folder / "started") +
                                "; sh -c 'while :; do sleep 0.05; done' " + (folder / "inner") + "; :"},
                           {});
        while (!std::filesystem::exists(folder / "started") || test::processesNaming(folder / "inner") < 2)
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    EXPECT_TRUE(test::noProcessNames(folder.path()));
}

TEST(ChildProcess, KillingWhatHasEndedChangesNothing) {
    ChildProcess program({"true"}, {});
    ASSERT_TRUE(program.wait().succeeded());
    program.kill();
    EXPECT_TRUE(program.ended()->succeeded());
}

TEST(SendAll, ArrivesWholeOrSaysThatNobodyReads) {
    const Descriptor file = memoryFile();
    Connection input = connection();
    ChildProcess count({"wc", "-c"}, {input.there.number(), file.number(), -1, {}});
    input.there.close();
    EXPECT_TRUE(sendAll(input.here, std::string(3000000, 'x').data(), 3000000));
    input.here.close();
    ASSERT_TRUE(count.wait().succeeded());
    char text[16] = {};
    EXPECT_GT(pread(file.number(), text, sizeof text - 1, 0), 0);
    EXPECT_EQ(std::stoi(text), 3000000);

    Connection unread = connection();
    unread.there.close();
    EXPECT_FALSE(sendAll(unread.here, "x", 1));
}

}  // namespace
}  // namespace quorvane
