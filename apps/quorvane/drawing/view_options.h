#ifndef QUORVANE_APPS_DRAWING_VIEW_OPTIONS_H
#define QUORVANE_APPS_DRAWING_VIEW_OPTIONS_H

#include <string>
#include <utility>
#include <vector>

#include "apps/quorvane/terminal/command_line.h"

namespace quorvane::app {

/// How the view is set up, whatever is made of it.
struct ViewOptions {
    /// The set for 4 keeps the pivot among the depths, so that near things move against far ones, and keeps
    /// every shape of picture clear of the mesh's edge.
    int orientation = 4;
    std::vector<std::pair<std::string, double>> settings;  ///< parameters and values in their range
    std::string timings;  ///< a file for the renderer's timing lines; empty: nowhere
};

/// "FIELD=VALUE" of --set: a parameter's name and a number within that parameter's range. Throws UsageError.
std::pair<std::string, double> parseSetting(const std::string& text);

void addViewOptions(CommandLine* line, ViewOptions* options);

}  // namespace quorvane::app

#endif
