#include "media/clip/kept_clip.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdio>

#include "support/temporary_folder.h"
#include "system/error.h"

namespace quorvane::media {
namespace {

using test::TemporaryFolder;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr Size kSize = {66, 64};

/// A gradient with noise that moves, so that nothing compresses to nothing.
RgbaImage frame(int number) {
    RgbaImage image(kSize.width, kSize.height);
    unsigned state = 1 + static_cast<unsigned>(number);
    for (int y = 0; y < kSize.height; ++y)
        for (int x = 0; x < kSize.width; ++x) {
            uint8_t* pixel = image.samples.data() + 4 * (static_cast<size_t>(y) * kSize.width + x);
            state = state * 1103515245 + 12345;
            pixel[0] = static_cast<uint8_t>(3 * x + number);
            pixel[1] = static_cast<uint8_t>(3 * y);
            pixel[2] = static_cast<uint8_t>(state >> 24);
            pixel[3] = 255;
        }
    return image;
}

int framesOf(const OutputFormat& format) { return format.kind == OutputKind::kStill ? 1 : 5; }

/// The pixels of all frames as another program sees them, and their times.
std::string seenIn(const std::string& path) {
    std::string text;
    FILE* pipe = popen(("ffmpeg -v error -i " + path + " -f framemd5 - 2>&1").c_str(), "r");
    std::array<char, 256> chunk;
    while (std::fgets(chunk.data(), chunk.size(), pipe) != nullptr)
        if (chunk[0] != '#') text += chunk.data();
    pclose(pipe);
    return text;
}

TEST(KeptClip, GivesWhatAWriterOfTheSameFramesGives) {
    for (const OutputFormat& format : kOutputFormats) {
        const bool is_clip = format.kind == OutputKind::kClip && !format.words.empty();
        if (!is_clip && format.kind != OutputKind::kStill) continue;
        SCOPED_TRACE(format.word);
        const TemporaryFolder folder;
        const std::string at_once = folder / ("a" + std::string(format.extension));
        const std::string kept = folder / ("b" + std::string(format.extension));
        const ClipSettings settings = {kSize, 12};
        const auto writer = openClip(at_once, format, settings);
        const auto clip = keepClip(kept, format, settings);
        for (int i = 0; i < framesOf(format); ++i) {
            writer->add(i, frame(i));
            clip->add(i, frame(i));
        }
        writer->finish();
        clip->finish();
        PendingOutput file(kept);
        clip->encode(&file, {});
        file.commit();
        // webp is read by no ffmpeg of that age; its bytes have no time or name in them.
        if (format.word == "webp") {
            EXPECT_EQ(test::bytesOf(kept), test::bytesOf(at_once));
        } else {
            EXPECT_EQ(seenIn(kept), seenIn(at_once));
            EXPECT_THAT(seenIn(kept), testing::HasSubstr("\n"));
        }
    }
}

TEST(KeptClip, CanBeCompressedSeveralTimes) {
    const TemporaryFolder folder;
    const OutputFormat& format = outputFormat("a.mp4");
    const auto clip = keepClip(folder / "a.mp4", format, {kSize, 12});
    for (int i = 0; i < 5; ++i) clip->add(i, frame(i));
    clip->finish();
    std::vector<int64_t> sizes;
    for (const double quality : {90.0, 60.0, 30.0}) {
        PendingOutput file(folder / "a.mp4");
        clip->encode(&file, {nullptr, quality, {}});
        sizes.push_back(file.size());
    }
    EXPECT_GT(sizes[0], sizes[1]);
    EXPECT_GT(sizes[1], sizes[2]);
    EXPECT_GT(sizes[2], 0);
    // Neither what was not committed nor the frames have a name.
    EXPECT_THAT(folder.names(), IsEmpty());
}

TEST(KeptClip, TakesNoMoreRoomThanItsPixels) {
    // Of noise nothing can be left out.
    const TemporaryFolder folder;
    PendingOutput file(folder / "frames");
    const Size size = {256, 256};
    const auto writer = keepInto(&file, outputFormat("a.gif"), {size, 30});
    RgbaImage noise(size.width, size.height);
    unsigned state = 1;
    for (uint8_t& sample : noise.samples)
        sample = static_cast<uint8_t>((state = state * 1103515245 + 12345) >> 24);
    for (int i = 0; i < 4; ++i) writer->add(i, noise);
    writer->finish();
    EXPECT_LE(file.size(), 4 * 3 * 256 * 256 * 1.02);
}

TEST(KeptClip, MissingFolderIsNamed) {
    const TemporaryFolder folder;
    try {
        keepClip(folder / "none/a.mp4", outputFormat("a.mp4"), {kSize, 12});
        FAIL() << "not refused";
    } catch (const Error& error) {
        EXPECT_THAT(error.what(), testing::HasSubstr("there is no folder"));
    }
}

}  // namespace
}  // namespace quorvane::media
