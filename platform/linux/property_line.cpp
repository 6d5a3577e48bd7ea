#include "property_line.h"

namespace quorvane {
namespace {

constexpr char kBlanks[] = " \t\r\n";

std::string trimmed(const std::string& text) {
    const size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string::npos) return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

}  // namespace

PropertyLine parsePropertyLine(const std::string& line) {
    const std::string text = trimmed(line);
    if (text.empty() || text[0] == '#') return {};
    const size_t equals = text.find('=');
    const std::string key = trimmed(text.substr(0, equals));
    if (equals == std::string::npos || key.empty()) return {PropertyLine::Kind::kNonsense, {}, {}};
    return {PropertyLine::Kind::kSetting, key, trimmed(text.substr(equals + 1))};
}

}  // namespace quorvane
