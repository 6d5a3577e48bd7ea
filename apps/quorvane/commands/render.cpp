#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <thread>
#include <utility>

#include "apps/quorvane/commands/commands.h"
#include "apps/quorvane/commands/output_guard.h"
#include "apps/quorvane/drawing/frame_queue.h"
#include "apps/quorvane/drawing/stage_times.h"
#include "apps/quorvane/drawing/view.h"
#include "apps/quorvane/input/depth_source.h"
#include "apps/quorvane/terminal/arguments.h"
#include "apps/quorvane/terminal/progress.h"
#include "apps/quorvane/terminal/usage_error.h"
#include "media/clip/clip_writer.h"
#include "system/cancel.h"
#include "system/error.h"
#include "system/standard_streams.h"

namespace quorvane::app {
namespace {

using media::OutputKind;

constexpr int kLongestSide = 1920;
constexpr int kNoLimit = 1 << 30;
constexpr int64_t kMostHeldBytes = int64_t{512} << 20;

Size chooseSize(const RenderOptions& options, Size photo, const media::OutputFormat& format) {
    const bool even = format.even_sides;
    if (options.size.empty()) return pictureSize(photo, kLongestSide, even);
    if (options.size == "photo") return pictureSize(photo, kNoLimit, even);
    const Size size = parseSize(options.size);
    const Size fits = pictureSize(size, kNoLimit, even);
    if (fits != size)
        throw UsageError("--size " + options.size + ": " + std::string(format.name) +
                         " has even sides, such as " + std::to_string(fits.width) + "x" +
                         std::to_string(fits.height));
    return size;
}

std::unique_ptr<media::ClipWriter> openOutput(const RenderOptions& options, const media::OutputFormat& format,
                                              Size size) {
    try {
        return media::openClip(options.out, format, {size, options.fps, options.force});
    } catch (const media::FolderNotEmpty& error) {
        throw Error(error.what() + std::string("; --force replaces the numbered frames in it"));
    }
}

/// Averages the n x n samples that were drawn for each pixel.
void average(const media::RgbaImage& drawn, Size size, media::RgbaImage* out) {
    if (out->samples.empty()) *out = media::RgbaImage(size.width, size.height);
    const int n = drawn.width / size.width;
    const size_t stride = static_cast<size_t>(drawn.width) * 4;
    uint8_t* next = out->samples.data();
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x)
            for (size_t c = 0; c < 4; ++c) {
                const uint8_t* block =
                    &drawn.samples[static_cast<size_t>(y * n) * stride + static_cast<size_t>(x * n) * 4 + c];
                int sum = 0;
                for (size_t j = 0; j < static_cast<size_t>(n); ++j)
                    for (size_t i = 0; i < static_cast<size_t>(n); ++i) sum += block[j * stride + i * 4];
                *next++ = static_cast<uint8_t>((sum + n * n / 2) / (n * n));
            }
}

/// Who writes the frames.
struct Crew {
    int writers;  ///< threads
    int frames;   ///< held for them
};

Crew crewFor(const media::OutputFormat& format, int frames, Size size, int supersample) {
    // Compressing a picture keeps one core busy for longer than drawing it keeps all.
    const int cores = static_cast<int>(std::max(1U, std::thread::hardware_concurrency()));
    const int writers = format.any_order ? std::min(cores, frames) : 1;
    // One more waits when a writer is done with its last, and one is filled meanwhile.
    const int64_t bytes = int64_t{4} * size.width * size.height * (supersample * supersample + 1);
    const int held = static_cast<int>(std::clamp<int64_t>(kMostHeldBytes / bytes, 1, writers + 2));
    return {std::min(writers, held), held};
}

}  // namespace

void render(const RenderOptions& options) {
    // Everything that can be refused at once is refused before the images are read.
    const media::OutputFormat& format = parseOutput(options.out);
    const Position centre = options.at.empty() ? Position{} : parsePosition(options.at);
    if (!options.size.empty() && options.size != "photo") chooseSize(options, {}, format);
    const auto keep = [&](const std::vector<std::string>& inputs) {
        refuseInputAsOutput(inputs, {options.out, options.view.timings});
        if (format.kind == OutputKind::kFolder) refuseInputAsFrame(inputs, options.out);
    };
    refuseSameOutput(options.out, options.view.timings, "picture and timings");
    const InputOptions& asked = options.view.input;
    keep({asked.photo, asked.depth});

    StageTimes times;
    DepthSource source = times.measure(Stage::kDecode, [&] { return findDepth(asked); });
    keep({source.depth});
    StandardOutputTo timings(options.view.timings);
    Input input = times.measure(Stage::kDecode, [&] { return readInput(options.view, source); });
    source = {};
    throwIfCancelled();
    const Size size = chooseSize(options, {input.photo.width, input.photo.height}, format);
    const std::unique_ptr<media::ClipWriter> writer =
        times.measure(Stage::kSetUp, [&] { return openOutput(options, format, size); });
    const bool still = format.kind == OutputKind::kStill;
    const int frames = still ? 1 : options.frames;
    const Crew crew = crewFor(format, frames, size, options.supersample);
    View view = times.measure(Stage::kSetUp, [&] { return View(options.view, size, options.supersample); });
    {
        const FittedInput fitted = times.measure(Stage::kFit, [&] { return view.fit(std::move(input)); });
        times.measure(Stage::kUpload, [&] { view.upload(fitted); });
    }

    FrameQueue queue(crew.writers, crew.frames, [&](Frame& frame) {
        const media::RgbaImage* picture = &frame.drawn;
        if (options.supersample > 1) {
            times.measure(Stage::kAverage, [&] { average(frame.drawn, size, &frame.averaged); });
            picture = &frame.averaged;
        }
        times.measure(Stage::kEncode, [&] { writer->add(frame.number, *picture); });
    });
    {
        Progress progress(frames, options.view.quiet);
        for (int number = 0; number < frames; ++number) {
            throwIfCancelled();
            Position position = centre;
            if (!still) {
                const Position swing = motionAt(options.motion, number, frames);
                position = {centre.x + options.amount * swing.x, centre.y + options.amount * swing.y};
            }
            times.measure(Stage::kDraw, [&] { view.draw(position); });
            Frame frame = queue.take();
            frame.number = number;
            times.measure(Stage::kReadBack, [&] { view.readBack(&frame.drawn); });
            queue.push(std::move(frame));
            if (number == 0) times.noteFirstFrame();
            progress.step(number + 1);
        }
        queue.finish();
        timings.require();
        times.measure(Stage::kEncode, [&] { writer->finish(); });
        timings.commit();
    }
    if (options.stats) std::fputs(times.table(frames, crew.writers).c_str(), stderr);
}

}  // namespace quorvane::app
