#ifndef QUORVANE_BENCH_ALLOCATIONS_H
#define QUORVANE_BENCH_ALLOCATIONS_H

#include <cstddef>

#include "timing.h"

namespace quorvane::bench {

/// How often `work` asks for memory on the calling thread, whichever way.
size_t allocationsDuring(const Work& work);

}  // namespace quorvane::bench

#endif
