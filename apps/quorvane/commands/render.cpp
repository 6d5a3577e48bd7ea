#include <cstdio>
#include <memory>
#include <optional>
#include <utility>

#include "apps/quorvane/commands/command.h"
#include "apps/quorvane/commands/output_guard.h"
#include "apps/quorvane/drawing/clip_drawing.h"
#include "apps/quorvane/input/depth_source.h"
#include "apps/quorvane/terminal/numbers.h"
#include "apps/quorvane/terminal/progress.h"
#include "apps/quorvane/terminal/usage_error.h"
#include "system/cancel.h"
#include "system/error.h"
#include "system/standard_streams.h"

namespace quorvane::app {
namespace {

using media::OutputKind;

constexpr int kLongestSide = 1920;
constexpr int kNoLimit = 1 << 30;

struct RenderOptions {
    InputOptions input;
    ViewOptions view;
    Talk talk;
    std::string out;
    std::optional<Size> size;
    bool photo_size = false;  ///< without `size`: the photo's own instead of its aspect, at most kLongestSide
    int frames = 120;
    int fps = 30;
    const Motion* motion = &motions().front();
    double amount = 1.0;
    Position at;
    int supersample = 1;
    bool force = false;
    bool stats = false;
    std::vector<const Option*> of_loops;  ///< the options that say nothing of a still
};

/// What can be refused before the images are read. Returns what is to be written.
const media::OutputFormat& check(const RenderOptions& options) {
    refuseStandardOutput({options.view.timings});
    const media::OutputFormat& format = parseOutput(options.out);
    if (format.even_sides && options.size) {
        const Size even = pictureSize(*options.size, kNoLimit, true);
        if (even != *options.size)
            throw UsageError("--size " + std::to_string(options.size->width) + "x" +
                             std::to_string(options.size->height) + ": " + std::string(format.name) +
                             " has even sides, such as " + std::to_string(even.width) + "x" +
                             std::to_string(even.height));
    }
    return format;
}

/// Prints a note that names the options which change nothing in a still.
void noteIdleOptions(const RenderOptions& options) {
    std::string idle;
    for (const Option* option : options.of_loops) {
        const bool right = option->name() == "--frames" && options.frames == 1;
        if (option->given() && !right) idle += (idle.empty() ? "" : ", ") + option->name();
    }
    if (!idle.empty())
        std::fprintf(stderr, "still: %s: of no effect; a clip (%s) or a folder/ has frames\n", idle.c_str(),
                     media::extensionsOf(OutputKind::kClip, " or ").c_str());
}

/// Throws Error where `inputs` would be overwritten.
void keep(const std::vector<std::string>& inputs, const RenderOptions& options,
          const media::OutputFormat& format) {
    refuseInputAsOutput(inputs, {options.out, options.view.timings});
    if (format.kind == OutputKind::kFolder) refuseInputAsFrame(inputs, options.out);
}

Size chooseSize(const RenderOptions& options, Size photo, const media::OutputFormat& format) {
    if (options.size) return *options.size;
    return pictureSize(photo, options.photo_size ? kNoLimit : kLongestSide, format.even_sides);
}

std::unique_ptr<media::ClipWriter> openOutput(const RenderOptions& options, const media::OutputFormat& format,
                                              Size size) {
    try {
        return media::openClip(options.out, format, {size, options.fps, options.force});
    } catch (const FolderNotEmpty& error) {
        throw Error(error.what() + std::string("; --force replaces the numbered frames in it"));
    }
}

std::vector<Position> positionsFor(const RenderOptions& options, const media::OutputFormat& format) {
    if (format.kind == OutputKind::kStill) return {options.at};
    return loopAround(options.at, *options.motion, options.amount, options.frames);
}

void render(const RenderOptions& options) {
    const media::OutputFormat& format = check(options);
    refuseSameOutput(options.out, options.view.timings, "picture and timings");
    keep({options.input.photo, options.input.depth}, options, format);

    StageTimes times;
    DepthSource source = times.measure(Stage::kDecode, [&] { return findDepth(options.input); });
    keep({source.depth}, options, format);
    StandardOutputTo timings(options.view.timings);
    Input input =
        times.measure(Stage::kDecode, [&] { return readInput(options.input, options.talk, source); });
    source = {};
    throwIfCancelled();

    const Size size = chooseSize(options, {input.photo.width, input.photo.height}, format);
    const std::unique_ptr<media::ClipWriter> writer =
        times.measure(Stage::kSetUp, [&] { return openOutput(options, format, size); });
    View view = times.measure(Stage::kSetUp,
                              [&] { return View(options.view, options.talk, size, options.supersample); });
    {
        const FittedInput fitted = times.measure(
            Stage::kFit, [&] { return view.fit(std::move(input.photo), std::move(input.depth.plane)); });
        times.measure(Stage::kUpload, [&] { view.upload(fitted); });
    }

    const std::vector<Position> positions = positionsFor(options, format);
    const int frames = static_cast<int>(positions.size());
    const Writers writers = planWriters(format, frames, size, options.supersample);
    {
        Progress progress(frames, options.talk.quiet);
        drawFrames(positions, size, writers, &view, writer.get(), &times,
                   [&progress](int drawn) { progress.step(drawn); });
        timings.require();
        times.measure(Stage::kEncode, [&] { writer->finish(); });
        timings.commit();
    }
    if (format.kind == OutputKind::kStill && !options.talk.quiet) noteIdleOptions(options);
    if (options.stats) std::fputs(times.table(frames, writers.threads).c_str(), stderr);
}

void addMotionOptions(CommandLine* line, RenderOptions* options) {
    options->of_loops.push_back(&line->whole("--frames", &options->frames, 1, 99999, "frames in the loop"));
    options->of_loops.push_back(&line->whole("--fps", &options->fps, 1, 240, "frames a second"));
    std::vector<std::string> names;
    std::vector<std::pair<std::string, std::string>> rows;
    for (const Motion& motion : motions()) {
        names.emplace_back(motion.name);
        rows.emplace_back(motion.name, motion.meaning);
    }
    options->of_loops.push_back(&line->word(
        "--motion", names, [options](size_t i) { options->motion = &motions()[i]; },
        "how the view moves, see below (default " + names.front() + ")"));
    options->of_loops.push_back(
        &line->number("--amount", &options->amount, 0.0, 1.0, "how far the view swings"));
    line->parsed(
            "--at", [options](const std::string& text) { options->at = parsePosition(text); },
            "the still's view position, or the middle of the motion: -1 from the left or below to 1 from the "
            "right or above (default 0,0)")
        .called("X,Y");
    line->table("Motions:", std::move(rows));
}

std::function<void()> prepare(CommandLine* line) {
    const auto options = std::make_shared<RenderOptions>();
    addInputOptions(line, &options->input);
    line->text("-o,--out", &options->out,
               media::extensionsOf(OutputKind::kClip, ", ") + ": a looping clip; " +
                   media::extensionsOf(OutputKind::kStill, ", ") + ": a still; else a folder")
        .called("PATH")
        .required();
    const auto take_size = [options](const std::string& text) {
        options->photo_size = text == "photo";
        if (!options->photo_size) options->size = parseSize(text);
    };
    line->parsed("--size", take_size,
                 "picture size, or 'photo' for the photo's own (default: its aspect, at most 1920)")
        .called("WxH");
    addMotionOptions(line, options.get());
    line->whole("--supersample", &options->supersample, 1, 4, "draw this many times as large, then average");
    line->flag("--force", &options->force, "replace the numbered frames in a folder that is not empty");
    line->flag(
        "--stats", &options->stats,
        "say at the end what each stage took; with several frames, encoding runs while the next ones are "
        "drawn, and for a clip it is the wait for ffmpeg");
    addTalkOptions(line, &options->talk);
    addViewOptions(line, &options->view);
    return [options] { render(*options); };
}

}  // namespace

Command renderCommand() {
    return {"render",
            "make a clip, a still or numbered frames",
            {{"a clip from a phone's photo with depth inside", "quorvane render portrait.jpg -o sway.mp4"},
             {"from a photo and a depth map", "quorvane render photo.jpg depth.png -o sway.mp4"},
             {"from a photo and your own depth estimator",
              "quorvane render photo.jpg --depth-cmd 'estimate {in} {out}' -o sway.mp4"},
             {"a small GIF of another motion",
              "quorvane render photo.jpg depth.png -o a.gif --size 480x360 --motion circle"},
             {"one still, seen from the left", "quorvane render photo.jpg depth.png -o left.png --at -1,0"},
             {"numbered frames with more of the photo in view",
              "quorvane render photo.jpg depth.png -o frames/ --set fov_scale=0.9"}},
            prepare};
}

}  // namespace quorvane::app
