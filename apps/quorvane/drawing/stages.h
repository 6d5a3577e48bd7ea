#ifndef QUORVANE_APPS_DRAWING_STAGES_H
#define QUORVANE_APPS_DRAWING_STAGES_H

#include <functional>
#include <string>
#include <vector>

#include "apps/quorvane/drawing/picture_options.h"
#include "apps/quorvane/drawing/view.h"
#include "system/pending_folder.h"

namespace quorvane::app {

/// What becomes of a photo and its depth map on the way to the pictures of a motion.
struct Stages {
    media::RgbImage photo;     ///< as it is uploaded
    media::GrayImage depth;    ///< as it is handed to ParallaxView::setDepth, larger = nearer
    media::GrayImage guide;    ///< the photo's luma, a sample a cell
    media::GrayImage shaped;   ///< what bends the grid, a sample a cell
    media::RgbaImage left;     ///< the picture from the motion's farthest left; of a nod, from below
    media::RgbaImage rest;     ///< from the middle
    media::RgbaImage right;    ///< from its farthest right; of a nod, from above
    bool upright = false;      ///< whether these are of a motion that only goes up and down
    double fov_scale = 1.0;    ///< the part of each of the photo's sides that is seen at rest
    double still_depth = 0.0;  ///< the shaped depth that stays in place; below 0 or above 255: none does
    PictureStretch stretch;    ///< of all pictures of the motion
};

/// `depth` is on the scale 0..255, larger = nearer. Throws Error, and Cancelled after a signal.
Stages drawStages(const ViewOptions& options, const PictureOptions& asked, const Talk& talk,
                  media::RgbImage photo, const media::Plane& depth);

/// The names of the files that `addStages` makes, one for each stage.
const std::vector<std::string>& stageFiles();

/// Throws Error, and Cancelled after a signal.
void addStages(const Stages& stages, PendingFolder* folder);

}  // namespace quorvane::app

#endif
