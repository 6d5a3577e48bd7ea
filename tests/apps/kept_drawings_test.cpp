#include "apps/quorvane/drawing/kept_drawings.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace quorvane::app {
namespace {

constexpr int kPlenty = 1000;

/// What became of a clip whose drawings are marked with the places that they were drawn from.
struct Outcome {
    int drawn = 0;
    double farthest = 0.0;  ///< of any frame from the place that it should show
    size_t most_kept = 0;
};

Outcome makeClip(const std::string& motion, int frames, int most) {
    constexpr double kUnit = 1e6;
    const std::vector<Position> positions = loopAround({0.1, -0.1}, parseMotion(motion), 0.7, frames);
    KeptDrawings kept(positions, most);
    std::vector<std::weak_ptr<Drawing>> all;
    Outcome outcome;
    for (int number = 0; number < frames; ++number) {
        const Position& place = positions[static_cast<size_t>(number)];
        std::shared_ptr<Drawing> drawing = kept.take(number);
        if (drawing == nullptr) {
            drawing = std::make_shared<Drawing>();
            drawing->views[0].lens = {};
            drawing->views[0].turn_deg = place.x * kUnit;
            drawing->views[0].zoom = place.zoom;
            all.emplace_back(drawing);
            ++outcome.drawn;
        }
        outcome.farthest = std::max({outcome.farthest, std::abs(drawing->views[0].turn_deg / kUnit - place.x),
                                     std::abs(drawing->views[0].zoom - place.zoom)});
        kept.keep(number, drawing);
        drawing.reset();
        outcome.most_kept = std::max(
            outcome.most_kept, static_cast<size_t>(std::count_if(
                                   all.begin(), all.end(), [](const auto& one) { return !one.expired(); })));
    }
    return outcome;
}

TEST(KeptDrawings, WayBackIsNotDrawnAgain) {
    // From the middle to one side and back, and the same on the other side: the middle and each side once,
    // and 21 or 22 places on either side between them.
    const Outcome sway = makeClip("sway", 90, kPlenty);
    EXPECT_EQ(sway.drawn, 45);
    EXPECT_LT(sway.farthest, 1e-9);
    EXPECT_EQ(makeClip("sway", 88, kPlenty).drawn, 45);
    EXPECT_EQ(makeClip("zoom", 90, kPlenty).drawn, 46);
    EXPECT_EQ(makeClip("still", 90, kPlenty).drawn, 1);
}

TEST(KeptDrawings, RoundIsDrawnWhole) {
    EXPECT_EQ(makeClip("circle", 90, kPlenty).drawn, 90);
    // An eight passes its middle twice.
    EXPECT_EQ(makeClip("eight", 90, kPlenty).drawn, 89);
    // The second round of two is the first.
    EXPECT_EQ(makeClip("x=sin(2) y=-cos(2)", 90, kPlenty).drawn, 45);
}

TEST(KeptDrawings, KeepsNoMoreThanItMayAndThoseThatAreShownSoonest) {
    for (const int most : {0, 1, 5, 22}) {
        const Outcome outcome = makeClip("sway", 90, most);
        EXPECT_LT(outcome.farthest, 1e-9) << most;
        EXPECT_LE(outcome.most_kept, static_cast<size_t>(most)) << most;
        // On either side as many as are kept need not be drawn again.
        EXPECT_EQ(outcome.drawn, 90 - std::min(2 * most, 45)) << most;
    }
}

}  // namespace
}  // namespace quorvane::app
