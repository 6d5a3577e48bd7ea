#ifndef QUORVANE_BENCH_ALLOCATIONS_H
#define QUORVANE_BENCH_ALLOCATIONS_H

#include <cstddef>

#include "timing.h"

namespace quorvane::bench {

/// How often `work` allocates memory on the calling thread, by malloc or by new.
size_t allocationsDuring(const Work& work);

}  // namespace quorvane::bench

#endif
