// What the component needs from outside: an embedder links these and nothing else.

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <set>
#include <string>

namespace {

/// The last word of each line that nm prints: a symbol's name.
std::set<std::string> symbols(const std::string& options) {
    std::set<std::string> names;
    FILE* pipe = popen(("nm " + options + " " QUORVANE_LIBRARY " 2>/dev/null").c_str(), "r");
    char line[4096];
    while (std::fgets(line, sizeof line, pipe) != nullptr) {
        std::string text(line);
        while (!text.empty() && text.back() == '\n') text.pop_back();
        const size_t blank = text.rfind(' ');
        if (blank != std::string::npos) names.insert(text.substr(blank + 1));
    }
    pclose(pipe);
    return names;
}

bool inStandardLibraries(const std::string& name) {
    for (const char* library : {"libc.so.6", "libm.so.6", "libstdc++.so.6", "libgcc_s.so.1"})
        if (void* handle = dlopen(library, RTLD_LAZY))
            if (dlsym(handle, name.c_str()) != nullptr) return true;
    return false;
}

TEST(Library, NeedsThePlatformsInterfacesAndNothingElse) {
    const std::set<std::string> platform = {"property_get",     "__android_log_print", "eglGetCurrentDisplay",
                                            "eglGetError",      "eglCreateSyncKHR",    "eglClientWaitSyncKHR",
                                            "eglDestroySyncKHR"};
    const std::set<std::string> own = symbols("--defined-only");
    ASSERT_GT(own.size(), 20u) << "nm gave nothing for " QUORVANE_LIBRARY;
    for (const std::string& name : symbols("--undefined-only")) {
        const bool instrumentation = name.rfind("__asan", 0) == 0 || name.rfind("__ubsan", 0) == 0 ||
                                     name.rfind("__gcov", 0) == 0 || name == "_GLOBAL_OFFSET_TABLE_";
        if (instrumentation || own.count(name) != 0 || platform.count(name) != 0) continue;
        const bool gl = name.size() > 2 && name.rfind("gl", 0) == 0 && name[2] >= 'A' && name[2] <= 'Z';
        EXPECT_TRUE(gl || inStandardLibraries(name)) << name;
    }
}

}  // namespace
