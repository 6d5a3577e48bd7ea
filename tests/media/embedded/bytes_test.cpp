#include "media/embedded/bytes.h"

#include <gtest/gtest.h>

#include <limits>

namespace quorvane::media {
namespace {

using namespace std::string_literals;

TEST(Bytes, PartIsInsideOrNothing) {
    EXPECT_EQ(part("abcd", 1, 2), "bc");
    EXPECT_EQ(part("abcd", 4, 0), "");
    EXPECT_FALSE(part("abcd", 3, 2));
    EXPECT_FALSE(part("abcd", 5, 0));
    constexpr uint64_t kMost = std::numeric_limits<uint64_t>::max();
    EXPECT_FALSE(part("abcd", 2, kMost)) << "the sum wraps around";
    EXPECT_FALSE(part("abcd", kMost, 2)) << "the sum wraps around";
}

TEST(Bytes, NumbersAreReadInBothOrders) {
    EXPECT_EQ(littleEndian("\x01\x02\x03\x04", 1, 2), 0x0302u);
    EXPECT_EQ(bigEndian("\x01\x02\x03\x04", 1, 2), 0x0203u);
    EXPECT_EQ(bigEndian("\xff\xfe\xfd\xfc", 0, 4), 0xfffefdfcu) << "bytes are not signed";
    EXPECT_EQ(littleEndian("\xff\xfe\xfd\xfc", 0, 4), 0xfcfdfeffu);
    EXPECT_FALSE(bigEndian("\x01\x02\x03", 2, 2));
    EXPECT_FALSE(littleEndian("\x01\x02\x03", 2, 2));
}

TEST(Bytes, PicturesAreKnownByTheirFirstBytes) {
    EXPECT_EQ(mimeOf("\xff\xd8\xff\xe0"), "image/jpeg");
    EXPECT_EQ(mimeOf("\x89PNG\r\n\x1a\n"), "image/png");
    EXPECT_EQ(mimeOf("RIFF\1\2\3\4WEBPVP8 "), "image/webp");
    EXPECT_EQ(mimeOf("RIFF\1\2\3\4WAVEfmt "), "");
    EXPECT_EQ(mimeOf("II*\0\x8\0\0\0"s), "image/tiff");
    EXPECT_EQ(mimeOf("MM\0*\0\0\0\x8"s), "image/tiff");
    EXPECT_EQ(mimeOf("\0\0\0\x18"s + "ftypheic"), "image/heic");
    EXPECT_EQ(mimeOf("\0\0\0\x18"s + "ftypmif1"), "image/heic");
    EXPECT_EQ(mimeOf("\0\0\0\x18"s + "ftypavif"), "image/avif");
    EXPECT_EQ(mimeOf("\0\0\0\x18"s + "ftypisom"), "video/mp4");
    EXPECT_EQ(mimeOf("GIF89a......"), "");
}

TEST(Bytes, FormatsHaveTheNamesThatPeopleKnow) {
    EXPECT_EQ(formatName("image/jpeg"), "JPEG");
    EXPECT_EQ(formatName("image/heic"), "HEIC");
    EXPECT_EQ(formatName("video/mp4"), "MP4");
    EXPECT_EQ(formatName(""), "");
}

TEST(Bytes, StumpsOfPicturesAreNone) {
    const std::string stumps[] = {"",
                                  "\xff\xd8",
                                  "RIFF",
                                  "RIFF1234WEB",
                                  "\0\0\0\x18"s,
                                  "\0\0\0\x18"
                                  "ftyp"s};
    for (const std::string& stump : stumps)
        EXPECT_FALSE(startsWith(mimeOf(stump), "image/")) << stump.size() << " bytes";
}

// RFC 4648, section 10.
TEST(Bytes, Base64GivesTheStandardsExamples) {
    EXPECT_EQ(fromBase64(""), "");
    EXPECT_EQ(fromBase64("Zg=="), "f");
    EXPECT_EQ(fromBase64("Zm8="), "fo");
    EXPECT_EQ(fromBase64("Zm9v"), "foo");
    EXPECT_EQ(fromBase64("Zm9vYg=="), "foob");
    EXPECT_EQ(fromBase64("Zm9vYmE="), "fooba");
    EXPECT_EQ(fromBase64("Zm9vYmFy"), "foobar");
    EXPECT_EQ(fromBase64("+/+/"), "\xfb\xff\xbf");
}

TEST(Bytes, Base64PassesOverLineBreaksAndMissingPadding) {
    EXPECT_EQ(fromBase64("Zm9v\nYm\r\n\tFy "), "foobar");
    EXPECT_EQ(fromBase64("Zm9vYg"), "foob");
    EXPECT_EQ(fromBase64("Zm9vYmE"), "fooba");
}

TEST(Bytes, Base64RefusesOtherLetters) {
    EXPECT_FALSE(fromBase64("Zm9*"));
    EXPECT_FALSE(fromBase64("Zm9-"));
    EXPECT_FALSE(fromBase64("Zg==Zg==")) << "letters behind the padding";
    EXPECT_FALSE(fromBase64("Zm9vY")) << "six bits are no byte";
    EXPECT_FALSE(fromBase64("Zm9v\0"s));
}

TEST(Bytes, NumbersInTextAreWholeAndFinite) {
    EXPECT_EQ(toNumber("12.423587799072266"), 12.423587799072266);
    EXPECT_EQ(toNumber(" -3 "), -3.0);
    EXPECT_EQ(toNumber("1e3"), 1000.0);
    for (const char* bad : {"", " ", "1,5", "2 m", "1e999", "inf", "nan", "0x10", "--1", "m"})
        EXPECT_FALSE(toNumber(bad)) << bad;
}

}  // namespace
}  // namespace quorvane::media
