#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "apps/quorvane/commands/command.h"
#include "apps/quorvane/commands/output_guard.h"
#include "apps/quorvane/commands/profile_options.h"
#include "apps/quorvane/drawing/picture_options.h"
#include "apps/quorvane/drawing/stages_sheet.h"
#include "apps/quorvane/input/depth_source.h"
#include "media/picture/resample.h"
#include "system/cancel.h"
#include "system/pending_folder.h"
#include "system/pending_output.h"
#include "system/standard_streams.h"

namespace quorvane::app {
namespace {

struct StagesOptions {
    InputOptions input;
    ViewOptions view;
    PictureOptions picture;
    Talk talk;
    std::string out;  ///< the sheet, or a folder
    bool force = false;
};

/// What is written besides the timings.
std::vector<std::string> outputs(const StagesOptions& options, bool into_folder) {
    if (!into_folder) return {options.out};
    std::vector<std::string> files;
    for (const std::string& name : stageFiles()) files.push_back(options.out + "/" + name);
    return files;
}

void stages(const StagesOptions& options) {
    const std::string& out = options.out;
    const std::string& timings = options.view.timings;
    refuseTwoWays(options.view);
    refuseStandardOutput({timings});
    const bool into_folder =
        pngOrFolder(out, "-o " + out + ": the sheet is a .png file, and each stage one in a folder/") ==
        media::OutputKind::kFolder;
    std::vector<std::string> written = outputs(options, into_folder);
    for (const std::string& file : written) refuseSameOutput(file, timings, "stages and timings");
    written.push_back(timings);
    refuseInputAsOutput({options.input.photo, options.input.depth, options.input.pair.right}, written);
    requirePlace(out, into_folder, options.force, "the stages");

    const DepthSource source = findDepth(options.input);
    refuseInputAsOutput({source.depth}, written);
    StandardOutputTo timing_lines(timings);
    Input input = readInput(options.input, options.talk, source);
    std::optional<PendingFolder> folder;
    if (into_folder) folder.emplace(options.out, options.force);
    const media::GrayImage given =
        media::toBytes(input.depth.plane, {input.depth.plane.width, input.depth.plane.height});
    const Stages drawn =
        drawStages(options.view, options.picture, options.talk, std::move(input.photo), input.depth.plane);
    timing_lines.require();
    throwIfCancelled();
    if (into_folder) {
        addStages(drawn, &*folder);
        folder->commit([](const std::string&) { return false; });
    } else {
        media::writePng(stagesSheet(drawn, given), out);
    }
    timing_lines.commit();
}

std::function<void()> prepare(CommandLine* line) {
    const auto options = std::make_shared<StagesOptions>();
    addInputOptions(line, &options->input);
    line->text("-o,--out", &options->out,
               "a .png file: one labelled sheet; else a folder, with each stage as a file")
        .called("PATH")
        .required();
    line->flag("--force", &options->force, "replace the stages in a folder that is not empty");
    addPictureOptions(line, "1920", &options->picture);
    addTalkOptions(line, &options->talk);
    addViewOptions(line, &options->view);
    addTimingsOption(line, &options->view);
    addProfileOption(line, &options->view);
    addSaveProfileOption(line, options->view);
    return [options] { stages(*options); };
}

}  // namespace

Command stagesCommand() {
    return {"stages",
            "every stage from the photo to the picture: a labelled sheet, or files",
            {{"see what becomes of a photo and its depth map on the way",
              "quorvane stages photo.jpg depth.png -o stages.png"},
             {"each stage as a file", "quorvane stages photo.jpg depth.png -o stages/"},
             {"with the depth inside a phone's photo", "quorvane stages portrait.jpg -o stages.png"}},
            prepare};
}

}  // namespace quorvane::app
