#ifndef QUORVANE_APPS_DRAWING_VIEW_OPTIONS_H
#define QUORVANE_APPS_DRAWING_VIEW_OPTIONS_H

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "apps/quorvane/drawing/renderer.h"
#include "apps/quorvane/terminal/command_line.h"
#include "quorvane/host/ParallaxView.h"
#include "quorvane/host/PicturePlan.h"
#include "sizes/sizes.h"

namespace quorvane::app {

/// What kAutoSamples are in a clip that the processor draws. A picture drawn twice as large shows more of the
/// photo's detail, for which a still has the time; a clip would take three times as long.
constexpr int kMovingSamples = 4;

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
    int samples = kAutoSamples;  ///< a pixel: 1, 2, 4, 8 or kAutoSamples
    bool moves = false;          ///< a clip: where the processor draws, kAutoSamples are kMovingSamples
    int supersample = 1;         ///< pictures are drawn this many times as large at least, then averaged
    bool whole_photo = false;    ///< takes all of its pixels, though the picture does not show them
    Renderer renderer = Renderer::kAuto;
    std::string timings;  ///< a file for the renderer's timing lines; empty: nowhere

    std::vector<const Option*> of_drawing;  ///< those that say nothing of what is drawn elsewhere

    size_t profile_settings = 0;          ///< so many of `settings`, the first, are a profile's
    const Option* of_renderer = nullptr;  ///< --renderer

    /// Options as they were given, and the parameters that each of them decides.
    std::vector<std::pair<std::string, std::vector<std::string>>> deciding;
};

/// "FIELD=VALUE" of --set: a parameter's name and a number within that parameter's range. Throws UsageError.
std::pair<std::string, double> parseSetting(const std::string& text);

/// "auto" or a part of 0.05 to 1 of --frame: nothing for the first. Throws UsageError.
std::optional<double> parseFrame(const std::string& text);

void addViewOptions(CommandLine* line, ViewOptions* options);

/// The parameters that a profile names, once its options have been taken; what the user gives wins over both.
void takeProfileParameters(const std::vector<std::pair<std::string, double>>& parameters,
                           ViewOptions* options);

/// The parameters of every picture that is drawn with these options: all but those that are chosen for each.
std::vector<std::pair<std::string, double>> parametersInForce(const ViewOptions& options);

/// Adds --timings.
void addTimingsOption(CommandLine* line, ViewOptions* options);

/// The part of each of the photo's sides that they say is seen.
std::optional<double> frameGiven(const ViewOptions& options);

/// How many times as large pictures are drawn in software.
int supersampleInSoftware(const ViewOptions& options);

/// Throws UsageError where a parameter, or smoothness, was given in two ways.
void refuseTwoWays(const ViewOptions& options);

}  // namespace quorvane::app

#endif
