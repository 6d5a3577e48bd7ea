#include <cstdio>
#include <memory>
#include <optional>
#include <utility>

#include "apps/quorvane/commands/command.h"
#include "apps/quorvane/commands/inspect_report.h"
#include "apps/quorvane/commands/output_guard.h"
#include "apps/quorvane/commands/profile_options.h"
#include "apps/quorvane/drawing/clip_drawing.h"
#include "apps/quorvane/drawing/picture_options.h"
#include "apps/quorvane/drawing/stages_sheet.h"
#include "apps/quorvane/terminal/ended_by_signals.h"
#include "media/decoder/decoder.h"
#include "media/depth/anaglyph.h"
#include "media/embedded/jpeg.h"
#include "media/picture/resample.h"
#include "system/cancel.h"
#include "system/error.h"
#include "system/pending_output.h"
#include "system/standard_streams.h"

namespace quorvane::app {
namespace {

struct InspectOptions {
    InputOptions input;
    ViewOptions view;
    PictureOptions picture;
    std::string sheet;  ///< a .png file for the stages, or empty
    bool json = false;
};

DepthReport reportOn(const InspectOptions& asked, const Input& input) {
    const ViewOptions& options = asked.view;
    DepthReport report;
    report.size = {input.depth.plane.width, input.depth.plane.height};
    report.bits = input.depth.bits;
    report.polarity = input.polarity;
    report.findings = input.findings;
    const Target target = {sizeOf(asked.picture, input.photo_size, kLongestSide, false),
                           supersampleInSoftware(options),
                           pathAround({}, asked.picture.motion, asked.picture.amount, 1), kReportedTexture};
    const auto photo_for = [&input](const FitPlan& fit) {
        return fittedPhoto(fit, input.photo_size, input.photo);
    };
    FittedPicture fitted = fitPicture(options, target, input.photo_size, photo_for, input.depth.plane);
    report.plan = fitted.fit;
    report.clean_edges = options.clean_edges;
    report.picture = std::move(fitted.plan);
    report.stretch = stretchOf(options, target, report.plan, report.picture);
    const Fit& fit = report.plan.fit;
    report.block_bytes = blockBytes(fit.photo, fit.grid);
    return report;
}

/// The size of the file's own picture, of which no pixel is decoded.
Size sizeInHeader(const std::string& file, const std::string& name) {
    return endedBySignals([&]() -> Size {
        // A header says nothing of what is missing behind it; decoding does.
        const std::optional<media::Jpeg> jpeg = media::walkJpeg(file);
        if (jpeg && !jpeg->complete) media::decoder::decodePhoto(file, name);
        const media::PictureHeader header = media::decoder::readPictureHeader(file, name);
        return {header.width, header.height};
    });
}

/// What a photo without depth is answered. A damaged photo is told as such when its size is read.
std::string whyNoDepth(const DepthSource& source, const std::string& name) {
    return endedBySignals([&]() -> std::string {
        try {
            constexpr int kSide = 400;
            if (media::isAnaglyph(
                    media::decoder::previewPhoto(source.file, source.contents, name, kSide, nullptr).shrunk))
                return anaglyphLine();
        } catch (const Error&) {
        }
        return noDepthAnywhere(source.contents, name);
    });
}

/// Reads what is in the file into the report. Returns both images, the photo in full where `options` want a
/// sheet of them; or nothing where there is no depth.
std::optional<Input> look(const InspectOptions& options, const DepthSource& source, Report* report) {
    const std::string& name = options.input.photo;
    const bool draws = !options.sheet.empty();
    std::optional<Input> input;
    if (source.origin == DepthOrigin::kNone) {
        report->no_depth = whyNoDepth(source, name);
        if (draws) throw Error(name + ": " + report->no_depth);
    } else {
        try {
            input =
                readInput(options.input, source,
                          draws || planReadsPhoto(options.view) ? PhotoDetail::kFull : PhotoDetail::kPreview);
            report->depth = reportOn(options, *input);
            report->belief = input->belief;
        } catch (const Error& error) {
            // What is damaged inside is what one inspects a photo for; all else was asked for by name.
            const bool inside = source.origin == DepthOrigin::kInside ||
                                (source.origin == DepthOrigin::kPair && !options.input.pair.given());
            if (!inside || draws) throw;
            input.reset();
            report->origin = DepthOrigin::kNone;
            report->no_depth = error.what();
        }
    }
    report->photo = input ? input->photo_size : sizeInHeader(source.file, name);
    report->contents = source.contents;
    report->pair = source.pair;
    if (input)
        for (const std::string& remark : input->remarks)
            (source.origin == DepthOrigin::kPair ? report->pair_remarks : report->contents.remarks)
                .push_back(remark);
    return input;
}

void inspect(const InspectOptions& options) {
    refuseTwoWays(options.view);
    const InputOptions& asked = options.input;
    if (!options.sheet.empty()) {
        requirePng(options.sheet, "-o " + options.sheet + ": the sheet is a .png file");
        refuseInputAsOutput({asked.photo, asked.depth, asked.pair.right}, {options.sheet});
        const PendingOutput place(options.sheet);
    }
    const DepthSource source = findDepth(asked);
    refuseInputAsOutput({source.depth}, {options.sheet});

    Report report;
    report.name = asked.photo;
    report.bytes = source.file.size();
    report.origin = source.origin;
    report.depth_file = source.depth;
    std::optional<Input> input = look(options, source, &report);

    if (!options.sheet.empty()) {
        const media::Plane& depth = input->depth.plane;
        const media::GrayImage given = media::toBytes(depth, {depth.width, depth.height});
        const Stages stages = [&] {
            const StandardOutputTo nowhere("");
            return drawStages(options.view, options.picture, {}, std::move(input->photo), depth);
        }();
        const media::RgbImage sheet = stagesSheet(stages, given);
        throwIfCancelled();
        media::writePng(sheet, options.sheet);
    }
    const std::string text = options.json ? reportJson(report) : reportText(report);
    std::fputs(text.c_str(), stdout);
}

std::function<void()> prepare(CommandLine* line) {
    const auto options = std::make_shared<InspectOptions>();
    addInputOptions(line, &options->input);
    line->flag("--json", &options->json, "for programs");
    line->text("-o,--out", &options->sheet,
               "also write the stages, as the stages command does, to a .png file")
        .called("FILE");
    addPictureOptions(line, "1920", &options->picture);
    addViewOptions(line, &options->view);
    addProfileOption(line, &options->view);
    addSaveProfileOption(line, options->view);
    return [options] { inspect(*options); };
}

}  // namespace

Command inspectCommand() {
    return {"inspect",
            "what a photo's file holds, and what would be made of it",
            {{"what a photo's file holds, and what would be made of it", "quorvane inspect portrait.jpg"},
             {"the same for a program, of a photo and a depth map",
              "quorvane inspect photo.jpg depth.png --json"}},
            prepare};
}

}  // namespace quorvane::app
