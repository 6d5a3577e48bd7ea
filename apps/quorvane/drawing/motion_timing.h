#ifndef QUORVANE_APPS_DRAWING_MOTION_TIMING_H
#define QUORVANE_APPS_DRAWING_MOTION_TIMING_H

#include <optional>
#include <vector>

#include "apps/quorvane/drawing/motion.h"
#include "apps/quorvane/terminal/command_line.h"

namespace quorvane::app {

/// How a motion is gone through.
struct MotionTiming {
    bool ease = false;       ///< begins and ends softly
    bool ping_pong = false;  ///< to its end, and back by the same way
    bool once = false;       ///< ends at its end, and is no loop
    int cycles = 1;          ///< how often it is gone through
    double hold = 0.0;       ///< seconds that it stands still at each end
};

/// The motion with its timing, which takes `seconds`; a fraction of them for each part of its `place`. What
/// holds, turns or eases is at rest there, so that its speed has no seam either. Throws UsageError where the
/// holds leave no time to move in.
Motion timed(const Motion& motion, const MotionTiming& timing, double seconds);

/// The seconds that a motion with its timing takes by itself; 0 where any will do.
double ownSeconds(const Motion& motion, const MotionTiming& timing);

/// How a motion becomes frames, as a command line says it.
struct ClipTiming {
    MotionTiming motion;
    std::optional<int> frames;
    std::optional<int> fps;  ///< frames a second, 1 to 240
    std::optional<double> seconds;
    std::vector<const Option*> options;  ///< all of these; they say nothing of a still or of a page
};

/// Adds --frames, --fps, --seconds, --ease, --once, --hold, --cycles and --ping-pong.
void addClipTiming(CommandLine* line, ClipTiming* timing);

struct FrameCount {
    int frames = 120;
    int fps = 30;
};

/// Of frames, frames a second and seconds, two give the third. Where neither frames nor seconds are asked
/// for, `own` seconds are the motion's, and with 0 of them it takes as long as the `usual` frames. Throws
/// UsageError where three disagree, or where there is no whole number of frames a second.
FrameCount countFrames(const ClipTiming& timing, double own, FrameCount usual = {});

/// The motion as a clip of so many frames shows it. Throws UsageError as `timed` does.
Motion timed(const Motion& motion, const MotionTiming& timing, FrameCount count);

}  // namespace quorvane::app

#endif
