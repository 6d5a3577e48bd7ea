// Writes the manual pages and what shells complete by: quorvane_pages FOLDER YYYY-MM-DD

#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>

#include "apps/quorvane/commands/program.h"
#include "apps/quorvane/terminal/completion.h"
#include "apps/quorvane/terminal/man_page.h"

namespace {

void write(const std::filesystem::path& path, const std::string& text) {
    std::filesystem::create_directories(path.parent_path());
    std::ofstream file(path, std::ios::binary);
    file.exceptions(std::ios::failbit | std::ios::badbit);
    file << text;
    file.close();
}

}  // namespace

int main(int argc, char** argv) {
    using namespace quorvane::app;
    if (argc != 3) {
        std::fputs("usage: quorvane_pages FOLDER YYYY-MM-DD\n", stderr);
        return 2;
    }
    try {
        const std::filesystem::path folder = argv[1];
        const std::string date = argv[2];
        const Program program;
        const CommandLines& lines = program.lines();
        std::filesystem::remove_all(folder);
        write(folder / "man" / (lines.program() + ".1"), manPage(lines, date));
        for (const auto& line : lines.lines())
            write(folder / "man" / (manPageName(lines, *line) + ".1"), manPage(lines, *line, date));
        write(folder / "bash" / lines.program(), bashCompletion(lines));
        write(folder / "zsh" / ("_" + lines.program()), zshCompletion(lines));
        write(folder / "fish" / (lines.program() + ".fish"), fishCompletion(lines));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "quorvane_pages: %s\n", error.what());
        return 1;
    }
    return 0;
}
