#ifndef QUORVANE_APPS_DRAWING_CLIP_DRAWING_H
#define QUORVANE_APPS_DRAWING_CLIP_DRAWING_H

#include <functional>
#include <optional>
#include <vector>

#include "apps/quorvane/drawing/frame_queue.h"
#include "apps/quorvane/drawing/motion.h"
#include "apps/quorvane/drawing/stage_times.h"
#include "apps/quorvane/drawing/stereo.h"
#include "apps/quorvane/drawing/view.h"
#include "media/clip/clip_writer.h"

namespace quorvane::app {

/// Threads that write frames.
struct Writers {
    int threads;
    int held_frames;  ///< in memory at most, those being drawn and written included
};

/// As many threads as `format` and this machine have a use for, and no more frames than half a gigabyte
/// holds. `size` is a view's, which is drawn `supersample` times as large; a frame has `views` of them.
Writers planWriters(const media::OutputFormat& format, int frames, Size size, int supersample, int views);

/// Notes how the view that was just drawn, one of those around `middle`, is made that of a parallel camera.
void setParallel(Position middle, const Stereo& stereo, const View& view, DrawnView* one);

/// What was drawn, averaged to `size` and made parallel as far as that was noted.
const media::RgbaImage& finished(Size size, StageTimes* times, DrawnView* one);

/// What becomes of frames that are seen from the same place as an earlier one.
enum class Repeats {
    kKept,   ///< the earlier one is shown again, as far as 128 MB hold what is kept for that
    kDrawn,  ///< they are drawn like all others
};

/// Makes a frame from every position in turn, with `stereo` the views around it. Meanwhile others are
/// averaged to `size`, joined and given to `writer`, which has them all at the end, though it is not
/// finished. Calls `made` with the number of frames so far. Throws Error, and Cancelled after a signal.
void drawFrames(const std::vector<Position>& positions, const std::optional<Stereo>& stereo, Size size,
                Writers writers, Repeats repeats, View* view, media::ClipWriter* writer, StageTimes* times,
                const std::function<void(int)>& made);

}  // namespace quorvane::app

#endif
