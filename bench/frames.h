#ifndef QUORVANE_BENCH_FRAMES_H
#define QUORVANE_BENCH_FRAMES_H

#include <string>
#include <vector>

namespace quorvane::bench {

/// renderFrame beside the same GL calls made bare, on the real driver; wall clock, as the driver has threads.
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

/// Runs bench_frame, the program beside this one.
Frames measureFrames(bool quick);

}  // namespace quorvane::bench

#endif
