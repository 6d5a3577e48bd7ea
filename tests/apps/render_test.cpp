#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <numeric>
#include <sstream>
#include <thread>

#include "media/picture/picture_file.h"
#include "media/picture/resample.h"
#include "media/scene/sample_scene.h"
#include "media/scene/sheet.h"
#include "on_sample_scene.h"
#include "process.h"
#include "quorvane/host/OffscreenContext.h"
#include "quorvane/host/ParallaxView.h"
#include "support/photo_writers/pictures.h"
#include "support/temporary_folder.h"

namespace quorvane::test {
namespace {

using media::GrayImage;
using media::RgbImage;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

RgbImage painted(int width, int height, const std::function<std::array<int, 3>(int x, int y)>& colour) {
    RgbImage image(width, height);
    size_t i = 0;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (const int sample : colour(x, y)) image.samples[i++] = static_cast<uint8_t>(sample);
    return image;
}

GrayImage shaded(int width, int height, const std::function<int(int x, int y)>& level) {
    GrayImage image(width, height);
    size_t i = 0;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) image.samples[i++] = static_cast<uint8_t>(level(x, y));
    return image;
}

// The tuned set's pivot lies among the depths, and no thing stands still.
const std::vector<std::string> kTunedPivot = {"--pivot", "off"};

/// The sample at (x, y) in pixels, bilinear, pixel centres at .5.
double sampleAt(const RgbImage& image, double x, double y, size_t channel) {
    const double fx = x - 0.5, fy = y - 0.5;
    const auto at = [&](double column, double row) {
        const auto clamped = [](double v, int n) {
            return static_cast<size_t>(std::min(std::max(v, 0.0), n - 1.0));
        };
        return static_cast<double>(
            image.samples[3 * (clamped(row, image.height) * static_cast<size_t>(image.width) +
                               clamped(column, image.width)) +
                          channel]);
    };
    const double left = std::floor(fx), top = std::floor(fy);
    const double h = fx - left, v = fy - top;
    return (at(left, top) * (1 - h) + at(left + 1, top) * h) * (1 - v) +
           (at(left, top + 1) * (1 - h) + at(left + 1, top + 1) * h) * v;
}

class Render : public OnSampleScene<Render> {
  public:
    static constexpr const char* kSceneSize = "240x180";

  protected:
    /// Renders the sample scene and expects success without a word.
    void render(const std::string& out, std::vector<std::string> options = {}) {
        std::vector<std::string> arguments = {"render", scene("photo.png"), scene("depth.png"), "-o",
                                              folder / out};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const Outcome outcome = quorvane(arguments);
        ASSERT_EQ(outcome.code, 0) << outcome.err;
        EXPECT_EQ(outcome.out, "");
        EXPECT_EQ(outcome.err, "") << "in a pipe nothing is said";
    }

    /// The still of a photo and depth map from one position.
    RgbImage still(const RgbImage& photo, const GrayImage& depth, const std::string& at,
                   std::vector<std::string> options = {}) {
        writePng(photo, folder / "p.png");
        writePng(depth, folder / "d.png");
        std::vector<std::string> arguments = {"render", folder / "p.png",     folder / "d.png",
                                              "-o",     folder / "still.png", "--at=" + at};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const Outcome outcome = quorvane(arguments);
        EXPECT_EQ(outcome.code, 0) << outcome.err;
        return media::readPhoto(folder / "still.png");
    }
};

// At rest every depth is seen along its own line of sight: the picture is the photo's middle, fov_scale of
// it.
TEST_F(Render, RestShowsTheMiddleOfThePhoto) {
    const RgbImage photo = media::readPhoto(scene("photo.png"));
    for (const int level : {0, 100, 255}) {
        const RgbImage seen = still(photo, shaded(240, 180, [=](int, int) { return level; }), "0,0",
                                    {"--frame", "0.81", "--samples", "1"});
        ASSERT_EQ(seen.width, 240);
        ASSERT_EQ(seen.height, 180);
        double worst = 0;
        double sum = 0;
        for (int y = 0; y < 180; ++y)
            for (int x = 0; x < 240; ++x)
                for (size_t c = 0; c < 3; ++c) {
                    const double wanted =
                        sampleAt(photo, 120 + (x + 0.5 - 120) * 0.81, 90 + (y + 0.5 - 90) * 0.81, c);
                    const double error =
                        std::abs(wanted - seen.samples[3 * static_cast<size_t>(y * 240 + x) + c]);
                    worst = std::max(worst, error);
                    sum += error;
                }
        // Texture units weigh neighbours in steps of 1/256, and the grid's running sums put a coordinate off
        // by at most a thousandth of a pixel: 255/256 a step and rounding, twice.
        EXPECT_LE(worst, 4) << "depth " << level;
        EXPECT_LE(sum / (240 * 180 * 3), 0.6) << "depth " << level;
    }
}

// A white bar on a near block and one on the far ground: their middles in the picture.
std::pair<double, double> barPositions(const RgbImage& seen) {
    const auto middle = [&seen](int first, int last) {
        double sum = 0, weight = 0;
        for (int y = first; y < last; ++y)
            for (int x = 0; x < seen.width; ++x) {
                const double light = seen.samples[3 * static_cast<size_t>(y * seen.width + x)];
                sum += light * x;
                weight += light;
            }
        return sum / weight;
    };
    return {middle(40, 80), middle(120, 160)};
}

TEST_F(Render, NearThingsMoveAgainstFarOnes) {
    const RgbImage photo = painted(200, 200, [](int x, int) {
        return x >= 95 && x < 105 ? std::array{255, 255, 255} : std::array{0, 0, 0};
    });
    const GrayImage depth = shaded(200, 200, [](int, int y) { return y < 100 ? 230 : 10; });
    // Near above and far below is not what photos mostly show.
    std::vector<std::string> options = kTunedPivot;
    options.emplace_back("--invert-depth=no");
    const auto bars = [&](const std::string& at) { return barPositions(still(photo, depth, at, options)); };
    const auto [near_left, far_left] = bars("-1,0");
    const auto [near_rest, far_rest] = bars("0,0");
    const auto [near_right, far_right] = bars("1,0");
    // Seen from the right, near things stand further left.
    EXPECT_LT(near_right, near_rest - 2);
    EXPECT_GT(near_left, near_rest + 2);
    EXPECT_GT(far_right, far_rest + 2);
    EXPECT_LT(far_left, far_rest - 2);
}

TEST_F(Render, SeenFromAboveNearThingsStandLower) {
    const RgbImage photo = painted(200, 200, [](int, int y) {
        return y >= 95 && y < 105 ? std::array{255, 255, 255} : std::array{0, 0, 0};
    });
    const auto bar = [&](const std::string& at) {
        const RgbImage seen = still(photo, shaded(200, 200, [](int, int) { return 230; }), at, kTunedPivot);
        double sum = 0, weight = 0;
        for (int y = 0; y < 200; ++y) {
            const double light = seen.samples[3 * static_cast<size_t>(y * 200 + 100)];
            sum += light * y;
            weight += light;
        }
        return sum / weight;
    };
    EXPECT_GT(bar("0,1"), bar("0,0") + 2);
    EXPECT_LT(bar("0,-1"), bar("0,0") - 2);
}

TEST_F(Render, ShowsNoBlackBorderAtFullSwing) {
    const auto white = [](int, int) { return std::array{255, 255, 255}; };
    const auto rough = [](int x, int y) { return (x / 9 * 83 + y / 7 * 131) % 256; };
    for (const auto& [width, height] : {std::pair{160, 120}, {120, 160}, {90, 200}})
        for (const char* at : {"-1,0", "1,0", "0,-1", "0,1", "1,1", "-1,-1"}) {
            const RgbImage seen = still(painted(width, height, white), shaded(width, height, rough), at);
            EXPECT_EQ(*std::min_element(seen.samples.begin(), seen.samples.end()), 255)
                << width << " x " << height << " from " << at;
        }
}

TEST_F(Render, NearThingsHideFarOnes) {
    // A red near square in front of green, seen from the side: no green shows through where the near surface
    // is.
    const auto inside = [](int x, int y) { return x > 60 && x < 140 && y > 60 && y < 140; };
    const RgbImage photo = painted(200, 200, [&](int x, int y) {
        return inside(x, y) ? std::array{255, 0, 0} : std::array{0, 255, 0};
    });
    const RgbImage seen =
        still(photo, shaded(200, 200, [&](int x, int y) { return inside(x, y) ? 250 : 0; }), "1,1");
    const uint8_t* middle = &seen.samples[3 * (100 * 200 + 85)];
    EXPECT_GT(middle[0], 200);
    EXPECT_LT(middle[1], 50);
}

TEST_F(Render, InvertedDepthIsTheInvertedPicture) {
    const RgbImage photo = media::readPhoto(scene("photo.png"));
    const auto ramp = [](int x, int y) { return (x + y) * 255 / 418; };
    const RgbImage a = still(photo, shaded(240, 180, ramp), "1,0", {"--invert-depth"});
    const RgbImage b = still(photo, shaded(240, 180, [&](int x, int y) { return 255 - ramp(x, y); }), "1,0",
                             {"--invert-depth=no"});
    EXPECT_EQ(a.samples, b.samples);
}

TEST_F(Render, TwoRunsGiveTheSameBytes) {
    render("a/", {"--frames", "3", "--motion", "eight"});
    render("b/", {"--frames", "3", "--motion", "eight"});
    for (const char* name : {"00001.png", "00002.png", "00003.png"})
        EXPECT_EQ(bytesOf(folder / "a/" + std::string(name)), bytesOf(folder / "b/" + std::string(name)));
}

TEST_F(Render, FirstFrameOfASwayIsTheViewAtRest) {
    render("frames", {"--frames", "4"});
    render("rest.png");
    EXPECT_EQ(bytesOf(folder / "frames/00001.png"), bytesOf(folder / "rest.png"));
    EXPECT_EQ(TemporaryFolder::names(folder / "frames").size(), 4u);
}

TEST_F(Render, SecondFrameOfFourIsTheExtreme) {
    render("frames", {"--frames", "4"});
    render("right.png", {"--at", "1,0"});
    EXPECT_EQ(bytesOf(folder / "frames/00002.png"), bytesOf(folder / "right.png"));
}

/// Where frame `number` of `frames` of a sway stands, as --at takes it.
std::string swayAt(int number, int frames) {
    std::array<char, 40> at;
    std::snprintf(at.data(), at.size(), "%.17g,0", std::sin(2.0 * M_PI * number / frames));
    return at.data();
}

TEST_F(Render, EveryFrameOfAFolderIsTheStillFromItsPlace) {
    constexpr int kFrames = 23;
    render("frames", {"--frames", std::to_string(kFrames)});
    const std::vector<std::string> names = TemporaryFolder::names(folder / "frames");
    ASSERT_EQ(names.size(), static_cast<size_t>(kFrames));
    for (int number = 0; number < kFrames; ++number) {
        render("still.png", {"--at=" + swayAt(number, kFrames)});
        EXPECT_EQ(bytesOf(folder / "frames/" + names[static_cast<size_t>(number)]),
                  bytesOf(folder / "still.png"))
            << "frame " << number;
    }
}

TEST_F(Render, SupersampledFramesAreTheSupersampledStills) {
    constexpr int kFrames = 9;
    render("frames", {"--frames", std::to_string(kFrames), "--supersample", "2", "--size", "96x72"});
    const std::vector<std::string> names = TemporaryFolder::names(folder / "frames");
    ASSERT_EQ(names.size(), static_cast<size_t>(kFrames));
    for (int number = 0; number < kFrames; ++number) {
        const std::string at = swayAt(number, kFrames);
        render("still.png", {"--at=" + at, "--supersample", "2", "--size", "96x72"});
        EXPECT_EQ(bytesOf(folder / "frames/" + names[static_cast<size_t>(number)]),
                  bytesOf(folder / "still.png"))
            << "frame " << number;
    }
}

/// How many pixels of a picture of a white photo are not white, as a border is.
int borderPixels(const std::string& path) {
    const RgbImage picture = media::readPhoto(path);
    return static_cast<int>(std::count_if(picture.samples.begin(), picture.samples.end(),
                                          [](uint8_t sample) { return sample < 255; }));
}

TEST_F(Render, NoMotionShowsABorder) {
    RgbImage white(240, 180);
    std::fill(white.samples.begin(), white.samples.end(), uint8_t{255});
    media::writePng(white, folder / "white.png");
    media::writePng(shaded(240, 180, [](int x, int y) { return (x * y) % 256; }), folder / "map.png");
    writeBytes(
        folder / "hand.jsonl",
        "{\"t\":0,\"x\":-1,\"y\":1,\"zoom\":0.8}\n{\"t\":1,\"x\":1,\"y\":-1}\n{\"t\":2,\"x\":0,\"y\":0,"
        "\"zoom\":0.6}\n");
    const std::vector<std::vector<std::string>> motions = {
        {"--motion", "circle"},
        {"--motion", "sway zoom=0.75+0.25cos(2)"},
        {"--motion", "eight zoom=1.5-0.5cos(1)", "--ease"},
        {"--motion", "zoom=0.5"},
        {"--motion", "1,1,0.7 -1,-1,3", "--hold", "0.05"},
        {"--motion-file", folder / "hand.jsonl", "--ping-pong"}};
    const char* renderer = "gl";
    for (std::vector<std::string> options : motions) {
        SCOPED_TRACE(std::string(renderer) + " " + testing::PrintToString(options));
        options.insert(options.end(), {"--frames", "6", "--force", "--renderer", renderer});
        std::vector<std::string> arguments = {"render", folder / "white.png", folder / "map.png", "-o",
                                              folder / "frames"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const Outcome outcome = quorvane(arguments);
        ASSERT_EQ(outcome.code, 0) << outcome.err;
        for (const std::string& name : TemporaryFolder::names(folder / "frames"))
            EXPECT_EQ(borderPixels(folder / "frames/" + name), 0) << name;
        renderer = renderer == std::string("gl") ? "software" : "gl";
    }
}

// Twice as close is half of the photo's sides.
TEST_F(Render, ZoomShowsThatMuchLess) {
    render("close/", {"--frames", "1", "--motion", "zoom=2", "--frame", "0.8"});
    render("part.png", {"--frame", "0.4"});
    EXPECT_EQ(bytesOf(folder / "close/00001.png"), bytesOf(folder / "part.png"));
    const Outcome outcome = quorvane({"render", scene("photo.png"), scene("depth.png"), "-o", folder / "a/",
                                      "--motion", "zoom=0.5", "--frame", "0.8"});
    EXPECT_EQ(outcome.code, 1);
    EXPECT_THAT(outcome.err, HasSubstr("zoom: 0.5 of a frame that shows 0.8 of each side would show 1.6"));
}

TEST_F(Render, OnceEndsWhereTheMotionEnds) {
    writeBytes(folder / "hand.jsonl", "{\"t\":5,\"x\":-1,\"y\":0}\n{\"t\":5.5,\"x\":1,\"y\":0}\n");
    render("a/", {"--motion-file", folder / "hand.jsonl", "--once", "--fps", "6", "--frame", "0.85"});
    EXPECT_EQ(TemporaryFolder::names(folder / "a").size(), 3u) << "half a second of six frames a second";
    render("left.png", {"--at=-1,0", "--frame", "0.85"});
    render("right.png", {"--at", "1,0", "--frame", "0.85"});
    EXPECT_EQ(bytesOf(folder / "a/00001.png"), bytesOf(folder / "left.png"));
    EXPECT_EQ(bytesOf(folder / "a/00003.png"), bytesOf(folder / "right.png"));
}

TEST_F(Render, TimingSaysNothingOfAStill) {
    const Outcome outcome = quorvane({"render", scene("photo.png"), scene("depth.png"), "-o",
                                      folder / "still.png", "--seconds", "2", "--ease"});
    EXPECT_EQ(outcome.code, 0) << outcome.err;
    EXPECT_THAT(outcome.err, HasSubstr("still: --seconds, --ease: of no effect"));
}

// Lossy, so each of its frames is compared with all of the folder's.
TEST_F(Render, ClipHoldsItsFramesInOrder) {
    constexpr int kFrames = 24;
    const std::string count = std::to_string(kFrames);
    render("frames", {"--frames", count, "--motion", "circle"});
    render("a.mp4", {"--frames", count, "--motion", "circle"});
    std::filesystem::create_directory(folder / "decoded");
    ASSERT_EQ(std::system(
                  ("ffmpeg -v error -i " + (folder / "a.mp4") + " " + (folder / "decoded/%05d.png")).c_str()),
              0);
    const std::vector<std::string> names = TemporaryFolder::names(folder / "frames");
    ASSERT_EQ(TemporaryFolder::names(folder / "decoded"), names);
    std::vector<RgbImage> frames;
    for (const std::string& name : names) frames.push_back(media::readPhoto(folder / "frames/" + name));
    for (size_t number = 0; number < names.size(); ++number) {
        const RgbImage decoded = media::readPhoto(folder / "decoded/" + names[number]);
        std::vector<long> differences;
        for (const RgbImage& frame : frames)
            differences.push_back(std::inner_product(
                frame.samples.begin(), frame.samples.end(), decoded.samples.begin(), 0L, std::plus<>(),
                [](int a, int b) { return static_cast<long>(std::abs(a - b)); }));
        EXPECT_EQ(std::min_element(differences.begin(), differences.end()) - differences.begin(),
                  static_cast<std::ptrdiff_t>(number));
    }
}

TEST_F(Render, LongClipKeepsItsMemory) {
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "A SANITIZED PROGRAM KEEPS WHAT IS FREED, MEMORY WAS NOT MEASURED";
#endif
    constexpr size_t kFrames = 1200;
    // Which passes no place twice: nothing is kept to be shown again.
    Process process({"render", scene("photo.png"), scene("depth.png"), "-o", folder / "frames", "--frames",
                     std::to_string(kFrames), "--size", "160x120", "--motion", "circle"});
    // The frames stand in a hidden folder until the clip is whole.
    const auto written = [this] {
        const std::vector<std::string> names = folder.names();
        return names.empty() ? 0 : TemporaryFolder::names(folder / names.front()).size();
    };
    const auto resident_after = [&](size_t frames) {
        while (written() < frames) std::this_thread::sleep_for(std::chrono::milliseconds(5));
        return process.residentMb();
    };
    const double early = resident_after(kFrames / 6);
    const double late = resident_after(kFrames - kFrames / 6);
    ASSERT_EQ(process.wait().code, 0);
    ASSERT_GT(early, 0.0);
    ASSERT_GT(late, 0.0);
    // A picture is 0.07 MB: forgetting one frame in ten would show.
    EXPECT_LT(late, early + 5.0);
}

TEST_F(Render, StatsNameEveryStageAndCountTheFrames) {
    const auto stats = [&](const std::string& out, const std::vector<std::string>& more) {
        std::vector<std::string> arguments = {"render", scene("photo.png"), scene("depth.png"),
                                              "-o",     folder / out,       "--stats"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        const auto start = std::chrono::steady_clock::now();
        const Outcome outcome = quorvane(arguments);
        const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - start;
        EXPECT_EQ(outcome.code, 0) << outcome.err;
        EXPECT_EQ(outcome.out, "");
        std::map<std::string, std::pair<double, double>> rows;
        std::istringstream lines(outcome.err);
        std::string line;
        std::getline(lines, line);
        EXPECT_EQ(line, "stage              ms   ms/frame");
        while (std::getline(lines, line) && line.find(" in ") == std::string::npos) {
            std::istringstream numbers(line.substr(10));
            auto& [total, each] = rows[line.substr(0, line.find("  "))];
            numbers >> total >> each;
        }
        int frames = 0;
        double seconds = 0, rate = 0, first = 0;
        EXPECT_EQ(std::sscanf(line.c_str(), "%d frame%*[s] in %lf s: %lf a second, the first after %lf s",
                              &frames, &seconds, &rate, &first),
                  4)
            << line;
        EXPECT_GT(first, 0.0);
        EXPECT_LE(first, seconds);
        EXPECT_LE(seconds, wall.count());
        EXPECT_NEAR(rate, frames / seconds, 0.06 * rate);
        EXPECT_FALSE(std::getline(lines, line)) << line;
        return std::pair{rows, frames};
    };
    const auto names = [](const std::map<std::string, std::pair<double, double>>& rows) {
        std::vector<std::string> list;
        for (const auto& [name, times] : rows) list.push_back(name);
        return list;
    };
    const auto [plain, frames] = stats("a.webp", {"--frames", "8", "--samples", "1"});
    EXPECT_EQ(frames, 8);
    EXPECT_THAT(names(plain), testing::UnorderedElementsAre("decode", "set up", "fit", "upload", "draw",
                                                            "read back", "encode"));
    for (const char* name : {"draw", "read back", "encode"})
        EXPECT_NEAR(plain.at(name).second, plain.at(name).first / 8, 0.02) << name;
    for (const char* name : {"decode", "draw", "encode"}) EXPECT_GT(plain.at(name).first, 0.0) << name;

    // The processor draws these as the encoder takes them.
    const auto [direct, as_many] = stats("a.mp4", {"--frames", "8", "--renderer", "software"});
    EXPECT_EQ(as_many, 8);
    EXPECT_THAT(names(direct),
                testing::UnorderedElementsAre("decode", "set up", "fit", "upload", "draw", "encode"));

    const auto [averaged, more_frames] = stats("frames", {"--frames", "12", "--supersample", "2"});
    EXPECT_EQ(more_frames, 12);
    EXPECT_GT(averaged.at("average").first, 0.0);
}

TEST_F(Render, AmountScalesTheSwing) {
    render("frames", {"--frames", "4", "--amount", "0.5"});
    render("half.png", {"--at", "0.5,0", "--amount", "0.5"});
    EXPECT_EQ(bytesOf(folder / "frames/00002.png"), bytesOf(folder / "half.png"));
}

TEST_F(Render, WritesEveryKindOfClip) {
    for (const char* name : {"a.mp4", "a.webp", "a.gif"}) {
        render(name, {"--frames", "3", "--size", "64x48"});
        EXPECT_GT(std::filesystem::file_size(folder / name), 200u) << name;
    }
    EXPECT_THAT(folder.names(), ElementsAre("a.gif", "a.mp4", "a.webp"));
}

TEST_F(Render, SizeIsTheOneAskedFor) {
    render("a.png", {"--size", "121x95"});
    EXPECT_EQ(media::readPhoto(folder / "a.png").width, 121);
    EXPECT_EQ(media::readPhoto(folder / "a.png").height, 95);
    render("b.png", {"--size", "photo"});
    EXPECT_EQ(media::readPhoto(folder / "b.png").width, 240);
    render("c.png", {"--size", "320"});
    EXPECT_EQ(media::readPhoto(folder / "c.png").width, 320);
    EXPECT_EQ(media::readPhoto(folder / "c.png").height, 240);
}

// A square picture of a wide photo shows its middle, undistorted.
TEST_F(Render, AnotherAspectCutsThePhoto) {
    const RgbImage photo = painted(300, 100, [](int x, int y) {
        const bool disc = std::hypot(x + 0.5 - 150, y + 0.5 - 50) < 20;
        return disc ? std::array{255, 255, 255} : std::array{0, 0, 0};
    });
    const RgbImage seen = still(photo, shaded(300, 100, [](int, int) { return 128; }), "0,0",
                                {"--size", "100x100", "--frame", "0.81"});
    int across = 0, down = 0;
    for (int i = 0; i < 100; ++i) {
        across += seen.samples[3 * static_cast<size_t>(50 * 100 + i)] > 127;
        down += seen.samples[3 * static_cast<size_t>(i * 100 + 50)] > 127;
    }
    EXPECT_NEAR(across, 40 / 0.81, 2);
    EXPECT_NEAR(down, 40 / 0.81, 2);
}

TEST_F(Render, SupersamplingSmoothsAndKeepsThePicture) {
    render("a.png", {"--size", "120x90", "--detail", "full", "--samples", "1"});
    render("b.png", {"--size", "120x90", "--detail", "full", "--supersample", "3"});
    const RgbImage a = media::readPhoto(folder / "a.png");
    const RgbImage b = media::readPhoto(folder / "b.png");
    ASSERT_EQ(a.samples.size(), b.samples.size());
    const auto roughness = [](const RgbImage& image) {
        double sum = 0;
        for (size_t i = 3; i < image.samples.size(); ++i)
            sum += std::abs(image.samples[i] - image.samples[i - 3]);
        return sum;
    };
    EXPECT_LT(roughness(b), roughness(a));
    double difference = 0;
    for (size_t i = 0; i < a.samples.size(); ++i) difference += std::abs(a.samples[i] - b.samples[i]);
    EXPECT_LT(difference / static_cast<double>(a.samples.size()), 20);
}

/// The mean squared difference of two pictures of a size.
double difference(const RgbImage& a, const RgbImage& b) {
    EXPECT_EQ(a.samples.size(), b.samples.size());
    double sum = 0.0;
    for (size_t i = 0; i < a.samples.size(); ++i) sum += std::pow(a.samples[i] - b.samples[i], 2.0);
    return sum / static_cast<double>(a.samples.size());
}

TEST_F(Render, SilhouettesAreSmoothUnlessOneSampleIsAskedFor) {
    // A white square before a black wall: every gray level lies on its silhouette.
    const auto in_square = [](int x, int y) { return std::abs(x + y - 200) < 60 && std::abs(x - y) < 60; };
    const RgbImage photo = painted(200, 200, [&](int x, int y) {
        return in_square(x, y) ? std::array{255, 255, 255} : std::array{0, 0, 0};
    });
    const GrayImage depth = shaded(200, 200, [&](int x, int y) { return in_square(x, y) ? 230 : 30; });
    const auto drawn = [&](std::vector<std::string> options) {
        options.insert(options.end(), {"--size", "100x100", "--frame", "0.8"});
        return still(photo, depth, "0.7,0.4", options);
    };
    const RgbImage truth = drawn({"--supersample", "4"});
    const double plain = difference(drawn({"--samples", "1"}), truth);
    EXPECT_LT(difference(drawn({}), truth), plain / 3.0);
    EXPECT_NE(drawn({"--samples", "4"}).samples, drawn({"--samples", "1"}).samples);
    EXPECT_EQ(drawn({"--samples", "1", "--supersample", "4"}).samples, truth.samples);
}

TEST_F(Render, SmoothPicturesTooLargeForTheDriverAreDrawnPlainly) {
    // Twice as wide is more than any driver draws.
    const Outcome outcome = quorvane({"render", scene("photo.png"), scene("depth.png"), "-o",
                                      folder / "a.png", "--size", "12000x8", "-v"});
    EXPECT_EQ(outcome.code, 0) << outcome.err;
    EXPECT_EQ(media::readPhoto(folder / "a.png").width, 12000);
}

/// Threads of one pixel, which a smaller picture shows as an even gray.
RgbImage threads(int width, int height) {
    return painted(width, height, [](int x, int y) {
        const int level = (x + y) % 3 == 0 ? 255 : 0;
        return std::array{level, level, level};
    });
}

/// How far from its mean a picture is, in levels.
double grain(const RgbImage& image) {
    double sum = 0.0, squares = 0.0;
    for (const uint8_t sample : image.samples) sum += sample;
    const double mean = sum / static_cast<double>(image.samples.size());
    for (const uint8_t sample : image.samples) squares += std::pow(sample - mean, 2.0);
    return std::sqrt(squares / static_cast<double>(image.samples.size()));
}

TEST_F(Render, FineTexturesOfLargePhotosStayQuiet) {
    const RgbImage photo = threads(1200, 900);
    const GrayImage depth = shaded(120, 90, [](int x, int) { return x; });
    EXPECT_LT(grain(still(photo, depth, "0.2,0", {"--size", "200x150", "--samples", "1"})), 6.0);
    EXPECT_GT(
        grain(still(photo, depth, "0.2,0", {"--size", "200x150", "--samples", "1", "--detail", "full"})),
        25.0);
}

/// "W x H" of the photo as it is uploaded, and what -v says besides.
std::pair<Size, std::string> uploaded(const std::string& photo, const std::string& depth,
                                      const std::string& out, std::vector<std::string> options) {
    options.insert(options.begin(), {"render", photo, depth, "-o", out, "-v"});
    const Outcome outcome = quorvane(options);
    EXPECT_EQ(outcome.code, 0) << outcome.err;
    Size size;
    const size_t at = outcome.err.find("fitted   photo ");
    EXPECT_EQ(std::sscanf(outcome.err.c_str() + (at == std::string::npos ? 0 : at), "fitted photo %d x %d",
                          &size.width, &size.height),
              2)
        << outcome.err;
    return {size, outcome.err};
}

TEST_F(Render, PhotoIsBroughtToWhatThePictureShows) {
    writePng(threads(1200, 900), folder / "p.png");
    const auto texels = [&](std::vector<std::string> options, int drawn, double visible) {
        options.insert(options.end(), {"--size", "200x150"});
        const Size size = uploaded(folder / "p.png", scene("depth.png"), folder / "a.png", options).first;
        return size.width * visible / drawn;
    };
    for (const double visible : {0.6, 0.95}) {
        const std::string frame = visible < 0.8 ? "0.6" : "0.95";
        for (const auto& [options, drawn] :
             {std::pair<std::vector<std::string>, int>{{"--samples", "1"}, 200},
              {{"--supersample", "2"}, 400}}) {
            std::vector<std::string> all = options;
            all.insert(all.end(), {"--frame", frame});
            EXPECT_GE(texels(all, drawn, visible), 1.0) << frame << " of " << drawn;
            EXPECT_LE(texels(all, drawn, visible), 1.25) << frame << " of " << drawn;
        }
    }
    // All pixels that there are, and no more.
    EXPECT_EQ(texels({"--frame", "0.5", "--supersample", "4"}, 1200, 1.0), 1.0);
    EXPECT_EQ(texels({"--frame", "0.8", "--samples", "1", "--detail", "full"}, 1200, 1.0), 1.0);
}

TEST_F(Render, LargeJpegGivesThePictureThatItsPixelsGive) {
    const media::SampleScene scene_of_sixteen = media::makeSampleScene(2560, 1920);
    std::ofstream(folder / "p.jpg", std::ios::binary) << jpegFile(scene_of_sixteen.photo);
    writePng(media::readPhoto(folder / "p.jpg"), folder / "p.png");
    writePng(scene_of_sixteen.depth, folder / "d.png");
    const auto drawn = [&](const std::string& photo, const std::vector<std::string>& options) {
        const auto [size, said] = uploaded(folder / photo, folder / "d.png", folder / "a.png", options);
        EXPECT_THAT(said, HasSubstr(photo + ": 2560 x 1920")) << "the file's own size";
        return std::pair{size, media::readPhoto(folder / "a.png")};
    };
    const std::vector<std::string> small = {"--size", "256x192", "--samples", "1"};
    const auto [size, picture] = drawn("p.jpg", small);
    const auto [size_of_pixels, picture_of_pixels] = drawn("p.png", small);
    EXPECT_EQ(size, size_of_pixels);
    EXPECT_LT(difference(picture, picture_of_pixels), 4.0) << "42 dB";
    // So little is seen that what is decoded at first is too little.
    const std::vector<std::string> wild = {"--size",    "256x192",
                                           "--samples", "1",
                                           "--set",     "rotate_x_boundary=45",
                                           "--set",     "trans_to_rotate_scale=2"};
    const auto [wild_size, wild_picture] = drawn("p.jpg", wild);
    const auto [wild_size_of_pixels, wild_picture_of_pixels] = drawn("p.png", wild);
    EXPECT_GT(wild_size.width, size.width * 3 / 2);
    EXPECT_EQ(wild_size, wild_size_of_pixels);
    EXPECT_EQ(wild_picture.samples, wild_picture_of_pixels.samples);
}

// Composition

/// What gives the picture of version 0.1.0's first builds, which the tuned parameters alone made.
const std::vector<std::string> kAsTuned = {"--frame",  "0.81",   "--pivot",     "off",        "--edges",
                                           "soft",     "--grid", "coarse",      "--samples",  "1",
                                           "--detail", "full",   "--no-doctor", "--renderer", "gl"};

/// That picture by the host alone.
RgbImage tunedStill(const RgbImage& photo, const media::Plane& depth, float x, float y) {
    const Fit fit =
        planFit({photo.width, photo.height}, {depth.width, depth.height}, {photo.width, photo.height}, 4096)
            .fit;
    const RgbImage fitted = media::resample(photo, fit.photo);
    const GrayImage plane = media::toBytes(depth, fit.depth);
    std::unique_ptr<OffscreenContext> context;
    std::unique_ptr<ParallaxView> view;
    media::RgbaImage drawn(photo.width, photo.height);
    testing::internal::CaptureStdout();
    Status status = OffscreenContext::create(&context);
    if (status) status = ParallaxView::create(photo.width, photo.height, 4, &view);
    if (status) status = view->setPhoto({fitted.samples, fitted.width, fitted.height});
    if (status) status = view->setDepth({plane.samples, plane.width, plane.height});
    if (status) status = view->lookAt(x, y);
    if (status) status = view->render();
    if (status) status = view->readPixels({drawn.samples, drawn.width, drawn.height});
    testing::internal::GetCapturedStdout();
    EXPECT_TRUE(status.ok()) << status.message();
    return media::toRgb(drawn);
}

/// An environment in which neither EGL nor OpenGL ES can be loaded.
std::map<std::string, std::string> withoutDriver(const TemporaryFolder& folder) {
    for (const char* library : {"libEGL.so.1", "libGLESv2.so.2"})
        std::ofstream(folder / library) << "not a library\n";
    return {{"LD_LIBRARY_PATH", folder.path()}};
}

TEST_F(Render, ProcessorDrawsWhereThereIsNoGraphicsDriver) {
    const TemporaryFolder libraries;
    render("software.png", {"--renderer", "software"});
    const Outcome outcome =
        quorvane({"render", scene("photo.png"), scene("depth.png"), "-o", folder / "auto.png"},
                 withoutDriver(libraries));
    EXPECT_EQ(outcome.code, 0) << outcome.err;
    EXPECT_EQ(media::readPhoto(folder / "auto.png").samples,
              media::readPhoto(folder / "software.png").samples);

    const Outcome refused = quorvane(
        {"render", scene("photo.png"), scene("depth.png"), "-o", folder / "gl.png", "--renderer", "gl"},
        withoutDriver(libraries));
    EXPECT_EQ(refused.code, 1);
    EXPECT_THAT(refused.err, HasSubstr("no OpenGL ES 2 context could be made"));
    EXPECT_THAT(folder.names(), ElementsAre("auto.png", "software.png"));
}

TEST_F(Render, RenderersDrawTheSamePicture) {
    render("gl.png", {"--renderer", "gl"});
    render("software.png", {"--renderer", "software"});
    const RgbImage gl = media::readPhoto(folder / "gl.png"),
                   software = media::readPhoto(folder / "software.png");
    ASSERT_EQ(gl.width, software.width);
    // Silhouettes are smooth in one of them, and leaves have many.
    double sum = 0;
    for (size_t i = 0; i < gl.samples.size(); ++i) sum += std::abs(gl.samples[i] - software.samples[i]);
    EXPECT_LT(sum / static_cast<double>(gl.samples.size()), 2.0);
}

TEST_F(Render, TimingLinesComeFromTheDriver) {
    const Outcome outcome =
        quorvane({"render", scene("photo.png"), scene("depth.png"), "-o", folder / "a.png", "--renderer",
                  "software", "--timings", folder / "timings.txt"});
    EXPECT_EQ(outcome.code, 2);
    EXPECT_THAT(outcome.err, HasSubstr("--timings has the lines of --renderer gl"));
    EXPECT_THAT(folder.names(), IsEmpty());
    render("a.png", {"--timings", folder / "timings.txt"});
    EXPECT_THAT(folder.names(), ElementsAre("a.png", "timings.txt"));
}

TEST_F(Render, PictureOfTheTunedParametersAloneIsStillToBeHad) {
    const RgbImage photo = media::readPhoto(scene("photo.png"));
    const media::Plane depth = media::readDepthMap(scene("depth.png")).plane;
    for (const auto& [at, x, y] : {std::tuple{"-1,0", -1.0f, 0.0f}, {"0.5,1", 0.5f, 1.0f}}) {
        std::vector<std::string> options = kAsTuned;
        options.push_back("--at=" + std::string(at));
        render("a.png", options);
        EXPECT_EQ(media::readPhoto(folder / "a.png").samples, tunedStill(photo, depth, x, y).samples) << at;
    }
}

uint8_t darkest(const RgbImage& image) {
    return *std::min_element(image.samples.begin(), image.samples.end());
}

// On a white photo, whatever the depth, a border is all that is not white.
TEST_F(Render, NoPictureOfAMotionShowsABorder) {
    const auto white = [](int, int) { return std::array{255, 255, 255}; };
    const std::function<int(int, int)> depths[] = {
        [](int x, int y) { return (x * 7919 + y * 104729) % 256; },
        [](int x, int y) { return (x / 20 + y / 20) % 2 == 0 ? 255 : 0; }};
    const char* const motions[] = {"sway", "nod", "circle", "eight"};
    size_t cases = 0;
    for (const auto& [width, height] : {std::pair{60, 180}, {120, 96}, {180, 60}})
        for (const auto& depth : depths)
            for (const char* set : {"4", "0"}) {
                // So that each motion comes with each set.
                const size_t number = cases++;
                const std::string name = motions[(number + number / 4) % 4];
                SCOPED_TRACE(std::to_string(width) + " x " + std::to_string(height) + ", " + name + ", set " +
                             set);
                writePng(painted(width, height, white), folder / "p.png");
                writePng(shaded(width, height, depth), folder / "d.png");
                const auto drawn = [&](const std::vector<std::string>& options) {
                    std::vector<std::string> arguments = {"render",      folder / "p.png",  folder / "d.png",
                                                          "-o",          folder / "frames", "--force",
                                                          "--no-doctor", "--orientation",   set};
                    arguments.insert(arguments.end(), options.begin(), options.end());
                    EXPECT_EQ(quorvane(arguments).code, 0);
                    for (const std::string& frame : TemporaryFolder::names(folder / "frames"))
                        EXPECT_EQ(darkest(media::readPhoto(folder / "frames/" + frame)), 255) << frame;
                };
                drawn({"--motion", name, "--frames", "7", number / 2 % 2 == 0 ? "--at=0,0" : "--at=-1,1"});
                EXPECT_EQ(darkest(still(painted(width, height, white), shaded(width, height, depth), "1,-1",
                                        {"--orientation", set, "--no-doctor"})),
                          255);
            }
}

TEST_F(Render, MoreIsSeenThanWithTheTunedFrameAndNotMoreThanThereIs) {
    const RgbImage photo = painted(240, 180, [](int, int) { return std::array{255, 255, 255}; });
    const GrayImage depth =
        shaded(240, 180, [](int x, int y) { return std::hypot(x - 120, y - 90) < 50 ? 200 : 60; });
    const auto border = [&](const std::string& frame) {
        return darkest(still(photo, depth, "-1,0", {"--frame", frame})) < 255;
    };
    const auto part = [&] {
        const Outcome outcome =
            quorvane({"render", folder / "p.png", folder / "d.png", "-o", folder / "a.png", "-v"});
        const size_t seen = outcome.err.find(" of each side seen");
        return seen == std::string::npos ? 0.0 : std::stod(outcome.err.substr(seen - 5, 5));
    };
    border("auto");
    const double seen = part();
    EXPECT_GT(seen, 0.85);
    EXPECT_FALSE(border(std::to_string(seen - 0.001)));
    EXPECT_TRUE(border(std::to_string(std::min(1.0, seen + 0.03))));
}

TEST_F(Render, ReducedSwingIsSaid) {
    const std::vector<std::string> arguments = {"render",
                                                scene("photo.png"),
                                                scene("depth.png"),
                                                "-o",
                                                folder / "a.png",
                                                "--set",
                                                "rotate_x_boundary=45",
                                                "--set",
                                                "trans_to_rotate_scale=2"};
    const Outcome outcome = quorvane(arguments);
    EXPECT_EQ(outcome.code, 0);
    EXPECT_THAT(outcome.err, testing::StartsWith("frame: the view swings 0."));
    EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1);
    std::vector<std::string> quiet = arguments;
    quiet.emplace_back("-q");
    EXPECT_EQ(quorvane(quiet).err, "");
}

// The still's place is framed with the motion, so all places of the motion have one frame.
TEST_F(Render, StillsOfOneMotionMatch) {
    const auto part = [&](const std::string& at) {
        const Outcome outcome = quorvane(
            {"render", scene("photo.png"), scene("depth.png"), "-o", folder / "a.png", "-v", "--at=" + at});
        const size_t seen = outcome.err.find(" of each side seen");
        return seen == std::string::npos ? "" : outcome.err.substr(seen - 5, 5);
    };
    EXPECT_NE(part("0,0"), "");
    EXPECT_EQ(part("-1,0"), part("0,0"));
    EXPECT_EQ(part("1,0"), part("0,0"));
    EXPECT_LT(part("1,1"), part("0,0"));
}

TEST_F(Render, PivotIsTheDepthThatStays) {
    const RgbImage photo = painted(200, 200, [](int x, int) {
        return x >= 95 && x < 105 ? std::array{255, 255, 255} : std::array{0, 0, 0};
    });
    const GrayImage depth = shaded(200, 200, [](int, int y) { return y < 100 ? 230 : 10; });
    const auto moved = [&](const std::string& pivot) {
        const std::vector<std::string> options = {"--pivot", pivot, "--invert-depth=no"};
        const auto [near_left, far_left] = barPositions(still(photo, depth, "-1,0", options));
        const auto [near_right, far_right] = barPositions(still(photo, depth, "1,0", options));
        return std::pair{std::abs(near_left - near_right), std::abs(far_left - far_right)};
    };
    const auto [near_with_near, far_with_near] = moved("0.5,0.2");
    EXPECT_LT(near_with_near, 0.8);
    EXPECT_GT(far_with_near, 6.0);
    const auto [near_with_far, far_with_far] = moved("0.5,0.8");
    EXPECT_GT(near_with_far, 6.0);
    EXPECT_LT(far_with_far, 0.8);
    const auto [near_by_itself, far_by_itself] = moved("auto");
    EXPECT_LT(near_by_itself, 0.8);
    EXPECT_GT(far_by_itself, 6.0);
}

TEST_F(Render, SetChangesThePicture) {
    render("a.png");
    render("b.png", {"--set", "fov_scale=1", "--set", "depth_contrast=10"});
    EXPECT_NE(bytesOf(folder / "a.png"), bytesOf(folder / "b.png"));
}

TEST_F(Render, OrientationChoosesTheTunedSet) {
    render("a.png", {"--at", "1,0"});
    render("four.png", {"--at", "1,0", "--orientation", "4"});
    render("seven.png", {"--at", "1,0", "--orientation", "7"});
    render("zero.png", {"--at", "1,0", "--orientation", "0"});
    EXPECT_EQ(bytesOf(folder / "a.png"), bytesOf(folder / "four.png"));
    EXPECT_EQ(bytesOf(folder / "a.png"), bytesOf(folder / "seven.png"));
    EXPECT_NE(bytesOf(folder / "a.png"), bytesOf(folder / "zero.png"));
}

TEST_F(Render, OptionsOfLoopsAreSaidToBeIdleInAStill) {
    const auto said = [this](const std::vector<std::string>& options) {
        std::vector<std::string> arguments = {"render", scene("photo.png"), scene("depth.png"), "-o",
                                              folder / "a.png"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const Outcome outcome = quorvane(arguments);
        EXPECT_EQ(outcome.code, 0) << outcome.err;
        return outcome.err;
    };
    for (const auto& [option, value] :
         {std::pair{"--frames", "60"}, {"--fps", "10"}, {"--motion", "nod"}, {"--amount", "0.5"}}) {
        const std::string line = said({option, value, "--frame", "0.81"});
        EXPECT_THAT(line, testing::StartsWith(std::string("still: ") + option + ": of no effect"));
        EXPECT_EQ(std::count(line.begin(), line.end(), '\n'), 1) << line;
        EXPECT_EQ(said({option, value, "--quiet"}), "");
    }
    EXPECT_THAT(said({"--frames", "60", "--motion", "nod", "--frame", "0.81"}),
                HasSubstr("--frames, --motion"));
    EXPECT_EQ(said({"--frames", "1"}), "") << "which a still has";
}

TEST_F(Render, PropertyFileTunesLikeSet) {
    writeBytes(folder / "tune.prop", "# narrower\nquorvane.para12 = 0.7\n");
    ASSERT_EQ(quorvane({"render", scene("photo.png"), scene("depth.png"), "-o", folder / "a.png"},
                       {{"QUORVANE_PROPERTIES", folder / "tune.prop"}})
                  .code,
              0);
    render("b.png", {"--set", "fov_scale=0.7"});
    EXPECT_EQ(bytesOf(folder / "a.png"), bytesOf(folder / "b.png"));
}

TEST_F(Render, TimingsGoToTheirFileOnly) {
    render("a.png", {"--timings", folder / "times.txt"});
    const std::string lines = bytesOf(folder / "times.txt");
    EXPECT_THAT(lines, HasSubstr("    downsize input image   : "));
    EXPECT_THAT(lines, HasSubstr("draw time                  : "));
}

// On its way back the view passes where it was, and what it saw there is shown again.
TEST_F(Render, FramesOnTheWayBackAreThoseOfTheWayThere) {
    const std::vector<std::string> loop = {"--frames", "8", "--renderer", "gl"};
    std::vector<std::string> timed = loop;
    timed.insert(timed.end(), {"--timings", folder / "times.txt"});
    render("kept.y4m", loop);
    render("drawn.y4m", timed);
    const std::string frames = bytesOf(folder / "drawn.y4m");
    EXPECT_EQ(bytesOf(folder / "kept.y4m"), frames);
    const std::string times = bytesOf(folder / "times.txt");
    size_t drawings = 0;
    for (size_t at = 0; (at = times.find("draw time ", at)) != std::string::npos; ++at) ++drawings;
    EXPECT_EQ(drawings, 8u) << "each frame has its times";
    const size_t first = frames.find("FRAME\n"), second = frames.find("FRAME\n", first + 1);
    const auto frame = [&](size_t number) {
        return frames.substr(first + number * (second - first), second - first);
    };
    EXPECT_EQ(frame(3), frame(1));
    EXPECT_EQ(frame(7), frame(5));
    EXPECT_NE(frame(1), frame(5));
}

TEST_F(Render, VerboseSaysWhatWasChosen) {
    const Outcome outcome = quorvane({"render", scene("photo.png"), scene("depth.png"), "-o",
                                      folder / "a.png", "--verbose", "--grid", "coarse", "--frame", "0.75"});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.out, "");
    EXPECT_THAT(outcome.err, HasSubstr("240 x 180"));
    EXPECT_THAT(outcome.err, HasSubstr("grid     60 x 45 cells"));
    EXPECT_THAT(outcome.err, HasSubstr("0.750 of each side seen"));
}

TEST_F(Render, TerminalShowsProgressUnlessQuiet) {
    if (!hasTerminals()) GTEST_SKIP() << "NO PSEUDO-TERMINALS HERE, THE PROGRESS BAR WAS NOT TESTED";
    const std::vector<std::string> arguments = {
        "render", scene("photo.png"), scene("depth.png"), "-o", folder / "frames/", "--frames", "4"};
    const Outcome shown = Process(arguments, {}, true).wait();
    EXPECT_EQ(shown.code, 0);
    EXPECT_EQ(shown.out, "");
    EXPECT_THAT(shown.err, HasSubstr("4/4"));
    EXPECT_THAT(shown.err, HasSubstr("left"));
    std::vector<std::string> quiet = arguments;
    quiet.insert(quiet.end(), {"--quiet", "--force"});
    EXPECT_EQ(Process(quiet, {}, true).wait().err, "");
}

TEST_F(Render, AFolderThatMayHaveBeenMeantForAClipIsSaidOnATerminal) {
    if (!hasTerminals()) GTEST_SKIP() << "NO PSEUDO-TERMINALS HERE, THE NOTE WAS NOT TESTED";
    const auto said = [&](const std::string& out) {
        const Outcome outcome = Process({"render", scene("photo.png"), scene("depth.png"), "-o", folder / out,
                                         "--frames", "2", "--size", "32x24", "--force"},
                                        {}, true)
                                    .wait();
        EXPECT_EQ(outcome.code, 0) << outcome.err;
        return outcome.err;
    };
    EXPECT_THAT(said("sway"),
                testing::StartsWith("frames: " + (folder / "sway") +
                                    " becomes a folder of 2 pictures; a clip has a name such as " +
                                    (folder / "sway.mp4")));
    EXPECT_THAT(said("sway"), testing::Not(testing::HasSubstr("becomes"))) << "it is one";
    EXPECT_THAT(said("frames/"), testing::Not(testing::HasSubstr("becomes")));
}

TEST_F(Render, StagesAreOneLabelledSheet) {
    const Outcome outcome =
        quorvane({"stages", scene("photo.png"), scene("depth.png"), "-o", folder / "sheet.png"});
    EXPECT_EQ(outcome.code, 0) << outcome.err;
    EXPECT_EQ(outcome.out, "");
    const RgbImage sheet = media::readPhoto(folder / "sheet.png");
    // Four panels of 480 and five margins of 16 across.
    EXPECT_EQ(sheet.width, 4 * 480 + 5 * 16);
}

TEST(Info, NamesTheDriverAndItsLimits) {
    const Outcome outcome = quorvane({"info"});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_THAT(outcome.out, testing::StartsWith("quorvane "));
    EXPECT_THAT(outcome.out, HasSubstr("renderer "));
    EXPECT_THAT(outcome.out, HasSubstr("largest texture "));
}

TEST(Info, JsonSaysTheSame) {
    const Outcome outcome = quorvane({"info", "--json"});
    EXPECT_EQ(outcome.code, 0) << outcome.err;
    const auto report = nlohmann::json::parse(outcome.out);
    const std::string text = quorvane({"info"}).out;
    EXPECT_THAT(text, testing::StartsWith("quorvane " + report["version"].get<std::string>() + "\n"));
    for (const char* key : {"context", "renderer", "vendor", "version"})
        EXPECT_THAT(text, HasSubstr(" " + report["driver"][key].get<std::string>() + "\n")) << key;
    EXPECT_THAT(text, HasSubstr("largest texture        " +
                                std::to_string(report["driver"]["largest_texture"].get<int>())));
}

TEST(Info, JsonSaysWhereThereIsNoDriver) {
    const Outcome outcome = quorvane({"info", "--json"}, {{"__EGL_VENDOR_LIBRARY_DIRS", "/nowhere"}});
    EXPECT_EQ(outcome.code, 0) << outcome.err;
    const auto report = nlohmann::json::parse(outcome.out);
    EXPECT_FALSE(report["version"].get<std::string>().empty());
    EXPECT_FALSE(report["driver"]["missing"].get<std::string>().empty());
}

TEST(Info, JsonListsNetworks) {
    const TemporaryFolder folder;
    const Outcome outcome =
        quorvane({"info", "--models", "--json"}, {{"QUORVANE_ONNXRUNTIME", folder.path()}});
    EXPECT_EQ(outcome.code, 0) << outcome.err;
    const auto models = nlohmann::json::parse(outcome.out)["models"];
    EXPECT_EQ(models["known"][0]["licence"], "Apache-2.0");
    EXPECT_EQ(models["runtime_places"][0]["folder"], folder.path());
    EXPECT_EQ(models["runtime_places"][0]["holds_it"], false);
}

TEST(Sample, WritesAPairOfTheSizeAskedFor) {
    const TemporaryFolder folder;
    EXPECT_EQ(quorvane({"sample", folder / "p.png", folder / "d.png", "--size", "90x70"}).code, 0);
    EXPECT_EQ(media::readPhoto(folder / "p.png").width, 90);
    EXPECT_EQ(media::readDepthMap(folder / "d.png").plane.height, 70);
}

// A clip in software would take three times as long.
TEST_F(Render, ClipInSoftwareHasSamplesAndAStillIsDrawnTwiceAsLarge) {
    const auto drawn = [this](const char* name, const std::vector<std::string>& more) {
        std::vector<std::string> line = {
            "render",     scene("photo.png"), scene("depth.png"), "-o", folder / name,
            "--renderer", "software",         "--frames",         "2",  "-v"};
        line.insert(line.end(), more.begin(), more.end());
        return quorvane(line).err;
    };
    EXPECT_THAT(drawn("a.y4m", {}), HasSubstr("drawn    with 4 samples a pixel"));
    EXPECT_THAT(drawn("a.y4m", {"--supersample", "2"}), HasSubstr("drawn    2 times as large"));
    EXPECT_THAT(drawn("a.png", {}), HasSubstr("drawn    2 times as large"));
    EXPECT_THAT(drawn("frames/", {}), HasSubstr("drawn    2 times as large"));
}

}  // namespace
}  // namespace quorvane::test
