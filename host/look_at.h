#ifndef QUORVANE_HOST_LOOK_AT_H
#define QUORVANE_HOST_LOOK_AT_H

#include <algorithm>

#include "quorvane/esRenderer.h"
#include "src/view/motion.h"

namespace quorvane {

/// The place on `extent` pixels that stands for a position of -1..1, or for the nearest of these.
inline float placeOnPicture(float position, float extent) {
    return (std::clamp(position, -1.0f, 1.0f) * 0.5f + 0.5f) * extent;
}

/// Where the view stands on an axis, -1..1, after lookAt() of such a position: the dead zone holds it back.
inline float lookedFrom(float position, float extent, const LibParam& parameters) {
    const float border = extent / static_cast<float>(parameters.border_deadzone);
    return viewPosition(heldOffBorder(placeOnPicture(position, extent), extent, border), extent);
}

}  // namespace quorvane

#endif
