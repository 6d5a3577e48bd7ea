#include "apps/quorvane/terminal/talk.h"

namespace quorvane::app {

void addTalkOptions(CommandLine* line, Talk* talk) {
    line->count("-v,--verbose", &talk->verbosity, "say what was chosen; twice: the renderer's log too");
    line->flag("-q,--quiet", &talk->quiet, "no progress bar, and no lines about the depth map");
}

}  // namespace quorvane::app
