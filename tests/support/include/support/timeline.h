#ifndef QUORVANE_TESTS_SUPPORT_TIMELINE_H
#define QUORVANE_TESTS_SUPPORT_TIMELINE_H

#include <cstdio>
#include <string>
#include <vector>

namespace quorvane::test {

/// Everything that the component told the outside, in the order in which it did: GL and EGL calls, log lines
/// and timing lines. The doubles write to it.
class Timeline {
  public:
    static Timeline& instance();

    void clear();

    /// A GL or EGL call, as text with its arguments: "glBindTexture(GL_TEXTURE_2D, 3)".
    void addCall(std::string text);
    /// Completes the last call with what it gave back: "glCreateProgram() = 3".
    void addResult(const std::string& text);
    /// A log line of the renderer's tag, as "D text" or "E text" with the text's own line end.
    void addLog(std::string text);
    /// A line of standard output; a timing line becomes "time label".
    void addOutput(const std::string& line);

    /// All of it.
    std::vector<std::string> lines() const;
    /// The GL and EGL calls alone.
    std::vector<std::string> calls() const;
    /// The GL and EGL calls whose name is `function`.
    std::vector<std::string> callsOf(const std::string& function) const;
    /// The labels of the timing lines, blanks included.
    std::vector<std::string> timingLabels() const;
    /// The timing lines as printed, without their line ends.
    std::vector<std::string> timingLines() const;

  private:
    enum class Source { call, log, timing, output };
    struct Event {
        Source source;
        std::string text;
        std::string printed;
    };
    std::vector<std::string> textsOf(Source source) const;

    std::vector<Event> m_events;
};

/// While it lives, standard output goes to the timeline, line by line. Keep it around the call under test
/// only: a failure reported meanwhile would go there too.
class OutputToTimeline {
  public:
    OutputToTimeline();
    ~OutputToTimeline();

    OutputToTimeline(const OutputToTimeline&) = delete;
    OutputToTimeline& operator=(const OutputToTimeline&) = delete;

  private:
    FILE* m_saved;
    FILE* m_stream;
    std::string m_partial;
};

}  // namespace quorvane::test

#endif
