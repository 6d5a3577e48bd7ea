#ifndef QUORVANE_SOFTWARE_KERNELS_PATHS_H
#define QUORVANE_SOFTWARE_KERNELS_PATHS_H

#include <vector>

#include "software/kernels/drawing.h"

namespace quorvane::software {

/// The drawing kernels for one instruction set; the same paths as the component's.
struct DrawingPath {
    const char* name;
    bool (*runsHere)();
    decltype(&reference::placeVertices) placeVertices;
    decltype(&reference::findFacings) findFacings;
    decltype(&reference::drawCells) drawCells;
    decltype(&reference::shade) shade;
    decltype(&reference::shadePlanar) shadePlanar;
    decltype(&reference::shadePlanarEach) shadePlanarEach;
};

/// All paths of this build, the reference first and the fastest last.
const std::vector<DrawingPath>& drawingPaths();

/// The one of the name that the component has chosen for its own kernels.
const DrawingPath& chosenDrawingPath();

}  // namespace quorvane::software

#endif
