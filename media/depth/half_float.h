#ifndef QUORVANE_MEDIA_DEPTH_HALF_FLOAT_H
#define QUORVANE_MEDIA_DEPTH_HALF_FLOAT_H

#include <cmath>
#include <cstdint>
#include <limits>

namespace quorvane::media {

// IEEE 754's binary16: a sign, 5 bits of exponent, 10 of fraction.

/// The nearest one, ties to even; infinite beyond 65504.
inline uint16_t toHalf(float value) {
    const uint16_t sign = std::signbit(value) ? 0x8000 : 0;
    const float size = std::abs(value);
    if (std::isnan(size)) return sign | 0x7E00;
    if (size >= 65520.0f) return sign | 0x7C00;
    if (size == 0.0f) return sign;
    int exponent = 0;
    std::frexp(size, &exponent);
    // 11 bits from the leading one on; fewer below 2^-14, where the step stays 2^-24.
    const int step = exponent < -13 ? -24 : exponent - 11;
    const auto steps = static_cast<uint32_t>(std::nearbyint(std::ldexp(size, -step)));
    // Rounding up to the next power of two carries into the exponent by itself.
    const uint32_t biased = step == -24 ? steps : (static_cast<uint32_t>(step + 24) << 10) + steps;
    return static_cast<uint16_t>(sign | biased);
}

inline float fromHalf(uint16_t half) {
    const int exponent = half >> 10 & 0x1F;
    const int fraction = half & 0x3FF;
    float size = 0.0f;
    if (exponent == 31)
        size =
            fraction == 0 ? std::numeric_limits<float>::infinity() : std::numeric_limits<float>::quiet_NaN();
    else if (exponent == 0)
        size = std::ldexp(static_cast<float>(fraction), -24);
    else
        size = std::ldexp(static_cast<float>(1024 + fraction), exponent - 25);
    return (half & 0x8000) != 0 ? -size : size;
}

}  // namespace quorvane::media

#endif
