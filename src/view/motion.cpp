#include "view/motion.h"

namespace quorvane {

float heldOffBorder(float position, float extent, float border) noexcept {
    if (position < border) position = border;
    if (position > (extent - 1.0f) - border) position = (extent - 1.0f) - border;
    return position;
}

float viewPosition(float position, float extent) noexcept {
    return (position - extent * 0.5f) / (extent * 0.5f);
}

float viewStepAcross(float x, float width, float half_height) noexcept {
    return ((half_height * x) * 4.0f / 5.0f) / width;
}

float viewStepDown(float y, float height, float half_width) noexcept {
    return ((half_width * y) * 2.0f / 4.0f) / height;
}

}  // namespace quorvane
