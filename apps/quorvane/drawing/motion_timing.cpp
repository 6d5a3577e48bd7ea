#include "apps/quorvane/drawing/motion_timing.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <string>
#include <utility>

#include "apps/quorvane/terminal/numbers.h"
#include "apps/quorvane/terminal/text.h"
#include "apps/quorvane/terminal/usage_error.h"

namespace quorvane::app {
namespace {

constexpr int kMostFrames = 99999;
constexpr int kMostFps = 240;
constexpr int kMostCycles = 1000;
constexpr double kMostSeconds = 3600.0;

/// Of a way's time, that it takes to leave an end and to stop at one.
constexpr double kTurningRamp = 0.15;
constexpr double kEasedRamp = 0.5;

/// A stretch without a stop.
struct Leg {
    double from, to;   ///< parts of the motion; counted on over several cycles
    double begin = 0;  ///< seconds
    double end = 0;
};

const Motion& wayOf(const Motion& motion, const MotionTiming& timing) {
    const bool ends = timing.ping_pong || (timing.once && timing.cycles == 1);
    return ends && motion.one_way != nullptr ? *motion.one_way : motion;
}

std::vector<Leg> legsOf(const Motion& way, const MotionTiming& timing) {
    std::vector<Leg> legs;
    for (int cycle = 0; cycle < timing.cycles; ++cycle) {
        const double before = timing.ping_pong ? 0.0 : cycle;
        const bool goes_on = cycle > 0 && !timing.ping_pong && timing.hold == 0.0;
        if (goes_on) {
            legs.back().to = before + 1.0;
            continue;
        }
        for (int i = 0; i < way.legs; ++i)
            legs.push_back({before + static_cast<double>(i) / way.legs, before + (i + 1.0) / way.legs});
        if (!timing.ping_pong) continue;
        for (int i = way.legs; i > 0; --i)
            legs.push_back({static_cast<double>(i) / way.legs, (i - 1.0) / way.legs});
    }
    return legs;
}

int holdsOf(const std::vector<Leg>& legs, const MotionTiming& timing) {
    return timing.hold == 0.0 ? 0 : static_cast<int>(legs.size()) + (timing.once ? 1 : 0);
}

/// Without those, a leg is gone through at the motion's own speed.
double rampOf(const Motion& way, const MotionTiming& timing) {
    if (way.legs > 1) return 0.0;
    if (timing.ease) return kEasedRamp;
    return timing.ping_pong || timing.hold > 0.0 ? kTurningRamp : 0.0;
}

int parseFrames(const std::string& text) {
    double part = 0.0;
    if (text == "auto" || (parseNumber(text, &part) && part > 0.0 && part < 1.0))
        throw UsageError("--frames " + text + ": a whole number of frames is wanted; did you mean --frame " +
                         text + "?");
    return parseWhole("--frames", text, 1, kMostFrames);
}

}  // namespace

Motion timed(const Motion& motion, const MotionTiming& timing, double seconds) {
    const Motion& way = wayOf(motion, timing);
    std::vector<Leg> legs = legsOf(way, timing);
    const int holds = holdsOf(legs, timing);
    const double moving = seconds - holds * timing.hold;
    if (moving <= 0.0)
        throw UsageError(
            formatted("--hold %g: holding takes %g seconds of %.3g and leaves none to move in; "
                      "--seconds %g would do",
                      timing.hold, holds * timing.hold, seconds, std::ceil(2.0 * holds * timing.hold)));
    double all = 0.0;
    for (const Leg& leg : legs) all += std::abs(leg.to - leg.from);
    double now = 0.0;
    for (Leg& leg : legs) {
        leg.begin = now + timing.hold;
        leg.end = leg.begin + moving * std::abs(leg.to - leg.from) / all;
        now = leg.end;
    }
    Motion result = motion;
    result.once = timing.once;
    result.one_way = nullptr;
    result.seconds = seconds;
    result.place = [place = way.place, legs = std::move(legs), ramp = rampOf(way, timing),
                    cycles = timing.cycles, seconds](double part) {
        const double time = part * seconds;
        const auto leg =
            std::find_if(legs.begin(), legs.end() - 1, [time](const Leg& each) { return time < each.end; });
        const double gone = std::clamp((time - leg->begin) / (leg->end - leg->begin), 0.0, 1.0);
        const double at = leg->from + (ramp > 0.0 ? softly(gone, ramp) : gone) * (leg->to - leg->from);
        return place(at <= 1.0 || cycles == 1 ? at : at - std::ceil(at) + 1.0);
    };
    return result;
}

double ownSeconds(const Motion& motion, const MotionTiming& timing) {
    const Motion& way = wayOf(motion, timing);
    if (way.seconds == 0.0) return 0.0;
    const double cycle = way.seconds * (timing.ping_pong ? 2.0 : 1.0);
    return cycle * timing.cycles + holdsOf(legsOf(way, timing), timing) * timing.hold;
}

void addClipTiming(CommandLine* line, ClipTiming* timing) {
    // A default that a profile kept would disagree with the other two.
    Option& frames =
        line->parsed(
                "--frames", [timing](const std::string& text) { timing->frames = parseFrames(text); },
                "frames in the loop (1 to 99999; by default as many as --seconds take)")
            .called("N");
    Option& fps =
        line->parsed(
                "--fps",
                [timing](const std::string& text) { timing->fps = parseWhole("--fps", text, 1, kMostFps); },
                "frames a second (1 to 240, default 30; in a .gif 20)")
            .called("N")
            .soughtAs({"--framerate", "--frame-rate", "--rate", "-r"});
    Option& seconds =
        line->parsed(
                "--seconds",
                [timing](const std::string& text) {
                    double given = 0.0;
                    if (!parseNumber(text, &given) || !(given > 0.0 && given <= kMostSeconds))
                        throw UsageError("--seconds " + text + ": a number above 0 to 3600 is wanted");
                    timing->seconds = given;
                },
                "how long the loop takes; of --seconds, --fps and --frames two give the third "
                "(default: 4, or as "
                "long as the motion of a file)")
            .called("S")
            .soughtAs({"--duration", "--length", "-t"})
            .rivals(frames);
    MotionTiming* const motion = &timing->motion;
    Option& ease = line->flag("--ease", &motion->ease, "begin and end softly");
    Option& ping_pong =
        line->flag("--ping-pong", &motion->ping_pong, "go to the motion's end and back by the same way");
    Option& once = line->flag("--once", &motion->once, "end where the motion ends, instead of a loop");
    Option& cycles = line->whole("--cycles", &motion->cycles, 1, kMostCycles,
                                 "how often the motion is gone through in the loop");
    Option& hold =
        line->number("--hold", &motion->hold, 0.0, 60.0, "stand still so many seconds at each end");
    timing->options = {&frames, &fps, &seconds, &ease, &ping_pong, &once, &cycles, &hold};
}

FrameCount countFrames(const ClipTiming& timing, double own, FrameCount usual) {
    const int fps = timing.fps.value_or(usual.fps);
    const double seconds = timing.seconds.value_or(timing.frames ? 0.0 : own);
    if (seconds == 0.0) {
        const auto usually = std::max(1LL, std::llround(1.0 * usual.frames * fps / usual.fps));
        return {timing.frames.value_or(static_cast<int>(usually)), fps};
    }
    const auto frames_at = [seconds](int rate) { return std::max(1.0, std::round(seconds * rate)); };
    if (!timing.frames) {
        if (frames_at(fps) > kMostFrames)
            throw UsageError(formatted("%g seconds of %d frames a second are %.0f frames; %d are the most",
                                       seconds, fps, frames_at(fps), kMostFrames));
        return {static_cast<int>(frames_at(fps)), fps};
    }
    const int frames = *timing.frames;
    if (timing.fps) {
        if (frames_at(fps) != frames)
            throw UsageError(
                formatted("--seconds %g, --fps %d and --frames %d: %g seconds are %.0f frames; two "
                          "of the three give the third",
                          seconds, fps, frames, seconds, frames_at(fps)));
        return {frames, fps};
    }
    const auto whole =
        static_cast<int>(std::clamp(std::round(frames / seconds), 1.0, static_cast<double>(kMostFps)));
    if (frames_at(whole) != frames)
        throw UsageError(
            formatted("--frames %d in --seconds %g: %.4g frames a second; a whole number, 1 to %d, "
                      "is wanted, such as --frames %.0f",
                      frames, seconds, frames / seconds, kMostFps, frames_at(whole)));
    return {frames, whole};
}

Motion timed(const Motion& motion, const MotionTiming& timing, FrameCount count) {
    const int steps = timing.once ? std::max(1, count.frames - 1) : count.frames;
    return timed(motion, timing, static_cast<double>(steps) / count.fps);
}

}  // namespace quorvane::app
