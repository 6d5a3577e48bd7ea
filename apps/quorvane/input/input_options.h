#ifndef QUORVANE_APPS_INPUT_INPUT_OPTIONS_H
#define QUORVANE_APPS_INPUT_INPUT_OPTIONS_H

#include <optional>
#include <string>
#include <vector>

#include "apps/quorvane/terminal/command_line.h"
#include "media/depth/depth_doctor.h"
#include "media/depth/photo_with_depth.h"
#include "media/picture/turn.h"

namespace quorvane::app {

/// A photo and where its depth comes from: at most one of `depth`, `depth_command` and `depth_half`, else
/// from inside the photo's file or from a neighbour.
struct InputOptions {
    std::string photo;
    std::string depth;
    std::vector<std::string> depth_command;  ///< words, as parseDepthCommand gives them
    std::optional<media::DepthHalf> depth_half;
    std::optional<media::Turn> depth_turn;  ///< to lie as the photo does
    std::optional<bool> invert_depth;       ///< empty: where the doctor finds it so
    media::Holes holes = media::Holes::kAuto;
    bool doctor = true;  ///< check the depth map against the photo
};

/// Adds PHOTO, DEPTH and what else says where the depth comes from and how it lies.
void addInputOptions(CommandLine* line, InputOptions* options);

}  // namespace quorvane::app

#endif
