#include "apps/quorvane/drawing/motion_timing.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>

#include "apps/quorvane/drawing/motion_file.h"
#include "apps/quorvane/terminal/usage_error.h"

namespace quorvane::app {
namespace {

using testing::HasSubstr;

/// What the words of a command line make.
FrameCount counted(const std::vector<const char*>& words, double own = 0.0) {
    CommandLines lines("p", "summary", "version");
    ClipTiming timing;
    addClipTiming(lines.add("clip", "summary", {}), &timing);
    std::vector<const char*> arguments = {"p", "clip"};
    arguments.insert(arguments.end(), words.begin(), words.end());
    size_t chosen = 0;
    EXPECT_TRUE(lines.parse(static_cast<int>(arguments.size()), arguments.data(), &chosen));
    return countFrames(timing, own);
}

std::string refusal(const std::vector<const char*>& words, double own = 0.0) {
    try {
        counted(words, own);
    } catch (const UsageError& error) {
        return error.what();
    }
    return "not refused";
}

void expectCount(FrameCount count, int frames, int fps) {
    EXPECT_EQ(count.frames, frames);
    EXPECT_EQ(count.fps, fps);
}

TEST(CountFrames, TwoGiveTheThird) {
    expectCount(counted({}), 120, 30);
    expectCount(counted({"--fps", "60"}), 240, 60);
    expectCount(counted({"--fps", "1"}), 4, 1);
    expectCount(counted({"--frames", "7"}), 7, 30);
    expectCount(counted({"--frames", "7", "--fps", "5"}), 7, 5);
    expectCount(counted({"--seconds", "2.5"}), 75, 30);
    expectCount(counted({"--seconds", "2", "--fps", "24"}), 48, 24);
    expectCount(counted({"--seconds", "0.001"}), 1, 30);
    expectCount(counted({"--seconds", "3", "--frames", "75"}), 75, 25);
    expectCount(counted({"--seconds", "3", "--frames", "75", "--fps", "25"}), 75, 25);
    expectCount(counted({"--seconds", "0.5", "--frames", "15", "--fps", "30"}), 15, 30);
}

TEST(CountFrames, AMotionsOwnTimeCountsWhereNoneIsGiven) {
    expectCount(counted({}, 2.6), 78, 30);
    expectCount(counted({"--fps", "10"}, 2.6), 26, 10);
    expectCount(counted({"--seconds", "1"}, 2.6), 30, 30);
    expectCount(counted({"--frames", "90"}, 2.6), 90, 30);
}

TEST(CountFrames, RefusesThreeThatDisagree) {
    EXPECT_THAT(refusal({"--seconds", "3", "--frames", "100", "--fps", "30"}),
                HasSubstr("--seconds 3, --fps 30 and --frames 100: 3 seconds are 90 frames"));
    EXPECT_THAT(refusal({"--seconds", "3", "--frames", "100"}),
                HasSubstr("33.33 frames a second; a whole number, 1 to 240, is wanted, such as --frames 99"));
    EXPECT_THAT(refusal({"--seconds", "1", "--frames", "1000"}), HasSubstr("such as --frames 240"));
    EXPECT_THAT(refusal({"--seconds", "3600", "--fps", "60"}),
                HasSubstr("216000 frames; 99999 are the most"));
    for (const char* seconds : {"0", "-1", "3601", "nan", "4s", ""})
        EXPECT_THAT(refusal({"--seconds", seconds}), HasSubstr("above 0 to 3600 is wanted"));
}

std::vector<Motion> everyKind() {
    std::vector<Motion> all;
    for (const NamedMotion& named : motions()) all.push_back(parseMotion(named.name));
    for (const char* text : {"sway+zoom", "x=0.8sin(-2)-0.1sin(3,0.25)", "-1,0 1,0.5 0,0,2", "-1,0 1,0"})
        all.push_back(parseMotion(text));
    all.push_back(motionThrough({{0, {-1, 0}}, {1, {1, 0}}, {1.5, {0.2, -0.7, 1.3}}}, "open"));
    all.push_back(motionThrough({{0, {-1, 0}}, {0.3, {1, 0}}, {1.5, {-1, 0}}}, "closed"));
    return all;
}

void expectSame(const Position& a, const Position& b, double within) {
    EXPECT_NEAR(a.x, b.x, within);
    EXPECT_NEAR(a.y, b.y, within);
    EXPECT_NEAR(a.zoom, b.zoom, within);
}

TEST(Timed, EveryLoopHasNoSeamInPlaceAndSpeed) {
    constexpr double kStep = 1e-7, kSeconds = 20.0;
    for (const Motion& motion : everyKind())
        for (const bool ease : {false, true})
            for (const bool ping_pong : {false, true})
                for (const int cycles : {1, 3})
                    for (const double hold : {0.0, 0.5}) {
                        SCOPED_TRACE(motion.text + (ease ? " ease" : "") + (ping_pong ? " ping-pong" : "") +
                                     " cycles " + std::to_string(cycles) + " hold " + std::to_string(hold));
                        const auto place =
                            timed(motion, {ease, ping_pong, false, cycles, hold}, kSeconds).place;
                        const Position before = place(1.0 - kStep), end = place(1.0), begin = place(0.0);
                        const Position after = place(kStep);
                        expectSame(end, begin, 1e-9);
                        const Position speed_before = {end.x - before.x, end.y - before.y,
                                                       end.zoom - before.zoom};
                        const Position speed_after = {after.x - begin.x, after.y - begin.y,
                                                      after.zoom - begin.zoom};
                        expectSame(speed_before, speed_after, 1e-9);
                        // Nowhere does it jump, and nothing that holds or turns changes its speed at once.
                        constexpr int kPlaces = 20000;
                        Position last = place(0.0), last_speed = {0, 0, 0};
                        for (int i = 1; i <= kPlaces; ++i) {
                            const Position now = place(static_cast<double>(i) / kPlaces);
                            const Position speed = {now.x - last.x, now.y - last.y, now.zoom - last.zoom};
                            if (i > 1) expectSame(speed, last_speed, 1e-4);
                            if (testing::Test::HasFailure()) return;
                            last = now;
                            last_speed = speed;
                        }
                    }
}

TEST(Timed, HoldsAtEachEnd) {
    const Motion sway = parseMotion("sway");
    // A loop has one end, and a ping-pong two.
    const auto loop = timed(sway, {false, false, false, 1, 1.0}, 5.0).place;
    for (const double t : {0.0, 0.5, 0.99}) EXPECT_NEAR(loop(t / 5.0).x, 0.0, 1e-9);
    EXPECT_NEAR(loop(3.0 / 5.0).x, 0.0, 1e-9) << "the middle of the way";
    double farthest = 0.0;
    for (double t = 1.0; t < 3.0; t += 0.01) farthest = std::max(farthest, loop(t / 5.0).x);
    EXPECT_NEAR(farthest, 1.0, 1e-3);

    const Motion keys = motionThrough({{0, {-1, 0}}, {2, {1, 0}}}, "keys");
    const auto back_and_forth = timed(keys, {false, true, false, 1, 1.0}, 6.0).place;
    for (const double t : {0.0, 0.9}) EXPECT_NEAR(back_and_forth(t / 6.0).x, -1.0, 1e-9);
    for (const double t : {3.0, 3.9}) EXPECT_NEAR(back_and_forth(t / 6.0).x, 1.0, 1e-9);
    EXPECT_NEAR(back_and_forth(2.0 / 6.0).x, 0.0, 1e-9);
    EXPECT_NEAR(back_and_forth(5.0 / 6.0).x, 0.0, 1e-9);

    const auto points = timed(parseMotion("-1,0 1,0"), {false, false, false, 1, 1.0}, 4.0).place;
    for (const double t : {0.1, 0.9}) EXPECT_NEAR(points(t / 4.0).x, -1.0, 1e-9);
    for (const double t : {2.1, 2.9}) EXPECT_NEAR(points(t / 4.0).x, 1.0, 1e-9);

    try {
        timed(sway, {false, false, false, 1, 5.0}, 4.0);
        FAIL() << "not refused";
    } catch (const UsageError& error) {
        EXPECT_THAT(
            error.what(),
            HasSubstr(
                "--hold 5: holding takes 5 seconds of 4 and leaves none to move in; --seconds 10 would do"));
    }
}

TEST(Timed, OnceEndsAtTheEnd) {
    const Motion keys = motionThrough({{0, {-1, 0}}, {2, {1, 0.5}}}, "keys");
    const Motion once = timed(keys, {false, false, true, 1, 0.0}, FrameCount{61, 30});
    const std::vector<Position> frames = loopAround({}, once, 1.0, 61);
    expectSame(frames.front(), {-1, 0}, 1e-12);
    expectSame(frames[30], {0, 0.25}, 1e-12);
    expectSame(frames.back(), {1, 0.5}, 1e-12);

    // Four seconds from the first frame to the last, the first and the last of them at rest.
    const Motion held = timed(keys, {false, false, true, 1, 1.0}, FrameCount{121, 30});
    const std::vector<Position> resting = loopAround({}, held, 1.0, 121);
    for (const size_t frame : {0, 15, 30}) expectSame(resting[frame], {-1, 0}, 1e-9);
    EXPECT_GT(resting[31].x, -1.0 + 1e-6);
    expectSame(resting[60], {0, 0.25}, 1e-9);
    for (const size_t frame : {90, 105, 120}) expectSame(resting[frame], {1, 0.5}, 1e-9);
}

TEST(Timed, OnceInSeveralCyclesGoesBackBetweenThem) {
    const Motion keys = motionThrough({{0, {-1, 0}}, {2, {1, 0.5}}}, "keys");
    const Motion twice = timed(keys, {false, false, true, 2, 0.0}, FrameCount{201, 30});
    const std::vector<Position> frames = loopAround({}, twice, 1.0, 201);
    for (size_t i = 1; i < frames.size(); ++i) EXPECT_NEAR(frames[i].x, frames[i - 1].x, 0.1) << i;
}

TEST(Timed, SeveralCyclesGoRoundSoOften) {
    const auto place = timed(parseMotion("circle"), {false, false, false, 3, 0.0}, 6.0).place;
    for (int i = 0; i < 3; ++i) expectSame(place((i + 0.25) / 3.0), {1.0, 0.0}, 1e-9);
}

TEST(Timed, EasedIsSlowAtItsEndsAndThereInTheMiddle) {
    const auto place = timed(parseMotion("circle"), {true, false, false, 1, 0.0}, 4.0).place;
    expectSame(place(0.5), {0.0, 1.0}, 1e-9);
    EXPECT_LT(std::abs(place(0.05).x), std::sin(2.0 * M_PI * 0.05) / 4.0);
    // Points are left and reached softly anyway.
    const Motion points = parseMotion("-1,0 1,0.5 0,0,2");
    const auto eased = timed(points, {true, false, false, 1, 0.0}, 4.0).place;
    for (const double part : {0.05, 0.4, 0.9}) expectSame(eased(part), points.place(part), 1e-9);
}

TEST(OwnSeconds, AreThoseOfTheWayThatIsGone) {
    const Motion open = motionThrough({{0, {-1, 0}}, {1, {1, 0}}}, "open");
    EXPECT_DOUBLE_EQ(ownSeconds(open, {}), 2.6);
    EXPECT_DOUBLE_EQ(ownSeconds(open, {false, false, true, 1, 0.0}), 1.0);
    EXPECT_DOUBLE_EQ(ownSeconds(open, {false, true, false, 2, 0.25}), 2 * 2.0 + 4 * 0.25);
    EXPECT_EQ(ownSeconds(parseMotion("sway"), {}), 0.0);
}

}  // namespace
}  // namespace quorvane::app
