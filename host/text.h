#ifndef QUORVANE_HOST_TEXT_H
#define QUORVANE_HOST_TEXT_H

#include <string>

namespace quorvane {

/// As printf writes it, up to 255 characters.
std::string text(const char* format, ...) __attribute__((format(printf, 1, 2)));

}  // namespace quorvane

#endif
