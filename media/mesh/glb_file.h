#ifndef QUORVANE_MEDIA_MESH_GLB_FILE_H
#define QUORVANE_MEDIA_MESH_GLB_FILE_H

#include <array>
#include <string>
#include <vector>

namespace quorvane::media {

/// A photo on a grid of cells. Metres; x to the right, y up, z towards the viewer.
struct PhotoMesh {
    int columns = 0, rows = 0;                    ///< cells
    std::vector<std::array<float, 3>> positions;  ///< (columns + 1) * (rows + 1), the photo's first row first
    std::string jpeg;                             ///< the photo, which covers the grid
    double camera_distance = 0.0;   ///< in front of the origin, on the z axis; it looks along -z
    double vertical_fov_deg = 0.0;  ///< of the camera
    double aspect = 1.0;            ///< its picture's width by its height
};

/// The bytes of a glTF 2.0 file (.glb): the mesh with the photo as it is, not lit (KHR_materials_unlit), and
/// the camera.
std::string glbFile(const PhotoMesh& mesh);

}  // namespace quorvane::media

#endif
