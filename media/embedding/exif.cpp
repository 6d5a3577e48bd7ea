#include "media/embedding/exif.h"

#include <algorithm>
#include <cmath>

#include "media/embedding/written_bytes.h"

namespace quorvane::media {
namespace {

constexpr double kSensorWidth = 36.0;  // mm
constexpr double kPi = 3.14159265358979323846;

// Exif's tags.
constexpr uint16_t kSoftware = 0x0131, kExifDirectory = 0x8769, kVersion = 0x9000, kFocalLength = 0x920a,
                   kPixelWidth = 0xa002, kPixelHeight = 0xa003, kFocalPlaneX = 0xa20e, kFocalPlaneY = 0xa20f,
                   kFocalPlaneUnit = 0xa210, kFocalLength35 = 0xa405;

}  // namespace

double horizontalFieldOfView(const StereoCameras& cameras) {
    return 2.0 * std::atan(0.5 / cameras.focal_width) * 180.0 / kPi;
}

std::string exifOf(const StereoCameras& cameras, Size picture) {
    const double focal_mm = kSensorWidth * cameras.focal_width;
    constexpr uint16_t kCentimetres = 3;
    TiffFields camera;
    camera.addBytes(kVersion, "0231");
    camera.addRational(kFocalLength, focal_mm);
    camera.addLong(kPixelWidth, static_cast<uint32_t>(picture.width));
    camera.addLong(kPixelHeight, static_cast<uint32_t>(picture.height));
    camera.addRational(kFocalPlaneX, picture.width / kSensorWidth * 10.0);
    // The picture's height in millimetres is what the focal length says.
    camera.addRational(kFocalPlaneY, picture.height * cameras.focal_height / focal_mm * 10.0);
    camera.addShort(kFocalPlaneUnit, kCentimetres);
    camera.addShort(kFocalLength35, static_cast<uint16_t>(std::clamp(std::lround(focal_mm), 1L, 65535L)));

    const auto start = static_cast<uint32_t>(tiffHeader().size());
    const auto firstWith = [](uint32_t camera_at) {
        TiffFields first;
        first.addText(kSoftware, "quorvane");
        first.addLong(kExifDirectory, camera_at);
        return first;
    };
    const auto behind = static_cast<uint32_t>(start + firstWith(0).size());
    return tiffHeader() + firstWith(behind).written(start, 0) + camera.written(behind, 0);
}

}  // namespace quorvane::media
