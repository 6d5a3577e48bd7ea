#include "media/clip/clip_writer.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <thread>
#include <vector>

#include "media/picture/picture_file.h"
#include "support/processes.h"
#include "support/temporary_folder.h"
#include "system/error.h"

namespace quorvane::media {
namespace {

using test::bytesOf;
using test::TemporaryFolder;
using test::writeBytes;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

RgbaImage frame(int width, int height, uint8_t level) {
    RgbaImage image(width, height);
    for (size_t i = 0; i < image.samples.size(); ++i) image.samples[i] = i % 4 == 3 ? 255 : level;
    return image;
}

std::unique_ptr<ClipWriter> openWriter(const std::string& path, Size size = {32, 24}, bool force = false) {
    return openClip(path, outputFormat(path), {size, 10, force});
}

void writeClip(const std::string& path, int frames) {
    const auto writer = openWriter(path);
    for (int i = 0; i < frames; ++i) writer->add(i, frame(32, 24, static_cast<uint8_t>(40 * i)));
    writer->finish();
}

std::string refusal(const std::string& path) {
    try {
        openWriter(path);
    } catch (const Error& error) {
        return error.what();
    }
    return "not refused";
}

TEST(ClipWriter, Mp4HoldsEveryFrameForEveryPlayer) {
    const TemporaryFolder folder;
    writeClip(folder / "a.mp4", 7);
    EXPECT_EQ(test::answerOf("ffprobe -v error -count_frames -show_entries "
                             "stream=codec_name,width,height,pix_fmt,nb_read_frames -of csv=p=0 " +
                             (folder / "a.mp4")),
              "h264,32,24,yuv420p,7");
    EXPECT_THAT(folder.names(), ElementsAre("a.mp4"));
}

/// A clip that is written by a codec that its format does not take by itself.
void writeClip(const std::string& path, int frames, std::string_view codec) {
    ClipSettings settings = {{96, 64}, 10};
    for (const Codec& known : kCodecs)
        if (known.name == codec) settings.encoder.codec = &known;
    const auto writer = openClip(path, outputFormat(path), settings);
    for (int i = 0; i < frames; ++i) writer->add(i, frame(96, 64, static_cast<uint8_t>(40 * i)));
    writer->finish();
}

TEST(ClipWriter, EveryFormatThatFfprobeReadsHoldsEveryFrame) {
    const TemporaryFolder folder;
    const auto seen = [&folder](const std::string& name) {
        return test::answerOf(
            "ffprobe -v error -count_frames -show_entries "
            "stream=codec_name,width,height,r_frame_rate,nb_read_frames -of csv=p=0 " +
            (folder / name));
    };
    const auto expect = [&](const std::string& name, const char* codec) {
        writeClip(folder / name, 7, codec);
        EXPECT_EQ(seen(name), std::string(codec) + ",96,64,10/1,7") << name;
    };
    expect("a.mp4", "h264");
    expect("hevc.mp4", "hevc");
    expect("av1.mp4", "av1");
    expect("a.webm", "vp9");
    expect("av1.webm", "av1");
    expect("a.avif", "av1");
    expect("a.gif", "gif");
    expect("a.apng", "apng");
}

TEST(ClipWriter, EveryVideoSaysItsColours) {
    const TemporaryFolder folder;
    const auto expect = [&](const std::string& name, const char* codec) {
        writeClip(folder / name, 2, codec);
        EXPECT_EQ(
            test::answerOf("ffprobe -v error -show_entries "
                           "stream=color_range,color_space,color_transfer,color_primaries -of csv=p=0 " +
                           (folder / name)),
            "tv,bt709,iec61966-2-1,bt709")
            << name;
    };
    expect("hevc.mp4", "hevc");
    expect("av1.mp4", "av1");
    expect("a.webm", "vp9");
    expect("a.avif", "av1");
}

TEST(ClipWriter, PicturesTooSmallForTheCodecAreRefused) {
    const TemporaryFolder folder;
    EXPECT_THAT(refusal(folder / "a.avif"), testing::EndsWith("a.avif: av1 has sides of 64 pixels or more"));
    EXPECT_THAT(folder.names(), IsEmpty());
}

// Without this tag Apple's players refuse the file.
TEST(ClipWriter, HevcIsTaggedForApplesPlayers) {
    const TemporaryFolder folder;
    writeClip(folder / "a.mp4", 2, "hevc");
    EXPECT_EQ(test::answerOf("ffprobe -v error -show_entries stream=codec_tag_string -of csv=p=0 " +
                             (folder / "a.mp4")),
              "hvc1");
}

TEST(ClipWriter, AvifIsASequence) {
    const TemporaryFolder folder;
    writeClip(folder / "a.avif", 3, "av1");
    EXPECT_EQ(bytesOf(folder / "a.avif").substr(4, 8), "ftypavis");
}

TEST(ClipWriter, ApngLoopsForeverAndKeepsEveryPixel) {
    const TemporaryFolder folder;
    writeClip(folder / "a.apng", 4);
    // The animation's head: 4 frames, 0 plays, which means forever.
    EXPECT_THAT(bytesOf(folder / "a.apng"), HasSubstr(std::string("acTL\0\0\0\x04\0\0\0\0", 12)));
    ASSERT_EQ(test::answerOf("ffmpeg -v error -i " + (folder / "a.apng") + " " + (folder / "%d.png") +
                             " && echo ok"),
              "ok");
    EXPECT_EQ(readPhoto(folder / "4.png").samples, std::vector<uint8_t>(32 * 24 * 3, 120));
}

TEST(ClipWriter, LowerQualityIsSmaller) {
    const TemporaryFolder folder;
    RgbaImage noise(64, 64);
    unsigned state = 1;
    for (uint8_t& sample : noise.samples)
        sample = static_cast<uint8_t>((state = state * 1103515245 + 12345) >> 16);
    for (const char* name : {"a.mp4", "a.webm", "a.avif", "a.webp", "a.gif", "a.jpg"}) {
        SCOPED_TRACE(name);
        const auto bytesAt = [&](int quality) {
            const auto writer =
                openClip(folder / name, outputFormat(name), {{64, 64}, 10, false, {nullptr, quality, {}}});
            writer->add(0, noise);
            writer->finish();
            return bytesOf(folder / name).size();
        };
        EXPECT_LT(bytesAt(20), bytesAt(90));
    }
}

TEST(ClipWriter, Y4mIsWhatOtherProgramsRead) {
    const TemporaryFolder folder;
    writeClip(folder / "a.y4m", 3);
    EXPECT_EQ(bytesOf(folder / "a.y4m").size(), 61 + 3 * (6 + 32 * 24 * 3 / 2));
    EXPECT_THAT(bytesOf(folder / "a.y4m"),
                testing::StartsWith("YUV4MPEG2 W32 H24 F10:1 Ip A1:1 C420jpeg XCOLORRANGE=LIMITED\nFRAME\n"));
    EXPECT_EQ(
        test::answerOf("ffprobe -v error -count_frames -show_entries "
                       "stream=width,height,pix_fmt,color_range,r_frame_rate,nb_read_frames -of csv=p=0 " +
                       (folder / "a.y4m")),
        "32,24,yuv420p,tv,10/1,3");
}

TEST(ClipWriter, RgbaIsTheFrames) {
    const TemporaryFolder folder;
    writeClip(folder / "a.rgba", 2);
    std::string expected;
    for (const uint8_t level : {uint8_t{0}, uint8_t{40}}) {
        const RgbaImage image = frame(32, 24, level);
        expected.append(image.samples.begin(), image.samples.end());
    }
    EXPECT_EQ(bytesOf(folder / "a.rgba"), expected);
}

/// What a writer leads to standard output.
std::string streamed(const char* word, int frames) {
    const TemporaryFolder folder;
    const int file = open((folder / "stream").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    ClipSettings settings = {{32, 24}, 10};
    settings.standard_output = file;
    const auto writer = openClip("-", outputFormat("-", word), settings);
    for (int i = 0; i < frames; ++i) writer->add(i, frame(32, 24, static_cast<uint8_t>(40 * i)));
    writer->finish();
    close(file);
    EXPECT_THAT(folder.names(), ElementsAre("stream"));
    return bytesOf(folder / "stream");
}

TEST(ClipWriter, StandardOutputGetsTheBytesThatAFileGets) {
    const TemporaryFolder folder;
    for (const char* word : {"mp4", "gif", "y4m", "rgba"}) {
        writeClip(folder / (std::string("a.") + word), 3);
        EXPECT_EQ(streamed(word, 3), bytesOf(folder / (std::string("a.") + word))) << word;
    }
    writeClip(folder / "a.png", 1);
    EXPECT_EQ(streamed("png", 1), bytesOf(folder / "a.png"));
}

TEST(ClipWriter, StreamThatNobodyReadsIsAnError) {
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    close(ends[0]);
    const auto before = std::signal(SIGPIPE, SIG_IGN);
    ClipSettings settings = {{32, 24}, 10};
    settings.standard_output = ends[1];
    try {
        const auto writer = openClip("-", outputFormat("-", "y4m"), settings);
        FAIL() << "not refused";
    } catch (const Error& error) {
        EXPECT_STREQ(error.what(), "standard output: cannot be written (Broken pipe)");
    }
    std::signal(SIGPIPE, before);
    close(ends[1]);
}

// As a search for a size does it.
TEST(ClipWriter, SameFramesAreCompressedBySeveralSettingsAndOneIsKept) {
    const TemporaryFolder folder;
    const OutputFormat& format = outputFormat(folder / "a.mp4");
    std::vector<std::unique_ptr<PendingOutput>> files;
    for (const int quality : {20, 90}) {
        files.push_back(std::make_unique<PendingOutput>(folder / "a.mp4"));
        const auto writer =
            encodeInto(files.back().get(), format, {{32, 24}, 10, false, {nullptr, quality, {}}});
        for (int i = 0; i < 3; ++i) writer->add(i, frame(32, 24, static_cast<uint8_t>(40 * i)));
        writer->finish();
        EXPECT_FALSE(files.back()->empty());
        EXPECT_THAT(folder.names(), IsEmpty());
    }
    files.front()->commit();
    files.clear();
    EXPECT_THAT(folder.names(), ElementsAre("a.mp4"));
    EXPECT_THAT(bytesOf(folder / "a.mp4"), HasSubstr(" crf=33.0 "));
}

TEST(ClipWriter, FolderTakesJpegs) {
    const TemporaryFolder folder;
    const std::string path = folder / "frames";
    const auto writer = openClip(path, outputFormat(path, "jpg"), {{32, 24}, 10});
    for (int i = 0; i < 2; ++i) writer->add(i, frame(32, 24, 80));
    writer->finish();
    EXPECT_THAT(TemporaryFolder::names(path), ElementsAre("00001.jpg", "00002.jpg"));
    EXPECT_NEAR(readPhoto(path + "/00002.jpg").samples[0], 80, 2);
    EXPECT_EQ(bytesOf(path + "/00001.jpg").substr(0, 3), "\xFF\xD8\xFF");
}

TEST(ClipWriter, Mp4KeepsTheColours) {
    const TemporaryFolder folder;
    {
        const auto writer = openWriter(folder / "a.mp4", {32, 32});
        RgbaImage orange(32, 32);
        for (size_t i = 0; i < orange.samples.size(); i += 4) {
            orange.samples[i] = 230;
            orange.samples[i + 1] = 120;
            orange.samples[i + 2] = 30;
            orange.samples[i + 3] = 255;
        }
        for (int i = 0; i < 3; ++i) writer->add(i, orange);
        writer->finish();
    }
    ASSERT_EQ(test::answerOf("ffmpeg -v error -i " + (folder / "a.mp4") + " -frames:v 1 " +
                             (folder / "f.png") + " && echo ok"),
              "ok");
    const RgbImage seen = readPhoto(folder / "f.png");
    EXPECT_NEAR(seen.samples[0], 230, 4);
    EXPECT_NEAR(seen.samples[1], 120, 4);
    EXPECT_NEAR(seen.samples[2], 30, 4);
}

/// The names of an .mp4's outermost boxes, in their order.
std::vector<std::string> boxesOf(const std::string& bytes) {
    std::vector<std::string> names;
    size_t at = 0;
    while (at + 8 <= bytes.size()) {
        size_t size = 0;
        for (size_t i = 0; i < 4; ++i) size = size * 256 + static_cast<unsigned char>(bytes[at + i]);
        names.push_back(bytes.substr(at + 4, 4));
        if (size < 8) break;
        at += size;
    }
    return names;
}

TEST(ClipWriter, Mp4SaysItsColoursAndStartsWhileItLoads) {
    const TemporaryFolder folder;
    writeClip(folder / "a.mp4", 7);
    EXPECT_EQ(
        test::answerOf("ffprobe -v error -show_entries "
                       "stream=color_range,color_space,color_transfer,color_primaries -of default=nw=1 " +
                       (folder / "a.mp4")),
        "color_range=tv\ncolor_space=bt709\ncolor_transfer=iec61966-2-1\ncolor_primaries=bt709");
    EXPECT_THAT(boxesOf(bytesOf(folder / "a.mp4")), ElementsAre("ftyp", "moov", "free", "mdat"));
}

TEST(ClipWriter, Mp4HasTheQualityThatIsMeant) {
    const TemporaryFolder folder;
    writeClip(folder / "a.mp4", 3);
    // The encoder writes its settings into the stream.
    EXPECT_THAT(bytesOf(folder / "a.mp4"), HasSubstr(" crf=18.0 "));
}

TEST(ClipWriter, WebpHasTheQualityThatIsMeant) {
    const TemporaryFolder folder;
    RgbaImage noise(64, 64);
    unsigned state = 1;
    for (uint8_t& sample : noise.samples)
        sample = static_cast<uint8_t>((state = state * 1103515245 + 12345) >> 16);
    for (size_t i = 3; i < noise.samples.size(); i += 4) noise.samples[i] = 255;
    const auto writer = openWriter(folder / "a.webp", {64, 64});
    writer->add(0, noise);
    writer->finish();
    writePng(noise, folder / "a.png");
    ASSERT_EQ(test::answerOf("cwebp -quiet -q 85 " + (folder / "a.png") + " -o " + (folder / "b.webp") +
                             " && echo ok"),
              "ok");
    const auto quantizer = [&folder](const char* name) {
        return test::answerOf("webpinfo -bitstream_info " + (folder / name) + " | grep 'Base Q'");
    };
    EXPECT_THAT(quantizer("a.webp"), HasSubstr("Base Q"));
    EXPECT_EQ(quantizer("a.webp"), quantizer("b.webp"));
}

TEST(ClipWriter, GifLoopsForever) {
    const TemporaryFolder folder;
    writeClip(folder / "a.gif", 4);
    EXPECT_EQ(
        test::answerOf("ffprobe -v error -count_frames -show_entries stream=nb_read_frames -of csv=p=0 " +
                       (folder / "a.gif")),
        "4");
    // The looping extension with the count 0, which means forever.
    EXPECT_THAT(bytesOf(folder / "a.gif"), HasSubstr(std::string("NETSCAPE2.0\x03\x01\0\0\0", 16)));
}

TEST(ClipWriter, GifHasColoursForWhatStandsStillToo) {
    // 64 colours above, which stay, and noise of all colours below.
    constexpr int kSide = 64, kStill = 48, kFrames = 20;
    const auto still = [](int x) -> std::array<uint8_t, 3> {
        return {static_cast<uint8_t>(4 * x), static_cast<uint8_t>(252 - 4 * x), 128};
    };
    const TemporaryFolder folder;
    const auto writer = openWriter(folder / "a.gif", {kSide, kSide});
    std::minstd_rand random;
    for (int i = 0; i < kFrames; ++i) {
        RgbaImage image(kSide, kSide);
        for (int y = 0; y < kSide; ++y)
            for (int x = 0; x < kSide; ++x) {
                uint8_t* const pixel = &image.at(x, y);
                if (y < kStill)
                    std::copy_n(still(x).begin(), 3, pixel);
                else
                    std::generate_n(pixel, 3, [&random] { return static_cast<uint8_t>(random() >> 8); });
                pixel[3] = 255;
            }
        writer->add(i, image);
    }
    writer->finish();

    test::answerOf("ffmpeg -i " + (folder / "a.gif") + " -frames:v 1 -pix_fmt rgb24 -f rawvideo " +
                   (folder / "a.rgb"));
    const std::string samples = bytesOf(folder / "a.rgb");
    ASSERT_EQ(samples.size(), 3u * kSide * kSide);
    double off = 0.0;
    for (size_t i = 0; i < 3u * kSide * kStill; ++i)
        off += std::abs(static_cast<uint8_t>(samples[i]) - still(static_cast<int>(i / 3 % kSide))[i % 3]);
    // Where two neighbours share a place of the palette, each is 2 off in red and green.
    EXPECT_LT(off / (2.0 * kSide * kStill), 2.0);
}

TEST(ClipWriter, WebpIsAnimatedAndLoopsForever) {
    const TemporaryFolder folder;
    writeClip(folder / "a.webp", 4);
    const std::string info = test::answerOf("webpinfo " + (folder / "a.webp"));
    EXPECT_THAT(info, HasSubstr("Loop count      : 0"));
    EXPECT_THAT(test::answerOf("webpinfo " + (folder / "a.webp") + " | grep -c 'Chunk ANMF'"), "4");
}

TEST(ClipWriter, WhatIsShownOnceSaysSo) {
    const TemporaryFolder folder;
    for (const char* name : {"a.gif", "a.webp", "a.apng"}) {
        ClipSettings settings = {{32, 24}, 10};
        settings.once = true;
        const auto writer = openClip(folder / name, outputFormat(name), settings);
        for (int i = 0; i < 3; ++i) writer->add(i, frame(32, 24, static_cast<uint8_t>(40 * i)));
        writer->finish();
    }
    EXPECT_THAT(bytesOf(folder / "a.gif"), testing::Not(HasSubstr("NETSCAPE2.0")));
    EXPECT_THAT(test::answerOf("webpinfo " + (folder / "a.webp")), HasSubstr("Loop count      : 1"));
    EXPECT_THAT(bytesOf(folder / "a.apng"), HasSubstr(std::string("acTL\0\0\0\x03\0\0\0\1", 12)));
}

TEST(ClipWriter, StillIsTheFrame) {
    const TemporaryFolder folder;
    writeClip(folder / "a.png", 1);
    EXPECT_EQ(readPhoto(folder / "a.png").samples, std::vector<uint8_t>(32 * 24 * 3, 0));
}

TEST(ClipWriter, FolderHoldsNumberedFrames) {
    const TemporaryFolder folder;
    writeClip(folder / "frames", 3);
    EXPECT_THAT(folder.names(), ElementsAre("frames"));
    EXPECT_THAT(TemporaryFolder::names(folder / "frames"),
                ElementsAre("00001.png", "00002.png", "00003.png"));
    EXPECT_EQ(readPhoto(folder / "frames/00002.png").samples[0], 40);
}

TEST(ClipWriter, FolderTakesFramesInAnyOrderFromSeveralThreads) {
    const TemporaryFolder folder;
    const auto writer = openWriter(folder / "frames");
    ASSERT_EQ(outputFormat(folder / "frames").kind, OutputKind::kFolder);
    std::vector<std::thread> threads;
    for (int first = 3; first >= 0; --first)
        threads.emplace_back([&writer, first] {
            for (int number = first + 20; number >= 0; number -= 4)
                writer->add(number, frame(32, 24, static_cast<uint8_t>(10 * number)));
        });
    for (std::thread& thread : threads) thread.join();
    writer->finish();
    ASSERT_EQ(TemporaryFolder::names(folder / "frames").size(), 24u);
    for (int number = 0; number < 24; ++number) {
        std::array<char, 24> name;
        std::snprintf(name.data(), name.size(), "frames/%05d.png", number + 1);
        EXPECT_EQ(readPhoto(folder / name.data()).samples[0], 10 * number) << name.data();
    }
}

TEST(ClipWriter, EmptyFolderIsFilled) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder / "frames");
    writeClip(folder / "frames/", 1);
    EXPECT_THAT(TemporaryFolder::names(folder / "frames"), ElementsAre("00001.png"));
}

TEST(ClipWriter, FolderWithFilesIsRefusedWithoutForce) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder / "frames");
    writeBytes(folder / "frames/mine.txt", "mine");
    EXPECT_THAT(refusal(folder / "frames"), testing::EndsWith("frames: the folder is not empty"));
    EXPECT_THAT(folder.names(), ElementsAre("frames"));
}

TEST(ClipWriter, ForceReplacesTheFramesAndNothingElse) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder / "frames");
    for (const char* name : {"00001.png", "00009.png", "00004.jpg", "mine.txt", "cover.png"})
        writeBytes(folder / "frames/" + std::string(name), "old");
    const auto writer = openWriter(folder / "frames", {32, 24}, true);
    writer->add(0, frame(32, 24, 9));
    writer->finish();
    EXPECT_THAT(TemporaryFolder::names(folder / "frames"), ElementsAre("00001.png", "cover.png", "mine.txt"));
    EXPECT_EQ(readPhoto(folder / "frames/00001.png").samples[0], 9);
    EXPECT_EQ(bytesOf(folder / "frames/cover.png"), "old");
}

TEST(ClipWriter, AbandonedWriterLeavesNothing) {
    const TemporaryFolder folder;
    test::nameInProcesses(folder.path());
    for (const OutputFormat& format : kOutputFormats) {
        if (format.kind > OutputKind::kFolder) continue;  // has no frames
        const std::string name = "a" + std::string(format.extension);
        SCOPED_TRACE(name);
        {
            const auto writer = openWriter(folder / name, {96, 64});
            writer->add(0, frame(96, 64, 1));
        }
        EXPECT_THAT(folder.names(), IsEmpty());
        EXPECT_TRUE(test::noProcessNames(folder.path())) << "ffmpeg still runs";
    }
}

TEST(ClipWriter, ExistingClipStaysUntilTheNewOneIsWhole) {
    const TemporaryFolder folder;
    writeBytes(folder / "a.mp4", "old");
    {
        const auto writer = openWriter(folder / "a.mp4");
        writer->add(0, frame(32, 24, 1));
    }
    EXPECT_EQ(bytesOf(folder / "a.mp4"), "old");
    writeClip(folder / "a.mp4", 2);
    EXPECT_NE(bytesOf(folder / "a.mp4"), "old");
}

TEST(ClipWriter, MissingFolderIsNamed) {
    const TemporaryFolder folder;
    EXPECT_THAT(refusal(folder / "none/a.mp4"), HasSubstr("there is no folder"));
    EXPECT_THAT(refusal(folder / "none/frames/"), HasSubstr("there is no folder"));
}

TEST(ClipWriter, MissingFfmpegIsNamed) {
    const TemporaryFolder folder;
    const std::string path = getenv("PATH");
    setenv("PATH", folder.path().c_str(), 1);
    const std::string said = refusal(folder / "a.mp4");
    setenv("PATH", path.c_str(), 1);
    EXPECT_THAT(said, HasSubstr("ffmpeg is not installed"));
    EXPECT_THAT(folder.names(), IsEmpty());
}

TEST(ClipWriter, FfmpegsFailureIsOneLine) {
    const TemporaryFolder folder;
    // The temporary file's place is taken away after the start, so that ffmpeg cannot write.
    std::filesystem::create_directory(folder / "gone");
    try {
        const auto writer = openWriter(folder / "gone/a.mp4");
        std::filesystem::remove_all(folder / "gone");
        for (int i = 0; i < 200; ++i) writer->add(i, frame(32, 24, 1));
        writer->finish();
        FAIL() << "not refused";
    } catch (const Error& error) {
        EXPECT_EQ(std::string(error.what()).find('\n'), std::string::npos);
        EXPECT_THAT(error.what(), testing::StartsWith(folder / "gone/a.mp4"));
    }
}

TEST(ClipWriter, FramesInTheColoursOfTheEncoderMakeTheSameFile) {
    const TemporaryFolder folder;
    for (const std::string word : {"y4m", "mp4"}) {
        writeClip(folder / "a." + word, 3);
        const auto writer = openWriter(folder / "b." + word);
        Yuv420Frames* const frames = writer->yuv420();
        ASSERT_NE(frames, nullptr) << word;
        for (int i = 0; i < 3; ++i) {
            // Of a gray, whose colours are 128: by hand, 219 / 255 of it above 16, to the nearest.
            std::vector<uint8_t> planes(32 * 24, static_cast<uint8_t>(16 + (40 * i * 219 + 127) / 255));
            planes.resize(32 * 24 * 3 / 2, 128);
            frames->addYuv420(i, planes);
        }
        writer->finish();
        EXPECT_EQ(bytesOf(folder / "a." + word), bytesOf(folder / "b." + word)) << word;
    }
    for (const char* name : {"a.webp", "a.gif", "frames", "a.png"})
        EXPECT_EQ(openWriter(folder / name)->yuv420(), nullptr) << name;
}

}  // namespace
}  // namespace quorvane::media
