#ifndef QUORVANE_BENCH_PROCESS_H
#define QUORVANE_BENCH_PROCESS_H

#include <functional>

namespace quorvane::bench {

using Answer = std::function<double(int)>;

/// A forked process that answers questions. In it, the environment variable QUORVANE_LANES is `lanes` (null:
/// as here) and standard output is discarded. `prepare` runs in it and returns the function that answers. A
/// question is never 0. Throws std::runtime_error when the process has ended.
Answer apart(const char* lanes, const std::function<Answer()>& prepare);

}  // namespace quorvane::bench

#endif
