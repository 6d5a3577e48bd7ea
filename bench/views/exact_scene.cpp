#include "bench/views/exact_scene.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

#include "bench/views/measures.h"
#include "bench/views/shifted_views.h"

namespace quorvane::bench {
namespace {

constexpr int kWidth = ExactScene::kWidth, kHeight = ExactScene::kHeight;
constexpr int kSamples = 6;  // a pixel, on each axis

constexpr uint8_t kWallByte = 12, kWireByte = 90, kPoleByte = 150, kDiscByte = 200;

double strengthAtTheEnd() {
    return ExactScene::kSweep / 2.0 / (1.0 / ShiftedViews::kNearest - 1.0 / ShiftedViews::kFarthest);
}

/// By how much what is drawn at this distance moves from the rest view to the sweep's end, in pixels.
double disparityAt(double distance) {
    return strengthAtTheEnd() * (1.0 / distance - 1.0 / ShiftedViews::kPivot);
}

double disparityOf(uint8_t byte) { return disparityAt(distanceOf(byte)); }

/// Smooth noise of -1 to 1 with features of `period` pixels.
double noise(double x, double y, double period, uint32_t seed) {
    const auto corner = [seed](int64_t i, int64_t j) {
        uint32_t h = seed * 0x9e3779b9u + static_cast<uint32_t>(i) * 0x85ebca6bu +
                     static_cast<uint32_t>(j) * 0xc2b2ae35u;
        h = (h ^ (h >> 15)) * 0x2c1b3c6du;
        h = (h ^ (h >> 12)) * 0x297a2d39u;
        return static_cast<double>((h ^ (h >> 15)) & 0xffff) / 32767.5 - 1.0;
    };
    const double u = x / period, v = y / period;
    const double i = std::floor(u), j = std::floor(v);
    const auto smooth = [](double t) { return t * t * (3.0 - 2.0 * t); };
    const double s = smooth(u - i), t = smooth(v - j);
    const auto column = static_cast<int64_t>(i), row = static_cast<int64_t>(j);
    const double upper = corner(column, row) * (1.0 - s) + corner(column + 1, row) * s;
    const double lower = corner(column, row + 1) * (1.0 - s) + corner(column + 1, row + 1) * s;
    return upper * (1.0 - t) + lower * t;
}

using Colour = std::array<double, 3>;

/// Everything that is drawn: a part of a plane. Coordinates are the rest view's, in pixels.
struct Surface {
    double (*inside)(const Surface&, double x, double y);  ///< above 0 within
    std::array<double, 5> shape;
    double disparity, disparity_per_x, disparity_per_y;
    Colour colour;

    double disparityAt(double x, double y) const {
        return disparity + disparity_per_x * x + disparity_per_y * y;
    }
};

double everywhere(const Surface&, double, double) { return 1.0; }
/// shape: middle x and y, half width and half height.
double box(const Surface& s, double x, double y) {
    return std::min(s.shape[2] - std::abs(x - s.shape[0]), s.shape[3] - std::abs(y - s.shape[1]));
}
/// shape: middle x and y, radius.
double disc(const Surface& s, double x, double y) {
    return s.shape[2] - std::hypot(x - s.shape[0], y - s.shape[1]);
}
/// shape: both ends, half width.
double wire(const Surface& s, double x, double y) {
    const double dx = s.shape[2] - s.shape[0], dy = s.shape[3] - s.shape[1];
    const double px = x - s.shape[0], py = y - s.shape[1];
    const double t = std::clamp((px * dx + py * dy) / (dx * dx + dy * dy), 0.0, 1.0);
    return s.shape[4] - std::hypot(px - t * dx, py - t * dy);
}

std::vector<Surface> makeSurfaces() {
    constexpr double kFloorFrom = 316.0, kSideTo = 50.0;
    const double wall = disparityOf(kWallByte), near = disparityOf(220);
    std::vector<Surface> surfaces = {{everywhere, {}, wall, 0.0, 0.0, {120, 112, 100}}};
    // Slopes meet the wall in a fold.
    const double rise = (near - wall) / (kHeight - kFloorFrom);
    surfaces.push_back({box,
                        {kWidth / 2.0, kFloorFrom + 500.0, 10000.0, 500.0},
                        wall - rise * kFloorFrom,
                        0.0,
                        rise,
                        {96, 120, 84}});
    surfaces.push_back({box,
                        {kSideTo - 500.0, 0.0, 500.0, 10000.0},
                        wall + 0.012 * kSideTo * (near - wall),
                        -0.012 * (near - wall),
                        0.0,
                        {110, 96, 128}});
    const double pole = disparityOf(kPoleByte);
    const double widths[] = {1.5, 2.0, 3.0, 4.0, 6.0, 8.0, 12.0};
    double x = 84.3;
    for (const double width : widths) {
        surfaces.push_back({box, {x, 100.4, width / 2.0, 78.2}, pole, 0.0, 0.0, {200, 70, 50}});
        x += 23.7 + width;
    }
    double y = 196.6;
    for (const double width : widths) {
        surfaces.push_back({box, {186.2, y, 106.0, width / 2.0}, pole, 0.0, 0.0, {60, 90, 190}});
        y += 9.3 + width;
    }
    const double wires = disparityOf(kWireByte);
    surfaces.push_back({wire, {306.0, 44.0, 496.0, 112.0, 1.0}, wires, 0.0, 0.0, {235, 230, 210}});
    surfaces.push_back({wire, {376.0, 16.0, 404.0, 168.0, 0.8}, wires, 0.0, 0.0, {30, 28, 26}});
    const double discs = disparityOf(kDiscByte);
    surfaces.push_back({disc, {430.0, 226.0, 48.0}, discs, 0.0, 0.0, {210, 180, 60}});
    surfaces.push_back({disc, {336.0, 208.0, 17.0}, discs, 0.0, 0.0, {70, 170, 160}});
    return surfaces;
}

const std::vector<Surface>& surfaces() {
    static const std::vector<Surface> made = makeSurfaces();
    return made;
}

/// What is seen at a point of a view.
struct Hit {
    size_t surface;
    double x, y;  ///< in the rest view
    double disparity;
};

Hit hitAt(double screen_x, double screen_y, double along_x, double along_y) {
    Hit nearest = {0, 0.0, 0.0, -1e9};
    for (size_t i = 0; i < surfaces().size(); ++i) {
        const Surface& surface = surfaces()[i];
        // screen = rest + along * disparity(rest), for one direction at a time.
        double x = screen_x, y = screen_y;
        if (along_x != 0.0)
            x = (screen_x - along_x * surface.disparityAt(0.0, y)) /
                (1.0 + along_x * surface.disparity_per_x);
        if (along_y != 0.0)
            y = (screen_y - along_y * surface.disparityAt(x, 0.0)) /
                (1.0 + along_y * surface.disparity_per_y);
        const double disparity = surface.disparityAt(x, y);
        if (disparity > nearest.disparity && surface.inside(surface, x, y) > 0.0)
            nearest = {i, x, y, disparity};
    }
    return nearest;
}

Colour colourOf(const Hit& hit) {
    const uint32_t seed = 1000u * static_cast<uint32_t>(hit.surface) + 5u;
    const double light = 0.45 * noise(hit.x, hit.y, 22.0, seed) + 0.35 * noise(hit.x, hit.y, 8.0, seed + 91) +
                         0.2 * noise(hit.x, hit.y, 4.0, seed + 7);
    Colour colour = surfaces()[hit.surface].colour;
    for (size_t c = 0; c < 3; ++c) {
        const double tint = noise(hit.x, hit.y, 13.0, seed + 17 * static_cast<uint32_t>(c + 1));
        colour[c] = std::clamp(colour[c] + 150.0 * light + 40.0 * tint, 0.0, 255.0);
    }
    return colour;
}

}  // namespace

double ExactScene::strength(double position) { return position * strengthAtTheEnd(); }

ExactView ExactScene::view(Sweep sweep, double position) {
    const bool horizontal = sweep == Sweep::kHorizontal;
    const double along_x = horizontal ? position : 0.0, along_y = horizontal ? 0.0 : position;
    // The wall stays about where it is.
    const int back = static_cast<int>(std::lround(position * disparityOf(kWallByte)));
    ExactView view;
    (horizontal ? view.left : view.top) = back;
    view.picture = Picture(kWidth, kHeight);
    view.judged = view.hidden = Mask(kWidth, kHeight);
    Plane disparity(kWidth, kHeight);
    const auto seenAt = [&](double x, double y) {
        return hitAt(view.left + x, view.top + y, along_x, along_y);
    };
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x) {
            const Hit hit = seenAt(x + 0.5, y + 0.5);
            // The textures' features are larger than a pixel, so that only outlines need samples within it.
            bool whole = true;
            for (const int j : {y, y + 1})
                for (const int i : {x, x + 1}) whole = whole && seenAt(i, j).surface == hit.surface;
            Colour colour = colourOf(hit);
            if (!whole) {
                colour = {};
                for (int j = 0; j < kSamples; ++j)
                    for (int i = 0; i < kSamples; ++i) {
                        const Colour sample =
                            colourOf(seenAt(x + (i + 0.5) / kSamples, y + (j + 0.5) / kSamples));
                        for (size_t c = 0; c < 3; ++c) colour[c] += sample[c] / (kSamples * kSamples);
                    }
            }
            for (size_t c = 0; c < 3; ++c)
                view.picture.at(x, y, static_cast<int>(c)) = static_cast<uint8_t>(std::lround(colour[c]));

            disparity.at(x, y) = static_cast<float>(hit.disparity);
            const bool judged = hit.x >= 0.0 && hit.y >= 0.0 && hit.x < kWidth && hit.y < kHeight;
            view.judged.at(x, y) = judged ? 1 : 0;
            view.hidden.at(x, y) = judged && hitAt(hit.x, hit.y, 0.0, 0.0).surface != hit.surface ? 1 : 0;
        }
    Mask jumps(kWidth, kHeight);
    const auto jump = [&](int x, int y, int i, int j) {
        if (std::abs(disparity.at(x, y) - disparity.at(i, j)) > 1.5f) jumps.at(x, y) = jumps.at(i, j) = 1;
    };
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x) {
            if (x + 1 < kWidth) jump(x, y, x + 1, y);
            if (y + 1 < kHeight) jump(x, y, x, y + 1);
        }
    view.band = grown(jumps, 4);
    for (size_t i = 0; i < view.band.samples.size(); ++i)
        if (view.judged.samples[i] == 0) view.band.samples[i] = 0;
    return view;
}

Picture ExactScene::photo() { return view(Sweep::kHorizontal, 0.0).picture; }

DepthMap ExactScene::depth() {
    DepthMap depth(kWidth, kHeight);
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x) {
            const double disparity = hitAt(x + 0.5, y + 0.5, 0.0, 0.0).disparity;
            depth.at(x, y) = depthByteAt(1.0 / (disparity / strengthAtTheEnd() + 1.0 / ShiftedViews::kPivot));
        }
    return depth;
}

}  // namespace quorvane::bench
