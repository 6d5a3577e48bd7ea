#include "apps/quorvane/drawing/clip_drawing.h"

#include <algorithm>
#include <cstdint>
#include <thread>
#include <utility>

#include "apps/quorvane/drawing/average.h"
#include "apps/quorvane/drawing/frame_queue.h"
#include "system/cancel.h"

namespace quorvane::app {
namespace {

constexpr int64_t kMostHeldBytes = int64_t{512} << 20;

}  // namespace

Writers planWriters(const media::OutputFormat& format, int frames, Size size, int supersample) {
    // Compressing a picture keeps one core busy for longer than drawing it keeps all.
    const int cores = static_cast<int>(std::max(1U, std::thread::hardware_concurrency()));
    const int threads = format.any_order ? std::min(cores, frames) : 1;
    // One more waits when a writer is done with its last, and one is filled meanwhile.
    const int64_t bytes = int64_t{4} * size.width * size.height * (supersample * supersample + 1);
    const int held = static_cast<int>(std::clamp<int64_t>(kMostHeldBytes / bytes, 1, threads + 2));
    return {std::min(threads, held), held};
}

void drawFrames(const std::vector<Position>& positions, Size size, Writers writers, View* view,
                media::ClipWriter* writer, StageTimes* times, const std::function<void(int)>& drawn) {
    FrameQueue queue(writers.threads, writers.held_frames, [&](Frame& frame) {
        const media::RgbaImage* picture = &frame.drawn;
        if (frame.drawn.width > size.width) {
            times->measure(Stage::kAverage, [&] { average(frame.drawn, size, &frame.averaged); });
            picture = &frame.averaged;
        }
        times->measure(Stage::kEncode, [&] { writer->add(frame.number, *picture); });
    });
    const int frames = static_cast<int>(positions.size());
    for (int number = 0; number < frames; ++number) {
        throwIfCancelled();
        times->measure(Stage::kDraw, [&] { view->draw(positions[static_cast<size_t>(number)]); });
        Frame frame = queue.take();
        frame.number = number;
        times->measure(Stage::kReadBack, [&] { view->readBack(&frame.drawn); });
        queue.push(std::move(frame));
        if (number == 0) times->noteFirstFrame();
        drawn(number + 1);
    }
    queue.finish();
}

}  // namespace quorvane::app
