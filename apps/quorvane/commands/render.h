#ifndef QUORVANE_APPS_COMMANDS_RENDER_H
#define QUORVANE_APPS_COMMANDS_RENDER_H

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "apps/quorvane/input/depth_source.h"
#include "apps/quorvane/terminal/command_line.h"

namespace quorvane::app {

/// What came of rendering a photo.
struct Rendered {
    DepthOrigin origin = DepthOrigin::kNone;
    std::string depth_file;  ///< of kGiven, kNeighbour and kModel
    std::vector<media::Finding> findings;
};

/// What the name of an output ends in where nobody has given it one.
struct OutputEnding {
    std::string suffix;     ///< by which players know its views, such as "_SBS"
    std::string extension;  ///< ".mp4" unless the options say what is to be written
};

/// The command `render`, once its line has been parsed.
struct RenderLine {
    std::function<void()> check;       ///< throws UsageError for what can be refused before a file is read
    std::function<Rendered()> render;  ///< throws Error, Cancelled or UsageError
    std::function<OutputEnding()> ending;  ///< reads the photo's header where the suffix has the aspect in it
};

/// Adds all that `render` takes.
RenderLine addRenderLine(CommandLine* line);

/// Adds those options of `render` that may be the same for many photos: all but PHOTO, DEPTH, --out and what
/// a run says of itself. What they are set to lives in the result.
std::shared_ptr<void> addRenderOptions(CommandLine* line);

}  // namespace quorvane::app

#endif
