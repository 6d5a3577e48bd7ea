// What the component needs from outside: an embedder links these and nothing else. And what its objects offer
// each other.

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <set>
#include <string>
#include <vector>

#include "kernels/paths.h"

namespace {

/// What nm prints of the library, line by line.
std::vector<std::string> listed(const std::string& options) {
    std::vector<std::string> lines;
    FILE* pipe = popen((QUORVANE_NM " " + options + " " QUORVANE_LIBRARY " 2>/dev/null").c_str(), "r");
    char line[4096];
    while (std::fgets(line, sizeof line, pipe) != nullptr) {
        lines.emplace_back(line);
        while (!lines.back().empty() && lines.back().back() == '\n') lines.back().pop_back();
    }
    pclose(pipe);
    return lines;
}

/// The last word of each line that nm prints: a symbol's name.
std::set<std::string> symbols(const std::string& options) {
    std::set<std::string> names;
    for (const std::string& line : listed(options)) {
        const size_t blank = line.rfind(' ');
        if (blank != std::string::npos) names.insert(line.substr(blank + 1));
    }
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
        // What __builtin_cpu_supports reads. Every compiler adds it to what it links, from a static library.
        if (name == "__cpu_model") continue;
        const bool gl = name.size() > 2 && name.rfind("gl", 0) == 0 && name[2] >= 'A' && name[2] <= 'Z';
        EXPECT_TRUE(gl || inStandardLibraries(name)) << name;
    }
}

/// Names that an object offers to others, mangled. Members of an archive may share a name, so an object is
/// known by its place in the list.
std::vector<std::vector<std::string>> offeredByEachObject() {
    std::vector<std::vector<std::string>> objects;
    for (const std::string& line : listed("--defined-only")) {
        if (!line.empty() && line.back() == ':') {
            objects.emplace_back();
            continue;
        }
        const size_t name = line.rfind(' ');
        if (objects.empty() || name == std::string::npos || name == 0) continue;
        // A lower-case letter is a local symbol; but 'u', 'v' and 'w' are not.
        const char kind = line[name - 1];
        if (std::isupper(static_cast<unsigned char>(kind)) || kind == 'u' || kind == 'v' || kind == 'w')
            objects.back().push_back(line.substr(name + 1));
    }
    return objects;
}

/// True for what is defined in the namespace of `path`, be it a function, a constant or a table of virtual
/// ones.
bool liesIn(const std::string& path, const std::string& mangled) {
    const std::string space = "8quorvane" + std::to_string(path.size()) + path;
    const size_t start = mangled.find_first_not_of("_ZTVSIGNK");
    return start != std::string::npos && mangled.compare(start, space.size(), space) == 0;
}

// The linker keeps one of several definitions of an inline function. If a path's object had one that others
// have too, every processor could be given that path's instructions.
TEST(Library, ObjectsOfAPathOfferNothingOutsideTheirNamespace) {
    const auto objects = offeredByEachObject();
    const quorvane::PathList paths = quorvane::paths();
    for (size_t i = 1; i < paths.size(); ++i) {
        std::string path = paths[i].name;
        path.erase(std::remove(path.begin(), path.end(), '.'), path.end());
        int found = 0;
        for (const auto& names : objects) {
            const auto in_path = [&](const std::string& name) { return liesIn(path, name); };
            if (std::none_of(names.begin(), names.end(), in_path)) continue;
            ++found;
            // Where exceptions can pass, each object has a pointer to their handler.
            for (const std::string& name : names)
                EXPECT_TRUE(in_path(name) || name == "DW.ref.__gxx_personality_v0")
                    << path << " has " << name;
        }
        EXPECT_GT(found, 0) << path;
    }
}

}  // namespace
