#ifndef QUORVANE_APPS_TERMINAL_NUMBERS_H
#define QUORVANE_APPS_TERMINAL_NUMBERS_H

#include <cstdint>
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

/// A size of files of option `name`: a number and its unit, "8MB", "1.5 MiB" or "500kb". B, KB, MB and GB go
/// by thousands, KiB, MiB and GiB by 1024, in whatever case; part of a byte is dropped. At least one byte, at
/// most a million million. Throws UsageError.
int64_t parseBytes(const std::string& name, const std::string& text);

/// A number of bytes, not negative, in decimal units and three digits: "7.62 MB", "812 KB", "94 B".
std::string textOfBytes(int64_t bytes);

/// As text: "1280x720".
std::string textOf(Size size);

}  // namespace quorvane::app

#endif
