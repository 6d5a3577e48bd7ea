#include "media/scene/sheet.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace quorvane::media {
namespace {

RgbImage filled(int width, int height, uint8_t red, uint8_t green, uint8_t blue) {
    RgbImage image(width, height);
    for (size_t i = 0; i < image.samples.size(); i += 3) {
        image.samples[i] = red;
        image.samples[i + 1] = green;
        image.samples[i + 2] = blue;
    }
    return image;
}

size_t countOf(const RgbImage& image, uint8_t red, uint8_t green, uint8_t blue) {
    size_t count = 0;
    for (size_t i = 0; i < image.samples.size(); i += 3)
        count += image.samples[i] == red && image.samples[i + 1] == green && image.samples[i + 2] == blue;
    return count;
}

TEST(ContactSheet, ShowsEveryPanelInFull) {
    const RgbImage sheet = contactSheet({{"one", filled(40, 30, 255, 0, 0)},
                                         {"two", filled(80, 60, 0, 255, 0)},
                                         {"three", filled(8, 6, 0, 0, 255)}},
                                        2, 80);
    EXPECT_EQ(countOf(sheet, 255, 0, 0), 80u * 60u);
    EXPECT_EQ(countOf(sheet, 0, 255, 0), 80u * 60u);
    EXPECT_EQ(countOf(sheet, 0, 0, 255), 80u * 60u);
}

TEST(ContactSheet, WritesTheLabels) {
    const auto ink = [](const std::string& label) {
        const RgbImage sheet = contactSheet({{label, filled(100, 10, 24, 24, 24)}}, 1, 200);
        return std::count_if(sheet.samples.begin(), sheet.samples.end(),
                             [](uint8_t sample) { return sample > 128; });
    };
    EXPECT_GT(ink("depth"), 100);
    EXPECT_GT(ink("depth as shaped"), ink("depth"));
}

TEST(ContactSheet, LettersOfAllHeightsStandOnOneLine) {
    // Of the first letter, which has no descender.
    const auto lowest_ink = [](const std::string& label) {
        const RgbImage sheet = contactSheet({{label, filled(100, 10, 24, 24, 24)}}, 1, 100);
        int lowest = 0;
        for (int y = 0; y < sheet.height; ++y)
            for (int x = 16; x < 26; ++x)
                if (sheet.at(x, y) > 128) lowest = y;
        return lowest;
    };
    ASSERT_GT(lowest_ink("HHH"), 0);
    EXPECT_EQ(lowest_ink("Hxx"), lowest_ink("xxx"));
    EXPECT_EQ(lowest_ink("Hgg"), lowest_ink("HHH"));
    EXPECT_EQ(lowest_ink("xxx"), lowest_ink("HHH"));
}

TEST(ContactSheet, FitsAnotherAspectIntoItsBox) {
    const RgbImage sheet =
        contactSheet({{"a", filled(60, 60, 1, 2, 3)}, {"b", filled(10, 40, 9, 250, 9)}}, 2, 60);
    EXPECT_EQ(countOf(sheet, 9, 250, 9), 15u * 60u);
}

TEST(ToRgb, RepeatsGrayAndDropsAlpha) {
    GrayImage gray(2, 1);
    gray.samples = {7, 9};
    EXPECT_EQ(toRgb(gray).samples, (std::vector<uint8_t>{7, 7, 7, 9, 9, 9}));
    RgbaImage rgba(1, 1);
    rgba.samples = {1, 2, 3, 4};
    EXPECT_EQ(toRgb(rgba).samples, (std::vector<uint8_t>{1, 2, 3}));
}

}  // namespace
}  // namespace quorvane::media
