#include <CLI/CLI.hpp>
#include <cstdio>
#include <map>
#include <new>

#include "apps/quorvane/commands/commands.h"
#include "apps/quorvane/commands/input_options.h"
#include "apps/quorvane/terminal/arguments.h"
#include "apps/quorvane/terminal/text.h"
#include "apps/quorvane/terminal/usage_error.h"
#include "media/clip/output_format.h"
#include "quorvane/host/ParallaxView.h"
#include "quorvane/version.h"
#include "system/cancel.h"
#include "system/error.h"
#include "system/standard_streams.h"

namespace {

using namespace quorvane::app;
using quorvane::media::OutputKind;

constexpr char kExamples[] = R"(Examples:
  quorvane render portrait.jpg -o sway.mp4             # a phone's photo with depth inside
  quorvane render photo.jpg depth.png -o sway.mp4
  quorvane render photo.jpg --depth-cmd 'estimate {in} {out}' -o sway.mp4
  quorvane render photo.jpg depth.png -o loop.gif --size 480x360 --motion circle --frames 60
  quorvane render photo.jpg depth.png -o left.png --at -1,0
  quorvane render photo.jpg depth.png -o frames/ --set fov_scale=0.9
  quorvane stages photo.jpg depth.png -o stages.png
  quorvane inspect portrait.jpg
  quorvane extract portrait.heic -o depth.png --photo unblurred.jpg
  quorvane sample photo.png depth.png

Depth maps are gray pictures, larger = nearer (--invert-depth for the others). Without one, the depth
inside the photo's file is used, else a file beside it called NAME_depth.*, NAME-depth.* or depth/NAME.*.
Exit code: 0 done, 1 failed or interrupted, 2 wrong usage.)";

/// The parameters that --set takes.
std::string parameterTable() {
    std::string table = "Parameters for --set:\n";
    for (const quorvane::ParameterInfo& info : quorvane::ParallaxView::parameters()) {
        char line[160];
        std::snprintf(line, sizeof line, "  %-22s %5g to %-7g %s\n", info.name, info.minimum, info.maximum,
                      info.meaning);
        table += line;
    }
    return table;
}

void addViewOptions(CLI::App* command, ViewOptions* options) {
    addInputOptions(command, &options->input);
    command
        ->add_option("--orientation", options->orientation,
                     "tuned set: 4 and 7 the first, other codes the second, which turns about a point behind "
                     "the scene")
        ->capture_default_str();
    const auto set = [options](const std::vector<std::string>& texts) {
        for (const std::string& text : texts) options->settings.push_back(parseSetting(text));
    };
    command
        ->add_option_function<std::vector<std::string>>("--set", set,
                                                        "change a tunable parameter; may be repeated")
        ->type_name("FIELD=VALUE")
        ->allow_extra_args(false)
        ->take_all();
    command->add_option("--timings", options->timings, "write the renderer's timing lines to FILE")
        ->type_name("FILE");
    command->add_flag("-v,--verbose", options->verbosity,
                      "say what was chosen; twice: the renderer's log too");
    command->add_flag("-q,--quiet", options->quiet, "no progress bar, and no lines about the depth map");
    command->footer(parameterTable());
}

int run(int argc, char** argv) {
    CLI::App app("Turns a photo and its depth map into a picture that swings with the view.", "quorvane");
    app.footer(kExamples);
    app.require_subcommand(1);
    app.set_version_flag("--version", "quorvane " QUORVANE_VERSION);

    RenderOptions render_options;
    CLI::App* render_command = app.add_subcommand("render", "make a clip, a still or numbered frames");
    addViewOptions(render_command, &render_options.view);
    render_command
        ->add_option("-o,--out", render_options.out,
                     quorvane::media::extensionsOf(OutputKind::kClip, ", ") + ": a looping clip; " +
                         quorvane::media::extensionsOf(OutputKind::kStill, ", ") + ": a still; else a folder")
        ->required();
    render_command
        ->add_option("--size", render_options.size,
                     "picture size, or 'photo' for the photo's own (default: its aspect, at most 1920)")
        ->type_name("WxH");
    render_command->add_option("--frames", render_options.frames, "frames in the loop")
        ->check(CLI::Range(1, 99999))
        ->capture_default_str();
    render_command->add_option("--fps", render_options.fps, "frames a second")
        ->check(CLI::Range(1, 240))
        ->capture_default_str();
    const std::map<std::string, Motion> motions = {{"sway", Motion::kSway},
                                                   {"nod", Motion::kNod},
                                                   {"circle", Motion::kCircle},
                                                   {"eight", Motion::kEight}};
    std::string motion = "sway";
    render_command->add_option("--motion", motion, "path of the view")
        ->check(CLI::IsMember(motions))
        ->capture_default_str();
    render_command->add_option("--amount", render_options.amount, "how far the view swings")
        ->check(CLI::Range(0.0, 1.0))
        ->capture_default_str();
    render_command
        ->add_option("--at", render_options.at,
                     "the still's view position, or the middle of the motion: -1 from the left or below to 1 "
                     "from the right or above")
        ->type_name("X,Y");
    render_command
        ->add_option("--supersample", render_options.supersample,
                     "draw this many times as large, then average")
        ->check(CLI::Range(1, 4))
        ->capture_default_str();
    render_command->add_flag("--force", render_options.force,
                             "replace the numbered frames in a folder that is not empty");
    render_command->add_flag(
        "--stats", render_options.stats,
        "say at the end what each stage took; encoding runs beside the others, and for a clip it is the "
        "wait for ffmpeg");

    ViewOptions stages_options;
    std::string sheet;
    CLI::App* stages_command = app.add_subcommand("stages", "one labelled picture of every stage");
    addViewOptions(stages_command, &stages_options);
    stages_command->add_option("-o,--out", sheet, "the sheet, a .png file")->required();

    InspectOptions inspect_options;
    CLI::App* inspect_command =
        app.add_subcommand("inspect", "what a photo's file holds, and what would be made of it");
    addInputOptions(inspect_command, &inspect_options.input);
    inspect_command->add_flag("--json", inspect_options.json, "for programs");
    inspect_command->add_option("-o,--out", inspect_options.sheet,
                                "also write the stages, as the stages command does, to a .png file");

    ExtractOptions extract_options;
    CLI::App* extract_command =
        app.add_subcommand("extract", "write the depth inside a photo to a file of its own");
    extract_command->add_option("PHOTO", extract_options.file, "a photo with depth inside")->required();
    extract_command
        ->add_option(
            "-o,--out", extract_options.depth,
            "a gray .png: upright, larger = nearer; of 16 bit where the photo's file has more than 8 "
            "or measures distances, which are spread over the range they use")
        ->required();
    extract_command
        ->add_option("--photo", extract_options.photo,
                     "also write the unblurred photo inside to FILE, its bytes as they are; where "
                     "there is none, the photo itself: of a JPEG without what is appended to it, "
                     "else the whole file")
        ->type_name("FILE");
    extract_command->add_flag("--raw", extract_options.raw,
                              "write the depth's bytes as they are in the photo's file: a picture file, or "
                              "bare samples, whose size is told");

    CLI::App* info_command = app.add_subcommand("info", "version, graphics driver and its limits");

    std::string sample_photo, sample_depth, sample_size;
    CLI::App* sample_command = app.add_subcommand("sample", "write a made-up photo and its exact depth map");
    sample_command->add_option("PHOTO", sample_photo, "a .png file to write")->required();
    sample_command->add_option("DEPTH", sample_depth, "a .png file to write")->required();
    sample_command->add_option("--size", sample_size, "sides from 64 to 8192 (default 1600x1200)")
        ->type_name("WxH");

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0) return app.exit(error);
        throw UsageError(error.what());
    }
    render_options.motion = motions.at(motion);

    if (info_command->parsed()) {
        // Leaves nothing to tidy up, so that signals and a pipe that is closed end it as they end any
        // program.
        info();
        return 0;
    }
    quorvane::catchSignals();
    if (render_command->parsed()) render(render_options);
    if (stages_command->parsed()) stages(stages_options, sheet);
    if (inspect_command->parsed()) inspect(inspect_options);
    if (extract_command->parsed()) extract(extract_options);
    if (sample_command->parsed()) sample(sample_photo, sample_depth, sample_size);
    return 0;
}

void complain(const std::string& message) {
    std::fprintf(stderr, "quorvane: %s\n", printable(message).c_str());
}

}  // namespace

int main(int argc, char** argv) {
    quorvane::fillStandardStreams();
    try {
        const int code = run(argc, argv);
        quorvane::requireStandardOutput();
        return code;
    } catch (const UsageError& error) {
        complain(std::string(error.what()) + " (quorvane --help shows examples)");
        return 2;
    } catch (const std::bad_alloc&) {
        complain("out of memory");
    } catch (const std::exception& error) {
        complain(error.what());
    }
    return 1;
}
