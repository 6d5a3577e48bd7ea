#include "software/kernels/paths.h"

#include <cstring>

#include "src/renderer/chosen_path.h"

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

namespace quorvane::software {

#define QUORVANE_KERNEL_PATH(space, name, processor, condition, options) \
    QUORVANE_ON_##processor(namespace space {                            \
        decltype(reference::placeVertices) placeVertices;                \
        decltype(reference::findFacings) findFacings;                    \
        decltype(reference::drawCells) drawCells;                        \
        decltype(reference::shade) shade;                                \
        decltype(reference::shadePlanar) shadePlanar;                    \
        decltype(reference::shadePlanarEach) shadePlanarEach;            \
    })
#include "src/kernels/paths.inc"
#undef QUORVANE_KERNEL_PATH

const std::vector<DrawingPath>& drawingPaths() {
#define QUORVANE_PATH_ENTRY(space, name, condition)                                     \
    {name,         [] { return condition; }, space::placeVertices,  space::findFacings, space::drawCells, \
     space::shade, space::shadePlanar,       space::shadePlanarEach},
#define QUORVANE_KERNEL_PATH(space, name, processor, condition, options) \
    QUORVANE_ON_##processor(QUORVANE_PATH_ENTRY(space, name, condition))
    static const std::vector<DrawingPath> all = {QUORVANE_PATH_ENTRY(reference, "reference", true)
#include "src/kernels/paths.inc"
    };
#undef QUORVANE_KERNEL_PATH
    return all;
}

const DrawingPath& chosenDrawingPath() {
    for (const DrawingPath& path : drawingPaths())
        if (std::strcmp(path.name, quorvane::chosenPath().name) == 0) return path;
    return drawingPaths().front();
}

}  // namespace quorvane::software
