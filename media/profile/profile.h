#ifndef QUORVANE_MEDIA_PROFILE_PROFILE_H
#define QUORVANE_MEDIA_PROFILE_PROFILE_H

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace quorvane::media {

/// Files of another version are refused.
constexpr int kProfileVersion = 1;

/// Larger files are refused.
constexpr size_t kMostProfileBytes = size_t{64} << 10;

/// How pictures are drawn, as docs/profile.md describes its file. Which names there are, and which values
/// they take, is known where the values are used.
struct Profile {
    using Value = std::variant<bool, double, std::string>;

    std::vector<std::pair<std::string, double>> parameters;  ///< of the renderer, as setParameter takes them
    std::vector<std::pair<std::string, Value>> options;      ///< of `quorvane render`, without dashes
};

/// `json` is a file's text, which messages call `name`. Throws Error with one line for what is no profile,
/// for another version, for values of other kinds, and for keys beside `parameters` and `options`, which it
/// names.
Profile readProfile(std::string_view json, const std::string& name);

/// The same of a file. Throws Error.
Profile loadProfile(const std::string& path);

/// The file's text, from which readProfile makes the same values: ASCII, a line for each, in their order. Of
/// values with the same name the last one counts.
std::string profileText(const Profile& profile);

/// Keys for a message that refuses them, as in "a, b and 12 more".
std::string namesOf(const std::vector<std::string>& keys);

/// What would stand behind the option on a command line: 1280 and not 1280.0. An option without a value is
/// "true" or "false".
std::string textOf(const Profile::Value& value);

/// The value that `text` stands for: a number where it is one, in whatever way it is written.
Profile::Value valueOf(const std::string& text);

}  // namespace quorvane::media

#endif
