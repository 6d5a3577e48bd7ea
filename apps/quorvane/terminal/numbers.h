#ifndef QUORVANE_APPS_TERMINAL_NUMBERS_H
#define QUORVANE_APPS_TERMINAL_NUMBERS_H

#include <string>

#include "sizes/sizes.h"

namespace quorvane::app {

/// The whole of `text` as a finite decimal number. False, with nothing read, for all else: blanks,
/// hexadecimal digits, nan and inf.
bool parseNumber(const std::string& text, double* value);

/// Two such numbers with `separator` between.
bool parsePair(const std::string& text, char separator, double* first, double* second);

/// "WxH" of --size: both sides 1..16384. Throws UsageError.
Size parseSize(const std::string& text);

}  // namespace quorvane::app

#endif
