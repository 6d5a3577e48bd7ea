// The values of options that are more than a word or a number.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <utility>

#include "apps/quorvane/drawing/motion.h"
#include "apps/quorvane/drawing/view_options.h"
#include "apps/quorvane/terminal/numbers.h"
#include "apps/quorvane/terminal/usage_error.h"

namespace quorvane::app {
namespace {

using testing::HasSubstr;

TEST(ParsePictureSize, TakesBothSidesTheLongerOneOrThePhotos) {
    EXPECT_EQ(parsePictureSize("1280x720").exact, (Size{1280, 720}));
    EXPECT_EQ(parsePictureSize("960").longest, 960);
    EXPECT_FALSE(parsePictureSize("960").exact);
    EXPECT_FALSE(parsePictureSize("photo").exact || parsePictureSize("photo").longest);
}

TEST(ParsePictureSize, RefusesEverythingElse) {
    for (const char* text : {"",
                             "x",
                             "0",
                             "16385",
                             "9.5",
                             "-3",
                             "10x",
                             "x10",
                             "0x10",
                             "-3x5",
                             "10x16385",
                             "1.5x2",
                             "10x10x10",
                             "ten x 10",
                             "10 x 10",
                             "0x10x10",
                             "1e9x1",
                             "nanx1",
                             "999999999999999999999x1",
                             "10X10",
                             "Photo"})
        EXPECT_THROW(parsePictureSize(text), UsageError) << text;
}

TEST(ParseBytes, UnitsOfThousandsAndOf1024) {
    const std::pair<const char*, int64_t> cases[] = {{"8MB", 8'000'000},
                                                     {"8MiB", 8'388'608},
                                                     {"500KB", 500'000},
                                                     {"500KiB", 512'000},
                                                     {"1.5 MB", 1'500'000},
                                                     {"8mb", 8'000'000},
                                                     {"2GB", 2'000'000'000},
                                                     {"1gib", 1'073'741'824},
                                                     {"8.2MB", 8'200'000},
                                                     {".5KB", 500},
                                                     {"1B", 1},
                                                     {"1.9B", 1},
                                                     {"1000GB", 1000'000'000'000}};
    for (const auto& [text, bytes] : cases) EXPECT_EQ(parseBytes("--fit", text), bytes) << text;
}

TEST(ParseBytes, RefusesEverythingElseAndSaysWhatIsWanted) {
    for (const char* text : {"", "8", "MB", "8M", "8 M B", "8MBs", "-8MB", "0MB", "0.0001KB", "1,5MB",
                             "1e3KB", "8..1MB", "1001GB", "0x8MB", " 8MB", "8MB ", "nanMB"}) {
        try {
            parseBytes("--fit", text);
            ADD_FAILURE() << text;
        } catch (const UsageError& error) {
            EXPECT_THAT(error.what(), testing::StartsWith("--fit " + std::string(text) + ": "));
            EXPECT_THAT(error.what(), HasSubstr("such as 8MB, 500KB or 10MiB"));
        }
    }
}

TEST(TextOfBytes, ThreeDigits) {
    EXPECT_EQ(textOfBytes(0), "0 B");
    EXPECT_EQ(textOfBytes(94), "94 B");
    EXPECT_EQ(textOfBytes(1000), "1 KB");
    EXPECT_EQ(textOfBytes(812'345), "812 KB");
    EXPECT_EQ(textOfBytes(7'620'000), "7.62 MB");
    EXPECT_EQ(textOfBytes(8'200'000), "8.2 MB");
    EXPECT_EQ(textOfBytes(10'420'224), "10.4 MB");
    EXPECT_EQ(textOfBytes(500'000'000), "500 MB");
    EXPECT_EQ(textOfBytes(16'000'000), "16 MB");
}

TEST(ParseFrame, TakesAutoOrAPart) {
    EXPECT_FALSE(parseFrame("auto"));
    EXPECT_EQ(parseFrame("0.9"), 0.9);
    EXPECT_EQ(parseFrame("1"), 1.0);
    for (const char* text : {"", "0", "0.01", "1.01", "-1", "half", "nan", "0.9x"})
        EXPECT_THROW(parseFrame(text), UsageError) << text;
}

TEST(ParsePosition, TakesTwoNumbers) {
    EXPECT_EQ(parsePosition("-1,0.25").x, -1.0);
    EXPECT_EQ(parsePosition("-1,0.25").y, 0.25);
}

TEST(ParsePosition, RefusesEverythingElse) {
    for (const char* text :
         {"", ",", "1", "1,", ",1", "1.01,0", "0,-2", "nan,0", "inf,0", "0;0", "0,0,0", "a,b"})
        EXPECT_THROW(parsePosition(text), UsageError) << text;
}

TEST(ParseSetting, TakesEveryParameter) {
    for (const char* field :
         {"rotate_z_trans", "rotate_x_boundary", "rotate_y_boundary", "trans_to_rotate_scale",
          "far_offset_ext", "z_post_offset", "guided_filter_rx", "guided_filter_ry", "guided_filter_eps",
          "depth_contrast", "border_deadzone", "fov_scale", "offset_gain", "offset_len"}) {
        // A value that every parameter's range holds but for border_deadzone's and the two fractions'.
        const std::string name(field);
        const std::string value = name == "border_deadzone"                            ? "20"
                                  : name == "guided_filter_eps" || name == "fov_scale" ? "0.5"
                                                                                       : "1";
        EXPECT_EQ(parseSetting(name + "=" + value).first, name);
    }
    EXPECT_EQ(parseSetting("fov_scale=0.75").second, 0.75);
    EXPECT_EQ(parseSetting("guided_filter_eps=1e-6").second, 1e-6);
}

std::string refusal(const std::string& text) {
    try {
        parseSetting(text);
    } catch (const UsageError& error) {
        return error.what();
    }
    return "not refused";
}

TEST(ParseSetting, ListsTheNamesForAnUnknownOne) {
    EXPECT_THAT(refusal("fov=1"), testing::AllOf(HasSubstr("unknown parameter 'fov'"),
                                                 HasSubstr("rotate_z_trans, "), HasSubstr(", offset_len")));
}

TEST(ParseSetting, SaysTheRange) {
    EXPECT_EQ(refusal("fov_scale=2"), "--set fov_scale=2: fov_scale: 2 is not a number from 0.05 to 1");
    EXPECT_EQ(refusal("guided_filter_rx=1.5"),
              "--set guided_filter_rx=1.5: guided_filter_rx: 1.5 is not a whole number from 0 to 1024");
    EXPECT_THAT(refusal("border_deadzone=0"), HasSubstr("whole number from 3"));
}

TEST(ParseSetting, RefusesWhatIsNoNumber) {
    for (const char* value : {"", "abc", "nan", "inf", "1,5", "0x10", " 1", "1 ", "1e999"})
        EXPECT_THAT(refusal(std::string("fov_scale=") + value), HasSubstr("is not a number")) << value;
    EXPECT_THAT(refusal("fov_scale"), HasSubstr("FIELD=VALUE is wanted"));
}

}  // namespace
}  // namespace quorvane::app
