#include "apps/tuner/core/asked.h"

#include "apps/quorvane/terminal/numbers.h"
#include "apps/quorvane/terminal/usage_error.h"
#include "apps/tuner/core/keys.h"
#include "quorvane/version.h"

namespace quorvane::tuner {

Size parseWindow(const std::string& text) {
    constexpr double kLargestSide = 16384.0;
    double width = 0.0, height = 0.0;
    const auto is_side = [](double side) {
        return side >= 1.0 && side <= kLargestSide && side == static_cast<int>(side);
    };
    if (!app::parsePair(text, 'x', &width, &height) || !is_side(width) || !is_side(height))
        throw app::UsageError("--window " + text +
                              ": WxH in pixels, each 1 to 16384, is wanted, such as 1280x800");
    return {static_cast<int>(width), static_cast<int>(height)};
}

std::unique_ptr<app::CommandLines> commandLines(Asked* asked) {
    auto lines = std::make_unique<app::CommandLines>(
        "quorvane-tuner", "Shows a photo in depth while it is tuned.", "quorvane-tuner " QUORVANE_VERSION);
    app::CommandLine* const line =
        lines->addOnly({{"a phone's photo with depth inside", "quorvane-tuner portrait.jpg"},
                        {"a photo and a depth map", "quorvane-tuner photo.jpg depth.png"},
                        {"what the last session was about", "quorvane-tuner"},
                        {"from a profile", "quorvane-tuner photo.jpg --profile profile.json"}});
    line->text("PHOTO", &asked->input.photo,
               "JPEG, PNG, WebP, HEIC, AVIF or TIFF (default: that of the last session)");
    const app::Option& depth =
        line->text("DEPTH", &asked->input.depth,
                   "gray picture of 8 or 16 bit, any size, larger = nearer (default: as "
                   "quorvane render finds it)");
    app::addDepthOptions(line, &asked->input, &depth);
    line->text("--profile", &asked->profile, "begin with the settings of this profile").called("FILE.json");
    line->text("--motion-file", &asked->motion_file,
               "a recorded hand, or another motion in a file, for the view")
        .called("FILE.jsonl");
    line->text("--export-to", &asked->export_folder,
               "where exports go (default: next to the photo, in NAME-tuned)")
        .called("FOLDER");
    line->flag("--fresh", &asked->fresh, "begin without what the last session left");
    line->parsed(
            "--window", [asked](const std::string& text) { asked->window = parseWindow(text); },
            "the window's size (default: as it was last, at first 1280x800)")
        .called("WxH");
    line->whole("--longest", &asked->longest, 0, 16384,
                "pixels of the pictures' longer side; 0: as many as the window shows");
    line->number("--scale", &asked->scale, 0.0, 4.0, "of texts and controls; 0: the desktop's");
    line->text("--controls", &asked->controls,
               "keep the places of the controls in FILE, a line of JSON each, for a program that drives the "
               "window")
        .called("FILE");
    line->whole("--close-after", &asked->frames, 0, 1000000000,
                "close after so many frames; 0: not by itself");
    line->table("Keys of the window:", keys());
    return lines;
}

}  // namespace quorvane::tuner
