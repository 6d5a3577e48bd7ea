#include "apps/quorvane/drawing/overlays.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace quorvane::app {
namespace {

constexpr Colour kRim = {0, 0, 0};
constexpr int kRimWidth = 2;

void put(int x, int y, Colour colour, media::RgbImage* image) {
    if (x < 0 || y < 0 || x >= image->width || y >= image->height) return;
    uint8_t* pixel = &image->at(x, y);
    pixel[0] = colour.red;
    pixel[1] = colour.green;
    pixel[2] = colour.blue;
}

struct Pixel {
    int x, y;
};

/// Each pixel two wide, on the rim.
void drawLine(const std::vector<Pixel>& line, Colour colour, media::RgbImage* image) {
    for (const Pixel& pixel : line)
        for (int y = pixel.y - kRimWidth; y <= pixel.y + kRimWidth; ++y)
            for (int x = pixel.x - kRimWidth; x <= pixel.x + kRimWidth; ++x) put(x, y, kRim, image);
    for (const Pixel& pixel : line)
        for (int y = pixel.y - 1; y <= pixel.y; ++y)
            for (int x = pixel.x - 1; x <= pixel.x; ++x) put(x, y, colour, image);
}

/// For a cell that is drawn `times` as large: the colour, and how much of it covers the picture.
std::array<double, 4> heat(double times) {
    constexpr double kColours[][3] = {{255, 214, 64}, {255, 128, 0}, {225, 20, 40}, {255, 90, 255}};
    const double doublings = std::clamp(std::log2(times), 0.0, 4.0);
    const double place = std::max(0.0, doublings - 1.0);
    const auto first = static_cast<size_t>(std::min(2.0, std::floor(place)));
    const double share = place - static_cast<double>(first);
    std::array<double, 4> result = {};
    for (size_t c = 0; c < 3; ++c)
        result[c] = kColours[first][c] * (1.0 - share) + kColours[first + 1][c] * share;
    // The turn alone makes no colour.
    result[3] = std::clamp(2.0 * doublings - 1.0, 0.0, 1.0);
    return result;
}

}  // namespace

Field fieldOf(const media::GrayImage& plane) {
    return [&plane](double u, double v) {
        const double x = std::clamp(u * plane.width - 0.5, 0.0, plane.width - 1.0);
        const double y = std::clamp(v * plane.height - 0.5, 0.0, plane.height - 1.0);
        const int left = static_cast<int>(x), top = static_cast<int>(y);
        const int right = std::min(left + 1, plane.width - 1), low = std::min(top + 1, plane.height - 1);
        const auto row = [&](int at) {
            return plane.at(left, at) * (left + 1 - x) + plane.at(right, at) * (x - left);
        };
        return row(top) * (top + 1 - y) + row(low) * (y - top);
    };
}

void drawContour(const Field& field, Colour colour, media::RgbImage* image) {
    const auto inside = [&](int x, int y) {
        return field((x + 0.5) / image->width, (y + 0.5) / image->height) >= 0.0;
    };
    std::vector<Pixel> line;
    for (int y = 0; y < image->height; ++y)
        for (int x = 0; x < image->width; ++x)
            if (inside(x, y) &&
                !(inside(x - 1, y) && inside(x + 1, y) && inside(x, y - 1) && inside(x, y + 1)))
                line.push_back({x, y});
    // Where it lies on the first row or column, it is moved in by half its width.
    for (Pixel& pixel : line) pixel = {std::max(1, pixel.x), std::max(1, pixel.y)};
    drawLine(line, colour, image);
}

void drawCross(double u, double v, Colour colour, media::RgbImage* image) {
    constexpr int kInner = 6, kOuter = 18;
    const int x = static_cast<int>(u * image->width), y = static_cast<int>(v * image->height);
    std::vector<Pixel> line;
    for (int way = kInner; way <= kOuter; ++way)
        for (const int side : {-way, way}) {
            line.push_back({x + side, y});
            line.push_back({x, y + side});
        }
    drawLine(line, colour, image);
}

media::RgbImage heatMap(const media::RgbImage& image, const std::vector<float>& times, Size grid) {
    media::RgbImage map(image.width, image.height);
    const auto first = [](int pixel, int pixels, int cells) {
        return static_cast<int>(int64_t{pixel} * cells / pixels);
    };
    const auto last = [first](int pixel, int pixels, int cells) {
        return std::max(first(pixel, pixels, cells), first(pixel + 1, pixels, cells) - 1);
    };
    for (int y = 0; y < image.height; ++y)
        for (int x = 0; x < image.width; ++x) {
            float most = 1.0f;
            for (int j = first(y, image.height, grid.height); j <= last(y, image.height, grid.height); ++j)
                for (int i = first(x, image.width, grid.width); i <= last(x, image.width, grid.width); ++i)
                    most = std::max(most, times[static_cast<size_t>(j) * static_cast<size_t>(grid.width) +
                                                static_cast<size_t>(i)]);
            const uint8_t* pixel = &image.at(x, y);
            const double gray = 0.45 * (0.299 * pixel[0] + 0.587 * pixel[1] + 0.114 * pixel[2]);
            const std::array<double, 4> colour = heat(static_cast<double>(most));
            for (size_t c = 0; c < 3; ++c)
                (&map.at(x, y))[c] =
                    static_cast<uint8_t>(std::lround(gray * (1.0 - colour[3]) + colour[c] * colour[3]));
        }
    return map;
}

}  // namespace quorvane::app
