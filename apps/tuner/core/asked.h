#ifndef QUORVANE_APPS_TUNER_CORE_ASKED_H
#define QUORVANE_APPS_TUNER_CORE_ASKED_H

#include <memory>
#include <optional>
#include <string>

#include "apps/quorvane/input/input_options.h"
#include "apps/quorvane/terminal/command_line.h"

namespace quorvane::tuner {

/// What quorvane-tuner is asked for on its command line.
struct Asked {
    app::InputOptions input;
    std::string profile;
    std::string motion_file;
    std::string export_folder;
    std::string controls;
    std::optional<Size> window;
    int longest = 0;
    int frames = 0;
    double scale = 0.0;
    bool fresh = false;
};

/// The window's size as WxH, each 1 to 16384 pixels. Throws UsageError.
Size parseWindow(const std::string& text);

/// quorvane-tuner's command line, which puts what it is given into `asked`. That has to last as long.
std::unique_ptr<app::CommandLines> commandLines(Asked* asked);

}  // namespace quorvane::tuner

#endif
