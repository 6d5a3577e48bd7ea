#ifndef QUORVANE_APPS_INPUT_INPUT_OPTIONS_H
#define QUORVANE_APPS_INPUT_INPUT_OPTIONS_H

#include <optional>
#include <string>
#include <vector>

#include "apps/quorvane/input/pair_source.h"
#include "apps/quorvane/terminal/command_line.h"
#include "media/depth/depth_doctor.h"
#include "media/depth/photo_with_depth.h"
#include "media/picture/turn.h"

namespace quorvane::app {

/// A network that estimates depth.
struct ModelOptions {
    std::string file;  ///< or folder; empty: none
    int size = 0;      ///< pixels of the shorter side that it is given; 0: what suits it
};

/// A photo and where its depth comes from: at most one of `depth`, `depth_command`, `depth_model`,
/// `depth_half` and `pair`, else from inside the photo's file or from a neighbour.
struct InputOptions {
    std::string photo;
    std::string depth;
    std::vector<std::string> depth_command;  ///< words, as parseDepthCommand gives them
    ModelOptions depth_model;
    std::optional<media::DepthHalf> depth_half;
    PairOptions pair;
    std::optional<media::Turn> depth_turn;  ///< to lie as the photo does
    std::optional<bool> invert_depth;       ///< empty: where the doctor finds it so
    media::Holes holes = media::Holes::kAuto;
    bool doctor = true;  ///< check the depth map against the photo
};

/// Adds --depth-model and --depth-size. Returns the first, to be excluded by what it excludes.
Option& addModelOptions(CommandLine* line, ModelOptions* options);

/// Adds PHOTO, DEPTH and what else says where the depth comes from and how it lies.
void addInputOptions(CommandLine* line, InputOptions* options);

/// The same without PHOTO and DEPTH. `depth` is DEPTH, which some of the options exclude, or null.
void addDepthOptions(CommandLine* line, InputOptions* options, const Option* depth);

}  // namespace quorvane::app

#endif
