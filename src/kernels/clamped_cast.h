#ifndef QUORVANE_KERNELS_CLAMPED_CAST_H
#define QUORVANE_KERNELS_CLAMPED_CAST_H

#include <limits>

namespace quorvane {

/// `value` truncated toward zero; a value out of `Int`'s range gives the nearest end of it and NaN gives 0,
/// where the language leaves a plain cast undefined.
template <typename Int>
Int clampedCast(float value) noexcept {
    // 2 to the digits: one past the largest Int, exact as a float where the largest Int itself is not.
    constexpr float past_largest =
        2.0f * static_cast<float>(Int{1} << (std::numeric_limits<Int>::digits - 1));
    if (value != value) return 0;
    if (value >= past_largest) return std::numeric_limits<Int>::max();
    if (value <= static_cast<float>(std::numeric_limits<Int>::min())) return std::numeric_limits<Int>::min();
    return static_cast<Int>(value);
}

}  // namespace quorvane

#endif
