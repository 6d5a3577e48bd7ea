#include "host/checks.h"

#include "host/rows.h"
#include "host/text.h"
#include "quorvane/host/PhotoView.h"

namespace quorvane {

Status checkSides(const char* what, int width, int height, int smallest, int largest) {
    if (width >= smallest && height >= smallest && width <= largest && height <= largest)
        return Status::success();
    return Status::failure(
        text("%s: %d x %d pixels; each side must be %d to %d", what, width, height, smallest, largest));
}

Status checkDepthMap(const Pixels& depth, Size photo, int largest_grid) {
    Status status = checkSides("depth map", depth.width, depth.height, kDepthPixelsPerCell,
                               largest_grid * kDepthPixelsPerCell);
    if (!status) return status;
    status = checkPixels("depth map", depth, 1);
    if (!status) return status;

    const Size grid = {depth.width / kDepthPixelsPerCell, depth.height / kDepthPixelsPerCell};
    // Sides of 5, 6, 7, 10, 11 and 15 truncate to a grid that they are no longer 4 times.
    if (depth.width / grid.width != kDepthPixelsPerCell || depth.height / grid.height != kDepthPixelsPerCell)
        return Status::failure(
            text("depth map: %d x %d does not divide into cells of 4 x 4; use multiples of 4", depth.width,
                 depth.height));
    if (photoPixelsPerCell(photo.width, grid.width) == 0 ||
        photoPixelsPerCell(photo.height, grid.height) == 0)
        return Status::failure(
            text("depth map: %d x %d makes a grid of %d x %d cells, and the %d x %d photo is not 1, 2, 4, 8, "
                 "16 or 32 times that",
                 depth.width, depth.height, grid.width, grid.height, photo.width, photo.height));
    return status;
}

Status checkWorkingMemory(Size photo, Size depth) {
    const Size grid = {depth.width / kDepthPixelsPerCell, depth.height / kDepthPixelsPerCell};
    if (blockFits(photo, grid)) return Status::success();
    return Status::failure(
        text("a %d x %d photo with a %d x %d depth map needs %.1f GB of working memory; 2 GB is the limit",
             photo.width, photo.height, depth.width, depth.height, blockBytes(photo, grid) / 1e9));
}

Status checkSamples(int samples) {
    if (samples == kAutoSamples || samples == 1 || samples == 2 || samples == 4 || samples == 8)
        return Status::success();
    return Status::failure(
        text("%d samples a pixel; 1, 2, 4, 8 and %d (as many as are good) are known", samples, kAutoSamples));
}

float depthAtDistance(float distance) noexcept {
    // The vertex shader puts depth d, 0..1, at distance 32 - 0.4 (35 d - 32).
    return 255.0f * ((32.0f - distance) / 0.4f + 32.0f) / 35.0f;
}

}  // namespace quorvane
