#include "system/pending_output.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/temporary_folder.h"
#include "system/error.h"

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

TEST(PendingOutput, KeepsTheExtension) {
    const TemporaryFolder folder;
    const std::string temporary = PendingOutput(folder / "clip.mp4").temporary();
    EXPECT_EQ(temporary.substr(temporary.size() - 4), ".mp4");
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
    EXPECT_EQ(TemporaryFolder::names(folder / "there").size(), 1u) << "made elsewhere than in its place";
    writeBytes(output.temporary(), "new");
    output.commit();
    EXPECT_EQ(bytesOf(folder / "there/a.png"), "new");
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "link"));
}

TEST(PendingOutput, RefusesLinksThatGoRound) {
    const TemporaryFolder folder;
    std::filesystem::create_symlink("b", folder / "a");
    std::filesystem::create_symlink("a", folder / "b");
    EXPECT_THROW(PendingOutput(folder / "a"), Error);
}

TEST(PendingOutput, NeverWritesWhereSomethingStands) {
    const TemporaryFolder folder;
    writeBytes(folder / "mine", "mine");
    // The next names that it would choose lead elsewhere, as somebody might arrange in a folder for all.
    const std::string now =
        std::filesystem::path(PendingOutput(folder / "a.png").temporary()).stem().string();
    const size_t number = now.rfind('-') + 1;
    for (int next = 1; next < 4; ++next)
        std::filesystem::create_symlink(
            "mine",
            folder / (now.substr(0, number) + std::to_string(std::stoi(now.substr(number)) + next) + ".png"));
    const PendingOutput output(folder / "a.png");
    EXPECT_FALSE(std::filesystem::is_symlink(output.temporary()));
    EXPECT_EQ(bytesOf(folder / "mine"), "mine");
}

TEST(PendingOutput, TakesALongName) {
    const TemporaryFolder folder;
    const std::string path = folder / (std::string(251, 'n') + ".png");
    PendingOutput output(path);
    output.commit();
    EXPECT_TRUE(std::filesystem::exists(path));
}

TEST(PendingOutput, RefusesAFoldersName) {
    const TemporaryFolder folder;
    EXPECT_THROW(PendingOutput(folder.path()), Error);
}

}  // namespace
}  // namespace quorvane
