#include <cmath>

#include "support/component_test.h"
#include "support/guarded_bytes.h"

namespace quorvane::test {
namespace {

using ::testing::ElementsAre;

class MotionInput : public ComponentTest {
  protected:
    /// A renderer whose output is 1920 x 1080, without GL.
    MotionInput() {
        renderer.m_width = 1920.0f;
        renderer.m_height = 1080.0f;
        renderer.m_OBJ_CORD_X = 34.0f;
    }

    ESRenderer renderer;
    ESRenderer fresh;
};

// setRotation

TEST_F(MotionInput, RotationAtTheCentreIsTheRestPosition) {
    renderer.setRotation(960.0f, 540.0f, 0.0f);
    EXPECT_EQ(renderer.m_transX, 0.0f);
    EXPECT_EQ(renderer.m_transY, 0.0f);
}

TEST_F(MotionInput, RotationIsHeldOffTheNearBorder) {
    for (const float position : {0.0f, -500.0f, 16.0f}) {
        renderer.setRotation(position, position, 3.0f);
        EXPECT_EQ(renderer.m_accX, 30.0f);
        EXPECT_EQ(renderer.m_accY, 16.875f);
        EXPECT_EQ(renderer.m_transX, -0.96875f);
        EXPECT_EQ(renderer.m_transY, -0.96875f);
    }
}

TEST_F(MotionInput, RotationIsHeldOneFurtherPixelOffTheFarBorder) {
    renderer.setRotation(5000.0f, 5000.0f, 3.0f);
    EXPECT_EQ(renderer.m_accX, 1889.0f);
    EXPECT_EQ(renderer.m_accY, 1062.125f);
    EXPECT_EQ(renderer.m_transX, 929.0f / 960.0f);
    EXPECT_EQ(renderer.m_transY, 522.125f / 540.0f);
}

TEST_F(MotionInput, RotationWithinTheBandIsNotMoved) {
    renderer.setRotation(1440.0f, 270.0f, 0.0f);
    EXPECT_EQ(renderer.m_accX, 1440.0f);
    EXPECT_EQ(renderer.m_accY, 270.0f);
    EXPECT_EQ(renderer.m_transX, 0.5f);
    EXPECT_EQ(renderer.m_transY, -0.5f);
}

TEST_F(MotionInput, BandsEndsAreAdmissible) {
    renderer.setRotation(30.0f, 1062.125f, 0.0f);
    EXPECT_EQ(renderer.m_accX, 30.0f);
    EXPECT_EQ(renderer.m_accY, 1062.125f);
}

TEST_F(MotionInput, RotationStoresAndCopies) {
    renderer.m_transZ = 100.0f;
    renderer.setRotation(1440.0f, 270.0f, 2.5f);
    EXPECT_EQ(renderer.m_targetTransX, 0.5f);
    EXPECT_EQ(renderer.m_targetTransY, -0.5f);
    EXPECT_EQ(renderer.m_targetTransZ, 0.0f);
    EXPECT_EQ(renderer.m_transZ, 2.5f);
    EXPECT_EQ(renderer.m_accZ, 2.5f);
}

TEST_F(MotionInput, RotationReplacesWhatSamplesAccumulated) {
    renderer.setAccelerometerData(500.0f, -300.0f, 7.0f);
    renderer.setRotation(960.0f, 540.0f, 1.0f);
    EXPECT_EQ(renderer.m_transX, 0.0f);
    EXPECT_EQ(renderer.m_transY, 0.0f);
    EXPECT_EQ(renderer.m_transZ, 1.0f);
}

TEST_F(MotionInput, RotationTwiceGivesTheSameState) {
    renderer.setRotation(1234.5f, 777.25f, 1.0f);
    const float x = renderer.m_transX, y = renderer.m_transY;
    renderer.setRotation(1234.5f, 777.25f, 1.0f);
    EXPECT_EQ(renderer.m_transX, x);
    EXPECT_EQ(renderer.m_transY, y);
}

TEST_F(MotionInput, DeadzoneOfTheSecondTunedSetApplies) {
    renderer.params.border_deadzone = 18;
    renderer.setRotation(0.0f, 0.0f, 0.0f);
    EXPECT_EQ(renderer.m_accX, 1920.0f / 18.0f);
    EXPECT_EQ(renderer.m_accY, 60.0f);
}

TEST_F(MotionInput, FarBoundWinsWhereTheBoundsCross) {
    renderer.params.border_deadzone = 2;
    renderer.setRotation(0.0f, 0.0f, 0.0f);
    EXPECT_EQ(renderer.m_accX, 959.0f);
    EXPECT_EQ(renderer.m_accY, 539.0f);
    renderer.params.border_deadzone = 1;
    renderer.setRotation(960.0f, 540.0f, 0.0f);
    EXPECT_EQ(renderer.m_accX, -1.0f);
    EXPECT_EQ(renderer.m_accY, -1.0f);
}

TEST_F(MotionInput, NegativeDeadzoneLetsPositionsLeaveTheOutput) {
    renderer.params.border_deadzone = -64;
    renderer.setRotation(-500.0f, 5000.0f, 0.0f);
    EXPECT_EQ(renderer.m_accX, -30.0f);
    EXPECT_EQ(renderer.m_accY, 1079.0f + 16.875f);
}

TEST_F(MotionInput, ZeroDeadzoneStoresNonFinitePositions) {
    renderer.params.border_deadzone = 0;
    renderer.setRotation(960.0f, 540.0f, 0.0f);
    EXPECT_FALSE(std::isfinite(renderer.m_transX));
    EXPECT_FALSE(std::isfinite(renderer.m_transY));
}

TEST_F(MotionInput, RotationIsLogged) {
    renderer.m_transX = 0.25f;
    forget();
    renderer.setRotation(-480.0f, 270.0f, 2.0f);
    // The first line has the position before, the sample as passed in and its share of the width.
    EXPECT_THAT(log.lines(), ElementsAre(debugLine("m_transX: 0.250000 -0.250000 x\n"),
                                         debugLine("m_transY: -0.500000 0.250000 x\n"),
                                         debugLine("m_transZ = 2.000000\n")));
}

TEST_F(MotionInput, RotationLogsTheHeldHeight) {
    forget();
    renderer.setRotation(960.0f, 0.0f, 0.0f);
    EXPECT_EQ(log.texts().at(1), "m_transY: -0.968750 0.015625 x\n");
}

TEST_F(MotionInput, RotationUsesFloatArithmetic) {
    const auto samples = noise(400, 77);
    for (size_t i = 0; i + 1 < samples.size(); i += 2) {
        const float x = static_cast<float>(samples[i]) * 7.3f, y = static_cast<float>(samples[i + 1]) * 4.1f;
        renderer.setRotation(x, y, 0.0f);
        const volatile float held_x = x < 30.0f ? 30.0f : x > 1889.0f ? 1889.0f : x;
        const volatile float held_y = y < 16.875f ? 16.875f : y > 1062.125f ? 1062.125f : y;
        const volatile float from_centre_x = held_x - 960.0f;
        const volatile float from_centre_y = held_y - 540.0f;
        ASSERT_EQ(renderer.m_transX, from_centre_x / 960.0f);
        ASSERT_EQ(renderer.m_transY, from_centre_y / 540.0f);
    }
}

// setAccelerometerData

TEST_F(MotionInput, SamplePairsWidthWithHalfHeightAndHeightWithHalfWidth) {
    renderer.setAccelerometerData(96.0f, 54.0f, 0.0f);
    // 18.5 * 96 * 4 / 5 / 1920 and 34 * 54 * 2 / 4 / 1080.
    EXPECT_FLOAT_EQ(renderer.m_transX, 0.74f);
    EXPECT_FLOAT_EQ(renderer.m_transY, 0.85f);
}

TEST_F(MotionInput, SamplesAccumulateWithoutBound) {
    for (int i = 0; i < 100; ++i) renderer.setAccelerometerData(960.0f, -540.0f, 1.0f);
    EXPECT_NEAR(renderer.m_transX, 740.0, 0.01);
    EXPECT_NEAR(renderer.m_transY, -850.0, 0.01);
    EXPECT_EQ(renderer.m_transZ, 100.0f);
}

TEST_F(MotionInput, SamplesUseFloatArithmeticInOrder) {
    renderer.m_OBJ_CORD_X = 34.052525f;
    const auto samples = noise(400, 78);
    for (size_t i = 0; i + 1 < samples.size(); i += 2) {
        const float x = static_cast<float>(samples[i]) * 0.37f,
                    y = static_cast<float>(samples[i + 1]) * -0.91f;
        const float before_x = renderer.m_transX, before_y = renderer.m_transY;
        renderer.setAccelerometerData(x, y, 0.0f);
        volatile float step_x = 18.5f * x;
        step_x = step_x * 4.0f;
        step_x = step_x / 5.0f;
        step_x = step_x / 1920.0f;
        volatile float step_y = 34.052525f * y;
        step_y = step_y * 2.0f;
        step_y = step_y / 4.0f;
        step_y = step_y / 1080.0f;
        ASSERT_EQ(renderer.m_transX, before_x + step_x);
        ASSERT_EQ(renderer.m_transY, before_y + step_y);
    }
}

TEST_F(MotionInput, SampleIsStoredUnclamped) {
    renderer.setAccelerometerData(-5000.0f, 9000.0f, -3.0f);
    EXPECT_EQ(renderer.m_accX, -5000.0f);
    EXPECT_EQ(renderer.m_accY, 9000.0f);
    EXPECT_EQ(renderer.m_accZ, -3.0f);
}

TEST_F(MotionInput, ZeroSampleMovesNothingButCopiesAndStores) {
    renderer.m_transX = 0.5f;
    renderer.m_transY = -0.25f;
    renderer.m_transZ = 2.0f;
    renderer.m_accX = renderer.m_accY = renderer.m_accZ = 9.0f;
    renderer.setAccelerometerData(0.0f, 0.0f, 0.0f);
    EXPECT_EQ(renderer.m_transX, 0.5f);
    EXPECT_EQ(renderer.m_transY, -0.25f);
    EXPECT_EQ(renderer.m_transZ, 2.0f);
    EXPECT_EQ(renderer.m_targetTransX, 0.5f);
    EXPECT_EQ(renderer.m_targetTransY, -0.25f);
    EXPECT_EQ(renderer.m_targetTransZ, 0.0f);
    EXPECT_EQ(renderer.m_accX, 0.0f);
    EXPECT_EQ(renderer.m_accY, 0.0f);
    EXPECT_EQ(renderer.m_accZ, 0.0f);
}

TEST_F(MotionInput, SampleIsLoggedWithTheOldWidthAndTheNewHeightPosition) {
    renderer.m_transX = 0.5f;
    renderer.m_transZ = 1.0f;
    forget();
    renderer.setAccelerometerData(960.0f, 540.0f, 0.5f);
    EXPECT_THAT(log.lines(), ElementsAre(debugLine("m_transX: 0.500000 0.500000 x\n"),
                                         debugLine("m_transY: 8.500000 0.500000 x\n"),
                                         debugLine("m_transZ = 1.500000\n")));
}

// The size that is assumed before setupGraphics

TEST_F(MotionInput, FirstSampleAssumesFullHd) {
    fresh.setAccelerometerData(1.0f, 1.0f, 0.0f);
    EXPECT_EQ(fresh.m_width, 1920.0f);
    EXPECT_EQ(fresh.m_height, 1080.0f);
}

TEST_F(MotionInput, FirstRotationAssumesFullHd) {
    fresh.setRotation(960.0f, 540.0f, 0.0f);
    EXPECT_EQ(fresh.m_width, 1920.0f);
    EXPECT_EQ(fresh.m_height, 1080.0f);
    EXPECT_EQ(fresh.m_transX, 0.0f);
    EXPECT_EQ(fresh.m_transY, 0.0f);
}

TEST_F(MotionInput, EachMissingSideIsAssumedAlone) {
    fresh.m_width = 640.0f;
    fresh.setRotation(0.0f, 0.0f, 0.0f);
    EXPECT_EQ(fresh.m_width, 640.0f);
    EXPECT_EQ(fresh.m_height, 1080.0f);
}

TEST_F(MotionInput, AssumedSizeStandsInTheFirstLogLine) {
    forget();
    fresh.setRotation(960.0f, 540.0f, 0.0f);
    EXPECT_EQ(log.texts().at(0), "m_transX: 0.000000 0.500000 x\n");
}

TEST_F(MotionInput, SetupGraphicsReplacesTheAssumedSize) {
    fresh.setRotation(0.0f, 0.0f, 0.0f);
    prepared([&] { fresh.setupGraphics(320, 240); });
    EXPECT_EQ(fresh.m_width, 320.0f);
    EXPECT_EQ(fresh.m_height, 240.0f);
}

// setTranslation

TEST_F(MotionInput, TranslationReplacesTheCameraOffset) {
    renderer.setTranslation(500.0f, 500.0f, 1.0f);
    renderer.setTranslation(96.0f, 54.0f, 2.0f);
    // 18.5 * 960 / 1920 and 34 * 540 / 1080.
    EXPECT_EQ(renderer.m_camTransX, 9.25f);
    EXPECT_EQ(renderer.m_camTransY, 17.0f);
    EXPECT_EQ(renderer.m_camTransZ, 2.0f);
}

TEST_F(MotionInput, TranslationMovesNoView) {
    renderer.m_transX = 0.25f;
    renderer.setTranslation(500.0f, 500.0f, 1.0f);
    EXPECT_EQ(renderer.m_transX, 0.25f);
    EXPECT_EQ(renderer.m_transY, 0.0f);
    EXPECT_EQ(renderer.m_transZ, 0.0f);
    EXPECT_EQ(renderer.m_accX, 0.0f);
    EXPECT_EQ(renderer.m_targetTransX, 0.0f);
}

TEST_F(MotionInput, TranslationLogsTheViewPositionUnderTheCamerasLabel) {
    renderer.m_transY = 0.125f;
    renderer.m_camTransX = 5.0f;
    forget();
    renderer.setTranslation(960.0f, 540.0f, 2.0f);
    EXPECT_THAT(log.lines(), ElementsAre(debugLine("m_camTransX: 5.000000 0.500000 x\n"),
                                         debugLine("m_camTransY: 0.125000 0.500000 x\n"),
                                         debugLine("m_camTransZ = 2.000000\n")));
}

TEST_F(MotionInput, TranslationAssumesNoSize) {
    fresh.setTranslation(10.0f, 10.0f, 1.0f);
    EXPECT_EQ(fresh.m_width, 0.0f);
    EXPECT_EQ(fresh.m_height, 0.0f);
    EXPECT_TRUE(std::isinf(fresh.m_camTransX));
    EXPECT_TRUE(std::isnan(fresh.m_camTransY));  // the mesh has no width yet
    EXPECT_EQ(fresh.m_camTransZ, 1.0f);
}

// touchEvent

TEST_F(MotionInput, TouchStepsByATenth) {
    fresh.touchEvent(0, 0.0f, 0.0f);
    EXPECT_EQ(fresh.m_transZ, 0.1f);
    fresh.touchEvent(1, 0.0f, 0.0f);
    EXPECT_EQ(fresh.m_transZ, 0.0f);
    fresh.touchEvent(2, 0.0f, 0.0f);
    EXPECT_EQ(fresh.m_transX, -0.1f);
    fresh.touchEvent(3, 0.0f, 0.0f);
    EXPECT_EQ(fresh.m_transX, 0.0f);
}

TEST_F(MotionInput, TouchChangesOneFieldOnly) {
    for (const int event : {0, 1, 2, 3}) {
        ESRenderer other;
        other.touchEvent(event, 55.0f, 66.0f);
        EXPECT_EQ(other.m_transX != 0.0f, event >= 2);
        EXPECT_EQ(other.m_transZ != 0.0f, event < 2);
        EXPECT_EQ(other.m_transY, 0.0f);
        EXPECT_EQ(other.m_targetTransX, 0.0f);
        EXPECT_EQ(other.m_accX, 0.0f);
        EXPECT_EQ(other.m_width, 0.0f);
    }
}

TEST_F(MotionInput, UnknownTouchChangesNothingAndIsLogged) {
    for (const int event : {7, -1, 4, 2147483647}) {
        SCOPED_TRACE(event);
        forget();
        renderer.m_transX = 0.5f;
        renderer.touchEvent(event, 1.0f, 1.0f);
        EXPECT_EQ(renderer.m_transX, 0.5f);
        EXPECT_EQ(renderer.m_transY, 0.0f);
        EXPECT_EQ(renderer.m_transZ, 0.0f);
        EXPECT_THAT(log.lines(), ElementsAre(debugLine("m_transX, Y, Z = 0.500000 0.000000 0.000000 ")));
    }
}

TEST_F(MotionInput, TouchIsLoggedAfterItsStep) {
    forget();
    renderer.touchEvent(3, 0.0f, 0.0f);
    EXPECT_THAT(log.lines(), ElementsAre(debugLine("m_transX, Y, Z = 0.100000 0.000000 0.000000 ")));
}

TEST_F(MotionInput, TenTouchStepsAreTheFloatSumOfTenTenths) {
    volatile float sum = 0.0f;
    for (int i = 0; i < 10; ++i) {
        fresh.touchEvent(3, 0.0f, 0.0f);
        sum = sum + 0.1f;
    }
    EXPECT_EQ(fresh.m_transX, sum);
    EXPECT_NE(fresh.m_transX, 1.0f);
}

TEST_F(MotionInput, TouchStepsAreNotBounded) {
    for (int i = 0; i < 50; ++i) fresh.touchEvent(2, 0.0f, 0.0f);
    EXPECT_NEAR(fresh.m_transX, -5.0, 1e-4);
}

// setMinMaxDepth, and what no setter touches

TEST_F(MotionInput, DepthLimitsAreStoredUnchecked) {
    renderer.setMinMaxDepth(200, -3);
    EXPECT_EQ(renderer.m_minDepth, 200);
    EXPECT_EQ(renderer.m_maxDepth, -3);
}

TEST_F(MotionInput, NoSetterTouchesTheReservedFields) {
    renderer.setAccelerometerData(10.0f, 10.0f, 10.0f);
    renderer.setRotation(10.0f, 10.0f, 10.0f);
    renderer.setTranslation(10.0f, 10.0f, 10.0f);
    renderer.touchEvent(0, 10.0f, 10.0f);
    EXPECT_EQ(renderer.m_initAccX, -1000.0f);
    EXPECT_EQ(renderer.m_initAccY, -1000.0f);
    EXPECT_EQ(renderer.m_initAccZ, -1000.0f);
    EXPECT_EQ(renderer.m_targetTransZ, 0.0f);
    EXPECT_EQ(renderer.m_transStep, 0.1f);
    EXPECT_EQ(renderer.m_minDepth, 255);
    EXPECT_EQ(renderer.m_maxDepth, 0);
}

TEST_F(MotionInput, SettersNeedNoGlAndPrintNothing) {
    observed([&] {
        renderer.setAccelerometerData(10.0f, 10.0f, 10.0f);
        renderer.setRotation(10.0f, 10.0f, 10.0f);
        renderer.setTranslation(10.0f, 10.0f, 10.0f);
        renderer.touchEvent(0, 10.0f, 10.0f);
        renderer.setMinMaxDepth(1, 2);
    });
    EXPECT_EQ(timeline.lines().size(), 3u + 3u + 3u + 1u);
    EXPECT_EQ(log.lines().size(), 10u);
}

}  // namespace
}  // namespace quorvane::test
