#ifndef QUORVANE_HOST_LOOK_AT_H
#define QUORVANE_HOST_LOOK_AT_H

#include <algorithm>

namespace quorvane {

/// The place on `extent` pixels that stands for a position of -1..1, or for the nearest of these.
inline float placeOnPicture(float position, float extent) {
    return (std::clamp(position, -1.0f, 1.0f) * 0.5f + 0.5f) * extent;
}

}  // namespace quorvane

#endif
