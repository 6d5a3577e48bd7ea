#include <cmath>
#include <limits>

#include "support/component_test.h"

namespace quorvane::test {
namespace {

using ::testing::ElementsAre;
using ::testing::Pair;

constexpr uint32_t kKeepsSet = 4;
constexpr uint32_t kAlsoKeepsSet = 7;
constexpr uint32_t kSecondSet = 0;

std::vector<float> realsOf(const LibParam& p) {
    return {p.rotate_z_trans, p.rotate_x_boundary, p.rotate_y_boundary, p.trans_to_rotate_scale,
            p.far_offset_ext, p.z_post_offset,     p.guided_filter_eps, p.depth_contrast,
            p.fov_scale,      p.offset_gain,       p.offset_len};
}

std::vector<int> integersOf(const LibParam& p) {
    return {p.guided_filter_rx, p.guided_filter_ry, p.border_deadzone};
}

void expectDefaults(const LibParam& p) {
    EXPECT_THAT(realsOf(p),
                ElementsAre(40.0f, 12.0f, 12.0f, 0.6f, 100.0f, 5.0f, 1e-6f, 24.0f, 0.81f, 0.4f, 35.0f));
    EXPECT_THAT(integersOf(p), ElementsAre(2, 2, 64));
}

void expectSecondSet(const LibParam& p) {
    EXPECT_THAT(realsOf(p),
                ElementsAre(50.0f, 14.0f, 10.0f, 0.6f, 100.0f, 5.0f, 1e-6f, 30.0f, 0.81f, 0.4f, 35.0f));
    EXPECT_THAT(integersOf(p), ElementsAre(2, 2, 18));
}

class Parameters : public ComponentTest {
  protected:
    ESRenderer renderer;
};

TEST_F(Parameters, NewRecordHoldsTheTunedDefaults) { expectDefaults(LibParam()); }

TEST_F(Parameters, NewRendererHoldsTheTunedDefaults) { expectDefaults(renderer.params); }

TEST_F(Parameters, FieldsLieInTheirDeclaredOrder) {
    const LibParam p;
    const std::vector<const void*> fields = {
        &p.rotate_z_trans,    &p.rotate_x_boundary, &p.rotate_y_boundary, &p.trans_to_rotate_scale,
        &p.far_offset_ext,    &p.z_post_offset,     &p.guided_filter_rx,  &p.guided_filter_ry,
        &p.guided_filter_eps, &p.depth_contrast,    &p.border_deadzone,   &p.fov_scale,
        &p.offset_gain,       &p.offset_len};
    for (size_t i = 0; i < fields.size(); ++i)
        EXPECT_EQ(fields[i], reinterpret_cast<const char*>(&p) + 4 * i) << "field " << i;
    EXPECT_EQ(sizeof(LibParam), 14u * 4u);
}

TEST_F(Parameters, WithoutPropertiesOrientation4KeepsTheDefaults) {
    renderer.getProperties(kKeepsSet);
    expectDefaults(renderer.params);
}

TEST_F(Parameters, WithoutPropertiesOrientation7KeepsTheDefaults) {
    renderer.getProperties(kAlsoKeepsSet);
    expectDefaults(renderer.params);
}

TEST_F(Parameters, EveryOtherOrientationStoresTheSecondSet) {
    for (const uint32_t orientation : {0u, 1u, 2u, 3u, 5u, 6u, 8u, 90u, 4294967295u}) {
        SCOPED_TRACE(orientation);
        ESRenderer other;
        other.getProperties(orientation);
        expectSecondSet(other.params);
    }
}

TEST_F(Parameters, SecondSetReplacesAllFields) {
    LibParam& p = renderer.params;
    p.rotate_z_trans = p.rotate_x_boundary = p.rotate_y_boundary = p.trans_to_rotate_scale = -1.0f;
    p.far_offset_ext = p.z_post_offset = p.guided_filter_eps = p.depth_contrast = -1.0f;
    p.fov_scale = p.offset_gain = p.offset_len = -1.0f;
    p.guided_filter_rx = p.guided_filter_ry = p.border_deadzone = -1;
    renderer.getProperties(kSecondSet);
    expectSecondSet(p);
}

TEST_F(Parameters, Orientations4And7KeepWhatAnEarlierCallStored) {
    for (const uint32_t keeping : {kKeepsSet, kAlsoKeepsSet}) {
        ESRenderer other;
        other.getProperties(kSecondSet);
        other.getProperties(keeping);
        expectSecondSet(other.params);
    }
}

TEST_F(Parameters, OverridesStayAfterTheirPropertyIsGone) {
    properties.set("quorvane.para1", "33.5");
    renderer.getProperties(kKeepsSet);
    properties.unset("quorvane.para1");
    renderer.getProperties(kAlsoKeepsSet);
    EXPECT_EQ(renderer.params.rotate_z_trans, 33.5f);
}

TEST_F(Parameters, SecondSetForgetsEarlierOverrides) {
    properties.set("quorvane.para1", "33.5");
    renderer.getProperties(kSecondSet);
    EXPECT_EQ(renderer.params.rotate_z_trans, 33.5f);
    properties.clear();
    renderer.getProperties(kSecondSet);
    EXPECT_EQ(renderer.params.rotate_z_trans, 50.0f);
}

TEST_F(Parameters, EachPropertyOverridesItsOwnField) {
    for (int i = 1; i <= 14; ++i)
        properties.set("quorvane.para" + std::to_string(i), std::to_string(100 + i));
    renderer.getProperties(kSecondSet);
    EXPECT_THAT(realsOf(renderer.params), ElementsAre(101.0f, 102.0f, 103.0f, 104.0f, 105.0f, 106.0f, 109.0f,
                                                      110.0f, 112.0f, 113.0f, 114.0f));
    EXPECT_THAT(integersOf(renderer.params), ElementsAre(107, 108, 111));
}

TEST_F(Parameters, PropertiesAreLookedUpInOrderWithTheCurrentValuesAsDefaults) {
    renderer.getProperties(kKeepsSet);
    EXPECT_THAT(properties.lookups,
                ElementsAre(Pair("quorvane.debug", "0"), Pair("quorvane.para1", "40.000000"),
                            Pair("quorvane.para2", "12.000000"), Pair("quorvane.para3", "12.000000"),
                            Pair("quorvane.para4", "0.600000"), Pair("quorvane.para5", "100.000000"),
                            Pair("quorvane.para6", "5.000000"), Pair("quorvane.para7", "2"),
                            Pair("quorvane.para8", "2"), Pair("quorvane.para9", "0.000001"),
                            Pair("quorvane.para10", "24.000000"), Pair("quorvane.para11", "64"),
                            Pair("quorvane.para12", "0.810000"), Pair("quorvane.para13", "0.400000"),
                            Pair("quorvane.para14", "35.000000")));
}

TEST_F(Parameters, EveryFieldsOwnValueIsItsDefault) {
    LibParam& p = renderer.params;
    p = {1.5f, 2.5f, 3.5f, 4.5f, 5.5f, 6.5f, 7, 8, 9.5f, 10.5f, 11, 12.5f, 13.5f, 14.5f};
    renderer.getProperties(kKeepsSet);
    for (size_t i = 1; i <= 14; ++i) {
        const bool integer = i == 7 || i == 8 || i == 11;
        EXPECT_THAT(properties.lookups[i], Pair("quorvane.para" + std::to_string(i),
                                                std::to_string(i) + (integer ? "" : ".500000")));
    }
    EXPECT_THAT(realsOf(p),
                ElementsAre(1.5f, 2.5f, 3.5f, 4.5f, 5.5f, 6.5f, 9.5f, 10.5f, 12.5f, 13.5f, 14.5f));
    EXPECT_THAT(integersOf(p), ElementsAre(7, 8, 11));
}

TEST_F(Parameters, SecondSetIsStoredBeforeTheLookups) {
    renderer.getProperties(kSecondSet);
    EXPECT_THAT(properties.lookups[1], Pair("quorvane.para1", "50.000000"));
    EXPECT_THAT(properties.lookups[11], Pair("quorvane.para11", "18"));
}

TEST_F(Parameters, DebugSwitchIsLookedUpWithDefault0EvenWhileOn) {
    properties.set("quorvane.debug", "1");
    renderer.getProperties(kKeepsSet);
    EXPECT_EQ(renderer.m_debugEnable, 1u);
    properties.clear();
    renderer.getProperties(kKeepsSet);
    EXPECT_THAT(properties.lookups[0], Pair("quorvane.debug", "0"));
    EXPECT_EQ(renderer.m_debugEnable, 0u);
}

TEST_F(Parameters, SmallEpsilonSurvivesOnlyAsLongAsItsPropertyIsSet) {
    properties.set("quorvane.para9", "0.0000001");
    renderer.getProperties(kKeepsSet);
    EXPECT_EQ(renderer.params.guided_filter_eps, 1e-7f);
    properties.unset("quorvane.para9");
    properties.lookups.clear();
    renderer.getProperties(kKeepsSet);
    EXPECT_THAT(properties.lookups[9], Pair("quorvane.para9", "0.000000"));
    EXPECT_EQ(renderer.params.guided_filter_eps, 0.0f);
}

TEST_F(Parameters, RealFieldsAreCutToSixDecimalsOnEveryCall) {
    renderer.params.fov_scale = 0.12345678f;
    renderer.getProperties(kKeepsSet);
    EXPECT_EQ(renderer.params.fov_scale, 0.123457f);
}

TEST_F(Parameters, IntegersStopAtTheDecimalPoint) {
    properties.set("quorvane.para7", "3.9");
    renderer.getProperties(kKeepsSet);
    EXPECT_EQ(renderer.params.guided_filter_rx, 3);
}

TEST_F(Parameters, IntegersAreDecimal) {
    properties.set("quorvane.para7", "0x10");
    properties.set("quorvane.para8", "010");
    renderer.getProperties(kKeepsSet);
    EXPECT_EQ(renderer.params.guided_filter_rx, 0);
    EXPECT_EQ(renderer.params.guided_filter_ry, 10);
}

TEST_F(Parameters, TextThatIsNoNumberCountsAs0) {
    properties.set("quorvane.para1", "far");
    properties.set("quorvane.para11", "none");
    renderer.getProperties(kKeepsSet);
    EXPECT_EQ(renderer.params.rotate_z_trans, 0.0f);
    EXPECT_EQ(renderer.params.border_deadzone, 0);
}

TEST_F(Parameters, NumericPrefixCounts) {
    properties.set("quorvane.para2", "7.5 degrees");
    properties.set("quorvane.para8", "5px");
    renderer.getProperties(kKeepsSet);
    EXPECT_EQ(renderer.params.rotate_x_boundary, 7.5f);
    EXPECT_EQ(renderer.params.guided_filter_ry, 5);
}

TEST_F(Parameters, EmptyPropertyCountsAsUnset) {
    properties.set("quorvane.para12", "");
    renderer.getProperties(kKeepsSet);
    EXPECT_EQ(renderer.params.fov_scale, 0.81f);
}

TEST_F(Parameters, OutOfRangeValuesAreStoredAsTheyCome) {
    properties.set("quorvane.para3", "-720.25");
    properties.set("quorvane.para7", "-3");
    properties.set("quorvane.para10", "1e3");
    renderer.getProperties(kKeepsSet);
    EXPECT_EQ(renderer.params.rotate_y_boundary, -720.25f);
    EXPECT_EQ(renderer.params.guided_filter_rx, -3);
    EXPECT_EQ(renderer.params.depth_contrast, 1000.0f);
}

TEST_F(Parameters, RealsAreRoundedFromDoubleToFloat) {
    properties.set("quorvane.para4", "0.1");
    properties.set("quorvane.para5", "16777217");
    renderer.getProperties(kKeepsSet);
    EXPECT_EQ(renderer.params.trans_to_rotate_scale, 0.1f);
    EXPECT_EQ(renderer.params.far_offset_ext, 16777216.0f);
    // A hair above half-way between 1 and the next float: the double is half-way, and that rounds to even.
    properties.set("quorvane.para4", "1.00000005960464477539062500000001");
    renderer.getProperties(kKeepsSet);
    EXPECT_EQ(renderer.params.trans_to_rotate_scale, 1.0f);
}

TEST_F(Parameters, ValueWhoseTextFitsThirtyOneCharactersGoesThroughIt) {
    renderer.params.rotate_z_trans = 5e23f;  // 24 digits, the point and six decimals
    renderer.getProperties(kKeepsSet);
    EXPECT_EQ(properties.lookups[1].second.size(), 31u);
    EXPECT_EQ(renderer.params.rotate_z_trans, 5e23f);
}

TEST_F(Parameters, ValueWhoseTextDoesNotFitIsKeptWhileThePropertyIsUnset) {
    for (const float value : {-5e23f, 2e24f, 1e30f, -3e38f}) {
        SCOPED_TRACE(value);
        renderer.params.offset_len = value;
        renderer.getProperties(kKeepsSet);
        EXPECT_EQ(renderer.params.offset_len, value);
    }
}

TEST_F(Parameters, ValueWhoseTextDoesNotFitIsStillOverridden) {
    renderer.params.rotate_z_trans = 1e30f;
    properties.set("quorvane.para1", "41.5");
    renderer.getProperties(kKeepsSet);
    EXPECT_EQ(renderer.params.rotate_z_trans, 41.5f);
}

TEST_F(Parameters, InfinityGoesThroughItsText) {
    renderer.params.z_post_offset = std::numeric_limits<float>::infinity();
    renderer.getProperties(kKeepsSet);
    EXPECT_EQ(renderer.params.z_post_offset, std::numeric_limits<float>::infinity());
}

TEST_F(Parameters, DebugSwitchStartsOff) { EXPECT_EQ(renderer.m_debugEnable, 0u); }

TEST_F(Parameters, AnyNonZeroNumberTurnsDebuggingOn) {
    for (const char* text : {"1", "2", "-1", "7 and more"}) {
        SCOPED_TRACE(text);
        properties.set("quorvane.debug", text);
        forget();
        renderer.getProperties(kKeepsSet);
        EXPECT_NE(renderer.m_debugEnable, 0u);
        EXPECT_EQ(log.lines().size(), 15u);
    }
}

TEST_F(Parameters, ZeroOrTextTurnsDebuggingOff) {
    for (const char* text : {"0", "on", "", "0.9"}) {
        SCOPED_TRACE(text);
        renderer.m_debugEnable = 1;
        properties.set("quorvane.debug", text);
        forget();
        renderer.getProperties(kKeepsSet);
        EXPECT_EQ(renderer.m_debugEnable, 0u);
        EXPECT_THAT(log.lines(), ElementsAre(debugLine("getProperties() orientation=4\n")));
    }
}

TEST_F(Parameters, OrientationIsLoggedOnEveryCall) {
    forget();
    renderer.getProperties(7);
    renderer.getProperties(90);
    EXPECT_THAT(log.lines(), ElementsAre(debugLine("getProperties() orientation=7\n"),
                                         debugLine("getProperties() orientation=90\n")));
}

TEST_F(Parameters, DebuggingLogsEveryFieldAfterTheOverrides) {
    properties.set("quorvane.debug", "1");
    properties.set("quorvane.para10", "28.25");
    forget();
    renderer.getProperties(kSecondSet);
    EXPECT_THAT(
        log.lines(),
        ElementsAre(
            debugLine("getProperties() orientation=0\n"), debugLine("rotate_z_trans           : 50.000000\n"),
            debugLine("rotate_x_boundary        : 14.000000\n"),
            debugLine("rotate_y_boundary        : 10.000000\n"),
            debugLine("trans_to_rotate_scale    : 0.600000\n"),
            debugLine("far_offset_ext           : 100.000000\n"),
            debugLine("z_post_offset            : 5.000000\n"), debugLine("guided_filter_rx         : 2\n"),
            debugLine("guided_filter_ry         : 2\n"), debugLine("guided_filter_eps        : 0.000001\n"),
            debugLine("depth_contrast           : 28.250000\n"), debugLine("border_deadzone          : 18\n"),
            debugLine("fov_scale                : 0.810000\n"),
            debugLine("offset_gain              : 0.400000\n"),
            debugLine("offset_len               : 35.000000\n")));
}

TEST_F(Parameters, ReadingPropertiesNeedsNoGl) {
    renderer.getProperties(kSecondSet);
    EXPECT_TRUE(timeline.calls().empty());
}

}  // namespace
}  // namespace quorvane::test
