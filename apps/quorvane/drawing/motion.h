#ifndef QUORVANE_APPS_DRAWING_MOTION_H
#define QUORVANE_APPS_DRAWING_MOTION_H

#include <string>
#include <vector>

namespace quorvane::app {

/// Where the picture is seen from.
struct Position {
    double x = 0.0;  ///< -1 from the left .. 1 from the right
    double y = 0.0;  ///< -1 from below .. 1 from above
};

/// "X,Y" of --at: both -1 to 1. Throws UsageError.
Position parsePosition(const std::string& text);

/// A way to move in a loop.
struct Motion {
    const char* name;
    const char* meaning;
    /// Where it stands after `turn` of its loop, in radians: 2 pi is 0 again.
    Position (*position)(double turn);
};

/// All of them; the first is the usual one.
const std::vector<Motion>& motions();

/// Where a loop of `frames` frames stands at frame `frame`, counted from 0.
Position motionAt(const Motion& motion, int frame, int frames);

}  // namespace quorvane::app

#endif
