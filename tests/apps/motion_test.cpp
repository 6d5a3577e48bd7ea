#include "apps/quorvane/drawing/motion.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <string>

#include "apps/quorvane/terminal/usage_error.h"

namespace quorvane::app {
namespace {

using testing::HasSubstr;
using testing::Not;

constexpr double kPi = 3.14159265358979323846;

/// Names, and expressions of every kind.
std::vector<std::string> representative() {
    std::vector<std::string> all = {"sway+zoom",
                                    "nod zoom",
                                    "x=sin(1) y=0.5cos(2)",
                                    "x=0.8sin(-1)-0.1sin(3,0.25)",
                                    "x=0.25 + 0.5*cos(2, -0.1)  y=-sin(5)",
                                    "zoom=0.75+0.25cos(2)+sway",
                                    "x=sin(99) zoom=2",
                                    "x=-0.5 y=0.5"};
    for (const NamedMotion& motion : motions()) all.emplace_back(motion.name);
    return all;
}

void expectSame(const Position& a, const Position& b, double within) {
    EXPECT_NEAR(a.x, b.x, within);
    EXPECT_NEAR(a.y, b.y, within);
    EXPECT_NEAR(a.zoom, b.zoom, within);
}

std::string refusal(const std::string& text) {
    try {
        parseMotion(text);
    } catch (const UsageError& error) {
        return error.what();
    }
    return "";
}

TEST(Motion, LoopsWithoutASeam) {
    constexpr double kStep = 1e-7;
    for (const std::string& text : representative()) {
        SCOPED_TRACE(text);
        const auto place = parseMotion(text).place;
        expectSame(place(1.0), place(0.0), 1e-9);
        const Position before = place(1.0 - kStep), end = place(1.0), begin = place(0.0),
                       after = place(kStep);
        const Position speed_before = {end.x - before.x, end.y - before.y, end.zoom - before.zoom};
        const Position speed_after = {after.x - begin.x, after.y - begin.y, after.zoom - begin.zoom};
        // A wave of 99 cycles changes its speed by 99^2 * 4 pi^2 * kStep^2 in that time.
        expectSame(speed_before, speed_after, 1e-8);
    }
}

TEST(Motion, NamedOnesGoWhereTheirNamesSay) {
    const std::map<std::string, Position (*)(double)> expected = {
        {"sway",
         [](double turn) {
             return Position{std::sin(turn), 0.0};
         }},
        {"nod",
         [](double turn) {
             return Position{0.0, std::sin(turn)};
         }},
        {"circle",
         [](double turn) {
             return Position{std::sin(turn), -std::cos(turn)};
         }},
        {"eight",
         [](double turn) {
             return Position{std::sin(turn), std::sin(turn) * std::cos(turn)};
         }},
        {"orbit",
         [](double turn) {
             return Position{0.85 * std::sin(turn), -0.85 * std::cos(turn)};
         }},
        {"zoom",
         [](double turn) {
             return Position{0.0, 0.0, 1.0 + 0.25 * std::pow(std::sin(turn / 2.0), 2)};
         }},
        {"still", [](double) { return Position(); }}};
    EXPECT_EQ(expected.size(), motions().size());
    for (const auto& [name, at] : expected) {
        SCOPED_TRACE(name);
        const Motion motion = parseMotion(name);
        for (int frame = 0; frame < 30; ++frame)
            expectSame(motion.place(frame / 30.0), at(2.0 * kPi * frame / 30.0), 1e-12);
    }
}

// Beyond the dead zone of the second tuned set the view would stand still on an axis.
TEST(Motion, OrbitStaysOffTheDeadZone) {
    for (const Position& at : loopAround({}, parseMotion("orbit"), 1.0, 24)) {
        EXPECT_LT(std::max(std::abs(at.x), std::abs(at.y)), 1.0 - 2.0 / 18.0);
        EXPECT_NEAR(std::hypot(at.x, at.y), 0.85, 1e-12);
    }
}

TEST(Motion, ExpressionsAreSumsOfNumbersAndWaves) {
    const Position at = parseMotion("x=0.25+0.5*cos(2,-0.1)-0.2sin(3) y=-sin(-5) zoom=1.5").place(0.3);
    expectSame(at,
               {0.25 + 0.5 * std::cos(2.0 * kPi * (0.6 - 0.1)) - 0.2 * std::sin(1.8 * kPi),
                std::sin(3.0 * kPi), 1.5},
               1e-12);
    EXPECT_NEAR(parseMotion("zoom=2+cos(1)").place(0.0).zoom, 3.0, 1e-12);
}

TEST(Motion, FastWavesAreMeasuredAtTheirPeaks) {
    EXPECT_THAT(refusal("x=1.1sin(64)"), HasSubstr("x goes from -1.1 to 1.1"));
    // In floating point these add up to a little more than 1.
    EXPECT_EQ(parseMotion("x=0.2+0.4+0.3+0.1").place(0.3).x, 1.0);
}

TEST(Motion, TermsAndPointsAreBounded) {
    std::string terms = "x=0.01", points = "0,0";
    for (int i = 1; i < 16; ++i) terms += "+0.01";
    for (int i = 1; i < 64; ++i) points += " 0,0";
    EXPECT_EQ(refusal(terms), "");
    EXPECT_EQ(refusal(points), "");
    EXPECT_THAT(refusal(terms + "+0.01"), HasSubstr("16 terms are the most"));
    EXPECT_THAT(refusal(points + " 0,0"), HasSubstr("64 points are the most"));
}

TEST(Motion, BlanksAndPlusJoinAlike) {
    for (const char* text : {"sway+zoom", "sway zoom", " zoom + sway ", "x=sin(1)+zoom", "zoom x = sin(1)"}) {
        if (std::string(text) == "zoom x = sin(1)") {
            EXPECT_NE(refusal(text), "");
            continue;
        }
        const Position at = parseMotion(text).place(0.25);
        expectSame(at, {1.0, 0.0, 1.125}, 1e-12);
    }
}

TEST(Motion, MistakesAreShownInTheirPlace) {
    const std::map<std::string, std::string> expected = {
        {"shake", "at 'shake' (character 1): sway, nod, circle, eight, orbit, zoom, still or an axis"},
        {"cirlce", "did you mean circle?"},
        {"", "at the end"},
        {"sway+", "at the end: something to join is wanted"},
        {"sway sway", "at 'sway' (character 6): x is moved already"},
        {"sway circle", "at 'circle' (character 6): x is moved already"},
        {"z=sin(1)", "at 'z=sin(1)' (character 1): x=, y= or zoom= is wanted"},
        {"x=", "at the end: a number, sin(CYCLES) or cos(CYCLES) is wanted"},
        {"x=sin(1) y=tan(2)", "at 'tan(2)' (character 12): a number, sin(CYCLES)"},
        {"x=0.5*", "at the end: a number, sin(CYCLES)"},
        {"x=sin(1.5)", "at '1.5)' (character 7): a whole number of cycles, -99 to 99"},
        {"x=sin(100)", "a whole number of cycles"},
        {"x=sin()", "at ')' (character 7): a whole number"},
        {"x=sin(1", "at the end: ')' is wanted"},
        {"x=sin(1,2)", "at '2)' (character 9): a part of a cycle"},
        {"x=sin(1)+sin(2)",
         "at 'x=sin(1)+sin(2)' (character 1): x goes from -1.76 to 1.76; -1 to 1 is wanted"},
        {"y=1.2", "y goes from 1.2 to 1.2"},
        {"zoom=0.4", "zoom goes from 0.4 to 0.4; 0.5 to 4 is wanted"},
        {"x=1..2", "at '1..2' (character 3): a number is wanted"},
        {"x=nan", "at 'nan' (character 3)"},
        {"-1,0 1", "at '1' (character 6): X,Y or X,Y,ZOOM is wanted"},
        {"0,0 0,1.1", "at '0,1.1' (character 5)"},
        {"0,0,5", "at '0,0,5' (character 1)"},
        {"0,0,1,1", "at '0,0,1,1' (character 1)"},
        {"0.5sin(1)", "at '0.5sin(1)' (character 1): X,Y"}};
    for (const auto& [text, words] : expected) {
        EXPECT_THAT(refusal(text), HasSubstr("--motion " + text + ": "));
        EXPECT_THAT(refusal(text), HasSubstr(words)) << text;
        EXPECT_THAT(refusal(text), Not(HasSubstr("\n")));
    }
}

TEST(Motion, PointsAreReachedInEqualTimesAndRestedAt) {
    constexpr double kStep = 1e-6;
    const Motion motion = parseMotion("-1,0 1,0.5 0,0,2");
    const Position points[] = {{-1, 0}, {1, 0.5}, {0, 0, 2}};
    for (int i = 0; i < 3; ++i) {
        expectSame(motion.place(i / 3.0), points[i], 1e-9);
        expectSame(motion.place(i / 3.0 + kStep), points[i], 1e-9);
        const Position& next = points[(i + 1) % 3];
        expectSame(motion.place((i + 0.5) / 3.0),
                   {(points[i].x + next.x) / 2, (points[i].y + next.y) / 2, (points[i].zoom + next.zoom) / 2},
                   1e-9);
    }
    ASSERT_NE(motion.one_way, nullptr);
    expectSame(motion.one_way->place(0.5), points[1], 1e-9);
    expectSame(motion.one_way->place(1.0), points[2], 1e-9);
    expectSame(parseMotion("0.5,-0.5").place(0.3), {0.5, -0.5}, 0.0);
}

TEST(Motion, AmountTakesAPartOfSwingAndZoom) {
    const std::vector<Position> loop = loopAround({0.1, -0.2}, parseMotion("sway+zoom"), 0.5, 4);
    expectSame(loop[1], {0.6, -0.2, 1.0625}, 1e-12);
    expectSame(loop[2], {0.1, -0.2, 1.125}, 1e-12);
    EXPECT_NEAR(closestZoom(loop), 1.125, 1e-12);
    EXPECT_EQ(closestZoom({}), 1.0);
}

// What is framed for other places than those of its frames shows a border in some of them.
TEST(Motion, EveryFrameIsPlannedFor) {
    for (const bool once : {false, true})
        for (const int frames : {1, 7, 100, 120, 500}) {
            Motion motion = parseMotion("x=sin(80) y=cos(7)");
            motion.once = once;
            const std::vector<Position> path = pathAround({}, motion, 0.8, frames);
            for (const Position& frame : loopAround({}, motion, 0.8, frames))
                EXPECT_TRUE(std::any_of(path.begin(), path.end(), [&frame](const Position& place) {
                    return place.x == frame.x && place.y == frame.y;
                })) << frames;
        }
}

}  // namespace
}  // namespace quorvane::app
