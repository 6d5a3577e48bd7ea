#ifndef QUORVANE_APPS_TERMINAL_PAGES_H
#define QUORVANE_APPS_TERMINAL_PAGES_H

#include "apps/quorvane/terminal/command_line.h"

namespace quorvane::app {

/// The main of a program that writes what is made of a program's tables of options, PROGRAM FOLDER
/// YYYY-MM-DD: the manual pages, which bear that date, and what shells complete by, each kind into a folder
/// of its own in FOLDER: man, bash, zsh and fish. What was in FOLDER is gone.
int pagesMain(const CommandLines& lines, int argc, const char* const* argv);

}  // namespace quorvane::app

#endif
