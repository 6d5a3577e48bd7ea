#include "media/picture/picture_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "media/embedded/bytes.h"
#include "media/embedded/jpeg.h"
#include "media/embedded/png.h"
#include "media/picture/colour_map.h"
#include "media/picture/vips.h"
#include "system/cancel.h"
#include "system/pending_output.h"

namespace quorvane::media {
namespace {

using vips::VImage;

// libvips reads far more than pictures (PDF, SVG, whole program dumps). Files of unknown origin get these
// readers only.
bool isPictureLoader(const char* loader) {
    for (const char* known : {"Jpeg", "Png", "Webp", "Heif", "Tiff"})
        if (std::strncmp(loader, (std::string("VipsForeignLoad") + known).c_str(), 15 + std::strlen(known)) ==
            0)
            return true;
    return false;
}

Error notAPicture(const std::string& name) {
    return Error(name + ": not a JPEG, PNG, WebP, HEIC, AVIF or TIFF picture");
}

/// The name of libvips' reader for `bytes`. Throws Error unless they start as a picture does.
std::string requirePicture(std::string_view bytes, const std::string& name) {
    startVips();
    const char* loader = vips_foreign_find_load_buffer(bytes.data(), bytes.size());
    vips_error_clear();
    if (loader == nullptr || !isPictureLoader(loader)) throw notAPicture(name);
    return loader;
}

// Several times what any encoder makes of a progressive JPEG.
constexpr int kMostScans = 100;

/// Transparency laid over white.
VImage overWhite(const VImage& image) {
    const double white = image.format() == VIPS_FORMAT_USHORT ? 65535.0 : 255.0;
    return image.has_alpha() ? image.flatten(VImage::option()->set("background", white)) : image;
}

/// A picture's file of which only the header has been read.
class OpenPicture {
  public:
    /// `bytes` must outlive this. A picture that does not say how it lies is turned by `orientation`. `page`
    /// chooses one of several in a HEIC or AVIF file, instead of its primary one.
    OpenPicture(std::string_view bytes, const std::string& name, long long most_pixels, int orientation,
                std::optional<int> page = std::nullopt)
        : m_loader(requirePicture(bytes, name)),
          m_without_texts(withoutPngTexts(bytes)),
          m_bytes(m_without_texts ? *m_without_texts : bytes),
          m_name(name),
          m_image(fromBytes(page ? VImage::option()->set("page", *page) : VImage::option())) {
        const long long pixels = static_cast<long long>(m_image.width()) * m_image.height();
        if (pixels > most_pixels)
            throw Error(name + ": " + std::to_string(m_image.width()) + " x " +
                        std::to_string(m_image.height()) + " pixels; at most " +
                        std::to_string(most_pixels / 1000000) + " million are read");
        if (static_cast<long long>(VIPS_IMAGE_SIZEOF_IMAGE(m_image.get_image())) > kMostBytes)
            throw Error(name + ": its pixels take more than " + std::to_string(kMostBytes / 1000000) + " MB");
        m_orientation = m_image.get_typeof(VIPS_META_ORIENTATION) == 0
                            ? orientation
                            : m_image.get_int(VIPS_META_ORIENTATION);
    }
    OpenPicture(const OpenPicture&) = delete;
    OpenPicture& operator=(const OpenPicture&) = delete;

    PictureHeader header() const {
        const bool transposed = m_orientation >= 5 && m_orientation <= 8;
        PictureHeader header;
        header.width = transposed ? m_image.height() : m_image.width();
        header.height = transposed ? m_image.width() : m_image.height();
        header.bands = m_image.bands();
        header.bits = static_cast<int>(8 * VIPS_IMAGE_SIZEOF_ELEMENT(m_image.get_image()));
        return header;
    }

    // Where they need not be turned, pixels are decoded while they are asked for, in order and once each: a
    // photo's take long to copy. This must outlive them.

    /// The pixels, upright.
    VImage decode() const {
        requireFewScans();
        return upright(m_image);
    }

    /// The pixels, upright and opaque, shrunk as decodePhotoShrunk() says.
    VImage decodeShrunk(int least_side) const {
        requireFewScans();
        const auto factorFor = [least_side](const VImage& image) {
            return std::max(1, std::min(image.width(), image.height()) / std::max(1, least_side));
        };
        const int whole = factorFor(m_image);
        VImage image = m_image;
        if (isLoader("Jpeg")) image = shrunkJpeg(whole);
        if (isLoader("Webp") && whole >= 2) image = fromBytes(VImage::option()->set("scale", 1.0 / whole));
        image = overWhite(image);
        const int rest = factorFor(image);
        return upright(rest > 1 ? image.shrink(rest, rest) : image);
    }

    /// The pixels, upright, shrunk as decodePhotoAtLeast() says.
    VImage decodeAtLeast(Size least) const {
        requireFewScans();
        const PictureHeader whole = header();
        const int factor =
            std::min(whole.width / std::max(1, least.width), whole.height / std::max(1, least.height));
        return upright(isLoader("Jpeg") ? shrunkJpeg(factor) : m_image);
    }

  private:
    /// By 2, 4 or 8, `factor` at most: libjpeg leaves out what only finer pixels need.
    VImage shrunkJpeg(int factor) const {
        if (factor < 2) return m_image;
        return fromBytes(VImage::option()->set("shrink", factor >= 8 ? 8 : factor >= 4 ? 4 : 2));
    }

    bool isLoader(const char* format) const {
        return m_loader.find(std::string("VipsForeignLoad") + format) == 0;
    }

    VImage fromBytes(vips::VOption* options = VImage::option()) const {
        return VImage::new_from_buffer(
            m_bytes.data(), m_bytes.size(), "",
            options->set("access", VIPS_ACCESS_SEQUENTIAL)->set("fail_on", VIPS_FAIL_ON_TRUNCATED));
    }

    void requireFewScans() const {
        if (jpegScans(m_bytes) > kMostScans)
            throw Error(m_name + ": a JPEG of more than " + std::to_string(kMostScans) + " scans");
    }

    VImage upright(const VImage& image) const {
        if (m_orientation < 2 || m_orientation > 8) return image;
        VImage pixels = image.copy_memory();
        pixels.set(VIPS_META_ORIENTATION, m_orientation);
        return pixels.autorot();
    }

    const std::string m_loader;
    const std::optional<std::string> m_without_texts;
    const std::string_view m_bytes;
    const std::string m_name;
    const VImage m_image;
    int m_orientation = 1;
};

/// What is known of a picture that cannot be read, such as "HEIC, 1234 bytes, 64 x 48 pixels: they
/// cannot be decoded".
std::string knownOf(std::string_view bytes, const std::string& name) {
    const std::string loader = requirePicture(bytes, name);
    std::string known;
    for (const auto& [format, said] : {std::pair{"Jpeg", "JPEG"},
                                       {"Png", "PNG"},
                                       {"Webp", "WebP"},
                                       {"Heif", "HEIC or AVIF"},
                                       {"Tiff", "TIFF"}})
        if (loader.find(format) != std::string::npos) known = said;
    known += ", " + std::to_string(bytes.size()) + " bytes";
    try {
        const PictureHeader header = OpenPicture(bytes, name, kMostPixels, 1).header();
        return known + ", " + std::to_string(header.width) + " x " + std::to_string(header.height) +
               " pixels: they cannot be decoded";
    } catch (const vips::VError&) {
        vips_error_clear();
        return known + ": its header cannot be decoded";
    }
}

/// Runs `read`, turning libvips' errors into one line; where they say nothing, it says what `known` returns.
template <typename Known, typename Read>
auto reading(const std::string& name, Known known, Read read) {
    try {
        return read();
    } catch (const vips::VError&) {
        std::string reason = vipsReason("");
        if (reason.empty()) reason = known();
        throw Error(name + ": cannot be read as a picture (" + reason + ")");
    }
}

/// The same for a picture's file.
template <typename Read>
auto readingFile(std::string_view bytes, const std::string& name, Read read) {
    return reading(
        name, [&] { return knownOf(bytes, name); }, read);
}

VImage toSrgb(const VImage& picture) {
    VImage image = picture;
    if (image.get_typeof("icc-profile-data") != 0) {
        image = image.copy_memory();
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

/// An upright picture as a photo.
RgbImage toPhoto(const VImage& picture) {
    VImage image = overWhite(toSrgb(picture));
    if (image.bands() < 3) {
        const VImage gray = image.extract_band(0);
        image = gray.bandjoin(gray).bandjoin(gray);
    }
    return fromVips<uint8_t, 3>(image.extract_band(0, VImage::option()->set("n", 3)));
}

/// The mean of |R - G| and |G - B| over the picture, in steps of its own depth.
double colourfulness(const VImage& rgb) {
    const VImage red = rgb.extract_band(0), green = rgb.extract_band(1), blue = rgb.extract_band(2);
    return ((red - green).abs().avg() + (green - blue).abs().avg()) / 2.0;
}

// Lossy coding leaves gray pictures off by a step or two; a photo or a colour-mapped depth is off by dozens.
constexpr double kMostGrayColourfulness = 4.0;

/// 255 where `alpha` is at least half opaque, 0 elsewhere; empty where that is nowhere.
GrayImage opaquePart(const VImage& alpha, double full) {
    const VImage opaque = alpha >= full / 2.0;
    return opaque.min() > 0.0 ? GrayImage() : fromVips<uint8_t, 1>(opaque);
}

/// Both in one.
void addUnknown(const GrayImage& known, GrayImage* to) {
    if (to->samples.empty()) *to = known;
    for (size_t i = 0; i < known.samples.size(); ++i) to->samples[i] &= known.samples[i];
}

/// The levels of a colour-mapped depth map, or nothing where `rgb` is another colour picture.
std::optional<DepthMap> readColourMapped(const VImage& rgb) {
    const RgbImage picture = fromVips<uint8_t, 3>(rgb);
    const ColourMap* map = recogniseColourMap(picture);
    if (map == nullptr) return std::nullopt;
    DepthMap depth;
    depth.colour_map = map->name;
    depth.plane = positionsOnColourMap(picture, *map, &depth.known);
    return depth;
}

DepthMap depthMapOf(const VImage& image, const std::string& name) {
    const VipsBandFormat format = image.format();
    if (format != VIPS_FORMAT_UCHAR && format != VIPS_FORMAT_USHORT)
        throw Error(name + ": a depth map has samples of 8 or 16 bit, this picture has others");
    const bool deep = format == VIPS_FORMAT_USHORT;
    const bool cmyk = image.interpretation() == VIPS_INTERPRETATION_CMYK;
    const bool has_alpha = !cmyk && (image.bands() == 2 || image.bands() == 4);
    const double full = deep ? 65535.0 : 255.0;

    DepthMap depth;
    if (has_alpha) depth.known = opaquePart(image.extract_band(image.bands() - 1), full);
    VImage gray = image.extract_band(0);
    if (image.bands() >= 3) {
        const VImage rgb = image.extract_band(0, VImage::option()->set("n", 3));
        if (cmyk || colourfulness(rgb) > kMostGrayColourfulness * full / 255.0) {
            std::optional<DepthMap> read;
            if (!cmyk) read = readColourMapped(deep ? (rgb / 257.0).rint() : rgb);
            if (!read) throw Error(name + ": a colour picture; a depth map is gray");
            addUnknown(depth.known, &read->known);
            return *std::move(read);
        }
        // Luma weights undo what lossy coding did to the channels apart.
        gray = rgb.recomb(VImage::new_matrixv(3, 1, 0.299, 0.587, 0.114));
    }

    depth.bits = deep ? 16 : 8;
    depth.plane = fromVips<float, 1>(gray);
    if (deep)
        for (float& sample : depth.plane.samples) sample = sample * 255.0f / 65535.0f;
    return depth;
}

/// What libvips writes, on its way into an open file; remembers why that fails.
class FileTarget {
  public:
    explicit FileTarget(int descriptor) : m_descriptor(descriptor), m_target(vips_target_custom_new()) {
        g_signal_connect(m_target, "write", G_CALLBACK(write), this);
    }
    ~FileTarget() { g_object_unref(m_target); }
    FileTarget(const FileTarget&) = delete;
    FileTarget& operator=(const FileTarget&) = delete;

    vips::VTarget get() const { return vips::VTarget(VIPS_TARGET(g_object_ref(m_target))); }
    int failure() const noexcept { return m_failure; }  ///< as errno; 0: none

  private:
    static gint64 write(VipsTargetCustom*, const void* bytes, gint64 size, FileTarget* target) {
        const ssize_t written = ::write(target->m_descriptor, bytes, static_cast<size_t>(size));
        if (written < 0) target->m_failure = errno;
        return written;
    }

    int m_descriptor;
    int m_failure = 0;
    VipsTargetCustom* m_target;
};

/// Writes a picture as the format of that name, in which `save` puts it into a target.
template <typename Picture, typename Save>
void savePicture(const Picture& image, int descriptor, const std::string& name, const char* format,
                 Save save) {
    startVips();
    const FileTarget target(descriptor);
    try {
        save(toVips(image), target.get());
    } catch (const vips::VError&) {
        const std::string reason = vipsReason(std::to_string(image.width) + " x " +
                                              std::to_string(image.height) + " pixels as " + format);
        if (target.failure() != 0) throwFor(name + ": cannot be written", target.failure());
        throw Error(name + ": cannot be written (" + reason + ")");
    }
}

template <typename Picture>
void savePicture(const Picture& image, int descriptor, const std::string& name) {
    savePicture(image, descriptor, name, "PNG", [](const VImage& picture, const vips::VTarget& target) {
        // Fast rather than small: a clip's frames are many, and their noise does not compress.
        picture.pngsave_target(target, VImage::option()->set("compression", 3)->set("strip", true));
    });
}

template <typename Picture>
Error notCoded(const Picture& image, const char* format) {
    return Error(std::string("a picture cannot be coded as ") + format + " (" +
                 vipsReason(std::to_string(image.width) + " x " + std::to_string(image.height) + " pixels") +
                 ")");
}

template <typename Picture>
void writePicture(const Picture& image, const std::string& path) {
    PendingOutput output(path);
    savePicture(image, output.descriptor(), path);
    output.commit();
}

}  // namespace

std::string readPictureFile(const std::string& path) { return readPictureFile(path, path); }

std::string readPictureFile(const std::string& path, const std::string& name) {
    const auto fail = [&name] {
        // A signal ends a wait for a pipe's other end.
        throwIfCancelled();
        const std::string text = name + ": " + std::strerror(errno);
        if (isTemporary(errno)) throw TemporaryError(text);
        throw Error(text);
    };
    const auto too_large = [&name] {
        return Error(name + ": the file is too large; at most " + std::to_string(kMostBytes / 1000000) +
                     " MB are read");
    };
    const std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(path.c_str(), "rb"), std::fclose);
    if (file == nullptr) fail();
    struct stat about = {};
    if (fstat(fileno(file.get()), &about) == 0 && about.st_size > kMostBytes) throw too_large();
    std::string bytes;
    if (S_ISREG(about.st_mode)) bytes.reserve(static_cast<size_t>(about.st_size));
    char chunk[1 << 16];
    while (const size_t got = std::fread(chunk, 1, sizeof chunk, file.get())) {
        throwIfCancelled();
        bytes.append(chunk, got);
        // Other files may be endless.
        if (bytes.size() == got && !startsWith(mimeOf(bytes), "image/")) throw notAPicture(name);
        if (static_cast<long long>(bytes.size()) > kMostBytes) throw too_large();
    }
    if (std::ferror(file.get())) fail();
    if (bytes.empty()) throw Error(name + ": the file is empty");
    return bytes;
}

PictureHeader readPictureHeader(std::string_view bytes, const std::string& name, long long most_pixels,
                                int orientation) {
    return readingFile(bytes, name,
                       [&] { return OpenPicture(bytes, name, most_pixels, orientation).header(); });
}

RgbImage decodePhoto(std::string_view bytes, const std::string& name, long long most_pixels,
                     int orientation) {
    return readingFile(bytes, name,
                       [&] { return toPhoto(OpenPicture(bytes, name, most_pixels, orientation).decode()); });
}

RgbImage decodePhotoPage(std::string_view bytes, int page, const std::string& name, long long most_pixels) {
    return readingFile(bytes, name,
                       [&] { return toPhoto(OpenPicture(bytes, name, most_pixels, 1, page).decode()); });
}

RgbImage decodePhotoShrunk(std::string_view bytes, const std::string& name, int least_side,
                           long long most_pixels, int orientation) {
    return readingFile(bytes, name, [&] {
        return toPhoto(OpenPicture(bytes, name, most_pixels, orientation).decodeShrunk(least_side));
    });
}

RgbImage decodePhotoAtLeast(std::string_view bytes, const std::string& name, Size least,
                            long long most_pixels, int orientation) {
    return readingFile(bytes, name, [&] {
        return toPhoto(OpenPicture(bytes, name, most_pixels, orientation).decodeAtLeast(least));
    });
}

DepthMap decodeDepthMap(std::string_view bytes, const std::string& name, long long most_pixels,
                        int orientation) {
    return readingFile(bytes, name, [&] {
        const VImage pixels = OpenPicture(bytes, name, most_pixels, orientation).decode().copy_memory();
        return depthMapOf(pixels, name);
    });
}

DepthMap toDepthMap(const RgbImage& picture, const std::string& name) {
    const auto sides = [&] {
        return std::to_string(picture.width) + " x " + std::to_string(picture.height) + " pixels";
    };
    return reading(name, sides, [&] { return depthMapOf(toVips(picture), name); });
}

bool spread(Plane* plane) {
    const auto [lowest, highest] = std::minmax_element(plane->samples.begin(), plane->samples.end());
    const float floor = *lowest, range = *highest - floor;
    if (!(range > 0.0f)) return false;
    // Rounding may pass the end by its last bit.
    for (float& level : plane->samples) level = std::min(255.0f, (level - floor) * 255.0f / range);
    return true;
}

RgbImage readPhoto(const std::string& path) { return decodePhoto(readPictureFile(path), path); }
DepthMap readDepthMap(const std::string& path) { return decodeDepthMap(readPictureFile(path), path); }

void savePng(const RgbImage& image, int descriptor, const std::string& name) {
    savePicture(image, descriptor, name);
}
void savePng(const RgbaImage& image, int descriptor, const std::string& name) {
    savePicture(image, descriptor, name);
}
void savePng(const GrayImage& image, int descriptor, const std::string& name) {
    savePicture(image, descriptor, name);
}

void saveJpeg(const RgbaImage& image, int quality, int descriptor, const std::string& name) {
    savePicture(image, descriptor, name, "JPEG", [&](const VImage& picture, const vips::VTarget& target) {
        picture.extract_band(0, VImage::option()->set("n", 3))
            .jpegsave_target(
                target,
                VImage::option()->set("Q", quality)->set("optimize_coding", true)->set("strip", true));
    });
}

std::string grayPng(const Plane& plane, int bits) {
    const bool deep = bits > 8;
    try {
        const VImage scaled = toVips(plane) * (deep ? 257.0 : 1.0);
        const VImage samples =
            scaled.rint()
                .cast(deep ? VIPS_FORMAT_USHORT : VIPS_FORMAT_UCHAR)
                .copy(VImage::option()->set("interpretation",
                                            deep ? VIPS_INTERPRETATION_GREY16 : VIPS_INTERPRETATION_B_W));
        return takeBytes(samples.pngsave_buffer(VImage::option()->set("strip", true)));
    } catch (const vips::VError&) {
        throw Error(
            "the depth cannot be coded as PNG (" +
            vipsReason(std::to_string(plane.width) + " x " + std::to_string(plane.height) + " samples") +
            ")");
    }
}

std::string pngBytes(const GrayImage& image) {
    try {
        return takeBytes(toVips(image).pngsave_buffer(VImage::option()
                                                          ->set("compression", 9)
                                                          ->set("filter", VIPS_FOREIGN_PNG_FILTER_ALL)
                                                          ->set("strip", true)));
    } catch (const vips::VError&) {
        throw notCoded(image, "PNG");
    }
}

std::string jpegBytes(const RgbImage& image, int quality) {
    try {
        return takeBytes(toVips(image).jpegsave_buffer(
            VImage::option()->set("Q", quality)->set("optimize_coding", true)->set("strip", true)));
    } catch (const vips::VError&) {
        throw notCoded(image, "JPEG");
    }
}

void writePng(const RgbImage& image, const std::string& path) { writePicture(image, path); }
void writePng(const RgbaImage& image, const std::string& path) { writePicture(image, path); }
void writePng(const GrayImage& image, const std::string& path) { writePicture(image, path); }

}  // namespace quorvane::media
