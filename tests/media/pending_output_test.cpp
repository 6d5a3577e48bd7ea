#include "media/pending_output.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "media/error.h"
#include "support/temporary_folder.h"

namespace quorvane::media {
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

TEST(PendingOutput, RefusesAFoldersName) {
    const TemporaryFolder folder;
    EXPECT_THROW(PendingOutput(folder.path()), Error);
}

}  // namespace
}  // namespace quorvane::media
