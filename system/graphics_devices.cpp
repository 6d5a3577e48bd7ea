#include "system/graphics_devices.h"

#include <dirent.h>

#include <algorithm>
#include <cstring>
#include <memory>

namespace quorvane {
namespace {

// How their names begin: the kernel's own interface first, then that of virtual machines under Windows, and
// those of makers with drivers apart from the kernel.
constexpr const char* kGraphicsDevices[] = {"dri",    "dxg",    "galcore", "kgsl", "mali", "nvgpu",
                                            "nvhost", "nvidia", "nvmap",   "pvr",  "vchiq"};

}  // namespace

bool hasGraphicsDevice(const std::string& folder) {
    const std::unique_ptr<DIR, int (*)(DIR*)> devices(opendir(folder.c_str()), closedir);
    if (devices == nullptr) return true;
    while (const dirent* device = readdir(devices.get())) {
        const auto names = [device](const char* start) {
            return std::strncmp(device->d_name, start, std::strlen(start)) == 0;
        };
        if (std::any_of(std::begin(kGraphicsDevices), std::end(kGraphicsDevices), names)) return true;
    }
    return false;
}

}  // namespace quorvane
