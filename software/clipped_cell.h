#ifndef QUORVANE_SOFTWARE_CLIPPED_CELL_H
#define QUORVANE_SOFTWARE_CLIPPED_CELL_H

#include "software/kernels/drawing.h"

namespace quorvane::software {

/// Draws those cells of a block that the drawing kernels leave out, as far as they lie beyond the nearest
/// plane. Views that make sense have none.
void drawClippedCells(const CellBlock& block, const Band& band);

}  // namespace quorvane::software

#endif
