#include "system/pending_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "support/temporary_folder.h"

namespace quorvane {
namespace {

namespace fs = std::filesystem;

using test::bytesOf;
using test::TemporaryFolder;
using test::writeBytes;
using testing::ElementsAre;
using testing::IsEmpty;

void addText(PendingFolder* pending, const std::string& name, const std::string& text) {
    pending->add(name, [&text](int descriptor, const std::string& shown) {
        if (write(descriptor, text.data(), text.size()) != static_cast<ssize_t>(text.size()))
            throw Error(shown + ": cannot be written");
    });
}

bool none(const std::string&) { return false; }

TEST(PendingFolder, AppearsWhole) {
    const TemporaryFolder folder;
    PendingFolder pending(folder / "made/", false);
    addText(&pending, "a", "one");
    addText(&pending, "b", "two");
    EXPECT_FALSE(fs::exists(folder / "made"));
    pending.commit(none);
    EXPECT_THAT(TemporaryFolder::names(folder / "made"), ElementsAre("a", "b"));
    EXPECT_EQ(bytesOf(folder / "made/b"), "two");
    EXPECT_THAT(folder.names(), ElementsAre("made"));
}

TEST(PendingFolder, OrNotAtAll) {
    const TemporaryFolder folder;
    fs::create_directory(folder / "there");
    for (const char* path : {"made", "there"}) {
        PendingFolder pending(folder / path, false);
        addText(&pending, "a", "one");
        EXPECT_THROW(
            pending.add("b", [](int, const std::string& shown) { throw Error(shown + ": no room"); }), Error);
    }
    EXPECT_THAT(folder.names(), ElementsAre("there"));
    EXPECT_THAT(TemporaryFolder::names(folder / "there"), IsEmpty());
}

TEST(PendingFolder, ReplacesItsNamesAndWhatIsOldAndKeepsTheRest) {
    const TemporaryFolder folder;
    fs::create_directory(folder / "there");
    for (const char* name : {"a", "old", "other"}) writeBytes(folder / (std::string("there/") + name), "was");
    PendingFolder pending(folder / "there", true);
    addText(&pending, "a", "is");
    pending.commit([](const std::string& name) { return name == "old"; });
    EXPECT_THAT(TemporaryFolder::names(folder / "there"), ElementsAre("a", "other"));
    EXPECT_EQ(bytesOf(folder / "there/a"), "is");
    EXPECT_EQ(bytesOf(folder / "there/other"), "was");
}

TEST(PendingFolder, RefusesAFolderThatHoldsSomething) {
    const TemporaryFolder folder;
    fs::create_directory(folder / "there");
    writeBytes(folder / "there/mine", "was");
    EXPECT_THROW(PendingFolder(folder / "there", false), FolderNotEmpty);
    EXPECT_THROW(PendingFolder(folder / "there/mine", true), Error);
    EXPECT_THROW(PendingFolder(folder / "nowhere/made", true), Error);
    EXPECT_THAT(TemporaryFolder::names(folder / "there"), ElementsAre("mine"));
}

TEST(PendingFolder, FollowsALink) {
    const TemporaryFolder folder;
    fs::create_directory(folder / "there");
    fs::create_directory_symlink(folder / "there", folder / "link");
    PendingFolder pending(folder / "link", false);
    addText(&pending, "a", "one");
    pending.commit(none);
    EXPECT_EQ(bytesOf(folder / "there/a"), "one");
    EXPECT_TRUE(fs::is_symlink(folder / "link"));
}

}  // namespace
}  // namespace quorvane
