#ifndef QUORVANE_BENCH_TABLE_H
#define QUORVANE_BENCH_TABLE_H

#include <cstdio>
#include <string>
#include <vector>

namespace quorvane::bench {

/// A table in Markdown with columns aligned in the text itself: the first to the left, figures to the right.
class Table {
  public:
    explicit Table(std::vector<std::string> heads);

    /// Cells that are missing at the end stay empty.
    void add(std::vector<std::string> cells);
    bool empty() const { return m_rows.size() == 1; }
    void print(std::FILE* out = stdout) const;

  private:
    std::vector<std::vector<std::string>> m_rows;
};

}  // namespace quorvane::bench

#endif
