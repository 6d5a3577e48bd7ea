#ifndef QUORVANE_APPS_TERMINAL_ARGUMENTS_H
#define QUORVANE_APPS_TERMINAL_ARGUMENTS_H

#include <string>
#include <utility>

#include "apps/quorvane/drawing/motion.h"
#include "media/clip/output_format.h"
#include "media/picture/resample.h"

namespace quorvane::app {

// The option values that are more than a word or a number. All throw UsageError.

/// "WxH": both sides 1..16384.
Size parseSize(const std::string& text);

/// What the path asks to be made; its extension is refused when it is none of ours.
const media::OutputFormat& parseOutput(const std::string& path);

/// "X,Y": both -1 to 1.
Position parsePosition(const std::string& text);

/// "FIELD=VALUE": a parameter's name and a number, within that parameter's range.
std::pair<std::string, double> parseSetting(const std::string& text);

}  // namespace quorvane::app

#endif
