#ifndef QUORVANE_TESTS_COMPONENT_EACH_PATH_H
#define QUORVANE_TESTS_COMPONENT_EACH_PATH_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "kernels/paths.h"

namespace quorvane::test {

/// The path that defines every result.
inline const Path& referencePath() { return paths()[0]; }

/// The reference and the paths that this processor runs.
inline std::vector<Path> everyPath() {
    std::vector<Path> running;
    for (const Path& path : paths())
        if (path.runsHere()) running.push_back(path);
    return running;
}

/// All of those but the reference.
inline std::vector<Path> vectorPaths() {
    std::vector<Path> running = everyPath();
    running.erase(running.begin());
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
