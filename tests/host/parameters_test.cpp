// README's table of the parameters says what the tables of component and host say.

#include "quorvane/parameters.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "quorvane/host/ParallaxView.h"

namespace quorvane::test {
namespace {

using Cells = std::vector<std::string>;

std::string trimmed(const std::string& text) {
    const size_t first = text.find_first_not_of(" `"), last = text.find_last_not_of(" `");
    return first == std::string::npos ? "" : text.substr(first, last - first + 1);
}

/// The rows of README's table below its head, cell by cell.
std::vector<Cells> readmeTable() {
    std::ifstream file(QUORVANE_README);
    std::vector<Cells> rows;
    bool inside = false;
    for (std::string line; std::getline(file, line);) {
        if (line.rfind("| name | property |", 0) == 0) {
            inside = true;
            continue;
        }
        if (!inside || line.rfind("|---", 0) == 0) continue;
        if (line.empty() || line[0] != '|') break;
        Cells cells;
        for (size_t bar = 0; bar + 1 < line.size();) {
            const size_t next = line.find('|', bar + 1);
            cells.push_back(trimmed(line.substr(bar + 1, next - bar - 1)));
            bar = next;
        }
        rows.push_back(cells);
    }
    return rows;
}

/// As the README writes it: no exponent and no trailing zeros.
std::string decimal(double value) {
    char text[64];
    std::snprintf(text, sizeof text, "%.7f", value);
    std::string shortened = text;
    shortened.erase(shortened.find_last_not_of('0') + 1);
    if (shortened.back() == '.') shortened.pop_back();
    return shortened;
}

std::string effectText(TakesEffect effect) {
    switch (effect) {
        case TakesEffect::kEachFrame: return "each frame";
        case TakesEffect::kNextDepth: return "next depth";
        case TakesEffect::kNextMotion: return "next motion";
        case TakesEffect::kNever: return "never";
    }
    return "";
}

TEST(Parameters, ReadmeSaysWhatTheTablesSay) {
    const std::vector<Cells> rows = readmeTable();
    ASSERT_EQ(rows.size(), std::size(kParameters)) << QUORVANE_README;
    for (size_t i = 0; i < rows.size(); ++i) {
        const Parameter& parameter = kParameters[i];
        const ParameterInfo& info = ParallaxView::parameters()[i];
        std::string defaults = decimal(parameter.of(LibParam()));
        if (parameter.second) defaults += " / " + decimal(*parameter.second);
        ASSERT_EQ(rows[i].size(), 6u);
        const Cells wanted = {parameter.name, parameter.property, defaults,
                              decimal(info.minimum) + " to " + decimal(info.maximum),
                              effectText(info.takes_effect)};
        EXPECT_EQ(Cells(rows[i].begin(), rows[i].end() - 1), wanted);
    }
}

TEST(Parameters, TableHasEveryFieldInItsOrder) {
    const LibParam set;
    const char* start = reinterpret_cast<const char*>(&set);
    size_t offset = 0;
    for (const Parameter& parameter : kParameters) {
        const void* field = parameter.integer != nullptr ? static_cast<const void*>(&(set.*parameter.integer))
                                                         : static_cast<const void*>(&(set.*parameter.real));
        EXPECT_EQ(field, start + offset) << parameter.name;
        offset += 4;
    }
    EXPECT_EQ(offset, sizeof(LibParam));
}

TEST(Parameters, HostDescribesThemInTheOrderOfTheComponent) {
    const std::vector<ParameterInfo>& described = ParallaxView::parameters();
    ASSERT_EQ(described.size(), std::size(kParameters));
    for (size_t i = 0; i < described.size(); ++i) {
        EXPECT_STREQ(described[i].name, kParameters[i].name);
        EXPECT_EQ(described[i].integer, kParameters[i].integer != nullptr);
    }
}

}  // namespace
}  // namespace quorvane::test
