#include "apps/quorvane/drawing/stages_sheet.h"

#include <utility>
#include <vector>

#include "apps/quorvane/drawing/clip_drawing.h"
#include "media/scene/sheet.h"
#include "system/cancel.h"

namespace quorvane::app {
namespace {

constexpr int kColumns = 4;
constexpr int kPanelWidth = 480;
// Large enough to fill a panel of either orientation.
constexpr int kLongestSheetSide = 960;

}  // namespace

media::RgbImage stagesSheet(const ViewOptions& options, const Talk& talk, media::RgbImage photo,
                            media::Image<float, 1> depth) {
    const media::GrayImage given = media::toBytes(depth, {depth.width, depth.height});
    const Size size = pictureSize({photo.width, photo.height}, kLongestSheetSide, false);
    View view(options, talk, size, 1);
    view.upload(view.plan(photo, std::move(depth), pathAround({}, motions().front(), 1.0, 1)));

    const auto picture = [&view](double x) {
        throwIfCancelled();
        view.draw({x, 0.0});
        media::RgbaImage drawn;
        view.readBack(&drawn);
        return media::toRgb(drawn);
    };
    const std::vector<media::Panel> panels = {
        {"photo", std::move(photo)},
        {"guide: its luma at grid size", media::toRgb(view.guide())},
        {"depth as given, larger = nearer", media::toRgb(given)},
        {"depth as shaped", media::toRgb(view.shapedDepth())},
        {"from the left", picture(-1.0)},
        {"at rest", picture(0.0)},
        {"from the right", picture(1.0)},
    };
    return media::contactSheet(panels, kColumns, kPanelWidth);
}

}  // namespace quorvane::app
