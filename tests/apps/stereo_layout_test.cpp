#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>

#include "apps/quorvane/drawing/stereo.h"
#include "apps/quorvane/drawing/stereo_options.h"
#include "apps/quorvane/terminal/usage_error.h"

namespace quorvane::app {
namespace {

using media::RgbaImage;
using testing::HasSubstr;

RgbaImage painted(Size size, int red, int green, int blue) {
    RgbaImage image(size.width, size.height);
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) {
            uint8_t* to = &image.at(x, y);
            to[0] = static_cast<uint8_t>(red);
            to[1] = static_cast<uint8_t>(green);
            to[2] = static_cast<uint8_t>(blue);
            to[3] = 255;
        }
    return image;
}

/// Views whose red says which they are: 10 for the left eye's, 20 for the next.
std::vector<RgbaImage> numbered(size_t count) {
    std::vector<RgbaImage> views;
    for (size_t i = 0; i < count; ++i) views.push_back(painted({4, 2}, static_cast<int>(10 * (i + 1)), 0, 0));
    return views;
}

RgbaImage joined(const Stereo& stereo, const std::vector<RgbaImage>& views) {
    std::vector<const RgbaImage*> pointers;
    for (const RgbaImage& view : views) pointers.push_back(&view);
    RgbaImage out;
    join(stereo, pointers, &out);
    return out;
}

/// The red of the middles of the `columns` x `rows` parts of a picture, row by row.
std::vector<int> parts(const RgbaImage& image, int columns, int rows) {
    std::vector<int> red;
    for (int row = 0; row < rows; ++row)
        for (int column = 0; column < columns; ++column)
            red.push_back(image.at((2 * column + 1) * image.width / (2 * columns),
                                   (2 * row + 1) * image.height / (2 * rows)));
    return red;
}

TEST(StereoLayout, ViewsLieWhereThePlayerLooksForThem) {
    const std::vector<RgbaImage> eyes = numbered(2);
    EXPECT_EQ(parts(joined(parseStereo("sbs"), eyes), 2, 1), (std::vector<int>{10, 20}));
    EXPECT_EQ(parts(joined(parseStereo("cross"), eyes), 2, 1), (std::vector<int>{20, 10}));
    EXPECT_EQ(parts(joined(parseStereo("half-sbs"), eyes), 2, 1), (std::vector<int>{10, 20}));
    EXPECT_EQ(parts(joined(parseStereo("tb"), eyes), 1, 2), (std::vector<int>{10, 20}));
    // A quilt begins at the bottom left.
    EXPECT_EQ(parts(joined(parseStereo("quilt:3x2"), numbered(6)), 3, 2),
              (std::vector<int>{40, 50, 60, 10, 20, 30}));
    EXPECT_EQ(parts(joined(parseStereo("rgbd-bright-near"), eyes), 2, 1), (std::vector<int>{10, 20}));
    EXPECT_EQ(parts(joined(parseStereo("rgbd-dark-near"), eyes), 2, 1), (std::vector<int>{10, 235}));
}

TEST(StereoLayout, SizesAreThoseOfTheParts) {
    const Size view = {641, 481};
    EXPECT_EQ(joinedSize(parseStereo("sbs"), view), (Size{1282, 481}));
    EXPECT_EQ(joinedSize(parseStereo("tb"), view), (Size{641, 962}));
    EXPECT_EQ(joinedSize(parseStereo("anaglyph"), view), view);
    EXPECT_EQ(joinedSize(parseStereo("quilt:8x6"), view), (Size{5128, 2886}));
    EXPECT_EQ(joinableSize(parseStereo("half-sbs"), view, false), (Size{640, 481}));
    for (const char* layout : {"sbs", "half-sbs", "tb", "anaglyph", "cross", "wiggle", "quilt:3x5"}) {
        const Stereo stereo = parseStereo(layout);
        const Size whole = joinedSize(stereo, joinableSize(stereo, view, true));
        EXPECT_EQ(whole.width % 2 + whole.height % 2, 0) << layout;
    }
    const Stereo quilt = parseStereo("quilt:8x6");
    const int longest = usualLongestView(quilt, {4000, 3000}, 1920);
    EXPECT_EQ(longest, 512);
    EXPECT_LE(joinedSize(quilt, {longest, longest * 3 / 4}).width, 4096);
}

TEST(StereoLayout, SqueezingTakesTheMeanOfTwoColumns) {
    RgbaImage view(4, 1);
    view.samples = {10, 0, 0, 255, 13, 0, 0, 255, 100, 0, 0, 255, 200, 0, 0, 255};
    const RgbaImage out = joined(parseStereo("half-sbs"), {view, view});
    EXPECT_EQ((std::vector<int>{out.at(0, 0), out.at(1, 0), out.at(2, 0), out.at(3, 0)}),
              (std::vector<int>{12, 150, 12, 150}));
}

/// Dubois' matrix once more, on light: red of white is 0.4561 + 0.500484 + 0.176381 - 0.0434706 - 0.0879388 -
/// 0.00155529 and so on.
TEST(StereoLayout, AnaglyphsFollowTheMatrixInLight) {
    const Stereo stereo = parseStereo("anaglyph");
    const auto colour = [&](int l, int r) {
        const RgbaImage out = joined(stereo, {painted({2, 2}, l, l, l), painted({2, 2}, r, r, r)});
        return std::vector<int>(out.samples.begin(), out.samples.begin() + 4);
    };
    const auto encoded = [](double light) {
        light = std::min(std::max(light, 0.0), 1.0);
        return static_cast<int>(std::lround(
            255 * (light <= 0.0031308 ? 12.92 * light : 1.055 * std::pow(light, 1 / 2.4) - 0.055)));
    };
    const auto near = [](const std::vector<int>& got, const std::vector<int>& wanted) {
        for (size_t i = 0; i < 4; ++i) EXPECT_NEAR(got[i], wanted[i], 1) << i;
    };
    near(colour(255, 255), {255, encoded(0.99999), encoded(0.99997), 255});
    // What only the left eye sees is red; what only the right one sees is cyan.
    near(colour(255, 0), {255, 0, 0, 255});
    near(colour(0, 255), {0, 255, 255, 255});
    const double gray = std::pow((100 / 255.0 + 0.055) / 1.055, 2.4);
    near(colour(100, 0), {encoded(1.132965 * gray), 0, 0, 255});
    near(colour(0, 100), {0, encoded(1.0936657 * gray), encoded(1.0412863 * gray), 255});
    near(colour(0, 0), {0, 0, 0, 255});

    // The matrix as it was published, in thousandths.
    constexpr double kPublished[3][6] = {
        {456, 500, 176, -43, -88, -2}, {-40, -38, -16, 378, 734, -18}, {-15, -21, -5, -72, -113, 1226}};
    const auto light = [](int level) { return std::pow((level / 255.0 + 0.055) / 1.055, 2.4); };
    for (size_t raised = 0; raised < 6; ++raised) {
        std::array<int, 6> seen;
        seen.fill(110);
        seen[raised] = 190;
        const RgbaImage out = joined(
            stereo, {painted({1, 1}, seen[0], seen[1], seen[2]), painted({1, 1}, seen[3], seen[4], seen[5])});
        std::vector<int> wanted;
        for (const auto& row : kPublished) {
            double sum = 0.0;
            for (size_t k = 0; k < 6; ++k) sum += row[k] / 1000.0 * light(seen[k]);
            wanted.push_back(encoded(sum));
        }
        wanted.push_back(255);
        SCOPED_TRACE(raised);
        near(std::vector<int>(out.samples.begin(), out.samples.end()), wanted);
    }
}

TEST(StereoLayout, EyesStandApartAsTheHelpSays) {
    EXPECT_EQ(eyesFor({}, true), 1.0);
    EXPECT_EQ(eyesFor({}, false), 0.3);
    EXPECT_EQ(eyesFor({{}, 0.5}, false), 0.5);
}

TEST(StereoLayout, LeftEyeStandsToTheLeft) {
    Stereo stereo = parseStereo("sbs");
    stereo.eyes = 0.25;
    Position middle;
    middle.x = 0.5;
    middle.y = -0.3;
    const std::vector<StereoView> views = viewsAround(stereo, middle);
    ASSERT_EQ(views.size(), 2u);
    EXPECT_DOUBLE_EQ(views[0].position.x, 0.25);
    EXPECT_DOUBLE_EQ(views[1].position.x, 0.75);
    EXPECT_DOUBLE_EQ(views[0].position.y, -0.3);

    Stereo quilt = parseStereo("quilt:5x1");
    const std::vector<StereoView> tiles = viewsAround(quilt, {});
    ASSERT_EQ(tiles.size(), 5u);
    for (size_t i = 0; i < 5; ++i) EXPECT_DOUBLE_EQ(tiles[i].position.x, 0.5 * static_cast<double>(i) - 1.0);

    const std::vector<StereoView> colour_and_depth = viewsAround(parseStereo("rgbd-dark-near"), middle);
    ASSERT_EQ(colour_and_depth.size(), 2u);
    EXPECT_FALSE(colour_and_depth[0].shows_depth);
    EXPECT_TRUE(colour_and_depth[1].shows_depth);
    EXPECT_DOUBLE_EQ(colour_and_depth[1].position.x, 0.5);
}

std::vector<Position> line(const std::vector<double>& places) {
    std::vector<Position> path(places.size());
    for (size_t i = 0; i < places.size(); ++i) path[i].x = places[i];
    return path;
}

TEST(StereoLayout, EyesStayInTheSquareAndAsFarApart) {
    Stereo stereo = parseStereo("sbs");
    stereo.eyes = 0.3;
    const Route mono = {line({0.0, 1.0, 0.0, -1.0}), line({0.0, 0.5, 1.0, 0.5, 0.0, -1.0})};
    const Route route = stereoRoute(mono, stereo, {}, false);
    ASSERT_EQ(route.positions.size(), 4u);
    EXPECT_NEAR(route.positions[1].x, 0.7, 1e-12);
    EXPECT_NEAR(route.positions[3].x, -0.7, 1e-12);
    for (const Position& position : route.positions)
        for (const StereoView& view : viewsAround(stereo, position)) {
            EXPECT_LE(std::fabs(view.position.x), 1.0 + 1e-12);
            // The plan knows the place.
            bool known = false;
            for (const Position& planned : route.path)
                known = known || std::fabs(planned.x - view.position.x) < 1e-9;
            EXPECT_TRUE(known) << view.position.x;
        }
    // A motion that leaves the eyes room is left as it is.
    const Route small = stereoRoute({line({0.0, 0.5}), line({0.0, 0.5})}, stereo, {}, false);
    EXPECT_DOUBLE_EQ(small.positions[1].x, 0.5);
}

TEST(StereoLayout, AWiggleGoesFromEyeToEyeWhateverTheMotion) {
    Stereo stereo = parseStereo("wiggle");
    const Route route = stereoRoute({line({0.0, 0.3, 0.6, 0.9}), line({0.9})}, stereo, {}, false);
    ASSERT_EQ(route.positions.size(), 4u);
    for (size_t i = 0; i < 4; ++i) EXPECT_DOUBLE_EQ(route.positions[i].x, i % 2 == 0 ? -1.0 : 1.0);
}

TEST(StereoLayout, NamesSayWhatPlayersLookFor) {
    EXPECT_EQ(withSuffix("a/b.png", stereoSuffix(parseStereo("sbs"), {4, 3})), "a/b_SBS.png");
    EXPECT_EQ(withSuffix("b_sbs.mp4", "_SBS"), "b_sbs.mp4");
    EXPECT_EQ(withSuffix("b.png", stereoSuffix(parseStereo("quilt:8x6"), {3, 4})), "b_qs8x6a0.75.png");
    EXPECT_EQ(stereoSuffix(parseStereo("quilt:8x6"), {4, 3}), "_qs8x6a1.333");
    EXPECT_EQ(withSuffix("b.gif", stereoSuffix(parseStereo("wiggle"), {4, 3})), "b.gif");
    EXPECT_EQ(stereoSuffix(parseStereo("rgbd-dark-near"), {4, 3}), "_RGBD_dark-near");
    EXPECT_EQ(stereoSuffix(parseStereo("rgbd-bright-near"), {4, 3}), "_RGBD_bright-near");
}

TEST(StereoLayout, OtherWordsAreRefusedWithThoseThatThereAre) {
    const auto refusal = [](const std::string& text) -> std::string {
        try {
            parseStereo(text);
        } catch (const UsageError& error) {
            return error.what();
        }
        return "taken";
    };
    EXPECT_THAT(refusal("ou"), HasSubstr("half-sbs"));
    for (const char* quilt : {"quilt", "quilt:", "quilt:8", "quilt:0x6", "quilt:1x1", "quilt:1.5x2",
                              "quilt:99x99", "quilt:-8x-6", "quilt:8x6x2"})
        EXPECT_NE(refusal(quilt), "taken") << quilt;
}

}  // namespace
}  // namespace quorvane::app
