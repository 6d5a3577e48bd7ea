#ifndef QUORVANE_PLATFORM_LINUX_PROPERTY_LINE_H
#define QUORVANE_PLATFORM_LINUX_PROPERTY_LINE_H

#include <string>

namespace quorvane {

/// What a line of a property file says.
struct PropertyLine {
    enum class Kind { kNothing, kSetting, kNonsense };  ///< kNothing: blank or a comment

    Kind kind = Kind::kNothing;
    std::string key;    ///< of a kSetting: not empty, without '=' and without blanks around it
    std::string value;  ///< of a kSetting: without blanks around it, of any length
};

/// Reads "key=value"; a line that starts with '#' is a comment.
PropertyLine parsePropertyLine(const std::string& line);

}  // namespace quorvane

#endif
