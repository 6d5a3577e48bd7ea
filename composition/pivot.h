#ifndef QUORVANE_COMPOSITION_PIVOT_H
#define QUORVANE_COMPOSITION_PIVOT_H

#include "composition/geometry.h"

namespace quorvane {

/// The shaped depth, 0..255, of what a viewer takes for the subject: the nearest large thing near the middle.
/// What rises steadily towards the viewer, as floors and table tops do, has no depth of its own and counts
/// little.
double subjectDepth(const ShapedDepth& depth);

/// The shaped depth, 0..255, around a point of the photo: x and y from 0 at the left and the top to 1. The
/// median of its neighbourhood, so that a hair's breadth beside an edge does not matter.
double depthAt(const ShapedDepth& depth, double x, double y);

}  // namespace quorvane

#endif
