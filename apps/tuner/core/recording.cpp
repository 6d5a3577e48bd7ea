#include "apps/tuner/core/recording.h"

#include <algorithm>
#include <cmath>

namespace quorvane::tuner {
namespace {

// Of a path that is drawn.
constexpr int kSamplesASecond = 60;

double catmullRom(double before, double from, double to, double after, double part) {
    const double a = 2.0 * from, b = to - before;
    const double c = 2.0 * before - 5.0 * from + 4.0 * to - after;
    const double d = -before + 3.0 * from - 3.0 * to + after;
    return 0.5 * (a + part * (b + part * (c + part * d)));
}

double kept(double value) { return std::round(std::clamp(value, -1.0, 1.0) * 1e6) / 1e6; }

}  // namespace

void Recording::add(double now, app::Position place) {
    if (m_moments.empty()) m_start = now;
    // Finer than any hand and any picture, and a file's lines stay short.
    const double t = std::round((now - m_start) * 1e4) / 1e4;
    if (t > kMostSeconds || (!m_moments.empty() && t <= m_moments.back().t)) return;
    app::Moment moment;
    moment.t = t;
    moment.at.x = kept(place.x);
    moment.at.y = kept(place.y);
    const size_t count = m_moments.size();
    const auto same = [&moment](const app::Moment& other) {
        return other.at.x == moment.at.x && other.at.y == moment.at.y;
    };
    if (count >= 2 && same(m_moments[count - 1]) && same(m_moments[count - 2]))
        m_moments.back() = moment;
    else
        m_moments.push_back(moment);
}

std::string Recording::lines() const {
    std::string text;
    for (const app::Moment& moment : m_moments) text += app::lineOf(moment);
    return text;
}

Recording closedPath(const std::vector<app::Position>& points, double seconds) {
    Recording path;
    const size_t count = points.size();
    if (count < 2 || seconds <= 0.0) return path;
    const int steps = std::max(static_cast<int>(count), static_cast<int>(seconds * kSamplesASecond));
    for (int step = 0; step <= steps; ++step) {
        const double place = static_cast<double>(step % steps) * static_cast<double>(count) / steps;
        const auto i = static_cast<size_t>(place);
        const double part = place - static_cast<double>(i);
        const auto point = [&](size_t ahead) { return points[(i + count - 1 + ahead) % count]; };
        app::Position at;
        at.x = catmullRom(point(0).x, point(1).x, point(2).x, point(3).x, part);
        at.y = catmullRom(point(0).y, point(1).y, point(2).y, point(3).y, part);
        path.add(seconds * step / steps, at);
    }
    return path;
}

}  // namespace quorvane::tuner
