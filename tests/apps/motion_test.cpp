#include "apps/quorvane/drawing/motion.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string>

namespace quorvane::app {
namespace {

const Motion& motionCalled(const std::string& name) {
    const auto found = std::find_if(motions().begin(), motions().end(),
                                    [&name](const Motion& motion) { return motion.name == name; });
    if (found == motions().end()) throw std::invalid_argument(name);
    return *found;
}

TEST(MotionPath, LoopsWithoutASeam) {
    for (const Motion& motion : motions()) {
        const Position first = motionAt(motion, 0, 24);
        const Position after_last = motionAt(motion, 24, 24);
        EXPECT_NEAR(after_last.x, first.x, 1e-12);
        EXPECT_NEAR(after_last.y, first.y, 1e-12);
    }
}

TEST(MotionPath, StartsAtRestUnlessItCircles) {
    for (const char* name : {"sway", "nod", "eight"}) {
        EXPECT_EQ(motionAt(motionCalled(name), 0, 30).x, 0.0);
        EXPECT_EQ(motionAt(motionCalled(name), 0, 30).y, 0.0);
    }
}

TEST(MotionPath, ReachesBothEndsAndNeverPassesThem) {
    for (const Motion& motion : motions()) {
        const std::string name = motion.name;
        SCOPED_TRACE(name);
        double least_x = 0, most_x = 0, least_y = 0, most_y = 0;
        for (int frame = 0; frame < 400; ++frame) {
            const Position at = motionAt(motion, frame, 400);
            least_x = std::min(least_x, at.x);
            most_x = std::max(most_x, at.x);
            least_y = std::min(least_y, at.y);
            most_y = std::max(most_y, at.y);
        }
        EXPECT_NEAR(most_x, name == "nod" ? 0 : 1, 1e-9);
        EXPECT_NEAR(least_x, name == "nod" ? 0 : -1, 1e-9);
        const double high = name == "sway" ? 0 : name == "eight" ? 0.5 : 1;
        EXPECT_NEAR(most_y, high, 1e-9);
        EXPECT_NEAR(least_y, -high, 1e-9);
    }
}

TEST(MotionPath, CircleKeepsItsDistance) {
    for (int frame = 0; frame < 24; ++frame) {
        const Position at = motionAt(motionCalled("circle"), frame, 24);
        EXPECT_NEAR(std::hypot(at.x, at.y), 1.0, 1e-12);
    }
}

}  // namespace
}  // namespace quorvane::app
