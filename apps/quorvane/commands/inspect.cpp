#include <cstdio>
#include <utility>

#include "apps/quorvane/commands/commands.h"
#include "apps/quorvane/commands/output_guard.h"
#include "apps/quorvane/commands/report.h"
#include "apps/quorvane/commands/stages.h"
#include "apps/quorvane/terminal/arguments.h"
#include "apps/quorvane/terminal/ended_by_signals.h"
#include "apps/quorvane/terminal/usage_error.h"
#include "quorvane/esRenderer.h"
#include "system/cancel.h"
#include "system/error.h"
#include "system/pending_output.h"

namespace quorvane::app {
namespace {

template <typename Picture>
Size sizeOf(const Picture& image) {
    return {image.width, image.height};
}

DepthReport reportOn(const Input& input) {
    DepthReport report;
    report.size = sizeOf(input.depth.plane);
    report.bits = input.depth.bits;
    report.findings = input.findings;
    const Size photo = sizeOf(input.photo);
    report.plan = planFit(photo, report.size, photo, kReportedTexture);
    const Fit& fit = report.plan.fit;
    // It is only asked for a sum, and names no GL object: it needs no context.
    ESRenderer renderer;
    report.block_bytes =
        renderer.getRequiredMemSize(fit.photo.width, fit.photo.height, fit.depth.width, fit.depth.height);
    return report;
}

}  // namespace

void inspect(const InspectOptions& options) {
    const InputOptions& asked = options.input;
    if (!options.sheet.empty()) {
        if (parseOutput(options.sheet).kind != media::OutputKind::kStill)
            throw UsageError("-o " + options.sheet + ": the sheet is a .png file");
        refuseInputAsOutput({asked.photo, asked.depth}, {options.sheet});
        const PendingOutput place(options.sheet);
    }
    DepthSource source = findDepth(asked);
    refuseInputAsOutput({source.depth}, {options.sheet});

    Report report;
    report.name = asked.photo;
    report.bytes = source.file.size();
    report.origin = source.origin;
    report.depth_file = source.depth;
    Input input;
    if (source.origin == DepthOrigin::kNone) {
        report.no_depth = noDepthAnywhere(source.contents, asked.photo);
        if (!options.sheet.empty()) throw Error(asked.photo + ": " + report.no_depth);
    } else {
        try {
            input = readInput(asked, source);
            report.depth = reportOn(input);
        } catch (const Error& error) {
            // What is damaged inside is what one inspects a photo for; all else was asked for by name.
            if (source.origin != DepthOrigin::kInside || !options.sheet.empty()) throw;
            report.origin = DepthOrigin::kNone;
            report.no_depth = error.what();
        }
    }
    if (!report.depth)
        input.photo = endedBySignals([&] { return media::decodePhoto(source.file, asked.photo); });
    report.photo = sizeOf(input.photo);
    report.contents = std::move(source.contents);
    for (const std::string& remark : input.remarks) report.contents.remarks.push_back(remark);

    if (!options.sheet.empty()) {
        ViewOptions view;
        view.input = asked;
        const media::RgbImage sheet = [&] {
            const StandardOutputTo nowhere("");
            return stagesSheet(view, std::move(input));
        }();
        throwIfCancelled();
        media::writePng(sheet, options.sheet);
    }
    const std::string text = options.json ? reportJson(report) : reportText(report);
    std::fputs(text.c_str(), stdout);
}

}  // namespace quorvane::app
