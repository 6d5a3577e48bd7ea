#include <memory>
#include <utility>

#include "apps/quorvane/commands/command.h"
#include "apps/quorvane/commands/output_guard.h"
#include "apps/quorvane/drawing/stages_sheet.h"
#include "apps/quorvane/input/depth_source.h"
#include "apps/quorvane/terminal/usage_error.h"
#include "system/cancel.h"
#include "system/pending_output.h"
#include "system/standard_streams.h"

namespace quorvane::app {
namespace {

struct StagesOptions {
    InputOptions input;
    ViewOptions view;
    Talk talk;
    std::string out;  ///< the sheet
};

void stages(const StagesOptions& options) {
    const std::string& out = options.out;
    const std::string& timings = options.view.timings;
    refuseTwoWays(options.view);
    refuseStandardOutput({timings});
    if (parseOutput(out).kind != media::OutputKind::kStill)
        throw UsageError("-o " + out + ": the sheet is a .png file");
    refuseSameOutput(out, timings, "sheet and timings");
    refuseInputAsOutput({options.input.photo, options.input.depth}, {out, timings});
    // Asked before any work is done.
    { const PendingOutput place(out); }

    const DepthSource source = findDepth(options.input);
    refuseInputAsOutput({source.depth}, {out, timings});
    StandardOutputTo timing_lines(timings);
    Input input = readInput(options.input, options.talk, source);
    const media::RgbImage sheet =
        stagesSheet(options.view, options.talk, std::move(input.photo), std::move(input.depth.plane));
    timing_lines.require();
    throwIfCancelled();
    media::writePng(sheet, out);
    timing_lines.commit();
}

std::function<void()> prepare(CommandLine* line) {
    const auto options = std::make_shared<StagesOptions>();
    addInputOptions(line, &options->input);
    line->text("-o,--out", &options->out, "the sheet, a .png file").called("FILE").required();
    addTalkOptions(line, &options->talk);
    addViewOptions(line, &options->view);
    addTimingsOption(line, &options->view);
    return [options] { stages(*options); };
}

}  // namespace

Command stagesCommand() {
    return {"stages",
            "one labelled picture of every stage",
            {{"see what becomes of a photo and its depth map on the way",
              "quorvane stages photo.jpg depth.png -o stages.png"},
             {"with the depth inside a phone's photo", "quorvane stages portrait.jpg -o stages.png"}},
            prepare};
}

}  // namespace quorvane::app
