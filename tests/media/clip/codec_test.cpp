#include "media/clip/codec.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <iterator>

#include "system/error.h"

namespace quorvane::media {
namespace {

using testing::HasSubstr;
using testing::Not;

const Codec& codec(std::string_view name) {
    return *std::find_if(std::begin(kCodecs), std::end(kCodecs),
                         [name](const Codec& known) { return known.name == name; });
}

std::string refusal(const Codec& asked, const EncoderSettings& settings) {
    try {
        check(asked, settings);
    } catch (const Error& error) {
        return error.what();
    }
    return "not refused";
}

TEST(Codec, QualityRunsFromTheWorstToTheBest) {
    EXPECT_EQ(ownQuality(codec("h264"), 0), 38);
    EXPECT_EQ(ownQuality(codec("h264"), 80), 18);
    EXPECT_EQ(ownQuality(codec("h264"), 100), 13);
    EXPECT_DOUBLE_EQ(ownQuality(codec("h264"), 73), 19.8);
    EXPECT_EQ(ownQuality(codec("vp9"), 80), 25);
    EXPECT_EQ(ownQuality(codec("webp"), 37), 37);
    EXPECT_EQ(ownQuality(codec("gif"), 0), 16);
    EXPECT_EQ(ownQuality(codec("gif"), 100), 256);
    // In the encoders' own numbers a larger one is better for some and worse for others.
    for (const Codec& each : kCodecs)
        for (int quality = 1; quality <= 100 && each.isLossy(); ++quality)
            EXPECT_GE((ownQuality(each, quality) - ownQuality(each, quality - 1)) *
                          (each.at_best > each.at_worst ? 1 : -1),
                      0)
                << each.name << ' ' << quality;
}

TEST(Codec, StepsAreAsFineAsItsOwnNumber) {
    EXPECT_EQ(codec("h264").steps(), 125);
    EXPECT_EQ(codec("vp9").steps(), 48);
    EXPECT_EQ(codec("jpeg").steps(), 99);
    for (const Codec& each : kCodecs)
        for (int step = 1; step <= each.steps(); ++step)
            EXPECT_NEAR(std::abs(ownQuality(each, 100.0 * step / each.steps()) -
                                 ownQuality(each, 100.0 * (step - 1) / each.steps())),
                        1.0 / each.fineness, 1e-9)
                << each.name << ' ' << step;
}

TEST(Codec, TableIsWhole) {
    for (const Codec& each : kCodecs) {
        SCOPED_TRACE(each.name);
        const std::vector<std::string_view> presets = wordsOf(each.presets);
        const std::vector<std::string_view> usual = wordsOf(each.usual_preset);
        EXPECT_EQ(usual.empty(), presets.empty());
        for (const std::string_view preset : usual) EXPECT_THAT(presets, testing::Contains(preset));
        EXPECT_EQ(each.words.find("{preset}") != std::string_view::npos, !presets.empty());
        EXPECT_TRUE(each.words.empty() ||
                    (each.words.find("{quality}") != std::string_view::npos) == each.isLossy());
        EXPECT_THAT(encoderWords(each, {}), Not(HasSubstr("{")));
    }
}

TEST(Codec, IsToldWhatWasAsked) {
    EXPECT_THAT(encoderWords(codec("h264"), {}), HasSubstr("-crf 18"));
    EXPECT_THAT(encoderWords(codec("h264"), {nullptr, 73, {}}), HasSubstr("-crf 19.8"));
    EXPECT_THAT(encoderWords(codec("h264"), {nullptr, 40, "slow"}), HasSubstr("-preset slow -crf 28"));
}

TEST(Codec, RefusesWhatItHasNot) {
    EXPECT_EQ(refusal(codec("h264"), {nullptr, 50, "slow"}), "not refused");
    EXPECT_EQ(refusal(codec("apng"), {nullptr, 50, {}}),
              "--quality: apng keeps every pixel as it is and has no quality");
    EXPECT_EQ(refusal(codec("vp9"), {nullptr, 50, "slow"}),
              "--encoder-preset slow: vp9 has 5, 4, 3, 2, 1 or 0, from fast to small");
    EXPECT_EQ(refusal(codec("gif"), {nullptr, 50, "slow"}), "--encoder-preset slow: gif has none");
}

TEST(Codec, ListsWords) {
    EXPECT_THAT(wordsOf("  a bc  d "), testing::ElementsAre("a", "bc", "d"));
    EXPECT_THAT(wordsOf(""), testing::IsEmpty());
    EXPECT_EQ(listOf({"a", "b", "c"}), "a, b or c");
    EXPECT_EQ(listOf({"a"}), "a");
    EXPECT_EQ(listOf({}), "");
}

}  // namespace
}  // namespace quorvane::media
