#ifndef QUORVANE_BENCH_TIMING_H
#define QUORVANE_BENCH_TIMING_H

#include <functional>
#include <vector>

#include "process.h"

namespace quorvane::bench {

using Work = std::function<void()>;

/// Does some work that many times, and answers with the CPU seconds that the thread doing it spent.
using Timed = Answer;

Timed timed(Work work);

/// In a process of its own, as `apart` says.
Timed timedApart(const char* lanes, const std::function<Work()>& prepare);

struct Figure {
    double seconds = 0;  ///< for doing the work once; the lower quintile of the samples
    int samples = 0;
};

/// Times all contenders by turns, so that a busy machine is busy for each of them. A sample lasts 2 ms or
/// more. There are `rounds` samples of each, fewer of the slow ones.
std::vector<Figure> interleaved(const std::vector<Timed>& contenders, int rounds);

}  // namespace quorvane::bench

#endif
