#ifndef QUORVANE_BENCH_VIEWS_EXACT_SCENE_H
#define QUORVANE_BENCH_VIEWS_EXACT_SCENE_H

#include "bench/views/picture.h"

namespace quorvane::bench {

enum class Sweep { kHorizontal, kVertical };

/// What a camera further along the sweep sees.
struct ExactView {
    Picture picture;
    int left = 0, top = 0;  ///< by which all of it has been moved back, pixels
    Mask judged;            ///< surfaces that continue what the rest view shows within its borders
    Mask hidden;            ///< of these, what stands behind something in the rest view
    Mask band;              ///< of these, what lies within 4 pixels of a silhouette
};

/// Poles and bars of 1.5 to 12 pixels, slanted wires, discs and two slopes before a wall, all textured, as
/// ShiftedViews sees them: every surface is plane, so that its disparity is linear in the rest view and every
/// view of it is exact.
class ExactScene {
  public:
    static constexpr int kWidth = 512, kHeight = 384;
    /// From one end of the sweep to the other the nearest passes the farthest by 4 % of the width.
    static constexpr double kSweep = 0.04 * kWidth;

    static Picture photo();
    static DepthMap depth();

    /// position: -1 to 1, 0 is the rest view.
    static ExactView view(Sweep sweep, double position);

    /// What ShiftedViews::draw takes for this position, of either direction.
    static double strength(double position);
};

}  // namespace quorvane::bench

#endif
