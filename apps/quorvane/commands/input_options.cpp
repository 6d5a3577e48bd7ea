#include "apps/quorvane/commands/input_options.h"

#include <map>

#include "apps/quorvane/input/depth_command.h"

namespace quorvane::app {
namespace {

const std::map<std::string, media::DepthHalf> kHalves = {{"right", media::DepthHalf::kRight},
                                                         {"left", media::DepthHalf::kLeft},
                                                         {"below", media::DepthHalf::kBelow},
                                                         {"above", media::DepthHalf::kAbove}};
std::map<std::string, media::Turn> turnsByName() {
    std::map<std::string, media::Turn> turns;
    for (media::Turn turn = 1; turn < media::kTurns; ++turn) turns[media::kTurnWords[turn].name] = turn;
    return turns;
}

}  // namespace

void addInputOptions(CLI::App* command, InputOptions* options) {
    command->add_option("PHOTO", options->photo, "JPEG, PNG, WebP, HEIC, AVIF or TIFF")->required();
    CLI::Option* depth =
        command->add_option("DEPTH", options->depth,
                            "gray picture of 8 or 16 bit, any size, larger = nearer (default: the depth "
                            "inside PHOTO, else NAME_depth.*, NAME-depth.* or depth/NAME.* beside it)");
    CLI::Option* estimator =
        command
            ->add_option_function<std::string>(
                "--depth-cmd",
                [options](const std::string& text) { options->depth_command = parseDepthCommand(text); },
                "run your own estimator instead: it reads {in}, a PNG of the photo, and writes {out}, a "
                ".png depth map; words and quotes as in a shell, but no shell runs it")
            ->type_name("'PROG {in} {out}'");
    CLI::Option* half =
        command
            ->add_option_function<std::string>(
                "--rgbd", [options](const std::string& side) { options->depth_half = kHalves.at(side); },
                "PHOTO has colour and depth side by side; the half that is the depth: "
                "right, left, below or above")
            ->check(CLI::IsMember(kHalves))
            ->type_name("SIDE");
    estimator->excludes(depth);
    half->excludes(depth)->excludes(estimator);
    const std::map<std::string, media::Turn> turns = turnsByName();
    command
        ->add_option_function<std::string>(
            "--rotate-depth",
            [options, turns](const std::string& turn) { options->depth_turn = turns.at(turn); },
            "turn the depth map clockwise by 90, 180 or 270 degrees, mirror it left to right (mirror) or top "
            "to bottom (flip), or exchange rows and columns (transpose, or transverse for the other "
            "diagonal)")
        ->check(CLI::IsMember(turns))
        ->type_name("HOW");
    command->add_flag("--invert-depth", options->invert_depth, "the depth map's larger values are farther");
    command->add_flag_callback(
        "--no-doctor", [options] { options->doctor = false; },
        "take the depth map as it is, unchecked against the photo");
}

}  // namespace quorvane::app
