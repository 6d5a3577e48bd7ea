#include "apps/quorvane/batch/shard.h"

#include <algorithm>
#include <cstdlib>
#include <optional>

#include "apps/quorvane/terminal/numbers.h"
#include "apps/quorvane/terminal/usage_error.h"

namespace quorvane::app {
namespace {

constexpr int kMostShards = 1000000;

/// An engine that starts one process for each index.
struct Engine {
    const char* index;  ///< variables; null: there is none
    const char* first;  ///< the least index; without it 0
    const char* step;   ///< from one index to the next; without it 1
    const char* count;
};

constexpr Engine kEngines[] = {
    {"JOB_COMPLETION_INDEX", nullptr, nullptr, nullptr},
    {"AWS_BATCH_JOB_ARRAY_INDEX", nullptr, nullptr, "AWS_BATCH_JOB_ARRAY_SIZE"},
    {"SLURM_ARRAY_TASK_ID", "SLURM_ARRAY_TASK_MIN", "SLURM_ARRAY_TASK_STEP", "SLURM_ARRAY_TASK_COUNT"},
};

std::optional<int> variable(const char* name) {
    const char* const value = name == nullptr ? nullptr : std::getenv(name);
    if (value == nullptr) return {};
    return parseWhole(name, value, 0, kMostShards);
}

Shard shardOfEnvironment(std::optional<int> count) {
    for (const Engine& engine : kEngines) {
        const std::optional<int> index = variable(engine.index);
        if (!index) continue;
        if (!count) count = variable(engine.count);
        if (!count)
            throw UsageError(std::string("--shard auto: ") + engine.index +
                             " does not say how many there are; give it as in --shard auto/8");
        const int first = variable(engine.first).value_or(0);
        const int step = std::max(1, variable(engine.step).value_or(1));
        const int number = (*index - first) / step + 1;
        if (number < 1 || number > *count)
            throw UsageError(std::string("--shard: ") + engine.index + "=" + std::to_string(*index) +
                             " is none of " + std::to_string(*count) + " shards");
        return {number, *count};
    }
    std::string names;
    for (const Engine& engine : kEngines) names += (names.empty() ? "" : ", ") + std::string(engine.index);
    throw UsageError("--shard auto: none of " + names + " is set");
}

}  // namespace

std::string Shard::suffix() const {
    return count == 1 ? "" : "-" + std::to_string(number) + "-of-" + std::to_string(count);
}

Shard parseShard(const std::string& text) {
    constexpr char kAuto[] = "auto";
    if (text == kAuto) return shardOfEnvironment({});
    const size_t slash = text.find('/');
    const std::string number = text.substr(0, slash);
    double value = 0.0;
    if (slash == std::string::npos || (number != kAuto && !parseNumber(number, &value)))
        throw UsageError("--shard " + text +
                         ": I/N is wanted, such as 1/8 for the first of eight; or auto, or auto/8");
    const int count = parseWhole("--shard " + number + "/", text.substr(slash + 1), 1, kMostShards);
    if (number == kAuto) return shardOfEnvironment(count);
    return {parseWhole("--shard", number, 1, count), count};
}

}  // namespace quorvane::app
