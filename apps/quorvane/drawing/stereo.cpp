#include "apps/quorvane/drawing/stereo.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <utility>

#include "apps/quorvane/terminal/numbers.h"
#include "apps/quorvane/terminal/usage_error.h"

namespace quorvane::app {
namespace {

using media::RgbaImage;

constexpr int kMostTiles = 256;
constexpr int kLargestQuilt = 4096;  // pixels a side; what displays with many views are fed

void copyInto(const RgbaImage& view, int left, int top, RgbaImage* out) {
    for (int y = 0; y < view.height; ++y)
        std::copy_n(view.row(y), static_cast<size_t>(view.width) * 4, &out->at(left, top + y));
}

/// Each pixel is the mean of two neighbours.
void copySqueezed(const RgbaImage& view, int left, RgbaImage* out) {
    for (int y = 0; y < view.height; ++y) {
        const uint8_t* from = view.row(y);
        uint8_t* to = &out->at(left, y);
        for (int x = 0; x < view.width / 2; ++x, from += 8, to += 4)
            for (int c = 0; c < 4; ++c) to[c] = static_cast<uint8_t>((from[c] + from[c + 4] + 1) / 2);
    }
}

void invert(int left, RgbaImage* out) {
    for (int y = 0; y < out->height; ++y)
        for (int x = left; x < out->width; ++x)
            for (int c = 0; c < 3; ++c) (&out->at(x, y))[c] = static_cast<uint8_t>(255 - (&out->at(x, y))[c]);
}

// E. Dubois, "A projection method to generate anaglyph stereo images", Proc. IEEE ICASSP 2001, for red and
// cyan glasses: light that each eye's filter lets through comes closest to what that eye should see. Rows are
// R, G and B of the anaglyph; columns those of the left view, then those of the right one.
constexpr float kDubois[3][6] = {
    {0.4561f, 0.500484f, 0.176381f, -0.0434706f, -0.0879388f, -0.00155529f},
    {-0.0400822f, -0.0378246f, -0.0157589f, 0.378476f, 0.73364f, -0.0184503f},
    {-0.0152161f, -0.0205971f, -0.00546856f, -0.0721527f, -0.112961f, 1.2264f},
};

/// sRGB's samples as light from 0 to 1.
std::array<float, 256> lightOfSamples() {
    std::array<float, 256> light{};
    for (size_t i = 0; i < light.size(); ++i) {
        const double v = static_cast<double>(i) / 255.0;
        light[i] = static_cast<float>(v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4));
    }
    return light;
}

constexpr int kLightSteps = 1 << 14;

/// The samples for light of 0 to 1 in equal steps, fine enough for sRGB's steepest part.
std::vector<uint8_t> samplesOfLight() {
    std::vector<uint8_t> samples(kLightSteps + 1);
    for (size_t i = 0; i < samples.size(); ++i) {
        const double l = static_cast<double>(i) / kLightSteps;
        const double v = l <= 0.0031308 ? 12.92 * l : 1.055 * std::pow(l, 1.0 / 2.4) - 0.055;
        samples[i] = static_cast<uint8_t>(std::lround(255.0 * v));
    }
    return samples;
}

void makeAnaglyph(const RgbaImage& left, const RgbaImage& right, RgbaImage* out) {
    static const std::array<float, 256> light = lightOfSamples();
    static const std::vector<uint8_t> samples = samplesOfLight();
    const size_t pixels = left.samples.size() / 4;
    for (size_t i = 0; i < pixels; ++i) {
        const uint8_t* l = &left.samples[4 * i];
        const uint8_t* r = &right.samples[4 * i];
        const float seen[6] = {light[l[0]], light[l[1]], light[l[2]], light[r[0]], light[r[1]], light[r[2]]};
        uint8_t* to = &out->samples[4 * i];
        for (size_t c = 0; c < 3; ++c) {
            float sum = 0.0f;
            for (size_t k = 0; k < 6; ++k) sum += kDubois[c][k] * seen[k];
            to[c] = samples[static_cast<size_t>(std::clamp(sum, 0.0f, 1.0f) * kLightSteps + 0.5f)];
        }
        to[3] = 255;
    }
}

std::string lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

}  // namespace

bool showsDepth(const Stereo& stereo) {
    return stereo.kind == StereoKind::kDepthBrightNear || stereo.kind == StereoKind::kDepthDarkNear;
}

bool hasEyes(const Stereo& stereo) { return stereo.kind != StereoKind::kWiggle && !showsDepth(stereo); }

const std::vector<StereoKindInfo>& stereoKinds() {
    static const std::vector<StereoKindInfo> all = {
        {StereoKind::kSideBySide, "sbs", "both views side by side, the left eye's on the left", "_SBS"},
        {StereoKind::kHalfSideBySide, "half-sbs", "the same, each squeezed to half of its width", "_HSBS"},
        {StereoKind::kTopBottom, "tb", "the left eye's view above the right eye's", "_TB"},
        {StereoKind::kCross, "cross", "side by side for crossed eyes: the right eye's on the left", "_RL"},
        {StereoKind::kAnaglyph, "anaglyph", "for red and cyan glasses, red on the left eye", "_anaglyph"},
        {StereoKind::kWiggle, "wiggle", "a clip that shows both views in turn, 8 a second", ""},
        {StereoKind::kQuilt, "quilt:CxR",
         "C x R views for displays with many, the leftmost at the bottom left", "_qs"},
        {StereoKind::kDepthBrightNear, "rgbd-bright-near",
         "the picture, and its depth map on the right: brighter is nearer", "_RGBD_bright-near"},
        {StereoKind::kDepthDarkNear, "rgbd-dark-near", "the same: darker is nearer", "_RGBD_dark-near"},
    };
    return all;
}

Stereo parseStereo(const std::string& text) {
    std::string words;
    for (const StereoKindInfo& info : stereoKinds()) {
        if (info.kind != StereoKind::kQuilt && text == info.word) return {info.kind, 1, 1, 1.0};
        words += (words.empty() ? "" : ", ") + std::string(info.word);
    }
    const std::string kQuilt = "quilt:";
    double columns = 0.0, rows = 0.0;
    if (text.compare(0, kQuilt.size(), kQuilt) == 0) {
        const bool whole = parsePair(text.substr(kQuilt.size()), 'x', &columns, &rows) &&
                           columns == std::floor(columns) && rows == std::floor(rows);
        if (!whole || columns < 1.0 || rows < 1.0 || columns * rows < 2.0 || columns * rows > kMostTiles)
            throw UsageError("--stereo " + text + ": quilt:COLUMNSxROWS is wanted, of 2 to " +
                             std::to_string(kMostTiles) + " tiles, such as quilt:8x6");
        return {StereoKind::kQuilt, static_cast<int>(columns), static_cast<int>(rows), 1.0};
    }
    throw UsageError("--stereo " + text + ": one of " + words + " is wanted");
}

Size joinedSize(const Stereo& stereo, Size view) {
    switch (stereo.kind) {
        case StereoKind::kSideBySide:
        case StereoKind::kCross:
        case StereoKind::kDepthBrightNear:
        case StereoKind::kDepthDarkNear: return {2 * view.width, view.height};
        case StereoKind::kTopBottom: return {view.width, 2 * view.height};
        case StereoKind::kQuilt: return {stereo.columns * view.width, stereo.rows * view.height};
        case StereoKind::kHalfSideBySide:
        case StereoKind::kAnaglyph:
        case StereoKind::kWiggle: break;
    }
    return view;
}

Size joinableSize(const Stereo& stereo, Size view, bool even) {
    const Size one = joinedSize(stereo, {1, 1});
    const auto fitted = [](int length, bool halved) { return halved ? std::max(2, length / 2 * 2) : length; };
    return {fitted(view.width, stereo.kind == StereoKind::kHalfSideBySide || (even && one.width % 2 == 1)),
            fitted(view.height, even && one.height % 2 == 1)};
}

int usualLongestView(const Stereo& stereo, Size photo, int longest) {
    if (stereo.kind != StereoKind::kQuilt) return longest;
    const double side = std::max(photo.width, photo.height);
    const double width = photo.width / side * stereo.columns, height = photo.height / side * stereo.rows;
    return std::clamp(static_cast<int>(kLargestQuilt / std::max(width, height)), 1, longest);
}

std::string stereoSuffix(const Stereo& stereo, Size view) {
    for (const StereoKindInfo& info : stereoKinds()) {
        if (info.kind != stereo.kind) continue;
        if (stereo.kind != StereoKind::kQuilt) return info.suffix;
        char text[64];
        std::snprintf(text, sizeof text, "%s%dx%da%.4g", info.suffix, stereo.columns, stereo.rows,
                      static_cast<double>(view.width) / view.height);
        return text;
    }
    return "";
}

std::string withSuffix(const std::string& path, const std::string& suffix) {
    const std::filesystem::path whole(path);
    const std::string stem = whole.stem().string();
    const bool has_it =
        stem.size() >= suffix.size() && lower(stem.substr(stem.size() - suffix.size())) == lower(suffix);
    if (suffix.empty() || stem.empty() || has_it) return path;
    std::filesystem::path named = whole;
    named.replace_filename(stem + suffix + whole.extension().string());
    return named.string();
}

std::vector<StereoView> viewsAround(const Stereo& stereo, Position middle) {
    const auto eye = [&](double share) -> StereoView {
        Position place = middle;
        place.x += stereo.eyes * share;
        return {place, false};
    };
    if (showsDepth(stereo)) return {{middle, false}, {middle, true}};
    if (stereo.kind == StereoKind::kWiggle) return {{middle, false}};
    const int tiles = stereo.kind == StereoKind::kQuilt ? stereo.columns * stereo.rows : 2;
    std::vector<StereoView> views;
    views.reserve(static_cast<size_t>(tiles));
    for (int i = 0; i < tiles; ++i) views.push_back(eye(2.0 * i / (tiles - 1) - 1.0));
    return views;
}

double sideShare(const std::vector<Position>& path, double eyes) {
    double farthest = 0.0;
    for (const Position& position : path) farthest = std::max(farthest, std::fabs(position.x));
    return farthest + eyes > 1.0 ? (1.0 - eyes) / farthest : 1.0;
}

std::vector<Position> withShare(std::vector<Position> path, double share) {
    for (Position& position : path) position.x *= share;
    return path;
}

std::vector<Position> eyesOn(const std::vector<Position>& path, const Stereo& stereo) {
    if (showsDepth(stereo)) return path;
    // What lies between shows no more than the middle and both ends do.
    std::vector<Position> all;
    all.reserve(3 * path.size());
    for (const Position& middle : path)
        for (const double share : {-1.0, 0.0, 1.0}) {
            all.push_back(middle);
            all.back().x += share * stereo.eyes;
        }
    return all;
}

std::vector<Position> wiggled(Position middle, double eyes, int frames) {
    std::vector<Position> positions(static_cast<size_t>(frames), middle);
    for (size_t i = 0; i < positions.size(); ++i) positions[i].x += i % 2 == 0 ? -eyes : eyes;
    return positions;
}

void join(const Stereo& stereo, const std::vector<const RgbaImage*>& views, RgbaImage* out) {
    const RgbaImage& first = *views.front();
    const Size view = {first.width, first.height}, size = joinedSize(stereo, view);
    if (out->width != size.width || out->height != size.height) *out = RgbaImage(size.width, size.height);
    const auto place = [&](size_t i, int column, int row) {
        copyInto(*views[i], column * view.width, row * view.height, out);
    };
    switch (stereo.kind) {
        case StereoKind::kSideBySide: place(0, 0, 0), place(1, 1, 0); break;
        case StereoKind::kCross: place(1, 0, 0), place(0, 1, 0); break;
        case StereoKind::kTopBottom: place(0, 0, 0), place(1, 0, 1); break;
        case StereoKind::kHalfSideBySide:
            copySqueezed(*views[0], 0, out);
            copySqueezed(*views[1], view.width / 2, out);
            break;
        case StereoKind::kAnaglyph: makeAnaglyph(*views[0], *views[1], out); break;
        case StereoKind::kWiggle: place(0, 0, 0); break;
        case StereoKind::kQuilt:
            for (size_t i = 0; i < views.size(); ++i) {
                const int tile = static_cast<int>(i);
                place(i, tile % stereo.columns, stereo.rows - 1 - tile / stereo.columns);
            }
            break;
        case StereoKind::kDepthBrightNear: place(0, 0, 0), place(1, 1, 0); break;
        case StereoKind::kDepthDarkNear:
            place(0, 0, 0), place(1, 1, 0);
            invert(view.width, out);
            break;
    }
}

}  // namespace quorvane::app
