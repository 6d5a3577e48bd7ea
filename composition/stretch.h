#ifndef QUORVANE_COMPOSITION_STRETCH_H
#define QUORVANE_COMPOSITION_STRETCH_H

#include <cstdint>
#include <vector>

#include "composition/geometry.h"

namespace quorvane {

/// From how many times its size at rest on a cell counts as a streak.
constexpr double kStreak = 2.0;

/// How far a bent grid is stretched in pictures of it. Where a near thing moves off what lies behind it, the
/// cells between them have to cover what the photo does not show.
struct Stretch {
    /// How many times as large as at rest a cell is drawn in the picture that draws it largest: at least 1. A
    /// cell each, in the order of the depth's samples. What is folded over, and so lies behind what folds
    /// over it, and what lies outside the visible part counts in no picture.
    std::vector<float> times;
    /// 1 for the cells whose middle is inside the visible part of any picture or at rest, 0 for the others.
    std::vector<uint8_t> seen;
    /// The most stretched cell: its middle from the photo's left and top, 0 to 1, and its `times`.
    double worst_x = 0.5;
    double worst_y = 0.5;
    double worst_times = 1.0;
    /// The part of the picture that streaks cover, 0 to 1, in the picture where it is largest. It hardly
    /// depends on how fine the grid is, as the largest of `times` does.
    double streaked_part = 0.0;
};

/// The stretch in the pictures from `positions`, that show the part `fov_scale` of each side where they are
/// not zoomed.
Stretch stretchOf(const BentGrid& grid, const Camera& camera, double fov_scale,
                  const std::vector<ViewPosition>& positions);

}  // namespace quorvane

#endif
