#include "system/pending_output.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <functional>
#include <utility>

#include "support/temporary_folder.h"
#include "system/error.h"

namespace {

/// What the next fsync does instead.
std::function<int(int)> on_fsync;

}  // namespace

// In place of the C library's.
extern "C" int fsync(int file) {
    if (const auto instead = std::exchange(on_fsync, nullptr)) return instead(file);
    return static_cast<int>(syscall(SYS_fsync, file));
}

namespace quorvane {
namespace {

using test::bytesOf;
using test::TemporaryFolder;
using test::writeBytes;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(PendingOutput, StandsAtItsPlaceOnceCommitted) {
    const TemporaryFolder folder;
    {
        PendingOutput output(folder / "a.png");
        writeBytes(output.temporary(), "new");
        EXPECT_THAT(folder.names(), testing::Not(testing::Contains("a.png")));
        output.commit();
    }
    EXPECT_THAT(folder.names(), ElementsAre("a.png"));
    EXPECT_EQ(bytesOf(folder / "a.png"), "new");
}

TEST(PendingOutput, LeavesNothingWithoutACommit) {
    const TemporaryFolder folder;
    {
        const PendingOutput output(folder / "a.png");
        writeBytes(output.temporary(), "half");
    }
    EXPECT_THAT(folder.names(), IsEmpty());
}

TEST(PendingOutput, KeepsTheOldFileUntilTheNewOneIsWhole) {
    const TemporaryFolder folder;
    writeBytes(folder / "a.png", "old");
    {
        const PendingOutput output(folder / "a.png");
        writeBytes(output.temporary(), "half");
    }
    EXPECT_EQ(bytesOf(folder / "a.png"), "old");
}

TEST(PendingOutput, HasNoNameUntilItIsWhole) {
    const TemporaryFolder folder;
    if (!Descriptor(open(folder.path().c_str(), O_TMPFILE | O_WRONLY, 0600)))
        GTEST_SKIP() << "NO UNNAMED FILES ON THIS DISK, NOT TESTED: " << std::strerror(errno);
    const PendingOutput output(folder / "a.png");
    writeBytes(output.temporary(), "half");
    EXPECT_THAT(folder.names(), IsEmpty());
}

TEST(PendingOutput, IsReadAndWrittenByItsDescriptorToo) {
    const TemporaryFolder folder;
    PendingOutput output(folder / "a.png");
    EXPECT_TRUE(output.empty());
    ASSERT_EQ(write(output.descriptor(), "new", 3), 3);
    EXPECT_FALSE(output.empty());
    EXPECT_EQ(bytesOf(output.temporary()), "new");
    output.commit();
    EXPECT_EQ(bytesOf(folder / "a.png"), "new");
}

mode_t modeOf(const std::string& path) {
    struct stat about = {};
    stat(path.c_str(), &about);
    return about.st_mode & 07777;
}

TEST(PendingOutput, NewFileHasTheModeThatTheUmaskLeaves) {
    const TemporaryFolder folder;
    for (const auto& [mask, mode] : {std::pair<mode_t, mode_t>{0022, 0644}, {0027, 0640}, {0002, 0664}}) {
        const mode_t before = umask(mask);
        PendingOutput output(folder / "a.png");
        umask(before);
        output.commit();
        EXPECT_EQ(modeOf(folder / "a.png"), mode);
        std::filesystem::remove(folder / "a.png");
    }
}

TEST(PendingOutput, KeepsTheModeOfTheFileItReplaces) {
    const TemporaryFolder folder;
    for (const mode_t mode : {0600, 0640, 0666, 0755, 0444}) {
        std::filesystem::remove(folder / "a.png");
        writeBytes(folder / "a.png", "old");
        chmod((folder / "a.png").c_str(), mode);
        PendingOutput output(folder / "a.png");
        EXPECT_EQ(modeOf(output.temporary()), 0600) << "others could read it before it is whole";
        writeBytes(output.temporary(), "new");
        output.commit();
        EXPECT_EQ(modeOf(folder / "a.png"), mode);
        EXPECT_EQ(bytesOf(folder / "a.png"), "new");
    }
}

TEST(PendingOutput, IsOnTheDiskBeforeItStandsAtItsPlace) {
    const TemporaryFolder folder;
    writeBytes(folder / "a.png", "old");
    PendingOutput output(folder / "a.png");
    writeBytes(output.temporary(), "the new one");
    on_fsync = [&folder](int file) {
        struct stat about = {};
        EXPECT_EQ(fstat(file, &about), 0);
        EXPECT_EQ(about.st_size, 11);
        EXPECT_EQ(bytesOf(folder / "a.png"), "old");
        return 0;
    };
    output.commit();
    EXPECT_EQ(on_fsync, nullptr) << "not asked";
    EXPECT_EQ(bytesOf(folder / "a.png"), "the new one");
}

TEST(PendingOutput, DiskThatLosesItIsTold) {
    const TemporaryFolder folder;
    writeBytes(folder / "a.png", "old");
    {
        PendingOutput output(folder / "a.png");
        on_fsync = [](int) {
            errno = EIO;
            return -1;
        };
        try {
            output.commit();
            FAIL() << "not told";
        } catch (const Error& error) {
            EXPECT_EQ(error.what(), (folder / "a.png") + ": cannot be written (Input/output error)");
        }
    }
    EXPECT_THAT(folder.names(), ElementsAre("a.png"));
    EXPECT_EQ(bytesOf(folder / "a.png"), "old");
}

/// Runs `body` in a process that sees no /proc, where an unnamed file cannot be reached by a path. False
/// where this process may not arrange that.
bool withoutProc(const std::function<void()>& body) {
    constexpr int kNotAllowed = 77;
    const pid_t process = fork();
    if (process == 0) {
        if (unshare(CLONE_NEWNS) != 0 || mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            mount("tmpfs", "/proc", "tmpfs", 0, nullptr) != 0)
            _exit(kNotAllowed);
        body();
        std::fflush(nullptr);
        _exit(testing::Test::HasFailure() ? 1 : 0);
    }
    int status = 0;
    waitpid(process, &status, 0);
    if (WIFEXITED(status) && WEXITSTATUS(status) == kNotAllowed) return false;
    EXPECT_EQ(status, 0);
    return true;
}

TEST(PendingOutput, HasATemporaryNameWhereItNeedsOne) {
    const TemporaryFolder folder;
    const bool allowed = withoutProc([&folder] {
        {
            const PendingOutput output(folder / "clip.mp4");
            EXPECT_THAT(folder.names(), ElementsAre(testing::EndsWith(".mp4")));
            writeBytes(output.temporary(), "half");
        }
        EXPECT_THAT(folder.names(), IsEmpty());
        writeBytes(folder / "clip.mp4", "old");
        chmod((folder / "clip.mp4").c_str(), 0640);
        PendingOutput output(folder / "clip.mp4");
        EXPECT_EQ(modeOf(output.temporary()), 0600);
        writeBytes(output.temporary(), "new");
        EXPECT_EQ(bytesOf(folder / "clip.mp4"), "old");
        output.commit();
        EXPECT_THAT(folder.names(), ElementsAre("clip.mp4"));
        EXPECT_EQ(bytesOf(folder / "clip.mp4"), "new");
        EXPECT_EQ(modeOf(folder / "clip.mp4"), 0640);
    });
    if (!allowed) GTEST_SKIP() << "NO RIGHT TO MOUNT, NOT TESTED: " << std::strerror(errno);
}

TEST(PendingOutput, NamesAMissingFolder) {
    const TemporaryFolder folder;
    try {
        const PendingOutput output(folder / "none/a.png");
        FAIL() << "no error";
    } catch (const Error& error) {
        EXPECT_EQ(error.what(), (folder / "none/a.png") + ": there is no folder " + (folder / "none"));
    }
}

TEST(PendingOutput, FollowsLinksToTheirEnd) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder / "there");
    std::filesystem::create_symlink("link", folder / "first.png");
    std::filesystem::create_symlink("there/a.png", folder / "link");
    PendingOutput output(folder / "first.png");
    writeBytes(output.temporary(), "new");
    output.commit();
    EXPECT_EQ(bytesOf(folder / "there/a.png"), "new");
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "link"));
    EXPECT_THAT(folder.names(), ElementsAre("first.png", "link", "there"));
    EXPECT_THAT(TemporaryFolder::names(folder / "there"), ElementsAre("a.png"));
}

TEST(PendingOutput, RefusesLinksThatGoRound) {
    const TemporaryFolder folder;
    std::filesystem::create_symlink("b", folder / "a");
    std::filesystem::create_symlink("a", folder / "b");
    EXPECT_THROW(PendingOutput(folder / "a"), Error);
}

/// Links that lead to `mine`, under the next names that would be chosen for `path`: as somebody might arrange
/// in a folder for all.
void laySnares(const std::string& path) {
    const std::string now = temporaryBeside(path);
    const size_t number = now.rfind('-') + 1, end = now.rfind('.');
    for (int next = 1; next < 5; ++next)
        std::filesystem::create_symlink(
            "mine",
            now.substr(0, number) + std::to_string(std::stoi(now.substr(number)) + next) + now.substr(end));
}

TEST(PendingOutput, NeverWritesWhereSomethingStands) {
    const TemporaryFolder folder;
    writeBytes(folder / "mine", "mine");
    writeBytes(folder / "a.png", "old");
    laySnares(folder / "a.png");
    const std::vector<std::string> before = folder.names();
    const auto replace = [&folder] {
        PendingOutput output(folder / "a.png");
        EXPECT_EQ(write(output.descriptor(), "new", 3), 3);
        output.commit();
    };
    replace();
    EXPECT_EQ(bytesOf(folder / "a.png"), "new");
    EXPECT_FALSE(std::filesystem::is_symlink(folder / "a.png"));
    EXPECT_EQ(bytesOf(folder / "mine"), "mine");
    EXPECT_EQ(folder.names(), before);
    withoutProc([&] {
        laySnares(folder / "a.png");
        replace();
    });
    EXPECT_FALSE(std::filesystem::is_symlink(folder / "a.png"));
    EXPECT_EQ(bytesOf(folder / "mine"), "mine");
}

TEST(PendingOutput, TakesALongName) {
    const TemporaryFolder folder;
    const std::string path = folder / (std::string(251, 'n') + ".png");
    PendingOutput output(path);
    output.commit();
    EXPECT_TRUE(std::filesystem::exists(path));
}

TEST(PendingOutput, FullDiskIsATemporaryErrorAndAMissingFolderIsNot) {
    const TemporaryFolder folder;
    PendingOutput output(folder / "a.png");
    on_fsync = [](int) {
        errno = ENOSPC;
        return -1;
    };
    EXPECT_THROW(output.commit(), TemporaryError);
    try {
        PendingOutput(folder / "nowhere/a.png");
        ADD_FAILURE();
    } catch (const TemporaryError&) {
        ADD_FAILURE() << "it will not appear by itself";
    } catch (const Error&) {
    }
}

TEST(PendingOutput, NamesOfLeftoversAreKnown) {
    const TemporaryFolder folder;
    for (const std::string name : {"a.mp4", "a", "two.dots.webp", ".hidden", "1-2.png"}) {
        const std::string temporary = temporaryBeside(folder / name);
        EXPECT_EQ(nameOfLeftover(std::filesystem::path(temporary).filename().string()), name);
    }
    for (const char* other :
         {"", ".", "..", "a.mp4", ".a.mp4", "a.12-1.mp4", ".12-1.mp4", ".a.12-.mp4", ".a.1-2-3.mp4"})
        EXPECT_EQ(nameOfLeftover(other), "") << other;
}

TEST(PendingOutput, RefusesAFoldersName) {
    const TemporaryFolder folder;
    EXPECT_THROW(PendingOutput(folder.path()), Error);
}

}  // namespace
}  // namespace quorvane
