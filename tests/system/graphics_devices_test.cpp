#include "system/graphics_devices.h"

#include <gtest/gtest.h>

#include "support/temporary_folder.h"

namespace quorvane {
namespace {

using test::TemporaryFolder;
using test::writeBytes;

TEST(GraphicsDevices, AreThoseOfTheKernelAndOfMakers) {
    for (const char* name : {"dri", "dxg", "kgsl-3d0", "mali0", "nvidia0", "nvidiactl", "pvrsrvkm"}) {
        const TemporaryFolder devices;
        writeBytes(devices / "null", "");
        writeBytes(devices / name, "");
        EXPECT_TRUE(hasGraphicsDevice(devices.path())) << name;
    }
}

TEST(GraphicsDevices, DisksAndMemoryAreNone) {
    const TemporaryFolder devices;
    for (const char* name : {"null", "nvme0", "nvram", "fb0", "vda", "vga_arbiter"})
        writeBytes(devices / name, "");
    EXPECT_FALSE(hasGraphicsDevice(devices.path()));
}

TEST(GraphicsDevices, MayBeThereWhereTheyCannotBeListed) {
    const TemporaryFolder devices;
    EXPECT_TRUE(hasGraphicsDevice(devices / "nowhere"));
}

}  // namespace
}  // namespace quorvane
