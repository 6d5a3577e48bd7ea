#ifndef QUORVANE_APPS_COMMANDS_STAGES_H
#define QUORVANE_APPS_COMMANDS_STAGES_H

#include "apps/quorvane/commands/commands.h"
#include "apps/quorvane/input/depth_source.h"

namespace quorvane::app {

/// One labelled picture of every stage. Throws Error.
media::RgbImage stagesSheet(const ViewOptions& options, Input input);

}  // namespace quorvane::app

#endif
