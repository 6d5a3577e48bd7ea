#include "view/mesh_extents.h"

namespace {

// Close to 2 tan(30 degrees); the geometry of the mesh is defined with this value.
constexpr double kTwiceTan30 = 1.1547005145615656;

}  // namespace

// Float and double, and every truncation, as the extents were tuned with.
quorvane::MeshExtents quorvane::meshExtents(float width, float height, float half_height,
                                            float baseline) noexcept {
    const double distance = baseline;
    MeshExtents extents = {};
    extents.unit_pixels = static_cast<int>(width / (static_cast<double>(width / height) * kTwiceTan30));
    extents.disparity = static_cast<int>(distance * 0.03125 * extents.unit_pixels);
    extents.shift = static_cast<int>(extents.disparity - extents.unit_pixels * (distance * 0.015625));
    extents.cropping =
        extents.shift + static_cast<int>(0.5 + extents.unit_pixels * (distance * 0.5) * 0.03125);

    const double shift = 32.0 * static_cast<double>(static_cast<float>(extents.shift) /
                                                    static_cast<float>(extents.unit_pixels));
    const float base = half_height * width / height;
    extents.half_width = static_cast<float>(static_cast<double>(base) + shift);
    extents.second_half_width = static_cast<float>(static_cast<double>(base) - shift);
    return extents;
}
