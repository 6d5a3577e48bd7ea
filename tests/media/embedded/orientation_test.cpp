#include "media/embedded/orientation.h"

#include <gtest/gtest.h>

#include "support/photo_writers/pictures.h"
#include "support/photo_writers/turned.h"

namespace quorvane::media {
namespace {

TEST(Orientation, TwoTurnsMakeTheOneThatShowsTheSame) {
    const GrayImage stored = test::somePlane(5, 3);
    for (int first = 1; first <= 8; ++first)
        for (int second = 1; second <= 8; ++second) {
            const GrayImage expected = test::turned(test::turned(stored, first), second);
            const Turn both = followedBy(turnOfExif(first), turnOfExif(second));
            const GrayImage shown = test::turned(stored, exifOfTurn(both));
            EXPECT_EQ(shown.width, expected.width) << first << " and " << second;
            EXPECT_EQ(shown.samples, expected.samples) << first << " and " << second;
        }
}

TEST(Orientation, NamedTurnsAreThoseOfExif) {
    EXPECT_EQ(exifOfTurn(0), 1);
    EXPECT_EQ(exifOfTurn(kMirrored), 2);
    EXPECT_EQ(exifOfTurn(kClockwise180), 3);
    EXPECT_EQ(exifOfTurn(kFlipped), 4);
    EXPECT_EQ(exifOfTurn(kTransposed), 5);
    EXPECT_EQ(exifOfTurn(kClockwise90), 6);
    EXPECT_EQ(exifOfTurn(kClockwise270), 8);
}

}  // namespace
}  // namespace quorvane::media
