#include "media/clip/output_format.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <set>
#include <sstream>
#include <utility>

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

std::string refusal(const std::string& path, std::string_view word = {}) {
    try {
        outputFormat(path, word);
    } catch (const Error& error) {
        return error.what();
    }
    return "not refused";
}

TEST(OutputFormat, RefusesAnotherExtensionWithWhatWouldDo) {
    const std::string said = refusal("a.avi");
    for (const OutputFormat& format : kOutputFormats)
        EXPECT_THAT(said, testing::HasSubstr(std::string(format.extension)));
    EXPECT_THAT(said, testing::StartsWith("a.avi: write .mp4, "));
    EXPECT_THAT(said,
                testing::EndsWith(" (clips), .png or .jpg (a still), .heic or .mpo (a stereo photo), .glb (a "
                                  "mesh), .html (a page to share) or a folder"));
}

TEST(OutputFormat, IsTheWordWhereTheExtensionSaysNothing) {
    EXPECT_EQ(outputFormat("a.part", "webm").word, "webm");
    EXPECT_EQ(outputFormat("clip", "mp4").word, "mp4");
    EXPECT_EQ(outputFormat("a.JPEG").word, "jpg");
    EXPECT_EQ(outputFormat("-", "gif").word, "gif");
}

TEST(OutputFormat, OfAFolderIsThePicturesInIt) {
    EXPECT_EQ(outputFormat("frames/").word, "png");
    EXPECT_EQ(outputFormat("frames/", "jpg").word, "jpg");
    EXPECT_EQ(outputFormat("frames/", "jpg").kind, OutputKind::kFolder);
    EXPECT_EQ(outputFormat("frames", "jpg").kind, OutputKind::kFolder);
    EXPECT_EQ(refusal("frames/", "mp4"), "frames/: --format of a folder is png or jpg");
}

TEST(OutputFormat, RefusesAnExtensionThatSaysSomethingElse) {
    EXPECT_EQ(refusal("a.gif", "mp4"), "a.gif: --format mp4 is written to an .mp4 file");
    EXPECT_THAT(refusal("-"),
                testing::StartsWith("-: what goes to standard output is said by --format: mp4, "));
}

TEST(OutputFormat, TableIsWhole) {
    std::set<std::pair<std::string_view, OutputKind>> words;
    for (const OutputFormat& format : kOutputFormats) {
        EXPECT_TRUE(words.insert({format.word, format.kind}).second) << format.word << " stands twice";
        EXPECT_THAT(std::string(format.name), testing::EndsWith(std::string(format.extension)));
        EXPECT_EQ(format.kind == OutputKind::kFolder, format.extension.empty());
        if (format.kind == OutputKind::kPage) continue;
        for (const std::string_view name : wordsOf(format.codecs)) {
            const auto codec = std::find_if(std::begin(kCodecs), std::end(kCodecs),
                                            [name](const Codec& known) { return known.name == name; });
            ASSERT_NE(codec, std::end(kCodecs)) << name;
            EXPECT_EQ(codec->words.empty(), format.words.empty()) << format.word;
            EXPECT_EQ(codec->halves_colours, hasEvenSides(format)) << format.word;
        }
    }
}

TEST(OutputFormat, RefusesACodecOfAnother) {
    EncoderSettings settings;
    settings.codec = &kCodecs[0];
    EXPECT_EQ(codecFor(outputFormat("a.mp4"), settings).name, "h264");
    try {
        codecFor(outputFormat("a.webm"), settings);
        FAIL() << "not refused";
    } catch (const Error& error) {
        EXPECT_STREQ(error.what(), "--codec h264: a .webm takes vp9 or av1");
    }
}

TEST(OutputFormat, ReadmeNamesEveryClip) {
    std::istringstream readme(test::bytesOf(README));
    const std::string before = "A clip is written as ";
    std::string named;
    for (std::string line; std::getline(readme, line);)
        if (line.find(before) == 0) named = line.substr(before.size());
    EXPECT_THAT(named, testing::StartsWith(extensionsOf(OutputKind::kClip, " or ")));
}

}  // namespace
}  // namespace quorvane::media
