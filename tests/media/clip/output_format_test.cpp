#include "media/clip/output_format.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <sstream>

#include "support/temporary_folder.h"
#include "system/error.h"

namespace quorvane::media {
namespace {

TEST(OutputFormat, FollowsTheExtension) {
    EXPECT_EQ(outputFormat("a.mp4").extension, ".mp4");
    EXPECT_EQ(outputFormat("a.WEBP").extension, ".webp");
    EXPECT_EQ(outputFormat("b/a.gif").extension, ".gif");
    EXPECT_EQ(outputFormat("a.png").kind, OutputKind::kStill);
    EXPECT_EQ(outputFormat("a.html").kind, OutputKind::kPage);
}

TEST(OutputFormat, IsAFolderForASlashNoExtensionOrAFolderThatIsThere) {
    const test::TemporaryFolder folder;
    std::filesystem::create_directory(folder / "frames.png");
    EXPECT_EQ(outputFormat("frames.mp4/").kind, OutputKind::kFolder);
    EXPECT_EQ(outputFormat("frames").kind, OutputKind::kFolder);
    EXPECT_EQ(outputFormat(folder / "frames.png").kind, OutputKind::kFolder);
}

TEST(OutputFormat, RefusesAnotherExtensionWithWhatWouldDo) {
    try {
        outputFormat("a.avi");
        FAIL() << "not refused";
    } catch (const Error& error) {
        EXPECT_STREQ(
            error.what(),
            "a.avi: write .mp4, .webp or .gif (clips), .png (a still), .html (a page to share) or a folder");
    }
}

TEST(OutputFormat, TableIsWhole) {
    std::set<std::string_view> extensions;
    for (const OutputFormat& format : kOutputFormats) {
        EXPECT_TRUE(extensions.insert(format.extension).second) << format.extension << " stands twice";
        EXPECT_THAT(std::string(format.name), testing::EndsWith(std::string(format.extension)));
        EXPECT_EQ(format.kind == OutputKind::kClip, !format.words.empty()) << format.extension;
        EXPECT_EQ(format.kind == OutputKind::kFolder, format.extension.empty());
    }
}

TEST(OutputFormat, ReadmeNamesEveryClip) {
    std::istringstream readme(test::bytesOf(README));
    std::string named;
    for (std::string line; std::getline(readme, line);)
        if (const size_t at = line.find("from a depth map: "); at != std::string::npos)
            named = line.substr(at + std::string("from a depth map: ").size());
    EXPECT_EQ(named, extensionsOf(OutputKind::kClip, " or "));
}

}  // namespace
}  // namespace quorvane::media
