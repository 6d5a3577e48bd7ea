#ifndef QUORVANE_VIEW_VIEW_MATRIX_H
#define QUORVANE_VIEW_VIEW_MATRIX_H

#include "quorvane/renderUtility.h"

namespace quorvane {

/// What is seen from where. The mesh stands upright at a distance of 32 before it is displaced.
struct View {
    float x, y;                    ///< view position, -1..1
    float x_boundary, y_boundary;  ///< degrees about the Y and the X axis at view position 1
    float gain;                    ///< of the angles
    float fov_scale;               ///< visible part of the mesh's half-extents
    float far_offset;              ///< far plane less 64, object units
    float pivot;                   ///< distance of the point that stays where it is, object units
    float half_width;              ///< of the mesh, object units
    float half_height;             ///< of the mesh, object units
};

/// The model-view-projection matrix of a view.
RENDERMatrix viewMatrix(const View& view);

/// What a view costs in depth, for whoever tunes it from the log.
struct ViewCost {
    float x_offset, y_offset;  ///< how far the mesh's edge moves in depth at the limit angles, object units
    float pre_shift;           ///< the larger way of an edge at them, sideways and in depth, object units
    float angle;               ///< degrees of the one turn that equals the view's two
    float angle_limit;         ///< the same at the limit angles
};
ViewCost viewCost(const View& view);

}  // namespace quorvane

#endif
