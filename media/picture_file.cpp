#include "picture_file.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>

#include "pending_output.h"
#include "vips.h"

namespace quorvane::media {
namespace {

using vips::VImage;

std::string readFile(const std::string& path) {
    const std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(path.c_str(), "rb"), std::fclose);
    if (file == nullptr) throw Error(path + ": " + std::strerror(errno));
    std::string bytes;
    char chunk[1 << 16];
    while (const size_t got = std::fread(chunk, 1, sizeof chunk, file.get())) bytes.append(chunk, got);
    if (std::ferror(file.get())) throw Error(path + ": " + std::strerror(errno));
    if (bytes.empty()) throw Error(path + ": the file is empty");
    return bytes;
}

// libvips reads far more than pictures (PDF, SVG, whole program dumps); strangers' files get these readers
// only.
bool isPictureLoader(const char* loader) {
    for (const char* known : {"Jpeg", "Png", "Webp", "Heif", "Tiff", "Ppm"})
        if (std::strncmp(loader, (std::string("VipsForeignLoad") + known).c_str(), 15 + std::strlen(known)) ==
            0)
            return true;
    return false;
}

/// The picture in `bytes`, which must outlive the call only, upright.
VImage decode(const std::string& bytes, const std::string& path) {
    startVips();
    const char* loader = vips_foreign_find_load_buffer(bytes.data(), bytes.size());
    vips_error_clear();
    if (loader == nullptr || !isPictureLoader(loader))
        throw Error(path + ": not a JPEG, PNG, WebP, HEIC, AVIF or TIFF picture");

    const VImage image = VImage::new_from_buffer(
        bytes.data(), bytes.size(), "",
        VImage::option()->set("access", VIPS_ACCESS_SEQUENTIAL)->set("fail_on", VIPS_FAIL_ON_TRUNCATED));
    const long long pixels = static_cast<long long>(image.width()) * image.height();
    if (pixels > kMostPixels)
        throw Error(path + ": " + std::to_string(image.width()) + " x " + std::to_string(image.height()) +
                    " pixels; at most " + std::to_string(kMostPixels / 1000000) + " million are read");
    return image.copy_memory().autorot();
}

/// Runs `read`, turning libvips' errors into one line about the file.
template <typename Read>
auto reading(const std::string& path, Read read) {
    try {
        return read();
    } catch (const vips::VError&) {
        throw Error(path + ": cannot be read as a picture (" + vipsReason() + ")");
    }
}

VImage toSrgb(const VImage& image) {
    if (image.get_typeof("icc-profile-data") != 0) {
        try {
            const VImage converted = image.icc_transform("srgb", VImage::option()->set("embedded", true));
            return converted.copy_memory();
        } catch (const vips::VError&) {
            // A profile that is broken or for another kind of picture says nothing: treat it as missing.
            vips_error_clear();
        }
    }
    return image.colourspace(VIPS_INTERPRETATION_sRGB);
}

/// The mean of |R - G| and |G - B| over the picture, in steps of its own depth.
double colourfulness(const VImage& rgb) {
    const VImage red = rgb.extract_band(0), green = rgb.extract_band(1), blue = rgb.extract_band(2);
    return ((red - green).abs().avg() + (green - blue).abs().avg()) / 2.0;
}

// Lossy coding leaves gray pictures off by a step or two; a photo or a colour-mapped depth is off by dozens.
constexpr double kMostGrayColourfulness = 4.0;

template <typename Picture>
void writePicture(const Picture& image, const std::string& path) {
    PendingOutput output(path);
    try {
        // Fast rather than small: a clip's frames are many, and their noise does not compress.
        toVips(image).pngsave(output.temporary().c_str(),
                              VImage::option()->set("compression", 3)->set("strip", true));
    } catch (const vips::VError&) {
        throw Error(path + ": cannot be written (" + vipsReason() + ")");
    }
    output.commit();
}

}  // namespace

RgbImage readPhoto(const std::string& path) {
    const std::string bytes = readFile(path);
    return reading(path, [&] {
        VImage image = toSrgb(decode(bytes, path));
        if (image.has_alpha()) image = image.flatten(VImage::option()->set("background", 255.0));
        if (image.bands() < 3) {
            const VImage gray = image.extract_band(0);
            image = gray.bandjoin(gray).bandjoin(gray);
        }
        return fromVips<uint8_t, 3>(image.extract_band(0, VImage::option()->set("n", 3)));
    });
}

DepthMap readDepthMap(const std::string& path) {
    const std::string bytes = readFile(path);
    return reading(path, [&] {
        const VImage image = decode(bytes, path);
        const VipsBandFormat format = image.format();
        if (format != VIPS_FORMAT_UCHAR && format != VIPS_FORMAT_USHORT)
            throw Error(path + ": a depth map has samples of 8 or 16 bit, this picture has others");
        const bool deep = format == VIPS_FORMAT_USHORT;

        VImage gray = image.extract_band(0);
        if (image.bands() >= 3) {
            const VImage rgb = image.extract_band(0, VImage::option()->set("n", 3));
            if (image.interpretation() == VIPS_INTERPRETATION_CMYK ||
                colourfulness(rgb) > kMostGrayColourfulness * (deep ? 257.0 : 1.0))
                throw Error(path + ": a colour picture; a depth map is gray");
            // Luma weights undo what lossy coding did to the channels apart.
            gray = rgb.recomb(VImage::new_matrixv(3, 1, 0.299, 0.587, 0.114));
        }

        DepthMap depth;
        depth.bits = deep ? 16 : 8;
        depth.plane = fromVips<float, 1>(gray);
        if (deep) {
            const auto [lowest, highest] =
                std::minmax_element(depth.plane.samples.begin(), depth.plane.samples.end());
            const float floor = *lowest;
            const float range = *highest - floor;
            for (float& sample : depth.plane.samples)
                sample = range > 0.0f ? (sample - floor) * 255.0f / range : sample * 255.0f / 65535.0f;
        }
        return depth;
    });
}

void writePng(const RgbImage& image, const std::string& path) { writePicture(image, path); }
void writePng(const RgbaImage& image, const std::string& path) { writePicture(image, path); }
void writePng(const GrayImage& image, const std::string& path) { writePicture(image, path); }

}  // namespace quorvane::media
