#ifndef QUORVANE_APPS_INPUT_NEIGHBOUR_H
#define QUORVANE_APPS_INPUT_NEIGHBOUR_H

#include <string>
#include <vector>

namespace quorvane::app {

/// A depth map that lies near the photo NAME.* and is called after it: NAME_depth.*, NAME-depth.*,
/// NAME_depth16.* or NAME-depth16.* beside it, or depth/NAME.* below its folder. The first place in this
/// order that has one; there the first of .png, .tif, .tiff, .webp, .heic, .avif, .jpg and .jpeg in whatever
/// case, lossless ones first, and then by name. Never the photo itself. Empty: none.
std::string findNeighbour(const std::string& photo);

/// Where findNeighbour looks, for a message: the two usual places, "NAME_depth.* or depth/NAME.*".
std::string neighbourNames(const std::string& photo);

/// `pictures` of one folder without those that findNeighbour would take for the depth map of another one.
std::vector<std::string> withoutNeighbours(std::vector<std::string> pictures);

}  // namespace quorvane::app

#endif
