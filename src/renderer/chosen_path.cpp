#include "renderer/chosen_path.h"

#include <cstdlib>
#include <cstring>

#include "diagnostics/log.h"

namespace quorvane {
namespace {

const Path& choosePath() {
    const PathList all = paths();
    const Path* fastest = all.end() - 1;
    while (!fastest->runsHere()) --fastest;
    const char* wanted = std::getenv("QUORVANE_LANES");
    if (wanted == nullptr || *wanted == '\0') return *fastest;
    for (const Path& path : all)
        if (std::strcmp(wanted, path.name) == 0 && path.runsHere()) return path;
    LOGD("QUORVANE_LANES=%s: no path of this build that runs here, using %s\n", wanted, fastest->name);
    return *fastest;
}

}  // namespace

const Path& chosenPath() {
    static const Path& chosen = choosePath();
    return chosen;
}

}  // namespace quorvane
