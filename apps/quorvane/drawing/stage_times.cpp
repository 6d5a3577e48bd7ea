#include "apps/quorvane/drawing/stage_times.h"

#include <cstdio>

namespace quorvane::app {
namespace {

// In the order of Stage. Those from kDraw on are done for every frame.
constexpr const char* kNames[] = {"decode", "set up",    "fit",     "upload",
                                  "draw",   "read back", "average", "encode"};

}  // namespace

std::string StageTimes::table(int frames, int writers) const {
    const double seconds = std::chrono::duration<double>(Clock::now() - m_start).count();
    char line[160];
    std::snprintf(line, sizeof line, "%-10s %10s %10s\n", "stage", "ms", "ms/frame");
    std::string text = line;
    for (size_t stage = 0; stage < m_nanoseconds.size(); ++stage) {
        const double ms = static_cast<double>(m_nanoseconds[stage]) / 1e6;
        if (ms == 0.0) continue;
        std::snprintf(line, sizeof line, "%-10s %10.1f", kNames[stage], ms);
        text += line;
        if (stage >= static_cast<size_t>(Stage::kDraw)) {
            std::snprintf(line, sizeof line, " %10.2f", ms / frames);
            text += line;
        }
        if (stage == static_cast<size_t>(Stage::kEncode) && writers > 1)
            text += "  on " + std::to_string(writers) + " threads together";
        text += '\n';
    }
    std::snprintf(line, sizeof line, "%d frame%s in %.2f s: %.1f a second, the first after %.2f s\n", frames,
                  frames == 1 ? "" : "s", seconds, frames / seconds,
                  std::chrono::duration<double>(m_first_frame).count());
    return text + line;
}

}  // namespace quorvane::app
