#include "apps/quorvane/terminal/numbers.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <iterator>
#include <utility>

#include "apps/quorvane/terminal/text.h"
#include "apps/quorvane/terminal/usage_error.h"

namespace quorvane::app {
namespace {

constexpr double kLargestSide = 16384.0;
constexpr double kMostBytes = 1e12;

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

int64_t parseBytes(const std::string& name, const std::string& text) {
    constexpr std::pair<const char*, double> kUnits[] = {{"b", 1.0},
                                                         {"kb", 1e3},
                                                         {"mb", 1e6},
                                                         {"gb", 1e9},
                                                         {"kib", 1024.0},
                                                         {"mib", 1024.0 * 1024.0},
                                                         {"gib", 1024.0 * 1024.0 * 1024.0}};
    const size_t end = std::min(text.find_first_not_of("0123456789."), text.size());
    const size_t start = std::min(text.find_first_not_of(' ', end), text.size());
    std::string unit = text.substr(start);
    std::transform(unit.begin(), unit.end(), unit.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    const auto* known = std::find_if(std::begin(kUnits), std::end(kUnits),
                                     [&unit](const auto& one) { return unit == one.first; });
    double value = 0.0;
    if (known != std::end(kUnits) && parseNumber(text.substr(0, end), &value)) {
        // 8.2 times a million is a little less in floating point.
        const double bytes = std::floor(value * known->second + 1e-3);
        if (bytes >= 1.0 && bytes <= kMostBytes) return static_cast<int64_t>(bytes);
    }
    throw UsageError(
        name + " " + text +
        ": a size is wanted, such as 8MB, 500KB or 10MiB: a number and B, KB, MB, GB (of 1000) or "
        "KiB, MiB, GiB (of 1024)");
}

std::string textOfBytes(int64_t bytes) {
    double value = static_cast<double>(bytes);
    const char* const units[] = {"B", "KB", "MB", "GB", "TB"};
    size_t unit = 0;
    for (; value >= 1000.0 && unit + 1 < std::size(units); ++unit) value /= 1000.0;
    const int decimals = unit == 0 || value >= 100.0 ? 0 : value >= 10.0 ? 1 : 2;
    std::string text = formatted("%.*f", decimals, value);
    // Zeros behind the point say nothing.
    if (decimals > 0) text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.') text.pop_back();
    return text + " " + units[unit];
}

std::string textOf(Size size) { return std::to_string(size.width) + "x" + std::to_string(size.height); }

}  // namespace quorvane::app
