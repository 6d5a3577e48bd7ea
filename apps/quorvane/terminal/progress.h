#ifndef QUORVANE_APPS_TERMINAL_PROGRESS_H
#define QUORVANE_APPS_TERMINAL_PROGRESS_H

#include <chrono>

namespace quorvane::app {

/// A bar with the time left on standard error, where that is a terminal; silent elsewhere.
class Progress {
  public:
    Progress(int total, bool quiet);
    /// Wipes the bar.
    ~Progress();

    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void step(int done);

    /// Makes room for a line on the terminal.
    void wipe() const;

  private:
    using Clock = std::chrono::steady_clock;

    int m_total;
    bool m_shown;
    Clock::time_point m_start;
    Clock::time_point m_last;
};

}  // namespace quorvane::app

#endif
