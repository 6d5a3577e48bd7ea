#include "support/model_renderer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>

namespace quorvane::test {
namespace {

constexpr double kDegree = 3.14159265358979323846 / 180.0;
constexpr double kNear = 12.0;

struct Vertex {
    double x, y;  // pixels, y counting the framebuffer's rows
    double z;     // window depth
    double inverse_w;
    double u, v;
};

/// A texture's channel at (u, v): linear, clamped to the edge.
double lookUp(const std::vector<uint8_t>& texels, int width, int height, int channels, int channel, double u,
              double v) {
    const double x = u * width - 0.5, y = v * height - 0.5;
    const double left = std::floor(x), bottom = std::floor(y);
    const auto texel = [&](double column, double row) {
        const size_t i = static_cast<size_t>(std::clamp(column, 0.0, width - 1.0));
        const size_t j = static_cast<size_t>(std::clamp(row, 0.0, height - 1.0));
        return static_cast<double>(
            texels[(j * static_cast<size_t>(width) + i) * static_cast<size_t>(channels) +
                   static_cast<size_t>(channel)]);
    };
    const double fx = x - left, fy = y - bottom;
    return (texel(left, bottom) * (1 - fx) + texel(left + 1, bottom) * fx) * (1 - fy) +
           (texel(left, bottom + 1) * (1 - fx) + texel(left + 1, bottom + 1) * fx) * fy;
}

Vertex projected(const ModelScene& scene, int column, int row) {
    const double u = static_cast<double>(column) / scene.grid_width;
    const double v = static_cast<double>(row) / scene.grid_height;
    const double depth = lookUp(scene.depth, scene.grid_width, scene.grid_height, 1, 0, u, v) / 255.0;
    // Along the line of sight, from the plane at distance 32.
    const double distance = 32.0 - 0.4 * (depth * 35.0 - 32.0);
    double x = (2.0 * u - 1.0) * scene.half_width * distance / 32.0;
    double y = (2.0 * v - 1.0) * scene.half_height * distance / 32.0;
    double z = -distance;

    // About the pivot: first around the X axis, then around the Y axis.
    const double around_x = -scene.view_y * scene.gain * scene.y_boundary_deg * kDegree;
    const double around_y = -scene.view_x * scene.gain * scene.x_boundary_deg * kDegree;
    z += scene.pivot;
    const double y1 = y * std::cos(around_x) - z * std::sin(around_x);
    const double z1 = y * std::sin(around_x) + z * std::cos(around_x);
    const double x2 = x * std::cos(around_y) + z1 * std::sin(around_y);
    const double z2 = -x * std::sin(around_y) + z1 * std::cos(around_y);
    x = x2;
    y = y1;
    z = z2 - scene.pivot;

    // The frustum shows fov_scale of the mesh's extents at distance 32.
    const double w = -z;
    const double clip_x = x / (scene.half_width * scene.fov_scale / 32.0);
    const double clip_y = y / (scene.half_height * scene.fov_scale / 32.0);
    const double clip_z =
        (-z * (scene.far_plane + kNear) - 2 * scene.far_plane * kNear) / (scene.far_plane - kNear);
    return {(clip_x / w + 1) / 2 * scene.width,
            (clip_y / w + 1) / 2 * scene.height,
            (clip_z / w + 1) / 2,
            1 / w,
            u,
            v};
}

class Target {
  public:
    explicit Target(const ModelScene& scene)
        : m_scene(scene),
          m_colour(3 * static_cast<size_t>(scene.width) * static_cast<size_t>(scene.height), 0.0),
          m_depth(m_colour.size() / 3, 1.0) {}

    void draw(const Vertex& a, const Vertex& b, const Vertex& c) {
        const double area = edge(a, b, c.x, c.y);
        if (area == 0) return;
        const auto first = [](double p0, double p1, double p2) {
            return static_cast<int>(std::floor(std::min({p0, p1, p2}) - 0.5));
        };
        const auto last = [](double p0, double p1, double p2) {
            return static_cast<int>(std::ceil(std::max({p0, p1, p2}) - 0.5));
        };
        for (int y = std::max(0, first(a.y, b.y, c.y));
             y <= std::min(m_scene.height - 1, last(a.y, b.y, c.y)); ++y)
            for (int x = std::max(0, first(a.x, b.x, c.x));
                 x <= std::min(m_scene.width - 1, last(a.x, b.x, c.x)); ++x) {
                const double wa = edge(b, c, x + 0.5, y + 0.5) / area;
                const double wb = edge(c, a, x + 0.5, y + 0.5) / area;
                const double wc = 1 - wa - wb;
                // A centre on a shared edge may be drawn twice, with the same colour.
                if (wa >= 0 && wb >= 0 && wc >= 0) shade(a, b, c, wa, wb, wc, x, y);
            }
    }

    std::vector<double> colour() && { return std::move(m_colour); }

  private:
    static double edge(const Vertex& from, const Vertex& to, double x, double y) {
        return (to.x - from.x) * (y - from.y) - (to.y - from.y) * (x - from.x);
    }

    void shade(const Vertex& a, const Vertex& b, const Vertex& c, double wa, double wb, double wc, int x,
               int y) {
        const size_t pixel =
            static_cast<size_t>(y) * static_cast<size_t>(m_scene.width) + static_cast<size_t>(x);
        const double z = wa * a.z + wb * b.z + wc * c.z;
        if (m_scene.depth_tested && z > m_depth[pixel]) return;
        m_depth[pixel] = z;
        const double inverse_w = wa * a.inverse_w + wb * b.inverse_w + wc * c.inverse_w;
        const double u =
            (wa * a.u * a.inverse_w + wb * b.u * b.inverse_w + wc * c.u * c.inverse_w) / inverse_w;
        const double v =
            (wa * a.v * a.inverse_w + wb * b.v * b.inverse_w + wc * c.v * c.inverse_w) / inverse_w;
        for (int channel = 0; channel < 3; ++channel)
            m_colour[3 * pixel + static_cast<size_t>(channel)] =
                lookUp(m_scene.photo, m_scene.photo_width, m_scene.photo_height, 3, channel, u, v);
    }

    const ModelScene& m_scene;
    std::vector<double> m_colour;
    std::vector<double> m_depth;
};

}  // namespace

std::vector<double> modelPicture(const ModelScene& scene) {
    std::vector<Vertex> vertices;
    for (int j = 0; j <= scene.grid_height; ++j)
        for (int i = 0; i <= scene.grid_width; ++i) vertices.push_back(projected(scene, i, j));

    Target target(scene);
    const size_t stride = static_cast<size_t>(scene.grid_width) + 1;
    for (size_t j = 0; j < static_cast<size_t>(scene.grid_height); ++j)
        for (size_t i = 0; i < static_cast<size_t>(scene.grid_width); ++i) {
            const Vertex& lower_left = vertices[j * stride + i];
            const Vertex& lower_right = vertices[j * stride + i + 1];
            const Vertex& upper_left = vertices[(j + 1) * stride + i];
            const Vertex& upper_right = vertices[(j + 1) * stride + i + 1];
            target.draw(lower_left, upper_left, lower_right);
            target.draw(lower_right, upper_left, upper_right);
        }
    return std::move(target).colour();
}

}  // namespace quorvane::test
