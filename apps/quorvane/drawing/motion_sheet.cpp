#include "apps/quorvane/drawing/motion_sheet.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>

#include "apps/quorvane/drawing/overlays.h"
#include "apps/quorvane/drawing/view.h"
#include "apps/quorvane/terminal/text.h"
#include "media/scene/sample_scene.h"
#include "media/scene/sheet.h"
#include "system/cancel.h"

namespace quorvane::app {
namespace {

constexpr int kPictures = 5;
constexpr Size kPanel = {280, 210};
/// Plots are drawn larger, so that they are smooth on the sheet.
constexpr int kLarger = 3;
constexpr Size kPlot = {kPanel.width * kLarger, kPanel.height* kLarger};

constexpr uint8_t kGround = 44;
constexpr Colour kRule = {84, 84, 84}, kLine = {150, 150, 150}, kFrame = {255, 255, 255};

struct Curve {
    const char* name;
    Colour colour;
    double (*value)(const Position&);  ///< -1 to 1; 0 where the motion leaves it alone
};

constexpr std::array<Curve, 3> kCurves = {{
    {"orange x", {255, 140, 90}, [](const Position& at) { return at.x; }},
    {"blue y", {110, 190, 255}, [](const Position& at) { return at.y; }},
    {"yellow zoom",
     {250, 220, 90},
     [](const Position& at) { return std::clamp(std::log2(at.zoom), -1.0, 1.0); }},
}};

/// A plot whose both axes go from -1 to 1, with room around them.
class Plot {
  public:
    /// `half_width` and `half_height` are what 1 is, in pixels.
    Plot(int half_width, int half_height)
        : m_image(kPlot.width, kPlot.height), m_half_width(half_width), m_half_height(half_height) {
        std::fill(m_image.samples.begin(), m_image.samples.end(), kGround);
        for (const double at : {-1.0, 0.0, 1.0}) {
            drawLine({-1.0, at}, {1.0, at}, 1.0, kRule);
            drawLine({at, -1.0}, {at, 1.0}, 1.0, kRule);
        }
    }

    void drawDot(const Position& at, double radius, Colour colour) {
        const double x = kPlot.width / 2.0 + at.x * m_half_width;
        const double y = kPlot.height / 2.0 - at.y * m_half_height;
        for (int j = static_cast<int>(y - radius); j <= static_cast<int>(y + radius); ++j)
            for (int i = static_cast<int>(x - radius); i <= static_cast<int>(x + radius); ++i) {
                const bool inside = i >= 0 && j >= 0 && i < kPlot.width && j < kPlot.height;
                if (!inside || std::hypot(i + 0.5 - x, j + 0.5 - y) > radius) continue;
                uint8_t* const pixel = &m_image.at(i, j);
                pixel[0] = colour.red;
                pixel[1] = colour.green;
                pixel[2] = colour.blue;
            }
    }

    void drawLine(const Position& from, const Position& to, double radius, Colour colour) {
        const double length = std::hypot((to.x - from.x) * m_half_width, (to.y - from.y) * m_half_height);
        const int steps = static_cast<int>(length) + 1;
        for (int step = 0; step <= steps; ++step) {
            const double part = static_cast<double>(step) / steps;
            drawDot({from.x + part * (to.x - from.x), from.y + part * (to.y - from.y)}, radius, colour);
        }
    }

    const media::RgbImage& image() const { return m_image; }

  private:
    media::RgbImage m_image;
    int m_half_width, m_half_height;
};

media::RgbImage plotPath(const std::vector<Position>& path, const std::vector<Position>& frames) {
    constexpr int kHalf = kPlot.height / 2 - 10 * kLarger;
    Plot plot(kHalf, kHalf);
    for (size_t i = 1; i < path.size(); ++i) plot.drawLine(path[i - 1], path[i], 2.0, kLine);
    for (const Position& frame : frames) plot.drawDot(frame, 5.0 * frame.zoom, kFrame);
    return plot.image();
}

media::Panel plotTimes(const std::vector<Position>& path, const std::vector<double>& pictures) {
    Plot plot(kPlot.width / 2 - 10 * kLarger, kPlot.height / 2 - 10 * kLarger);
    for (const double part : pictures)
        plot.drawLine({2.0 * part - 1.0, -1.0}, {2.0 * part - 1.0, 1.0}, 1.0, kRule);
    std::string label;
    for (const Curve& curve : kCurves) {
        const auto stays = [&](const Position& each) { return curve.value(each) == 0.0; };
        if (std::all_of(path.begin(), path.end(), stays)) continue;
        label += (label.empty() ? "" : ", ") + std::string(curve.name);
        const auto at = [&](size_t i) -> Position {
            return {2.0 * static_cast<double>(i) / static_cast<double>(path.size() - 1) - 1.0,
                    curve.value(path[i])};
        };
        for (size_t i = 1; i < path.size(); ++i) plot.drawLine(at(i - 1), at(i), 3.5, curve.colour);
    }
    return {label.empty() ? "nothing moves" : label, plot.image()};
}

/// What a label's markup may hold.
std::string labelOf(const Motion& motion) {
    std::string label = printable(motion.text.substr(motion.text.rfind('/') + 1));
    for (const char marks : {'<', '>', '&'}) std::replace(label.begin(), label.end(), marks, '?');
    return label.empty() ? " " : label;
}

void addRow(const Motion& motion, FrameCount count, const media::SampleScene& scene,
            std::vector<media::Panel>* panels) {
    constexpr int kPlaces = 2000;
    std::vector<Position> path;
    path.reserve(kPlaces + 1);
    for (int i = 0; i <= kPlaces; ++i) path.push_back(motion.place(static_cast<double>(i) / kPlaces));
    std::vector<double> parts;
    parts.reserve(kPictures);
    for (int i = 0; i < kPictures; ++i)
        parts.push_back(static_cast<double>(i) / (motion.once ? kPictures - 1 : kPictures));
    const double seconds = static_cast<double>(count.frames - (motion.once ? 1 : 0)) / count.fps;
    panels->push_back({labelOf(motion), plotPath(path, loopAround({}, motion, 1.0, count.frames))});
    panels->push_back(plotTimes(path, parts));

    ViewOptions options;
    options.renderer = Renderer::kSoftware;
    View view(options, {0, true}, kPanel);
    media::Plane depth(scene.depth.width, scene.depth.height);
    depth.samples.assign(scene.depth.samples.begin(), scene.depth.samples.end());
    view.upload(view.plan(scene.photo, depth, pathAround({}, motion, 1.0, count.frames)));
    for (const double part : parts) {
        throwIfCancelled();
        view.draw(motion.place(part));
        panels->push_back({formatted("%.3g s", part * seconds), media::toRgb(view.picture())});
    }
}

}  // namespace

media::RgbImage motionSheet(const std::vector<Motion>& motions, FrameCount count) {
    const media::SampleScene scene = media::makeSampleScene(2 * kPanel.width, 2 * kPanel.height);
    std::vector<media::Panel> panels;
    for (const Motion& motion : motions) addRow(motion, count, scene, &panels);
    return media::contactSheet(panels, 2 + kPictures, kPanel.width);
}

}  // namespace quorvane::app
