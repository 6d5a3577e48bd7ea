#ifndef QUORVANE_APPS_COMMANDS_PROFILE_OPTIONS_H
#define QUORVANE_APPS_COMMANDS_PROFILE_OPTIONS_H

#include <string>
#include <vector>

#include "apps/quorvane/drawing/view_options.h"
#include "apps/quorvane/terminal/command_line.h"
#include "media/profile/profile.h"

namespace quorvane::app {

/// The long names of options that are no part of a picture: what is done with it, and what is said about it.
/// All others are kept in profiles, but for those that name files or a program.
const std::vector<std::string>& notOfPictures();

/// Adds --profile. `view` are the options that addViewOptions added to `line`.
void addProfileOption(CommandLine* line, ViewOptions* view);

/// Adds --save-profile, which lasts as long as `view` does.
void addSaveProfileOption(CommandLine* line, const ViewOptions& view);

/// All that decides the picture besides the files: what was taken, and the defaults.
media::Profile profileOf(const CommandLine& line, const ViewOptions& view);

}  // namespace quorvane::app

#endif
