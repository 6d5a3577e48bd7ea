#include "software/clipped_cell.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <utility>

namespace quorvane::software {
namespace {

/// In clip coordinates, x and y in pixels.
struct Vertex {
    double x, y, w, u, v;
};

constexpr double kNearestW = 12.0;

bool isDrawable(float q) { return q > 0.0f && q <= kNearestQ; }

Vertex between(const Vertex& a, const Vertex& b, double part) {
    const auto mixed = [part](double from, double to) { return from + (to - from) * part; };
    return {mixed(a.x, b.x), mixed(a.y, b.y), kNearestW, mixed(a.u, b.u), mixed(a.v, b.v)};
}

class Triangle {
  public:
    Triangle(const Vertex& a, const Vertex& b, const Vertex& c) {
        const Vertex* corners[] = {&a, &b, &c};
        for (size_t i = 0; i < 3; ++i) {
            m_q[i] = 1 / corners[i]->w;
            m_x[i] = corners[i]->x * m_q[i];
            m_y[i] = corners[i]->y * m_q[i];
            m_u[i] = corners[i]->u * m_q[i];
            m_v[i] = corners[i]->v * m_q[i];
        }
        m_area = edge(0, 1, m_x[2], m_y[2]);
    }

    void draw(const Band& band) const {
        if (!(std::abs(m_area) > 0)) return;
        const auto reach = [](const std::array<double, 3>& of, double centre, int low, int high) {
            const double first = std::min({of[0], of[1], of[2]}) - centre - 1;
            const double last = std::max({of[0], of[1], of[2]}) - centre + 1;
            return std::pair<int, int>(static_cast<int>(std::clamp(first, double(low), double(high))),
                                       static_cast<int>(std::clamp(last + 1, double(low), double(high))));
        };
        const auto [left, right] = reach(m_x, static_cast<double>(band.centre_x), 0, band.width);
        const auto [top, bottom] = reach(m_y, static_cast<double>(band.centre_y), band.top, band.bottom);
        for (int y = top; y < bottom; ++y)
            for (int x = left; x < right; ++x) {
                const double px = x + static_cast<double>(band.centre_x);
                const double py = y + static_cast<double>(band.centre_y);
                const size_t pixel = static_cast<size_t>(y - band.top) * static_cast<size_t>(band.stride) +
                                     static_cast<size_t>(x);
                put(px, py, band.q + pixel, band.u + pixel, band.v + pixel);
                if (band.samples == 1) continue;
                const int slot = band.slots[(y - band.top) * band.slot_stride + x / kSampleBlock];
                if (slot < 0) continue;
                float* planes =
                    band.sample_planes +
                    static_cast<size_t>(slot) * static_cast<size_t>(band.samples) * 3 * kSampleBlock +
                    x % kSampleBlock;
                for (int s = 0; s < band.samples; ++s, planes += 3 * kSampleBlock)
                    put(px + static_cast<double>(band.offsets[s][0]),
                        py + static_cast<double>(band.offsets[s][1]), planes, planes + kSampleBlock,
                        planes + 2 * kSampleBlock);
            }
    }

  private:
    double edge(size_t from, size_t to, double x, double y) const {
        return (m_x[to] - m_x[from]) * (y - m_y[from]) - (m_y[to] - m_y[from]) * (x - m_x[from]);
    }

    void put(double x, double y, float* q, float* u, float* v) const {
        const double a = edge(1, 2, x, y) / m_area, b = edge(2, 0, x, y) / m_area, c = 1 - a - b;
        // So that rounding leaves no gap to a neighbour.
        constexpr double kOutside = -1e-6;
        if (!(a >= kOutside && b >= kOutside && c >= kOutside)) return;
        const float near = static_cast<float>(a * m_q[0] + b * m_q[1] + c * m_q[2]);
        if (!(near >= *q)) return;
        *q = near;
        *u = static_cast<float>(a * m_u[0] + b * m_u[1] + c * m_u[2]);
        *v = static_cast<float>(a * m_v[0] + b * m_v[1] + c * m_v[2]);
    }

    std::array<double, 3> m_x, m_y, m_q, m_u, m_v;
    double m_area;
};

void drawClipped(const std::array<Vertex, 3>& triangle, const Band& band) {
    std::array<Vertex, 4> kept;
    size_t count = 0;
    for (size_t i = 0; i < 3; ++i) {
        const Vertex& from = triangle[i];
        const Vertex& to = triangle[(i + 1) % 3];
        if (from.w >= kNearestW) kept[count++] = from;
        if ((from.w >= kNearestW) != (to.w >= kNearestW))
            kept[count++] = between(from, to, (kNearestW - from.w) / (to.w - from.w));
    }
    for (size_t i = 2; i < count; ++i) Triangle(kept[0], kept[i - 1], kept[i]).draw(band);
}

}  // namespace

void drawClippedCells(const CellBlock& block, const Band& band) {
    const auto vertex = [&](const float* x, const float* y, const float* q, int i, float v) {
        const double w = 1 / static_cast<double>(q[i]);
        return Vertex{x[i] * w, y[i] * w, w, static_cast<double>(block.column_u[i]), static_cast<double>(v)};
    };
    for (int i = 0; i < block.count; ++i) {
        if (isDrawable(block.lower_q[i]) && isDrawable(block.lower_q[i + 1]) &&
            isDrawable(block.upper_q[i]) && isDrawable(block.upper_q[i + 1]))
            continue;
        const Vertex a = vertex(block.lower_x, block.lower_y, block.lower_q, i, block.lower_v);
        const Vertex c = vertex(block.lower_x, block.lower_y, block.lower_q, i + 1, block.lower_v);
        const Vertex b = vertex(block.upper_x, block.upper_y, block.upper_q, i, block.upper_v);
        const Vertex d = vertex(block.upper_x, block.upper_y, block.upper_q, i + 1, block.upper_v);
        drawClipped({a, b, c}, band);
        drawClipped({c, b, d}, band);
    }
}

}  // namespace quorvane::software
