#ifndef QUORVANE_APPS_DRAWING_PARALLEL_VIEW_H
#define QUORVANE_APPS_DRAWING_PARALLEL_VIEW_H

#include "media/picture/image.h"

namespace quorvane::app {

// The renderer turns what it shows, so that two of its views are those of cameras that both look at what
// stays in place. Eyes and players want parallel cameras whose pictures are shifted instead: between turned
// ones a flat wall bulges, and its corners lie at two heights. A turn about the camera's own place is made
// undone in the picture, exactly.

/// What a picture shows to its sides, at a distance of 1.
struct Lens {
    double half_width = 1.0;
    double half_height = 1.0;
};

/// How much larger a picture has to be drawn for it to be filled once a turn of up to `turn_deg` is undone;
/// at least 1.
double zoomForParallel(const Lens& lens, double turn_deg);

/// The picture of the same camera turned back by `turn_deg`: above 0 it stands to the right of the middle and
/// looks to the left. What it looked at stays in the middle, the rest is drawn `zoom` times as large. `out`
/// may hold an earlier picture.
void makeParallel(const media::RgbaImage& picture, const Lens& lens, double turn_deg, double zoom,
                  media::RgbaImage* out);

}  // namespace quorvane::app

#endif
