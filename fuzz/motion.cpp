// --motion and the lines of a motion's file: what is taken stays where the view can go, and loops without a
// seam; the rest is refused with one line.

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>

#include "apps/quorvane/drawing/motion.h"
#include "apps/quorvane/drawing/motion_file.h"
#include "apps/quorvane/terminal/usage_error.h"
#include "promise.h"
#include "quorvane/host/PicturePlan.h"
#include "system/error.h"

using namespace quorvane;
using fuzz::promised;

namespace {

void checkPlaces(const app::Motion& motion) {
    constexpr int kPlaces = 50;
    for (int i = 0; i <= kPlaces; ++i) {
        const app::Position at = motion.place(static_cast<double>(i) / kPlaces);
        promised(std::abs(at.x) <= 1.0 + 1e-9 && std::abs(at.y) <= 1.0 + 1e-9, "a place from -1 to 1");
        promised(at.zoom >= kLeastZoom && at.zoom <= kMostZoom, "a zoom in its range");
    }
}

void checkLoop(const app::Motion& motion) {
    checkPlaces(motion);
    if (motion.one_way != nullptr) checkPlaces(*motion.one_way);
    const app::Position first = motion.place(0.0), last = motion.place(1.0);
    // An hour of moments leaves that much of a second's fraction.
    promised(
        std::abs(last.x - first.x) + std::abs(last.y - first.y) + std::abs(last.zoom - first.zoom) < 1e-3,
        "a loop ends where it begins");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    try {
        checkLoop(app::parseMotion(text));
    } catch (const app::UsageError&) {
    }
    try {
        const std::vector<app::Moment> moments = app::parseMoments(text, "file");
        std::string written;
        for (const app::Moment& moment : moments) written += app::lineOf(moment);
        promised(app::parseMoments(written, "file").size() == moments.size(), "moments read back");
        checkLoop(app::motionThrough(moments, "file"));
    } catch (const Error&) {
    }
    return 0;
}
