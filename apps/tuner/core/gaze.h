#ifndef QUORVANE_APPS_TUNER_CORE_GAZE_H
#define QUORVANE_APPS_TUNER_CORE_GAZE_H

#include "apps/quorvane/drawing/motion.h"

namespace quorvane::tuner {

/// Where the view stands while a hand moves it: where the hand was last, and after a rest gently back into
/// the motion that goes on by itself. Times are seconds on any clock that only goes forward.
class Gaze {
  public:
    /// The pointer is at a place of the picture, each -1 to 1.
    void point(app::Position place, double now);

    /// A key moves the view.
    void nudge(double x, double y, double now);

    /// Where the view stands while the motion would stand at `motion`. `idles`: whether the motion takes
    /// over.
    app::Position at(double now, app::Position motion, bool idles);

    /// The hand's last place.
    app::Position hand() const { return m_hand; }

    static constexpr double kRest = 2.5;      ///< before the motion takes over
    static constexpr double kTakeover = 1.5;  ///< how long it takes to
    static constexpr double kReturn = 0.25;   ///< how long it takes the hand to

  private:
    app::Position m_hand;
    double m_moved = -kRest;  ///< when the hand moved last
    double m_share = 0.0;     ///< of the motion
    double m_last = 0.0;
};

}  // namespace quorvane::tuner

#endif
