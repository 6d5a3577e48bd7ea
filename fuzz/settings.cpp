// The command line's texts: --set, --size and --at take what is in range and refuse the rest with one line.

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>

#include "apps/quorvane/drawing/motion.h"
#include "apps/quorvane/drawing/view_options.h"
#include "apps/quorvane/terminal/numbers.h"
#include "apps/quorvane/terminal/usage_error.h"
#include "promise.h"
#include "quorvane/host/ParallaxView.h"

using namespace quorvane;
using fuzz::promised;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    try {
        const app::PictureSize picture = app::parsePictureSize(text);
        promised(!picture.exact || !picture.longest, "a size is said in one way");
        const Size sides = picture.exact.value_or(Size{picture.longest.value_or(1), 1});
        promised(sides.width >= 1 && sides.width <= 16384, "a width from 1 to 16384");
        promised(sides.height >= 1 && sides.height <= 16384, "a height from 1 to 16384");
        if (picture.exact)
            promised(app::parsePictureSize(app::textOf(sides)).exact == sides, "a size reads back");
    } catch (const app::UsageError&) {
    }
    try {
        const app::Position at = app::parsePosition(text);
        promised(std::abs(at.x) <= 1.0 && std::abs(at.y) <= 1.0, "a position from -1 to 1");
    } catch (const app::UsageError&) {
    }
    try {
        const auto [field, value] = app::parseSetting(text);
        promised(std::isfinite(value), "a setting is a finite number");
        promised(static_cast<bool>(ParallaxView::checkParameter(field, value)), "a setting is in its range");
    } catch (const app::UsageError&) {
    }
    return 0;
}
