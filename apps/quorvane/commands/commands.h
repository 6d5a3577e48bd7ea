#ifndef QUORVANE_APPS_COMMANDS_COMMANDS_H
#define QUORVANE_APPS_COMMANDS_COMMANDS_H

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "apps/quorvane/drawing/motion.h"
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
    bool invert_depth = false;
    bool doctor = true;  ///< check the depth map against the photo
};

/// What shapes the view, whatever is made of it.
struct ViewOptions {
    InputOptions input;
    /// The set for 4 keeps the pivot among the depths, so that near things move against far ones, and keeps
    /// every shape of picture clear of the mesh's edge.
    unsigned orientation = 4;
    std::vector<std::pair<std::string, double>> settings;  ///< parameters and values in their range
    int verbosity = 0;  ///< 1: say what was chosen; 2: the renderer's log too
    bool quiet = false;
    std::string timings;  ///< a file for the renderer's timing lines; empty: nowhere
};

struct RenderOptions {
    ViewOptions view;
    std::string out;
    std::string size;  ///< "WxH", "photo" or empty
    int frames = 120;
    int fps = 30;
    Motion motion = Motion::kSway;
    double amount = 1.0;
    std::string at;  ///< "X,Y" or empty
    int supersample = 1;
    bool force = false;
    bool stats = false;  ///< say at the end what each stage took
};

struct InspectOptions {
    InputOptions input;
    std::string sheet;  ///< a .png file for the stages, or empty
    bool json = false;
};

struct ExtractOptions {
    std::string file;
    std::string depth;  ///< the file to write
    std::string photo;  ///< the file to write, or empty
    bool raw = false;
};

// Each command throws Error or UsageError.

void render(const RenderOptions& options);
void stages(const ViewOptions& options, const std::string& out);
void inspect(const InspectOptions& options);
void extract(const ExtractOptions& options);
void info();
void sample(const std::string& photo, const std::string& depth, const std::string& size);

}  // namespace quorvane::app

#endif
