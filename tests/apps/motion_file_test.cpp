#include "apps/quorvane/drawing/motion_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <string>

#include "support/temporary_folder.h"
#include "system/error.h"

namespace quorvane::app {
namespace {

using testing::HasSubstr;

std::string refusal(const std::string& text) {
    try {
        parseMoments(text, "hand.jsonl");
    } catch (const Error& error) {
        return error.what();
    }
    return "not refused";
}

std::vector<Moment> recordedHand() {
    std::vector<Moment> moments;
    for (int i = 0; i < 200; ++i) {
        const double t = 100.0 + i / 60.0 + 0.003 * std::sin(i * 7.0);
        moments.push_back({t, {0.9 * std::sin(t), 0.7 * std::cos(2.3 * t)}});
    }
    return moments;
}

TEST(MotionFile, ReadsWhatItWrites) {
    std::string text;
    const std::vector<Moment> written = {
        {0.0, {0.1, -0.25}}, {0.5, {1.0, -1.0, 1.25}}, {1.0 / 3.0 + 1.0, {}}};
    for (const Moment& moment : written) text += lineOf(moment);
    EXPECT_EQ(lineOf(written[1]), "{\"t\":0.5,\"x\":1.0,\"y\":-1.0,\"zoom\":1.25}\n");
    const std::vector<Moment> read = parseMoments(text, "a");
    ASSERT_EQ(read.size(), written.size());
    for (size_t i = 0; i < read.size(); ++i) {
        EXPECT_EQ(read[i].t, written[i].t);
        EXPECT_EQ(read[i].at.x, written[i].at.x);
        EXPECT_EQ(read[i].at.y, written[i].at.y);
        EXPECT_EQ(read[i].at.zoom, written[i].at.zoom);
    }
}

TEST(MotionFile, TakesAnyOrderBlanksAndLineEnds) {
    const auto moments =
        parseMoments("\r\n { \"y\": 1, \"x\":-1,\"t\":2e1 }\r\n\n{\"t\":20,\"x\":0,\"y\":0}", "a");
    ASSERT_EQ(moments.size(), 1u) << "of the same time the last one counts";
    EXPECT_EQ(moments[0].t, 20.0);
    EXPECT_EQ(moments[0].at.x, 0.0);
}

TEST(MotionFile, NamesTheLineOfAMistake) {
    const std::string good = "{\"t\":1,\"x\":0,\"y\":0}\n";
    const std::map<std::string, std::string> expected = {
        {"", "hand.jsonl: no line such as"},
        {"\n\n", "no line such as"},
        {good + "t,x,y", "hand.jsonl, line 2: a line such as"},
        {good + "[1,0,0]", "line 2: a line such as"},
        {good + "{\"t\":2,\"x\":0}", "line 2: y is missing"},
        {good + "{\"t\":2,\"x\":1.01,\"y\":0}", "line 2: x: a number from -1 to 1 is wanted"},
        {good + "{\"t\":2,\"x\":\"0\",\"y\":0}", "line 2: x: a number"},
        {good + "{\"t\":2,\"x\":0,\"y\":0,\"zoom\":5}", "line 2: zoom: a number from 0.5 to 4 is wanted"},
        {good + "{\"t\":2,\"x\":0,\"y\":0,\"zom\":2}",
         "line 2: 'zom' is unknown; t, x, y and zoom are known"},
        {good + "{\"t\":1e999,\"x\":0,\"y\":0}", "line 2: "},
        {good + "{\"t\":0.9,\"x\":0,\"y\":0}", "line 2: t is 0.9 after 1; it has to rise"},
        {good + "{\"t\":3602,\"x\":0,\"y\":0}", "line 2: a motion of 3600 seconds is the longest"},
        {good + std::string(5000, ' '), "line 2: 4096 bytes are the most"},
        {std::string("{\"t\":1,\"x\":0,\"y\":0\0}", 20), "line 1: "}};
    for (const auto& [text, words] : expected) EXPECT_THAT(refusal(text), HasSubstr(words)) << text;
}

TEST(MotionFile, RefusesWhatCannotBeRead) {
    const test::TemporaryFolder folder;
    EXPECT_THROW(readMoments(folder / "none.jsonl"), Error);
    EXPECT_THROW(readMoments(folder.path()), Error);
}

TEST(MotionThrough, PassesEveryMomentAtItsTimeAndStaysBetweenThem) {
    const std::vector<Moment> hand = recordedHand();
    const Motion motion = *motionThrough(hand, "hand").one_way;
    EXPECT_NEAR(motion.seconds, hand.back().t - hand.front().t, 1e-12);
    for (size_t i = 0; i + 1 < hand.size(); ++i) {
        const auto at = [&](double t) { return motion.place((t - hand.front().t) / motion.seconds); };
        EXPECT_NEAR(at(hand[i].t).x, hand[i].at.x, 1e-6);
        EXPECT_NEAR(at(hand[i].t).y, hand[i].at.y, 1e-6);
        const double y = at((hand[i].t + hand[i + 1].t) / 2).y;
        EXPECT_GE(y, std::min(hand[i].at.y, hand[i + 1].at.y) - 1e-12);
        EXPECT_LE(y, std::max(hand[i].at.y, hand[i + 1].at.y) + 1e-12);
    }
}

TEST(MotionThrough, AClosedOneLoopsInItsOwnTime) {
    const Motion motion = motionThrough({{3, {-1, 0}}, {4, {1, 0}}, {5, {-1, 0}}}, "keys");
    EXPECT_EQ(motion.one_way, nullptr);
    EXPECT_EQ(motion.seconds, 2.0);
    EXPECT_EQ(motion.place(0.5).x, 1.0);
    EXPECT_NEAR(motion.place(0.25).x, 0.0, 1e-12);
}

TEST(MotionThrough, AnOpenOneGoesBackInALoop) {
    const Motion motion = motionThrough({{0, {-1, 0}}, {1, {1, 0}}}, "keys");
    EXPECT_DOUBLE_EQ(motion.seconds, 1.0 + 2.0 * 0.8);
    EXPECT_NEAR(motion.place(1.0 / 2.6).x, 1.0, 1e-9);
    EXPECT_NEAR(motion.place(1.8 / 2.6).x, 0.0, 1e-9);
    EXPECT_EQ(motion.one_way->seconds, 1.0);
    EXPECT_NEAR(motion.one_way->place(0.25).x, -0.5, 1e-12) << "between two moments its speed stays the same";
}

TEST(MotionThrough, ALittleOpenOneGoesBackToo) {
    const Motion nearly = motionThrough({{0, {0, 0}}, {1, {1, 0}}, {2, {0.05, 0}}}, "keys");
    EXPECT_DOUBLE_EQ(nearly.seconds, 2.0 + 0.4);
    ASSERT_NE(nearly.one_way, nullptr);
    EXPECT_NEAR(nearly.one_way->place(1.0).x, 0.05, 1e-12);
    const Motion closer = motionThrough({{0, {0, 0, 1}}, {1, {0, 0, 2}}}, "keys");
    EXPECT_DOUBLE_EQ(closer.seconds, 1.0 + 0.8);
}

// The harmonic mean of the slopes before and behind, 0.2 and 0.3, with weights 1 + 2 * 2 and 2 * 1 + 2.
TEST(MotionThrough, SpeedAtAMomentLiesBetweenThoseAroundIt) {
    const Motion motion = *motionThrough({{0, {0, 0}}, {1, {0.2, 0}}, {3, {0.8, 0}}}, "keys").one_way;
    const auto at = [&motion](double t) { return motion.place(t / 3.0).x; };
    constexpr double kStep = 1e-5;
    for (const double t : {1.0 - kStep, 1.0})
        EXPECT_NEAR((at(t + kStep) - at(t)) / kStep, 9.0 / (5.0 / 0.2 + 4.0 / 0.3), 1e-4);
}

TEST(MotionThrough, NeverZoomsBeyondTheMost) {
    const Motion motion = motionThrough({{0, {0, 0, 4}}, {0.3, {0, 0, 4}}, {1, {0, 0, 4}}}, "keys");
    for (int i = 0; i <= 1000; ++i) EXPECT_LE(motion.place(i / 1000.0).zoom, 4.0);
}

TEST(MotionThrough, OneMomentIsAPlace) {
    const Motion motion = motionThrough({{7, {0.5, -0.5, 2}}}, "keys");
    for (const double part : {0.0, 0.4, 1.0}) {
        EXPECT_EQ(motion.place(part).x, 0.5);
        EXPECT_EQ(motion.place(part).zoom, 2.0);
    }
}

}  // namespace
}  // namespace quorvane::app
