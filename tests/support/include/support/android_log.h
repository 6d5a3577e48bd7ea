#ifndef QUORVANE_TESTS_SUPPORT_ANDROID_LOG_H
#define QUORVANE_TESTS_SUPPORT_ANDROID_LOG_H

#include <iosfwd>
#include <string>
#include <vector>

namespace quorvane::test {

struct LogLine {
    int priority;
    std::string tag;
    std::string text;
};

bool operator==(const LogLine& a, const LogLine& b);
std::ostream& operator<<(std::ostream& out, const LogLine& line);

/// A debug or error line under the renderer's tag.
LogLine debugLine(std::string text);
LogLine errorLine(std::string text);

/// Stands in for the Android log: `__android_log_print` writes here and to the timeline.
class AndroidLog {
  public:
    static AndroidLog& instance();

    void clear() { m_lines.clear(); }
    void add(LogLine line) { m_lines.push_back(std::move(line)); }

    const std::vector<LogLine>& lines() const { return m_lines; }
    std::vector<std::string> texts() const;
    /// The lines that begin with `start`.
    std::vector<std::string> textsStartingWith(const std::string& start) const;

  private:
    std::vector<LogLine> m_lines;
};

}  // namespace quorvane::test

#endif
