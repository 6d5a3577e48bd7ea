#include "apps/tuner/core/gaze.h"

#include <algorithm>

namespace quorvane::tuner {

void Gaze::point(app::Position place, double now) {
    m_hand.x = std::clamp(place.x, -1.0, 1.0);
    m_hand.y = std::clamp(place.y, -1.0, 1.0);
    m_moved = now;
}

void Gaze::nudge(double x, double y, double now) { point({m_hand.x + x, m_hand.y + y}, now); }

app::Position Gaze::at(double now, app::Position motion, bool idles) {
    const double passed = std::max(0.0, now - m_last);
    m_last = now;
    const bool rests = idles && now - m_moved >= kRest;
    m_share = std::clamp(m_share + (rests ? passed / kTakeover : -passed / kReturn), 0.0, 1.0);
    // Without a jump in speed at either end.
    const double share = m_share * m_share * (3.0 - 2.0 * m_share);
    app::Position place = motion;
    place.x = m_hand.x + share * (motion.x - m_hand.x);
    place.y = m_hand.y + share * (motion.y - m_hand.y);
    return place;
}

}  // namespace quorvane::tuner
