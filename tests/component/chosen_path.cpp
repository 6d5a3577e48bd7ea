// Tells which path of the kernels a process uses. The choice stands for as long as a process runs, so the
// tests start this for each.
//   chosen_path              the log's lines, then the path chosen
//   chosen_path all          every path that runs here, the reference first
//   chosen_path twice NAME   the path chosen, then the one chosen after QUORVANE_LANES has become NAME

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "renderer/chosen_path.h"

// Stands in for the Android log.
extern "C" int __android_log_print(int priority, const char* tag, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    std::printf("%d %s ", priority, tag);
    const int length = std::vprintf(format, arguments);
    va_end(arguments);
    return length;
}

int main(int argc, char** argv) {
    const std::string question = argc > 1 ? argv[1] : "";
    if (question == "all") {
        for (const quorvane::Path& path : quorvane::paths())
            if (path.runsHere()) std::printf("%s\n", path.name);
        return 0;
    }
    std::printf("%s\n", quorvane::chosenPath().name);
    if (question == "twice" && argc > 2) {
        setenv("QUORVANE_LANES", argv[2], 1);
        std::printf("%s\n", quorvane::chosenPath().name);
    }
    return 0;
}
