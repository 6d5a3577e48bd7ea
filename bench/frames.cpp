#include "frames.h"

#include <cstdio>
#include <filesystem>
#include <memory>
#include <stdexcept>

namespace quorvane::bench {

Frames measureFrames(bool quick) {
    const std::filesystem::path here = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    const std::string command = "'" + (here / "bench_frame").string() + "'" + (quick ? " --quick" : "");
    const std::unique_ptr<FILE, int (*)(FILE*)> lines(popen(command.c_str(), "r"), pclose);
    if (lines == nullptr) throw std::runtime_error("cannot run " + command);

    Frames frames;
    char line[512];
    while (std::fgets(line, sizeof line, lines.get()) != nullptr) {
        FrameCost cost;
        int same = 0;
        char driver[256];
        if (std::sscanf(line, "driver %255[^\n]", driver) == 1) frames.driver = driver;
        if (std::sscanf(line, "frame %d %d %lf %lf %lf %d %d", &cost.width, &cost.height, &cost.seconds,
                        &cost.bare_seconds, &cost.ratio, &cost.pairs, &same) != 7)
            continue;
        cost.same_picture = same != 0;
        frames.costs.push_back(cost);
    }
    return frames;
}

}  // namespace quorvane::bench
