#ifndef QUORVANE_BENCH_TIMING_H
#define QUORVANE_BENCH_TIMING_H

#include <functional>
#include <vector>

#include "process.h"

namespace quorvane::bench {

using Work = std::function<void()>;

/// Does some work as many times as the argument says, and returns the CPU seconds that the working thread
/// spent.
using Timed = Answer;

Timed timed(Work work);

/// In a process of its own, as `apart` says.
Timed timedApart(const char* lanes, const std::function<Work()>& prepare);

struct Figure {
    double seconds = 0;  ///< for doing the work once; the lower quintile of the samples
    int samples = 0;
};

/// Times all contenders in rounds, one sample of each a round, so that a busy machine slows all of them
/// alike. A sample lasts 2 ms or more. There are `rounds` samples of each contender, fewer of the slow ones.
std::vector<Figure> interleaved(const std::vector<Timed>& contenders, int rounds);

}  // namespace quorvane::bench

#endif
