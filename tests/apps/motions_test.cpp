// The command that lists motions and draws a sheet of them.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <utility>

#include "apps/quorvane/drawing/motion.h"
#include "media/picture/picture_file.h"
#include "process.h"
#include "support/temporary_folder.h"

namespace quorvane::test {
namespace {

using testing::HasSubstr;

TEST(MotionsCommand, ListsEveryMotionWithItsExpression) {
    const Outcome outcome = quorvane({"motions"});
    EXPECT_EQ(outcome.code, 0);
    for (const app::NamedMotion& motion : app::motions()) {
        EXPECT_THAT(outcome.out, testing::ContainsRegex(std::string(motion.name) + " +[xyz]"));
        EXPECT_THAT(outcome.out, HasSubstr(motion.expression));
        EXPECT_THAT(outcome.out, HasSubstr(std::string(motion.meaning) + "\n"));
    }
}

media::RgbImage sheet(const TemporaryFolder& folder, const std::vector<std::string>& options) {
    std::vector<std::string> arguments = {"motions", "-o", folder / "sheet.png"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    const Outcome outcome = quorvane(arguments);
    EXPECT_EQ(outcome.code, 0) << outcome.err;
    return media::readPhoto(folder / "sheet.png");
}

/// From a panel of a sheet to the next, in pixels; each lies 16 pixels behind such a step.
int stepOf(const media::RgbImage& sheet) { return (sheet.width - 16) / 7; }

/// In how many pixels of a sheet's only row a panel differs from the next; the pictures begin with panel 2.
int differ(const media::RgbImage& row, int panel) {
    const int step = stepOf(row);
    int differing = 0;
    for (int y = 16; y < row.height - 46; ++y)
        for (int x = 16 + panel * step; x < (panel + 1) * step; ++x)
            differing += row.at(x, y) != row.at(x + step, y) ? 1 : 0;
    return differing;
}

/// The mean place of about a colour in a panel, from its middle, to the right and up.
std::pair<double, double> placeOf(const media::RgbImage& row, int panel, std::array<int, 3> colour) {
    const int step = stepOf(row);
    double x_sum = 0.0, y_sum = 0.0, count = 0.0;
    for (int y = 16; y < row.height - 46; ++y)
        for (int x = 16 + panel * step; x < (panel + 1) * step; ++x) {
            const uint8_t* const pixel = &row.at(x, y);
            const auto is_near = [](int a, int b) { return std::abs(a - b) <= 40; };
            if (!std::equal(colour.begin(), colour.end(), pixel, is_near)) continue;
            x_sum += x + 0.5;
            y_sum += y + 0.5;
            ++count;
        }
    EXPECT_GT(count, 0.0);
    return {x_sum / count - (8.0 + (panel + 0.5) * step), (row.height - 30.0) / 2.0 - y_sum / count};
}

TEST(MotionsCommand, DrawsARowForEachMotion) {
    const TemporaryFolder folder;
    writeBytes(folder / "hand.jsonl", "{\"t\":0,\"x\":-1,\"y\":0}\n{\"t\":1,\"x\":1,\"y\":0.5,\"zoom\":2}\n");
    const media::RgbImage one = sheet(folder, {"--motion", "x=sin(2)", "--frames", "8"});
    const media::RgbImage two =
        sheet(folder, {"--motion", "x=sin(2)", "--motion-file", folder / "hand.jsonl", "--ping-pong"});
    EXPECT_EQ(two.width, one.width);
    EXPECT_GT(two.height, one.height + 100);
    // What stands still is five times the same picture, and what moves is not.
    EXPECT_GT(differ(one, 2), 1000);
    EXPECT_EQ(differ(sheet(folder, {"--motion", "still", "--frames", "8"}), 2), 0);
}

TEST(MotionsCommand, DrawsPlacesAndTimesTheRightWayRound) {
    const TemporaryFolder folder;
    const media::RgbImage row = sheet(folder, {"--motion", "x=-0.5 y=0.8", "--frames", "2"});
    const auto [dot_x, dot_y] = placeOf(row, 0, {255, 255, 255});
    EXPECT_LT(dot_x, -30.0);
    EXPECT_GT(dot_y, 60.0);
    EXPECT_LT(placeOf(row, 1, {255, 140, 90}).second, -30.0) << "x";
    EXPECT_GT(placeOf(row, 1, {110, 190, 255}).second, 60.0) << "y";
    // The second half of it stands still; gone through once, the last picture is its end.
    const media::RgbImage once = sheet(folder, {"--motion", "-1,0 1,0 1,0", "--once", "--frames", "9"});
    EXPECT_GT(differ(once, 2), 1000);
    EXPECT_EQ(differ(once, 4), 0);
    EXPECT_EQ(differ(once, 5), 0);
}

TEST(MotionsCommand, RefusesWhatItDoesNotUse) {
    const TemporaryFolder folder;
    EXPECT_THAT(quorvane({"motions", "--ease"}).err, HasSubstr("--ease: -o names the sheet"));
    EXPECT_THAT(quorvane({"motions", "--motion", "eight"}).err, HasSubstr("eight: -o names the sheet"));
    EXPECT_EQ(quorvane({"motions", "-o", folder / "sheet.jpg"}).code, 2);
    EXPECT_EQ(quorvane({"motions", "-o", folder / "sheet.png", "--motion", "x=2"}).code, 2);
    EXPECT_EQ(quorvane({"motions", "-o", folder / "sheet.png", "--motion-file", folder / "none"}).code, 1);
    EXPECT_THAT(folder.names(), testing::IsEmpty());
}

}  // namespace
}  // namespace quorvane::test
