#ifndef QUORVANE_APPS_TUNER_CORE_RECORDING_H
#define QUORVANE_APPS_TUNER_CORE_RECORDING_H

#include <string>
#include <utility>
#include <vector>

#include "apps/quorvane/drawing/motion_file.h"

namespace quorvane::tuner {

/// A motion of the hand.
class Recording {
  public:
    Recording() = default;
    /// Of a file's moments, as app::readMoments gives them.
    explicit Recording(std::vector<app::Moment> moments) : m_moments(std::move(moments)) {}

    /// Adds where the view stands at `now`, on any clock that goes forward. The first one is at 0. What
    /// stands still is not written down again, and neither is more than kMostSeconds.
    void add(double now, app::Position place);

    const std::vector<app::Moment>& moments() const { return m_moments; }
    bool empty() const { return m_moments.size() < 2; }
    double seconds() const { return m_moments.empty() ? 0.0 : m_moments.back().t - m_moments.front().t; }

    /// The text of a file that app::parseMoments reads the same moments from.
    std::string lines() const;

    /// As `quorvane render` moves the view by such a file.
    app::Motion motion() const { return app::motionThrough(m_moments, "recorded"); }

    static constexpr double kMostSeconds = 600.0;

  private:
    std::vector<app::Moment> m_moments;
    double m_start = 0.0;
};

/// A closed curve through points in their order, each -1 to 1, for a path that is drawn: `seconds` long, the
/// last moment where the first is. It never leaves the square. Empty of fewer than two points.
Recording closedPath(const std::vector<app::Position>& points, double seconds);

}  // namespace quorvane::tuner

#endif
