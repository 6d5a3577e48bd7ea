#ifndef QUORVANE_APPS_DRAWING_VIEW_OPTIONS_H
#define QUORVANE_APPS_DRAWING_VIEW_OPTIONS_H

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "apps/quorvane/terminal/command_line.h"
#include "quorvane/host/PicturePlan.h"
#include "sizes/sizes.h"

namespace quorvane::app {

/// How the view is set up, whatever is made of it.
struct ViewOptions {
    /// The set for 4 keeps the pivot among the depths, so that near things move against far ones, and keeps
    /// every shape of picture clear of the mesh's edge.
    int orientation = 4;
    std::vector<std::pair<std::string, double>> settings;  ///< parameters and values in their range
    std::optional<double> frame;  ///< visible part of each side; without one as much as shows no border
    Pivot pivot = Pivot::kAuto;
    double pivot_x = 0.0;  ///< of Pivot::kPoint: 0 to 1, from the photo's left
    double pivot_y = 0.0;  ///< from its top
    bool clean_edges = true;
    GridBudget grid = kAutoGrid;
    std::string timings;  ///< a file for the renderer's timing lines; empty: nowhere

    /// Options as they were given, and the parameters that each of them decides.
    std::vector<std::pair<std::string, std::vector<std::string>>> deciding;
};

/// "FIELD=VALUE" of --set: a parameter's name and a number within that parameter's range. Throws UsageError.
std::pair<std::string, double> parseSetting(const std::string& text);

/// "auto" or a part of 0.05 to 1 of --frame: nothing for the first. Throws UsageError.
std::optional<double> parseFrame(const std::string& text);

void addViewOptions(CommandLine* line, ViewOptions* options);

/// Adds --timings.
void addTimingsOption(CommandLine* line, ViewOptions* options);

/// Whether they say how much of the photo is seen.
bool hasFrame(const ViewOptions& options);

/// Throws UsageError where a parameter was given in two ways.
void refuseTwoWays(const ViewOptions& options);

}  // namespace quorvane::app

#endif
