#include "media/embedding/mpo_file.h"

#include "media/embedding/exif.h"
#include "media/embedding/written_bytes.h"
#include "media/picture/picture_file.h"

namespace quorvane::media {
namespace {

using namespace std::string_literals;

constexpr uint8_t kApp1 = 0xe1, kApp2 = 0xe2;
const std::string kIndexSignature = "MPF\0"s;

// CIPA DC-007's tags; the first three are of the index, the others of each picture.
constexpr uint16_t kVersion = 0xb000, kPictures = 0xb001, kEntries = 0xb002, kNumber = 0xb101,
                   kBaseNumber = 0xb204, kConvergenceAngle = 0xb205, kBaseline = 0xb206;

constexpr uint32_t kDisparity = 0x020002, kRepresentative = 0x20000000;

/// What an index says of a picture: its kind, bytes and place.
struct Entry {
    uint32_t kind, bytes, offset;
};

std::string entryBytes(const Entry& entry) {
    std::string bytes;
    for (const uint32_t number : {entry.kind, entry.bytes, entry.offset, 0U})
        bytes += littleEndianBytes(number, 4);
    return bytes;
}

/// Of the picture of that number, 1 for the left one.
TiffFields attributes(int number, const StereoCameras& cameras, bool with_version) {
    TiffFields fields;
    if (with_version) fields.addBytes(kVersion, "0100");
    fields.addLong(kNumber, static_cast<uint32_t>(number));
    fields.addLong(kBaseNumber, 1);
    fields.addSignedRational(kConvergenceAngle, 0.0);
    fields.addRational(kBaseline, cameras.baseline_mm / 1000.0);
    return fields;
}

std::string firstIndex(const Entry& left, const Entry& right, const StereoCameras& cameras) {
    TiffFields index;
    index.addBytes(kVersion, "0100");
    index.addLong(kPictures, 2);
    index.addBytes(kEntries, entryBytes(left) + entryBytes(right));
    const auto next = static_cast<uint32_t>(tiffHeader().size() + index.size());
    return jpegSegment(kApp2, kIndexSignature + tiffHeader() + index.written(8, next) +
                                  attributes(1, cameras, false).written(next, 0));
}

std::string secondIndex(const StereoCameras& cameras) {
    return jpegSegment(kApp2, kIndexSignature + tiffHeader() + attributes(2, cameras, true).written(8, 0));
}

}  // namespace

std::string mpoFile(const RgbImage& left, const RgbImage& right, const StereoCameras& cameras, int quality) {
    // The start of a JPEG is the two bytes of its marker.
    constexpr size_t kStart = 2;
    const std::string exif = jpegSegment(kApp1, "Exif\0\0"s + exifOf(cameras, {left.width, left.height}));
    const std::string left_jpeg = jpegBytes(left, quality), right_jpeg = jpegBytes(right, quality);
    const auto with = [&](const std::string& jpeg, const std::string& index) {
        return jpeg.substr(0, kStart) + exif + index + jpeg.substr(kStart);
    };
    const std::string second = with(right_jpeg, secondIndex(cameras));
    const auto first = [&](uint32_t bytes) {
        const auto origin = static_cast<uint32_t>(kStart + exif.size() + 4 + kIndexSignature.size());
        return with(left_jpeg,
                    firstIndex({kDisparity | kRepresentative, bytes, 0},
                               {kDisparity, static_cast<uint32_t>(second.size()), bytes - origin}, cameras));
    };
    // The size of the index does not depend on what it says.
    return first(static_cast<uint32_t>(first(0).size())) + second;
}

}  // namespace quorvane::media
