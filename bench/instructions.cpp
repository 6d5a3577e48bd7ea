#include "instructions.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "kernels.h"
#include "uploads.h"

// callgrind counts inside this function only, and writes its counts whenever it returns.
extern "C" __attribute__((noinline)) void quorvaneCounted(const quorvane::bench::Work& work) { work(); }

namespace quorvane::bench {
namespace {

constexpr const char* kFrame = "renderFrame without the driver";

double totalOf(const std::string& file) {
    std::ifstream lines(file);
    for (std::string line; std::getline(lines, line);)
        for (const char* key : {"summary: ", "totals: "})
            if (line.compare(0, std::string(key).size(), key) == 0)
                return std::strtod(line.c_str() + std::string(key).size(), nullptr);
    throw std::runtime_error("no instruction count in " + file);
}

}  // namespace

void runCounted() {
    for (const MakeStage& make : smallKernelStages())
        for (const Contender& contender : make().contenders)
            if (contender.kind == Kind::path) quorvaneCounted(contender.work);
    const Work frame = countedFrame();
    frame();
    quorvaneCounted(frame);
}

std::vector<InstructionCount> countInstructions(const std::string& folder) {
    const std::string out = folder + "/callgrind";
    std::filesystem::remove_all(out);
    std::filesystem::create_directories(out);
    const std::string command =
        "valgrind --quiet --tool=callgrind --toggle-collect=quorvaneCounted --dump-after=quorvaneCounted "
        "--callgrind-out-file='" +
        out + "/counts' '" + std::filesystem::read_symlink("/proc/self/exe").string() +
        "' --counted >/dev/null";
    if (std::system(command.c_str()) != 0) throw std::runtime_error("valgrind failed: " + command);

    std::vector<InstructionCount> counts;
    int part = 0;
    const auto next = [&] { return totalOf(out + "/counts." + std::to_string(++part)); };
    for (const MakeStage& make : smallKernelStages()) {
        const Stage stage = make();
        for (const Contender& contender : stage.contenders)
            if (contender.kind == Kind::path)
                counts.push_back({stage.name, stage.size, stage.unit, contender.name, next() / stage.units});
    }
    counts.push_back({kFrame, "", "frame", "all paths", next()});
    return counts;
}

}  // namespace quorvane::bench
