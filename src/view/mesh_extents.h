#ifndef QUORVANE_VIEW_MESH_EXTENTS_H
#define QUORVANE_VIEW_MESH_EXTENTS_H

namespace quorvane {

/// The size of the mesh for an output, and what the shift of a second view would make of it. Hosts compare
/// all of these bit by bit.
struct MeshExtents {
    int unit_pixels;          ///< output pixels a unit of length at distance 1
    int disparity;            ///< pixels
    int shift;                ///< of the depth, pixels
    int cropping;             ///< pixels
    float half_width;         ///< object units
    float second_half_width;  ///< object units
};

/// Extents for an output of width x height pixels and a mesh of `half_height` object units; `baseline` is the
/// distance between both views.
MeshExtents meshExtents(float width, float height, float half_height, float baseline) noexcept;

}  // namespace quorvane

#endif
