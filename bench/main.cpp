// bench_stages: times every stage on every path against its goals, limits and peers. See docs/performance.md.

#include <sys/prctl.h>

#include <cstdio>
#include <exception>
#include <filesystem>
#include <stdexcept>
#include <string>

#include "report.h"

namespace quorvane::bench {
namespace {

constexpr int kRounds = 31;
constexpr int kQuickRounds = 7;

struct Options {
    bool quick = false;
    bool icount = false;
    bool counted = false;
    bool stages = false;  ///< only these and their table
    std::string folder = ".";
    std::string only;  ///< stages whose name holds this
};

int runTimings(const Options& options) {
    Report report;
    const int rounds = options.quick ? kQuickRounds : kRounds;
    std::vector<MakeStage> stages = kernelStages();
    const std::vector<MakeStage> uploads = uploadStages();
    stages.insert(stages.end(), uploads.begin(), uploads.end());
    for (const MakeStage& make : stages) {
        Stage stage = make();
        if (stage.name.find(options.only) == std::string::npos) continue;
        std::fprintf(stderr, "bench: %s, %s\n", stage.name.c_str(), stage.size.c_str());
        report.stages.push_back(measure(std::move(stage), rounds));
    }
    if (options.stages) {
        printStages(report);
        return report.wrong() ? 1 : 0;
    }
    if (options.only.empty()) {
        std::fputs("bench: frames\n", stderr);
        report.share = frameShare(rounds);
        report.frames = measureFrames(options.quick);
        report.costs = pixelCosts(options.quick ? 13 : 200, options.quick ? 5 : 11);
        report.judge();
    }
    report.machine = thisMachine();
    print(report);
    writeJson(report, options.folder + "/bench.json");
    writePlot(report.costs, report.machine.path, options.folder + "/cost-per-pixel.svg");
    return report.wrong() ? 1 : 0;
}

int runInstructionCounts(const Options& options) {
    const std::vector<InstructionCount> counts = countInstructions(options.folder);
    const Machine machine = thisMachine();
    print(machine, counts);
    writeJson(machine, counts, options.folder + "/instructions.json");
    return 0;
}

/// Has this process and those that it starts do without large pages, as a host that does not ask for them.
void takeSmallPages() {
    if (prctl(PR_SET_THP_DISABLE, 1, 0, 0, 0) != 0)
        throw std::runtime_error("--pages small: this system's large pages cannot be switched off");
}

int run(const std::vector<std::string>& arguments) {
    Options options;
    for (size_t i = 0; i < arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        const bool has_value = i + 1 < arguments.size();
        if (argument == "--quick")
            options.quick = true;
        else if (argument == "--icount")
            options.icount = true;
        else if (argument == "--stages")
            options.stages = true;
        else if (argument == "--counted")
            options.counted = true;
        else if (argument == "--out" && has_value)
            options.folder = arguments[++i];
        else if (argument == "--only" && has_value)
            options.only = arguments[++i];
        else if (argument == "--pages" && has_value && arguments[i + 1] == "small") {
            takeSmallPages();
            ++i;
        } else {
            std::fprintf(stderr,
                         "bench_stages: unknown '%s'; known are --quick, --icount, --only STAGE, --stages, "
                         "--pages small, --out FOLDER\n",
                         argument.c_str());
            return 2;
        }
    }
    if (options.counted) {
        runCounted();
        return 0;
    }
    std::filesystem::create_directories(options.folder);
    return options.icount ? runInstructionCounts(options) : runTimings(options);
}

}  // namespace
}  // namespace quorvane::bench

int main(int argc, char** argv) {
    try {
        return quorvane::bench::run({argv + 1, argv + argc});
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench: %s\n", error.what());
        return 1;
    }
}
