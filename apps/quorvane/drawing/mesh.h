#ifndef QUORVANE_APPS_DRAWING_MESH_H
#define QUORVANE_APPS_DRAWING_MESH_H

#include "apps/quorvane/drawing/page.h"
#include "media/mesh/glb_file.h"

namespace quorvane::app {

/// The bent grid of a picture as a mesh for other programs, with the camera that sees what is seen at rest:
/// what stays in place is at the origin, and the flat grid a metre in front of the camera. `quality`, 1 to
/// 100, is the photo's. Throws Error.
media::PhotoMesh photoMesh(const PagePicture& picture, int orientation, int quality);

}  // namespace quorvane::app

#endif
