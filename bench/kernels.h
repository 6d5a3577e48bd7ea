#ifndef QUORVANE_BENCH_KERNELS_H
#define QUORVANE_BENCH_KERNELS_H

#include <functional>
#include <vector>

#include "stage.h"

namespace quorvane::bench {

using MakeStage = std::function<Stage()>;

/// The kernels' stages, at the sizes that the goals are for. Made one after the other: each holds its memory.
std::vector<MakeStage> kernelStages();

/// The same at sizes that an instruction counter gets through.
std::vector<MakeStage> smallKernelStages();

}  // namespace quorvane::bench

#endif
