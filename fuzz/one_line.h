#ifndef QUORVANE_FUZZ_ONE_LINE_H
#define QUORVANE_FUZZ_ONE_LINE_H

#include <string_view>

#include "promise.h"
#include "system/error.h"

namespace quorvane::fuzz {

inline bool isOneLine(std::string_view text) {
    return !text.empty() && text.find('\n') == std::string_view::npos;
}

/// Runs `read`; a refusal has to be one line.
template <typename Read>
void orOneLine(Read read) {
    try {
        read();
    } catch (const Error& error) {
        promised(isOneLine(error.what()), "a refusal is one line");
    }
}

}  // namespace quorvane::fuzz

#endif
