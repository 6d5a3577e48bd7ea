#ifndef QUORVANE_TESTS_SUPPORT_CLOCK_H
#define QUORVANE_TESTS_SUPPORT_CLOCK_H

#include <cstdint>

namespace quorvane::test {

/// While it lives, `gettimeofday` gives a clock that advances by `microseconds_per_reading` at every reading,
/// so that the number of readings between two marks shows in the timing lines.
class SteppingClock {
  public:
    explicit SteppingClock(int64_t microseconds_per_reading);
    ~SteppingClock();

    SteppingClock(const SteppingClock&) = delete;
    SteppingClock& operator=(const SteppingClock&) = delete;
};

}  // namespace quorvane::test

#endif
