#ifndef QUORVANE_APPS_DRAWING_MOTION_H
#define QUORVANE_APPS_DRAWING_MOTION_H

namespace quorvane::app {

enum class Motion { kSway, kNod, kCircle, kEight };

struct Position {
    double x = 0.0;  ///< -1 from the left .. 1 from the right
    double y = 0.0;  ///< -1 from below .. 1 from above
};

/// Where a loop of `frames` frames stands at frame `frame`, counted from 0: frame `frames` would be frame 0.
/// Sway, nod and eight start at (0, 0).
Position motionAt(Motion motion, int frame, int frames);

}  // namespace quorvane::app

#endif
