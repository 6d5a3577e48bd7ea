#ifndef QUORVANE_APPS_TERMINAL_MAN_PAGE_H
#define QUORVANE_APPS_TERMINAL_MAN_PAGE_H

#include <string>

#include "apps/quorvane/terminal/command_line.h"

namespace quorvane::app {

// Manual pages for man(1), made of what the tables of options say. `date` is YYYY-MM-DD.

/// The program's page: its commands, and what all of them share. Without commands: all that it takes.
std::string manPage(const CommandLines& program, const std::string& date);

/// A command's page: what it takes, its tables and its examples.
std::string manPage(const CommandLines& program, const CommandLine& command, const std::string& date);

/// What a command's page is called: "quorvane-render".
std::string manPageName(const CommandLines& program, const CommandLine& command);

}  // namespace quorvane::app

#endif
