#include "kernels/paths.h"

#if defined(__x86_64__)
#define QUORVANE_ON_X86_64(...) __VA_ARGS__
#else
#define QUORVANE_ON_X86_64(...)
#endif
#if defined(__aarch64__)
#define QUORVANE_ON_ARM64(...) __VA_ARGS__
#else
#define QUORVANE_ON_ARM64(...)
#endif
#define QUORVANE_ON_ANY(...) __VA_ARGS__

namespace quorvane {

// Every path's kernels have the types of the reference's.
#define QUORVANE_KERNEL_PATH(space, name, processor, condition, options) \
    QUORVANE_ON_##processor(namespace space {                            \
        decltype(reference::downsize) downsize;                          \
        decltype(reference::crossDenoise) crossDenoise;                  \
        decltype(reference::lookUp) lookUp;                              \
        decltype(reference::guidedFilter) guidedFilter;                  \
        decltype(reference::createVertices) createVertices;              \
        decltype(reference::createIndices) createIndices;                \
    })
#include "kernels/paths.inc"
#undef QUORVANE_KERNEL_PATH

namespace {

#define QUORVANE_PATH_ENTRY(space, name, condition)                     \
    {name,          [] { return condition; }, space::downsize,       space::crossDenoise, \
     space::lookUp, space::guidedFilter,      space::createVertices, space::createIndices},
#define QUORVANE_KERNEL_PATH(space, name, processor, condition, options) \
    QUORVANE_ON_##processor(QUORVANE_PATH_ENTRY(space, name, condition))
constexpr Path kPaths[] = {QUORVANE_PATH_ENTRY(reference, "reference", true)
#include "kernels/paths.inc"
};
#undef QUORVANE_KERNEL_PATH

}  // namespace

PathList paths() noexcept { return {kPaths, sizeof kPaths / sizeof *kPaths}; }

}  // namespace quorvane
