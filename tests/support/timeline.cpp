#include "support/timeline.h"

#include <regex>

namespace quorvane::test {

Timeline& Timeline::instance() {
    static Timeline* timeline = new Timeline;  // outlives every other static
    return *timeline;
}

void Timeline::clear() { m_events.clear(); }

void Timeline::addCall(std::string text) { m_events.push_back({Source::call, std::move(text), {}}); }

void Timeline::addResult(const std::string& text) { m_events.back().text += " = " + text; }

void Timeline::addLog(std::string text) { m_events.push_back({Source::log, std::move(text), {}}); }

void Timeline::addOutput(const std::string& line) {
    static const std::regex timing(R"((.*): ( *-?[0-9]+)\(us\) = ( *-?[0-9]+\.[0-9]{4})\(ms\))");
    std::smatch parts;
    if (std::regex_match(line, parts, timing) && parts[2].length() >= 8)
        m_events.push_back({Source::timing, "time " + parts[1].str(), line});
    else
        m_events.push_back({Source::output, "output " + line, line});
}

std::vector<std::string> Timeline::lines() const {
    std::vector<std::string> all;
    for (const Event& event : m_events) all.push_back(event.text);
    return all;
}

std::vector<std::string> Timeline::textsOf(Source source) const {
    std::vector<std::string> texts;
    for (const Event& event : m_events)
        if (event.source == source) texts.push_back(event.text);
    return texts;
}

std::vector<std::string> Timeline::calls() const { return textsOf(Source::call); }

std::vector<std::string> Timeline::callsOf(const std::string& function) const {
    std::vector<std::string> found;
    for (const std::string& call : calls())
        if (call.compare(0, function.size() + 1, function + "(") == 0) found.push_back(call);
    return found;
}

std::vector<std::string> Timeline::timingLabels() const {
    std::vector<std::string> labels = textsOf(Source::timing);
    for (std::string& label : labels) label.erase(0, std::string("time ").size());
    return labels;
}

std::vector<std::string> Timeline::timingLines() const {
    std::vector<std::string> printed;
    for (const Event& event : m_events)
        if (event.source == Source::timing) printed.push_back(event.printed);
    return printed;
}

namespace {

ssize_t splitIntoLines(void* cookie, const char* bytes, size_t size) {
    std::string& partial = *static_cast<std::string*>(cookie);
    for (size_t i = 0; i < size; ++i) {
        if (bytes[i] != '\n') {
            partial += bytes[i];
            continue;
        }
        Timeline::instance().addOutput(partial);
        partial.clear();
    }
    return static_cast<ssize_t>(size);
}

}  // namespace

OutputToTimeline::OutputToTimeline() : m_saved(stdout) {
    std::fflush(stdout);
    cookie_io_functions_t functions = {};
    functions.write = splitIntoLines;
    m_stream = fopencookie(&m_partial, "w", functions);
    // Unbuffered, so that a line stands in the timeline before whatever happens next.
    std::setvbuf(m_stream, nullptr, _IONBF, 0);
    stdout = m_stream;
}

OutputToTimeline::~OutputToTimeline() {
    stdout = m_saved;
    std::fclose(m_stream);
    if (!m_partial.empty()) Timeline::instance().addOutput(m_partial + "[no line end]");
}

}  // namespace quorvane::test
