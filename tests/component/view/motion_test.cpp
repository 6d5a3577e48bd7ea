#include "view/motion.h"

#include <gtest/gtest.h>

namespace quorvane::test {
namespace {

TEST(Motion, PositionIsHeldOffBothBorders) {
    EXPECT_EQ(heldOffBorder(50.0f, 100.0f, 10.0f), 50.0f);
    EXPECT_EQ(heldOffBorder(3.0f, 100.0f, 10.0f), 10.0f);
    EXPECT_EQ(heldOffBorder(100.0f, 100.0f, 10.0f), 89.0f);
}

TEST(Motion, TheFarBoundWinsWhereTheBordersMeet) { EXPECT_EQ(heldOffBorder(0.0f, 10.0f, 8.0f), 1.0f); }

TEST(Motion, CentreIs0AndTheEdgesAre1) {
    EXPECT_EQ(viewPosition(960.0f, 1920.0f), 0.0f);
    EXPECT_EQ(viewPosition(0.0f, 1920.0f), -1.0f);
    EXPECT_EQ(viewPosition(1920.0f, 1920.0f), 1.0f);
}

TEST(Motion, StepIsAShareOfTheOutputTimesTheMeshsOtherExtent) {
    EXPECT_FLOAT_EQ(viewStepAcross(192.0f, 1920.0f, 18.5f), 0.1f * 18.5f * 0.8f);
    EXPECT_FLOAT_EQ(viewStepDown(108.0f, 1080.0f, 34.0f), 0.1f * 34.0f * 0.5f);
}

}  // namespace
}  // namespace quorvane::test
