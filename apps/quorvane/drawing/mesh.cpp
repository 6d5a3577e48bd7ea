#include "apps/quorvane/drawing/mesh.h"

#include <cmath>
#include <memory>

#include "apps/quorvane/drawing/renderer.h"
#include "composition/bent_grid.h"
#include "media/picture/picture_file.h"
#include "quorvane/parameters.h"
#include "system/error.h"

namespace quorvane::app {
namespace {

/// The half extents that the renderer gives the flat grid for a picture of that size.
Geometry extentsFor(Size size, int orientation) {
    std::unique_ptr<PhotoView> view;
    const Status made = createView(nullptr, size, orientation, 1, &view);
    if (!made) throw Error(made.message());
    return view->geometry();
}

}  // namespace

media::PhotoMesh photoMesh(const PagePicture& picture, int orientation, int quality) {
    LibParam parameters;
    for (const Parameter& parameter : kParameters)
        for (const auto& [name, value] : picture.settings.parameters)
            if (name == parameter.name) parameter.store(value, &parameters);
    const Size size = {picture.photo.width, picture.photo.height};
    const Geometry extents = extentsFor(size, orientation);
    const double aspect = static_cast<double>(size.width) / size.height;
    const double pivot = parameters.rotate_z_trans;

    // The renderer's grid is a little wider than its picture's aspect, and its camera squeezes it again.
    // Other programs' cameras have square pixels.
    const BentGrid grid = {{picture.depth.width, picture.depth.height, picture.depth.samples.data()},
                           extents.half_height * aspect,
                           extents.half_height};
    media::PhotoMesh mesh;
    mesh.columns = picture.depth.width;
    mesh.rows = picture.depth.height;
    mesh.positions.reserve(static_cast<size_t>(mesh.columns + 1) * static_cast<size_t>(mesh.rows + 1));
    for (int row = 0; row <= mesh.rows; ++row)
        for (int column = 0; column <= mesh.columns; ++column) {
            const GridVertex vertex = vertexOf(grid, column, row);
            mesh.positions.push_back({static_cast<float>(vertex.x / kGridDistance),
                                      static_cast<float>(-vertex.y / kGridDistance),
                                      static_cast<float>((pivot - vertex.distance) / kGridDistance)});
        }
    mesh.jpeg = media::jpegBytes(picture.photo, quality);
    mesh.camera_distance = pivot / kGridDistance;
    constexpr double kDegrees = 180.0 / 3.14159265358979323846;
    mesh.vertical_fov_deg =
        2.0 * std::atan(parameters.fov_scale * extents.half_height / kGridDistance) * kDegrees;
    mesh.aspect = aspect;
    return mesh;
}

}  // namespace quorvane::app
