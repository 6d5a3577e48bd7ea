#ifndef QUORVANE_HOST_CHECKS_H
#define QUORVANE_HOST_CHECKS_H

#include "quorvane/host/Pixels.h"
#include "quorvane/host/Status.h"
#include "sizes/sizes.h"

// What every view asks of its images, and says of them.

namespace quorvane {

/// `what` begins the sentence.
Status checkSides(const char* what, int width, int height, int smallest, int largest);

/// Of a depth map that goes with a photo of that size. The sides of a grid are `largest_grid` at most.
Status checkDepthMap(const Pixels& depth, Size photo, int largest_grid);

/// Of both together: the renderer counts its working memory in 32 bits. A depth map of 0 x 0 is none.
Status checkWorkingMemory(Size photo, Size depth);

Status checkSamples(int samples);

/// The shaped depth, 0..255, that lies at a distance.
float depthAtDistance(float distance) noexcept;

}  // namespace quorvane

#endif
