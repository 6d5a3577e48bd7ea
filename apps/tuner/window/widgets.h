#ifndef QUORVANE_APPS_TUNER_WINDOW_WIDGETS_H
#define QUORVANE_APPS_TUNER_WINDOW_WIDGETS_H

#include <imgui.h>

#include <map>
#include <string>
#include <vector>

#include "apps/quorvane/drawing/motion.h"
#include "apps/tuner/core/stopwatch.h"

namespace quorvane::tuner {

/// Where the controls of a frame are and what they hold, for a program that drives the window.
class ControlList {
  public:
    /// The control that was made last.
    void note(const std::string& name, const std::string& value);
    /// A place of the window.
    void note(const std::string& name, ImVec2 from, ImVec2 to, const std::string& value);

    /// A line of JSON for each control: name, value, and x, y, width and height in pixels of the window.
    std::string lines() const;

    void clear() { m_controls.clear(); }

  private:
    struct Control {
        ImVec2 from, to;
        std::string value;
    };
    std::map<std::string, Control> m_controls;
};

/// What a parameter's slider shows.
struct SliderValue {
    const char* name;
    std::string text;  ///< the value, with its unit
    std::string hint;  ///< in a tooltip
    double part;       ///< 0 to 1
    double usual;      ///< where the mark of the value that is taken otherwise stands, 0 to 1
    bool is_set;       ///< whether somebody has set the value
    bool enabled = true;
};

enum class SliderEvent { kNone, kMoved, kReset };

/// A slider as wide as there is room, with a mark at the usual value. A double click or a right click resets
/// it. `*part` is where it was moved to.
SliderEvent slider(const SliderValue& value, float label_width, double* part);

/// A named plot with its newest value. `most` is the top of all that are shown together.
void plot(const Plot& plot, float height);

/// A square for points from -1 to 1 that make a closed path: a click adds one, dragging moves one, a right
/// click removes one. `at` is where the view stands. Whether the points were changed.
bool pathEditor(float side, const std::vector<app::Position>& curve, app::Position at,
                std::vector<app::Position>* points, ControlList* controls);

/// A texture of `aspect` as large as fits `room`, in its middle. Returns its corners.
struct Placed {
    ImVec2 from, to;
};
Placed placedIn(ImVec2 from, ImVec2 room, float width, float height);

}  // namespace quorvane::tuner

#endif
