#ifndef QUORVANE_APPS_DRAWING_STAGES_SHEET_H
#define QUORVANE_APPS_DRAWING_STAGES_SHEET_H

#include "apps/quorvane/drawing/view.h"

namespace quorvane::app {

/// One labelled picture of every stage on the way from `photo` and `depth`, on the scale 0..255, larger =
/// nearer, to the view. Throws Error, and Cancelled after a signal.
media::RgbImage stagesSheet(const ViewOptions& options, const Talk& talk, media::RgbImage photo,
                            media::Image<float, 1> depth);

}  // namespace quorvane::app

#endif
