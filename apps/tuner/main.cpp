#define GLFW_INCLUDE_NONE
#include <GLFW/glfw3.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <new>
#include <thread>

#include "apps/quorvane/terminal/text.h"
#include "apps/quorvane/terminal/usage_error.h"
#include "apps/tuner/core/asked.h"
#include "apps/tuner/window/tuner.h"
#include "media/decoder/decoder.h"
#include "system/cancel.h"
#include "system/error.h"
#include "system/standard_streams.h"

namespace {

using namespace quorvane;
using namespace quorvane::tuner;

constexpr Size kUsualWindow = {1280, 800};

/// The program that makes clips: next to this one, where both are built or installed, else as PATH has it.
std::string clipProgram() {
    std::error_code failed;
    const std::filesystem::path here = std::filesystem::read_symlink("/proc/self/exe", failed).parent_path();
    for (const std::filesystem::path& place : {here / "quorvane", here / ".." / "quorvane" / "quorvane"})
        if (!failed && access(place.c_str(), X_OK) == 0) return place.string();
    return "quorvane";
}

StartOptions startOptions(const Asked& asked, Size* window) {
    StartOptions options;
    options.input = asked.input;
    options.export_folder = asked.export_folder;
    options.controls = asked.controls;
    options.frames = asked.frames;
    options.scale = asked.scale;
    options.program = clipProgram();
    const std::string folder = settingsFolder();
    options.profiles = folder + "/profiles";
    options.session = folder + "/session.json";
    if (!asked.fresh)
        if (const std::optional<Session> last = loadSession(options.session, &options.remark)) {
            options.tunings = last->tunings;
            std::error_code unknown;
            if (options.input.photo.empty()) {
                options.input.photo = last->photo;
                options.input.depth = last->depth;
            } else if (!std::filesystem::equivalent(options.input.photo, last->photo, unknown)) {
                for (Tuning& tuning : options.tunings) forgetPlace(&tuning);
            }
            if (last->window.width > 0 && last->window.height > 0) *window = last->window;
        }
    if (!asked.profile.empty())
        options.tunings = {tuningOf(media::loadProfile(asked.profile), asked.profile),
                           tuningOf(media::loadProfile(asked.profile), asked.profile)};
    if (!asked.motion_file.empty()) options.hand = Recording(app::readMoments(asked.motion_file));
    for (Tuning& tuning : options.tunings) {
        if (asked.longest > 0) tuning.longest = asked.longest;
        if (asked.input.invert_depth) tuning.invert_depth = asked.input.invert_depth;
        if (asked.input.holes != media::Holes::kAuto) tuning.holes = asked.input.holes;
    }
    if (asked.window) *window = *asked.window;
    return options;
}

/// The preparing thread may be in the middle of a photo: it gets a moment to tidy up.
[[noreturn]] void leaveAtOnce(Tuner* tuner) {
    constexpr auto kMoment = std::chrono::milliseconds(20);
    constexpr int kMoments = 100;
    for (int i = 0; i < kMoments && !tuner->idle(); ++i) std::this_thread::sleep_for(kMoment);
    std::_Exit(0);
}

void work(const Asked& asked) {
    Size size = kUsualWindow;
    const StartOptions options = startOptions(asked, &size);
    Window window("quorvane-tuner", size);
    Tuner tuner(options, &window);
    constexpr double kPutAway = 0.2;
    while (!tuner.done() && !cancelled()) {
        tuner.frame();
        window.next();
        if (!window.visible()) window.wait(kPutAway);
    }
    tuner.saveSession();
    glfwHideWindow(window.handle());
    cancel();
    tuner.end();
    if (!tuner.idle()) leaveAtOnce(&tuner);
}

int run(int argc, char** argv) {
    Asked asked;
    size_t chosen = 0;
    if (!commandLines(&asked)->parse(argc, argv, &chosen)) return 0;
    catchSignals();
    work(asked);
    return 0;
}

void complain(const std::string& message) {
    std::fprintf(stderr, "quorvane-tuner: %s\n", app::printable(message).c_str());
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 2 && std::strcmp(argv[1], media::kDecodingWorker) == 0) return media::serveDecoding();
    fillStandardStreams();
    media::decodeInWorker("/proc/self/exe");
    try {
        return run(argc, argv);
    } catch (const app::UsageError& error) {
        complain(std::string(error.what()) + " (see quorvane-tuner --help)");
        return 2;
    } catch (const std::bad_alloc&) {
        complain("out of memory");
    } catch (const std::exception& error) {
        complain(error.what());
    }
    return 1;
}
