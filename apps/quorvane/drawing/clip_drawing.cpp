#include "apps/quorvane/drawing/clip_drawing.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "apps/quorvane/drawing/average.h"
#include "apps/quorvane/drawing/frame_queue.h"
#include "system/cancel.h"
#include "system/cores.h"

namespace quorvane::app {
namespace {

constexpr int64_t kMostHeldBytes = int64_t{512} << 20;

}  // namespace

void setParallel(Position middle, const Stereo& stereo, const View& view, DrawnView* one) {
    one->lens = view.lens();
    one->turn_deg = view.turn() - view.turnAt(middle.x);
    one->zoom = zoomForParallel(one->lens, view.turnAt(stereo.eyes));
}

const media::RgbaImage& finished(Size size, StageTimes* times, DrawnView* one) {
    const media::RgbaImage* picture = &one->drawn;
    if (picture->width > size.width) {
        times->measure(Stage::kAverage, [&] { average(*picture, size, &one->averaged); });
        picture = &one->averaged;
    }
    if (one->turn_deg == 0.0 && one->zoom == 1.0) return *picture;
    times->measure(Stage::kAverage,
                   [&] { makeParallel(*picture, one->lens, one->turn_deg, one->zoom, &one->parallel); });
    return one->parallel;
}

Writers planWriters(const media::OutputFormat& format, int frames, Size size, int supersample, int views) {
    // Compressing a picture keeps one core busy for longer than drawing it keeps all.
    const int cores = usableCores();
    const int threads = format.kind == media::OutputKind::kFolder ? std::min(cores, frames) : 1;
    // One more waits when a writer is done with its last, and one is filled meanwhile.
    const int copies = supersample * supersample + 1 + (views > 1 ? 1 : 0);
    const int64_t bytes = int64_t{4} * size.width * size.height * copies * views;
    const int held = static_cast<int>(std::clamp<int64_t>(kMostHeldBytes / bytes, 1, threads + 2));
    return {std::min(threads, held), held};
}

void drawFrames(const std::vector<Position>& positions, const std::optional<Stereo>& stereo, Size size,
                Writers writers, View* view, media::ClipWriter* writer, StageTimes* times,
                const std::function<void(int)>& drawn) {
    const bool as_taken = !stereo && writer->takesYuv420() && view->drawsYuv420();
    FrameQueue queue(writers.threads, writers.held_frames, [&](Frame& frame) {
        if (as_taken) {
            times->measure(Stage::kEncode,
                           [&] { writer->addYuv420(frame.number, frame.views.front().planes); });
            return;
        }
        std::vector<const media::RgbaImage*> views;
        for (DrawnView& one : frame.views) views.push_back(&finished(size, times, &one));
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
            if (as_taken) {
                times->measure(Stage::kDraw,
                               [&] { view->drawYuv420(views[i].position, &frame.views[i].planes); });
                continue;
            }
            times->measure(Stage::kDraw, [&] {
                view->showDepth(views[i].shows_depth);
                view->draw(views[i].position);
            });
            DrawnView& one = frame.views[i];
            times->measure(Stage::kReadBack, [&] { view->readBack(&one.drawn); });
            if (stereo && hasEyes(*stereo)) setParallel(position, *stereo, *view, &one);
        }
        queue.push(std::move(frame));
        if (number == 0) times->noteFirstFrame();
        drawn(number + 1);
    }
    queue.finish();
}

}  // namespace quorvane::app
