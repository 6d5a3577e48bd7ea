// Where the depth of a photo comes from when the program is left to find it, and which place wins.

#include "apps/quorvane/input/depth_source.h"

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

namespace fs = std::filesystem;
using media::GrayImage;
using media::RgbImage;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using Arguments = std::vector<std::string>;

class DepthSource : public testing::Test {
  protected:
    /// Renders a still from one side, where every depth shows, and expects success. Returns what was said.
    std::string render(Arguments inputs, const std::string& out) const {
        inputs.insert(inputs.begin(), "render");
        inputs.insert(inputs.end(), {"-o", folder / out, "--at=1,0"});
        const Outcome outcome = quorvane(inputs);
        EXPECT_EQ(outcome.code, 0) << outcome.err;
        EXPECT_EQ(outcome.out, "");
        return outcome.err;
    }

    std::string still(const Arguments& inputs) const {
        render(inputs, "still.png");
        return bytesOf(folder / "still.png");
    }

    std::string write(const std::string& name, const std::string& bytes) const {
        writeBytes(folder / name, bytes);
        return folder / name;
    }

    void expectRefused(const Arguments& arguments, int code, const testing::Matcher<std::string>& said) {
        SCOPED_TRACE(testing::PrintToString(arguments));
        const std::vector<std::string> before = folder.names();
        const Outcome outcome = quorvane(arguments);
        EXPECT_EQ(outcome.code, code);
        EXPECT_EQ(outcome.out, "");
        EXPECT_THAT(outcome.err, testing::StartsWith("quorvane: "));
        EXPECT_THAT(outcome.err, said);
        EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
        EXPECT_EQ(folder.names(), before) << "something was left behind";
    }

    const TemporaryFolder folder;
    const RgbImage photo = somePhoto(192, 144);
    const GrayImage plane = somePlane(192, 144);
};

// Each file stands against itself with the plane, larger = nearer, as a file of its own.
TEST_F(DepthSource, PhotoOfEveryContainerRendersByItself) {
    const std::string flat =
        still({write("photo.jpg", jpegFile(photo)), write("flat.png", pngFile(GrayImage(192, 144)))});
    for (const PhonePhoto& phone : phonePhotos(photo, plane)) {
        SCOPED_TRACE(phone.container);
        const std::string file = write("phone.bin", phone.bytes);
        const std::string depth = write("depth.bin", phone.lossy          ? phone.raw
                                                     : phone.zero_is_near ? pngFile(inverted(plane))
                                                                          : pngFile(plane));
        const std::string by_itself = still({file, "--no-doctor"});
        EXPECT_EQ(by_itself, still({file, depth, "--no-doctor"}));
        EXPECT_NE(by_itself, flat) << "the depth does not show";
    }
}

TEST_F(DepthSource, ClipAndSheetAreMadeFromAPhotoAlone) {
    const std::string file = write("gdepth.jpg", gdepthFile(photo, plane));
    for (const char* name : {"a.mp4", "a.webp", "a.gif"}) {
        const Outcome clip = quorvane({"render", file, "-o", folder / name, "--frames", "3"});
        EXPECT_EQ(clip.code, 0) << clip.err;
        EXPECT_GT(fs::file_size(folder / name), 200u);
    }
    EXPECT_EQ(quorvane({"stages", file, "-o", folder / "sheet.png"}).code, 0);
    EXPECT_EQ(media::readPhoto(folder / "sheet.png").width, 4 * 480 + 5 * 16);
}

TEST_F(DepthSource, UnblurredPhotoGoesWithTheDepthInside) {
    RgbImage sharp = photo;
    std::reverse(sharp.samples.begin(), sharp.samples.end());
    GDepthOptions options;
    options.original = jpegFile(sharp);
    const std::string file = write("portrait.jpg", gdepthFile(photo, plane, options));
    const std::string depth = write("depth.png", pngFile(inverted(plane)));
    EXPECT_EQ(still({file, "--no-doctor"}),
              still({write("sharp.jpg", options.original), depth, "--no-doctor"}));
    // With a depth map of the user's, the photo is what viewers show.
    EXPECT_EQ(still({file, depth, "--no-doctor"}),
              still({write("photo.jpg", jpegFile(photo)), depth, "--no-doctor"}));
}

TEST_F(DepthSource, UnblurredPhotoThatIsDamagedIsLeftOutAndNamed) {
    GDepthOptions options;
    options.original = jpegFile(photo).substr(0, 700);
    const std::string file = write("portrait.jpg", gdepthFile(photo, plane, options));
    const std::string said = render({file, "--no-doctor"}, "a.png");
    EXPECT_THAT(said, HasSubstr("unblurred"));
    EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1) << said;
    EXPECT_EQ(bytesOf(folder / "a.png"), still({write("photo.jpg", jpegFile(photo)),
                                                write("d.png", pngFile(inverted(plane))), "--no-doctor"}));
}

TEST_F(DepthSource, GivenDepthWinsOverThatInside) {
    const std::string file = write("gdepth.jpg", gdepthFile(photo, plane));
    const std::string other = write("other.png", pngFile(plane));
    EXPECT_EQ(still({file, other, "--no-doctor"}),
              still({write("photo.jpg", jpegFile(photo)), other, "--no-doctor"}));
    EXPECT_NE(still({file, other, "--no-doctor"}), still({file, "--no-doctor"}));
}

TEST_F(DepthSource, DepthInsideWinsOverANeighbour) {
    const std::string file = write("a.jpg", gdepthFile(photo, plane));
    const std::string alone = still({file, "--no-doctor"});
    write("a_depth.png", pngFile(plane));
    EXPECT_EQ(still({file, "--no-doctor"}), alone);
    EXPECT_EQ(render({file, "--no-doctor"}, "b.png"), "");
}

TEST_F(DepthSource, NeighbourIsUsedAndNamed) {
    const std::string file = write("a.jpg", jpegFile(photo));
    const std::string depth = write("a_depth.png", pngFile(plane));
    const std::string given = still({file, depth, "--no-doctor"});
    EXPECT_EQ(render({file, "--no-doctor"}, "b.png"), "depth: " + depth + ", found next to the photo\n");
    EXPECT_EQ(bytesOf(folder / "b.png"), given);
    EXPECT_EQ(render({file, "--no-doctor", "--quiet"}, "c.png"), "");
    EXPECT_EQ(bytesOf(folder / "c.png"), given);
}

TEST_F(DepthSource, FirstNeighbourInTheOrderIsTaken) {
    fs::create_directory(folder / "depth");
    const std::string file = write("a.b.jpg", jpegFile(photo));
    const auto chosen = [&] {
        const Outcome outcome = quorvane({"inspect", file, "--json"});
        EXPECT_EQ(outcome.code, 0) << outcome.err;
        const auto report = nlohmann::json::parse(outcome.out);
        if (report["depth"].is_null()) return std::string();
        EXPECT_EQ(report["depth"]["source"], "neighbour");
        return fs::relative(std::string(report["depth"]["file"]), folder.path()).string();
    };
    // None of these is one.
    for (const char* name : {"a.b_depth.txt", "a.b_depth", "a_depth.png", "b.a.b_depth.png", "a.b_depth2.png",
                             "depth/a.png", "A.B_depth.png"})
        write(name, pngFile(plane));
    fs::create_directory(folder / "a.b_depth.png");
    fs::create_symlink(file, folder / "a.b_depth.tif");
    EXPECT_EQ(chosen(), "");
    fs::remove(folder / "a.b_depth.png");
    // From the last in the order to the first, each beside those before.
    for (const char* name :
         {"depth/a.b.jpeg", "depth/a.b.PNG", "a.b-depth16.png", "a.b_depth16.png", "a.b-depth.webp",
          "a.b_depth.jpeg", "a.b_depth.JPG", "a.b_depth.avif", "a.b_depth.heic", "a.b_depth.WebP",
          "a.b_depth.tiff", "a.b_depth.TIF", "a.b_depth.png", "a.b_depth.PNG"}) {
        write(name, pngFile(plane));
        EXPECT_EQ(chosen(), name);
    }
}

TEST_F(DepthSource, PhotoIsNotItsOwnNeighbour) {
    fs::create_symlink(".", folder / "depth");
    const std::string file = write("a.png", pngFile(plane));
    expectRefused({"render", file, "-o", folder / "b.png"}, 1, HasSubstr("no depth found"));
}

TEST_F(DepthSource, PhotoInTheWorkingFolderFindsItsNeighbour) {
    write("a.jpg", jpegFile(photo));
    write("a_depth.png", pngFile(plane));
    const Outcome outcome = quorvane({"render", "a.jpg", "-o", "b.png", "--no-doctor"}, {}, [this] {
        if (chdir(folder.path().c_str()) != 0) _exit(99);
    });
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.err, "depth: a_depth.png, found next to the photo\n");
}

TEST_F(DepthSource, NeighbourIsNeverOverwritten) {
    fs::create_directory(folder / "depth");
    const std::string file = write("00001.jpg", jpegFile(photo));
    const std::string depth = write("depth/00001.png", pngFile(plane));
    const std::string before = bytesOf(depth);
    expectRefused({"render", file, "-o", depth}, 1, HasSubstr("is an input"));
    expectRefused({"stages", file, "-o", depth}, 1, HasSubstr("is an input"));
    expectRefused({"inspect", file, "-o", depth}, 1, HasSubstr("is an input"));
    expectRefused({"render", file, "-o", folder / "a.png", "--timings", depth}, 1, HasSubstr("is an input"));
    expectRefused({"render", file, "-o", folder / "depth", "--force"}, 1, HasSubstr("holds the input"));
    EXPECT_EQ(bytesOf(depth), before);
}

TEST_F(DepthSource, NoDepthSaysWhatWasLookedForAndWhatToDo) {
    const std::string file = write("a.jpg", jpegFile(photo));
    for (const char* command : {"render", "stages"})
        expectRefused(
            {command, file, "-o", folder / "b.png"}, 1,
            AllOf(HasSubstr("a.jpg: no depth found"), HasSubstr("a_depth.*"), HasSubstr("depth/a.*"),
                  HasSubstr("messengers and editors"), HasSubstr("DEPTH"), HasSubstr("--right"),
                  HasSubstr("--pair"), HasSubstr("--depth-model"), HasSubstr("--depth-cmd")));
}

TEST_F(DepthSource, DamagedContainerIsNamedWhenThereIsNoDepth) {
    GDepthOptions options;
    options.data = "!!!";
    const std::string file = write("a.jpg", gdepthFile(photo, plane, options));
    expectRefused({"render", file, "-o", folder / "b.png"}, 1,
                  AllOf(HasSubstr("no depth found inside (GDepth: "), HasSubstr("), nor next to it")));
}

// Halves.

TEST_F(DepthSource, SideBySideIsCutInHalves) {
    media::writePng(photo, folder / "photo.png");
    const std::string given =
        still({folder / "photo.png", write("depth.png", pngFile(plane)), "--no-doctor"});
    const std::pair<const char*, media::DepthHalf> sides[] = {{"right", media::DepthHalf::kRight},
                                                              {"left", media::DepthHalf::kLeft},
                                                              {"below", media::DepthHalf::kBelow},
                                                              {"above", media::DepthHalf::kAbove}};
    for (const auto& [side, half] : sides)
        for (const int between : {0, 1}) {
            SCOPED_TRACE(side);
            const std::string file = write("rgbd.png", sideBySideFile(photo, plane, half, between));
            EXPECT_EQ(still({file, "--rgbd", side, "--no-doctor"}), given);
        }
}

// How the depth lies.

TEST_F(DepthSource, RotateDepthTurnsClockwise) {
    const std::string file = write("a.jpg", jpegFile(photo));
    const std::string upright = still({file, write("d.png", pngFile(plane)), "--no-doctor"});
    const auto stored = [&](const vips::VImage& image) {
        return write("t.png", pngFile(media::fromVips<uint8_t, 1>(image)));
    };
    const vips::VImage image = media::toVips(plane);
    // A map that lies turned against the clock comes upright with the clock.
    EXPECT_EQ(still({file, stored(image.rot(VIPS_ANGLE_D270)), "--no-doctor", "--rotate-depth", "90"}),
              upright);
    EXPECT_EQ(still({file, stored(image.rot(VIPS_ANGLE_D180)), "--no-doctor", "--rotate-depth", "180"}),
              upright);
    EXPECT_EQ(still({file, stored(image.rot(VIPS_ANGLE_D90)), "--no-doctor", "--rotate-depth", "270"}),
              upright);
    EXPECT_EQ(still({file, stored(image.flip(VIPS_DIRECTION_HORIZONTAL)), "--no-doctor", "--rotate-depth",
                     "mirror"}),
              upright);
    EXPECT_EQ(
        still({file, stored(image.flip(VIPS_DIRECTION_VERTICAL)), "--no-doctor", "--rotate-depth", "flip"}),
        upright);
    const vips::VImage on_its_side = image.rot(VIPS_ANGLE_D90);
    EXPECT_EQ(still({file, stored(on_its_side.flip(VIPS_DIRECTION_HORIZONTAL)), "--no-doctor",
                     "--rotate-depth", "transpose"}),
              upright);
    EXPECT_EQ(still({file, stored(on_its_side.flip(VIPS_DIRECTION_VERTICAL)), "--no-doctor", "--rotate-depth",
                     "transverse"}),
              upright);
}

TEST_F(DepthSource, InvertDepthWorksOnDepthInside) {
    const std::string file = write("a.jpg", gdepthFile(photo, plane));
    EXPECT_EQ(still({file, "--invert-depth", "--no-doctor"}),
              still({file, write("d.png", pngFile(plane)), "--no-doctor"}));
}

/// The levels handed to the renderer.
std::vector<uint8_t> levelsDrawn(const Arguments& inputs, const std::string& stages) {
    Arguments call = {"stages", "--edges", "soft", "--grid", "coarse", "--force", "-o", stages};
    call.insert(call.begin() + 1, inputs.begin(), inputs.end());
    const Outcome outcome = quorvane(call);
    EXPECT_EQ(outcome.code, 0) << outcome.err;
    const media::Plane plane = media::readDepthMap(stages + "depth.png").plane;
    return {plane.samples.begin(), plane.samples.end()};
}

TEST_F(DepthSource, LevelsAreSpreadOverTheirRangeUnlessTheDoctorIsSentAway) {
    const std::string file = write("a.jpg", jpegFile(photo));
    GrayImage narrow(192, 144), full(192, 144);
    for (size_t i = 0; i < narrow.samples.size(); ++i) {
        const size_t row = i / 192;
        narrow.samples[i] = static_cast<uint8_t>(90 + row * 51 / 143);
        full.samples[i] = static_cast<uint8_t>((narrow.samples[i] - 90) * 5);
    }
    const std::string depth = write("d.png", pngFile(narrow));
    EXPECT_EQ(levelsDrawn({file, depth, "--no-doctor"}, folder / "as-it-is/"), narrow.samples);
    EXPECT_EQ(levelsDrawn({file, depth}, folder / "spread/"), full.samples);
}

TEST_F(DepthSource, HolesAreFilledOrKeptAsWished) {
    const std::string file = write("a.jpg", jpegFile(photo));
    // Ground, with a window that may be sky: one large piece, well below all other levels.
    GrayImage depth(192, 144);
    for (size_t i = 0; i < depth.samples.size(); ++i) {
        const size_t x = i % 192, y = i / 192;
        const bool window = x >= 40 && x < 100 && y >= 20 && y < 60;
        depth.samples[i] = window ? uint8_t{0} : static_cast<uint8_t>(100 + y);
    }
    const std::string map = write("d.png", pngFile(depth));
    const size_t inside = 40 * 192 + 70;
    for (const auto& [holes, filled] : {std::pair{"auto", false}, {"fill", true}, {"keep", false}}) {
        SCOPED_TRACE(holes);
        const std::vector<uint8_t> levels =
            levelsDrawn({file, map, "--invert-depth=no", "--holes", holes}, folder / "st/");
        // The ground around it goes from 18 % to 42 % of its own range.
        EXPECT_EQ(levels[inside] > 30, filled) << static_cast<int>(levels[inside]);
    }
    expectRefused({"render", file, map, "-o", folder / "b.png", "--holes", "leave"}, 2,
                  HasSubstr("--holes leave: auto, fill or keep is wanted"));
}

TEST_F(DepthSource, InvertDepthMayHaveAnAnswerBehindEquals) {
    const media::SampleScene scene = media::makeSampleScene(320, 240);
    media::writePng(scene.photo, folder / "a.png");
    media::writePng(scene.depth, folder / "near.png");
    media::writePng(inverted(scene.depth), folder / "far.png");
    const auto with = [&](const std::string& depth, const Arguments& options) {
        Arguments all = {folder / "a.png", folder / depth};
        all.insert(all.end(), options.begin(), options.end());
        return still(all);
    };
    const std::string right = with("near.png", {});
    const std::string inside_out = with("near.png", {"--invert-depth"});
    ASSERT_NE(right, inside_out);
    EXPECT_EQ(with("far.png", {"--invert-depth"}), right);
    EXPECT_EQ(with("far.png", {"--invert-depth=yes"}), right);
    EXPECT_EQ(with("far.png", {"--invert-depth=no"}), inside_out);
    EXPECT_EQ(with("far.png", {"--invert-depth=auto"}), right);
    EXPECT_EQ(with("near.png", {"--invert-depth=auto"}), right);
    // The last one counts, as a script's own option before the user's.
    EXPECT_EQ(with("far.png", {"--invert-depth=no", "--invert-depth"}), right);
    const Arguments call = {"render", folder / "a.png", folder / "far.png", "-o", folder / "b.png"};
    Arguments maybe = call, apart = call;
    maybe.emplace_back("--invert-depth=maybe");
    expectRefused(maybe, 2, HasSubstr("--invert-depth=maybe: yes, no or auto is wanted"));
    apart.insert(apart.end(), {"--invert-depth", "no"});
    expectRefused(apart, 2, HasSubstr("no: one argument too many"));
}

TEST_F(DepthSource, DoctorPutsATurnedDepthRightAndSaysSo) {
    const media::SampleScene scene = media::makeSampleScene(320, 240);
    media::writePng(scene.photo, folder / "a.png");
    media::writePng(scene.depth, folder / "upright.png");
    media::toVips(scene.depth).rot(VIPS_ANGLE_D90).write_to_file((folder / "turned.png").c_str());
    const Arguments turned = {folder / "a.png", folder / "turned.png"};
    const auto with = [&turned](const Arguments& more) {
        Arguments all = turned;
        all.insert(all.end(), more.begin(), more.end());
        return all;
    };
    const std::string upright = still({folder / "a.png", folder / "upright.png"});
    const std::string said = render(turned, "b.png");
    EXPECT_THAT(said, HasSubstr("depth: turned "));
    EXPECT_EQ(bytesOf(folder / "b.png"), upright);
    EXPECT_EQ(render(with({"--quiet"}), "c.png"), "");
    EXPECT_EQ(bytesOf(folder / "c.png"), upright);
    EXPECT_EQ(render(with({"--no-doctor"}), "d.png"), "");
    EXPECT_NE(bytesOf(folder / "d.png"), upright);
    // What the user turned stays as he turned it: here upside down.
    EXPECT_THAT(render(with({"--rotate-depth", "90"}), "e.png"), Not(HasSubstr("turned")));
    EXPECT_NE(bytesOf(folder / "e.png"), upright);
}

TEST_F(DepthSource, VerboseSaysWhereTheDepthWas) {
    GDepthOptions options;
    options.original = jpegFile(photo);
    const std::string said = render({write("a.jpg", gdepthFile(photo, plane, options)), "-v"}, "b.png");
    EXPECT_THAT(said, HasSubstr("the unblurred one"));
    EXPECT_THAT(said, HasSubstr("(GDepth): 192 x 144, 8 bit"));
}

TEST_F(DepthSource, OneSourceAtATime) {
    const std::string file = write("a.jpg", jpegFile(photo));
    const std::string depth = write("d.png", pngFile(plane));
    const Arguments out = {"-o", folder / "b.png"};
    const auto with = [&](Arguments arguments) {
        arguments.insert(arguments.begin(), "render");
        arguments.insert(arguments.end(), out.begin(), out.end());
        return arguments;
    };
    expectRefused(with({file, depth, "--rgbd", "right"}), 2, HasSubstr("DEPTH excludes --rgbd"));
    expectRefused(with({file, depth, "--depth-cmd", "x {in} {out}"}), 2,
                  HasSubstr("DEPTH excludes --depth-cmd"));
    expectRefused(with({file, "--rgbd", "left", "--depth-cmd", "x {in} {out}"}), 2, HasSubstr("excludes"));
    expectRefused(with({file, depth, "--rotate-depth", "45"}), 2, HasSubstr("--rotate-depth"));
    expectRefused(with({file, "--rgbd", "behind"}), 2, HasSubstr("--rgbd"));
}

TEST(Finding, NamesTheOptionThatPutsItRight) {
    using media::FindingKind;
    EXPECT_EQ(
        app::textOf({FindingKind::kTurned, 0.5, false, "lies", {media::kClockwise90, media::kClockwise270}}),
        "lies; --rotate-depth 90 or 270 turns it");
    EXPECT_EQ(app::textOf({FindingKind::kTurned, 0.5, false, "lies", {media::kMirrored}}),
              "lies; --rotate-depth mirror turns it");
    EXPECT_EQ(app::textOf({FindingKind::kPolarity, 0.5, false, "may be", {}, true}),
              "may be; --invert-depth=yes inverts it");
    EXPECT_EQ(app::textOf({FindingKind::kPolarity, 0.6, true, "inverted", {}, false}),
              "inverted; --invert-depth=no leaves it");
    EXPECT_EQ(app::textOf({FindingKind::kHoles, 0.5, false, "may be", {}, {}, true}),
              "may be; --holes fill fills it");
    EXPECT_EQ(app::textOf({FindingKind::kHoles, 1.0, true, "filled"}), "filled");
}

}  // namespace
}  // namespace quorvane::test
