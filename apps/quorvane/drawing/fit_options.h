#ifndef QUORVANE_APPS_DRAWING_FIT_OPTIONS_H
#define QUORVANE_APPS_DRAWING_FIT_OPTIONS_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "apps/quorvane/drawing/encoding_options.h"
#include "apps/quorvane/drawing/picture_options.h"
#include "apps/quorvane/terminal/command_line.h"
#include "media/clip/places.h"

namespace quorvane::app {

/// How many bytes a file may take.
struct FitOptions {
    std::optional<int64_t> limit;        ///< of --fit
    std::string place;                   ///< of --for; empty: none
    std::vector<const Option*> options;  ///< both
};

/// Adds --fit and --for, and a table of places.
void addFitOptions(CommandLine* line, FitOptions* options);

/// The row of places.json that is meant where `path` is to be written for a place, with these options, in
/// which it sets the format, the codec and the size. None without a place. Throws UsageError where they
/// contradict it.
const media::Place* settlePlace(const FitOptions& options, const std::string& path, EncodingOptions* encoding,
                                PictureOptions* picture);

/// Bytes that a file of `format` at `path` may take: what --fit says, the place's limit, or the lesser of
/// both; none without either. Throws UsageError where such a file cannot be made to fit.
std::optional<int64_t> limitOf(const FitOptions& options, const media::Place* place, const std::string& path,
                               const media::OutputFormat& format);

}  // namespace quorvane::app

#endif
