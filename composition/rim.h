#ifndef QUORVANE_COMPOSITION_RIM_H
#define QUORVANE_COMPOSITION_RIM_H

#include <cstdint>

#include "composition/geometry.h"
#include "sizes/sizes.h"

namespace quorvane {

/// The part of each side, from either end, that `easeRim` changes.
constexpr double kRim = 1.0 / 12.0;

/// By how much of its width the rim is stretched or squeezed at most.
constexpr double kRimStretch = 1.0 / 8.0;

/// Brings the depth of the photo's rim closer to the pivot, the more the closer to the border, so that the
/// border moves less while the view swings and more of the photo can be shown. The rim itself, which is
/// hardly seen at rest, is stretched for it.
///
/// `depth` is size.width * size.height bytes, which `curve`, which rises, makes shaped depth of; of `grid`
/// only the sides count. `reach` is how far the view swings on either axis.
void easeRim(uint8_t* depth, Size size, const uint8_t (&curve)[256], const BentGrid& grid,
             const Camera& camera, ViewPosition reach);

}  // namespace quorvane

#endif
