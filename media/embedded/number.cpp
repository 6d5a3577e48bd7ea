#include <cmath>
#include <locale>
#include <sstream>

#include "media/embedded/bytes.h"

namespace quorvane::media {

std::optional<double> toNumber(std::string_view text) {
    // strtod would take the user's decimal comma.
    std::istringstream stream{std::string(text)};
    stream.imbue(std::locale::classic());
    double value = 0;
    if (!(stream >> value) || !std::isfinite(value)) return std::nullopt;
    char rest = 0;
    if (stream >> rest) return std::nullopt;
    return value;
}

}  // namespace quorvane::media
