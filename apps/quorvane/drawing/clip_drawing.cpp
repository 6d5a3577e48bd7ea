#include "apps/quorvane/drawing/clip_drawing.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "apps/quorvane/drawing/average.h"
#include "apps/quorvane/drawing/kept_drawings.h"
#include "media/clip/yuv420.h"
#include "system/cancel.h"
#include "system/cores.h"

namespace quorvane::app {
namespace {

constexpr int64_t kMostHeldBytes = int64_t{512} << 20;

/// Of frames that will be shown again: those of a loop from side to side at 1920 x 1440, 30 a second.
constexpr int64_t kMostKeptBytes = int64_t{128} << 20;

/// What a frame takes whose `views` of that size are drawn `supersample` times as large.
int64_t bytesOf(Size size, int supersample, int views) {
    const int copies = supersample * supersample + 1 + (views > 1 ? 1 : 0);
    return int64_t{4} * size.width * size.height * copies * views;
}

/// Draws what is seen from a position, and writes frames of it.
class Drawer {
  public:
    Drawer(const std::optional<Stereo>& stereo, Size size, View* view, media::ClipWriter* writer,
           StageTimes* times)
        : m_stereo(stereo), m_size(size), m_view(*view), m_writer(*writer), m_times(*times) {}

    int64_t bytesOfDrawing() const {
        return m_yuv420 != nullptr
                   ? static_cast<int64_t>(media::yuv420Bytes(m_size))
                   : bytesOf(m_size, m_view.supersample(), static_cast<int>(viewsFrom(Position()).size()));
    }

    void draw(const Position& position, Drawing* drawing) {
        const std::vector<StereoView> views = viewsFrom(position);
        drawing->views.resize(views.size());
        for (size_t i = 0; i < views.size(); ++i) {
            throwIfCancelled();
            DrawnView& one = drawing->views[i];
            if (m_yuv420 != nullptr) {
                m_times.measure(Stage::kDraw, [&] { m_view.drawYuv420(views[i].position, &one.planes); });
                continue;
            }
            m_times.measure(Stage::kDraw, [&] {
                m_view.showDepth(views[i].shows_depth);
                m_view.draw(views[i].position);
            });
            m_times.measure(Stage::kReadBack, [&] { m_view.readBack(&one.drawn); });
            if (m_stereo && hasEyes(*m_stereo)) setParallel(position, *m_stereo, m_view, &one);
        }
    }

    /// Several threads may.
    void write(Frame* frame) {
        if (m_yuv420 != nullptr) {
            m_times.measure(Stage::kEncode, [&] {
                m_yuv420->addYuv420(frame->number, frame->drawing->views.front().planes);
            });
            return;
        }
        const media::RgbaImage& picture = pictureOf(frame->drawing.get());
        m_times.measure(Stage::kEncode, [&] { m_writer.add(frame->number, picture); });
    }

  private:
    std::vector<StereoView> viewsFrom(const Position& position) const {
        if (m_stereo) return viewsAround(*m_stereo, position);
        return {{position, false}};
    }

    const media::RgbaImage& pictureOf(Drawing* drawing) {
        const std::lock_guard<std::mutex> lock(drawing->finishing);
        if (drawing->finished != nullptr) return *drawing->finished;
        std::vector<const media::RgbaImage*> views;
        for (DrawnView& one : drawing->views) views.push_back(&finished(m_size, &m_times, &one));
        if (m_stereo) m_times.measure(Stage::kAverage, [&] { join(*m_stereo, views, &drawing->joined); });
        drawing->finished = m_stereo ? &drawing->joined : views.front();
        return *drawing->finished;
    }

    const std::optional<Stereo>& m_stereo;
    const Size m_size;
    View& m_view;
    media::ClipWriter& m_writer;
    StageTimes& m_times;
    media::Yuv420Frames* const m_yuv420 = !m_stereo && m_view.drawsYuv420() ? m_writer.yuv420() : nullptr;
};

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
    const int held = static_cast<int>(
        std::clamp<int64_t>(kMostHeldBytes / bytesOf(size, supersample, views), 1, threads + 2));
    return {std::min(threads, held), held};
}

void drawFrames(const std::vector<Position>& positions, const std::optional<Stereo>& stereo, Size size,
                Writers writers, Repeats repeats, View* view, media::ClipWriter* writer, StageTimes* times,
                const std::function<void(int)>& made) {
    Drawer drawer(stereo, size, view, writer, times);
    FrameQueue queue(writers.threads, writers.held_frames, [&](Frame& frame) { drawer.write(&frame); });
    const int64_t most = kMostKeptBytes / drawer.bytesOfDrawing();
    KeptDrawings kept(positions, repeats == Repeats::kKept ? static_cast<int>(most) : 0);
    const int frames = static_cast<int>(positions.size());
    for (int number = 0; number < frames; ++number) {
        Frame frame = queue.take();
        frame.number = number;
        if (std::shared_ptr<Drawing> earlier = kept.take(number)) {
            frame.drawing.swap(earlier);
            queue.giveBack(std::move(earlier));
        } else {
            drawer.draw(positions[static_cast<size_t>(number)], frame.drawing.get());
        }
        kept.keep(number, frame.drawing);
        queue.push(std::move(frame));
        if (number == 0) times->noteFirstFrame();
        made(number + 1);
    }
    queue.finish();
}

}  // namespace quorvane::app
