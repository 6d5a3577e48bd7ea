#include "view/view_matrix.h"

#include <gtest/gtest.h>

#include <cmath>

#include "support/models.h"

namespace quorvane::test {
namespace {

View level() {
    View view = {};
    view.x_boundary = view.y_boundary = 12.0f;
    view.gain = 0.6f;
    view.fov_scale = 0.81f;
    view.far_offset = 100.0f;
    view.pivot = 40.0f;
    view.half_width = 34.0f;
    view.half_height = 18.5f;
    return view;
}

/// Where a view shows a point: -1..1 inside the picture.
Vector shown(const View& view, double x, double y, double z) {
    const Vector clip = shaderView(viewMatrix(view)) * Vector{x, y, z, 1.0};
    return {clip.x / clip.w, clip.y / clip.w, clip.z / clip.w, 1.0};
}

TEST(ViewMatrix, LevelViewShowsItsPartOfTheMeshFromEdgeToEdge) {
    const Vector corner = shown(level(), 0.81 * 34.0, -0.81 * 18.5, -32.0);
    EXPECT_NEAR(corner.x, 1.0, 1e-5);
    EXPECT_NEAR(corner.y, -1.0, 1e-5);
}

TEST(ViewMatrix, PivotStaysInTheMiddle) {
    for (const float x : {-1.0f, -0.3f, 0.0f, 1.0f})
        for (const float y : {-1.0f, 0.5f}) {
            View view = level();
            view.x = x;
            view.y = y;
            const Vector pivot = shown(view, 0.0, 0.0, -40.0);
            EXPECT_NEAR(pivot.x, 0.0, 1e-5);
            EXPECT_NEAR(pivot.y, 0.0, 1e-5);
        }
}

TEST(ViewMatrix, NearerThanThePivotMovesAgainstWhatIsFarther) {
    View view = level();
    view.x = 1.0f;
    EXPECT_LT(shown(view, 0.0, 0.0, -32.0).x * shown(view, 0.0, 0.0, -45.0).x, 0.0);
}

TEST(ViewCost, IsThatOfTheLimitAngles) {
    View view = level();
    view.y_boundary = 0.0f;
    const ViewCost cost = viewCost(view);
    const double angle = 12.0 * std::acos(-1.0) / 180.0;
    EXPECT_NEAR(cost.x_offset, 40.0 * (1.0 - std::cos(angle)), 1e-4);
    EXPECT_NEAR(cost.pre_shift, 34.0 * std::sin(angle) + cost.x_offset, 1e-4);
    EXPECT_NEAR(cost.angle_limit, 12.0, 1e-2);
    EXPECT_EQ(cost.angle, 0.0f);
    view.x = 1.0f;
    EXPECT_NEAR(viewCost(view).angle, 0.6 * 12.0, 1e-2);
}

}  // namespace
}  // namespace quorvane::test
