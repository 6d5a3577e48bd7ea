#ifndef QUORVANE_APPS_COMMANDS_INPUT_OPTIONS_H
#define QUORVANE_APPS_COMMANDS_INPUT_OPTIONS_H

#include <CLI/CLI.hpp>

#include "apps/quorvane/commands/commands.h"

namespace quorvane::app {

/// Adds PHOTO, DEPTH and what else says where the depth comes from and how it lies.
void addInputOptions(CLI::App* command, InputOptions* options);

}  // namespace quorvane::app

#endif
