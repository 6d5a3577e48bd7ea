#include "kernels/paths.h"

#include <cstdlib>
#include <cstring>

#include "diagnostics/log.h"

namespace quorvane {
namespace {

bool anywhere() { return true; }
#if defined(__x86_64__)
bool hasSse41() { return __builtin_cpu_supports("sse4.1") != 0; }
bool hasAvx2() { return __builtin_cpu_supports("avx2") != 0; }
#endif

constexpr Path kPaths[] = {
    {"reference", anywhere}, {"plain", anywhere},
#if defined(__x86_64__)
    {"sse2", anywhere},      {"sse4.1", hasSse41}, {"avx2", hasAvx2},
#elif defined(__aarch64__)
    {"neon", anywhere},
#endif
};
constexpr size_t kCount = sizeof kPaths / sizeof *kPaths;

size_t choosePath() {
    size_t best = kCount - 1;
    while (!kPaths[best].runsHere()) --best;
    const char* wanted = std::getenv("QUORVANE_LANES");
    if (wanted == nullptr || *wanted == '\0') return best;
    for (size_t i = 0; i < kCount; ++i)
        if (std::strcmp(wanted, kPaths[i].name) == 0 && kPaths[i].runsHere()) return i;
    LOGE("QUORVANE_LANES=%s: no path of this build that runs here, using %s\n", wanted, kPaths[best].name);
    return best;
}

}  // namespace

const Path* paths(size_t* count) {
    *count = kCount;
    return kPaths;
}

size_t chosenPath() {
    static const size_t chosen = choosePath();
    return chosen;
}

}  // namespace quorvane
