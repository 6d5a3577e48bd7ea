#ifndef QUORVANE_APPS_DRAWING_MOTION_SHEET_H
#define QUORVANE_APPS_DRAWING_MOTION_SHEET_H

#include <vector>

#include "apps/quorvane/drawing/motion.h"
#include "apps/quorvane/drawing/motion_timing.h"
#include "media/picture/image.h"

namespace quorvane::app {

/// A row for each motion, with its timing, as a clip of so many frames has it: where it goes, with a dot a
/// frame; when; and pictures of the painted scene on the way. The same bytes on every machine. Throws Error,
/// and Cancelled after a signal.
media::RgbImage motionSheet(const std::vector<Motion>& motions, FrameCount count);

}  // namespace quorvane::app

#endif
