#include "apps/quorvane/input/input_options.h"

#include <unistd.h>

#include <algorithm>
#include <iterator>

#include "apps/quorvane/input/depth_command.h"
#include "apps/quorvane/terminal/usage_error.h"

namespace quorvane::app {
namespace {

struct Half {
    const char* name;
    media::DepthHalf half;
};

constexpr Half kHalves[] = {{"right", media::DepthHalf::kRight},
                            {"left", media::DepthHalf::kLeft},
                            {"below", media::DepthHalf::kBelow},
                            {"above", media::DepthHalf::kAbove}};

struct Answer {
    const char* name;
    std::optional<bool> inverted;
};

constexpr Answer kAnswers[] = {{"yes", true}, {"no", false}, {"auto", std::nullopt}};

struct Way {
    const char* name;
    media::Holes holes;
};

constexpr Way kWays[] = {
    {"auto", media::Holes::kAuto}, {"fill", media::Holes::kFill}, {"keep", media::Holes::kKeep}};

// The first turn changes nothing.
constexpr media::Turn kFirstTurn = 1;

}  // namespace

Option& addModelOptions(CommandLine* line, ModelOptions* options) {
    Option& model = line->text("--depth-model", &options->file,
                               "estimate the depth with an ONNX network of your own: an .onnx file, or a "
                               "folder with one and "
                               "its preprocessor_config.json ('quorvane info --models' says which ones suit)")
                        .called("FILE.onnx");
    line->whole("--depth-size", &options->size, 0, 4096,
                "pixels of the photo's shorter side that such a network is given, where it takes any size; 0 "
                "is what suits it, mostly 518; more shows finer things, in time that grows with the square");
    return model;
}

namespace {

/// The path of an input, of which "-" is standard input.
std::string inputCalled(const std::string& text) {
    if (text != "-") return text;
    if (isatty(STDIN_FILENO) == 1)
        throw UsageError("-: standard input is a terminal; lead a photo to it, as in < photo.jpg");
    return "/dev/stdin";
}

}  // namespace

void addInputOptions(CommandLine* line, InputOptions* options) {
    line->parsed(
            "PHOTO", [options](const std::string& text) { options->photo = inputCalled(text); },
            "JPEG, PNG, WebP, HEIC, AVIF or TIFF; - is standard input")
        .soughtAs({"--photo", "--input", "-i"})
        .required();
    Option& depth = line->text(
        "DEPTH", &options->depth,
        "gray picture of 8 or 16 bit, any size, larger = nearer (default: the depth inside PHOTO, else "
        "NAME_depth.*, NAME-depth.* (or depth16) or depth/NAME.* next to it, else what two views inside "
        "PHOTO give)");
    depth.soughtAs({"--depth", "--depth-map", "-d"});
    addDepthOptions(line, options, &depth);
}

void addDepthOptions(CommandLine* line, InputOptions* options, const Option* depth) {
    Option& estimator =
        line->parsed(
                "--depth-cmd",
                [options](const std::string& text) { options->depth_command = parseDepthCommand(text); },
                "run your own estimator instead: it reads {in}, a PNG of the photo, and writes {out}, a .png "
                "depth map; words and quotes as in a shell, but no shell runs it")
            .called("'PROG {in} {out}'");
    Option& model = addModelOptions(line, &options->depth_model);
    std::vector<std::string> halves;
    for (const Half& half : kHalves) halves.emplace_back(half.name);
    Option& half =
        line->word(
                "--rgbd", halves, [options](size_t i) { options->depth_half = kHalves[i].half; },
                "PHOTO has colour and depth side by side; the half that is the depth: right, left, "
                "below or above")
            .called("SIDE");
    model.excludes(estimator);
    half.excludes(estimator).excludes(model);
    std::vector<const Option*> others = {&estimator, &model, &half};
    if (depth != nullptr) {
        for (Option* other : {&estimator, &model, &half}) other->excludes(*depth);
        others.push_back(depth);
    }
    addPairOptions(line, &options->pair, others);
    std::vector<std::string> turns;
    for (media::Turn turn = kFirstTurn; turn < media::kTurns; ++turn)
        turns.emplace_back(media::kTurnWords[turn].name);
    line->word(
            "--rotate-depth", turns,
            [options](size_t i) { options->depth_turn = static_cast<media::Turn>(i) + kFirstTurn; },
            "turn the depth map clockwise by 90, 180 or 270 degrees, mirror it left to right (mirror) or top "
            "to "
            "bottom (flip), or exchange rows and columns (transpose, or transverse for the other diagonal)")
        .called("HOW");
    std::vector<std::string> answers;
    for (const Answer& answer : kAnswers) answers.emplace_back(answer.name);
    line->flagOrWord(
            "--invert-depth", answers, 0,
            [options](size_t i) { options->invert_depth = kAnswers[i].inverted; },
            "exchange near and far in the depth map (yes, or nothing behind it), leave them (no), or see "
            "from "
            "the "
            "photo whether its larger values are farther (auto)")
        .usually("auto");
    std::vector<std::string> ways;
    for (const Way& way : kWays) ways.emplace_back(way.name);
    line->word(
            "--holes", ways, [options](size_t i) { options->holes = kWays[i].holes; },
            "pixels without a depth: fill them from the far side where they certainly have none (auto), also "
            "where the lowest or highest level may stand for \"unknown\" (fill), or leave them "
            "(keep)")
        .usually("auto");
    line->unset(
        "--no-doctor", &options->doctor,
        "take the depth map as it is: not checked against the photo, nor turned, inverted, filled or spread "
        "over its range, but for --rotate-depth and --invert-depth");
}

}  // namespace quorvane::app
