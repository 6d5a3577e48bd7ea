#ifndef QUORVANE_BENCH_UPLOADS_H
#define QUORVANE_BENCH_UPLOADS_H

#include <cstdint>
#include <vector>

#include "kernels.h"
#include "stage.h"

namespace quorvane::bench {

// The renderer as a host calls it, on GL calls that do nothing: what is left is the CPU's share.

/// setTexture and setDepth.
std::vector<MakeStage> uploadStages();

/// What setTexture + setDepth cost at one photo size, ratio 16, depth map a quarter of the photo on each
/// axis.
struct PixelCost {
    int width;
    int height;
    double seconds;  ///< on the path in use
    double reference_seconds;
    double limit_seconds;  ///< one copy and one read of the photo
    double block_bytes;    ///< the working block
    double peak_bytes;     ///< by which the calls let the process grow

    double pixels() const { return static_cast<double>(width) * static_cast<double>(height); }
};

/// For photos of about 0.1 to `megapixels` megapixels, as far as memory allows.
std::vector<PixelCost> pixelCosts(double megapixels, int rounds);

/// renderFrame without the driver.
struct FrameShare {
    double seconds;
    double allocations;  ///< a frame
};
FrameShare frameShare(int rounds);

/// One frame of such a renderer, for the instruction counter.
Work countedFrame();

}  // namespace quorvane::bench

#endif
