#ifndef QUORVANE_APPS_TUNER_CORE_STOPWATCH_H
#define QUORVANE_APPS_TUNER_CORE_STOPWATCH_H

#include <deque>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "system/descriptor.h"

namespace quorvane::tuner {

/// The newest values of something that is measured over and over, in milliseconds.
struct Plot {
    std::string label;
    std::deque<float> values;  ///< the newest last

    void add(float value);

    /// How many there are in a second; 0 where there is none.
    double rate() const;

    static constexpr size_t kMostValues = 240;
};

/// The values of `text` that are whole lines as the renderer's stopwatch prints them, "LABEL: N(us) = ...";
/// other lines are passed over. Removes these lines from `text` and adds the values to the plots of their
/// labels, which are made as they come up to a bounded number.
void addStopwatchLines(std::string* text, std::vector<Plot>* plots);

/// While it lives, what this process prints to standard output comes here: the renderer prints the lines of
/// its stopwatch there. It takes the same memory however much is printed.
class PrintedLines {
  public:
    /// Throws Error.
    PrintedLines();
    ~PrintedLines();

    PrintedLines(const PrintedLines&) = delete;
    PrintedLines& operator=(const PrintedLines&) = delete;

    /// What was printed since the last call.
    std::string take();

  private:
    Descriptor m_file;
    int m_saved;
};

}  // namespace quorvane::tuner

#endif
