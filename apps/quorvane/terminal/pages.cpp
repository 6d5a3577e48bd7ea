#include "apps/quorvane/terminal/pages.h"

#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>

#include "apps/quorvane/terminal/completion.h"
#include "apps/quorvane/terminal/man_page.h"

namespace quorvane::app {
namespace {

namespace fs = std::filesystem;

void write(const fs::path& path, const std::string& text) {
    fs::create_directories(path.parent_path());
    std::ofstream file(path, std::ios::binary);
    file.exceptions(std::ios::failbit | std::ios::badbit);
    file << text;
    file.close();
}

void writePages(const CommandLines& lines, const fs::path& place, const std::string& date) {
    fs::remove_all(place);
    write(place / "man" / (lines.program() + ".1"), manPage(lines, date));
    if (lines.hasCommands())
        for (const auto& line : lines.lines())
            write(place / "man" / (manPageName(lines, *line) + ".1"), manPage(lines, *line, date));
    write(place / "bash" / lines.program(), bashCompletion(lines));
    write(place / "zsh" / ("_" + lines.program()), zshCompletion(lines));
    write(place / "fish" / (lines.program() + ".fish"), fishCompletion(lines));
}

}  // namespace

int pagesMain(const CommandLines& lines, int argc, const char* const* argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: %s FOLDER YYYY-MM-DD\n", argv[0]);
        return 2;
    }
    try {
        writePages(lines, argv[1], argv[2]);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s: %s\n", argv[0], error.what());
        return 1;
    }
    return 0;
}

}  // namespace quorvane::app
