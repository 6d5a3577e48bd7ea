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

Writers planWriters(const media::OutputFormat& format, int frames, Size size, int supersample, int views) {
    // Compressing a picture keeps one core busy for longer than drawing it keeps all.
    const int cores = static_cast<int>(std::max(1U, std::thread::hardware_concurrency()));
    const int threads = format.any_order ? std::min(cores, frames) : 1;
    // One more waits when a writer is done with its last, and one is filled meanwhile.
    const int copies = supersample * supersample + 1 + (views > 1 ? 1 : 0);
    const int64_t bytes = int64_t{4} * size.width * size.height * copies * views;
    const int held = static_cast<int>(std::clamp<int64_t>(kMostHeldBytes / bytes, 1, threads + 2));
    return {std::min(threads, held), held};
}

void drawFrames(const std::vector<Position>& positions, const std::optional<Stereo>& stereo, Size size,
                Writers writers, View* view, media::ClipWriter* writer, StageTimes* times,
                const std::function<void(int)>& drawn) {
    const auto averaged = [&](DrawnView& one) {
        if (one.drawn.width <= size.width) return &one.drawn;
        times->measure(Stage::kAverage, [&] { average(one.drawn, size, &one.averaged); });
        return &one.averaged;
    };
    FrameQueue queue(writers.threads, writers.held_frames, [&](Frame& frame) {
        std::vector<const media::RgbaImage*> views;
        for (DrawnView& one : frame.views) views.push_back(averaged(one));
        if (stereo) times->measure(Stage::kAverage, [&] { join(*stereo, views, &frame.joined); });
        times->measure(Stage::kEncode,
                       [&] { writer->add(frame.number, stereo ? frame.joined : *views.front()); });
    });
    const int frames = static_cast<int>(positions.size());
    for (int number = 0; number < frames; ++number) {
        const Position& position = positions[static_cast<size_t>(number)];
        const std::vector<StereoView> views =
            stereo ? viewsAround(*stereo, position) : std::vector<StereoView>{{position, false}};
        Frame frame = queue.take();
        frame.number = number;
        frame.views.resize(views.size());
        for (size_t i = 0; i < views.size(); ++i) {
            throwIfCancelled();
            times->measure(Stage::kDraw, [&] {
                view->showDepth(views[i].shows_depth);
                view->draw(views[i].position);
            });
            times->measure(Stage::kReadBack, [&] { view->readBack(&frame.views[i].drawn); });
        }
        queue.push(std::move(frame));
        if (number == 0) times->noteFirstFrame();
        drawn(number + 1);
    }
    queue.finish();
}

}  // namespace quorvane::app
