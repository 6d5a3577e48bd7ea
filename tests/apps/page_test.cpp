// Pages to share, and the depth maps of the web element: both need no graphics driver.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "apps/quorvane/drawing/motion.h"
#include "media/clip/share_script.h"
#include "media/picture/picture_file.h"
#include "media/scene/sample_scene.h"
#include "process.h"
#include "quorvane/host/ParallaxView.h"
#include "quorvane/parameters.h"
#include "support/photo_writers/pictures.h"
#include "support/share_page.h"
#include "support/temporary_folder.h"

namespace quorvane::test {
namespace {

using testing::HasSubstr;
using testing::Not;

const std::map<std::string, std::string> kNoDriver = {{"__EGL_VENDOR_LIBRARY_DIRS", "/nowhere"}};

class Page : public testing::Test {
  protected:
    Page() {
        const media::SampleScene scene = media::makeSampleScene(320, 240);
        media::writePng(scene.photo, folder / "photo.png");
        media::writePng(scene.depth, folder / "depth.png");
    }

    Outcome run(const std::string& command, const std::string& out,
                const std::vector<std::string>& options = {},
                std::map<std::string, std::string> environment = {}) const {
        std::vector<std::string> arguments = {command, folder / "photo.png", folder / "depth.png", "-o",
                                              folder / out};
        arguments.insert(arguments.end(), options.begin(), options.end());
        environment.insert(kNoDriver.begin(), kNoDriver.end());
        return quorvane(arguments, environment);
    }

    /// The page without its pictures.
    std::string words(const std::vector<std::string>& options = {}) const {
        const Outcome outcome = run("render", "a.html", options);
        EXPECT_EQ(outcome.code, 0) << outcome.err;
        return wordsOfPage(bytesOf(folder / "a.html"));
    }

    const TemporaryFolder folder;
};

TEST_F(Page, NeedsNoDriver) {
    ASSERT_EQ(quorvane({"info"}, kNoDriver).code, 1) << "there is a driver after all";
    const std::string page = words();
    EXPECT_THAT(page, HasSubstr("width=\"320\" height=\"240\" alt=\"A photo in depth\""));
    EXPECT_THAT(page, HasSubstr("<title>A photo in depth</title>"));
    EXPECT_THAT(page, HasSubstr("motion=\"pointer tilt keys sway\""));
}

TEST_F(Page, TakesTextsMotionAndSize) {
    const std::string page = words(
        {"--alt", "a lake", "--motion", "circle", "--amount", "0.5", "--size", "160", "--frame", "0.7"});
    EXPECT_THAT(page, HasSubstr("width=\"160\" height=\"120\" alt=\"a lake\""));
    EXPECT_THAT(page, HasSubstr("<title>a lake</title>"));
    EXPECT_THAT(page, HasSubstr("motion=\"pointer tilt keys circle\" amount=\"0.5\""));
    EXPECT_THAT(page, HasSubstr("&quot;fov_scale&quot;:0.69999"));
    EXPECT_THAT(words({"--alt", "a lake", "--title", "Dawn"}), HasSubstr("<title>Dawn</title>"));
}

TEST_F(Page, CarriesTheTunedSet) {
    // Of the second set as the README gives it; what is composed and what has gone into the depth left out.
    EXPECT_THAT(words({"--orientation", "0"}), HasSubstr("&quot;rotate_x_boundary&quot;:14,"
                                                         "&quot;rotate_y_boundary&quot;:10,"
                                                         "&quot;border_deadzone&quot;:18"));
    EXPECT_THAT(words({"--frame", "0.81", "--pivot", "off"}), Not(HasSubstr("params=")))
        << "the element has these by itself";
    EXPECT_THAT(words({"--frame", "0.81", "--pivot", "off", "--orientation", "7"}), Not(HasSubstr("params=")))
        << "4 and 7 have the same set";
}

TEST_F(Page, CarriesWhateverAFrameIsDrawnWith) {
    const std::map<std::string, std::string> of_frames = {
        {"rotate_z_trans", "33"},   {"rotate_x_boundary", "5"},
        {"rotate_y_boundary", "6"}, {"trans_to_rotate_scale", "0.5"},
        {"far_offset_ext", "90"},   {"border_deadzone", "40"},
        {"fov_scale", "0.75"}};
    std::vector<std::string> options = {"--set", "depth_contrast=12"};
    for (const auto& [name, value] : of_frames)
        options.insert(options.end(), {"--set", std::string(name).append("=").append(value)});
    const std::string page = words(options);
    for (const auto& [name, value] : of_frames)
        EXPECT_THAT(page, HasSubstr(std::string("&quot;").append(name).append("&quot;:").append(value)));
    EXPECT_THAT(page, Not(HasSubstr("&quot;depth_contrast"))) << "it has gone into the depth";
}

TEST_F(Page, CarriesDevicePropertiesUnlessAnOptionSaysOtherwise) {
    writeBytes(folder / "p.prop", "quorvane.para2=7\nquorvane.para3=8\nquorvane.para12=0.7\n");
    const Outcome outcome = run("render", "a.html", {"--set", "rotate_y_boundary=6"},
                                {{"QUORVANE_PROPERTIES", folder / "p.prop"}});
    ASSERT_EQ(outcome.code, 0) << outcome.err;
    const std::string page = wordsOfPage(bytesOf(folder / "a.html"));
    EXPECT_THAT(page, HasSubstr("&quot;rotate_x_boundary&quot;:7"));
    EXPECT_THAT(page, HasSubstr("&quot;rotate_y_boundary&quot;:6"));
    EXPECT_THAT(page, HasSubstr("&quot;fov_scale&quot;:0.69999"));
}

// Where a frame would show less than half of the photo, the swing gives way.
TEST_F(Page, SwingsNoFartherThanTheProgramDoes) {
    const Outcome outcome = run("render", "a.html",
                                {"--set", "rotate_x_boundary=45", "--set", "rotate_y_boundary=45", "--set",
                                 "trans_to_rotate_scale=2"});
    ASSERT_EQ(outcome.code, 0) << outcome.err;
    const std::string said = "the view swings ", page = wordsOfPage(bytesOf(folder / "a.html"));
    const std::string has = "amount=\"";
    ASSERT_THAT(outcome.err, HasSubstr(said));
    ASSERT_THAT(page, HasSubstr(has));
    EXPECT_NEAR(std::stod(page.substr(page.find(has) + has.size())),
                std::stod(outcome.err.substr(outcome.err.find(said) + said.size())), 0.005);
}

// The element has tables of its own, which have to say the same.
TEST_F(Page, KnowsEveryMotionAndDefault) {
    for (const app::NamedMotion& motion : app::motions()) {
        if (motion.name == std::string("still")) continue;
        const std::string name = motion.name;
        EXPECT_THAT(std::string(media::kShareScript), HasSubstr("\n" + name + ": (turn) =>"));
        // And so have those who choose one.
        EXPECT_THAT(bytesOf(QUORVANE_WEB "/demo/index.html"), HasSubstr("<option>" + name));
        EXPECT_THAT(bytesOf(QUORVANE_WEB "/element/README.md"), HasSubstr("`" + name + "`"));
        EXPECT_THAT(bytesOf(QUORVANE_WEB "/element/custom-elements.json"), HasSubstr(name));
    }
    for (const ParameterInfo& info : ParallaxView::parameters()) {
        if (info.takes_effect == TakesEffect::kNever) continue;
        SCOPED_TRACE(info.name);
        const std::string line = std::string("\n") + info.name + ": ";
        const size_t at = media::kShareScript.find(line);
        ASSERT_NE(at, std::string_view::npos);
        for (const Parameter& parameter : kParameters)
            if (std::string(info.name) == parameter.name) {
                EXPECT_EQ(
                    static_cast<float>(std::atof(media::kShareScript.substr(at + line.size(), 12).data())),
                    static_cast<float>(parameter.of(LibParam())));
            }
        EXPECT_THAT(bytesOf(QUORVANE_WEB "/element/class.d.ts"),
                    HasSubstr(info.name + std::string(": number;")));
    }
}

TEST_F(Page, MovesByItselfAsNamedMotionsDo) {
    EXPECT_THAT(words({"--motion", "zoom+sway"}), HasSubstr("motion=\"pointer tilt keys zoom sway\""));
    EXPECT_THAT(words({"--motion", "still"}), HasSubstr("motion=\"pointer tilt keys\""));
    const Outcome outcome = run("render", "b.html", {"--motion", "x=sin(2)"});
    EXPECT_EQ(outcome.code, 2);
    EXPECT_THAT(outcome.err, HasSubstr("a page moves by names, such as eight or sway+zoom"));
    EXPECT_THAT(folder.names(), testing::ElementsAre("a.html", "depth.png", "photo.png"));
}

TEST_F(Page, CarriesHowOutlinesAreSmoothed) {
    EXPECT_THAT(words({"--samples", "1"}), HasSubstr("antialias=\"none\""));
    EXPECT_THAT(words({"--supersample", "3"}), HasSubstr("antialias=\"3\""));
    for (const char* samples : {"auto", "4"})
        EXPECT_THAT(words({"--samples", samples}), Not(HasSubstr("antialias=\"")));
}

TEST_F(Page, SaysWhichOptionsAreIdle) {
    EXPECT_THAT(run("render", "a.html", {"--frames", "60", "--at", "1,0"}).err,
                HasSubstr("page: --frames, --at: of no effect"));
    EXPECT_EQ(run("render", "a.html", {"--frames", "60", "-q"}).err, "");
}

TEST_F(Page, HoldsNothingOfTheFileButThePicture) {
    if (std::system("exiftool -ver > /dev/null 2>&1") != 0)
        GTEST_SKIP() << "exiftool is not installed; it comes with libimage-exiftool-perl";
    writeBytes(folder / "photo.jpg", jpegFile(media::makeSampleScene(320, 240).photo));
    const std::string tag =
        "exiftool -q -overwrite_original -GPSLatitude=48.1 -GPSLatitudeRef=N -Make=Camera "
        "-Comment=secret -XMP:Creator=secret " +
        folder / "photo.jpg";
    ASSERT_EQ(std::system(tag.c_str()), 0);
    ASSERT_THAT(bytesOf(folder / "photo.jpg"), HasSubstr("secret"));
    const Outcome outcome =
        quorvane({"render", folder / "photo.jpg", folder / "depth.png", "-o", folder / "b.html"}, kNoDriver);
    ASSERT_EQ(outcome.code, 0) << outcome.err;
    const std::string html = bytesOf(folder / "b.html");
    EXPECT_THAT(html, Not(HasSubstr("photo.jpg")));
    for (const char* type : {"image/jpeg", "image/png"}) {
        const std::string picture = fileInPage(html, type);
        ASSERT_NE(picture, "");
        for (const char* trace : {"Exif", "secret", "Camera", "xmp", "ICC_PROFILE"})
            EXPECT_THAT(picture, Not(HasSubstr(trace))) << type;
    }
}

TEST_F(Page, LeavesNothingBehindWhereItFails) {
    const Outcome outcome =
        quorvane({"render", folder / "none.png", folder / "depth.png", "-o", folder / "a.html"}, kNoDriver);
    EXPECT_EQ(outcome.code, 1);
    EXPECT_THAT(folder.names(), testing::ElementsAre("depth.png", "photo.png"));
}

TEST_F(Page, ShapeWritesADepthMapAndPrintsItsAttributes) {
    const Outcome outcome = run("shape", "shaped.png", {"--set", "rotate_x_boundary=20"});
    ASSERT_EQ(outcome.code, 0) << outcome.err;
    EXPECT_THAT(outcome.out, testing::StartsWith("params=\"{"));
    EXPECT_THAT(outcome.out, HasSubstr("&quot;rotate_x_boundary&quot;:20"));
    const media::DepthMap shaped = media::readDepthMap(folder / "shaped.png");
    // 76,800 pixels are more cells than the 50,000 of two triangles that a page draws in time.
    EXPECT_LE(2 * shaped.plane.width * shaped.plane.height, 100000);
    EXPECT_NEAR(static_cast<double>(shaped.plane.width) / shaped.plane.height, 4.0 / 3.0, 0.02);
}

// A page is shown in any size, whatever its photo's is.
TEST_F(Page, SmallPhotosHaveTheWholeDepth) {
    const auto depth_with = [this](const std::vector<std::string>& options) {
        words(options);
        return media::decodeDepthMap(fileInPage(bytesOf(folder / "a.html"), "image/png"), "depth").plane;
    };
    const media::Plane whole = depth_with({}), small = depth_with({"--size", "80"});
    EXPECT_EQ(small.width, whole.width);
    EXPECT_EQ(small.height, whole.height);
}

TEST_F(Page, ShapeGivesWhatThePageHolds) {
    ASSERT_EQ(run("shape", "shaped.png").code, 0);
    words();
    EXPECT_EQ(fileInPage(bytesOf(folder / "a.html"), "image/png"), bytesOf(folder / "shaped.png"));
}

TEST_F(Page, ShapeRefusesWhatIsNoPng) {
    const Outcome outcome = run("shape", "shaped.jpg");
    EXPECT_EQ(outcome.code, 2);
    EXPECT_THAT(outcome.err, HasSubstr("shaped.jpg: the shaped depth map is a .png file"));
    EXPECT_EQ(run("shape", "shaped.html").code, 2);
}

}  // namespace
}  // namespace quorvane::test
