#ifndef QUORVANE_BENCH_INSTRUCTIONS_H
#define QUORVANE_BENCH_INSTRUCTIONS_H

#include <string>
#include <vector>

namespace quorvane::bench {

/// What one path executes in one stage.
struct InstructionCount {
    std::string stage;
    std::string size;
    std::string unit;  ///< what `each` is per
    std::string path;
    double each;
};

/// Runs this program again under callgrind. Such counts repeat exactly. Throws std::runtime_error without
/// valgrind.
std::vector<InstructionCount> countInstructions(const std::string& folder);

/// What the program does under callgrind: every stage once on every path.
void runCounted();

}  // namespace quorvane::bench

#endif
