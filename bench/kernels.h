#ifndef QUORVANE_BENCH_KERNELS_H
#define QUORVANE_BENCH_KERNELS_H

#include <functional>
#include <vector>

#include "stage.h"

namespace quorvane::bench {

using MakeStage = std::function<Stage()>;

/// The kernels' stages at the sizes that the goals are for. Each holds its memory, so make one at a time.
std::vector<MakeStage> kernelStages();

/// The same at sizes small enough for an instruction counter.
std::vector<MakeStage> smallKernelStages();

}  // namespace quorvane::bench

#endif
