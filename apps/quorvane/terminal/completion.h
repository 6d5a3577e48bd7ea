#ifndef QUORVANE_APPS_TERMINAL_COMPLETION_H
#define QUORVANE_APPS_TERMINAL_COMPLETION_H

#include <string>

#include "apps/quorvane/terminal/command_line.h"

namespace quorvane::app {

// What a shell reads to complete the program's command lines, made of the tables of options: commands,
// options, the words that options offer, and files where a file is wanted.

std::string bashCompletion(const CommandLines& program);
std::string zshCompletion(const CommandLines& program);
std::string fishCompletion(const CommandLines& program);

}  // namespace quorvane::app

#endif
