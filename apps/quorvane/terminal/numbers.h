#ifndef QUORVANE_APPS_TERMINAL_NUMBERS_H
#define QUORVANE_APPS_TERMINAL_NUMBERS_H

#include <optional>
#include <string>

#include "sizes/sizes.h"

namespace quorvane::app {

/// The whole of `text` as a finite decimal number. False, with nothing read, for all else: blanks,
/// hexadecimal digits, nan and inf.
bool parseNumber(const std::string& text, double* value);

/// Two such numbers with `separator` between.
bool parsePair(const std::string& text, char separator, double* first, double* second);

/// A whole number of option `name`. Throws UsageError.
int parseWhole(const std::string& name, const std::string& text, int least, int most);

/// What --size asks for; nothing of it: the photo's own size.
struct PictureSize {
    std::optional<Size> exact;   ///< WxH
    std::optional<int> longest;  ///< the longer side, in the photo's aspect
};

/// "WxH", "N" or "photo" of --size: sides 1..16384. Throws UsageError.
PictureSize parsePictureSize(const std::string& text);

/// As text: "1280x720".
std::string textOf(Size size);

}  // namespace quorvane::app

#endif
