// The property file: every line is read without harm, and what it sets can be got again.

#include <cutils/properties.h>

#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>

#include "promise.h"
#include "property_line.h"

namespace {

using quorvane::PropertyLine;
using quorvane::fuzz::promised;

void checkSetting(const PropertyLine& line) {
    const std::string blanks = " \t\r\n";
    promised(!line.key.empty(), "a setting has a key");
    promised(line.key.find('=') == std::string::npos, "a key ends at the first equals sign");
    for (const std::string& text : {line.key, line.value})
        promised(text.empty() || (blanks.find(text.front()) == std::string::npos &&
                                  blanks.find(text.back()) == std::string::npos),
                 "no blanks around a key or value");

    // The C interface ends texts at the first zero byte.
    const std::string key = line.key.c_str(), value = line.value.c_str();
    const bool fits = !key.empty() && value.size() < PROPERTY_VALUE_MAX;
    promised((property_set(key.c_str(), value.c_str()) == 0) == fits, "a value of at most 91 bytes is taken");
    char got[PROPERTY_VALUE_MAX];
    const int length = property_get(key.c_str(), got, "");
    promised(std::string(got) == (fits ? value : ""), "what was set comes back");
    promised(length == static_cast<int>(std::string(got).size()), "the length is told");
    if (fits) property_set(key.c_str(), nullptr);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::istringstream file(std::string(reinterpret_cast<const char*>(data), size));
    std::string text;
    while (std::getline(file, text)) {
        const PropertyLine line = quorvane::parsePropertyLine(text);
        if (line.kind == PropertyLine::Kind::kSetting) checkSetting(line);
    }
    return 0;
}
