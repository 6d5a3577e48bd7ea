// The window itself, on a display of its own, driven as a hand would.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>
#include <thread>

#include "apps/tuner/core/profiles.h"
#include "apps/tuner/core/recording.h"
#include "drop.h"
#include "media/picture/picture_file.h"
#include "media/scene/sample_scene.h"
#include "support/temporary_folder.h"
#include "system/child_process.h"
#include "system/error.h"

namespace quorvane::tuner {
namespace {

using testing::HasSubstr;

using Clock = std::chrono::steady_clock;

// Other tests may have the processors meanwhile, and sanitizers are slower by ten.
constexpr auto kPatience = std::chrono::seconds(90);
constexpr auto kGlance = std::chrono::milliseconds(30);

bool waitFor(const std::function<bool()>& done) {
    for (const auto end = Clock::now() + kPatience; Clock::now() < end;) {
        if (done()) return true;
        std::this_thread::sleep_for(kGlance);
    }
    return false;
}

/// A display without a screen; none where Xvfb or xdotool is missing.
class Display {
  public:
    Display() {
        const std::string number = folder / "number";
        try {
            m_server = std::make_unique<ChildProcess>(
                std::vector<std::string>{
                    "sh", "-c",
                    "exec Xvfb -displayfd 3 -screen 0 1400x900x24 -nolisten tcp 3>'" + number + "'"},
                ChildFiles());
        } catch (const Error&) {
            return;
        }
        waitFor([&] {
            m_name = test::bytesOf(number);
            return (!m_name.empty() && m_name.back() == '\n') || m_server->ended();
        });
        if (!m_name.empty()) m_name = ":" + m_name.substr(0, m_name.size() - 1);
    }

    const std::string& name() const { return m_name; }

    static Display& shared() {
        static Display display;
        return display;
    }

  private:
    const test::TemporaryFolder folder;
    std::unique_ptr<ChildProcess> m_server;
    std::string m_name;
};

bool isInstalled(const char* program) {
    return std::system(("command -v " + std::string(program) + " >/dev/null 2>&1").c_str()) == 0;
}

/// Runs to its end; what it prints goes nowhere.
bool succeeds(const std::vector<std::string>& words) {
    ChildProcess process(words, ChildFiles());
    return process.wait().succeeded();
}

struct Control {
    int x = 0, y = 0, width = 0, height = 0;
    std::string value;
};

class TunerWindow : public testing::Test {
  protected:
    void SetUp() override {
        if (!isInstalled("Xvfb") || !isInstalled("xdotool"))
            GTEST_SKIP() << "scripts/setup tuner installs Xvfb and xdotool";
        ASSERT_NE(Display::shared().name(), "");
        setenv("DISPLAY", Display::shared().name().c_str(), 1);
        setenv("XDG_CONFIG_HOME", folder.path().c_str(), 1);
        // A window on a display without a manager has the keyboard where the pointer is.
        const media::SampleScene scene = media::makeSampleScene(320, 240);
        media::writePng(scene.photo, folder / "photo.png");
        media::writePng(scene.depth, folder / "map.png");
    }

    /// The window with a photo, or with `words` alone.
    void open(std::vector<std::string> words, bool with_photo = true) {
        if (with_photo) words.insert(words.begin(), {folder / "photo.png", folder / "map.png"});
        words.insert(words.begin(), QUORVANE_TUNER);
        words.insert(words.end(), {"--controls", folder / "controls", "--export-to", folder / "out"});
        // Small and plain, as the processor draws it.
        if (std::find(words.begin(), words.end(), "--window") == words.end())
            words.insert(words.end(), {"--window", "900x640"});
        std::remove((folder / "controls").c_str());
        m_process = std::make_unique<ChildProcess>(words, ChildFiles());
    }

    void openQuick(std::vector<std::string> words = {}) {
        Tuning plain;
        plain.samples = 1;
        plain.grid = Grid::kCoarse;
        NamedProfiles(folder.path()).save("plain", plain);
        words.insert(words.end(), {"--profile", folder / "plain.json"});
        open(words);
        ASSERT_TRUE(waitFor([this] { return has("picture"); })) << "no picture";
    }

    std::map<std::string, Control> controls() const {
        std::map<std::string, Control> all;
        std::istringstream lines(test::bytesOf(folder / "controls"));
        for (std::string line; std::getline(lines, line);) {
            const auto json = nlohmann::json::parse(line);
            all[json["name"]] = {json["x"], json["y"], json["width"], json["height"], json["value"]};
        }
        return all;
    }

    bool has(const std::string& name) const { return controls().count(name) > 0; }
    std::string valueOf(const std::string& name) const { return controls()[name].value; }
    bool becomes(const std::string& name, const std::function<bool(const std::string&)>& wanted) const {
        return waitFor([&] { return has(name) && wanted(valueOf(name)); });
    }
    bool becomes(const std::string& name, const std::string& wanted) const {
        return becomes(name, [&](const std::string& value) { return value == wanted; });
    }

    static void xdotool(std::vector<std::string> words) {
        words.insert(words.begin(), "xdotool");
        ASSERT_TRUE(succeeds(words));
    }

    /// Two frames: what is done next comes after what was done before.
    void letItSee() const {
        const auto frame = [this] { return std::atol(valueOf("frame").c_str()); };
        const long before = frame();
        EXPECT_TRUE(waitFor([&] { return frame() >= before + 3; }));
    }

    void moveTo(int x, int y) {
        xdotool({"mousemove", std::to_string(x), std::to_string(y)});
        letItSee();
    }

    void moveOn(const std::string& name, double across, double down = 0.5) {
        ASSERT_TRUE(waitFor([&] { return has(name); })) << name;
        const Control control = controls()[name];
        moveTo(control.x + static_cast<int>(across * control.width),
               control.y + static_cast<int>(down * control.height));
    }

    void press(bool down, const char* button = "1") {
        xdotool({down ? "mousedown" : "mouseup", button});
        letItSee();
    }

    void click(const std::string& name, double across = 0.5, double down = 0.5) {
        moveOn(name, across, down);
        press(true);
        press(false);
    }

    void drag(const std::string& name, double from, double to) {
        moveOn(name, from);
        press(true);
        moveOn(name, (from + to) / 2);
        moveOn(name, to);
        press(false);
    }

    void key(const char* name) {
        xdotool({"key", name});
        letItSee();
    }

    /// Closes it as its user would, and sees how it ended.
    void close() {
        xdotool({"key", "ctrl+q"});
        std::optional<ExitStatus> ended;
        ASSERT_TRUE(waitFor([&] { return (ended = m_process->ended()).has_value(); })) << "it does not close";
        EXPECT_TRUE(ended->succeeded()) << ended->words();
        m_process.reset();
    }

    double memoryMb() const {
        std::ifstream file("/proc/" + valueOf("process") + "/statm");
        long pages = 0, resident = 0;
        file >> pages >> resident;
        return static_cast<double>(resident) * static_cast<double>(sysconf(_SC_PAGESIZE)) / 1e6;
    }

    const test::TemporaryFolder folder;
    std::unique_ptr<ChildProcess> m_process;
};

TEST_F(TunerWindow, ASliderIsDraggedAndUndone) {
    openQuick();
    EXPECT_EQ(valueOf("depth_contrast"), "24");
    drag("depth_contrast", 0.4, 0.75);
    ASSERT_TRUE(becomes("depth_contrast", [](const std::string& value) {
        return value.find(" set") != std::string::npos && std::abs(std::atof(value.c_str()) - 48.0) < 2.0;
    })) << valueOf("depth_contrast");
    key("ctrl+z");
    EXPECT_TRUE(becomes("depth_contrast", "24"));
    key("ctrl+shift+z");
    EXPECT_TRUE(becomes("depth_contrast", [](const std::string& value) { return value != "24"; }));
    // A double click.
    moveOn("depth_contrast", 0.2);
    xdotool({"click", "--repeat", "2", "--delay", "120", "1"});
    EXPECT_TRUE(becomes("depth_contrast", "24"));
    drag("depth_contrast", 0.4, 0.75);
    EXPECT_TRUE(becomes("depth_contrast", [](const std::string& value) { return value != "24"; }));
    xdotool({"click", "3"});
    EXPECT_TRUE(becomes("depth_contrast", "24")) << "by a right click";
    close();
}

TEST_F(TunerWindow, TheViewFollowsTheHandAndTheWheelIsTheAmount) {
    openQuick();
    const auto at = [this](double x, double y) {
        return becomes("view", [&](const std::string& value) {
            double is_x = 9, is_y = 9;
            return std::sscanf(value.c_str(), "%lf,%lf", &is_x, &is_y) == 2 && std::abs(is_x - x) < 0.02 &&
                   std::abs(is_y - y) < 0.02;
        });
    };
    click("tab Motion");
    click("idle", 0.1);
    moveOn("picture", 0.75, 0.25);
    EXPECT_TRUE(at(0.5, 0.5)) << valueOf("view");
    for (int i = 0; i < 10; ++i) xdotool({"click", "5"});
    EXPECT_TRUE(becomes("amount", "0.5")) << valueOf("amount");
    EXPECT_TRUE(at(0.25, 0.25)) << valueOf("view");
    key("Home");
    EXPECT_TRUE(at(0.0, 0.0));
    key("Right");
    EXPECT_TRUE(at(0.03, 0.0)) << valueOf("view");
    close();
}

TEST_F(TunerWindow, AClickIsThePivot) {
    openQuick();
    key("p");
    EXPECT_TRUE(becomes("pick", "on"));
    click("picture", 0.7, 0.35);
    EXPECT_TRUE(becomes("pivot point", "chosen"));
    ASSERT_TRUE(waitFor([this] { return has("pivot place"); }));
    double x = 0, y = 0;
    EXPECT_EQ(std::sscanf(valueOf("pivot place").c_str(), "%lf,%lf", &x, &y), 2);
    // Some 0.85 of each side are seen, from wherever it is seen.
    EXPECT_NEAR(x, 0.5 + 0.2 * 0.85, 0.1);
    EXPECT_NEAR(y, 0.5 - 0.15 * 0.85, 0.1);
    close();
}

TEST_F(TunerWindow, TwoSettingsAreComparedOnOneLine) {
    openQuick();
    drag("depth_contrast", 0.4, 0.1);
    click("split");
    ASSERT_TRUE(becomes("split", "0.500"));
    // The line is taken to the left.
    moveOn("picture", 0.5, 0.3);
    press(true);
    moveOn("picture", 0.25, 0.3);
    press(false);
    EXPECT_TRUE(becomes("split", [](const std::string& value) {
        return std::abs(std::atof(value.c_str()) - 0.25) < 0.01;
    })) << valueOf("split");
    key("d");
    EXPECT_TRUE(becomes("difference", "on"));
    key("x");
    EXPECT_TRUE(becomes("B", "active"));
    EXPECT_TRUE(becomes("depth_contrast", "24")) << "B has not been changed";
    close();
}

TEST_F(TunerWindow, StagesMeshAndTimingsAreShown) {
    openQuick();
    key("g");
    EXPECT_TRUE(becomes("stretch", [](const std::string& value) { return value.find("stretch:") == 0; }));
    key("w");
    EXPECT_TRUE(becomes("mesh", "on"));
    key("t");
    EXPECT_TRUE(becomes("timings", "on"));
    key("F1");
    EXPECT_TRUE(becomes("keys", "on"));
    letItSee();
    close();
}

TEST_F(TunerWindow, NamedProfilesAreKept) {
    openQuick();
    click("tab Profiles");
    click("profile name");
    xdotool({"type", "--delay", "60", "mine"});
    ASSERT_TRUE(becomes("profile name", "mine"));
    click("profile save");
    EXPECT_TRUE(waitFor([this] { return has("load mine"); }));
    EXPECT_TRUE(NamedProfiles(folder / "quorvane/profiles").load("mine").samples == 1);
    close();
}

TEST_F(TunerWindow, FilesAreDroppedOnIt) {
    openQuick();
    const auto drop = [&](const std::vector<std::string>& files) {
        const std::string found = folder / "window";
        EXPECT_TRUE(
            succeeds({"sh", "-c", "xdotool search --sync --name quorvane-tuner | head -n 1 >" + found}));
        const Control picture = controls()["picture"];
        return test::dropFiles(Display::shared().name(), std::stoul(test::bytesOf(found)), picture.x + 20,
                               picture.y + 20, files);
    };
    // Twice as wide as high.
    const media::SampleScene scene = media::makeSampleScene(400, 200);
    media::writePng(scene.photo, folder / "wide.png");
    media::writePng(scene.depth, folder / "wide_depth.png");
    ASSERT_TRUE(drop({folder / "wide.png"}));
    EXPECT_TRUE(becomes("picture", [](const std::string& size) {
        int width = 0, height = 1;
        return std::sscanf(size.c_str(), "%dx%d", &width, &height) == 2 && std::abs(width - 2 * height) < 4;
    })) << valueOf("status");
    EXPECT_TRUE(becomes("depth", folder / "wide_depth.png")) << "found next to it";
    ASSERT_TRUE(drop({folder / "map.png"}));
    EXPECT_TRUE(becomes("depth", folder / "map.png"));
    test::writeBytes(folder / "text.txt", "hello");
    ASSERT_TRUE(drop({folder / "text.txt"}));
    EXPECT_TRUE(becomes("status",
                        [](const std::string& said) { return said.find("text.txt") != std::string::npos; }));
    letItSee();
    EXPECT_TRUE(becomes("doing", ""));
    EXPECT_EQ(valueOf("depth"), folder / "map.png") << "what was shown stays";
    close();
}

TEST_F(TunerWindow, AClipIsMadeByTheCommandLine) {
    openQuick({"--longest", "64"});
    click("tab Export");
    click("clip");
    EXPECT_TRUE(becomes("status", "made " + (folder / "out/clip.mp4"))) << valueOf("status");
    EXPECT_GT(test::bytesOf(folder / "out/clip.mp4").size(), 1000u);
    close();
}

TEST_F(TunerWindow, ItIsResizedAndRemembersTheSession) {
    openQuick();
    drag("fov_scale", 0.8, 0.5);
    const std::string value = valueOf("fov_scale");
    EXPECT_THAT(value, HasSubstr("set"));
    const Control before = controls()["picture"];
    xdotool({"search", "--sync", "--name", "quorvane-tuner", "windowsize", "700", "500"});
    EXPECT_TRUE(waitFor([&] { return controls()["picture"].width < before.width; }));
    EXPECT_TRUE(becomes("picture", [&](const std::string& size) {
        return size.find(std::to_string(controls()["picture"].width) + "x") == 0;
    })) << "the picture is drawn anew in its size";
    for (const char* const tool : {"A", "copy", "difference", "redo", "pick", "stages", "timings", "keys"}) {
        const Control control = controls()[tool];
        EXPECT_GT(control.width, 0) << tool;
        EXPECT_LE(control.x + control.width, 700) << tool << " is out of sight";
        EXPECT_LE(control.y + control.height, controls()["picture"].y) << tool << " is on the picture";
    }
    close();
    open({}, false);
    ASSERT_TRUE(waitFor([this] { return has("picture"); })) << "the last photo";
    EXPECT_TRUE(becomes("fov_scale", value));
    close();
}

TEST_F(TunerWindow, ItClosesInTheMiddleOfWork) {
    const media::SampleScene scene = media::makeSampleScene(1600, 1200);
    media::writePng(scene.photo, folder / "large.png");
    media::writePng(scene.depth, folder / "large_depth.png");
    for (const int frames : {1, 3, 9, 27}) {
        open({folder / "large.png", "--close-after", std::to_string(frames)}, false);
        std::optional<ExitStatus> ended;
        ASSERT_TRUE(waitFor([&] { return (ended = m_process->ended()).has_value(); }));
        EXPECT_TRUE(ended->succeeded()) << ended->words();
    }
    EXPECT_TRUE(std::filesystem::exists(folder / "quorvane/session.json"));
}

TEST_F(TunerWindow, ControlsAreTwiceAsLargeAtScaleTwo) {
    openQuick({"--window", "1300x860"});
    const int height = controls()["undo"].height;
    close();
    openQuick({"--window", "1300x860", "--scale", "2"});
    EXPECT_NEAR(controls()["undo"].height, 2 * height, 2);
    close();
}

TEST_F(TunerWindow, TheCommandLineDrawsWhatTheWindowShowed) {
    // A hand that comes back to where it began.
    Recording hand;
    for (int i = 0; i <= 40; ++i) {
        app::Position place;
        place.x = 0.8 * std::sin(i * 2.0 * 3.14159265358979 / 40);
        place.y = 0.4 * (1.0 - std::cos(i * 2.0 * 3.14159265358979 / 40));
        hand.add(i / 20.0, place);
    }
    test::writeBytes(folder / "hand.jsonl", hand.lines());
    Tuning tuned;
    tuned.longest = 320;
    tuned.parameters = {{"depth_contrast", 28.0}, {"rotate_x_boundary", 15.0}};
    setPivot(Pivot::kPoint, 0.6, 0.5, &tuned);
    tuned.fps = 10;
    NamedProfiles(folder.path()).save("tuned", tuned);
    open({"--profile", folder / "tuned.json", "--motion-file", folder / "hand.jsonl"});
    ASSERT_TRUE(waitFor([this] { return has("picture"); }));
    key("space");
    click("tab Motion");
    std::vector<int> frames;
    for (int i = 1; i <= 3; ++i) {
        for (int n = 0; n < 3; ++n) key("period");
        letItSee();
        frames.push_back(std::atoi(valueOf("scrub").c_str()));
        key("ctrl+s");
        const std::string shot = folder / ("out/screenshot-" + std::to_string(i) + ".png");
        ASSERT_TRUE(waitFor([&] { return std::filesystem::exists(shot); })) << shot;
    }
    EXPECT_NE(frames[0], frames[2]);
    key("ctrl+e");
    ASSERT_TRUE(waitFor([this] { return std::filesystem::exists(folder / "out/tuned.java.txt"); }));
    close();
    ASSERT_TRUE(succeeds({QUORVANE_PROGRAM, "render", folder / "photo.png", folder / "map.png", "--profile",
                          folder / "out/profile.json", "--motion-file", folder / "out/hand.jsonl",
                          "--renderer", "gl", "-o", folder / "frames/"}));
    const std::vector<std::string> names = test::TemporaryFolder::names(folder / "frames");
    EXPECT_EQ(names.size(), 20u) << "two seconds, ten frames each";
    for (size_t i = 0; i < frames.size(); ++i) {
        const auto shown = media::readPhoto(folder / ("out/screenshot-" + std::to_string(i + 1) + ".png"));
        const auto drawn = media::readPhoto(folder / ("frames/" + names[static_cast<size_t>(frames[i])]));
        EXPECT_EQ(shown.width, 320);
        EXPECT_TRUE(shown.samples == drawn.samples) << "frame " << frames[i];
    }
}

TEST_F(TunerWindow, TenThousandFramesTakeNoMoreMemory) {
    openQuick({"--window", "480x320", "--longest", "24"});
    const auto frame = [this] { return std::atol(valueOf("frame").c_str()); };
    ASSERT_TRUE(waitFor([&] { return frame() >= 1000; }));
    const double before = memoryMb();
    const long start = frame();
    for (int patience = 0; patience < 8 && frame() < start + 10000; ++patience)
        waitFor([&] { return frame() >= start + 10000; });
    EXPECT_GE(frame(), start + 10000);
    EXPECT_LT(memoryMb(), before + 8.0);
    close();
}

}  // namespace
}  // namespace quorvane::tuner
