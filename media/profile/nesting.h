#ifndef QUORVANE_MEDIA_PROFILE_NESTING_H
#define QUORVANE_MEDIA_PROFILE_NESTING_H

#include <cstddef>
#include <string_view>

namespace quorvane::media {

/// More than any JSON that people write here. What lies deeper is refused before it is parsed: the parser's
/// values are copied and shown by recursion, which a stack of brackets would exhaust.
constexpr int kMostNesting = 16;

/// How many brackets of a JSON text are open at once, at most.
inline int nestingOf(std::string_view json) {
    int open = 0, most = 0;
    bool in_text = false;
    for (size_t i = 0; i < json.size(); ++i) {
        const char c = json[i];
        if (in_text) {
            if (c == '\\') ++i;
            if (c == '"') in_text = false;
        } else if (c == '"') {
            in_text = true;
        } else if (c == '[' || c == '{') {
            most = ++open > most ? open : most;
        } else if (c == ']' || c == '}') {
            --open;
        }
    }
    return most;
}

}  // namespace quorvane::media

#endif
