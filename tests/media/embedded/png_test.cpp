#include "media/picture/file_cost.h"

#include <gtest/gtest.h>

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

TEST(JpegScans, CountsTheScans) {
    const std::string scan = "\xff\xda\0\x03!data"s;
    EXPECT_EQ(jpegScans("\xff\xd8\xff\xdb\0\x04qq"s + scan + scan + scan + "\xff\xd9"), 3);
}

TEST(JpegScans, LooksNeitherIntoSegmentsNorPastTheEnd) {
    // A preview within the Exif data, and another picture behind this one.
    EXPECT_EQ(jpegScans("\xff\xd8\xff\xe1\0\x08\xff\xda\xff\xda\xff\xda\xff\xda\0\x02\xff\xd9\xff\xda"s), 1);
}

TEST(JpegScans, TakesStuffingRestartsAndFillForData) {
    EXPECT_EQ(jpegScans("\xff\xd8\xff\xff\xff\xda\0\x02 \xff\0 \xff\xd0 \xff\xd7\xff\xff\xda\0\x02\xff\xd9"s),
              2);
}

TEST(JpegScans, EndsWithTheFile) {
    const std::string whole = "\xff\xd8\xff\xe1\0\x04qq\xff\xda\0\x02 \xff"s;
    for (size_t length = 0; length <= whole.size(); ++length)
        EXPECT_LE(jpegScans(whole.substr(0, length)), 1);
    EXPECT_EQ(jpegScans("\xff\xd8\xff\xda\xff\xff"s), 1) << "a segment longer than the file";
}

TEST(JpegScans, OtherFilesHaveNone) { EXPECT_EQ(jpegScans("II*\0\xff\xda\0\x02"s), 0); }

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
