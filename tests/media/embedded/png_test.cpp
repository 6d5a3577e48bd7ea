#include "media/embedded/png.h"

#include <gtest/gtest.h>

#include "support/photo_writers/pictures.h"

namespace quorvane::media {
namespace {

using namespace std::string_literals;

const std::string kSignature = "\x89PNG\r\n\x1a\n"s;

/// A chunk whose checksum nobody looks at.
std::string chunk(const std::string& type, const std::string& data) {
    return "\0\0\0"s + static_cast<char>(data.size()) + type + data + "crc!";
}

/// The file as it is decoded.
std::string lean(const std::string& file) { return withoutPngTexts(file).value_or(file); }

TEST(PngSize, EndsAtTheEndOfThePicture) {
    const std::string png = test::pngFile(test::somePlane(9, 7));
    EXPECT_EQ(pngSize(png), png.size());
    EXPECT_EQ(pngSize(png + png), png.size());
    for (size_t size = 0; size < png.size(); ++size) EXPECT_EQ(pngSize(png.substr(0, size)), std::nullopt);
    EXPECT_EQ(pngSize(test::jpegFile(test::somePlane(9, 7))), std::nullopt);
}

TEST(PngBits, AreThoseOfASample) {
    EXPECT_EQ(pngBits(test::pngFile(test::somePlane(9, 7))), 8);
    EXPECT_EQ(pngBits(test::pngFile(Image<uint16_t, 1>(9, 7))), 16);
    EXPECT_EQ(pngBits(kSignature + chunk("IHDR", "12345678")), std::nullopt);
    EXPECT_EQ(pngBits(kSignature + chunk("tEXt", "123456789")), std::nullopt);
    EXPECT_EQ(pngBits(test::jpegFile(test::somePlane(9, 7))), std::nullopt);
}

TEST(WithoutPngTexts, DropsTheCompressedTextsOnly) {
    const std::string head = chunk("IHDR", "head"), plain = chunk("tEXt", "plain"),
                      data = chunk("IDAT", "data");
    EXPECT_EQ(lean(kSignature + head + chunk("zTXt", "packed") + plain + chunk("iTXt", "packed") + data),
              kSignature + head + plain + data);
}

TEST(WithoutPngTexts, LeavesABrokenEndAsItIs) {
    const std::string png =
        kSignature + chunk("IHDR", "head") + chunk("zTXt", "packed") + chunk("IDAT", "data");
    const std::string kept = kSignature + chunk("IHDR", "head") + chunk("IDAT", "data");
    EXPECT_EQ(lean(png.substr(0, png.size() - 1)), kept.substr(0, kept.size() - 1));
    EXPECT_EQ(lean(png + "\xff\xff\xff\xffzTXt..."), kept + "\xff\xff\xff\xffzTXt...");
    EXPECT_EQ(lean(kSignature), kSignature);
}

TEST(WithoutPngTexts, CopiesNoFileThatHasNone) {
    EXPECT_EQ(withoutPngTexts(kSignature + chunk("IHDR", "head") + chunk("IDAT", "zTXt")), std::nullopt);
}

TEST(WithoutPngTexts, OtherFilesStayTheSame) {
    EXPECT_EQ(lean(""), "");
    EXPECT_EQ(lean(chunk("zTXt", "packed")), chunk("zTXt", "packed"));
}

}  // namespace
}  // namespace quorvane::media
