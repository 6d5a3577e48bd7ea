#ifndef QUORVANE_HOST_PARAMETERS_H
#define QUORVANE_HOST_PARAMETERS_H

#include <cstdint>
#include <string>
#include <vector>

#include "quorvane/host/Status.h"
#include "quorvane/parameters.h"

namespace quorvane {

/// Whether the renderer takes LibParam's own defaults for such a device orientation, and secondTunedSet else.
bool takesFirstSet(uint32_t orientation);

/// The one of the two tuned sets that the renderer takes.
LibParam tunedSet(uint32_t orientation);

/// Of the far plane, object units.
double farDistance(const LibParam& parameters);

/// The parameters as ESRenderer::getProperties sets them in a new renderer. Adds to `overridden`, unless it
/// is null, the names of those that a device property decides.
LibParam startingParameters(uint32_t orientation, std::vector<std::string>* overridden);

/// Checks and stores one.
Status storeParameter(const std::string& name, double value, LibParam* parameters);

}  // namespace quorvane

#endif
