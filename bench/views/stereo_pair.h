#ifndef QUORVANE_BENCH_VIEWS_STEREO_PAIR_H
#define QUORVANE_BENCH_VIEWS_STEREO_PAIR_H

#include <string>

#include "bench/views/picture.h"

namespace quorvane::bench {

/// A photo with its true depth, and the photo of another camera further right. All of a size, in whole
/// multiples of 4 pixels.
struct StereoPair {
    Picture left, right;
    DepthMap depth;         ///< the left photo's, as the renderer takes it
    double strength = 0.0;  ///< of the shift that makes the left photo the right one
    int back = 0;           ///< pixels by which all of it moves too far
    Mask judged;            ///< what the left photo can show of the right one
    Mask hidden;            ///< of these, what stands behind something in the left photo
    Mask band;              ///< of these, what lies within 4 pixels of a jump of more than 3
};

/// Reads FOLDER/NAME_left.png, _right.png and _disp.png, the left photo's disparities times `scale`, 0 where
/// there is none. Throws std::runtime_error.
StereoPair readStereoPair(const std::string& folder, const std::string& name, int scale);

}  // namespace quorvane::bench

#endif
