#ifndef QUORVANE_APPS_DRAWING_STAGES_SHEET_H
#define QUORVANE_APPS_DRAWING_STAGES_SHEET_H

#include "apps/quorvane/drawing/stages.h"

namespace quorvane::app {

/// One labelled picture of every stage: with what is seen drawn on the photo, what stands still on the shaped
/// depth, and the stretch as a map. `given` is the depth map as it came. Throws Error.
media::RgbImage stagesSheet(const Stages& stages, const media::GrayImage& given);

}  // namespace quorvane::app

#endif
