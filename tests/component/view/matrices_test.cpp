#include <quorvane/renderUtility.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <utility>

#include "support/guarded_bytes.h"
#include "support/models.h"

namespace quorvane::test {
namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();

RENDERMatrix loaded() {
    RENDERMatrix m;
    renderMatrixLoadIdentity(&m);
    return m;
}

/// Sixteen different small numbers, so that a swapped row or column shows.
RENDERMatrix numbered(float start) {
    RENDERMatrix m;
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j) m.mat[i][j] = start + static_cast<float>(4 * i + j);
    return m;
}

RENDERMatrix random(uint32_t seed) {
    const Bytes bytes = noise(16, seed);
    RENDERMatrix m;
    for (size_t i = 0; i < 16; ++i) m.mat[i / 4][i % 4] = static_cast<float>(bytes[i]) / 32.0f - 4.0f;
    return m;
}

void expectSame(const RENDERMatrix& a, const RENDERMatrix& b) {
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j) EXPECT_EQ(a.mat[i][j], b.mat[i][j]) << "mat[" << i << "][" << j << "]";
}

/// In shader terms, within the rounding of a few float operations on numbers up to `scale`.
void expectNear(const RENDERMatrix& actual, const Matrix& expected, double scale = 1.0) {
    const Matrix seen = shaderView(actual);
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 4; ++column)
            EXPECT_NEAR(seen.m[row][column], expected.m[row][column], 1e-6 * scale)
                << "row " << row << ", column " << column;
}

double diagonalSum(const RENDERMatrix& m) {
    return double{m.mat[0][0]} + double{m.mat[1][1]} + double{m.mat[2][2]};
}

double cosine(double degrees) { return std::cos(degrees * std::acos(-1.0) / 180.0); }

TEST(RenderMatrix, IsSixteenContiguousFloats) {
    EXPECT_EQ(sizeof(RENDERMatrix), 16 * sizeof(float));
    const RENDERMatrix m = numbered(0.0f);
    for (int i = 0; i < 16; ++i) EXPECT_EQ((&m.mat[0][0])[i], static_cast<float>(i));
}

TEST(RenderMatrix, IdentityReplacesEveryElement) {
    RENDERMatrix m = numbered(5.0f);
    renderMatrixLoadIdentity(&m);
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j) EXPECT_EQ(m.mat[i][j], i == j ? 1.0f : 0.0f);
}

TEST(RenderMatrixMultiply, IsTheProductOfTheArraysAsStored) {
    const RENDERMatrix a = numbered(1.0f), b = numbered(-7.0f);
    RENDERMatrix product;
    renderMatrixMultiply(&product, &a, &b);
    // Small whole numbers: exact in float.
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j) {
            int sum = 0;
            for (int k = 0; k < 4; ++k) sum += (1 + 4 * i + k) * (-7 + 4 * k + j);
            EXPECT_EQ(product.mat[i][j], static_cast<float>(sum));
        }
}

TEST(RenderMatrixMultiply, FirstOperandMeetsAPositionFirst) {
    RENDERMatrix move = loaded(), turn = loaded(), both;
    renderTranslate(&move, 1.0f, 2.0f, 3.0f);
    renderRotate(&turn, 90.0f, 0.0f, 0.0f, 1.0f);
    renderMatrixMultiply(&both, &move, &turn);
    expectNear(both, rotation(90, 0, 0, 1) * translation(1, 2, 3), 4.0);
}

TEST(RenderMatrixMultiply, ResultMayBeEitherOperandOrBoth) {
    for (uint32_t seed = 1; seed <= 20; ++seed) {
        SCOPED_TRACE(seed);
        const RENDERMatrix a = random(seed), b = random(seed + 100);
        RENDERMatrix distinct, squared;
        renderMatrixMultiply(&distinct, &a, &b);
        renderMatrixMultiply(&squared, &a, &a);

        RENDERMatrix as_second = b;
        renderMatrixMultiply(&as_second, &a, &as_second);
        expectSame(as_second, distinct);

        RENDERMatrix as_first = a;
        renderMatrixMultiply(&as_first, &as_first, &b);
        expectSame(as_first, distinct);

        RENDERMatrix as_both = a;
        renderMatrixMultiply(&as_both, &as_both, &as_both);
        expectSame(as_both, squared);
    }
}

TEST(RenderTranslate, OfTheIdentityFillsTheLastRow) {
    RENDERMatrix m = loaded();
    renderTranslate(&m, 1.5f, -2.0f, 40.0f);
    EXPECT_EQ(m.mat[3][0], 1.5f);
    EXPECT_EQ(m.mat[3][1], -2.0f);
    EXPECT_EQ(m.mat[3][2], 40.0f);
    EXPECT_EQ(m.mat[3][3], 1.0f);
    expectNear(m, translation(1.5, -2, 40), 40.0);
}

TEST(RenderTranslate, ChangesTheLastRowOnly) {
    RENDERMatrix m = numbered(1.0f);
    renderTranslate(&m, 2.0f, 3.0f, 5.0f);
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 4; ++j) EXPECT_EQ(m.mat[i][j], static_cast<float>(1 + 4 * i + j));
    for (int j = 0; j < 4; ++j)
        EXPECT_EQ(m.mat[3][j], static_cast<float>((13 + j) + 2 * (1 + j) + 3 * (5 + j) + 5 * (9 + j)));
}

TEST(RenderTranslate, MeetsAPositionBeforeWhatTheMatrixHeld) {
    RENDERMatrix m = loaded();
    renderRotate(&m, 90.0f, 0.0f, 1.0f, 0.0f);
    renderTranslate(&m, 1.0f, 2.0f, 3.0f);
    expectNear(m, rotation(90, 0, 1, 0) * translation(1, 2, 3), 4.0);
}

TEST(RenderTranslate, ByZeroOrNegativeZeroChangesNothing) {
    const RENDERMatrix before = random(3);
    RENDERMatrix m = before;
    renderTranslate(&m, 0.0f, -0.0f, 0.0f);
    expectSame(m, before);
}

TEST(RenderRotate, ByZeroChangesNothing) {
    const RENDERMatrix before = random(4);
    RENDERMatrix m = before;
    renderRotate(&m, 0.0f, 0.0f, 1.0f, 0.0f);
    expectSame(m, before);
    renderRotate(&m, -0.0f, 1.0f, 0.0f, 0.0f);
    expectSame(m, before);
}

TEST(RenderRotate, PositiveAngleIsCounterClockwiseSeenFromTheAxisTip) {
    RENDERMatrix m = loaded();
    renderRotate(&m, 90.0f, 0.0f, 0.0f, 1.0f);
    // x turns into y about z.
    const Vector turned = shaderView(m) * Vector{1, 0, 0, 1};
    EXPECT_NEAR(turned.x, 0.0, 1e-6);
    EXPECT_NEAR(turned.y, 1.0, 1e-6);
}

TEST(RenderRotate, ConvertsDegreesWithAPiOfSevenDecimals) {
    RENDERMatrix m;
    renderMatrixLoadIdentity(&m);
    renderRotate(&m, 180.0f, 0.0f, 0.0f, 1.0f);
    // Half a turn falls 0.0000000536 short: pi is 3.14159265359.
    EXPECT_NEAR(m.mat[0][1], 5.3589793e-8, 1e-12);
    EXPECT_NEAR(m.mat[1][0], -5.3589793e-8, 1e-12);
}

TEST(RenderRotate, MatchesRodriguesFormulaAboutEveryAxis) {
    const double third = 1.0 / std::sqrt(3.0);
    const double axes[][3] = {{1, 0, 0},     {0, 1, 0}, {0, 0, 1}, {-1, 0, 0}, {third, third, third},
                              {0.6, 0, -0.8}};
    for (const auto& axis : axes)
        for (const double degrees : {-180.0, -90.0, -12.0, -7.2, 0.1, 12.0, 45.0, 90.0, 359.0, 720.5}) {
            SCOPED_TRACE(testing::Message()
                         << degrees << " about " << axis[0] << ", " << axis[1] << ", " << axis[2]);
            RENDERMatrix m = loaded();
            renderRotate(&m, static_cast<float>(degrees), static_cast<float>(axis[0]),
                         static_cast<float>(axis[1]), static_cast<float>(axis[2]));
            expectNear(m, rotation(degrees, axis[0], axis[1], axis[2]));
            EXPECT_NEAR(diagonalSum(m), 1.0 + 2.0 * cosine(degrees), 1e-6);
            EXPECT_EQ(m.mat[3][3], 1.0f);
        }
}

TEST(RenderRotate, MeetsAPositionBeforeWhatTheMatrixHeld) {
    RENDERMatrix m = loaded();
    renderTranslate(&m, 1.0f, 2.0f, 3.0f);
    renderRotate(&m, 30.0f, 1.0f, 0.0f, 0.0f);
    expectNear(m, translation(1, 2, 3) * rotation(30, 1, 0, 0), 4.0);
}

TEST(RenderRotate, TwoLimitTurnsGiveTheSameDiagonalInEitherOrder) {
    const double expected = cosine(12) + cosine(12) + cosine(12) * cosine(12);
    RENDERMatrix y_first = loaded(), x_first = loaded();
    renderRotate(&y_first, -12.0f, 0.0f, 1.0f, 0.0f);
    renderRotate(&y_first, -12.0f, 1.0f, 0.0f, 0.0f);
    renderRotate(&x_first, -12.0f, 1.0f, 0.0f, 0.0f);
    renderRotate(&x_first, -12.0f, 0.0f, 1.0f, 0.0f);
    EXPECT_NEAR(diagonalSum(y_first), expected, 1e-6);
    EXPECT_NEAR(diagonalSum(x_first), expected, 1e-6);
}

TEST(RenderRotate, LongAxisIsNormalised) {
    RENDERMatrix m = loaded();
    renderRotate(&m, 33.0f, 0.0f, 5.0f, 0.0f);
    expectNear(m, rotation(33, 0, 1, 0));
}

TEST(RenderRotate, ZeroAxisChangesNothing) {
    const RENDERMatrix before = random(5);
    RENDERMatrix m = before;
    renderRotate(&m, 33.0f, 0.0f, 0.0f, 0.0f);
    expectSame(m, before);
}

TEST(RenderFrustum, IsThePerspectiveMatrix) {
    RENDERMatrix m = loaded();
    renderFrustum(&m, -1.0f, 3.0f, -2.0f, 6.0f, 12.0f, 164.0f);
    EXPECT_FLOAT_EQ(m.mat[0][0], 24.0f / 4.0f);
    EXPECT_FLOAT_EQ(m.mat[1][1], 24.0f / 8.0f);
    EXPECT_FLOAT_EQ(m.mat[2][0], 2.0f / 4.0f);
    EXPECT_FLOAT_EQ(m.mat[2][1], 4.0f / 8.0f);
    EXPECT_FLOAT_EQ(m.mat[2][2], -176.0f / 152.0f);
    EXPECT_EQ(m.mat[2][3], -1.0f);
    EXPECT_FLOAT_EQ(m.mat[3][2], -2.0f * 164.0f * 12.0f / 152.0f);
    for (const auto& [i, j] :
         {std::pair{0, 1}, {0, 2}, {0, 3}, {1, 0}, {1, 2}, {1, 3}, {3, 0}, {3, 1}, {3, 3}})
        EXPECT_EQ(m.mat[i][j], 0.0f) << i << ", " << j;
    expectNear(m, frustum(-1, 3, -2, 6, 12, 164), 30.0);
}

TEST(RenderFrustum, SymmetricOneHasNoShear) {
    RENDERMatrix m = loaded();
    renderFrustum(&m, -3.5f, 3.5f, -5.6f, 5.6f, 12.0f, 164.0f);
    EXPECT_EQ(m.mat[2][0], 0.0f);
    EXPECT_EQ(m.mat[2][1], 0.0f);
}

TEST(RenderFrustum, MapsItsNearAndFarCornersToTheClipCube) {
    RENDERMatrix m = loaded();
    renderFrustum(&m, -3.0f, 3.0f, -2.0f, 2.0f, 12.0f, 164.0f);
    const Vector near_corner = shaderView(m) * Vector{3, 2, -12, 1};
    EXPECT_NEAR(near_corner.x / near_corner.w, 1.0, 1e-5);
    EXPECT_NEAR(near_corner.y / near_corner.w, 1.0, 1e-5);
    EXPECT_NEAR(near_corner.z / near_corner.w, -1.0, 1e-5);
    const Vector far_centre = shaderView(m) * Vector{0, 0, -164, 1};
    EXPECT_NEAR(far_centre.z / far_centre.w, 1.0, 1e-5);
}

TEST(RenderFrustum, MeetsAPositionBeforeWhatTheMatrixHeld) {
    RENDERMatrix m = loaded();
    renderTranslate(&m, 1.0f, 2.0f, 3.0f);
    renderFrustum(&m, -3.0f, 3.0f, -2.0f, 2.0f, 12.0f, 164.0f);
    expectNear(m, translation(1, 2, 3) * frustum(-3, 3, -2, 2, 12, 164), 30.0);
}

TEST(RenderFrustum, EmptyOneChangesNothing) {
    const float empties[][6] = {{1, 1, -1, 1, 12, 164},   {-1, 1, 2, 2, 12, 164},   {-1, 1, -1, 1, 12, 12},
                                {-1, 1, -1, 1, 0, 164},   {-1, 1, -1, 1, -12, 164}, {-1, 1, -1, 1, 12, 0},
                                {-1, 1, -1, 1, 12, -164}, {0, 0, 0, 0, 0, 0}};
    for (const auto& e : empties) {
        const RENDERMatrix before = random(6);
        RENDERMatrix m = before;
        renderFrustum(&m, e[0], e[1], e[2], e[3], e[4], e[5]);
        expectSame(m, before);
    }
}

TEST(RenderFrustum, NonFiniteArgumentsGoThrough) {
    RENDERMatrix m = loaded();
    renderFrustum(&m, -kInfinity, kInfinity, -1.0f, 1.0f, 12.0f, 164.0f);
    EXPECT_TRUE(std::isnan(m.mat[2][0]));
}

TEST(RenderUtility, TranslateTurnTranslateBackTurnsAboutThePivot) {
    RENDERMatrix m = loaded(), turn = loaded();
    renderRotate(&turn, 20.0f, 0.0f, 1.0f, 0.0f);
    renderTranslate(&m, 0.0f, -0.0f, -40.0f);
    renderMatrixMultiply(&m, &turn, &m);
    renderTranslate(&m, 0.0f, 0.0f, 40.0f);
    const Vector pivot = shaderView(m) * Vector{0, 0, -40, 1};
    EXPECT_NEAR(pivot.x, 0.0, 1e-5);
    EXPECT_NEAR(pivot.z, -40.0, 1e-5);
    expectNear(m, translation(0, 0, -40) * rotation(20, 0, 1, 0) * translation(0, 0, 40), 40.0);
}

}  // namespace
}  // namespace quorvane::test
