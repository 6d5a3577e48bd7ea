#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "media/picture/picture_file.h"
#include "media/picture/vips.h"
#include "media/scene/sample_scene.h"
#include "phone_photos.h"
#include "process.h"
#include "support/temporary_folder.h"

namespace quorvane::test {
namespace {

using media::GrayImage;
using media::RgbImage;
using nlohmann::json;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using Arguments = std::vector<std::string>;

class Inspect : public testing::Test {
  protected:
    std::string write(const std::string& name, const std::string& bytes) const {
        writeBytes(folder / name, bytes);
        return folder / name;
    }

    static std::string text(Arguments arguments) {
        arguments.insert(arguments.begin(), "inspect");
        const Outcome outcome = quorvane(arguments);
        EXPECT_EQ(outcome.code, 0) << outcome.err;
        EXPECT_EQ(outcome.err, "");
        return outcome.out;
    }

    static json parsed(Arguments arguments) {
        arguments.emplace_back("--json");
        return json::parse(text(arguments));
    }

    static void expectRefused(Arguments arguments, int code, const std::string& said) {
        arguments.insert(arguments.begin(), "inspect");
        SCOPED_TRACE(testing::PrintToString(arguments));
        const Outcome outcome = quorvane(arguments);
        EXPECT_EQ(outcome.code, code);
        EXPECT_EQ(outcome.out, "");
        EXPECT_THAT(outcome.err, HasSubstr(said));
        EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
    }

    const TemporaryFolder folder;
    const RgbImage photo = somePhoto(200, 152);
    const GrayImage plane = somePlane(100, 76);
};

TEST_F(Inspect, JsonSaysWhichEndIsNear) {
    const media::SampleScene scene = media::makeSampleScene(320, 240);
    media::writePng(scene.photo, folder / "a.png");
    media::writePng(scene.depth, folder / "near.png");
    media::writePng(inverted(scene.depth), folder / "far.png");
    const auto polarity = [&](const std::string& depth, const Arguments& options = {}) {
        Arguments arguments = {folder / "a.png", folder / depth};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return parsed(arguments)["depth"]["polarity"];
    };
    const json near = polarity("near.png"), far = polarity("far.png");
    EXPECT_EQ(near["larger"], "near");
    EXPECT_EQ(near["inverted"], false);
    EXPECT_EQ(far["larger"], "far");
    EXPECT_EQ(far["inverted"], true);
    for (const json& judged : {near, far}) {
        EXPECT_GE(judged["confidence"], 0.9);
        EXPECT_LT(judged["confidence"], 1.0);
        EXPECT_EQ(judged["doubtful"], false);
    }
    const auto known = [](bool is_near) {
        return json{{"larger", is_near ? "near" : "far"},
                    {"confidence", 1.0},
                    {"inverted", !is_near},
                    {"doubtful", false}};
    };
    EXPECT_EQ(polarity("far.png", {"--invert-depth=no"}), known(true));
    EXPECT_EQ(polarity("far.png", {"--invert-depth"}), known(false));
    EXPECT_EQ(polarity("far.png", {"--no-doctor"}), known(true));
    // What a container says is no guess. GDepth stores 0 for near.
    const std::string phone = write("phone.jpg", gdepthFile(photo, plane));
    EXPECT_EQ(parsed({phone})["depth"]["polarity"], known(false));
    EXPECT_EQ(parsed({phone, "--invert-depth"})["depth"]["polarity"], known(true));
}

TEST_F(Inspect, JsonHoldsAllThatIsKnown) {
    GDepthOptions options;
    options.original = jpegFile(somePhoto(400, 304));
    options.orientation = 6;
    const std::string bytes = gdepthFile(photo, plane, options);
    const std::string file = write("a.jpg", bytes);
    const json report = parsed({file});
    EXPECT_EQ(report["file"], file);
    EXPECT_EQ(report["kind"], "JPEG");
    EXPECT_EQ(report["bytes"], bytes.size());
    EXPECT_EQ(report["orientation"], 6);
    // The unblurred photo, upright.
    EXPECT_EQ(report["photo"], json({{"width", 304}, {"height", 400}}));
    EXPECT_EQ(report["unblurred_photo"], "GImage:Data");
    EXPECT_EQ(report["remarks"], json::array());

    std::vector<std::string> roles;
    for (const json& image : report["images"]) roles.push_back(image["role"]);
    EXPECT_THAT(roles, testing::UnorderedElementsAre("photo", "depth", "original"));
    for (const json& image : report["images"]) {
        if (image["role"] != "depth") continue;
        EXPECT_EQ(image["where"], "GDepth:Data");
        EXPECT_EQ(image["mime"], "image/png");
        EXPECT_EQ(image["bytes"], pngFile(plane).size());
    }

    const json& depth = report["depth"];
    EXPECT_EQ(depth["source"], "inside");
    EXPECT_EQ(depth["container"], "GDepth");
    EXPECT_EQ(depth["where"], "GDepth:Data");
    EXPECT_EQ(depth["kind"], "inverse range");
    EXPECT_EQ(depth["near"], 0.5);
    EXPECT_EQ(depth["far"], 8.0);
    EXPECT_EQ(depth["units"], "m");
    EXPECT_EQ(depth["bits"], 8);
    EXPECT_EQ(depth["width"], 76);
    EXPECT_EQ(depth["height"], 100);
    EXPECT_EQ(depth["larger_is_nearer"], false);
    EXPECT_THAT(std::string(depth["polarity_reason"]), HasSubstr("0"));
    EXPECT_TRUE(depth["findings"].is_array());
}

// Two samples a pixel's worth: 304 x 400 pixels in cells of 16 are 19 x 25, and 19 * 4 = 76 samples are kept.
TEST_F(Inspect, PlanIsWhatTheRendererTakes) {
    const std::string file = write("a.jpg", gdepthFile(somePhoto(304, 400), somePlane(76, 100)));
    const json plan = parsed({file, "--grid", "coarse"})["plan"];
    EXPECT_EQ(plan["grid"], json({{"width", 19}, {"height", 25}}));
    EXPECT_EQ(plan["photo_pixels_a_cell"], 16);
    EXPECT_EQ(plan["photo"]["from"], json({{"width", 304}, {"height", 400}}));
    EXPECT_EQ(plan["photo"]["to"], json({{"width", 304}, {"height", 400}}));
    EXPECT_EQ(plan["depth"]["to"], json({{"width", 76}, {"height", 100}}));
    const Outcome rendered = quorvane({"render", file, "-o", folder / "a.png", "-v", "--grid", "coarse"});
    EXPECT_THAT(rendered.err, HasSubstr("grid     19 x 25 cells"));
    char memory[40];
    std::snprintf(memory, sizeof memory, "%.1f MB", double{plan["working_memory_bytes"]} / 1e6);
    EXPECT_THAT(rendered.err, HasSubstr(memory));
    // The default size has another aspect by less than a pixel, which cuts nothing off.
    const std::string wide = write("w.jpg", gdepthFile(somePhoto(4001, 100), somePlane(80, 8)));
    const json whole = parsed({wide})["plan"]["photo"]["to"];
    const Outcome drawn = quorvane({"render", wide, "-o", folder / "w.png", "-v"});
    EXPECT_THAT(drawn.err,
                HasSubstr("fitted   photo " + whole["width"].dump() + " x " + whole["height"].dump()));
    EXPECT_THAT(drawn.err, Not(HasSubstr("cut")));
    // Neither divides into cells: both are resampled.
    const json odd = parsed(
        {write("b.jpg", gdepthFile(somePhoto(301, 203), somePlane(50, 33))), "--grid", "coarse"})["plan"];
    EXPECT_EQ(odd["photo"]["from"], json({{"width", 301}, {"height", 203}}));
    EXPECT_EQ(int{odd["photo"]["to"]["width"]} % int{odd["photo_pixels_a_cell"]}, 0);
    EXPECT_EQ(int{odd["depth"]["to"]["width"]}, 4 * int{odd["grid"]["width"]});
}

// Without drawing: what render says that it has chosen.
TEST_F(Inspect, PlanIsThePictureThatIsAskedFor) {
    const std::string file = write("a.jpg", gdepthFile(somePhoto(304, 400), somePlane(76, 100)));
    const std::vector<Arguments> asked = {{},
                                          {"--motion", "circle", "--amount", "0.5"},
                                          {"--size", "300x100"},
                                          {"--frame", "0.7", "--pivot", "0.2,0.3"},
                                          {"--edges", "soft", "--grid", "fine", "--orientation", "0"},
                                          {"--set", "fov_scale=0.6", "--set", "guided_filter_rx=3"}};
    for (const Arguments& options : asked) {
        SCOPED_TRACE(testing::PrintToString(options));
        Arguments inspected = {file}, rendered = {"render", file, "-o", folder / "a.png", "-v"};
        inspected.insert(inspected.end(), options.begin(), options.end());
        rendered.insert(rendered.end(), options.begin(), options.end());
        const json plan = parsed(inspected)["plan"];
        EXPECT_EQ(plan["swing"], 1.0);
        char wanted[40];
        std::snprintf(wanted, sizeof wanted, "%.3f of each side seen", double{plan["frame"]});
        const std::string said = quorvane(rendered).err;
        EXPECT_THAT(said, HasSubstr(wanted));
        // The depth at distance Z: 255 / 35 of (32 - Z) / 0.4 + 32.
        std::snprintf(wanted, sizeof wanted, "shaped depth %.0f of 255",
                      255.0 * ((32.0 - double{plan["pivot"]}) / 0.4 + 32.0) / 35.0);
        EXPECT_THAT(said, HasSubstr(wanted));
    }
    EXPECT_EQ(parsed({file, "--edges", "soft"})["plan"]["edges"], "soft");
    EXPECT_LT(double{parsed({file, "--motion", "circle"})["plan"]["frame"]},
              double{parsed({file, "--motion", "circle", "--amount", "0.2"})["plan"]["frame"]});
}

TEST_F(Inspect, TextSaysTheSameToPeople) {
    const std::string file = write("a.jpg", gdepthFile(somePhoto(304, 400), somePlane(76, 100)));
    const std::string said = text({file, "--grid", "coarse"});
    for (const char* part :
         {"a.jpg: JPEG, ", "304 x 400", "GDepth:Data, image/png, ", "76 x 100, 8 bit",
          "inverse range, near 0.5, far 8 (m)", "larger = farther: ", "photo 304 x 400 -> 304 x 400\n",
          "grid     19 x 25 cells, 16 photo pixels a cell", "MB of working memory"})
        EXPECT_THAT(said, HasSubstr(part));
    EXPECT_THAT(
        text({write("b.jpg", gdepthFile(somePhoto(301, 203), somePlane(50, 33))), "--grid", "coarse"}),
        AllOf(HasSubstr(", resampled\n"), HasSubstr(", scaled\n")));
}

TEST_F(Inspect, EveryContainerIsNamed) {
    for (const PhonePhoto& phone : phonePhotos(photo, somePlane(200, 152))) {
        const std::string file = write("phone.bin", phone.bytes);
        EXPECT_EQ(parsed({file})["depth"]["container"], phone.container);
        EXPECT_THAT(text({file}), HasSubstr("depth    " + phone.container + ", "));
    }
}

TEST_F(Inspect, OtherSourcesAreNamed) {
    const std::string file = write("a.jpg", jpegFile(photo));
    const std::string depth = write("d.png", pngFile(plane));
    EXPECT_EQ(parsed({file, depth})["depth"]["source"], "given");
    EXPECT_EQ(parsed({file, depth})["depth"]["file"], depth);
    EXPECT_EQ(parsed({file, "--depth-cmd", "sh -c 'cp \"" + depth + "\" {out}' {in}"})["depth"]["source"],
              "command");
    const std::string rgbd =
        write("rgbd.png", sideBySideFile(somePhoto(64, 48), somePlane(64, 48), media::DepthHalf::kBelow));
    const json halves = parsed({rgbd, "--rgbd", "below"});
    EXPECT_EQ(halves["depth"]["source"], "side by side");
    EXPECT_EQ(halves["photo"], json({{"width", 64}, {"height", 48}}));
    write("a-depth.png", pngFile(plane));
    EXPECT_EQ(parsed({file})["depth"]["source"], "neighbour");
    EXPECT_THAT(text({file}),
                HasSubstr("depth    neighbour, " + (folder / "a-depth.png") + ": 100 x 76, 8 bit"));
}

TEST_F(Inspect, PhotoWithoutDepthIsNoError) {
    const std::string file = write("a.jpg", jpegFile(photo));
    EXPECT_THAT(text({file}),
                AllOf(HasSubstr("a.jpg: JPEG"), HasSubstr("200 x 152"),
                      HasSubstr("depth    none: no depth found inside"), HasSubstr("--depth-cmd")));
    const json report = parsed({file});
    EXPECT_TRUE(report["depth"].is_null());
    EXPECT_THAT(std::string(report["no_depth"]), HasSubstr("messengers"));
    EXPECT_TRUE(report.at("plan").is_null());
}

/// A picture file of 108 megapixels, black: 324 MB as a photo.
constexpr int kHugeWidth = 12000, kHugeHeight = 9000;
constexpr double kFarFromWholeMb = 200.0;

std::string hugeFile(const std::string& path) {
    media::startVips();
    vips::VImage::black(kHugeWidth, kHugeHeight).write_to_file(path.c_str());
    return path;
}

TEST_F(Inspect, WithoutDepthOnlyTheHeaderIsRead) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "A SANITIZED PROGRAM TAKES MORE, MEMORY WAS NOT MEASURED";
#endif
    for (const char* name : {"a.jpg", "a.png"}) {
        SCOPED_TRACE(name);
        const Outcome outcome = quorvane({"inspect", hugeFile(folder / name), "--json"});
        ASSERT_EQ(outcome.code, 0) << outcome.err;
        EXPECT_EQ(json::parse(outcome.out)["photo"], json({{"width", kHugeWidth}, {"height", kHugeHeight}}));
        EXPECT_LT(outcome.peak_mb, kFarFromWholeMb);
    }
}

TEST_F(Inspect, WithDepthThePhotoIsShrunkWhileItIsDecoded) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "A SANITIZED PROGRAM TAKES MORE, MEMORY WAS NOT MEASURED";
#endif
    const std::string depth = write("d.png", pngFile(plane));
    const Outcome outcome = quorvane({"inspect", hugeFile(folder / "a.jpg"), depth, "--json"});
    ASSERT_EQ(outcome.code, 0) << outcome.err;
    const json report = json::parse(outcome.out);
    const json whole = {{"width", kHugeWidth}, {"height", kHugeHeight}};
    EXPECT_EQ(report["photo"], whole);
    EXPECT_EQ(report["plan"]["photo"]["from"], whole);
    EXPECT_LT(outcome.peak_mb, kFarFromWholeMb);
}

TEST_F(Inspect, DamageIsReported) {
    GDepthOptions unreadable;
    unreadable.data = base64(pngFile(plane).substr(0, 150));
    const json broken = parsed({write("a.jpg", gdepthFile(photo, plane, unreadable))});
    EXPECT_TRUE(broken["depth"].is_null());
    EXPECT_THAT(std::string(broken["no_depth"]), HasSubstr("a.jpg: "));

    GDepthOptions no_data;
    no_data.data = "!!!";
    const std::string file = write("b.jpg", gdepthFile(photo, plane, no_data));
    EXPECT_EQ(parsed({file})["remarks"].size(), 1u);
    EXPECT_THAT(text({file}), HasSubstr("damaged  GDepth: "));

    GDepthOptions blurred;
    blurred.original = jpegFile(photo).substr(0, 700);
    EXPECT_THAT(text({write("c.jpg", gdepthFile(photo, plane, blurred))}),
                HasSubstr("damaged  the unblurred photo"));
}

TEST_F(Inspect, WhatIsNoPictureIsAnError) {
    expectRefused({folder / "none.jpg"}, 1, "none.jpg: No such file");
    expectRefused({write("text.jpg", "hello")}, 1, "text.jpg: not a JPEG");
    expectRefused({write("cut.jpg", jpegFile(photo).substr(0, 900))}, 1, "cut.jpg: ");
    expectRefused({write("a.jpg", jpegFile(photo)), folder / "none.png"}, 1, "none.png: No such file");
    expectRefused({}, 2, "PHOTO");
}

TEST_F(Inspect, WordsOfAFileDoNothingToATerminal) {
    const std::string name = "a\n\x1b[2J\xff.jpg";
    const std::string file = write(name, gdepthFile(photo, plane));
    const std::string said = text({file});
    EXPECT_THAT(said, Not(HasSubstr("\x1b")));
    EXPECT_THAT(said, HasSubstr("a??[2J"));
    // \xff is no UTF-8.
    EXPECT_THAT(std::string(parsed({file})["file"]), HasSubstr("a\n\x1b[2J\xef\xbf\xbd.jpg"));
}

TEST_F(Inspect, SheetIsThatOfTheStages) {
    const std::string file = write("a.jpg", gdepthFile(photo, plane));
    const Outcome outcome = quorvane({"inspect", file, "-o", folder / "inspected.png"});
    EXPECT_EQ(outcome.code, 0) << outcome.err;
    // Nothing of the renderer's comes between.
    EXPECT_EQ(outcome.out, text({file}));
    ASSERT_EQ(quorvane({"stages", file, "-o", folder / "stages.png"}).code, 0);
    EXPECT_EQ(bytesOf(folder / "inspected.png"), bytesOf(folder / "stages.png"));

    expectRefused({file, "-o", folder / "sheet.jpg"}, 2, "sheet.jpg");
    expectRefused({file, "-o", file}, 2, "a.jpg");
    const std::string bare = write("b.jpg", jpegFile(photo));
    expectRefused({bare, "-o", folder / "b.png"}, 1, "no depth found");
    EXPECT_FALSE(std::filesystem::exists(folder / "b.png"));
}

// A file whose output is lost is no success.
TEST_F(Inspect, LostOutputIsTold) {
    const std::string file = write("a.jpg", jpegFile(photo));
    const Outcome outcome = quorvane({"inspect", file}, {}, [] {
        if (std::freopen("/dev/full", "w", stdout) == nullptr) _exit(99);
    });
    EXPECT_EQ(outcome.code, 1);
    EXPECT_THAT(outcome.err, HasSubstr("standard output: cannot be written"));
}

}  // namespace
}  // namespace quorvane::test
