#include "apps/quorvane/drawing/view_options.h"

#include <algorithm>
#include <cmath>

#include "apps/quorvane/terminal/numbers.h"
#include "apps/quorvane/terminal/text.h"
#include "apps/quorvane/terminal/usage_error.h"
#include "quorvane/host/ParallaxView.h"

namespace quorvane::app {

std::pair<std::string, double> parseSetting(const std::string& text) {
    const size_t equals = text.find('=');
    if (equals == std::string::npos)
        throw UsageError("--set " + text + ": FIELD=VALUE is wanted, such as fov_scale=0.8");
    const std::string field = text.substr(0, equals);
    const std::string number = text.substr(equals + 1);
    const std::vector<ParameterInfo>& known = ParallaxView::parameters();
    const bool is_known = std::any_of(known.begin(), known.end(),
                                      [&field](const ParameterInfo& info) { return info.name == field; });
    double value = std::nan("");
    if (!parseNumber(number, &value) && is_known)
        throw UsageError("--set " + text + ": '" + number + "' is not a number");
    const Status status = ParallaxView::checkParameter(field, value);
    if (!status) throw UsageError("--set " + text + ": " + status.message());
    return {field, value};
}

void addViewOptions(CommandLine* line, ViewOptions* options) {
    line->whole(
        "--orientation", &options->orientation, 0, 8,
        "set of parameters by the device's orientation code: 4 and 7 take the first set, all others the "
        "second, which turns about a point behind the scene");
    line->repeated(
            "--set", [options](const std::string& text) { options->settings.push_back(parseSetting(text)); },
            "change a parameter; may be repeated")
        .called("FIELD=VALUE");
    line->text("--timings", &options->timings, "write the renderer's timing lines to FILE").called("FILE");

    std::vector<std::pair<std::string, std::string>> rows;
    for (const ParameterInfo& info : ParallaxView::parameters())
        rows.emplace_back(info.name, formatted("%g to %g: %s", info.minimum, info.maximum, info.meaning));
    line->table("Parameters for --set:", std::move(rows));
}

}  // namespace quorvane::app
