#ifndef QUORVANE_BENCH_DRAWING_H
#define QUORVANE_BENCH_DRAWING_H

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <vector>

namespace quorvane::bench {

/// What a clock of clock_gettime() says, seconds.
inline double seconds(clockid_t clock) {
    timespec now{};
    clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

/// Of an even number the upper one of the two in the middle; `values` holds one at least.
inline double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

/// Where a benchmark that draws prints its figures, since standard output belongs to the renderer's timing
/// lines, which go nowhere from here on. Null where that fails.
inline FILE* figuresOutput() {
    FILE* out = fdopen(dup(STDOUT_FILENO), "w");
    return out == nullptr || std::freopen("/dev/null", "w", stdout) == nullptr ? nullptr : out;
}

}  // namespace quorvane::bench

#endif
