#include "media/clip/size_search.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <set>
#include <utility>

namespace quorvane::media {
namespace {

using testing::Le;

/// An encoder of sizes that a test makes up. Notes what it is asked for, and breaks the promise aloud.
struct Encoder {
    std::function<double(size_t variant, int level)> bytes;
    int64_t limit = 0;
    int probes = 0;
    std::set<std::pair<size_t, int>> asked = {};
    std::optional<SizeChoice> fits = {};

    int64_t operator()(SizeChoice choice) {
        ++probes;
        EXPECT_TRUE(asked.insert({choice.variant, choice.level}).second) << "asked twice";
        const auto size = static_cast<int64_t>(std::llround(bytes(choice.variant, choice.level)));
        if (size > limit) return size;
        if (fits) {
            EXPECT_TRUE(choice.variant < fits->variant ||
                        (choice.variant == fits->variant && choice.level > fits->level))
                << "liked less than one that fits";
        }
        fits = choice;
        return size;
    }
};

SizeOutcome search(const SizeChoices& choices, int64_t limit, Encoder* encoder) {
    encoder->limit = limit;
    const SizeOutcome outcome =
        searchSize(choices, limit, [encoder](SizeChoice choice) { return (*encoder)(choice); });
    EXPECT_EQ(outcome.choice.has_value(), encoder->fits.has_value());
    if (outcome.choice && encoder->fits) {
        EXPECT_EQ(outcome.choice->variant, encoder->fits->variant);
        EXPECT_EQ(outcome.choice->level, encoder->fits->level);
    }
    return outcome;
}

/// Bytes double every 15 levels, as with a video encoder's quality of 0 to 100.
double qualityCost(int level) { return std::exp2(level / 15.0); }

/// Sizes that fall by 0.85 on each side.
std::vector<double> sizeSteps() { return {1.0, 0.72, 0.52, 0.38, 0.27, 0.2}; }

double video(size_t variant, int level) {
    return 4e6 * sizeSteps()[variant] * qualityCost(level) / qualityCost(80);
}

SizeChoices videoChoices() { return {sizeSteps(), 30, 80, qualityCost}; }

TEST(SizeSearch, WhatFitsAtItsBestTakesOneEncoding) {
    Encoder encoder = {video};
    const SizeOutcome outcome = search(videoChoices(), 4'000'000, &encoder);
    ASSERT_TRUE(outcome.choice);
    EXPECT_EQ(outcome.choice->variant, 0u);
    EXPECT_EQ(outcome.choice->level, 80);
    EXPECT_EQ(encoder.probes, 1);
}

TEST(SizeSearch, GoodEstimateNeedsTwoEncodings) {
    Encoder encoder = {video};
    const SizeOutcome outcome = search(videoChoices(), 2'000'000, &encoder);
    ASSERT_TRUE(outcome.choice);
    EXPECT_EQ(outcome.choice->variant, 0u);
    EXPECT_GT(video(0, outcome.choice->level), 1'800'000);
    EXPECT_EQ(encoder.probes, 2);
}

TEST(SizeSearch, WrongEstimatesStillLandWithFewEncodings) {
    // The encoder's bytes go as this power of what was estimated.
    for (const double power : {0.3, 0.6, 1.6, 3.0}) {
        SCOPED_TRACE(power);
        const auto bytes = [power](size_t variant, int level) {
            return 4e6 * std::pow(sizeSteps()[variant] * qualityCost(level) / qualityCost(80), power);
        };
        Encoder encoder = {bytes};
        const SizeOutcome outcome = search(videoChoices(), 3'000'000, &encoder);
        ASSERT_TRUE(outcome.choice);
        EXPECT_EQ(outcome.choice->variant, 0u);
        const double used = bytes(0, outcome.choice->level);
        EXPECT_THAT(used, Le(3e6));
        if (outcome.choice->level < 80 && bytes(0, outcome.choice->level + 1) <= 3e6) {
            EXPECT_GT(used, 2.7e6);
        }
        EXPECT_THAT(encoder.probes, Le(6));
    }
}

TEST(SizeSearch, QualityGoesBeforeSize) {
    // At the lowest quality the whole size takes a tenth of its best: 397,000 bytes.
    Encoder encoder = {video};
    const SizeOutcome outcome = search(videoChoices(), 400'000, &encoder);
    ASSERT_TRUE(outcome.choice);
    EXPECT_EQ(outcome.choice->variant, 0u);
    EXPECT_EQ(outcome.choice->level, 30);
}

TEST(SizeSearch, ThenTheLargestSizeThatFitsAtTheFloorAndItsBestLevel) {
    for (const double limit : {390e3, 250e3, 160e3, 100e3}) {
        SCOPED_TRACE(limit);
        Encoder encoder = {video};
        const SizeOutcome outcome = search(videoChoices(), static_cast<int64_t>(limit), &encoder);
        ASSERT_TRUE(outcome.choice);
        const size_t variant = outcome.choice->variant;
        EXPECT_LE(video(variant, outcome.choice->level), limit);
        EXPECT_GT(video(variant - 1, 30), limit);
        EXPECT_TRUE(video(variant, outcome.choice->level) >= 0.9 * limit ||
                    video(variant, outcome.choice->level + 1) > limit);
        EXPECT_THAT(encoder.probes, Le(6));
    }
}

TEST(SizeSearch, EarlierVariantIsTriedWhereTheEstimateWentTooFar) {
    // A variant costs so much less than its estimate says that the search's first guess is several too far.
    const auto bytes = [](size_t variant, int level) {
        return 4e6 * std::pow(sizeSteps()[variant], 2.0) * qualityCost(level) / qualityCost(80);
    };
    Encoder encoder = {bytes};
    const SizeOutcome outcome = search(videoChoices(), 150'000, &encoder);
    ASSERT_TRUE(outcome.choice);
    EXPECT_EQ(outcome.choice->variant, 2u);
    EXPECT_GT(bytes(1, 30), 150e3);
    EXPECT_LE(bytes(2, 30), 150e3);
}

TEST(SizeSearch, NothingGoesBelowTheFloor) {
    Encoder encoder = {video};
    const SizeOutcome outcome = search(videoChoices(), 10'000, &encoder);
    EXPECT_FALSE(outcome.choice);
    EXPECT_EQ(outcome.smallest.variant, 5u);
    EXPECT_EQ(outcome.smallest.level, 30);
    EXPECT_EQ(outcome.smallest_bytes, std::llround(video(5, 30)));
    EXPECT_THAT(encoder.probes, Le(4));
}

TEST(SizeSearch, ExactLimitFits) {
    const SizeChoices choices = {{1.0}, 0, 100, [](int level) { return level + 1.0; }};
    const auto bytes = [](size_t, int level) { return 100.0 * (level + 1); };
    Encoder encoder = {bytes};
    const SizeOutcome all = search(choices, 10'100, &encoder);
    ASSERT_TRUE(all.choice);
    EXPECT_EQ(all.choice->level, 100);
    Encoder floor_encoder = {bytes};
    const SizeOutcome floor = search(choices, 100, &floor_encoder);
    ASSERT_TRUE(floor.choice);
    EXPECT_EQ(floor.choice->level, 0);
}

TEST(SizeSearch, CoarseLevelsEndNextToOneThatIsTooLarge) {
    // Each level takes 1.5 times the bytes of the one before: none may lie in the last tenth.
    const auto cost = [](int level) { return std::pow(1.5, level); };
    const SizeChoices choices = {{1.0}, 0, 12, cost};
    for (int limit = 1000; limit < 100'000; limit += 997) {
        SCOPED_TRACE(limit);
        Encoder encoder = {[&cost](size_t, int level) { return 1000 * cost(level); }};
        const SizeOutcome outcome = search(choices, limit, &encoder);
        ASSERT_TRUE(outcome.choice);
        const int level = outcome.choice->level;
        EXPECT_LE(1000 * cost(level), limit);
        EXPECT_TRUE(1000 * cost(level) >= 0.9 * limit || 1000 * cost(level + 1) > limit);
    }
}

TEST(SizeSearch, BytesThatDoNotRiseWithTheLevelStillEndInside) {
    // Every third level takes a fifth more than it should, every fifth a tenth less.
    const auto bytes = [](size_t variant, int level) {
        return video(variant, level) * (level % 3 == 0 ? 1.2 : 1.0) * (level % 5 == 0 ? 0.9 : 1.0);
    };
    for (int limit = 100'000; limit < 4'500'000; limit += 111'111) {
        SCOPED_TRACE(limit);
        Encoder encoder = {bytes};
        const SizeOutcome outcome = search(videoChoices(), limit, &encoder);
        ASSERT_TRUE(outcome.choice);
        EXPECT_LE(bytes(outcome.choice->variant, outcome.choice->level), limit);
        EXPECT_THAT(encoder.probes, Le(10));
    }
}

TEST(SizeSearch, SameBytesAtEveryLevelEnd) {
    Encoder fitting = {[](size_t, int) { return 1000.0; }};
    EXPECT_EQ(search(videoChoices(), 1000, &fitting).choice->level, 80);
    Encoder failing = {[](size_t, int) { return 1001.0; }};
    EXPECT_FALSE(search(videoChoices(), 1000, &failing).choice);
    EXPECT_THAT(failing.probes, Le(12));
}

TEST(SizeSearch, WhatEncodeThrowsComesOut) {
    EXPECT_THROW(searchSize(videoChoices(), 1000, [](SizeChoice) -> int64_t { throw 1; }), int);
}

}  // namespace
}  // namespace quorvane::media
