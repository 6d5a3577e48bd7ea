#include "media/profile/profile.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <nlohmann/json.hpp>

#include "media/profile/nesting.h"
#include "system/error.h"

namespace quorvane::media {
namespace {

using Json = nlohmann::json;

constexpr char kVersion[] = "quorvane_profile", kParameters[] = "parameters", kOptions[] = "options";

/// The whole of `text` as a number.
bool readNumber(const std::string& text, double* number) {
    const char* const end = text.data() + text.size();
    const std::from_chars_result read = std::from_chars(text.data(), end, *number);
    return read.ec == std::errc() && read.ptr == end && std::isfinite(*number);
}

std::string textOfNumber(double number) {
    std::array<char, 64> text = {};
    constexpr double kExact = 9007199254740992.0;
    const bool whole = number == std::floor(number) && std::abs(number) < kExact;
    const std::to_chars_result written =
        whole ? std::to_chars(text.data(), text.data() + text.size(), static_cast<int64_t>(number))
              : std::to_chars(text.data(), text.data() + text.size(), number);
    return {text.data(), written.ptr};
}

/// The number of the line that holds byte `at`.
long long lineOf(std::string_view text, size_t at) {
    const size_t before = std::min(at, text.size());
    return 1 + std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(before), '\n');
}

Json parsed(std::string_view text, const std::string& name) {
    if (const int nesting = nestingOf(text); nesting > kMostNesting)
        throw Error(name + ": " + std::to_string(nesting) + " brackets in each other; a profile has 2");
    try {
        return Json::parse(text);
    } catch (const Json::parse_error& error) {
        throw Error(name + ": not JSON, from line " +
                    std::to_string(lineOf(text, error.byte == 0 ? 0 : error.byte - 1)) + " on");
    } catch (const Json::exception&) {
        throw Error(name + ": JSON with a number that is too large");
    }
}

/// So much of a text that the line stays one to read, and one line.
std::string shortened(std::string text) {
    constexpr size_t kMost = 40;
    if (text.size() > kMost) text = text.substr(0, kMost) + "...";
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c >= 0 && c < ' '; }, '?');
    return text;
}

/// What a value is, for messages.
std::string shown(const Json& value) {
    // Nested deeply, it would take more stack than there is to be written.
    if (value.is_structured()) return value.is_array() ? "an array" : "an object";
    return shortened(value.dump(-1, ' ', true));
}

/// `key` as an object, or an empty one where it is missing.
Json objectOf(const Json& file, const char* key, const std::string& name) {
    if (!file.contains(key)) return Json::object();
    if (!file[key].is_object())
        throw Error(name + ": " + key + ": an object {...} is wanted, not " + shown(file[key]));
    return file[key];
}

void requireVersion(const Json& file, const std::string& name) {
    const std::string wanted = std::string("\"") + kVersion + "\": " + std::to_string(kProfileVersion);
    if (!file.is_object() || !file.contains(kVersion))
        throw Error(name + ": no profile; one is an object with " + wanted);
    if (file[kVersion] != kProfileVersion)
        throw Error(name + ": a profile of version " + shown(file[kVersion]) +
                    "; this program reads version " + std::to_string(kProfileVersion));
    std::vector<std::string> unknown;
    for (const auto& [key, value] : file.items())
        if (key != kVersion && key != kParameters && key != kOptions) unknown.push_back(key);
    if (!unknown.empty())
        throw Error(name + ": " + namesOf(unknown) + ": not known; a profile has " + kVersion + ", " +
                    kParameters + " and " + kOptions);
}

}  // namespace

std::string namesOf(const std::vector<std::string>& keys) {
    constexpr size_t kMost = 8;
    std::string names;
    for (size_t i = 0; i < std::min(keys.size(), kMost); ++i)
        names += (i == 0 ? "" : ", ") + shortened(keys[i]);
    return keys.size() <= kMost ? names : names + " and " + std::to_string(keys.size() - kMost) + " more";
}

Profile readProfile(std::string_view json, const std::string& name) {
    const Json file = parsed(json, name);
    requireVersion(file, name);
    Profile profile;
    const Json parameters = objectOf(file, kParameters, name), options = objectOf(file, kOptions, name);
    for (const auto& [key, value] : parameters.items()) {
        if (!value.is_number())
            throw Error(name + ": " + kParameters + "." + shortened(key) + ": a number is wanted, not " +
                        shown(value));
        profile.parameters.emplace_back(key, value.get<double>());
    }
    for (const auto& [key, value] : options.items()) {
        if (value.is_boolean())
            profile.options.emplace_back(key, value.get<bool>());
        else if (value.is_number())
            profile.options.emplace_back(key, value.get<double>());
        else if (value.is_string())
            profile.options.emplace_back(key, value.get<std::string>());
        else
            throw Error(name + ": " + kOptions + "." + shortened(key) +
                        ": a text, a number, true or false is wanted, not " + shown(value));
    }
    return profile;
}

Profile loadProfile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::string text(kMostProfileBytes + 1, '\0');
    // A folder opens, too, and fails at the first byte.
    if (!file.read(text.data(), static_cast<std::streamsize>(text.size())) && !file.eof())
        throwFor(path + ": cannot be read", errno);
    text.resize(static_cast<size_t>(file.gcount()));
    if (text.size() > kMostProfileBytes)
        throw Error(path + ": no profile; one has at most " + std::to_string(kMostProfileBytes) + " bytes");
    return readProfile(text, path);
}

std::string profileText(const Profile& profile) {
    using Ordered = nlohmann::ordered_json;
    Ordered file;
    file[kVersion] = kProfileVersion;
    const auto put = [](double value, Ordered* to) {
        // Whole numbers without a fraction, for people who read the file.
        const std::string text = textOfNumber(value);
        if (text.find_first_not_of("-0123456789") == std::string::npos)
            *to = std::stoll(text);
        else
            *to = value;
    };
    file[kParameters] = Ordered::object();
    for (const auto& [key, value] : profile.parameters) put(value, &file[kParameters][key]);
    file[kOptions] = Ordered::object();
    for (const auto& [key, value] : profile.options) {
        Ordered& to = file[kOptions][key];
        if (const double* number = std::get_if<double>(&value))
            put(*number, &to);
        else if (const bool* flag = std::get_if<bool>(&value))
            to = *flag;
        else
            to = std::get<std::string>(value);
    }
    return file.dump(2, ' ', true, Ordered::error_handler_t::replace) + '\n';
}

std::string textOf(const Profile::Value& value) {
    if (const double* number = std::get_if<double>(&value)) return textOfNumber(*number);
    if (const bool* flag = std::get_if<bool>(&value)) return *flag ? "true" : "false";
    return std::get<std::string>(value);
}

Profile::Value valueOf(const std::string& text) {
    double number = 0.0;
    if (readNumber(text, &number)) return number;
    return text;
}

}  // namespace quorvane::media
