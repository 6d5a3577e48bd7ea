#include "composition/stretch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <random>
#include <vector>

#include "tests/composition/model_scene.h"

namespace quorvane {
namespace {

constexpr double kDegree = 3.14159265358979323846 / 180.0;
constexpr int kColumns = 24, kRows = 16;

Camera tuned() {
    Camera camera;
    camera.pivot_distance = 40.0;
    camera.x_turn_deg = camera.y_turn_deg = 7.2;
    return camera;
}

/// So far that the coarse cells of these scenes become streaks.
Camera wide() {
    Camera camera = tuned();
    camera.x_turn_deg = camera.y_turn_deg = 24.0;
    return camera;
}

struct Scene {
    std::vector<uint8_t> depth;
    BentGrid grid;

    explicit Scene(const std::function<double(int column, int row)>& depth_at) {
        grid.depth.width = kColumns;
        grid.depth.height = kRows;
        grid.half_width = 27.75;
        grid.half_height = 18.5;
        for (int row = 0; row < kRows; ++row)
            for (int column = 0; column < kColumns; ++column)
                depth.push_back(static_cast<uint8_t>(std::clamp(depth_at(column, row), 0.0, 255.0)));
        grid.depth.samples = depth.data();
    }
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;
};

size_t cellAt(int column, int row) { return static_cast<size_t>(row * kColumns + column); }

Scene nearDisc() {
    return Scene([](int column, int row) {
        return std::hypot(column + 0.5 - 11.0, row + 0.5 - 8.0) < 4.0 ? 230.0 : 20.0;
    });
}

/// The picture of a photo of 32 x 32 white pixels for every cell that is `lit`, all else black, drawn by a
/// renderer that knows nothing of stretch: the part of its pixels that are white.
double whitePart(const Scene& scene, const Camera& camera, ViewPosition position, double fov_scale,
                 const std::function<bool(size_t cell)>& lit) {
    constexpr int kSide = 32;
    test::ModelScene drawn = modelScene(scene.grid, camera, position, fov_scale);
    drawn.photo_width = kColumns * kSide;
    drawn.photo_height = kRows * kSide;
    for (int y = 0; y < drawn.photo_height; ++y)
        for (int x = 0; x < drawn.photo_width; ++x)
            drawn.photo.insert(drawn.photo.end(), 3, lit(cellAt(x / kSide, y / kSide)) ? 255 : 0);
    drawn.width = 900;
    drawn.height = 600;
    const std::vector<double> picture = modelPicture(drawn);
    double sum = 0.0;
    for (const double sample : picture) sum += sample;
    return sum / 255.0 / static_cast<double>(picture.size());
}

TEST(Stretch, IsNoneAtRest) {
    const Scene scene = nearDisc();
    const Stretch stretch = stretchOf(scene.grid, tuned(), 1.0, {});
    for (const float times : stretch.times) EXPECT_NEAR(times, 1.0, 1e-5);
    EXPECT_EQ(stretch.streaked_part, 0.0);
}

// Seen from the side every upright edge of a cell stays upright, so a cell is a trapezium.
TEST(Stretch, OfAnUprightProfileIsThatOfItsTrapeziums) {
    std::mt19937 random(11);
    std::vector<double> profile(kColumns);
    for (double& level : profile) level = static_cast<double>(random() % 256);
    const Scene scene([&](int column, int) { return profile[static_cast<size_t>(column)]; });
    const Camera camera = wide();
    const std::vector<ViewPosition> positions = {{-1.0, 0.0}, {0.4, 0.0}, {1.0, 0.0}};
    const Stretch stretch = stretchOf(scene.grid, camera, 2.0, positions);

    std::vector<double> expected(kColumns, 1.0);
    double part = 0.0;
    for (const ViewPosition& position : positions) {
        struct Edge {
            double x, height;  // 1 at rest
        };
        std::vector<Edge> edges;
        for (int i = 0; i <= kColumns; ++i) {
            const double left = profile[static_cast<size_t>(std::max(0, i - 1))];
            const double right = profile[static_cast<size_t>(std::min(kColumns - 1, i))];
            const double distance = 44.8 - 14.0 * (left + right) / 2.0 / 255.0;
            const double x = (2.0 * i / kColumns - 1.0) * scene.grid.half_width * distance / 32.0;
            const double behind = distance - camera.pivot_distance;
            const double turn = position.x * camera.x_turn_deg * kDegree;
            const double turned_x = x * std::cos(turn) + behind * std::sin(turn);
            const double turned_distance =
                camera.pivot_distance + behind * std::cos(turn) - x * std::sin(turn);
            edges.push_back(
                {turned_x / turned_distance * 32.0 / scene.grid.half_width, distance / turned_distance});
        }
        double streaks = 0.0;
        for (size_t i = 0; i < kColumns; ++i) {
            const double times = (edges[i + 1].x - edges[i].x) * kColumns / 2.0 *
                                 (edges[i].height + edges[i + 1].height) / 2.0;
            expected[i] = std::max(expected[i], times);
            if (times >= kStreak) streaks += times / kColumns;
        }
        part = std::max(part, streaks / 4.0);
    }
    for (int row = 0; row < kRows; ++row)
        for (int column = 0; column < kColumns; ++column)
            EXPECT_NEAR(stretch.times[cellAt(column, row)], expected[static_cast<size_t>(column)], 1e-4)
                << column << ", " << row;
    EXPECT_GT(part, 0.01);
    EXPECT_NEAR(stretch.streaked_part, part, 1e-6);
    const auto worst = std::max_element(expected.begin(), expected.end());
    EXPECT_NEAR(stretch.worst_times, *worst, 1e-4);
    EXPECT_NEAR(stretch.worst_x, (static_cast<double>(worst - expected.begin()) + 0.5) / kColumns, 1e-9);
}

TEST(Stretch, IsWhatTheCellCoversInThePicture) {
    const Scene scene = nearDisc();
    const double fov_scale = 0.9;
    for (const ViewPosition position : {ViewPosition{1.0, 0.0}, ViewPosition{-0.6, 0.8}}) {
        const Stretch stretch = stretchOf(scene.grid, wide(), fov_scale, {position});
        EXPECT_GT(stretch.worst_times, kStreak);
        const auto worst = static_cast<size_t>(stretch.worst_y * kRows) * kColumns +
                           static_cast<size_t>(stretch.worst_x * kColumns);
        const double cell_at_rest = 1.0 / (kColumns * kRows * fov_scale * fov_scale);
        for (const size_t cell : {worst, cellAt(3, 3), cellAt(11, 8)}) {
            const double covered =
                whitePart(scene, wide(), position, fov_scale, [cell](size_t other) { return other == cell; });
            EXPECT_NEAR(std::max(1.0, covered / cell_at_rest), static_cast<double>(stretch.times[cell]),
                        0.02 * covered / cell_at_rest)
                << "cell " << cell << " from " << position.x << ", " << position.y;
        }
        EXPECT_NEAR(
            whitePart(scene, wide(), position, fov_scale,
                      [&](size_t cell) { return static_cast<double>(stretch.times[cell]) >= kStreak; }),
            stretch.streaked_part, 0.06 * stretch.streaked_part)
            << "but for streaks behind the disc and on the rim";
    }
}

TEST(Stretch, LiesBesideTheNearThingAndOnTheSideThatIsLaidOpen) {
    const Scene scene = nearDisc();
    const Stretch left = stretchOf(scene.grid, wide(), 0.9, {{-1.0, 0.0}});
    const Stretch right = stretchOf(scene.grid, wide(), 0.9, {{1.0, 0.0}});
    for (const Stretch& stretch : {left, right}) {
        EXPECT_NEAR(std::hypot(stretch.worst_x * kColumns - 11.0, stretch.worst_y * kRows - 8.0), 4.0, 1.5);
    }
    EXPECT_LT((left.worst_x - 11.0 / kColumns) * (right.worst_x - 11.0 / kColumns), 0.0);
}

// A near thing moves over what lies to its right: the cells between are turned over and lie behind it,
// however large they are.
TEST(Stretch, CountsAFoldedCellInNoPicture) {
    Scene scene([](int column, int) { return column < 12 ? 255.0 : 0.0; });
    scene.grid.half_width = 9.0;
    const auto at_the_step = [&](double x) {
        const Stretch stretch = stretchOf(scene.grid, wide(), 1.0, {{x, 0.0}});
        return std::max(stretch.times[cellAt(11, 8)], stretch.times[cellAt(12, 8)]);
    };
    EXPECT_GT(std::max(at_the_step(1.0), at_the_step(-1.0)), 4.0f);
    EXPECT_EQ(std::min(at_the_step(1.0), at_the_step(-1.0)), 1.0f);
}

TEST(Stretch, DoesNotCountWhatIsOutsideTheFrame) {
    const Scene scene([](int column, int) { return column == 2 ? 255.0 : 0.0; });
    const std::vector<ViewPosition> sides = {{1.0, 0.0}, {-1.0, 0.0}};
    const Stretch whole = stretchOf(scene.grid, wide(), 1.0, sides);
    EXPECT_LT(whole.worst_x, 4.0 / kColumns);
    EXPECT_GT(whole.worst_times, kStreak);
    EXPECT_GT(whole.streaked_part, 0.01);
    const Stretch inside = stretchOf(scene.grid, wide(), 0.5, sides);
    EXPECT_LT(inside.worst_times, kStreak);
    EXPECT_EQ(inside.streaked_part, 0.0);
}

TEST(Stretch, SeenIsAllThatAnyPictureShows) {
    const Scene scene = nearDisc();
    const std::vector<ViewPosition> positions = {{1.0, 0.0}, {-1.0, 0.0}};
    const Stretch stretch = stretchOf(scene.grid, tuned(), 0.8, positions);
    const auto count = std::count(stretch.seen.begin(), stretch.seen.end(), 1);
    EXPECT_GT(count, 0.64 * kColumns * kRows) << "more than at rest";
    EXPECT_LT(count, kColumns * kRows);
    // Only cells on the rim of what is seen reach into a picture with less than half of themselves.
    const auto unseen = [&](size_t cell) { return stretch.seen[cell] == 0; };
    for (const ViewPosition& position : positions)
        EXPECT_LT(whitePart(scene, tuned(), position, 0.8, unseen), 0.06);
    EXPECT_GT(whitePart(scene, tuned(), positions[0], 1.0, unseen), 0.1);
}

// A camera that comes as near as the near plane: no picture of it, and no number that is none.
TEST(Stretch, StaysANumberWhereTheGridComesTooNear) {
    const Scene scene = nearDisc();
    Camera camera = tuned();
    camera.x_turn_deg = 80.0;
    const Stretch stretch = stretchOf(scene.grid, camera, 1.0, {{1.0, 0.0}, {-1.0, 0.0}});
    for (const float times : stretch.times) {
        EXPECT_TRUE(std::isfinite(times));
        EXPECT_GE(times, 1.0f);
    }
    EXPECT_LE(stretch.streaked_part, 1.0);
}

}  // namespace
}  // namespace quorvane
