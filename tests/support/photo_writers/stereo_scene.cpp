#include "stereo_scene.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace quorvane::test {
namespace {

/// A number of 0 to 1 that the place decides.
double hashed(int x, int y, uint32_t seed) {
    uint32_t value =
        static_cast<uint32_t>(x) * 0x9e3779b1u ^ static_cast<uint32_t>(y) * 0x85ebca77u ^ seed * 0xc2b2ae3du;
    value = (value ^ value >> 15) * 0x2c1b3c6du;
    value = (value ^ value >> 12) * 0x297a2d39u;
    return static_cast<double>(value ^ value >> 15) / 4294967295.0;
}

/// Smooth noise with features of that many pixels.
double noise(double x, double y, double feature, uint32_t seed) {
    const double u = x / feature, v = y / feature;
    const int x0 = static_cast<int>(std::floor(u)), y0 = static_cast<int>(std::floor(v));
    const double a = u - x0, b = v - y0;
    const double above = hashed(x0, y0, seed) * (1 - a) + hashed(x0 + 1, y0, seed) * a;
    const double below = hashed(x0, y0 + 1, seed) * (1 - a) + hashed(x0 + 1, y0 + 1, seed) * a;
    return above * (1 - b) + below * b;
}

struct Surface {
    double tint[3];
    uint32_t seed;
};

constexpr Surface kFloor = {{150, 140, 120}, 1}, kBoard = {{90, 150, 200}, 2}, kDisc = {{210, 90, 70}, 3};

/// The surfaces of the scene, in coordinates of the left view.
struct Layout {
    double width, height;

    double floorDisparity(double y) const { return width * (0.01 + 0.03 * y / height); }
    double boardDisparity() const { return width * 0.045; }
    double discDisparity() const { return width * 0.07; }
    bool onBoard(double x, double y) const {
        return x > 0.15 * width && x < 0.4 * width && y > 0.2 * height && y < 0.75 * height;
    }
    bool onDisc(double x, double y) const {
        return std::hypot(x - 0.66 * width, y - 0.5 * height) < 0.24 * height;
    }
};

void paint(const Surface& surface, double x, double y, double feature, uint8_t* pixel) {
    const double shade = 0.45 * noise(x, y, feature, surface.seed) +
                         0.3 * noise(x, y, 3 * feature, surface.seed + 10) +
                         0.25 * noise(x, y, 9 * feature, surface.seed + 20);
    for (int k = 0; k < 3; ++k)
        pixel[k] = static_cast<uint8_t>(std::clamp(surface.tint[k] * (0.4 + 1.1 * shade), 0.0, 255.0));
}

}  // namespace

StereoScene stereoScene(int width, int height) {
    const Layout layout = {static_cast<double>(width), static_cast<double>(height)};
    const double feature = std::max(2.5, width / 160.0);
    StereoScene scene = {media::RgbImage(width, height), media::RgbImage(width, height),
                         media::Plane(width, height), media::GrayImage(width, height)};
    // What a view at that many disparities to the right shows at a place: from the nearest surface on.
    const auto seen = [&](double x, double y, bool right, double* disparity) -> Surface {
        const double disc = layout.discDisparity(), board = layout.boardDisparity();
        *disparity = disc;
        if (layout.onDisc(x + (right ? disc : 0), y)) return kDisc;
        *disparity = board;
        if (layout.onBoard(x + (right ? board : 0), y)) return kBoard;
        *disparity = layout.floorDisparity(y);
        return kFloor;
    };
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            double disparity = 0, other = 0;
            paint(seen(x, y, false, &disparity), x, y, feature, &scene.left.at(x, y));
            scene.disparity.at(x, y) = static_cast<float>(disparity);
            seen(x - disparity, y, true, &other);
            scene.hidden.at(x, y) = x < disparity || other > disparity + 0.5 ? 255 : 0;
            const Surface surface = seen(x, y, true, &other);
            paint(surface, x + other, y, feature, &scene.right.at(x, y));
        }
    return scene;
}

media::RgbImage displaced(const media::RgbImage& image, double angle_deg, double down, double gain,
                          double offset) {
    const double angle = angle_deg * 3.14159265358979 / 180;
    const double middle_x = (image.width - 1) / 2.0, middle_y = (image.height - 1) / 2.0;
    media::RgbImage out(image.width, image.height);
    for (int y = 0; y < image.height; ++y)
        for (int x = 0; x < image.width; ++x) {
            const double dx = x - middle_x, dy = y - down - middle_y;
            const double from_x =
                std::clamp(middle_x + dx * std::cos(angle) + dy * std::sin(angle), 0.0, image.width - 1.001);
            const double from_y =
                std::clamp(middle_y - dx * std::sin(angle) + dy * std::cos(angle), 0.0, image.height - 1.001);
            const int x0 = static_cast<int>(from_x), y0 = static_cast<int>(from_y);
            const double a = from_x - x0, b = from_y - y0;
            for (int k = 0; k < 3; ++k) {
                const auto at = [&](int u, int v) { return static_cast<double>((&image.at(u, v))[k]); };
                const double level = (at(x0, y0) * (1 - a) + at(x0 + 1, y0) * a) * (1 - b) +
                                     (at(x0, y0 + 1) * (1 - a) + at(x0 + 1, y0 + 1) * a) * b;
                (&out.at(x, y))[k] =
                    static_cast<uint8_t>(std::lround(std::clamp(gain * level + offset, 0.0, 255.0)));
            }
        }
    return out;
}

}  // namespace quorvane::test
