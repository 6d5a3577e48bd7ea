#ifndef QUORVANE_APPS_TERMINAL_TEXT_H
#define QUORVANE_APPS_TERMINAL_TEXT_H

#include <cctype>
#include <string>

namespace quorvane::app {

/// One line that does nothing to a terminal, whatever a file's name or its contents hold.
inline std::string printable(std::string text) {
    for (char& c : text)
        if (std::iscntrl(static_cast<unsigned char>(c))) c = '?';
    return text;
}

}  // namespace quorvane::app

#endif
