#include "media/embedded/jpeg.h"

#include <gtest/gtest.h>

#include "support/photo_writers/pictures.h"

namespace quorvane::media {
namespace {

using namespace std::string_literals;
using test::exifSegment;
using test::jpegFile;
using test::segment;
using test::somePhoto;
using test::somePlane;
using test::withSegments;

const std::string kStart = "\xff\xd8", kEnd = "\xff\xd9";
const std::string kScan = segment(0xda, "\1\1\0\0\x3f\0"s);

/// An APP1 segment with one Exif entry, little-endian.
std::string littleExif(uint16_t tag, uint16_t type, uint32_t value, uint32_t directory = 8) {
    return segment(0xe1, "Exif\0\0II*\0"s + test::little(directory, 4) + test::little(1, 2) +
                             test::little(tag, 2) + test::little(type, 2) + test::little(1, 4) +
                             test::little(value, 4) + test::little(0, 4));
}

TEST(Jpeg, EndsAtItsOwnEndWhateverFollows) {
    const std::string first = jpegFile(somePhoto(40, 30)), second = jpegFile(somePlane(20, 10));
    for (const std::string& behind : {""s, second, "\0\0\0\0"s, "\xff\xd9"s}) {
        const auto jpeg = walkJpeg(first + behind);
        ASSERT_TRUE(jpeg);
        EXPECT_TRUE(jpeg->complete);
        EXPECT_EQ(jpeg->end, first.size());
    }
    const std::string file = first + second;
    const auto jpeg = walkJpeg(file, first.size());
    ASSERT_TRUE(jpeg);
    EXPECT_EQ(jpeg->begin, first.size());
    EXPECT_EQ(jpeg->end, file.size());
    EXPECT_EQ(jpegSize(*jpeg).width, 20);
    EXPECT_EQ(jpegSize(*jpeg).height, 10);
}

TEST(Jpeg, ThumbnailsInSegmentsDoNotEndIt) {
    const std::string thumbnail = jpegFile(somePhoto(16, 12));
    const std::string file =
        withSegments(jpegFile(somePhoto(40, 30)), {segment(0xe1, "Exif\0\0"s + thumbnail)});
    const std::string longer = file + "behind";
    const auto jpeg = walkJpeg(longer);
    ASSERT_TRUE(jpeg);
    EXPECT_EQ(jpeg->end, file.size());
    EXPECT_EQ(jpegSize(*jpeg).width, 40);
}

TEST(Jpeg, CodedBytesAndRestartsDoNotEndIt) {
    const std::string file = kStart + kScan + "\1\xff\0\xd9\2\xff\xd0\3\xff\xd7\4\xff\xff\xff\0\5"s + kEnd;
    const std::string longer = file + "\xff\xd9";
    const auto jpeg = walkJpeg(longer);
    ASSERT_TRUE(jpeg);
    EXPECT_TRUE(jpeg->complete);
    EXPECT_EQ(jpeg->end, file.size());
}

TEST(Jpeg, ScansFollowEachOtherInProgressiveOnes) {
    const std::string file =
        kStart + kScan + "\1\2\3" + segment(0xc4, "table \xff\xd9") + kScan + "\4\5" + kEnd;
    const std::string longer = file + "behind";
    const auto jpeg = walkJpeg(longer);
    ASSERT_TRUE(jpeg);
    EXPECT_EQ(jpeg->end, file.size());
    ASSERT_EQ(jpeg->segments.size(), 1u) << "those before the first scan, and its header";
    EXPECT_EQ(jpeg->segments[0].marker, 0xda);
}

TEST(Jpeg, BytesMayFillBeforeMarkers) {
    for (size_t fill = 1; fill <= 3; ++fill) {
        const std::string filling(fill, '\xff');
        const std::string file = kStart + filling + segment(0xe5, "five") + kScan + "\1" + filling + kEnd;
        const std::string longer = file + "behind";
        const auto jpeg = walkJpeg(longer);
        ASSERT_TRUE(jpeg);
        EXPECT_TRUE(jpeg->complete);
        EXPECT_EQ(jpeg->end, file.size());
        ASSERT_EQ(jpeg->segments.size(), 2u);
        EXPECT_EQ(jpeg->segments[0].marker, 0xe5);
        EXPECT_EQ(jpeg->segments[0].body, "five");
    }
}

TEST(Jpeg, IncompleteOnesReachToTheEndOfTheFile) {
    const std::string whole = jpegFile(somePhoto(40, 30));
    for (size_t size = 3; size < whole.size(); ++size) {
        const std::string file = whole.substr(0, size);
        const auto jpeg = walkJpeg(file);
        ASSERT_TRUE(jpeg);
        EXPECT_FALSE(jpeg->complete) << size;
        EXPECT_EQ(jpeg->end, size);
        for (const JpegSegment& each : jpeg->segments)
            EXPECT_LE(each.body.data() + each.body.size(), file.data() + file.size());
    }
    EXPECT_FALSE(walkJpeg(whole + whole.substr(0, 30), whole.size())->complete);
    EXPECT_FALSE(walkJpeg(kStart + kScan + "\1\2" + whole)->complete) << "another picture, no end before it";
    EXPECT_FALSE(walkJpeg(kStart + "\xff\xe0\0\1"s + kEnd)->complete) << "a length that cannot be";
}

TEST(Jpeg, NoneStartsElsewhere) {
    const std::string file = jpegFile(somePhoto(40, 30));
    EXPECT_FALSE(walkJpeg(""));
    EXPECT_FALSE(walkJpeg("\xff\xd8"));
    EXPECT_FALSE(walkJpeg(file, 1));
    EXPECT_FALSE(walkJpeg(file, file.size()));
    EXPECT_FALSE(walkJpeg(file, ~uint64_t{0}));
    EXPECT_FALSE(walkJpeg(test::pngFile(somePlane(8, 8))));
}

TEST(Jpeg, ListOfSegmentsIsBounded) {
    std::string file = kStart;
    for (int i = 0; i < 100'000; ++i) file += "\xff\xe9\0\2"s;
    file += kScan + kEnd;
    const auto jpeg = walkJpeg(file);
    ASSERT_TRUE(jpeg);
    EXPECT_EQ(jpeg->end, file.size());
    EXPECT_EQ(jpeg->segments.size(), 65'536u);
}

TEST(Jpeg, MarkersThatStandAloneHaveNoLength) {
    // TEM and a restart: the two bytes behind would reach over the scan and the end.
    for (const char alone : {'\x01', '\xd0'}) {
        const std::string file = kStart + "\xff"s + alone + kScan + kEnd;
        const auto jpeg = walkJpeg(file + "\xff\xd9 behind it");
        ASSERT_TRUE(jpeg);
        EXPECT_TRUE(jpeg->complete);
        EXPECT_EQ(jpeg->end, file.size());
        EXPECT_EQ(jpeg->segments.size(), 1u) << "the scan's own";
        EXPECT_EQ(jpegScans(file), 1);
    }
}

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

TEST(Jpeg, OrientationIsExifs) {
    const std::string photo = jpegFile(somePhoto(40, 30));
    EXPECT_EQ(exifOrientation(*walkJpeg(photo)), std::nullopt);
    for (int code = 1; code <= 8; ++code) {
        const std::string big_endian = withSegments(photo, {exifSegment(code)});
        EXPECT_EQ(exifOrientation(*walkJpeg(big_endian)), code);
        constexpr uint16_t kShort = 3, kLong = 4;
        for (const uint16_t type : {kShort, kLong}) {
            const std::string file =
                withSegments(photo, {littleExif(0x0112, type, static_cast<uint32_t>(code))});
            EXPECT_EQ(exifOrientation(*walkJpeg(file)), code);
        }
        const std::string long_big =
            withSegments(photo, {segment(0xe1, "Exif\0\0MM\0*\0\0\0\x8\0\x1\x1\x12\0\x4\0\0\0\x1"s +
                                                   test::big(static_cast<uint64_t>(code), 4) + "\0\0\0\0"s)});
        EXPECT_EQ(exifOrientation(*walkJpeg(long_big)), code);
    }
}

TEST(Jpeg, SenselessOrientationIsNone) {
    const std::string photo = jpegFile(somePhoto(40, 30));
    const std::string exifs[] = {exifSegment(0),
                                 exifSegment(9),
                                 littleExif(0x0112, 4, 0x10006),
                                 littleExif(0x0110, 3, 6),
                                 littleExif(0x0112, 3, 6, 0xfffffff0),
                                 segment(0xe1, "Exif\0\0"s),
                                 segment(0xe1, "Exif\0\0II*\0\x8\0\0\0\xff\xff"s),
                                 segment(0xe1, "Exif\0\0XX*\0\x8\0\0\0"s)};
    for (const std::string& exif : exifs) {
        const std::string file = withSegments(photo, {exif});
        EXPECT_EQ(exifOrientation(*walkJpeg(file)), std::nullopt);
    }
}

}  // namespace
}  // namespace quorvane::media
