#include "media/depth/half_float.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>

namespace quorvane::media {
namespace {

/// IEEE 754's definition, in double precision.
double valueOf(int half) {
    const double sign = (half & 0x8000) != 0 ? -1.0 : 1.0;
    const int exponent = half >> 10 & 31, fraction = half & 1023;
    if (exponent == 31) return fraction != 0 ? std::nan("") : sign * HUGE_VAL;
    if (exponent == 0) return sign * fraction / 1024.0 * std::pow(2.0, -14);
    return sign * (1.0 + fraction / 1024.0) * std::pow(2.0, exponent - 15);
}

TEST(HalfFloat, EveryOneIsReadAndComesBack) {
    for (int half = 0; half < 0x10000; ++half) {
        const double value = valueOf(half);
        const float read = fromHalf(static_cast<uint16_t>(half));
        if (std::isnan(value)) {
            EXPECT_TRUE(std::isnan(read));
            continue;
        }
        ASSERT_EQ(static_cast<double>(read), value) << half;
        ASSERT_EQ(toHalf(read), half);
    }
}

TEST(HalfFloat, OthersBecomeTheNearestAndTiesTheEvenOne) {
    for (int half = 0; half < 0x7BFF; ++half) {
        const double low = valueOf(half), high = valueOf(half + 1);
        const auto at = [&](double share) { return toHalf(static_cast<float>(low + share * (high - low))); };
        ASSERT_EQ(at(0.25), half);
        ASSERT_EQ(at(0.75), half + 1);
        ASSERT_EQ(at(0.5), half % 2 == 0 ? half : half + 1);
    }
    EXPECT_EQ(toHalf(65519.0f), 0x7BFF);
    EXPECT_EQ(toHalf(65520.0f), 0x7C00);
    EXPECT_EQ(toHalf(-1e30f), 0xFC00);
    EXPECT_EQ(toHalf(1e-30f), 0);
    EXPECT_TRUE(std::isnan(fromHalf(toHalf(std::numeric_limits<float>::quiet_NaN()))));
}

}  // namespace
}  // namespace quorvane::media
