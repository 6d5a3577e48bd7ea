#ifndef QUORVANE_BENCH_PROCESS_H
#define QUORVANE_BENCH_PROCESS_H

#include <functional>

namespace quorvane::bench {

using Answer = std::function<double(int)>;

/// The answers of a process of its own, forked now, where the environment variable QUORVANE_LANES is `lanes`
/// (null: as here) and standard output goes nowhere. `prepare` runs there and returns what answers there. A
/// question is not 0. Throws std::runtime_error when that process is gone.
Answer apart(const char* lanes, const std::function<Answer()>& prepare);

}  // namespace quorvane::bench

#endif
