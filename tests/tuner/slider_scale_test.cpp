#include "apps/tuner/core/slider_scale.h"

#include <gtest/gtest.h>

#include "apps/tuner/core/tuning.h"

namespace quorvane::tuner {
namespace {

TEST(SliderScale, EndsAreTheRange) {
    for (const ParameterInfo& info : ParallaxView::parameters()) {
        const SliderScale scale(info.minimum, info.maximum, 1.0, info.integer);
        EXPECT_EQ(scale.valueAt(0.0), info.minimum) << info.name;
        EXPECT_EQ(scale.valueAt(1.0), info.maximum) << info.name;
        EXPECT_EQ(scale.valueAt(-3.0), info.minimum) << info.name;
    }
}

TEST(SliderScale, EveryPlaceIsAValueThatTheParameterTakes) {
    for (size_t i = 0; i < ParallaxView::parameters().size(); ++i) {
        const ParameterInfo& info = ParallaxView::parameters()[i];
        const SliderScale scale(info.minimum, info.maximum, kParameters[i].of(LibParam()), info.integer);
        double last = info.minimum;
        for (int place = 0; place <= 1000; ++place) {
            const double value = scale.valueAt(place / 1000.0);
            EXPECT_TRUE(ParallaxView::checkParameter(info.name, value)) << info.name << " " << value;
            EXPECT_GE(value, last) << info.name;
            last = value;
        }
    }
}

TEST(SliderScale, AValueStaysWhereItIs) {
    const SliderScale scale(0.0, 1.0, 1e-6, false);
    for (const double value : {0.0, 1e-7, 1e-6, 0.0003, 0.25, 1.0})
        EXPECT_NEAR(scale.valueAt(scale.partOf(value)), value, 1e-3 * value);
}

TEST(SliderScale, ARangeFarBeyondItsUsualValueIsWideAroundThat) {
    EXPECT_GT(SliderScale(0.0, 1024.0, 2.0, true).partOf(2.0), 0.1);
    EXPECT_GT(SliderScale(0.0, 1.0, 1e-6, false).partOf(1e-6), 0.05);
    EXPECT_DOUBLE_EQ(SliderScale(-45.0, 45.0, 12.0, false).partOf(0.0), 0.5) << "others are even";
}

}  // namespace
}  // namespace quorvane::tuner
