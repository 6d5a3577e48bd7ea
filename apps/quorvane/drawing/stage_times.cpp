#include "apps/quorvane/drawing/stage_times.h"

#include "apps/quorvane/terminal/text.h"

namespace quorvane::app {
namespace {

// In the order of Stage. Those from kDraw on are done for every frame.
constexpr const char* kNames[] = {"decode", "set up",    "fit",     "upload",
                                  "draw",   "read back", "average", "encode"};

}  // namespace

std::string StageTimes::table(int frames, int writers) const {
    const double seconds = std::chrono::duration<double>(Clock::now() - m_start).count();
    std::string text = formatted("%-10s %10s %10s\n", "stage", "ms", "ms/frame");
    for (size_t stage = 0; stage < m_nanoseconds.size(); ++stage) {
        const double ms = static_cast<double>(m_nanoseconds[stage]) / 1e6;
        if (ms == 0.0) continue;
        text += formatted("%-10s %10.1f", kNames[stage], ms);
        if (stage >= static_cast<size_t>(Stage::kDraw)) text += formatted(" %10.2f", ms / frames);
        if (stage == static_cast<size_t>(Stage::kEncode) && writers > 1)
            text += formatted("  on %d threads together", writers);
        text += '\n';
    }
    return text + formatted("%d frame%s in %.2f s: %.1f a second, the first after %.2f s\n", frames,
                            frames == 1 ? "" : "s", seconds, frames / seconds,
                            std::chrono::duration<double>(m_first_frame).count());
}

}  // namespace quorvane::app
