#include "apps/quorvane/terminal/numbers.h"

#include <cmath>
#include <cstdlib>

#include "apps/quorvane/terminal/usage_error.h"

namespace quorvane::app {
namespace {

constexpr double kLargestSide = 16384.0;

}  // namespace

bool parseNumber(const std::string& text, double* value) {
    // strtod skips blanks and reads hexadecimal, which nobody means here.
    if (text.empty() || text.find_first_not_of("0123456789+-.eE") != std::string::npos) return false;
    char* end = nullptr;
    const double number = std::strtod(text.c_str(), &end);
    if (*end != '\0' || !std::isfinite(number)) return false;
    *value = number;
    return true;
}

bool parsePair(const std::string& text, char separator, double* first, double* second) {
    const size_t at = text.find(separator);
    return at != std::string::npos && parseNumber(text.substr(0, at), first) &&
           parseNumber(text.substr(at + 1), second);
}

int parseWhole(const std::string& name, const std::string& text, int least, int most) {
    double value = 0.0;
    if (!parseNumber(text, &value) || value < least || value > most || value != std::floor(value))
        throw UsageError(name + " " + text + ": a whole number from " + std::to_string(least) + " to " +
                         std::to_string(most) + " is wanted");
    return static_cast<int>(value);
}

PictureSize parsePictureSize(const std::string& text) {
    double width = 0.0, height = 0.0;
    const auto is_side = [](double side) {
        return side >= 1.0 && side <= kLargestSide && side == std::floor(side);
    };
    if (text == "photo") return {};
    if (parseNumber(text, &width) && is_side(width)) return {{}, static_cast<int>(width)};
    if (parsePair(text, 'x', &width, &height) && is_side(width) && is_side(height))
        return {Size{static_cast<int>(width), static_cast<int>(height)}, {}};
    throw UsageError("--size " + text +
                     ": WxH or the longer side in pixels, each 1 to 16384, or photo is wanted, such as "
                     "1280x720");
}

std::string textOf(Size size) { return std::to_string(size.width) + "x" + std::to_string(size.height); }

}  // namespace quorvane::app
