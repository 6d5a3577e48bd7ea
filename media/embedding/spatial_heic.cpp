#include "media/embedding/spatial_heic.h"

#include <cmath>
#include <cstdio>

#include "media/embedding/exif.h"
#include "media/embedding/heif_writing.h"
#include "media/embedding/written_bytes.h"

namespace quorvane::media {
namespace {

enum class Eye { kLeft, kRight };

double placeOf(Eye eye, const StereoCameras& cameras) {
    return eye == Eye::kLeft ? 0.0 : cameras.baseline_mm;
}

double axisOf(Eye eye, const StereoCameras& cameras) {
    return eye == Eye::kLeft ? cameras.left_axis : cameras.right_axis;
}

std::string fixed(double value, int fraction_bits) {
    return bigEndianBytes(std::llround(std::ldexp(value, fraction_bits)), 4);
}

/// The intrinsic matrix, whose flags say that both axes have a focal length of their own, and how many bits
/// of its numbers are a fraction. Lengths are in widths and heights of the picture.
std::string intrinsics(Eye eye, const StereoCameras& cameras) {
    constexpr uint32_t kTwoFocalLengths = 1, kFractionAt = 8, kSkewFractionAt = 16;
    constexpr int kFraction = 24;
    constexpr double kMiddle = 0.5, kSkew = 0.0;
    constexpr uint32_t kFlags =
        kTwoFocalLengths | uint32_t{kFraction} << kFractionAt | uint32_t{kFraction} << kSkewFractionAt;
    return heifFullBox("cmin", 0, kFlags,
                       fixed(cameras.focal_width, kFraction) + fixed(axisOf(eye, cameras), kFraction) +
                           fixed(kMiddle, kFraction) + fixed(cameras.focal_height, kFraction) +
                           fixed(kSkew, kFraction));
}

/// The extrinsic matrix: the place in micrometres. It is not turned.
std::string extrinsics(Eye eye, const StereoCameras& cameras) {
    constexpr uint32_t kHasX = 1, kHasY = 2, kHasZ = 4;
    return heifFullBox("cmex", 0, kHasX | kHasY | kHasZ,
                       bigEndianBytes(std::llround(placeOf(eye, cameras) * 1000.0), 4) +
                           bigEndianBytes(0, 4) + bigEndianBytes(0, 4));
}

std::string number(double value) {
    char text[40];
    std::snprintf(text, sizeof text, "%.9g", value);
    return text;
}

std::string list(const char* name, const std::vector<double>& values) {
    std::string text = std::string("<ai:") + name + "><rdf:Seq>";
    for (const double value : values) text += "<rdf:li>" + number(value) + "</rdf:li>";
    return text + "</rdf:Seq></ai:" + name + ">";
}

/// The same for readers of XMP, in their units: millimetres from eye to eye, pixels, metres, and matrices row
/// by row. The pictures are shifted as they should be seen, so that nothing is left to be adjusted.
std::string xmp(Eye eye, const StereoCameras& cameras, Size picture) {
    return xmpPacket(
        " xmlns:ai=\"http://ns.apple.com/image/1.0/\" ai:CameraModelType=\"SimplifiedPinhole\" "
        "ai:HorizontalFOV=\"" +
            number(horizontalFieldOfView(cameras)) + "\" ai:Baseline=\"" + number(cameras.baseline_mm) +
            "\" ai:HorizontalDisparityAdjustment=\"0\"",
        list("CameraIntrinsics",
             {cameras.focal_width * picture.width, 0.0, axisOf(eye, cameras) * picture.width, 0.0,
              cameras.focal_height * picture.height, picture.height / 2.0, 0.0, 0.0, 1.0}) +
            list("CameraExtrinsicsRotation", {1.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 1.0}) +
            list("CameraExtrinsicsPosition", {placeOf(eye, cameras) / 1000.0, 0.0, 0.0}));
}

}  // namespace

std::string spatialHeic(const RgbImage& left, const RgbImage& right, const StereoCameras& cameras,
                        int quality) {
    const Size size = {left.width, left.height};
    constexpr int kLeft = 1, kRight = 2, kGroup = 100;
    std::vector<HeifItemToWrite> items;
    for (const auto& [eye, view] : {std::pair{Eye::kLeft, &left}, std::pair{Eye::kRight, &right}}) {
        CodedPicture coded = codedPicture(*view, quality);
        coded.properties.push_back(intrinsics(eye, cameras));
        coded.properties.push_back(extrinsics(eye, cameras));
        items.push_back({"hvc1", std::move(coded.bytes), std::move(coded.properties), "", {}});
    }
    using namespace std::string_literals;
    for (const auto& [eye, id] : {std::pair{Eye::kLeft, kLeft}, std::pair{Eye::kRight, kRight}}) {
        // Exif's block begins behind a word of six bytes.
        items.push_back(
            {"Exif", bigEndianBytes(6, 4) + "Exif\0\0"s + exifOf(cameras, size), {}, "", {{"cdsc", id}}});
        items.push_back({"mime", xmp(eye, cameras, size), {}, "application/rdf+xml", {{"cdsc", id}}});
    }
    return heifFile(items, heifFullBox("ster", 0, 0,
                                       bigEndianBytes(kGroup, 4) + bigEndianBytes(2, 4) +
                                           bigEndianBytes(kLeft, 4) + bigEndianBytes(kRight, 4)));
}

}  // namespace quorvane::media
