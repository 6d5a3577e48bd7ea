#ifndef QUORVANE_APPS_TERMINAL_TALK_H
#define QUORVANE_APPS_TERMINAL_TALK_H

#include "apps/quorvane/terminal/command_line.h"

namespace quorvane::app {

/// How much a command says on standard error.
struct Talk {
    int verbosity = 0;   ///< 1: what was chosen; 2: the renderer's log too
    bool quiet = false;  ///< no progress bar, and no lines about the depth map
};

/// Adds -v and -q.
void addTalkOptions(CommandLine* line, Talk* talk);

}  // namespace quorvane::app

#endif
