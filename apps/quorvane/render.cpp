#include "arguments.h"
#include "commands.h"
#include "media/cancel.h"
#include "media/clip_writer.h"
#include "media/error.h"
#include "progress.h"
#include "standard_streams.h"
#include "view.h"

namespace quorvane::app {
namespace {

using media::OutputKind;
using media::Size;

constexpr int kLongestSide = 1920;
constexpr int kNoLimit = 1 << 30;

Size chooseSize(const RenderOptions& options, Size photo, bool even) {
    if (options.size.empty()) return media::pictureSize(photo, kLongestSide, even);
    if (options.size == "photo") return media::pictureSize(photo, kNoLimit, even);
    const Size size = parseSize(options.size);
    const Size fits = media::pictureSize(size, kNoLimit, even);
    if (fits != size)
        throw UsageError("--size " + options.size + ": an .mp4 has even sides, such as " +
                         std::to_string(fits.width) + "x" + std::to_string(fits.height));
    return size;
}

}  // namespace

void render(const RenderOptions& options) {
    // Everything that can be refused at once is refused before the images are read.
    const OutputKind kind = parseOutput(options.out);
    const bool even = kind == OutputKind::kMp4;
    const Position centre = options.at.empty() ? Position{} : parsePosition(options.at);
    if (!options.size.empty() && options.size != "photo") chooseSize(options, {}, even);
    refuseInputAsOutput(options.view, options.out);
    if (kind == OutputKind::kFolder) refuseInputAsFrame(options.view, options.out);

    StandardOutputTo timings(options.view.timings);
    Input input = readInput(options.view);
    media::throwIfCancelled();
    const Size size = chooseSize(options, {input.photo.width, input.photo.height}, even);
    media::ClipFormat format;
    format.size = size;
    format.fps = options.fps;
    format.force = options.force;
    const std::unique_ptr<media::ClipWriter> writer = media::openClip(options.out, kind, format);
    View view(options.view, std::move(input), size, options.supersample);

    const bool still = kind == OutputKind::kStill;
    const int frames = still ? 1 : options.frames;
    Progress progress(frames, options.view.quiet);
    for (int frame = 0; frame < frames; ++frame) {
        media::throwIfCancelled();
        Position position = centre;
        if (!still) {
            const Position swing = motionAt(options.motion, frame, frames);
            position = {centre.x + options.amount * swing.x, centre.y + options.amount * swing.y};
        }
        writer->add(view.pictureAt(position));
        progress.step(frame + 1);
    }
    timings.require();
    writer->finish();
}

}  // namespace quorvane::app
