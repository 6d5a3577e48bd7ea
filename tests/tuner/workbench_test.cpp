#include "apps/tuner/core/workbench.h"

#include <gtest/gtest.h>

#include <cmath>

#include "apps/tuner/core/history.h"

namespace quorvane::tuner {
namespace {

TEST(History, GoesBackAndForth) {
    History<int> history(0);
    EXPECT_FALSE(history.canUndo());
    history.add(1);
    history.add(1);
    history.add(2);
    EXPECT_EQ(history.undo(), 1);
    EXPECT_EQ(history.undo(), 0) << "the same again is no step";
    EXPECT_EQ(history.undo(), 0);
    EXPECT_EQ(history.redo(), 1);
    history.add(5);
    EXPECT_FALSE(history.canRedo());
    EXPECT_EQ(history.undo(), 1);
}

TEST(History, ForgetsTheOldest) {
    History<int> history(0);
    for (int i = 1; i <= 2000; ++i) history.add(i);
    int steps = 0;
    while (history.canUndo()) {
        history.undo();
        ++steps;
    }
    EXPECT_EQ(steps, static_cast<int>(History<int>::kMostStates) - 1);
}

TEST(Workbench, ADragIsOneStep) {
    Workbench bench;
    for (const double value : {10.0, 11.0, 12.0}) setParameter("depth_contrast", value, &bench.tuning());
    bench.commit();
    setParameter("depth_contrast", 20.0, &bench.tuning());
    EXPECT_TRUE(bench.canUndo());
    bench.undo();
    EXPECT_EQ(bench.tuning().parameters.at("depth_contrast"), 12.0);
    bench.undo();
    EXPECT_TRUE(bench.tuning() == Tuning());
    EXPECT_FALSE(bench.canUndo());
    bench.redo();
    bench.redo();
    EXPECT_EQ(bench.tuning().parameters.at("depth_contrast"), 20.0);
}

TEST(Workbench, UndoKnowsBothSettings) {
    Workbench bench;
    bench.flip();
    setParameter("fov_scale", 0.7, &bench.tuning());
    bench.commit();
    bench.copyToOther();
    EXPECT_EQ(bench.tunings[0].parameters.at("fov_scale"), 0.7);
    bench.undo();
    EXPECT_TRUE(bench.tunings[0] == Tuning());
    EXPECT_EQ(bench.tunings[1].parameters.at("fov_scale"), 0.7);
}

TEST(Workbench, FramesAreThoseOfTheCommandLine) {
    Workbench bench;
    bench.source = Source::kMotion;
    bench.tuning().motion = "circle";
    bench.tuning().amount = 0.5;
    bench.tuning().frames = 40;
    for (int frame = 0; frame < 40; ++frame) {
        bench.goToFrame(frame);
        EXPECT_EQ(bench.frame(), frame);
        const double turn = 2.0 * 3.14159265358979323846 * frame / 40;
        EXPECT_NEAR(bench.frameAt(frame).x, 0.5 * std::sin(turn), 1e-12);
        EXPECT_NEAR(bench.frameAt(frame).y, -0.5 * std::cos(turn), 1e-12);
        EXPECT_NEAR(bench.placeNow().x, bench.frameAt(frame).x, 1e-9);
    }
    bench.goToFrame(-1);
    EXPECT_EQ(bench.frame(), 39);
}

TEST(Workbench, PlaysInItsOwnTime) {
    Workbench bench;
    bench.tuning().frames = 60;
    bench.tuning().fps = 30;
    bench.advance(0.5);
    EXPECT_NEAR(bench.phase, 0.25, 1e-12);
    bench.advance(1.75);
    EXPECT_NEAR(bench.phase, 0.125, 1e-12);
    bench.playing = false;
    bench.advance(1.0);
    EXPECT_NEAR(bench.phase, 0.125, 1e-12);
}

TEST(Workbench, WhatWasRecordedGoesAsFarAndTakesAsLongElsewhere) {
    Workbench bench;
    bench.tuning().amount = 0.3;
    double now = 10.0;
    for (const double x : {0.0, 0.4, 0.8, 0.4, 0.0}) {
        app::Position place;
        place.x = x;
        bench.hand.add(now, place);
        now += 0.5;
    }
    bench.source = Source::kRecorded;
    EXPECT_EQ(bench.frames(), 60) << "two seconds, which end where they began";
    EXPECT_EQ(bench.exported().frames, 60);
    EXPECT_EQ(bench.exported().amount, 1.0);
    EXPECT_NEAR(bench.frameAt(30).x, 0.8, 1e-9);
    bench.source = Source::kMotion;
    EXPECT_EQ(bench.exported().amount, 0.3);
}

}  // namespace
}  // namespace quorvane::tuner
