#ifndef QUORVANE_BENCH_FRAMES_H
#define QUORVANE_BENCH_FRAMES_H

#include <string>
#include <vector>

namespace quorvane::bench {

/// renderFrame, and the same GL calls without it, on the real driver. Wall-clock time, because the driver has
/// threads of its own.
struct FrameCost {
    int width = 0;
    int height = 0;
    double seconds = 0;       ///< median
    double bare_seconds = 0;  ///< median
    double ratio = 0;         ///< median of the pairs' ratios
    int pairs = 0;
    bool same_picture = false;
};

struct Frames {
    std::string driver;  ///< empty where there is none
    std::vector<FrameCost> costs;
};

/// Runs the program bench_frame, which lies in the same folder.
Frames measureFrames(bool quick);

}  // namespace quorvane::bench

#endif
