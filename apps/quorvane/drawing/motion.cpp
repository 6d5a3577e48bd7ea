#include "apps/quorvane/drawing/motion.h"

#include <cmath>

#include "apps/quorvane/terminal/numbers.h"
#include "apps/quorvane/terminal/usage_error.h"

namespace quorvane::app {

const std::vector<Motion>& motions() {
    static const std::vector<Motion> all = {
        {"sway", "from side to side, from the middle and back to it",
         [](double turn) -> Position {
             return {std::sin(turn), 0.0};
         }},
        {"nod", "up and down, from the middle and back to it",
         [](double turn) -> Position {
             return {0.0, std::sin(turn)};
         }},
        {"circle", "round the middle, from below",
         [](double turn) -> Position {
             return {std::sin(turn), -std::cos(turn)};
         }},
        {"eight", "in a lying eight, half as high as wide",
         [](double turn) -> Position {
             return {std::sin(turn), 0.5 * std::sin(2.0 * turn)};
         }},
    };
    return all;
}

Position motionAt(const Motion& motion, int frame, int frames) {
    return motion.position(2.0 * 3.14159265358979323846 * frame / frames);
}

Position parsePosition(const std::string& text) {
    Position at;
    const auto in_range = [](double value) { return value >= -1.0 && value <= 1.0; };
    if (!parsePair(text, ',', &at.x, &at.y) || !in_range(at.x) || !in_range(at.y))
        throw UsageError("--at " + text + ": X,Y is wanted, each -1 to 1, such as 0.5,-0.2");
    return at;
}

}  // namespace quorvane::app
