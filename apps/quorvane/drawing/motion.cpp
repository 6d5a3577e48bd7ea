#include "apps/quorvane/drawing/motion.h"

#include <cmath>

namespace quorvane::app {

Position motionAt(Motion motion, int frame, int frames) {
    const double turn = 2.0 * 3.14159265358979323846 * frame / frames;
    switch (motion) {
        case Motion::kSway: return {std::sin(turn), 0.0};
        case Motion::kNod: return {0.0, std::sin(turn)};
        case Motion::kCircle: return {std::sin(turn), -std::cos(turn)};
        case Motion::kEight: return {std::sin(turn), 0.5 * std::sin(2.0 * turn)};
    }
    return {};
}

}  // namespace quorvane::app
