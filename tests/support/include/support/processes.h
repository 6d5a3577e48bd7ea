#ifndef QUORVANE_TESTS_SUPPORT_PROCESSES_H
#define QUORVANE_TESTS_SUPPORT_PROCESSES_H

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>

namespace quorvane::test {

/// Every process that is started from now on is one that names `text`: it stands in its environment.
inline void nameInProcesses(const std::string& text) { setenv("QUORVANE_TEST", text.c_str(), 1); }

/// How many running processes have `text` in their command line or their environment; this one's own
/// environment does not count.
inline int processesNaming(const std::string& text) {
    // A process may go while it is read; streams would throw.
    const auto bytes = [](const std::filesystem::path& path) {
        std::string read;
        const std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(path.c_str(), "rb"), std::fclose);
        char chunk[4096];
        while (file != nullptr) {
            const size_t got = std::fread(chunk, 1, sizeof chunk, file.get());
            read.append(chunk, got);
            if (got == 0) break;
        }
        return read;
    };
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc"))
        count += (bytes(entry.path() / "cmdline") + bytes(entry.path() / "environ")).find(text) !=
                 std::string::npos;
    return count;
}

/// Waits until no running process names `text`, for ten seconds at most: one that has been killed is still
/// seen for a moment.
inline bool noProcessNames(const std::string& text) {
    for (int i = 0; i < 1000; ++i) {
        if (processesNaming(text) == 0) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

/// What a shell's command writes to standard output; nothing where it cannot be started.
inline std::string outputOf(const std::string& command) {
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
    std::string output;
    char chunk[4096];
    for (size_t got = 0; pipe != nullptr && (got = std::fread(chunk, 1, sizeof chunk, pipe.get())) > 0;)
        output.append(chunk, got);
    return output;
}

/// What a shell's lines print, standard error included.
inline std::string printedBy(const std::string& lines) { return outputOf("{ " + lines + "\n} 2>&1"); }

/// outputOf without the last line ends, and without a word to standard error.
inline std::string answerOf(const std::string& command) {
    std::string output = outputOf(command + " 2>/dev/null");
    while (!output.empty() && output.back() == '\n') output.pop_back();
    return output;
}

}  // namespace quorvane::test

#endif
