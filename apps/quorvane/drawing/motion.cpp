#include "apps/quorvane/drawing/motion.h"

#include <algorithm>

#include "apps/quorvane/terminal/numbers.h"
#include "apps/quorvane/terminal/usage_error.h"

namespace quorvane::app {

const std::vector<NamedMotion>& motions() {
    static const std::vector<NamedMotion> all = {
        {"sway", "from side to side, from the middle and back to it", "x=sin(1)"},
        {"nod", "up and down, from the middle and back to it", "y=sin(1)"},
        {"circle", "round the middle, from below", "x=sin(1) y=-cos(1)"},
        {"eight", "in a lying eight, half as high as wide", "x=sin(1) y=0.5sin(2)"},
        // The dead zone of either tuned set, at most 1 / 9, holds back nothing of it.
        {"orbit", "round the middle at the same speed all the way, a little inside the circle",
         "x=0.85sin(1) y=-0.85cos(1)"},
        {"zoom", "closer by a quarter, and back", "zoom=1.125-0.125cos(1)"},
        {"still", "nowhere", "x=0"},
    };
    return all;
}

Position parsePosition(const std::string& text) {
    Position at;
    const auto in_range = [](double value) { return value >= -1.0 && value <= 1.0; };
    if (!parsePair(text, ',', &at.x, &at.y) || !in_range(at.x) || !in_range(at.y))
        throw UsageError("--at " + text + ": X,Y is wanted, each -1 to 1, such as 0.5,-0.2");
    return at;
}

double softly(double part, double ramp) {
    const double fastest = 1.0 / (1.0 - ramp);
    const auto begin = [&](double since) { return fastest * since * since / (2.0 * ramp); };
    if (part < ramp) return begin(part);
    if (part > 1.0 - ramp) return 1.0 - begin(1.0 - part);
    return fastest * (part - ramp / 2.0);
}

std::vector<Position> loopAround(Position centre, const Motion& motion, double amount, int frames) {
    std::vector<Position> positions;
    positions.reserve(static_cast<size_t>(frames));
    const int steps = motion.once ? std::max(1, frames - 1) : frames;
    for (int frame = 0; frame < frames; ++frame) {
        const Position swing = motion.place(static_cast<double>(frame) / steps);
        positions.push_back({centre.x + amount * swing.x, centre.y + amount * swing.y,
                             centre.zoom + amount * (swing.zoom - 1.0)});
    }
    return positions;
}

std::vector<Position> pathAround(Position centre, const Motion& motion, double amount, int frames) {
    // However many frames a clip has, it is framed alike.
    constexpr int kPlaces = 240;
    std::vector<Position> path = loopAround(centre, motion, amount, kPlaces);
    if (!motion.once && kPlaces % frames == 0) return path;
    const std::vector<Position> own = loopAround(centre, motion, amount, frames);
    path.insert(path.end(), own.begin(), own.end());
    return path;
}

std::vector<Position> pathEverywhere(double amount) {
    constexpr int kSteps = 4;
    std::vector<Position> path;
    for (int y = -kSteps; y <= kSteps; ++y)
        for (int x = -kSteps; x <= kSteps; ++x) path.push_back({amount * x / kSteps, amount * y / kSteps});
    return path;
}

double closestZoom(const std::vector<Position>& path) {
    const auto closest = std::max_element(
        path.begin(), path.end(), [](const Position& a, const Position& b) { return a.zoom < b.zoom; });
    return closest == path.end() ? 1.0 : closest->zoom;
}

}  // namespace quorvane::app
