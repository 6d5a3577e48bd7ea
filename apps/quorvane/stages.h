#ifndef QUORVANE_APPS_STAGES_H
#define QUORVANE_APPS_STAGES_H

#include "commands.h"
#include "depth_source.h"

namespace quorvane::app {

/// One labelled picture of every stage. Throws media::Error.
media::RgbImage stagesSheet(const ViewOptions& options, Input input);

}  // namespace quorvane::app

#endif
