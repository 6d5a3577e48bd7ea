#ifndef QUORVANE_APPS_DRAWING_ENCODING_OPTIONS_H
#define QUORVANE_APPS_DRAWING_ENCODING_OPTIONS_H

#include <string>
#include <vector>

#include "apps/quorvane/terminal/command_line.h"
#include "media/clip/output_format.h"

namespace quorvane::app {

/// What a picture is written as.
struct EncodingOptions {
    std::string format;  ///< a word of formatWords; empty: as the path says
    media::EncoderSettings encoder;
    std::vector<const Option*> of_pictures;  ///< those that say nothing of a page
};

void addEncodingOptions(CommandLine* line, EncodingOptions* options);

/// What `path`, given to -o, asks to be made with these options. Throws UsageError where they do not go
/// together.
const media::OutputFormat& parseOutput(const std::string& path, const EncodingOptions& options);

}  // namespace quorvane::app

#endif
