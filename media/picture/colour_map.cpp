#include "media/picture/colour_map.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <utility>

namespace quorvane::media {
namespace {

constexpr int kSegments = 255;

/// A polynomial a channel: constant term first, value 0..1.
template <size_t kTerms>
MapColour polynomial(const double (&terms)[kTerms][3], double t) {
    MapColour colour = {};
    for (size_t channel = 0; channel < 3; ++channel) {
        for (size_t i = kTerms; i-- > 0;) colour[channel] = colour[channel] * t + terms[i][channel];
        colour[channel] = std::clamp(colour[channel], 0.0, 1.0);
    }
    return colour;
}

/// A trapezium: 0 up to a, 1 from b to c, 0 from d.
double trapezium(double t, double a, double b, double c, double d) {
    return std::clamp(std::min((t - a) / (b - a), (d - t) / (d - c)), 0.0, 1.0);
}

// Jet and hot by their linear pieces. MATLAB's and matplotlib's jet differ in colours; other programs' hot
// takes the same colours as MATLAB's, up to 13 levels earlier or later.

MapColour jet(double t) {
    return {trapezium(t, 0.375, 0.625, 0.875, 1.125), trapezium(t, 0.125, 0.375, 0.625, 0.875),
            trapezium(t, -0.125, 0.125, 0.375, 0.625)};
}

MapColour softJet(double t) {
    return {trapezium(t, 0.35, 0.66, 0.89, 1.11), trapezium(t, 0.125, 0.375, 0.64, 0.91),
            trapezium(t, -0.11, 0.11, 0.34, 0.65)};
}

MapColour hot(double t) {
    return {std::clamp(t / 0.375, 0.0, 1.0), std::clamp((t - 0.375) / 0.375, 0.0, 1.0),
            std::clamp((t - 0.75) / 0.25, 0.0, 1.0)};
}

/// The rainbow of gnuplot and matplotlib, from violet to red.
MapColour rainbow(double t) {
    return {std::min(1.0, std::abs(2.0 * t - 0.5)), std::sin(M_PI * t), std::cos(M_PI / 2.0 * t)};
}

// Every fifteenth colour of the table that Mikhailov published with Turbo (Google AI blog, 2019), whose own
// polynomial is up to 20 levels off it; straight lines between them stay within 6.
MapColour turbo(double t) {
    static constexpr double kColours[][3] = {
        {48, 18, 59},   {63, 62, 156},  {70, 102, 221}, {69, 140, 253}, {47, 178, 244}, {26, 212, 208},
        {34, 235, 170}, {82, 250, 122}, {139, 255, 75}, {183, 247, 53}, {219, 226, 54}, {245, 197, 58},
        {254, 161, 48}, {249, 117, 29}, {232, 75, 12},  {206, 45, 4},   {169, 22, 1},   {122, 4, 3}};
    const size_t last_pair = std::size(kColours) - 2;
    const double at = t * static_cast<double>(last_pair + 1);
    const size_t i = std::min(last_pair, static_cast<size_t>(at));
    const double share = at - static_cast<double>(i);
    MapColour colour = {};
    for (size_t channel = 0; channel < 3; ++channel)
        colour[channel] = (kColours[i][channel] * (1.0 - share) + kColours[i + 1][channel] * share) / 255.0;
    return colour;
}

// The maps of van der Walt and Smith, in the polynomials that Zucker fitted to them (public domain, 2017).

MapColour viridis(double t) {
    static constexpr double kTerms[][3] = {
        {0.2777273272, 0.0054073445, 0.3340998053},   {0.1050930431, 1.4046135299, 1.3845901626},
        {-0.3308618287, 0.2148475595, 0.0950951630},  {-4.6342304990, -5.7991009734, -19.3324409563},
        {6.2282699363, 14.1799333668, 56.6905526007}, {4.7763849977, -13.7451453777, -65.3530326334},
        {-5.4354558559, 4.6458526122, 26.3124352496}};
    return polynomial(kTerms, t);
}

MapColour plasma(double t) {
    static constexpr double kTerms[][3] = {
        {0.0587323439, 0.0233367089, 0.5433401827},      {2.1765146342, 0.2383834171, 0.7539604600},
        {-2.6894604765, -7.4558511357, 3.1107999397},    {6.1303483459, 42.3461881477, -28.5188546533},
        {-11.1074361906, -82.6663110943, 60.1398476742}, {10.0230655765, 71.4136177010, -54.0721865556},
        {-3.6587138428, -22.9315346546, 18.1919077854}};
    return polynomial(kTerms, t);
}

MapColour magma(double t) {
    static constexpr double kTerms[][3] = {
        {-0.0021364851, -0.0007496551, -0.0053861279},  {0.2516605407, 0.6775232437, 2.4940265993},
        {8.3537172792, -3.5777195150, 0.3144679030},    {-27.6687330858, 14.2647307810, -13.6492131881},
        {52.1761398123, -27.9436060717, 12.9441694424}, {-50.7685253647, 29.0465828213, 4.2341529938},
        {18.6557050659, -11.4897735200, -5.6019615087}};
    return polynomial(kTerms, t);
}

MapColour inferno(double t) {
    static constexpr double kTerms[][3] = {
        {0.0002189404, 0.0016510046, -0.0194808984},     {0.1065134195, 0.5639564368, 3.9327123889},
        {11.6024930825, -3.9728539657, -15.9423941063},  {-41.7039961314, 17.4363988821, 44.3541451987},
        {77.1629356994, -33.4023589421, -81.8073092574}, {-71.3194282450, 32.6260642640, 73.2095198580},
        {25.1311262248, -12.2426689524, -23.0703250029}};
    return polynomial(kTerms, t);
}

std::vector<ColourMap> knownMaps() {
    std::vector<ColourMap> maps;
    const auto add = [&maps](const char* name, MapColour (*colour)(double)) {
        ColourMap map = {name, {}};
        for (int i = 0; i <= kSegments; ++i) {
            map.curve.push_back(colour(static_cast<double>(i) / kSegments));
            for (double& channel : map.curve.back()) channel *= 255.0;
        }
        maps.push_back(std::move(map));
    };
    add("jet", jet);
    add("jet", softJet);
    add("rainbow", rainbow);
    add("turbo", turbo);
    add("viridis", viridis);
    add("plasma", plasma);
    add("inferno", inferno);
    add("magma", magma);
    add("hot", hot);
    return maps;
}

struct Nearest {
    double position;  ///< 0 to 1 along the curve
    double distance;  ///< from it, in levels
};

/// The nearest point on the curve's segments `first` to `last`.
Nearest nearest(const std::vector<MapColour>& curve, const MapColour& colour, int first, int last) {
    Nearest found = {0.0, 1e9};
    for (int i = std::max(0, first); i <= std::min(kSegments - 1, last); ++i) {
        const MapColour& from = curve[static_cast<size_t>(i)];
        const MapColour& to = curve[static_cast<size_t>(i) + 1];
        double along = 0.0, length = 0.0;
        for (size_t c = 0; c < 3; ++c) {
            along += (colour[c] - from[c]) * (to[c] - from[c]);
            length += (to[c] - from[c]) * (to[c] - from[c]);
        }
        const double t = length > 0.0 ? std::clamp(along / length, 0.0, 1.0) : 0.0;
        double squares = 0.0;
        for (size_t c = 0; c < 3; ++c) {
            const double off = colour[c] - (from[c] + t * (to[c] - from[c]));
            squares += off * off;
        }
        const double distance = std::sqrt(squares);
        if (distance < found.distance) found = {(i + t) / kSegments, distance};
    }
    return found;
}

MapColour colourAt(const RgbImage& image, size_t pixel) {
    const uint8_t* rgb = &image.samples[pixel * 3];
    return {static_cast<double>(rgb[0]), static_cast<double>(rgb[1]), static_cast<double>(rgb[2])};
}

/// Grays tell the maps apart badly, and stand for margins and for "unknown" in maps that have none.
bool isGrayish(const MapColour& colour) {
    const auto [least, most] = std::minmax_element(colour.begin(), colour.end());
    return *most - *least < 24.0;
}

}  // namespace

const ColourMap* recogniseColourMap(const RgbImage& image) {
    static const std::vector<ColourMap> maps = knownMaps();
    constexpr size_t kMostLookedAt = 10000;
    constexpr size_t kParts = 12;
    constexpr double kNear = 12.0, kVeryNear = 6.0;
    const size_t pixels = image.samples.size() / 3;
    std::vector<MapColour> coloured, grayish;
    for (size_t i = 0; i < pixels; i += pixels / kMostLookedAt + 1) {
        const MapColour colour = colourAt(image, i);
        (isGrayish(colour) ? grayish : coloured).push_back(colour);
    }
    if (coloured.size() * 4 < coloured.size() + grayish.size()) return nullptr;

    const ColourMap* best = nullptr;
    size_t most_near = 0;
    for (const ColourMap& map : maps) {
        const auto nearestTo = [&map](const MapColour& colour) {
            return nearest(map.curve, colour, 0, kSegments);
        };
        size_t near = 0, very_near = 0;
        std::array<bool, kParts> used = {};
        for (const MapColour& colour : coloured) {
            const Nearest at = nearestTo(colour);
            if (at.distance > kNear) continue;
            ++near;
            if (at.distance <= kVeryNear) ++very_near;
            used[std::min(kParts - 1, static_cast<size_t>(at.position * kParts))] = true;
        }
        if (near * 10 < coloured.size() * 9 || very_near * 2 < coloured.size() ||
            std::count(used.begin(), used.end(), true) * 4 < static_cast<std::ptrdiff_t>(kParts))
            continue;
        near += static_cast<size_t>(std::count_if(
            grayish.begin(), grayish.end(),
            [&nearestTo](const MapColour& colour) { return nearestTo(colour).distance <= kNear; }));
        if (near > most_near) {
            best = &map;
            most_near = near;
        }
    }
    return best;
}

Plane positionsOnColourMap(const RgbImage& image, const ColourMap& map, GrayImage* known) {
    // Most pictures have few colours: the search over the whole curve is done once for colours alike.
    constexpr int kShift = 3;
    constexpr int kUnsearched = -2;
    constexpr int kReach = 12;
    // JPEG leaves most colours within 12; where it mixed two, at steps, the position would be a third one's.
    constexpr double kFarOff = 24.0;
    std::vector<int> segments(size_t{1} << (3 * (8 - kShift)), kUnsearched);
    Plane positions(image.width, image.height);
    for (size_t i = 0; i < positions.samples.size(); ++i) {
        const uint8_t* rgb = &image.samples[i * 3];
        const size_t key = (static_cast<size_t>(rgb[0] >> kShift) << (2 * (8 - kShift))) |
                           (static_cast<size_t>(rgb[1] >> kShift) << (8 - kShift)) |
                           static_cast<size_t>(rgb[2] >> kShift);
        const MapColour colour = colourAt(image, i);
        if (segments[key] == kUnsearched)
            segments[key] = static_cast<int>(nearest(map.curve, colour, 0, kSegments).position * kSegments);
        const Nearest at = nearest(map.curve, colour, segments[key] - kReach, segments[key] + kReach);
        positions.samples[i] = static_cast<float>(at.position * 255.0);
        if (at.distance > kFarOff) {
            if (known->samples.empty()) {
                *known = GrayImage(image.width, image.height);
                std::fill(known->samples.begin(), known->samples.end(), uint8_t{255});
            }
            known->samples[i] = 0;
        }
    }
    return positions;
}

}  // namespace quorvane::media
