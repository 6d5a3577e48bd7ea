#ifndef QUORVANE_APPS_DRAWING_STEREO_PHOTO_H
#define QUORVANE_APPS_DRAWING_STEREO_PHOTO_H

#include <string>

#include "apps/quorvane/drawing/clip_drawing.h"
#include "media/clip/output_format.h"

namespace quorvane::app {

/// Draws both eyes' views of `size` around `middle` and returns the bytes of a file of `format` with both and
/// their cameras. `quality` is the codec's own. Throws Error.
std::string stereoPhoto(View* view, const Stereo& stereo, Position middle, Size size, StageTimes* times,
                        const media::OutputFormat& format, int quality);

}  // namespace quorvane::app

#endif
