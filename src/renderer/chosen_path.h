#ifndef QUORVANE_RENDERER_CHOSEN_PATH_H
#define QUORVANE_RENDERER_CHOSEN_PATH_H

#include "kernels/paths.h"

namespace quorvane {

/// The path that the renderer uses: the one that the environment variable QUORVANE_LANES names, else the last
/// that runs here. Chosen at the first call, once for the process. A name that is no path, or that of a path
/// that does not run here, is logged in one line and changes nothing.
const Path& chosenPath();

}  // namespace quorvane

#endif
