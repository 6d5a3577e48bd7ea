#ifndef QUORVANE_APPS_DRAWING_PLANNING_H
#define QUORVANE_APPS_DRAWING_PLANNING_H

#include <vector>

#include "apps/quorvane/drawing/motion.h"
#include "apps/quorvane/drawing/view_options.h"
#include "media/picture/image.h"
#include "quorvane/host/PicturePlan.h"
#include "sizes/sizes.h"

namespace quorvane::app {

/// A picture is no larger than this unless it is asked to be.
constexpr int kLongestSide = 1920;

/// A picture that is asked for, and who draws it.
struct Target {
    Size size;                   ///< pixels
    int supersample = 1;         ///< drawn this many times as large on either axis
    std::vector<Position> path;  ///< all that it is seen from
    int largest_texture = 0;     ///< that the driver takes
};

/// The part of both images that is used, and the sizes that they are brought to.
FitPlan fitFor(const ViewOptions& options, const Target& target, Size photo, Size depth);

/// Whether the photo's pixels have a part in the plan.
bool planReadsPhoto(const ViewOptions& options);

/// Needs no GL. `photo` has the size of `fit`, or is empty where it has no part in the plan. `depth` is on
/// the scale 0..255, larger = nearer, and is used as `fit` says. Throws Error.
PicturePlan planFor(const ViewOptions& options, const Target& target, const FitPlan& fit,
                    const media::RgbImage& photo, media::Plane depth);

/// How far the pictures of `plan` stretch, which planFor made of the same. Throws Error.
PictureStretch stretchOf(const ViewOptions& options, const Target& target, const FitPlan& fit,
                         const PicturePlan& plan);

}  // namespace quorvane::app

#endif
