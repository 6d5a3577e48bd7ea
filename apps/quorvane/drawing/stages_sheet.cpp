#include "apps/quorvane/drawing/stages_sheet.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "apps/quorvane/drawing/overlays.h"
#include "apps/quorvane/terminal/text.h"
#include "media/picture/resample.h"
#include "media/scene/sheet.h"

namespace quorvane::app {
namespace {

constexpr int kColumns = 4;
constexpr int kPanelWidth = 480;

constexpr Colour kWhite = {255, 255, 255};
constexpr Colour kYellow = {255, 220, 0};
constexpr Colour kRed = {255, 48, 48};

/// In the size of a panel, so that lines drawn on it keep their width.
media::RgbImage asPanel(const media::RgbImage& image, Size panel) { return media::resample(image, panel); }

media::RgbImage photoWithFrame(const Stages& stages, Size panel) {
    media::RgbImage image = asPanel(stages.photo, panel);
    media::GrayImage seen(stages.shaped.width, stages.shaped.height);
    std::transform(stages.stretch.seen.begin(), stages.stretch.seen.end(), seen.samples.begin(),
                   [](uint8_t is_seen) { return is_seen != 0 ? uint8_t{255} : uint8_t{0}; });
    const Field in_any_picture = [field = fieldOf(seen)](double u, double v) {
        return u < 0.0 || v < 0.0 || u > 1.0 || v > 1.0 ? -1.0 : field(u, v) - 127.5;
    };
    const Field at_rest = [&stages](double u, double v) {
        return stages.fov_scale / 2.0 - std::max(std::abs(u - 0.5), std::abs(v - 0.5));
    };
    drawContour(in_any_picture, kYellow, &image);
    drawContour(at_rest, kWhite, &image);
    return image;
}

media::RgbImage shapedWithPivot(const Stages& stages, Size panel) {
    media::RgbImage image = asPanel(media::toRgb(stages.shaped), panel);
    const Field above_pivot = [&stages, field = fieldOf(stages.shaped)](double u, double v) {
        return field(u, v) - stages.still_depth;
    };
    drawContour(above_pivot, kRed, &image);
    return image;
}

std::string pivotLabel(const Stages& stages) {
    const auto [lowest, highest] =
        std::minmax_element(stages.shaped.samples.begin(), stages.shaped.samples.end());
    if (stages.still_depth < *lowest) return "depth as shaped; what stands still lies behind it";
    if (stages.still_depth > *highest) return "depth as shaped; what stands still lies before it";
    return "depth as shaped; red: where it stands still";
}

media::RgbImage stretchMap(const Stages& stages, Size panel) {
    media::RgbImage image = heatMap(asPanel(stages.photo, panel), stages.stretch.times,
                                    {stages.shaped.width, stages.shaped.height});
    drawCross(stages.stretch.worst_x, stages.stretch.worst_y, kWhite, &image);
    return image;
}

std::string stretchLabel(const PictureStretch& stretch) {
    return formatted("stretch: %.1f %% over ×2, at the cross ×%.*f", 100.0 * stretch.streaked_part,
                     stretch.worst_times < 10.0 ? 1 : 0, stretch.worst_times);
}

}  // namespace

media::RgbImage stagesSheet(const Stages& stages, const media::GrayImage& given) {
    const Size panel = {kPanelWidth, std::max(1, kPanelWidth * stages.photo.height / stages.photo.width)};
    const std::vector<media::Panel> panels = {
        {"photo; white: seen at rest, yellow: ever seen", photoWithFrame(stages, panel)},
        {"guide: its luma at grid size", media::toRgb(stages.guide)},
        {"depth as given, larger = nearer", media::toRgb(given)},
        {pivotLabel(stages), shapedWithPivot(stages, panel)},
        {stages.upright ? "from below" : "from the left", media::toRgb(stages.left)},
        {"at rest", media::toRgb(stages.rest)},
        {stages.upright ? "from above" : "from the right", media::toRgb(stages.right)},
        {stretchLabel(stages.stretch), stretchMap(stages, panel)},
    };
    return media::contactSheet(panels, kColumns, kPanelWidth);
}

}  // namespace quorvane::app
