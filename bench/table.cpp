#include "table.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <utility>

namespace quorvane::bench {
namespace {

constexpr size_t kNarrowest = 3;

bool isFigure(const std::string& cell) {
    return !cell.empty() && std::isdigit(static_cast<unsigned char>(cell.front())) != 0 &&
           cell.find(' ') == std::string::npos;
}

}  // namespace

Table::Table(std::vector<std::string> heads) { m_rows.push_back(std::move(heads)); }

void Table::add(std::vector<std::string> cells) {
    cells.resize(m_rows.front().size());
    m_rows.push_back(std::move(cells));
}

void Table::print(std::FILE* out) const {
    const size_t columns = m_rows.front().size();
    std::vector<size_t> widths(columns, kNarrowest);
    std::vector<bool> figures(columns, false);
    for (const auto& row : m_rows)
        for (size_t i = 0; i < columns; ++i) {
            widths[i] = std::max(widths[i], row[i].size());
            figures[i] = figures[i] || isFigure(row[i]);
        }

    for (const auto& row : m_rows) {
        for (size_t i = 0; i < columns; ++i) {
            const int width = static_cast<int>(widths[i]);
            std::fprintf(out, figures[i] ? "| %*s " : "| %-*s ", width, row[i].c_str());
        }
        std::fputs("|\n", out);
        if (&row != &m_rows.front()) continue;
        for (size_t i = 0; i < columns; ++i) {
            const std::string dashes(widths[i] - 1, '-');
            std::fprintf(out, figures[i] ? "| %s: " : "| %s- ", dashes.c_str());
        }
        std::fputs("|\n", out);
    }
    std::fputs("\n", out);
}

}  // namespace quorvane::bench
