#ifndef QUORVANE_TESTS_SUPPORT_PROCESSES_H
#define QUORVANE_TESTS_SUPPORT_PROCESSES_H

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace quorvane::test {

/// How many running processes have `text` in their command line.
inline int processesNaming(const std::string& text) {
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        std::ifstream file(entry.path() / "cmdline", std::ios::binary);
        const std::string line{std::istreambuf_iterator<char>(file), {}};
        count += line.find(text) != std::string::npos;
    }
    return count;
}

}  // namespace quorvane::test

#endif
