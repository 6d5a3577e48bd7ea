#ifndef QUORVANE_TESTS_COMPONENT_EACH_PATH_H
#define QUORVANE_TESTS_COMPONENT_EACH_PATH_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "kernels/paths.h"

namespace quorvane::test {

struct RunningPath {
    size_t index;
    const char* name;
};

/// The paths that this processor runs, without the reference, which is at index 0.
inline std::vector<RunningPath> vectorPaths() {
    size_t count = 0;
    const Path* all = paths(&count);
    std::vector<RunningPath> running;
    for (size_t i = 1; i < count; ++i)
        if (all[i].runsHere()) running.push_back({i, all[i].name});
    return running;
}

/// The reference and all of those.
inline std::vector<RunningPath> everyPath() {
    std::vector<RunningPath> running = vectorPaths();
    running.insert(running.begin(), {0, "reference"});
    return running;
}

/// Where bytes first differ from those that are wanted; empty where nowhere.
inline std::string difference(const uint8_t* actual, const std::vector<uint8_t>& wanted) {
    const auto [a, w] = std::mismatch(actual, actual + wanted.size(), wanted.begin());
    if (w == wanted.end()) return "";
    return "byte " + std::to_string(a - actual) + " is " + std::to_string(*a) + " and not " +
           std::to_string(*w);
}

}  // namespace quorvane::test

#endif
