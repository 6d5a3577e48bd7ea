#ifndef QUORVANE_APPS_COMMANDS_COMMAND_H
#define QUORVANE_APPS_COMMANDS_COMMAND_H

#include <functional>
#include <vector>

#include "apps/quorvane/terminal/command_line.h"

namespace quorvane::app {

/// One command of the program.
struct Command {
    const char* name;
    const char* summary;
    std::vector<Example> examples;

    /// Adds what the command takes to `line`, and returns what does its work once `line` has been parsed.
    /// That throws Error, Cancelled or UsageError.
    std::function<void()> (*prepare)(CommandLine* line);

    /// Whether signals are left to the command, which tidies up; otherwise they end it as they end any
    /// program.
    bool tidies_up = true;
};

Command batchCommand();
Command embedCommand();
Command extractCommand();
Command infoCommand();
Command inspectCommand();
Command motionsCommand();
Command renderCommand();
Command sampleCommand();
Command shapeCommand();
Command stagesCommand();

}  // namespace quorvane::app

#endif
