#include "media/embedding/exif.h"

#include <gtest/gtest.h>

namespace quorvane::media {
namespace {

uint32_t word(const std::string& bytes, size_t at) {
    uint32_t value = 0;
    for (size_t i = 4; i-- > 0;) value = value << 8 | static_cast<uint8_t>(bytes.at(at + i));
    return value;
}

// A rational has 32 bits above and below.
TEST(Exif, ResolutionIsRightForPicturesOfEverySize) {
    for (const int width : {100, 6000, 16384}) {
        const std::string exif = exifOf({1.0, 4.0 / 3.0, 63.0, 0.5, 0.5}, {width, width * 3 / 4});
        // The field's tag, its type and that it is one.
        const size_t field = exif.find(std::string("\x0e\xa2\5\0\1\0\0\0", 8));
        ASSERT_NE(field, std::string::npos);
        const uint32_t place = word(exif, field + 8);
        // Of 36 mm, in pixels a centimetre.
        EXPECT_NEAR(static_cast<double>(word(exif, place)) / word(exif, place + 4), width / 3.6, 1e-3);
    }
}

}  // namespace
}  // namespace quorvane::media
