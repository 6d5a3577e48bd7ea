// The command that lists motions and draws a sheet of them.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

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

TEST(MotionsCommand, DrawsARowForEachMotion) {
    const TemporaryFolder folder;
    const auto sheet = [&](const std::vector<std::string>& options) {
        std::vector<std::string> arguments = {"motions", "-o", folder / "sheet.png"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const Outcome outcome = quorvane(arguments);
        EXPECT_EQ(outcome.code, 0) << outcome.err;
        return media::readPhoto(folder / "sheet.png");
    };
    writeBytes(folder / "hand.jsonl", "{\"t\":0,\"x\":-1,\"y\":0}\n{\"t\":1,\"x\":1,\"y\":0.5,\"zoom\":2}\n");
    const media::RgbImage one = sheet({"--motion", "x=sin(2)", "--frames", "8"});
    const media::RgbImage two =
        sheet({"--motion", "x=sin(2)", "--motion-file", folder / "hand.jsonl", "--ping-pong"});
    EXPECT_EQ(two.width, one.width);
    EXPECT_GT(two.height, one.height + 100);
    // What stands still is five times the same picture, and what moves is not.
    const auto differ = [](const media::RgbImage& row) {
        const int step = (row.width - 16) / 7;
        int differing = 0;
        for (int y = 16; y < row.height - 46; ++y)
            for (int x = 16 + 2 * step; x < 3 * step; ++x)
                differing += row.at(x, y) != row.at(x + step, y) ? 1 : 0;
        return differing;
    };
    EXPECT_GT(differ(one), 1000);
    EXPECT_EQ(differ(sheet({"--motion", "still", "--frames", "8"})), 0);
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
