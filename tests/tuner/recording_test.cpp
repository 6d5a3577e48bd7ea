#include "apps/tuner/core/recording.h"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

#include "apps/tuner/core/gaze.h"

namespace quorvane::tuner {
namespace {

app::Position at(double x, double y) {
    app::Position place;
    place.x = x;
    place.y = y;
    return place;
}

Recording circle() {
    Recording hand;
    for (int i = 0; i <= 120; ++i)
        hand.add(100.0 + i / 60.0, at(0.5 * std::sin(i * 0.05236), -0.5 * std::cos(i * 0.05236)));
    return hand;
}

TEST(Recording, BeginsAtNought) {
    const Recording hand = circle();
    EXPECT_EQ(hand.moments().front().t, 0.0);
    EXPECT_NEAR(hand.seconds(), 2.0, 1e-9);
}

TEST(Recording, ItsFileGivesTheSameMoments) {
    const Recording hand = circle();
    const Recording again(app::parseMoments(hand.lines(), "hand.jsonl"));
    ASSERT_EQ(again.moments().size(), hand.moments().size());
    for (size_t i = 0; i < hand.moments().size(); ++i) {
        EXPECT_EQ(again.moments()[i].t, hand.moments()[i].t);
        EXPECT_EQ(again.moments()[i].at.x, hand.moments()[i].at.x);
        EXPECT_EQ(again.moments()[i].at.y, hand.moments()[i].at.y);
    }
    EXPECT_EQ(again.lines(), hand.lines());
    std::istringstream lines(hand.lines());
    for (std::string line; std::getline(lines, line);) EXPECT_LE(line.size(), 48u) << line;
}

TEST(Recording, ReplayGoesWhereTheHandWas) {
    const Recording hand = circle();
    const app::Motion motion = hand.motion();
    for (const app::Moment& moment : hand.moments()) {
        const app::Position place = motion.place(moment.t / motion.seconds);
        EXPECT_NEAR(place.x, moment.at.x, 0.02);
        EXPECT_NEAR(place.y, moment.at.y, 0.02);
    }
}

TEST(Recording, WhatStandsStillIsWrittenOnce) {
    Recording hand;
    for (int i = 0; i < 600; ++i) hand.add(i / 60.0, at(0.25, 0.0));
    EXPECT_EQ(hand.moments().size(), 2u);
    EXPECT_NEAR(hand.seconds(), 599.0 / 60.0, 1e-3);
}

TEST(Recording, IsNoLongerThanItMayBe) {
    Recording hand;
    for (int i = 0; i < 1400; ++i) hand.add(i, at(i % 2 == 0 ? 0.0 : 0.5, 0.0));
    EXPECT_LE(hand.seconds(), Recording::kMostSeconds);
}

TEST(ClosedPath, GoesThroughItsPointsAndBack) {
    const std::vector<app::Position> points = {at(-0.8, 0.0), at(0.0, 0.6), at(0.8, 0.0), at(0.0, -0.6)};
    const Recording path = closedPath(points, 4.0);
    EXPECT_NEAR(path.seconds(), 4.0, 1e-9);
    EXPECT_EQ(path.moments().front().at.x, path.moments().back().at.x);
    EXPECT_EQ(path.moments().front().at.y, path.moments().back().at.y);
    for (const app::Position& point : points) {
        double nearest = 9.0;
        for (const app::Moment& moment : path.moments())
            nearest = std::min(nearest, std::hypot(moment.at.x - point.x, moment.at.y - point.y));
        EXPECT_LT(nearest, 1e-5);
    }
}

TEST(ClosedPath, StaysInTheSquare) {
    const Recording path = closedPath({at(-1, -1), at(1, -1), at(1, 1), at(-1, 1)}, 2.0);
    for (const app::Moment& moment : path.moments()) {
        EXPECT_LE(std::abs(moment.at.x), 1.0);
        EXPECT_LE(std::abs(moment.at.y), 1.0);
    }
    EXPECT_TRUE(closedPath({at(0.5, 0.5)}, 2.0).empty());
}

TEST(Gaze, StandsWhereTheHandIs) {
    Gaze gaze;
    gaze.point(at(0.3, -0.4), 1.0);
    const app::Position place = gaze.at(1.01, at(-1.0, 1.0), true);
    EXPECT_DOUBLE_EQ(place.x, 0.3);
    EXPECT_DOUBLE_EQ(place.y, -0.4);
    gaze.point(at(7.0, -9.0), 1.1);
    EXPECT_EQ(gaze.hand().x, 1.0);
    EXPECT_EQ(gaze.hand().y, -1.0);
}

TEST(Gaze, AfterARestTheMotionTakesOverWithoutAJump) {
    Gaze gaze;
    gaze.point(at(0.3, 0.0), 0.0);
    double last = 0.3;
    for (double now = 0.0; now < 6.0; now += 1.0 / 60.0) {
        const double x = gaze.at(now, at(-0.5, 0.0), true).x;
        EXPECT_LT(std::abs(x - last), 0.03);
        if (now < Gaze::kRest) {
            EXPECT_DOUBLE_EQ(x, 0.3);
        }
        last = x;
    }
    EXPECT_DOUBLE_EQ(last, -0.5);
    gaze.point(at(0.3, 0.0), 6.0);
    for (double now = 6.0; now < 7.0; now += 1.0 / 60.0) last = gaze.at(now, at(-0.5, 0.0), true).x;
    EXPECT_DOUBLE_EQ(last, 0.3) << "the hand has it back";
}

TEST(Gaze, WithoutIdleMotionItStays) {
    Gaze gaze;
    gaze.point(at(0.3, 0.0), 0.0);
    for (double now = 0.0; now < 9.0; now += 0.1) EXPECT_DOUBLE_EQ(gaze.at(now, at(-1.0, 0.0), false).x, 0.3);
}

}  // namespace
}  // namespace quorvane::tuner
