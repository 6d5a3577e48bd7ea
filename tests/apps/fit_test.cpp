// --fit and --for, by the program as a process.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <sstream>

#include "media/clip/places.h"
#include "on_sample_scene.h"
#include "process.h"
#include "support/processes.h"
#include "support/temporary_folder.h"

namespace quorvane::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

/// "width,height,rate,frames" of a clip as ffprobe sees it.
std::string probed(const std::string& path) {
    return answerOf(
        "ffprobe -v error -count_frames -select_streams v:0 -show_entries "
        "stream=width,height,r_frame_rate,nb_read_frames -of csv=p=0 " +
        path);
}

class Fit : public OnSampleScene<Fit> {
  public:
    static constexpr const char* kSceneSize = "480x360";

  protected:
    Outcome render(const std::string& out, const std::vector<std::string>& options) {
        std::vector<std::string> arguments = {"render", scene("photo.png"), scene("depth.png"), "-o",
                                              folder / out};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return quorvane(arguments);
    }

    double bytesIn(const std::string& name) { return static_cast<double>(fs::file_size(folder / name)); }

    /// Bytes of the same picture, or clip, with other options.
    double bytesWith(const std::string& name, std::vector<std::string> options) {
        const Outcome outcome = render("other-" + name, options);
        EXPECT_EQ(outcome.code, 0) << outcome.err;
        const double bytes = bytesIn("other-" + name);
        fs::remove(folder / ("other-" + name));
        return bytes;
    }
};

std::string bytesText(double bytes) { return std::to_string(std::llround(bytes)) + "B"; }

// Between what the codec's worst and best would take there is a quality for every limit.
TEST_F(Fit, QualityIsFoundForEveryCodecThatHasOne) {
    for (const char* name : {"a.mp4", "a.webm", "a.webp", "a.jpg"}) {
        SCOPED_TRACE(name);
        const std::vector<std::string> kept = {"--size", "160x120", "--seconds", "0.3"};
        const auto with = [&kept](const char* option, const std::string& value) {
            std::vector<std::string> options = kept;
            options.insert(options.end(), {option, value});
            return options;
        };
        const double limit =
            std::sqrt(bytesWith(name, with("--quality", "40")) * bytesWith(name, with("--quality", "90")));
        const Outcome outcome = render(name, with("--fit", bytesText(limit)));
        ASSERT_EQ(outcome.code, 0) << outcome.err;
        EXPECT_LE(bytesIn(name), limit);
        EXPECT_GT(bytesIn(name), 0.9 * limit);
        EXPECT_THAT(outcome.err, StartsWith("fit: "));
        EXPECT_THAT(outcome.err, HasSubstr("160x120"));
        EXPECT_THAT(outcome.err, HasSubstr(", quality "));
    }
}

TEST_F(Fit, WhatHasNoQualityBecomesSmaller) {
    for (const char* name : {"a.png", "a.gif"}) {
        SCOPED_TRACE(name);
        const double whole = bytesWith(name, {"--seconds", "0.3"});
        const Outcome outcome = render(name, {"--seconds", "0.3", "--fit", bytesText(0.6 * whole)});
        ASSERT_EQ(outcome.code, 0) << outcome.err;
        EXPECT_LE(bytesIn(name), 0.6 * whole);
        EXPECT_GT(bytesIn(name), 0.54 * whole);
        EXPECT_EQ(outcome.err.find("480x360"), std::string::npos) << outcome.err;
    }
}

TEST_F(Fit, IsShownOnceWhereThatIsAsked) {
    for (const char* once : {"--once", "--ease"}) {
        ASSERT_EQ(render("a.gif", {"--seconds", "0.2", "--fit", "1MB", once}).code, 0);
        const bool repeats = bytesOf(folder / "a.gif").find("NETSCAPE2.0") != std::string::npos;
        EXPECT_EQ(repeats, once != std::string("--once"));
    }
}

TEST_F(Fit, BelowTheLowestQualityTheSizeShrinksAndThenTheRate) {
    const double least = bytesWith("a.mp4", {"--quality", "25", "--seconds", "0.5"});
    const Outcome smaller = render("a.mp4", {"--seconds", "0.5", "--fit", bytesText(0.6 * least)});
    ASSERT_EQ(smaller.code, 0) << smaller.err;
    EXPECT_LE(bytesIn("a.mp4"), 0.6 * least);
    EXPECT_GT(bytesIn("a.mp4"), 0.54 * least);
    EXPECT_THAT(probed(folder / "a.mp4"), HasSubstr(",30/1,15"));
    EXPECT_LT(std::stoi(probed(folder / "a.mp4")), 480);

    // The size that was asked for stays. In a .webp every frame takes its part.
    const double still = bytesWith("a.webp", {"--quality", "25", "--seconds", "0.3"});
    const Outcome slower =
        render("a.webp", {"--seconds", "0.3", "--size", "480x360", "--fit", bytesText(0.75 * still)});
    ASSERT_EQ(slower.code, 0) << slower.err;
    EXPECT_LE(bytesIn("a.webp"), 0.75 * still);
    EXPECT_THAT(slower.err, HasSubstr("480x360, "));
    EXPECT_EQ(slower.err.find(" 30 frames a second"), std::string::npos) << slower.err;
}

TEST_F(Fit, WhatIsGivenIsKept) {
    const double whole = bytesWith("a.mp4", {"--quality", "72", "--seconds", "0.3"});
    const Outcome outcome = render(
        "a.mp4", {"--quality", "72", "--fps", "30", "--seconds", "0.3", "--fit", bytesText(0.5 * whole)});
    ASSERT_EQ(outcome.code, 0) << outcome.err;
    EXPECT_THAT(bytesOf(folder / "a.mp4"), HasSubstr(" crf=20.0 "));
    EXPECT_THAT(outcome.err, HasSubstr("30 frames a second, quality 72"));
    EXPECT_LE(bytesIn("a.mp4"), 0.5 * whole);
    EXPECT_GT(bytesIn("a.mp4"), 0.45 * whole);
}

TEST_F(Fit, WhatFitsAtItsBestIsLeftAtThat) {
    const Outcome outcome = render("a.jpg", {"--fit", "100MB"});
    ASSERT_EQ(outcome.code, 0) << outcome.err;
    EXPECT_EQ(bytesIn("a.jpg"), bytesWith("a.jpg", {"--quality", "95"}));
    EXPECT_THAT(outcome.err, HasSubstr("of 100 MB: 480x360, quality 95"));
}

TEST_F(Fit, ASmallerRateIsTheLastThingBeforeItGivesUp) {
    const Outcome outcome = render("a.webp", {"--size", "160x120", "--seconds", "0.3", "--fit", "200B"});
    EXPECT_EQ(outcome.code, 1);
    EXPECT_THAT(outcome.err, HasSubstr(": 160x120, 12 frames a second, quality 25 (size as asked for)\n"));
}

TEST_F(Fit, APaletteLosesColoursWhereNothingElseMayGo) {
    const std::vector<std::string> kept = {"--size", "160x120", "--frames", "4", "--fps", "20"};
    std::vector<std::string> options = kept;
    options.insert(options.end(), {"--fit", bytesText(0.9 * bytesWith("a.gif", kept))});
    const Outcome outcome = render("a.gif", options);
    ASSERT_EQ(outcome.code, 0) << outcome.err;
    EXPECT_THAT(outcome.err, HasSubstr(": 160x120, 20 frames a second, quality 60\n"));
}

TEST_F(Fit, WhatCannotFitEndsWithTheSmallestAndNoFile) {
    writeBytes(folder / "old.mp4", "old");
    for (const char* name : {"a.mp4", "old.mp4"}) {
        const Outcome outcome = render(name, {"--frames", "4", "--fit", "600B"});
        EXPECT_EQ(outcome.code, 1);
        EXPECT_THAT(outcome.err, StartsWith("quorvane: " + (folder / name) + ": does not fit into 600 B; "));
        EXPECT_THAT(outcome.err, HasSubstr("the smallest that can be made is "));
        EXPECT_THAT(outcome.err, HasSubstr("240x180, 30 frames a second, quality 25 (rate as asked for)\n"));
        EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
    }
    EXPECT_EQ(bytesOf(folder / "old.mp4"), "old");
    EXPECT_THAT(folder.names(), ElementsAre("old.mp4"));
}

TEST_F(Fit, QuietSaysNothing) {
    EXPECT_EQ(render("a.jpg", {"--fit", "20KB", "-q"}).err, "");
    EXPECT_LE(bytesIn("a.jpg"), 20000);
}

TEST_F(Fit, TerminalShowsWhatIsTried) {
    if (!hasTerminals()) GTEST_SKIP() << "NO PSEUDO-TERMINAL, NOT TESTED";
    Process process(
        {"render", scene("photo.png"), scene("depth.png"), "-o", folder / "a.jpg", "--fit", "20KB"}, {},
        true);
    const Outcome outcome = process.wait();
    EXPECT_EQ(outcome.code, 0);
    EXPECT_THAT(outcome.err, HasSubstr("[try 1] 480x360, quality 95"));
    EXPECT_THAT(outcome.err, HasSubstr("[try 2] 480x360, quality "));
    EXPECT_THAT(outcome.err, HasSubstr("\r\033[Kfit: "));
}

TEST_F(Fit, RefusesWhatIsNoSizeOrCannotFit) {
    const auto refused = [this](const std::string& out, const std::vector<std::string>& options,
                                const std::string& why) {
        const Outcome outcome = render(out, options);
        EXPECT_EQ(outcome.code, 2) << out;
        EXPECT_THAT(outcome.err, HasSubstr(why));
        EXPECT_THAT(folder.names(), IsEmpty());
    };
    refused("a.mp4", {"--fit", "8"}, "--fit 8: a size is wanted, such as 8MB, 500KB or 10MiB");
    refused("frames/", {"--fit", "8MB"}, "frames/: a folder cannot be made to fit");
    refused("a.html", {"--fit", "8MB"}, "an .html cannot be made to fit");
    refused("a.y4m", {"--fit", "8MB"}, "a .y4m cannot be made to fit");
    refused("a.gif", {"--for", "whatsapp"}, "a.gif: --for whatsapp makes a file of mp4, jpg or png");
    refused("clips/", {"--for", "whatsapp"}, "--for whatsapp makes a file of mp4");
    refused("a.mp4", {"--for", "whatsapp", "--codec", "hevc"}, "--codec hevc: --for whatsapp takes h264");
    refused("a.webp", {"--for", "sticker", "--size", "300"}, "--size: --for sticker takes 512x512 alone");
    refused("a.mp4", {"--for", "nowhere"}, "--for nowhere");
}

TEST_F(Fit, PlacesGetTheirFormatAndSize) {
    // A name without an extension is written as it stands.
    const Outcome named = render("clip", {"--for", "whatsapp", "--seconds", "0.2"});
    ASSERT_EQ(named.code, 0) << named.err;
    EXPECT_THAT(named.err, HasSubstr("of 16 MB: 480x360, 30 frames a second, quality 80"));
    EXPECT_EQ(answerOf("ffprobe -v error -show_entries stream=codec_name -of csv=p=0 " + (folder / "clip")),
              "h264");

    const Outcome sticker = render("a.webp", {"--for", "sticker", "--seconds", "0.2"});
    ASSERT_EQ(sticker.code, 0) << sticker.err;
    EXPECT_THAT(answerOf("webpinfo " + (folder / "a.webp")), HasSubstr("Canvas size 512 x 512"));
    EXPECT_LE(bytesIn("a.webp"), 500'000);

    // The lesser of both limits holds.
    ASSERT_EQ(render("b.jpg", {"--for", "whatsapp", "--fit", "15KB"}).code, 0);
    EXPECT_LE(bytesIn("b.jpg"), 15'000);
}

TEST_F(Fit, PlacesShrinkWhatIsLarger) {
    const std::string large = folder / "large.png", depth = folder / "large-depth.png";
    ASSERT_EQ(quorvane({"sample", large, depth, "--size", "1600x1200"}).code, 0);
    const Outcome outcome =
        quorvane({"render", large, depth, "-o", folder / "a.gif", "--for", "slack", "--frames", "2"});
    ASSERT_EQ(outcome.code, 0) << outcome.err;
    EXPECT_THAT(probed(folder / "a.gif"), StartsWith("480,360,"));
}

TEST_F(Fit, GifsAreSmallByDefault) {
    const std::string large = folder / "large.png", depth = folder / "large-depth.png";
    ASSERT_EQ(quorvane({"sample", large, depth, "--size", "640x480"}).code, 0);
    const Outcome outcome =
        quorvane({"render", large, depth, "-o", folder / "a.gif", "--detail", "full", "--samples", "1"});
    ASSERT_EQ(outcome.code, 0) << outcome.err;
    EXPECT_EQ(probed(folder / "a.gif"), "480,360,20/1,80");
    EXPECT_EQ(outcome.err, "");
}

TEST_F(Fit, DocumentsSayWhatPlacesTake) {
    std::istringstream page(bytesOf(QUORVANE_DOCS "/fit.md"));
    std::vector<std::string> lines;
    for (std::string line; std::getline(page, line);) lines.push_back(line);
    for (const std::string& name : media::placeNames())
        for (const media::Place* row : media::rowsOf(name)) {
            const std::string size = row->side > 0
                                         ? std::to_string(row->side) + " x " + std::to_string(row->side)
                                         : std::to_string(row->longest);
            std::ostringstream limit;
            limit << static_cast<double>(row->limit) / 1e6;
            const std::string wanted = "| `" + name + "` | ." + std::string(row->format) + " | " +
                                       limit.str() + " MB | " + size + " |";
            EXPECT_TRUE(std::any_of(lines.begin(), lines.end(), [&](const std::string& line) {
                return line.rfind(wanted, 0) == 0;
            })) << wanted;
        }
}

}  // namespace
}  // namespace quorvane::test
