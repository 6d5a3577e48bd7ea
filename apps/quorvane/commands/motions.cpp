#include <cstdio>
#include <memory>

#include "apps/quorvane/commands/command.h"
#include "apps/quorvane/commands/output_guard.h"
#include "apps/quorvane/drawing/motion_file.h"
#include "apps/quorvane/drawing/motion_sheet.h"
#include "apps/quorvane/drawing/motion_timing.h"
#include "apps/quorvane/terminal/usage_error.h"
#include "media/picture/picture_file.h"
#include "system/cancel.h"
#include "system/pending_output.h"

namespace quorvane::app {
namespace {

struct MotionsOptions {
    std::string sheet;
    std::vector<Motion> motions;  ///< without any, all that have a name
    std::vector<std::string> files;
    ClipTiming timing;
};

void list() {
    for (const NamedMotion& motion : motions())
        std::printf("%-7s %-28s %s\n", motion.name, motion.expression, motion.meaning);
}

void drawSheet(const MotionsOptions& options) {
    requirePng(options.sheet, "-o " + options.sheet + ": the sheet is a .png file");
    refuseInputAsOutput(options.files, {options.sheet});
    std::vector<Motion> shown = options.motions;
    if (shown.empty())
        for (const NamedMotion& motion : motions()) shown.push_back(parseMotion(motion.name));
    double own = 0.0;
    for (const Motion& motion : shown) own = std::max(own, ownSeconds(motion, options.timing.motion));
    const FrameCount count = countFrames(options.timing, own);
    for (Motion& motion : shown) motion = timed(motion, options.timing.motion, count);
    // Asked before any work is done.
    const PendingOutput place(options.sheet);
    const media::RgbImage sheet = motionSheet(shown, count);
    throwIfCancelled();
    media::writePng(sheet, options.sheet);
}

void run(const MotionsOptions& options) {
    if (!options.sheet.empty()) return drawSheet(options);
    for (const Option* option : options.timing.options)
        if (option->given()) throw UsageError(option->name() + ": -o names the sheet that shows it");
    if (!options.motions.empty())
        throw UsageError(options.motions.front().text + ": -o names the sheet that shows it");
    list();
}

std::function<void()> prepare(CommandLine* line) {
    const auto options = std::make_shared<MotionsOptions>();
    line->text("-o,--out", &options->sheet, "a .png file: a sheet with a row for each motion").called("FILE");
    line->repeated(
            "--motion", [options](const std::string& text) { options->motions.push_back(parseMotion(text)); },
            "show this one instead of all that have a name; may be repeated")
        .called("MOTION");
    line->repeated(
            "--motion-file",
            [options](const std::string& path) {
                options->files.push_back(path);
                options->motions.push_back(motionThrough(readMoments(path), path));
            },
            "show the motion of a file; may be repeated")
        .called("FILE");
    addClipTiming(line, &options->timing);
    return [options] { run(*options); };
}

}  // namespace

Command motionsCommand() {
    return {"motions",
            "list the motions that have a name, or draw a sheet of motions",
            {{"the motions that have a name, and what they do to each axis", "quorvane motions"},
             {"a sheet of them", "quorvane motions -o sheet.png"},
             {"what an expression of your own does",
              "quorvane motions -o sheet.png --motion 'x=sin(1) y=0.3cos(3)' --ease"}},
            prepare};
}

}  // namespace quorvane::app
