#include <clocale>
#include <cmath>
#include <cstdlib>
#include <string>

#include "media/embedded/bytes.h"

namespace quorvane::media {

std::optional<double> toNumber(std::string_view text) {
    // strtod also takes names and hexadecimal digits, and the user's decimal point in place of ".". A stream
    // could be told otherwise, but brings 300 KB of formats and calendars into a library that holds the C++
    // library.
    if (text.find_first_not_of("0123456789+-.eE \t\r\n") != std::string_view::npos) return std::nullopt;
    std::string number(text);
    if (const size_t point = number.find('.'); point != std::string::npos)
        number.replace(point, 1, std::localeconv()->decimal_point);
    char* end = nullptr;
    const double value = std::strtod(number.c_str(), &end);
    if (end == number.c_str() || !std::isfinite(value)) return std::nullopt;
    if (std::string_view(end).find_first_not_of(" \t\r\n") != std::string_view::npos) return std::nullopt;
    return value;
}

}  // namespace quorvane::media
