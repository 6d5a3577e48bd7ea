#include "composition/frame.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "tests/composition/model_scene.h"

namespace quorvane {
namespace {

constexpr double kDegree = 3.14159265358979323846 / 180.0;

/// The two tuned sets.
Camera tuned(bool first) {
    Camera camera;
    camera.pivot_distance = first ? 40.0 : 50.0;
    camera.x_turn_deg = 0.6 * (first ? 12.0 : 14.0);
    camera.y_turn_deg = 0.6 * (first ? 12.0 : 10.0);
    return camera;
}

/// A grid of about 20 cells on its longer side, with the extents that a picture of its aspect gets.
struct Scene {
    std::vector<uint8_t> depth;
    BentGrid grid;

    Scene(double aspect, const std::function<double(double u, double v)>& depth_at) {
        grid.depth.width = std::max(2, static_cast<int>(20 * std::min(1.0, aspect)));
        grid.depth.height = std::max(2, static_cast<int>(20 / std::max(1.0, aspect)));
        grid.half_height = 18.5;
        grid.half_width = 18.5 * aspect + 1.17;
        for (int j = 0; j < grid.depth.height; ++j)
            for (int i = 0; i < grid.depth.width; ++i)
                depth.push_back(static_cast<uint8_t>(std::clamp(
                    depth_at((i + 0.5) / grid.depth.width, (j + 0.5) / grid.depth.height), 0.0, 255.0)));
        grid.depth.samples = depth.data();
    }
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;
};

/// How many pixels of the picture of a white photo are not white, drawn by a renderer that knows nothing of
/// frames.
int borderPixels(const Scene& scene, const Camera& camera, ViewPosition position, double fov_scale) {
    test::ModelScene drawn = modelScene(scene.grid, camera, position, fov_scale);
    drawn.photo_width = drawn.photo_height = 2;
    drawn.photo.assign(12, 255);
    const double aspect = scene.grid.half_width / scene.grid.half_height;
    // Even sides: no pixel's centre lies on the grid's middle line, where rounding could miss both triangles.
    drawn.width = 2 * static_cast<int>(80 * std::min(1.0, aspect));
    drawn.height = 2 * static_cast<int>(80 / std::max(1.0, aspect));
    const std::vector<double> picture = modelPicture(drawn);
    return static_cast<int>(
        std::count_if(picture.begin(), picture.end(), [](double sample) { return sample < 254.5; }));
}

struct NamedDepth {
    const char* name;
    std::function<double(double, double)> at;
};

std::vector<NamedDepth> depths() {
    static std::mt19937 random(7);
    const auto noise = [](double, double) { return static_cast<double>(random() % 256); };
    const auto extremes = [](double, double) { return random() % 2 == 0 ? 0.0 : 255.0; };
    return {
        {"far", [](double, double) { return 0.0; }},
        {"near", [](double, double) { return 255.0; }},
        {"near rim",
         [](double u, double v) {
             return std::max(std::abs(u - 0.5), std::abs(v - 0.5)) > 0.4 ? 255.0 : 0.0;
         }},
        {"far rim",
         [](double u, double v) {
             return std::max(std::abs(u - 0.5), std::abs(v - 0.5)) > 0.4 ? 0.0 : 255.0;
         }},
        {"floor", [](double, double v) { return 255.0 * v; }},
        {"wall at the side", [](double u, double) { return 255.0 * u; }},
        {"waves", [](double u, double v) { return 127.0 * (1.0 + std::sin(9.0 * u) * std::cos(7.0 * v)); }},
        {"noise", noise},
        {"extremes", extremes}};
}

std::vector<ViewPosition> loop() {
    std::vector<ViewPosition> positions;
    for (int i = 0; i < 12; ++i)
        positions.push_back({std::sin(i * 30 * kDegree), std::cos(i * 30 * kDegree)});
    for (const double x : {-1.0, 1.0})
        for (const double y : {-1.0, 1.0}) positions.push_back({x, y});
    return positions;
}

TEST(LargestVisiblePart, IsTheWholePhotoAtRest) {
    for (const NamedDepth& depth : depths()) {
        const Scene scene(1.5, depth.at);
        EXPECT_NEAR(largestVisiblePart(scene.grid, tuned(true), {0.0, 0.0}), 1.0, 0.001) << depth.name;
    }
}

// A flat photo that stands in the pivot turns about its own middle: its farther edge comes in by the cosine
// of the turn, and once more for lying farther away.
TEST(LargestVisiblePart, OfAFlatPhotoInThePivotIsItsFartherEdge) {
    const double depth = 128.0;
    const Scene scene(4.0 / 3.0, [=](double, double) { return depth; });
    Camera camera = tuned(true);
    camera.pivot_distance = 44.8 - 14.0 * depth / 255.0;
    const double turn = camera.x_turn_deg * kDegree;
    const double sideways = std::cos(turn) / (1.0 + scene.grid.half_width / 32.0 * std::sin(turn));
    const double upwards = 1.0 / (1.0 + scene.grid.half_width / 32.0 * std::sin(turn));
    const double expected = std::min(sideways, upwards);
    EXPECT_NEAR(largestVisiblePart(scene.grid, camera, {1.0, 0.0}), expected, 0.001);
    EXPECT_NEAR(largestVisiblePart(scene.grid, camera, {-1.0, 0.0}), expected, 0.001);
}

TEST(LargestVisiblePart, LeavesNoBorderPixelAndIsNotSmallerThanItMustBe) {
    for (const NamedDepth& depth : depths())
        for (const double aspect : {1.0 / 3.0, 0.75, 1.0, 16.0 / 9.0, 3.0})
            for (const bool first : {true, false})
                for (const ViewPosition position :
                     {ViewPosition{1, 0}, ViewPosition{0, -1}, ViewPosition{-0.7, 0.7}, ViewPosition{1, 1}}) {
                    SCOPED_TRACE(std::string(depth.name) + ", aspect " + std::to_string(aspect) +
                                 (first ? ", first set, " : ", second set, ") + std::to_string(position.x) +
                                 ", " + std::to_string(position.y));
                    const Scene scene(aspect, depth.at);
                    const double part = largestVisiblePart(scene.grid, tuned(first), position);
                    ASSERT_GT(part, 0.0);
                    EXPECT_EQ(borderPixels(scene, tuned(first), position, part), 0);
                    // Two pixels more on each side; what noise puts into the picture may be smaller than a
                    // pixel.
                    if (std::string(depth.name) == "noise" || std::string(depth.name) == "extremes") continue;
                    EXPECT_GT(borderPixels(scene, tuned(first), position, part + 4.0 / 160.0), 0);
                }
}

TEST(SuggestFrame, LeavesNoBorderPixelInAnyPictureOfTheMotion) {
    for (const NamedDepth& depth : depths())
        for (const double aspect : {1.0 / 3.0, 1.0, 3.0})
            for (const bool first : {true, false}) {
                SCOPED_TRACE(std::string(depth.name) + ", aspect " + std::to_string(aspect) +
                             (first ? ", first set" : ", second set"));
                const Scene scene(aspect, depth.at);
                const Frame frame = suggestFrame(scene.grid, tuned(first), loop());
                EXPECT_GE(frame.fov_scale, kLeastVisiblePart);
                for (const ViewPosition& position : loop())
                    EXPECT_EQ(
                        borderPixels(scene, tuned(first),
                                     {position.x * frame.swing, position.y * frame.swing}, frame.fov_scale),
                        0);
            }
}

TEST(SuggestFrame, ReducesTheSwingRatherThanShowLessThanHalf) {
    const Scene scene(1.5, [](double u, double) { return 255.0 * u; });
    Camera camera = tuned(true);
    camera.x_turn_deg = 40.0;
    const Frame frame = suggestFrame(scene.grid, camera, {{1.0, 0.0}, {-1.0, 0.0}});
    EXPECT_LT(frame.swing, 0.9);
    EXPECT_GT(frame.swing, 0.1);
    EXPECT_NEAR(frame.fov_scale, kLeastVisiblePart, 0.001);
    for (const double side : {-1.0, 1.0})
        EXPECT_EQ(borderPixels(scene, camera, {side * frame.swing, 0.0}, frame.fov_scale), 0);
}

TEST(SuggestFrame, OfAllPositionsSuitsEachOfThem) {
    std::mt19937 random(3);
    std::uniform_real_distribution<double> anywhere(-1.0, 1.0);
    for (const NamedDepth& depth : depths()) {
        const Scene scene(0.75, depth.at);
        const Frame frame = suggestFrame(scene.grid, tuned(false), ViewPosition{0.9, 0.8});
        EXPECT_EQ(frame.swing, 1.0) << depth.name;
        double least = 1.0;
        for (int i = 0; i < 2000; ++i)
            least = std::min(least, largestVisiblePart(scene.grid, tuned(false),
                                                       {0.9 * anywhere(random), 0.8 * anywhere(random)}));
        EXPECT_LE(frame.fov_scale, least) << depth.name;
        EXPECT_GT(frame.fov_scale, least - 0.02) << depth.name;
    }
}

// A view from beyond the photo's edge: nothing is left to show.
TEST(LargestVisiblePart, IsNothingWhereThePhotoHasLeftThePicture) {
    const Scene scene(1.0, [](double, double) { return 0.0; });
    Camera camera = tuned(true);
    camera.pivot_distance = 0.0;
    camera.x_turn_deg = 60.0;
    EXPECT_EQ(largestVisiblePart(scene.grid, camera, {1.0, 0.0}), 0.0);
}

}  // namespace
}  // namespace quorvane
