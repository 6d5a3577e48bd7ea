#ifndef QUORVANE_SYSTEM_GRAPHICS_DEVICES_H
#define QUORVANE_SYSTEM_GRAPHICS_DEVICES_H

#include <string>

namespace quorvane {

/// Whether the folder of devices has one through which a graphics driver could reach a processor of its own.
/// Without one, every driver draws on the CPU. True where the folder cannot be read.
bool hasGraphicsDevice(const std::string& folder = "/dev");

}  // namespace quorvane

#endif
