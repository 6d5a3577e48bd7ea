#include "media/depth/stereo_align.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <optional>
#include <random>

namespace quorvane::media {
namespace {

constexpr int kPatch = 5;              // radius
constexpr int kCell = 14;              // a corner each, at most
constexpr float kLeastCorner = 40.0f;  // squared levels a pixel, of the weaker direction
constexpr float kLeastLikeness = 0.75f;
constexpr int kSide = 2 * kPatch + 1, kArea = kSide * kSide;

struct Point {
    int x, y;
};

/// The best corner in each cell, by the weaker eigenvalue of the structure tensor.
std::vector<Point> corners(const Plane& image) {
    const int w = image.width, h = image.height, margin = kPatch + 1;
    std::vector<Point> found;
    for (int top = margin; top < h - margin; top += kCell)
        for (int left = margin; left < w - margin; left += kCell) {
            float best = kLeastCorner;
            std::optional<Point> corner;
            for (int y = top; y < std::min(top + kCell, h - margin); y += 2)
                for (int x = left; x < std::min(left + kCell, w - margin); x += 2) {
                    constexpr int kAround = 3;
                    float xx = 0, yy = 0, xy = 0;
                    for (int v = y - kAround; v <= y + kAround; ++v)
                        for (int u = x - kAround; u <= x + kAround; ++u) {
                            const float gx = (image.at(u + 1, v) - image.at(u - 1, v)) / 2;
                            const float gy = (image.at(u, v + 1) - image.at(u, v - 1)) / 2;
                            xx += gx * gx;
                            yy += gy * gy;
                            xy += gx * gy;
                        }
                    constexpr float kCount = (2 * kAround + 1) * (2 * kAround + 1);
                    const float weaker =
                        ((xx + yy) / 2 - std::sqrt((xx - yy) * (xx - yy) / 4 + xy * xy)) / kCount;
                    if (weaker <= best) continue;
                    best = weaker;
                    corner = Point{x, y};
                }
            if (corner) found.push_back(*corner);
        }
    return found;
}

/// Looks for patches of other images in this one, by normalised correlation.
class PatchSearch {
  public:
    explicit PatchSearch(const Plane& image)
        : m_image(image), m_mean(image.width, image.height), m_scale(m_mean) {
        for (int y = kPatch; y < image.height - kPatch; ++y)
            for (int x = kPatch; x < image.width - kPatch; ++x) {
                float sum = 0, squares = 0;
                for (int v = y - kPatch; v <= y + kPatch; ++v) {
                    const float* const row = &image.at(x - kPatch, v);
                    for (int i = 0; i < kSide; ++i) {
                        sum += row[i];
                        squares += row[i] * row[i];
                    }
                }
                const float variance = squares - sum * sum / kArea;
                m_mean.at(x, y) = sum / kArea;
                m_scale.at(x, y) = variance > kArea ? 1 / std::sqrt(variance) : 0.0f;
            }
    }

    struct Match {
        double x, y;  ///< in fractions of a pixel
        float likeness;
    };

    /// Where the patch around `point` of `from` is best found within that distance of `middle`.
    std::optional<Match> find(const PatchSearch& from, Point point, Point middle, int reach_x,
                              int reach_y) const {
        std::array<float, kArea> patch;
        const float mean = from.m_mean.at(point.x, point.y), scale = from.m_scale.at(point.x, point.y);
        for (int v = 0; v < kSide; ++v)
            for (int u = 0; u < kSide; ++u)
                patch[static_cast<size_t>(v) * kSide + static_cast<size_t>(u)] =
                    (from.m_image.at(point.x - kPatch + u, point.y - kPatch + v) - mean) * scale;
        const auto likenessAt = [&](int x, int y) {
            // The patch has no mean, so that of the other falls out.
            float sum = 0;
            const float* ours = patch.data();
            for (int v = 0; v < kSide; ++v, ours += kSide) {
                const float* const row = &m_image.at(x - kPatch, y - kPatch + v);
                for (int u = 0; u < kSide; ++u) sum += ours[u] * row[u];
            }
            return sum * m_scale.at(x, y);
        };
        const int left = std::max(kPatch + 1, middle.x - reach_x),
                  right = std::min(m_image.width - kPatch - 2, middle.x + reach_x),
                  top = std::max(kPatch + 1, middle.y - reach_y),
                  bottom = std::min(m_image.height - kPatch - 2, middle.y + reach_y);
        Point best = {0, 0};
        float likeness = kLeastLikeness;
        for (int y = top; y <= bottom; ++y)
            for (int x = left; x <= right; ++x)
                if (const float value = likenessAt(x, y); value > likeness) {
                    likeness = value;
                    best = {x, y};
                }
        if (best.x == 0) return std::nullopt;
        const auto offset = [likeness](float before, float after) {
            const double bend = before - 2.0 * likeness + after;
            return bend < -1e-6 ? std::clamp((before - after) / (2 * bend), -0.5, 0.5) : 0.0;
        };
        return Match{best.x + offset(likenessAt(best.x - 1, best.y), likenessAt(best.x + 1, best.y)),
                     best.y + offset(likenessAt(best.x, best.y - 1), likenessAt(best.x, best.y + 1)),
                     likeness};
    }

  private:
    const Plane& m_image;
    Plane m_mean, m_scale;
};

/// Solves the normal equations of a least squares fit by Gaussian elimination; nothing where they are
/// singular.
template <size_t kTerms>
std::optional<std::array<double, kTerms>> solved(std::array<std::array<double, kTerms + 1>, kTerms> rows) {
    for (size_t i = 0; i < kTerms; ++i) {
        size_t pivot = i;
        for (size_t k = i + 1; k < kTerms; ++k)
            if (std::abs(rows[k][i]) > std::abs(rows[pivot][i])) pivot = k;
        if (std::abs(rows[pivot][i]) < 1e-9) return std::nullopt;
        std::swap(rows[i], rows[pivot]);
        for (size_t k = 0; k < kTerms; ++k) {
            if (k == i) continue;
            const double factor = rows[k][i] / rows[i][i];
            for (size_t j = i; j <= kTerms; ++j) rows[k][j] -= factor * rows[i][j];
        }
    }
    std::array<double, kTerms> solution;
    for (size_t i = 0; i < kTerms; ++i) solution[i] = rows[i][kTerms] / rows[i][i];
    return solution;
}

/// dy = t0 + t1 x + t2 y + t3 x y, with x where the right view has the point; all as shares of the height.
using Terms = std::array<double, 4>;

Terms basis(const Correspondence& c, int height) {
    const double x = (c.x + c.dx) / height, y = c.y / height;
    return {1, x, y, x * y};
}

double residual(const Correspondence& c, const Terms& terms, int height) {
    const Terms at = basis(c, height);
    double expected = 0;
    for (size_t i = 0; i < terms.size(); ++i) expected += terms[i] * at[i];
    return std::abs(c.dy - expected * height);
}

/// The first kCount terms that fit best; the others are 0.
template <size_t kCount>
std::optional<Terms> fitted(const std::vector<Correspondence>& points, int height) {
    std::array<std::array<double, kCount + 1>, kCount> rows = {};
    for (const Correspondence& point : points) {
        const Terms at = basis(point, height);
        for (size_t i = 0; i < kCount; ++i) {
            for (size_t k = 0; k < kCount; ++k) rows[i][k] += at[i] * at[k];
            rows[i][kCount] += at[i] * point.dy / height;
        }
    }
    const auto solution = solved<kCount>(rows);
    if (!solution) return std::nullopt;
    Terms terms = {};
    std::copy(solution->begin(), solution->end(), terms.begin());
    return terms;
}

}  // namespace

std::vector<Correspondence> correspondences(const Plane& left, const Plane& right, int* tried) {
    const int reach_x = left.width / 4, reach_y = std::max(4, left.height / 12);
    const PatchSearch in_left(left), in_right(right);
    const std::vector<Point> points = corners(left);
    *tried = static_cast<int>(points.size());
    std::vector<Correspondence> found;
    for (const Point& point : points) {
        const auto there = in_right.find(in_left, point, point, reach_x, reach_y);
        if (!there) continue;
        const Point rounded = {static_cast<int>(std::lround(there->x)),
                               static_cast<int>(std::lround(there->y))};
        const auto back = in_left.find(in_right, rounded, rounded, reach_x, reach_y);
        if (!back || std::abs(back->x - point.x) > 1.5 || std::abs(back->y - point.y) > 1.5) continue;
        found.push_back({point.x - (left.width - 1) / 2.0, point.y - (left.height - 1) / 2.0,
                         there->x - point.x, there->y - point.y});
    }
    return found;
}

Alignment align(const std::vector<Correspondence>& found, int height, std::vector<Correspondence>* agreeing) {
    constexpr double kFar = 1.5, kNear = 0.75;  // pixels
    constexpr int kTrials = 500;
    agreeing->clear();
    if (found.size() < 4) return {};
    std::minstd_rand random(1);
    std::uniform_int_distribution<size_t> any(0, found.size() - 1);
    Terms best = {};
    size_t most = 0;
    for (int trial = 0; trial < kTrials; ++trial) {
        const auto terms = fitted<3>({found[any(random)], found[any(random)], found[any(random)]}, height);
        // A camera's views are neither turned by more than 6 degrees nor of other size by more than 10 %.
        if (!terms || std::abs((*terms)[1]) > 0.1 || std::abs((*terms)[2]) > 0.1) continue;
        const auto count =
            static_cast<size_t>(std::count_if(found.begin(), found.end(), [&](const Correspondence& c) {
                return residual(c, *terms, height) < kFar;
            }));
        if (count <= most) continue;
        most = count;
        best = *terms;
    }
    const auto keep = [&](double limit) {
        agreeing->clear();
        for (const Correspondence& c : found)
            if (residual(c, best, height) < limit) agreeing->push_back(c);
    };
    for (const double limit : {kFar, kNear, kNear}) {
        keep(limit);
        constexpr size_t kManyEnough = 30;
        const auto terms =
            agreeing->size() >= kManyEnough ? fitted<4>(*agreeing, height) : fitted<3>(*agreeing, height);
        if (terms) best = *terms;
    }
    keep(kFar);
    return {best[0], best[1], best[2], best[3]};
}

Plane aligned(const Plane& right, const Alignment& alignment) {
    const int w = right.width, h = right.height;
    const double middle_x = (w - 1) / 2.0, middle_y = (h - 1) / 2.0;
    Plane out(w, h);
    for (int row = 0; row < h; ++row)
        for (int column = 0; column < w; ++column) {
            const double x = column - middle_x, y = row - middle_y;
            const double from_x = x * (1 + alignment.scale) - alignment.turn * y + middle_x;
            const double from_y = y * (1 + alignment.scale) + alignment.turn * x + alignment.down * h +
                                  alignment.keystone * x * y / h + middle_y;
            const double inside_x = std::clamp(from_x, 0.0, w - 1.0),
                         inside_y = std::clamp(from_y, 0.0, h - 1.0);
            const int x0 = std::min(static_cast<int>(inside_x), std::max(0, w - 2)),
                      y0 = std::min(static_cast<int>(inside_y), std::max(0, h - 2));
            const int x1 = std::min(x0 + 1, w - 1), y1 = std::min(y0 + 1, h - 1);
            const auto u = static_cast<float>(inside_x - x0), v = static_cast<float>(inside_y - y0);
            const float above = right.at(x0, y0) * (1 - u) + right.at(x1, y0) * u;
            const float below = right.at(x0, y1) * (1 - u) + right.at(x1, y1) * u;
            out.at(column, row) = above * (1 - v) + below * v;
        }
    return out;
}

}  // namespace quorvane::media
