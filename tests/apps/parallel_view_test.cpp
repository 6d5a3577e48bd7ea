#include "apps/quorvane/drawing/parallel_view.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>

namespace quorvane::app {
namespace {

constexpr double kRadians = 3.14159265358979323846 / 180.0;

/// Red says the column of every pixel, green its row, from 20 to 220.
media::RgbaImage coordinates(int width, int height) {
    media::RgbaImage image(width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            uint8_t* to = &image.at(x, y);
            to[0] = static_cast<uint8_t>(std::lround(20 + 200 * (x + 0.5) / width));
            to[1] = static_cast<uint8_t>(std::lround(20 + 200 * (y + 0.5) / height));
            to[3] = 255;
        }
    return image;
}

/// Where the turned camera sees, from -1 to 1, what the parallel one has at (x, y): along the line of sight,
/// which is turned to the right by as much as the camera is turned to the left.
std::array<double, 2> seen(const Lens& lens, double turn_deg, double zoom, double x, double y) {
    const double turn = turn_deg * kRadians;
    const double shift = std::tan(turn);
    const double to_right = x * lens.half_width / zoom - shift, down = y * lens.half_height / zoom;
    const double length = std::sqrt(to_right * to_right + 1.0);
    const double angle = std::atan2(to_right, 1.0) + turn;
    return {std::tan(angle) / lens.half_width, down / (length * std::cos(angle)) / lens.half_height};
}

TEST(ParallelView, ShowsWhatLiesInThatDirection) {
    const Lens lens = {0.7, 0.5};
    const media::RgbaImage from = coordinates(200, 140);
    for (const double turn : {-7.0, -2.0, 3.0, 9.0}) {
        const double zoom = zoomForParallel(lens, turn);
        media::RgbaImage out;
        makeParallel(from, lens, turn, zoom, &out);
        for (const int y : {0, 30, 70, 139})
            for (const int x : {0, 50, 100, 199}) {
                const auto [column, row] =
                    seen(lens, turn, zoom, (x + 0.5) / 100 - 1.0, (y + 0.5) / 70 - 1.0);
                EXPECT_NEAR(out.at(x, y), 20 + 100 * (column + 1), 1.6) << turn << " " << x << "," << y;
                EXPECT_NEAR((&out.at(x, y))[1], 20 + 100 * (row + 1), 1.6) << turn << " " << x << "," << y;
            }
        // What stays in place is in the middle of both.
        EXPECT_NEAR(seen(lens, turn, zoom, 0.0, 0.0)[0], 0.0, 1e-12);
    }
}

TEST(ParallelView, IsFilledAndNoSmallerThanThatTakes) {
    for (const Lens& lens : {Lens{0.7, 0.5}, Lens{0.3, 0.9}, Lens{1.2, 0.7}})
        for (const double turn : {0.0, 0.5, 7.2, -7.2, 15.0}) {
            const double zoom = zoomForParallel(lens, turn);
            double farthest = 0.0;
            for (const double x : {-1.0, 1.0})
                for (const double y : {-1.0, 1.0})
                    for (const double place : seen(lens, turn, zoom, x, y))
                        farthest = std::max(farthest, std::fabs(place));
            EXPECT_LE(farthest, 1.0 + 1e-9) << turn;
            if (zoom > 1.0) {
                EXPECT_NEAR(farthest, 1.0, 1e-9) << turn;
            }
        }
}

TEST(ParallelView, LeavesAViewThatIsNotTurned) {
    const Lens lens = {0.7, 0.5};
    const media::RgbaImage from = coordinates(40, 30);
    media::RgbaImage out;
    EXPECT_EQ(zoomForParallel(lens, 0.0), 1.0);
    makeParallel(from, lens, 0.0, 1.0, &out);
    EXPECT_EQ(out.samples, from.samples);
}

}  // namespace
}  // namespace quorvane::app
