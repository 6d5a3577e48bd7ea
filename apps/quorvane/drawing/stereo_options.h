#ifndef QUORVANE_APPS_DRAWING_STEREO_OPTIONS_H
#define QUORVANE_APPS_DRAWING_STEREO_OPTIONS_H

#include <optional>
#include <string>

#include "apps/quorvane/drawing/stereo.h"
#include "apps/quorvane/terminal/command_line.h"
#include "media/clip/output_format.h"

namespace quorvane::app {

/// Two or more views in a picture.
struct StereoOptions {
    std::optional<Stereo> layout;  ///< its eyes are set by stereoFor
    std::optional<double> eyes;
};

/// Adds --stereo and --eyes, and a table of what the first takes. Returns both options' places.
struct AddedStereoOptions {
    const Option& stereo;
    const Option& eyes;
};
AddedStereoOptions addStereoOptions(CommandLine* line, StereoOptions* options);

/// What is drawn, with the distance of the eyes that suits a still or a clip. Throws UsageError for what
/// `format` cannot hold.
std::optional<Stereo> stereoFor(const StereoOptions& options, const media::OutputFormat& format);

/// How far the eyes stand from the middle.
double eyesFor(const StereoOptions& options, bool still);

/// Says on standard error by which name players would know what stands in `path` now.
void suggestName(const std::string& path, const Stereo& stereo, Size view);

/// Where a picture is drawn from, and what it is planned for.
struct Route {
    std::vector<Position> positions;  ///< of the frames
    std::vector<Position> path;       ///< of all views
};

/// The route of `mono` as `stereo` takes it, around `middle`. A still is framed as its motion is.
Route stereoRoute(const Route& mono, const Stereo& stereo, Position middle, bool still);

}  // namespace quorvane::app

#endif
