#include <cmath>
#include <cstdio>
#include <limits>

#include "support/component_test.h"
#include "support/models.h"

namespace quorvane::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::SizeIs;
using ::testing::StartsWith;

// The value that the angles are converted with.
constexpr double kPi = 3.1415926;

constexpr char kFormat[] =
    "x_offset: %f, y_offset: %f, Pre_shift_z: %f, z_axis: %f, m_z_factor: %f, axis_angle: %f, "
    "axis_angle_limit: %f, weight: %d\n";

struct Logged {
    double x_offset, y_offset, pre_shift_z, z_axis, z_factor, axis_angle, axis_angle_limit;
    int weight;
};

class Projection : public ComponentTest {
  protected:
    /// A renderer as after setting up a 1920 x 1080 output and a depth map, without either.
    Projection() {
        renderer.m_OBJ_CORD_X = 34.052525f;
        renderer.m_z_factor = 40.0f;
        renderer.m_mvpLocHandle = 21;
    }

    Logged logged() {
        forget();
        renderer.setupProjection();
        EXPECT_EQ(log.lines().size(), 1u);
        Logged values = {};
        const std::string text = log.texts().at(0);
        const int read = std::sscanf(
            text.c_str(),
            "x_offset: %lf, y_offset: %lf, Pre_shift_z: %lf, z_axis: %lf, m_z_factor: %lf, axis_angle: "
            "%lf, axis_angle_limit: %lf, weight: %d",
            &values.x_offset, &values.y_offset, &values.pre_shift_z, &values.z_axis, &values.z_factor,
            &values.axis_angle, &values.axis_angle_limit, &values.weight);
        EXPECT_EQ(read, 8) << text;
        return values;
    }

    Matrix projected() {
        renderer.setupProjection();
        return shaderView(renderer.m_mvpL);
    }

    /// Where the whole view should map a position, worked out in double.
    Matrix expected(double far_z = 164.0) const {
        const double z = renderer.m_z_factor;
        const double half_w = 0.30375 * double{renderer.m_OBJ_CORD_X};
        const double half_h = 0.30375 * double{renderer.m_OBJ_CORD_Y};
        const double gain = renderer.params.trans_to_rotate_scale;
        const double x_angle = renderer.m_transX * gain * renderer.params.rotate_x_boundary;
        const double y_angle = renderer.m_transY * gain * renderer.params.rotate_y_boundary;
        return frustum(-half_w, half_w, -half_h, half_h, 12, far_z) * translation(0, 0, -z) *
               rotation(-x_angle, 0, 1, 0) * rotation(-y_angle, 1, 0, 0) * translation(0, 0, z);
    }

    static void expectNear(const Matrix& actual, const Matrix& wanted) {
        for (int row = 0; row < 4; ++row)
            for (int column = 0; column < 4; ++column)
                // A dozen float roundings of values up to the far plane's.
                EXPECT_NEAR(actual.m[row][column], wanted.m[row][column], 3e-5)
                    << "row " << row << ", column " << column;
    }

    ESRenderer renderer;
};

TEST_F(Projection, AtRestIsTheFrustumAlone) {
    const Matrix at_rest = projected();
    expectNear(at_rest,
               frustum(-0.30375 * 34.052525, 0.30375 * 34.052525, -0.30375 * 18.5, 0.30375 * 18.5, 12, 164));
    // The two translations cancel exactly, so not even a rounding is left.
    EXPECT_EQ(at_rest.m[0][2], 0.0);
    EXPECT_EQ(at_rest.m[0][3], 0.0);
    EXPECT_EQ(at_rest.m[1][3], 0.0);
    EXPECT_EQ(at_rest.m[3][2], -1.0);
    EXPECT_EQ(at_rest.m[3][3], 0.0);
}

TEST_F(Projection, VisiblePartAtDistance32IsTheFieldOfViewFactor) {
    const Vector edge = projected() * Vector{0.81 * 34.052525, 0.81 * 18.5, -32, 1};
    EXPECT_NEAR(edge.x / edge.w, 1.0, 1e-5);
    EXPECT_NEAR(edge.y / edge.w, 1.0, 1e-5);
}

TEST_F(Projection, FullPositionTurnsBy7Point2DegreesAboutTheYAxis) {
    renderer.m_transX = 1.0f;
    const Matrix turned = projected();
    const double half_w = 0.30375 * 34.052525, half_h = 0.30375 * 18.5;
    expectNear(turned, frustum(-half_w, half_w, -half_h, half_h, 12, 164) * translation(0, 0, -40) *
                           rotation(-7.2, 0, 1, 0) * translation(0, 0, 40));
    EXPECT_NEAR(logged().axis_angle, 7.2, 0.002);
}

TEST_F(Projection, PivotMapsToItself) {
    renderer.m_transX = 1.0f;
    renderer.m_transY = -0.7f;
    const Vector turned = projected() * Vector{0, 0, -40, 1};
    renderer.m_transX = renderer.m_transY = 0.0f;
    const Vector at_rest = projected() * Vector{0, 0, -40, 1};
    EXPECT_NEAR(turned.x, at_rest.x, 1e-4);
    EXPECT_NEAR(turned.y, at_rest.y, 1e-4);
    EXPECT_NEAR(turned.z, at_rest.z, 1e-4);
    EXPECT_NEAR(turned.w, at_rest.w, 1e-4);
}

TEST_F(Projection, TurnsAboutXFirstAndThenAboutY) {
    for (const float x : {-1.0f, -0.3f, 0.0f, 0.9677f})
        for (const float y : {-0.96875f, 0.0f, 0.2f, 1.0f}) {
            SCOPED_TRACE(testing::Message() << x << ", " << y);
            renderer.m_transX = x;
            renderer.m_transY = y;
            expectNear(projected(), expected());
        }
}

TEST_F(Projection, AnglesHaveNoLimit) {
    renderer.m_transX = 5.0f;
    expectNear(projected(), expected());
    EXPECT_NEAR(logged().axis_angle, 36.0, 0.002);
}

TEST_F(Projection, EachAxisHasItsOwnBoundary) {
    renderer.params.rotate_x_boundary = 14.0f;
    renderer.params.rotate_y_boundary = 10.0f;
    renderer.m_transX = 0.5f;
    renderer.m_transY = 0.5f;
    expectNear(projected(), expected());
    renderer.m_transY = 0.0f;
    EXPECT_NEAR(logged().axis_angle, 0.5 * 0.6 * 14, 0.002);
    renderer.m_transX = 0.0f;
    renderer.m_transY = 0.5f;
    EXPECT_NEAR(logged().axis_angle, 0.5 * 0.6 * 10, 0.002);
}

TEST_F(Projection, OtherPivotDistanceTurnsAboutThatPoint) {
    renderer.m_z_factor = 50.0f;
    renderer.m_transX = 0.8f;
    expectNear(projected(), expected());
}

TEST_F(Projection, WithoutADepthMapTheCameraIsThePivot) {
    renderer.m_z_factor = 0.0f;
    renderer.m_transX = 1.0f;
    expectNear(projected(), expected());
    const Logged values = logged();
    EXPECT_EQ(values.x_offset, 0.0);
    EXPECT_EQ(values.y_offset, 0.0);
    EXPECT_EQ(values.z_axis, 0.0);
}

TEST_F(Projection, FarPlaneLies64BehindTheExtension) {
    renderer.params.far_offset_ext = 0.0f;
    expectNear(projected(), expected(64.0));
    const Vector far_point = shaderView(renderer.m_mvpL) * Vector{0, 0, -64, 1};
    EXPECT_NEAR(far_point.z / far_point.w, 1.0, 1e-5);
}

TEST_F(Projection, SmallerFieldOfViewFactorShowsLess) {
    renderer.params.fov_scale = 0.5f;
    const Vector edge = projected() * Vector{0.5 * 34.052525, 0.5 * 18.5, -32, 1};
    EXPECT_NEAR(edge.x / edge.w, 1.0, 1e-5);
    EXPECT_NEAR(edge.y / edge.w, 1.0, 1e-5);
}

TEST_F(Projection, MatrixIsUploadedOnceUntransposedAndChecked) {
    forget();
    gl.matrix_uploads.clear();
    renderer.m_transX = 0.4f;
    renderer.setupProjection();
    EXPECT_THAT(timeline.lines(), ElementsAre(StartsWith("D x_offset: "),
                                              "glUniformMatrix4fv(21, 1, GL_FALSE, data)", "glGetError()"));
    ASSERT_THAT(gl.matrix_uploads, SizeIs(1));
    const float* held = &renderer.m_mvpL.mat[0][0];
    EXPECT_EQ(gl.matrix_uploads[0].values, std::vector<float>(held, held + 16));
    EXPECT_EQ(gl.matrix_uploads[0].transpose, GL_FALSE);
}

TEST_F(Projection, UploadErrorIsLogged) {
    gl.errorAfter("glUniformMatrix4fv", GL_INVALID_OPERATION);
    forget();
    renderer.setupProjection();
    EXPECT_EQ(log.lines().back(), debugLine("after glUniformMatrix4fv() glError (0x502)\n"));
}

TEST_F(Projection, UnchangedInputsUploadTheSameMatrix) {
    gl.matrix_uploads.clear();
    renderer.m_transX = 0.3f;
    renderer.m_transY = -0.6f;
    renderer.setupProjection();
    renderer.setupProjection();
    EXPECT_EQ(gl.matrix_uploads.at(0).values, gl.matrix_uploads.at(1).values);
}

TEST_F(Projection, SecondMatrixIsTheIdentityAfterEveryCall) {
    for (const float x : {0.0f, 1.0f}) {
        for (auto& column : renderer.m_mvpR.mat)
            for (float& element : column) element = 7.0f;
        renderer.m_transX = x;
        renderer.setupProjection();
        for (int i = 0; i < 4; ++i)
            for (int j = 0; j < 4; ++j) EXPECT_EQ(renderer.m_mvpR.mat[i][j], i == j ? 1.0f : 0.0f);
    }
}

TEST_F(Projection, DefaultsLogTheirWorkedValues) {
    const Logged values = logged();
    EXPECT_NEAR(values.axis_angle_limit, 16.95, 0.01);
    EXPECT_EQ(values.axis_angle, 0.0);
    EXPECT_EQ(values.z_axis, 40.0);
    EXPECT_EQ(values.z_factor, 40.0);
    EXPECT_EQ(values.weight, 8);
}

TEST_F(Projection, LimitAngleIsTheAngleOfBothTurnsTogether) {
    renderer.params.rotate_x_boundary = 14.0f;
    renderer.params.rotate_y_boundary = 10.0f;
    const double cx = std::cos(14 * kPi / 180), cy = std::cos(10 * kPi / 180);
    const double angle = std::acos((cx + cy + cx * cy - 1) / 2) * 180 / kPi;
    // The trace is a float near 3, which an arc cosine makes much coarser.
    EXPECT_NEAR(logged().axis_angle_limit, angle, 0.001);
}

/// The offsets and the shift with every stated rounding.
struct Offsets {
    float x_offset, y_offset, final_trans_z;

    Offsets(float w, float h, float z_axis, float x_limit, float y_limit) {
        const float x_shift = static_cast<float>(double{w} * std::sin(double{x_limit} * kPi / 180.0));
        const float y_shift = static_cast<float>(double{h} * std::sin(double{y_limit} * kPi / 180.0));
        const float z_per_w = z_axis / w;
        const float z_per_h = z_axis / h;
        x_offset = static_cast<float>((double{w} * (1.0 - std::cos(double{x_limit} * kPi / 180.0))) *
                                      double{z_per_w});
        y_offset = static_cast<float>((double{h} * (1.0 - std::cos(double{y_limit} * kPi / 180.0))) *
                                      double{z_per_h});
        const float x_sum = x_shift + x_offset;
        const float y_sum = y_shift + y_offset;
        final_trans_z = x_sum > y_sum ? x_sum : y_sum;
    }
};

TEST_F(Projection, OffsetsAreLoggedWithTheirRoundings) {
    const float sizes[][2] = {{34.052525f, 18.5f}, {11.580738f, 18.5f}, {3.25f, 97.125f}};
    for (const auto& size : sizes) {
        renderer.m_OBJ_CORD_X = size[0];
        renderer.m_OBJ_CORD_Y = size[1];
        renderer.params.rotate_x_boundary = 14.0f;
        renderer.params.rotate_y_boundary = 10.0f;
        renderer.m_depthContrastWeight = 30;
        const Offsets offsets(size[0], size[1], 40.0f, 14.0f, 10.0f);
        forget();
        renderer.setupProjection();
        char wanted[256];
        std::snprintf(wanted, sizeof wanted,
                      "x_offset: %f, y_offset: %f, Pre_shift_z: %f, z_axis: %f, m_z_factor: %f, ",
                      double{offsets.x_offset}, double{offsets.y_offset}, double{offsets.final_trans_z}, 40.0,
                      40.0);
        EXPECT_THAT(log.texts().at(0), StartsWith(wanted));
        EXPECT_THAT(log.texts().at(0), HasSubstr(", weight: 30\n"));
    }
}

TEST_F(Projection, OffsetIsThePivotDistanceTimesOneLessTheLimitsCosine) {
    const Logged values = logged();
    EXPECT_NEAR(values.x_offset, 40 * (1 - std::cos(12 * kPi / 180)), 1e-5);
    EXPECT_NEAR(values.y_offset, values.x_offset, 1e-5);
    EXPECT_NEAR(values.pre_shift_z, 34.052525 * std::sin(12 * kPi / 180) + values.x_offset, 1e-5);
}

TEST_F(Projection, TheLargerOfBothShiftsIsLogged) {
    renderer.m_OBJ_CORD_X = 5.0f;  // now the height's is larger
    EXPECT_NEAR(logged().pre_shift_z, 18.5 * std::sin(12 * kPi / 180) + 40 * (1 - std::cos(12 * kPi / 180)),
                1e-5);
}

TEST_F(Projection, NegativeBoundaryGivesTheSameLimitsAndTurnsTheOtherWay) {
    const Logged positive = logged();
    renderer.params.rotate_x_boundary = -12.0f;
    const Logged negative = logged();
    EXPECT_EQ(negative.x_offset, positive.x_offset);
    EXPECT_EQ(negative.pre_shift_z, positive.pre_shift_z);
    EXPECT_EQ(negative.axis_angle_limit, positive.axis_angle_limit);
    renderer.m_transX = 0.5f;
    const Matrix turned = projected();
    renderer.params.rotate_x_boundary = 12.0f;
    renderer.m_transX = -0.5f;
    expectNear(turned, projected());
}

TEST_F(Projection, LineIsLoggedWithDebuggingOffAndOn) {
    for (const uint32_t debug : {0u, 1u}) {
        renderer.m_debugEnable = debug;
        forget();
        renderer.setupProjection();
        ASSERT_THAT(log.lines(), SizeIs(1));
        EXPECT_EQ(log.lines()[0].priority, 3);
        EXPECT_EQ(log.lines()[0].tag, "AppQRVN");
    }
}

TEST_F(Projection, LineAtRestIsExactlyThis) {
    const Offsets offsets(34.052525f, 18.5f, 40.0f, 12.0f, 12.0f);
    const double limit = logged().axis_angle_limit;
    char wanted[256];
    std::snprintf(wanted, sizeof wanted, kFormat, double{offsets.x_offset}, double{offsets.y_offset},
                  double{offsets.final_trans_z}, 40.0, 40.0, 0.0, limit, 8);
    EXPECT_EQ(log.texts().at(0), wanted);
}

TEST_F(Projection, OnlyTheMatricesAreWritten) {
    renderer.setAccelerometerData(300.0f, 200.0f, 1.0f);
    const float x = renderer.m_transX, y = renderer.m_transY, z = renderer.m_transZ;
    renderer.setupProjection();
    EXPECT_EQ(renderer.m_transX, x);
    EXPECT_EQ(renderer.m_transY, y);
    EXPECT_EQ(renderer.m_transZ, z);
    EXPECT_EQ(renderer.m_z_factor, 40.0f);
    EXPECT_EQ(renderer.m_depthContrastWeight, 8);
}

TEST_F(Projection, FieldsThatAreOnlyKeptChangeNoMatrix) {
    renderer.m_transX = 0.3f;
    renderer.m_transY = 0.4f;
    const Matrix before = projected();
    renderer.m_transZ = 9.0f;
    renderer.m_camTransX = renderer.m_camTransY = renderer.m_camTransZ = 9.0f;
    renderer.m_targetTransX = renderer.m_targetTransY = renderer.m_targetTransZ = 9.0f;
    renderer.m_transStep = 9.0f;
    renderer.m_width = renderer.m_height = 9.0f;
    renderer.m_minDepth = renderer.m_maxDepth = 9;
    renderer.m_debugEnable = 1;
    renderer.params.rotate_z_trans = 9.0f;
    renderer.params.z_post_offset = 9.0f;
    renderer.params.offset_gain = 9.0f;
    renderer.params.offset_len = 9.0f;
    const Matrix after = projected();
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 4; ++column) EXPECT_EQ(after.m[row][column], before.m[row][column]);
}

TEST_F(Projection, NonFinitePositionGoesThroughToTheMatrix) {
    renderer.m_transX = std::numeric_limits<float>::infinity();
    EXPECT_TRUE(std::isnan(projected().m[0][0]));
}

TEST_F(Projection, BeforeSetupTheEmptyFrustumIsLeftOut) {
    ESRenderer fresh;
    fresh.setupProjection();
    // Neither a division by zero nor anything but the model-view at rest.
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j) EXPECT_EQ(fresh.m_mvpL.mat[i][j], i == j ? 1.0f : 0.0f);
}

// Float and double, step by step

float held(float value) {
    const volatile float rounded = value;
    return rounded;
}

RENDERMatrix turned(float x_angle, float y_angle) {
    RENDERMatrix m;
    renderMatrixLoadIdentity(&m);
    renderRotate(&m, -x_angle, 0.0f, 1.0f, 0.0f);
    renderRotate(&m, -y_angle, 1.0f, 0.0f, 0.0f);
    return m;
}

/// The trace is summed in floats; the angle comes from it in double.
float angleOf(const RENDERMatrix& m) {
    const float sum = held(held(m.mat[0][0] + m.mat[1][1]) + m.mat[2][2]);
    const float t = held(held(sum - 1.0f) * 0.5f);
    return static_cast<float>(std::acos(double{t}) * 180.0 / kPi);
}

TEST_F(Projection, LineFollowsItsFloatAndDoubleSteps) {
    renderer.m_depthContrastWeight = 24;
    for (int i = 1; i <= 200; ++i) {
        SCOPED_TRACE(i);
        const float x_limit = renderer.params.rotate_x_boundary = 0.2213f * static_cast<float>(i);
        const float y_limit = renderer.params.rotate_y_boundary = 44.9f - 0.2187f * static_cast<float>(i);
        const float z = renderer.m_z_factor = 3.7f * static_cast<float>(i);
        renderer.m_transX = 1.0f;
        renderer.m_transY = -0.7f;
        const float half[] = {renderer.m_OBJ_CORD_X, renderer.m_OBJ_CORD_Y};
        const float limit[] = {x_limit, y_limit};
        float shift[2], offset[2];
        for (int axis = 0; axis < 2; ++axis) {
            const double radians = double{limit[axis]} * kPi / 180.0;
            shift[axis] = static_cast<float>(double{half[axis]} * std::sin(radians));
            const double moved = double{half[axis]} * (1.0 - std::cos(radians));
            offset[axis] = static_cast<float>(moved * double{held(z / half[axis])});
        }
        const float x_total = held(shift[0] + offset[0]), y_total = held(shift[1] + offset[1]);
        const float x_angle = held(held(1.0f * 0.6f) * x_limit), y_angle = held(held(-0.7f * 0.6f) * y_limit);
        char line[512];
        std::snprintf(line, sizeof line, kFormat, double{offset[0]}, double{offset[1]},
                      double{x_total > y_total ? x_total : y_total}, double{z}, double{z},
                      double{angleOf(turned(x_angle, y_angle))}, double{angleOf(turned(x_limit, y_limit))},
                      24);
        forget();
        renderer.setupProjection();
        EXPECT_THAT(log.texts(), ElementsAre(line));
    }
}

TEST_F(Projection, AnglesMultiplyThePositionByTheGainFirst) {
    RENDERMatrix lens;
    renderMatrixLoadIdentity(&lens);
    const float scale = static_cast<float>(double{renderer.params.fov_scale} * 12.0 / 32.0);
    const float right = held(renderer.m_OBJ_CORD_X * scale), top = held(renderer.m_OBJ_CORD_Y * scale);
    renderFrustum(&lens, -right, right, -top, top, 12.0f, 164.0f);
    for (int i = 1; i <= 300; ++i) {
        SCOPED_TRACE(i);
        renderer.m_transX = 0.0031f * static_cast<float>(i);
        renderer.m_transY = 0.93f - 0.0029f * static_cast<float>(i);
        const float x_angle = held(held(renderer.m_transX * 0.6f) * 12.0f);
        const float y_angle = held(held(renderer.m_transY * 0.6f) * 12.0f);
        const RENDERMatrix turn = turned(x_angle, y_angle);
        RENDERMatrix wanted;
        renderMatrixLoadIdentity(&wanted);
        renderTranslate(&wanted, 0.0f, 0.0f, -40.0f);
        renderMatrixMultiply(&wanted, &turn, &wanted);
        renderTranslate(&wanted, 0.0f, 0.0f, 40.0f);
        renderMatrixMultiply(&wanted, &wanted, &lens);
        renderer.setupProjection();
        for (int column = 0; column < 4; ++column)
            EXPECT_THAT(renderer.m_mvpL.mat[column], ::testing::ElementsAreArray(wanted.mat[column]));
    }
}

}  // namespace
}  // namespace quorvane::test
