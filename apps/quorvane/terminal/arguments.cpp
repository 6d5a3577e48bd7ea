#include "apps/quorvane/terminal/arguments.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "apps/quorvane/terminal/usage_error.h"
#include "quorvane/host/ParallaxView.h"
#include "system/error.h"

namespace quorvane::app {
namespace {

constexpr double kLongestSide = 16384.0;

/// The whole of `text` as a finite number.
bool parseNumber(const std::string& text, double* value) {
    // strtod skips blanks and reads hexadecimal, which nobody means here.
    if (text.empty() || text.find_first_not_of("0123456789+-.eE") != std::string::npos) return false;
    char* end = nullptr;
    *value = std::strtod(text.c_str(), &end);
    return *end == '\0' && std::isfinite(*value);
}

bool parsePair(const std::string& text, char separator, double* first, double* second) {
    const size_t at = text.find(separator);
    return at != std::string::npos && parseNumber(text.substr(0, at), first) &&
           parseNumber(text.substr(at + 1), second);
}

}  // namespace

Size parseSize(const std::string& text) {
    double width = 0.0, height = 0.0;
    const auto is_side = [](double side) {
        return side >= 1.0 && side <= kLongestSide && side == std::floor(side);
    };
    if (!parsePair(text, 'x', &width, &height) || !is_side(width) || !is_side(height))
        throw UsageError("--size " + text + ": WxH in pixels is wanted, each 1 to 16384, such as 1280x720");
    return {static_cast<int>(width), static_cast<int>(height)};
}

const media::OutputFormat& parseOutput(const std::string& path) {
    try {
        return media::outputFormat(path);
    } catch (const Error& error) {
        throw UsageError(error.what());
    }
}

Position parsePosition(const std::string& text) {
    Position at;
    const auto in_range = [](double value) { return value >= -1.0 && value <= 1.0; };
    if (!parsePair(text, ',', &at.x, &at.y) || !in_range(at.x) || !in_range(at.y))
        throw UsageError("--at " + text + ": X,Y is wanted, each -1 to 1, such as 0.5,-0.2");
    return at;
}

std::pair<std::string, double> parseSetting(const std::string& text) {
    const size_t equals = text.find('=');
    if (equals == std::string::npos)
        throw UsageError("--set " + text + ": FIELD=VALUE is wanted, such as fov_scale=0.8");
    const std::string field = text.substr(0, equals);
    double value = std::nan("");
    const bool is_number = parseNumber(text.substr(equals + 1), &value);
    const auto& parameters = ParallaxView::parameters();
    const bool is_known = std::any_of(parameters.begin(), parameters.end(),
                                      [&field](const ParameterInfo& info) { return field == info.name; });
    const Status status = ParallaxView::checkParameter(field, value);
    if (!status && (is_number || !is_known)) throw UsageError("--set " + text + ": " + status.message());
    if (!is_number) throw UsageError("--set " + text + ": '" + text.substr(equals + 1) + "' is not a number");
    return {field, value};
}

}  // namespace quorvane::app
