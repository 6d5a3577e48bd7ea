#include "apps/tuner/core/stopwatch.h"

#include <gtest/gtest.h>

#include <cstdio>

#include "src/diagnostics/QRVNProf.h"

namespace quorvane::tuner {
namespace {

TEST(Stopwatch, LinesOfTheRendererBecomePlots) {
    std::string text;
    std::vector<Plot> plots;
    {
        PrintedLines printed;
        time_display(1500, "draw time                  ");
        time_display(20, "setupProjection            ");
        std::printf("something else\n");
        time_display(2500, "draw time                  ");
        text = printed.take();
        EXPECT_EQ(printed.take(), "") << "once";
    }
    addStopwatchLines(&text, &plots);
    EXPECT_EQ(text, "");
    ASSERT_EQ(plots.size(), 2u);
    EXPECT_EQ(plots[0].label, "draw time");
    EXPECT_EQ(plots[0].values, (std::deque<float>{1.5f, 2.5f}));
    EXPECT_EQ(plots[1].label, "setupProjection");
}

TEST(Stopwatch, HalfALineWaitsForItsEnd) {
    std::string text = "draw time :     1000(us) = 1.0";
    std::vector<Plot> plots;
    addStopwatchLines(&text, &plots);
    EXPECT_TRUE(plots.empty());
    text += "000(ms)\n";
    addStopwatchLines(&text, &plots);
    ASSERT_EQ(plots.size(), 1u);
    EXPECT_EQ(plots[0].values.front(), 1.0f);
}

TEST(Stopwatch, StaysBounded) {
    std::vector<Plot> plots;
    for (int i = 0; i < 1000; ++i) {
        std::string text = "label " + std::to_string(i) + ": 5(us) = 0.005(ms)\nsame: 7(us) = 0.007(ms)\n";
        addStopwatchLines(&text, &plots);
    }
    EXPECT_LE(plots.size(), 32u);
    for (const Plot& plot : plots) EXPECT_LE(plot.values.size(), Plot::kMostValues);
}

}  // namespace
}  // namespace quorvane::tuner
