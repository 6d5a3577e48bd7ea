#include "apps/tuner/core/stopwatch.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <numeric>

#include "system/child_process.h"
#include "system/error.h"

namespace quorvane::tuner {
namespace {

constexpr size_t kMostPlots = 32;

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
    while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
    return text;
}

void addLine(std::string_view line, std::vector<Plot>* plots) {
    const size_t colon = line.find(':'), unit = line.find("(us)");
    if (colon == std::string_view::npos || unit == std::string_view::npos || unit < colon) return;
    const std::string label(trimmed(line.substr(0, colon)));
    const std::string number(trimmed(line.substr(colon + 1, unit - colon - 1)));
    char* end = nullptr;
    const long microseconds = std::strtol(number.c_str(), &end, 10);
    if (label.empty() || number.empty() || *end != '\0') return;
    auto plot = std::find_if(plots->begin(), plots->end(),
                             [&label](const Plot& known) { return known.label == label; });
    if (plot == plots->end()) {
        if (plots->size() == kMostPlots) return;
        plots->push_back({label, {}});
        plot = plots->end() - 1;
    }
    plot->add(static_cast<float>(microseconds) / 1000.0f);
}

}  // namespace

void Plot::add(float value) {
    values.push_back(value);
    if (values.size() > kMostValues) values.pop_front();
}

double Plot::rate() const {
    const double sum = std::accumulate(values.begin(), values.end(), 0.0);
    return sum > 0.0 ? 1000.0 * static_cast<double>(values.size()) / sum : 0.0;
}

void addStopwatchLines(std::string* text, std::vector<Plot>* plots) {
    size_t start = 0;
    for (size_t end; (end = text->find('\n', start)) != std::string::npos; start = end + 1)
        addLine(std::string_view(*text).substr(start, end - start), plots);
    text->erase(0, start);
}

PrintedLines::PrintedLines() : m_file(memoryFile()), m_saved(fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3)) {
    std::fflush(stdout);
    if (m_saved < 0 || dup2(m_file.number(), STDOUT_FILENO) < 0)
        throw Error("standard output cannot be read for the timings");
}

PrintedLines::~PrintedLines() {
    std::fflush(stdout);
    dup2(m_saved, STDOUT_FILENO);
    close(m_saved);
}

std::string PrintedLines::take() {
    std::fflush(stdout);
    // Shared with standard output: where the next line would go is how much there is.
    const off_t size = lseek(m_file.number(), 0, SEEK_CUR);
    std::string text(static_cast<size_t>(std::max<off_t>(0, size)), '\0');
    const ssize_t read = pread(m_file.number(), text.data(), text.size(), 0);
    text.resize(static_cast<size_t>(std::max<ssize_t>(0, read)));
    if (lseek(m_file.number(), 0, SEEK_SET) == 0 && ftruncate(m_file.number(), 0) != 0) text.clear();
    return text;
}

}  // namespace quorvane::tuner
