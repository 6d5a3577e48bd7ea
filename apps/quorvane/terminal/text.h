#ifndef QUORVANE_APPS_TERMINAL_TEXT_H
#define QUORVANE_APPS_TERMINAL_TEXT_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace quorvane::app {

/// One line that does nothing to a terminal, whatever a file's name or its contents hold. A '?' takes the
/// place of every control character, of every character that changes the direction of writing or ends a line,
/// and of every byte that is not UTF-8.
std::string printable(std::string_view text);

/// What printf would print.
__attribute__((format(printf, 1, 2))) std::string formatted(const char* format, ...);

/// `text` in lines of at most `width` characters, broken at blanks; only a longer word makes a longer line.
/// Line breaks in `text` stay. The first line is taken to stand behind `used` characters, and all others
/// begin with `indent` blanks.
std::string wrapped(std::string_view text, size_t width, size_t indent, size_t used = 0);

/// The word of `known` that `word` is probably a mistyping of: at most one letter in three is wrong,
/// missing, too many or exchanged with the next one. Empty where there is none.
std::string nearestWord(std::string_view word, const std::vector<std::string>& known);

}  // namespace quorvane::app

#endif
