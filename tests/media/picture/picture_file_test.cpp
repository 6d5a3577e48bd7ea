#include "media/picture/picture_file.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <iterator>
#include <vips/vips8>

#include "media/picture/vips.h"
#include "media/scene/sample_scene.h"
#include "support/temporary_folder.h"
#include "system/descriptor.h"
#include "system/error.h"

namespace {

/// libvips then fails without a word.
bool g_silent = false;

}  // namespace

// In place of libvips' own.
extern "C" char* vips_error_buffer_copy(void) {
    char* copy = g_strdup(g_silent ? "" : vips_error_buffer());
    vips_error_clear();
    return copy;
}

namespace quorvane::media {
namespace {

using test::bytesOf;
using test::TemporaryFolder;
using test::writeBytes;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;
using vips::VImage;

/// What the reader says of a file it refuses.
template <typename Read>
std::string refusal(Read read) {
    try {
        read();
    } catch (const Error& error) {
        EXPECT_EQ(std::string(error.what()).find('\n'), std::string::npos) << "more than one line";
        return error.what();
    }
    return "not refused";
}

template <typename Sample>
VImage image(int width, int height, int bands, const std::vector<Sample>& samples, VipsBandFormat format,
             VipsInterpretation interpretation) {
    startVips();
    const VImage copied(vips_image_new_from_memory_copy(samples.data(), samples.size() * sizeof(Sample),
                                                        width, height, bands, format));
    return copied.copy(VImage::option()->set("interpretation", interpretation));
}

/// Two rows of three pixels, all different.
VImage sixPixels() {
    return image<uint8_t>(3, 2, 3, {255, 0, 0, 0, 255, 0, 0, 0, 255, 10, 20, 30, 40, 50, 60, 70, 80, 90},
                          VIPS_FORMAT_UCHAR, VIPS_INTERPRETATION_sRGB);
}

class PictureFile : public testing::Test {
  protected:
    std::string saved(const VImage& picture, const std::string& name) {
        const std::string path = folder / name;
        picture.write_to_file(path.c_str());
        return path;
    }

    TemporaryFolder folder;
};

TEST_F(PictureFile, PhotoKeepsItsBytes) {
    const RgbImage photo = readPhoto(saved(sixPixels(), "a.png"));
    EXPECT_EQ(photo.width, 3);
    EXPECT_EQ(photo.height, 2);
    EXPECT_THAT(photo.samples,
                ElementsAre(255, 0, 0, 0, 255, 0, 0, 0, 255, 10, 20, 30, 40, 50, 60, 70, 80, 90));
}

TEST_F(PictureFile, PhotoComesInEveryFormat) {
    const VImage flat = sixPixels().resize(40, VImage::option()->set("kernel", VIPS_KERNEL_NEAREST));
    for (const char* name : {"a.png", "a.jpg", "a.webp", "a.tif", "a.avif", "a.heic"}) {
        SCOPED_TRACE(name);
        std::string path;
        try {
            path = saved(flat, name);
        } catch (const vips::VError&) {
            vips_error_clear();
            std::printf("%s cannot be written here and is not tried\n", name);
            continue;
        }
        const RgbImage photo = readPhoto(path);
        ASSERT_EQ(photo.width, 120);
        ASSERT_EQ(photo.height, 80);
        // The middle of the red block, whatever the coding did to its edges.
        const size_t middle = 3 * (20 * 120 + 20);
        EXPECT_NEAR(photo.samples[middle], 255, 12);
        EXPECT_NEAR(photo.samples[middle + 1], 0, 12);
        EXPECT_NEAR(photo.samples[middle + 2], 0, 12);
    }
}

TEST_F(PictureFile, PhotoIsTurnedUprightForEveryExifOrientation) {
    // The file holds the picture as the sensor saw it; orientation N says how to show it. Each line is what
    // the viewer must see of the six gray pixels 0 50 100 / 150 200 250.
    const std::vector<std::vector<uint8_t>> upright = {
        {0, 50, 100, 150, 200, 250}, {100, 50, 0, 250, 200, 150}, {250, 200, 150, 100, 50, 0},
        {150, 200, 250, 0, 50, 100}, {0, 150, 50, 200, 100, 250}, {150, 0, 200, 50, 250, 100},
        {250, 100, 200, 50, 150, 0}, {100, 250, 50, 200, 0, 150}};
    for (int orientation = 1; orientation <= 8; ++orientation) {
        SCOPED_TRACE(orientation);
        VImage gray =
            image<uint8_t>(3, 2, 1, {0, 50, 100, 150, 200, 250}, VIPS_FORMAT_UCHAR, VIPS_INTERPRETATION_B_W);
        gray.set("orientation", orientation);
        const RgbImage photo = readPhoto(saved(gray, "turned.tif"));
        EXPECT_EQ(photo.width, orientation >= 5 ? 2 : 3);
        std::vector<uint8_t> seen;
        for (size_t i = 0; i < photo.samples.size(); i += 3) seen.push_back(photo.samples[i]);
        EXPECT_EQ(seen, upright[static_cast<size_t>(orientation - 1)]);
    }
}

TEST_F(PictureFile, GrayPhotoHasThreeEqualChannels) {
    const auto gray = image<uint8_t>(2, 1, 1, {5, 250}, VIPS_FORMAT_UCHAR, VIPS_INTERPRETATION_B_W);
    EXPECT_THAT(readPhoto(saved(gray, "g.png")).samples, ElementsAre(5, 5, 5, 250, 250, 250));
}

TEST_F(PictureFile, TransparentPhotoLiesOverWhite) {
    const auto rgba =
        image<uint8_t>(2, 1, 4, {200, 0, 0, 255, 200, 0, 0, 0}, VIPS_FORMAT_UCHAR, VIPS_INTERPRETATION_sRGB);
    EXPECT_THAT(readPhoto(saved(rgba, "t.png")).samples, ElementsAre(200, 0, 0, 255, 255, 255));
}

TEST_F(PictureFile, SixteenBitPhotoKeepsItsUpperByte) {
    const auto deep = image<uint16_t>(2, 1, 3, {0, 257 * 100, 65535, 257 * 7, 257 * 8, 257 * 9},
                                      VIPS_FORMAT_USHORT, VIPS_INTERPRETATION_RGB16);
    EXPECT_THAT(readPhoto(saved(deep, "d.png")).samples, ElementsAre(0, 100, 255, 7, 8, 9));
}

TEST_F(PictureFile, CmykPhotoBecomesRgb) {
    // Full cyan and no ink.
    const auto cmyk =
        image<uint8_t>(2, 1, 4, {255, 0, 0, 0, 0, 0, 0, 0}, VIPS_FORMAT_UCHAR, VIPS_INTERPRETATION_CMYK);
    const RgbImage photo = readPhoto(saved(cmyk, "c.tif"));
    ASSERT_EQ(photo.samples.size(), 6u);
    EXPECT_LT(photo.samples[0] + 60, photo.samples[2]) << "cyan has little red";
    EXPECT_GT(photo.samples[3], 245);
    EXPECT_GT(photo.samples[5], 245);
}

TEST_F(PictureFile, NameWithBracketsIsOnlyAName) {
    const std::string plain = saved(sixPixels(), "a.png");
    std::filesystem::copy_file(plain, folder / "a[1].png");
    std::filesystem::copy_file(plain, folder / "b.png[x]");
    EXPECT_EQ(readPhoto(folder / "a[1].png").width, 3);
    EXPECT_EQ(readPhoto(folder / "b.png[x]").width, 3);
}

TEST_F(PictureFile, MissingPhotoIsNamed) {
    EXPECT_EQ(refusal([&] { readPhoto(folder / "none.jpg"); }),
              (folder / "none.jpg") + ": No such file or directory");
}

TEST_F(PictureFile, FolderIsNoPhoto) {
    EXPECT_THAT(refusal([&] { readPhoto(folder.path()); }), StartsWith(folder.path() + ": "));
}

TEST_F(PictureFile, EmptyFileIsNamed) {
    writeBytes(folder / "e.jpg", "");
    EXPECT_EQ(refusal([&] { readPhoto(folder / "e.jpg"); }), (folder / "e.jpg") + ": the file is empty");
}

TEST_F(PictureFile, OtherFilesAreRefusedWithWhatWouldDo) {
    writeBytes(folder / "t.jpg", "not a picture at all");
    writeBytes(folder / "s.svg", "<svg xmlns='http://www.w3.org/2000/svg' width='9' height='9'/>");
    // libvips reads these too, and no phone or estimator writes them.
    writeBytes(folder / "p.ppm", "P6 1 1 255\nabc");
    writeBytes(folder / "g.pgm", "P5 1 1 255\na");
    for (const char* name : {"t.jpg", "s.svg", "p.ppm", "g.pgm"})
        EXPECT_EQ(refusal([&] { readPhoto(folder / name); }),
                  (folder / name) + ": not a JPEG, PNG, WebP, HEIC, AVIF or TIFF picture");
}

TEST_F(PictureFile, PictureThatEndsEarlyIsRefused) {
    const VImage noise = VImage::gaussnoise(200, 200).cast(VIPS_FORMAT_UCHAR);
    for (const char* name : {"n.png", "n.jpg", "n.webp"}) {
        SCOPED_TRACE(name);
        const std::string path = saved(noise, name);
        const std::string whole = bytesOf(path);
        writeBytes(path, whole.substr(0, whole.size() / 2));
        EXPECT_THAT(refusal([&] { readPhoto(path); }), StartsWith(path + ": cannot be read as a picture ("));
        EXPECT_THAT(refusal([&] { readDepthMap(path); }),
                    StartsWith(path + ": cannot be read as a picture ("));
    }
}

TEST_F(PictureFile, HugePictureIsRefusedByItsHeader) {
    // A PNG header that promises 60000 x 60000 pixels, with a valid checksum and no pixels.
    std::string png("\x89PNG\r\n\x1a\n\0\0\0\rIHDR\0\0\xea\x60\0\0\xea\x60\x08\x02\0\0\0", 29);
    uint32_t crc = 0xffffffffu;
    for (size_t i = 12; i < 29; ++i) {
        crc ^= static_cast<uint8_t>(png[i]);
        for (int bit = 0; bit < 8; ++bit) crc = (crc >> 1) ^ (0xedb88320u & (0u - (crc & 1u)));
    }
    crc = ~crc;
    for (int shift = 24; shift >= 0; shift -= 8) png.push_back(static_cast<char>(crc >> shift & 0xff));
    png.append("\0\0\0\0IDAT\x35\xaf\x06\x1e", 12);
    writeBytes(folder / "huge.png", png);
    EXPECT_THAT(refusal([&] { readPhoto(folder / "huge.png"); }),
                AllOf(HasSubstr("60000 x 60000 pixels"), HasSubstr("at most 268 million")));
}

/// Peak memory of this process so far, in MB.
long peakMegabytes() {
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss / 1024;
}

/// `value` as big-endian bytes.
std::string bigEndian(uint32_t value, int bytes) {
    std::string text;
    for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8)
        text.push_back(static_cast<char>(value >> shift & 0xff));
    return text;
}

/// Writes other sides into a picture file, after what stands before them there.
void replaceSides(const std::string& path, const std::string& before, int bytes, uint32_t first,
                  uint32_t second) {
    std::string file = bytesOf(path);
    const size_t at = file.find(before);
    ASSERT_NE(at, std::string::npos);
    const std::string sides = bigEndian(first, bytes) + bigEndian(second, bytes);
    writeBytes(path, file.replace(at + before.size(), sides.size(), sides));
}

TEST_F(PictureFile, HugePictureOfEveryFormatIsRefusedWithoutItsPixels) {
    const VImage small = VImage::black(64, 64);
    // The frame header, the image's properties, the still's canvas.
    replaceSides(saved(small, "a.jpg"), std::string("\xff\xc0\0\x0b\x08", 5), 2, 65500, 65500);
    for (const char* name : {"a.heic", "a.avif"}) {
        try {
            replaceSides(saved(small, name), std::string("ispe\0\0\0\0", 8), 4, 60000, 60000);
        } catch (const vips::VError&) {
            vips_error_clear();
            std::printf("%s cannot be written here and is not tried\n", name);
        }
    }
    std::string tiff = bytesOf(saved(small, "a.tif"));
    for (const char tag : {'\x00', '\x01'}) {
        // Width and height: a tag, a type, one value, little-endian.
        const size_t at = tiff.find(std::string({tag, '\x01', '\x03', '\0', '\x01', '\0', '\0', '\0'}));
        ASSERT_NE(at, std::string::npos);
        tiff.replace(at + 8, 2, "\x60\xea");
    }
    writeBytes(folder / "a.tif", tiff);

    readPhoto(saved(small, "warm.png"));
    const long before = peakMegabytes();
    for (const std::string& name : folder.names()) {
        if (name == "warm.png") continue;
        SCOPED_TRACE(name);
        EXPECT_THAT(refusal([&] { readPhoto(folder / name); }), StartsWith((folder / name) + ": "));
        EXPECT_THAT(refusal([&] { readDepthMap(folder / name); }), StartsWith((folder / name) + ": "));
    }
    EXPECT_LT(peakMegabytes() - before, 100);
}

TEST_F(PictureFile, LimitHoldsForBytesToo) {
    const std::string bytes = bytesOf(saved(sixPixels(), "a.png"));
    EXPECT_EQ(decodePhoto(bytes, "it", 6).width, 3);
    EXPECT_THAT(refusal([&] { decodePhoto(bytes, "it", 5); }), StartsWith("it: 3 x 2 pixels; at most "));
    EXPECT_THAT(refusal([&] { decodeDepthMap(bytes, "it", 5); }), StartsWith("it: 3 x 2 pixels; at most "));
}

TEST_F(PictureFile, HeaderSaysWhatThePhotoWillBe) {
    for (int orientation = 1; orientation <= 8; ++orientation)
        for (const char* name : {"a.jpg", "a.tif", "a.png", "a.webp"}) {
            SCOPED_TRACE(testing::Message() << name << ", orientation " << orientation);
            VImage picture = sixPixels().resize(8);
            picture.set("orientation", orientation);
            const std::string bytes = bytesOf(saved(picture, name));
            const RgbImage photo = decodePhoto(bytes, "it");
            const PictureHeader header = readPictureHeader(bytes, "it");
            EXPECT_EQ(header.width, photo.width);
            EXPECT_EQ(header.height, photo.height);
            EXPECT_EQ(header.bands, 3);
            EXPECT_EQ(header.bits, 8);
        }
    const auto deep =
        image<uint16_t>(2, 1, 2, {1000, 65535, 2000, 32000}, VIPS_FORMAT_USHORT, VIPS_INTERPRETATION_GREY16);
    const std::string bytes = bytesOf(saved(deep, "deep.png"));
    EXPECT_EQ(readPictureHeader(bytes, "it").bands, 2);
    EXPECT_EQ(readPictureHeader(bytes, "it").bits, 16);
    EXPECT_EQ(readPictureHeader(bytes, "it", kMostPixels, 6).height, 2) << "it does not say how it lies";
}

TEST_F(PictureFile, HeaderTakesNoPixels) {
    // 200 megapixels would take 600 MB and seconds.
    const std::string path = folder / "large.jpg";
    VImage::black(16000, 12500, VImage::option()->set("bands", 3)).jpegsave(path.c_str());
    const std::string bytes = bytesOf(path);
    const long before = peakMegabytes();
    const PictureHeader header = readPictureHeader(bytes.substr(0, 2000), "it");
    EXPECT_EQ(header.width, 16000);
    EXPECT_EQ(header.height, 12500);
    EXPECT_LT(peakMegabytes() - before, 20);
}

TEST_F(PictureFile, HeaderIsRefusedAsThePictureIs) {
    EXPECT_EQ(refusal([&] { readPictureHeader("text", "it"); }),
              "it: not a JPEG, PNG, WebP, HEIC, AVIF or TIFF picture");
    const std::string bytes = bytesOf(saved(sixPixels(), "a.png"));
    EXPECT_EQ(readPictureHeader(bytes, "it", 6).width, 3);
    EXPECT_THAT(refusal([&] { readPictureHeader(bytes, "it", 5); }),
                StartsWith("it: 3 x 2 pixels; at most "));
    EXPECT_THAT(refusal([&] { readPictureHeader(bytes.substr(0, 20), "it"); }),
                StartsWith("it: cannot be read as a picture ("));
}

/// 160 x 120 pixels, a quarter of them blue.
RgbImage blueCorner() {
    RgbImage photo(160, 120);
    for (int y = 0; y < photo.height; ++y)
        for (int x = 0; x < photo.width; ++x) {
            uint8_t* pixel = &photo.samples[3 * static_cast<size_t>(y * photo.width + x)];
            const bool blue = x < 80 && y < 60;
            pixel[0] = blue ? 20 : 200;
            pixel[1] = 100;
            pixel[2] = blue ? 220 : 30;
        }
    return photo;
}

TEST_F(PictureFile, ShrunkPhotoIsTheWholePhotoSmaller) {
    const RgbImage whole = blueCorner();
    for (const char* name : {"a.png", "a.jpg", "a.webp", "a.tif", "a.avif"})
        for (const int least_side : {120, 60, 40, 13, 7})
            for (const int orientation : {1, 6}) {
                SCOPED_TRACE(testing::Message() << name << ", sides of at least " << least_side
                                                << ", orientation " << orientation);
                VImage picture = toVips(whole).copy();
                picture.set("orientation", orientation);
                std::string bytes;
                try {
                    bytes = bytesOf(saved(picture, name));
                } catch (const vips::VError&) {
                    vips_error_clear();
                    std::printf("%s cannot be written here and is not tried\n", name);
                    continue;
                }
                const RgbImage photo = decodePhotoShrunk(bytes, "it", least_side);
                const PictureHeader header = readPictureHeader(bytes, "it");
                EXPECT_GE(std::min(photo.width, photo.height), least_side);
                EXPECT_LT(std::min(photo.width, photo.height), 2 * least_side);
                EXPECT_NEAR(1.0 * photo.width * header.height / header.width, photo.height, 1.0);
                // The middles of the quarters, with room for what lossy coding and shrinking do to colours.
                const bool turned = header.width < header.height;
                for (const int right : {0, 1})
                    for (const int below : {0, 1}) {
                        const size_t x = static_cast<size_t>(photo.width * (1 + 2 * right) / 4);
                        const size_t y = static_cast<size_t>(photo.height * (1 + 2 * below) / 4);
                        const uint8_t* pixel = &photo.samples[3 * (y * static_cast<size_t>(photo.width) + x)];
                        // A quarter turn to the right brings the left upper corner to the right.
                        const bool blue = below == 0 && right == (turned ? 1 : 0);
                        EXPECT_NEAR(pixel[0], blue ? 20 : 200, 12);
                        EXPECT_NEAR(pixel[1], 100, 12);
                        EXPECT_NEAR(pixel[2], blue ? 220 : 30, 12);
                    }
            }
}

TEST_F(PictureFile, JpegIsDecodedNoSmallerThanIsWanted) {
    for (const int orientation : {1, 6}) {
        // 800 x 600 as it is stored.
        const RgbImage corner = blueCorner();  // toVips() does not copy its pixels
        VImage picture = toVips(corner).resize(5.0).copy();
        picture.set("orientation", orientation);
        const std::string bytes = bytesOf(saved(picture, "a.jpg"));
        const bool turned = orientation == 6;
        const auto decoded = [&](int width, int height) {
            const RgbImage photo =
                decodePhotoAtLeast(bytes, "it", turned ? Size{height, width} : Size{width, height});
            return turned ? Size{photo.height, photo.width} : Size{photo.width, photo.height};
        };
        EXPECT_EQ(decoded(800, 600), (Size{800, 600}));
        EXPECT_EQ(decoded(401, 300), (Size{800, 600})) << "one column too few";
        EXPECT_EQ(decoded(400, 301), (Size{800, 600})) << "one row too few";
        EXPECT_EQ(decoded(400, 300), (Size{400, 300}));
        EXPECT_EQ(decoded(250, 1), (Size{400, 300}));
        EXPECT_EQ(decoded(200, 150), (Size{200, 150}));
        EXPECT_EQ(decoded(1, 1), (Size{100, 75}));
        EXPECT_EQ(decoded(0, 0), (Size{100, 75}));
    }
}

TEST_F(PictureFile, OnlyJpegIsShrunkWhileItIsDecoded) {
    const RgbImage corner = blueCorner();
    const VImage picture = toVips(corner);
    for (const char* name : {"a.png", "a.webp", "a.tif"})
        EXPECT_EQ(decodePhotoAtLeast(bytesOf(saved(picture, name)), "it", {10, 10}).width, 160) << name;
}

TEST_F(PictureFile, JpegThatIsShrunkWhileItIsDecodedKeepsItsDetail) {
    // A pattern of 8 pixels, which a fourth of the size still has.
    RgbImage whole(320, 240);
    for (int y = 0; y < whole.height; ++y)
        for (int x = 0; x < whole.width; ++x)
            for (int c = 0; c < 3; ++c)
                (&whole.at(x, y))[c] = static_cast<uint8_t>(128.0 + 80.0 * std::sin(3.14159265 * x / 4.0));
    const std::string bytes = bytesOf(saved(toVips(whole), "a.jpg"));
    const RgbImage half = decodePhotoAtLeast(bytes, "it", {160, 120});
    ASSERT_EQ(half.width, 160);
    double squares = 0.0;
    for (int x = 16; x < 144; ++x) {
        // The mean of both pixels that stand for one.
        const double wanted =
            128.0 + 40.0 * (std::sin(3.14159265 * 2 * x / 4.0) + std::sin(3.14159265 * (2 * x + 1) / 4.0));
        squares += std::pow(half.at(x, 60) - wanted, 2.0) / 128.0;
    }
    EXPECT_LT(std::sqrt(squares), 8.0) << "levels; the pattern is 57 strong";
}

TEST_F(PictureFile, SmallPhotoIsNotShrunk) {
    const std::string bytes = bytesOf(saved(sixPixels(), "a.png"));
    EXPECT_EQ(decodePhotoShrunk(bytes, "it", 2).samples, decodePhoto(bytes, "it").samples);
    EXPECT_EQ(decodePhotoShrunk(bytes, "it", 2000).samples, decodePhoto(bytes, "it").samples);
}

TEST_F(PictureFile, ShrunkPhotoShowsNothingOfWhatIsTransparent) {
    // Half red, half a green that nobody sees.
    const auto rgba = image<uint8_t>(2, 2, 4, {200, 0, 0, 255, 200, 0, 0, 255, 0, 255, 0, 0, 0, 255, 0, 0},
                                     VIPS_FORMAT_UCHAR, VIPS_INTERPRETATION_sRGB);
    const RgbImage photo = decodePhotoShrunk(bytesOf(saved(rgba, "t.png")), "it", 1);
    ASSERT_EQ(photo.samples.size(), 3u);
    EXPECT_NEAR(photo.samples[0], (200 + 255) / 2.0, 1);
    EXPECT_NEAR(photo.samples[1], 255 / 2.0, 1);
    EXPECT_NEAR(photo.samples[2], 255 / 2.0, 1);
}

TEST_F(PictureFile, ShrunkPhotoIsRefusedAsThePhotoIs) {
    const std::string bytes = bytesOf(saved(VImage::gaussnoise(400, 400).cast(VIPS_FORMAT_UCHAR), "n.jpg"));
    EXPECT_THAT(refusal([&] { decodePhotoShrunk(bytes.substr(0, bytes.size() / 2), "it", 50); }),
                StartsWith("it: cannot be read as a picture ("));
    EXPECT_THAT(refusal([&] { decodePhotoShrunk(bytes, "it", 50, 400 * 400 - 1); }),
                StartsWith("it: 400 x 400 pixels; at most "));
    EXPECT_EQ(decodePhotoShrunk(bytes, "it", 50, 400 * 400).width, 50);
}

TEST_F(PictureFile, OnlyTheFirstOfManyPagesIsRead) {
    const VImage page = VImage::black(40, 30).linear(1.0, 90.0).cast(VIPS_FORMAT_UCHAR);
    VImage pages = page.replicate(1, 1000).copy();
    pages.set("page-height", 30);
    const long before = peakMegabytes();
    for (const char* name : {"pages.tif", "animated.webp"}) {
        SCOPED_TRACE(name);
        const RgbImage photo = readPhoto(saved(pages, name));
        EXPECT_EQ(photo.width, 40);
        EXPECT_EQ(photo.height, 30);
        EXPECT_NEAR(photo.samples[0], 90, 3);
    }
    EXPECT_LT(peakMegabytes() - before, 200);
}

TEST_F(PictureFile, StripThatLiesAboutItsLengthIsRefused) {
    // One packed strip, of 4 GB in a file of a few hundred bytes.
    const std::string path = folder / "a.tif";
    VImage::black(64, 64).tiffsave(
        path.c_str(), VImage::option()->set("compression", VIPS_FOREIGN_TIFF_COMPRESSION_DEFLATE));
    std::string tiff = bytesOf(path);
    const std::string count("\x17\x01\x04\0\x01\0\0\0", 8);
    const size_t at = tiff.find(count);
    ASSERT_NE(at, std::string::npos);
    writeBytes(path, tiff.replace(at + count.size(), 4, "\xf0\xff\xff\xff"));
    const long before = peakMegabytes();
    EXPECT_THAT(refusal([&] { readPhoto(path); }), StartsWith(path + ": "));
    EXPECT_LT(peakMegabytes() - before, 100);
}

TEST_F(PictureFile, ProfileThatUnpacksToFarMoreIsHarmless) {
    VImage picture = VImage::black(8, 8)
                         .bandjoin({0.0, 0.0})
                         .copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB));
    std::vector<uint8_t> zeros(200 << 20);
    vips_image_set_blob_copy(picture.get_image(), VIPS_META_ICC_NAME, zeros.data(), zeros.size());
    const std::string path = saved(picture, "profile.png");
    ASSERT_LT(bytesOf(path).size(), 1u << 20);
    EXPECT_EQ(readPhoto(path).width, 8);
}

TEST_F(PictureFile, JpegOfCountlessScansIsRefused) {
    const std::string path = saved(VImage::black(64, 64), "scans.jpg");
    std::string jpeg = bytesOf(path);
    const size_t scan = jpeg.find("\xff\xda"), end = jpeg.rfind("\xff\xd9");
    const std::string again = jpeg.substr(scan, end - scan);
    for (int i = 0; i < 100; ++i) jpeg.insert(end, again);
    writeBytes(path, jpeg);
    EXPECT_EQ(refusal([&] { readPhoto(path); }), path + ": a JPEG of more than 100 scans");
}

TEST_F(PictureFile, EndlessFileIsRefusedByItsStart) {
    const long before = peakMegabytes();
    EXPECT_EQ(refusal([&] { readPhoto("/dev/zero"); }),
              "/dev/zero: not a JPEG, PNG, WebP, HEIC, AVIF or TIFF picture");
    EXPECT_LT(peakMegabytes() - before, 100);
}

TEST_F(PictureFile, HugeFileIsRefusedUnread) {
    writeBytes(folder / "huge.tif", "II*");
    std::filesystem::resize_file(folder / "huge.tif", 3u << 30);
    const long before = peakMegabytes();
    EXPECT_EQ(refusal([&] { readPhoto(folder / "huge.tif"); }),
              (folder / "huge.tif") + ": the file is too large; at most 2147 MB are read");
    EXPECT_LT(peakMegabytes() - before, 100);
}

TEST_F(PictureFile, EightBitDepthIsTakenAsItIs) {
    const auto gray = image<uint8_t>(3, 1, 1, {10, 100, 200}, VIPS_FORMAT_UCHAR, VIPS_INTERPRETATION_B_W);
    const DepthMap depth = readDepthMap(saved(gray, "d.png"));
    EXPECT_EQ(depth.bits, 8);
    EXPECT_THAT(depth.plane.samples, ElementsAre(10.0f, 100.0f, 200.0f));
}

TEST_F(PictureFile, SixteenBitDepthKeepsItsLevels) {
    const auto deep =
        image<uint16_t>(3, 1, 1, {1000, 257 * 51, 65535}, VIPS_FORMAT_USHORT, VIPS_INTERPRETATION_GREY16);
    const DepthMap depth = readDepthMap(saved(deep, "d.png"));
    EXPECT_EQ(depth.bits, 16);
    EXPECT_FLOAT_EQ(depth.plane.samples[0], 1000.0f / 257.0f);
    EXPECT_FLOAT_EQ(depth.plane.samples[1], 51.0f);
    EXPECT_FLOAT_EQ(depth.plane.samples[2], 255.0f);
}

TEST_F(PictureFile, DepthStoredAsRgbIsGray) {
    const auto rgb =
        image<uint8_t>(2, 1, 3, {80, 80, 80, 9, 9, 9}, VIPS_FORMAT_UCHAR, VIPS_INTERPRETATION_sRGB);
    const DepthMap depth = readDepthMap(saved(rgb, "d.png"));
    EXPECT_NEAR(depth.plane.samples[0], 80, 0.01);
    EXPECT_NEAR(depth.plane.samples[1], 9, 0.01);
}

TEST_F(PictureFile, DepthStoredAsRgbHasTheWeightsOfLuma) {
    // 8 levels too many in one channel, as lossy coding may leave them: ITU-R BT.601 weighs them apart.
    const auto rgb = image<uint8_t>(
        6, 1, 3, {108, 100, 100, 100, 108, 100, 100, 100, 108, 100, 100, 100, 100, 100, 100, 100, 100, 100},
        VIPS_FORMAT_UCHAR, VIPS_INTERPRETATION_sRGB);
    const DepthMap depth = readDepthMap(saved(rgb, "d.png"));
    EXPECT_NEAR(depth.plane.samples[0], 100 + 8 * 0.299, 0.001);
    EXPECT_NEAR(depth.plane.samples[1], 100 + 8 * 0.587, 0.001);
    EXPECT_NEAR(depth.plane.samples[2], 100 + 8 * 0.114, 0.001);
    EXPECT_NEAR(depth.plane.samples[3], 100, 0.001);
}

TEST_F(PictureFile, DepthsAlphaSaysWhatIsKnown) {
    const auto la = image<uint8_t>(4, 1, 2, {80, 255, 120, 0, 90, 127, 7, 128}, VIPS_FORMAT_UCHAR,
                                   VIPS_INTERPRETATION_B_W);
    const DepthMap gray = readDepthMap(saved(la, "la.png"));
    EXPECT_THAT(gray.plane.samples, ElementsAre(80.0f, 120.0f, 90.0f, 7.0f));
    EXPECT_THAT(gray.known.samples, ElementsAre(255, 0, 0, 255));
    const auto rgba = image<uint8_t>(2, 1, 4, {60, 60, 60, 0, 61, 61, 61, 255}, VIPS_FORMAT_UCHAR,
                                     VIPS_INTERPRETATION_sRGB);
    const DepthMap colour = readDepthMap(saved(rgba, "rgba.png"));
    EXPECT_NEAR(colour.plane.samples[0], 60, 0.01);
    EXPECT_THAT(colour.known.samples, ElementsAre(0, 255));
    const auto deep =
        image<uint16_t>(2, 1, 2, {1000, 65535, 2000, 32000}, VIPS_FORMAT_USHORT, VIPS_INTERPRETATION_GREY16);
    EXPECT_THAT(readDepthMap(saved(deep, "deep.png")).known.samples, ElementsAre(255, 0));
}

TEST_F(PictureFile, OpaqueDepthIsKnownEverywhere) {
    const auto la = image<uint8_t>(2, 1, 2, {80, 255, 120, 255}, VIPS_FORMAT_UCHAR, VIPS_INTERPRETATION_B_W);
    EXPECT_THAT(readDepthMap(saved(la, "la.png")).known.samples, testing::IsEmpty());
    const auto gray = image<uint8_t>(2, 1, 1, {0, 255}, VIPS_FORMAT_UCHAR, VIPS_INTERPRETATION_B_W);
    EXPECT_THAT(readDepthMap(saved(gray, "g.png")).known.samples, testing::IsEmpty());
}

/// Values that colour maps give to 0, 64, 128, 192 and 255, from the tables that their makers publish.
struct PublishedColours {
    const char* name;
    std::vector<uint8_t> rgb;
    double tolerance;  ///< in levels; programs place hot's colours differently
};
const std::vector<PublishedColours>& publishedColours() {
    static const std::vector<PublishedColours> all = {
        {"jet", {0, 0, 128, 0, 128, 255, 130, 255, 126, 255, 124, 0, 128, 0, 0}, 1},
        {"rainbow", {128, 0, 255, 0, 181, 235, 128, 255, 180, 255, 179, 97, 255, 0, 0}, 1},
        {"turbo", {48, 18, 59, 40, 188, 235, 164, 252, 60, 251, 126, 33, 122, 4, 3}, 2},
        {"viridis", {68, 1, 84, 59, 82, 139, 33, 145, 140, 94, 201, 98, 253, 231, 37}, 3},
        {"plasma", {13, 8, 135, 126, 3, 168, 204, 71, 120, 248, 149, 64, 240, 249, 33}, 3},
        {"inferno", {0, 0, 4, 87, 16, 110, 188, 55, 84, 249, 142, 9, 252, 255, 164}, 4},
        {"magma", {0, 0, 4, 81, 18, 124, 183, 55, 121, 252, 137, 97, 252, 253, 191}, 4},
        {"hot", {0, 0, 0, 160, 0, 0, 255, 65, 0, 255, 225, 0, 255, 255, 255}, 14},
    };
    return all;
}

TEST_F(PictureFile, DepthInAKnownColourMapIsReadBack) {
    for (const auto& [name, rgb, tolerance] : publishedColours()) {
        SCOPED_TRACE(name);
        const auto colours = image<uint8_t>(5, 1, 3, rgb, VIPS_FORMAT_UCHAR, VIPS_INTERPRETATION_sRGB);
        const std::string path = saved(colours, "c.png");
        const DepthMap depth = readDepthMap(path);
        EXPECT_EQ(depth.colour_map, name);
        ASSERT_EQ(depth.plane.samples.size(), 5u);
        for (size_t i = 0; i < 5; ++i)
            EXPECT_NEAR(depth.plane.samples[i], std::min(64.0 * static_cast<double>(i), 255.0), tolerance);
        EXPECT_THAT(depth.known.samples, testing::IsEmpty());
        // Lossily coded too, in blocks that keep their colours.
        const VImage blocks = colours.resize(64, VImage::option()->set("kernel", VIPS_KERNEL_NEAREST));
        const DepthMap lossy = readDepthMap(saved(blocks, "c.jpg"));
        EXPECT_EQ(lossy.colour_map, name);
        for (size_t i = 0; i < 5; ++i)
            EXPECT_NEAR(lossy.plane.samples[i * 64 + 32], std::min(64.0 * static_cast<double>(i), 255.0),
                        tolerance + 3);
    }
}

TEST_F(PictureFile, ColoursOffTheColourMapAreNotKnown) {
    // Black where there is no depth, as jet has no black; and what is transparent.
    std::vector<uint8_t> rgba;
    const std::vector<uint8_t>& jet = publishedColours()[0].rgb;
    for (size_t i = 0; i < 5; ++i)
        rgba.insert(rgba.end(), {jet[3 * i], jet[3 * i + 1], jet[3 * i + 2], uint8_t(i == 3 ? 0 : 255)});
    rgba.insert(rgba.end(), {0, 0, 0, 255});
    const DepthMap depth = readDepthMap(
        saved(image<uint8_t>(6, 1, 4, rgba, VIPS_FORMAT_UCHAR, VIPS_INTERPRETATION_sRGB), "c.png"));
    EXPECT_EQ(depth.colour_map, "jet");
    EXPECT_THAT(depth.known.samples, ElementsAre(255, 255, 255, 0, 255, 0));
}

TEST_F(PictureFile, GrayDepthHasNoColourMap) {
    const auto rgb =
        image<uint8_t>(2, 1, 3, {80, 80, 80, 9, 9, 9}, VIPS_FORMAT_UCHAR, VIPS_INTERPRETATION_sRGB);
    EXPECT_EQ(readDepthMap(saved(rgb, "d.png")).colour_map, "");
}

TEST_F(PictureFile, ColourPictureIsNoDepthMap) {
    const std::string path = saved(sixPixels(), "photo.png");
    EXPECT_EQ(refusal([&] { readDepthMap(path); }), path + ": a colour picture; a depth map is gray");
    writePng(makeSampleScene(320, 240).photo, folder / "lake.png");
    EXPECT_THAT(refusal([&] { readDepthMap(folder / "lake.png"); }), HasSubstr("a colour picture"));
    // One colour of a map is no map.
    const auto flat =
        image<uint8_t>(2, 1, 3, {33, 145, 140, 34, 146, 140}, VIPS_FORMAT_UCHAR, VIPS_INTERPRETATION_sRGB);
    EXPECT_THAT(refusal([&] { readDepthMap(saved(flat, "flat.png")); }), HasSubstr("a colour picture"));
}

TEST_F(PictureFile, FloatSamplesAreNoDepthMap) {
    const auto floats = image<float>(2, 1, 1, {0.5f, 7.0f}, VIPS_FORMAT_FLOAT, VIPS_INTERPRETATION_B_W);
    EXPECT_THAT(refusal([&] { readDepthMap(saved(floats, "f.tif")); }), HasSubstr("8 or 16 bit"));
}

TEST_F(PictureFile, DepthIsTurnedUprightLikeThePhoto) {
    VImage gray = image<uint8_t>(2, 1, 1, {10, 200}, VIPS_FORMAT_UCHAR, VIPS_INTERPRETATION_B_W);
    gray.set("orientation", 3);
    EXPECT_THAT(readDepthMap(saved(gray, "turned.tif")).plane.samples, ElementsAre(200.0f, 10.0f));
}

TEST_F(PictureFile, WrittenPngReadsBackTheSame) {
    RgbImage rgb(2, 2);
    rgb.samples = {1, 2, 3, 4, 5, 6, 7, 8, 9, 250, 251, 252};
    writePng(rgb, folder / "rgb.png");
    EXPECT_EQ(readPhoto(folder / "rgb.png").samples, rgb.samples);
    GrayImage gray(2, 1);
    gray.samples = {3, 254};
    writePng(gray, folder / "gray.png");
    EXPECT_THAT(readDepthMap(folder / "gray.png").plane.samples, ElementsAre(3.0f, 254.0f));
}

TEST_F(PictureFile, CodedPlaneKeepsItsLevels) {
    Plane plane(4, 1);
    plane.samples = {0.0f, 100.4f, 127.5f, 255.0f};
    EXPECT_THAT(decodeDepthMap(grayPng(plane, 8), "it").plane.samples,
                ElementsAre(0.0f, 100.0f, 128.0f, 255.0f));
    EXPECT_THAT(decodeDepthMap(grayPng(plane, 16), "it").plane.samples,
                testing::Pointwise(testing::FloatNear(0.002f), plane.samples));
    EXPECT_EQ(decodeDepthMap(grayPng(plane, 16), "it").bits, 16);
}

TEST_F(PictureFile, SamePictureGivesTheSameFile) {
    RgbaImage rgba(9, 9);
    for (size_t i = 0; i < rgba.samples.size(); ++i) rgba.samples[i] = static_cast<uint8_t>(i * 7);
    writePng(rgba, folder / "a.png");
    writePng(rgba, folder / "b.png");
    EXPECT_EQ(bytesOf(folder / "a.png"), bytesOf(folder / "b.png"));
}

TEST_F(PictureFile, WritingIntoNoFolderLeavesNothing) {
    RgbImage rgb(1, 1);
    EXPECT_THAT(refusal([&] { writePng(rgb, folder / "none/a.png"); }), HasSubstr("there is no folder"));
    EXPECT_THAT(folder.names(), testing::IsEmpty());
}

/// A number as a little-endian file has it.
std::string bytesOfNumber(unsigned number, int count) {
    std::string bytes;
    for (int i = 0; i < count; ++i) bytes += static_cast<char>(number >> (8 * i) & 255U);
    return bytes;
}

TEST_F(PictureFile, TiffMayHaveItsDirectoryAtItsEnd) {
    // As most programs write it; far behind what is read first.
    constexpr unsigned kWidth = 400, kHeight = 300, kSamples = kWidth * kHeight;
    const unsigned entries[][3] = {{256, 4, kWidth}, {257, 4, kHeight}, {258, 3, 8},
                                   {259, 3, 1},      {262, 3, 1},       {273, 4, 8},
                                   {277, 3, 1},      {278, 4, kHeight}, {279, 4, kSamples}};
    std::string file = std::string("II*\0", 4) + bytesOfNumber(8 + kSamples, 4) + std::string(kSamples, 'g');
    file += bytesOfNumber(std::size(entries), 2);
    for (const auto& [tag, type, value] : entries)
        file +=
            bytesOfNumber(tag, 2) + bytesOfNumber(type, 2) + bytesOfNumber(1, 4) + bytesOfNumber(value, 4);
    file += bytesOfNumber(0, 4);
    writeBytes(folder / "a.tif", file);
    const RgbImage photo = readPhoto(folder / "a.tif");
    EXPECT_EQ(photo.width, 400);
    EXPECT_EQ(photo.height, 300);
    EXPECT_EQ(photo.samples[0], 'g');
}

TEST_F(PictureFile, WhatCannotBeWrittenIsToldWithItsReason) {
    const Descriptor full(open("/dev/full", O_WRONLY | O_CLOEXEC));
    EXPECT_EQ(refusal([&] { savePng(RgbaImage(64, 64), full.number(), "a.png"); }),
              "a.png: cannot be written (No space left on device)");
}

TEST_F(PictureFile, WhatIsKnownStandsInForAReason) {
    writePng(makeSampleScene(64, 64).photo, folder / "a.png");
    const std::string whole = bytesOf(folder / "a.png");
    const auto said = [&whole](size_t size) {
        g_silent = true;
        const std::string text = refusal([&] { decodePhoto(whole.substr(0, size), "a.png"); });
        g_silent = false;
        return text;
    };
    const std::string half = std::to_string(whole.size() / 2);
    EXPECT_EQ(said(whole.size() / 2), "a.png: cannot be read as a picture (PNG, " + half +
                                          " bytes, 64 x 64 pixels: they cannot be decoded)");
    EXPECT_EQ(said(20), "a.png: cannot be read as a picture (PNG, 20 bytes: its header cannot be decoded)");
}

}  // namespace
}  // namespace quorvane::media
