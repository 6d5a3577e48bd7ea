#ifndef QUORVANE_APPS_DRAWING_PICTURE_OPTIONS_H
#define QUORVANE_APPS_DRAWING_PICTURE_OPTIONS_H

#include <optional>
#include <string>

#include "apps/quorvane/drawing/motion.h"
#include "apps/quorvane/terminal/command_line.h"
#include "apps/quorvane/terminal/numbers.h"

namespace quorvane::app {

/// How large a picture is, and how it moves.
struct PictureOptions {
    std::optional<PictureSize> size;  ///< without one the photo's aspect, at most as large as is usual
    Motion motion = parseMotion(motions().front().name);
    double amount = 1.0;  ///< how far it goes, 0 to 1
};

/// What was added to a command line.
struct AddedPictureOptions {
    const Option& motion;
    const Option& motion_file;
    const Option& amount;
};

/// `usual` says how large pictures are by default.
AddedPictureOptions addPictureOptions(CommandLine* line, const std::string& usual, PictureOptions* options);

/// The picture's size: as asked for, else the photo's aspect and at most `longest`. `even` holds for all but
/// WxH.
Size sizeOf(const PictureOptions& options, Size photo, int longest, bool even);

}  // namespace quorvane::app

#endif
