#include "apps/quorvane/commands/stages.h"

#include "apps/quorvane/commands/commands.h"
#include "apps/quorvane/commands/output_guard.h"
#include "apps/quorvane/drawing/view.h"
#include "apps/quorvane/terminal/arguments.h"
#include "apps/quorvane/terminal/usage_error.h"
#include "media/scene/sheet.h"
#include "system/cancel.h"
#include "system/pending_output.h"
#include "system/standard_streams.h"

namespace quorvane::app {

namespace {

constexpr int kColumns = 4;
constexpr int kPanelWidth = 480;
// Large enough to fill a panel of either orientation.
constexpr int kLongestSide = 960;

}  // namespace

media::RgbImage stagesSheet(const ViewOptions& options, Input input) {
    const media::GrayImage given =
        media::toBytes(input.depth.plane, {input.depth.plane.width, input.depth.plane.height});
    const media::RgbImage photo = input.photo;
    const Size size = pictureSize({photo.width, photo.height}, kLongestSide, false);
    View view(options, size, 1);
    view.upload(view.fit(std::move(input)));

    const auto picture = [&view](double x) {
        throwIfCancelled();
        view.draw({x, 0.0});
        media::RgbaImage drawn;
        view.readBack(&drawn);
        return media::toRgb(drawn);
    };
    const std::vector<media::Panel> panels = {
        {"photo", photo},
        {"guide: its luma at grid size", media::toRgb(view.guide())},
        {"depth as given, larger = nearer", media::toRgb(given)},
        {"depth as shaped", media::toRgb(view.shapedDepth())},
        {"from the left", picture(-1.0)},
        {"at rest", picture(0.0)},
        {"from the right", picture(1.0)},
    };
    return media::contactSheet(panels, kColumns, kPanelWidth);
}

void stages(const ViewOptions& options, const std::string& out) {
    if (parseOutput(out).kind != media::OutputKind::kStill)
        throw UsageError("-o " + out + ": the sheet is a .png file");
    refuseSameOutput(out, options.timings, "sheet and timings");
    refuseInputAsOutput({options.input.photo, options.input.depth}, {out, options.timings});
    // Asked before any work is done.
    { const PendingOutput place(out); }

    const DepthSource source = findDepth(options.input);
    refuseInputAsOutput({source.depth}, {out, options.timings});
    StandardOutputTo timings(options.timings);
    const media::RgbImage sheet = stagesSheet(options, readInput(options, source));
    timings.require();
    throwIfCancelled();
    media::writePng(sheet, out);
    timings.commit();
}

}  // namespace quorvane::app
