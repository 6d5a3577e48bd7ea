#include "apps/quorvane/batch/batch_worker.h"

#include <sys/prctl.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <sstream>

#include "apps/quorvane/batch/result.h"
#include "apps/quorvane/commands/failure.h"
#include "apps/quorvane/commands/render.h"
#include "apps/quorvane/drawing/renderer.h"
#include "apps/quorvane/terminal/command_line.h"
#include "apps/quorvane/terminal/usage_error.h"
#include "system/cancel.h"
#include "system/child_process.h"
#include "system/cores.h"

namespace quorvane::app {
namespace {

using Clock = std::chrono::steady_clock;

constexpr size_t kMostWarnings = 20;
constexpr uint64_t kMostBytes = uint64_t{1} << 26;

/// A line of `render`, parsed.
class RenderCall {
  public:
    explicit RenderCall(const std::vector<std::string>& words)
        : m_lines("quorvane", "", ""),
          m_line(m_lines.add("render", "", {})),
          m_render(addRenderLine(m_line)) {
        std::vector<const char*> arguments = {"quorvane", "render"};
        for (const std::string& word : words) arguments.push_back(word.c_str());
        size_t chosen = 0;
        if (!m_lines.parse(static_cast<int>(arguments.size()), arguments.data(), &chosen))
            throw UsageError("--help: goes without a photo");
    }
    void check() const { m_line->run(m_render.check); }
    OutputEnding ending() const { return m_render.ending(); }
    Rendered render() const {
        Rendered rendered;
        m_line->run([&] { rendered = m_render.render(); });
        return rendered;
    }

  private:
    CommandLines m_lines;
    CommandLine* m_line;
    RenderLine m_render;
};

/// The lines that have been printed to standard error, a file in memory, which is empty then; without those
/// on the depth map, which the outcome has in other words.
std::vector<std::string> printedLines() {
    const off_t size = lseek(STDERR_FILENO, 0, SEEK_END);
    std::string text(static_cast<size_t>(std::max<off_t>(0, size)), '\0');
    const ssize_t got = pread(STDERR_FILENO, text.data(), text.size(), 0);
    text.resize(static_cast<size_t>(std::max<ssize_t>(0, got)));
    if (ftruncate(STDERR_FILENO, 0) != 0 || lseek(STDERR_FILENO, 0, SEEK_SET) != 0) return {};
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; lines.size() < kMostWarnings && std::getline(in, line);)
        if (!line.empty() && line.rfind("depth: ", 0) != 0) lines.push_back(line);
    return lines;
}

/// Throws Cancelled after a signal.
PhotoOutcome outcomeFor(const std::vector<std::string>& words) {
    PhotoOutcome outcome;
    const Clock::time_point start = Clock::now();
    try {
        outcome.rendered = RenderCall(words).render();
    } catch (const Cancelled&) {
        throw;
    } catch (const std::exception&) {
        outcome = outcomeOf(failureOf(std::current_exception()));
    }
    outcome.seconds = std::chrono::duration<double>(Clock::now() - start).count();
    outcome.warnings = printedLines();
    return outcome;
}

}  // namespace

int serveBatch(const std::string& cores) {
    // A batch that is killed takes its workers along.
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    limitCores(std::max(1, std::atoi(cores.c_str())));
    catchSignals(kSysexitTryAgain);
    const WarmContexts warm;
    const Descriptor batch(STDIN_FILENO);
    try {
        std::vector<std::string> words;
        while (receiveWords(batch, &words))
            if (!sendWords(batch, {outcomeText(outcomeFor(words))})) break;
    } catch (const Cancelled&) {
        return kSysexitTryAgain;
    }
    return 0;
}

void checkRenderWords(const std::vector<std::string>& words) { RenderCall(words).check(); }

OutputEnding endingFor(const std::vector<std::string>& words) { return RenderCall(words).ending(); }

bool sendWords(const Descriptor& to, const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) text.append(word.c_str(), word.size() + 1);
    const uint64_t size = text.size();
    return sendAll(to, &size, sizeof size) && sendAll(to, text.data(), text.size());
}

bool receiveWords(const Descriptor& from, std::vector<std::string>* words) {
    uint64_t size = 0;
    if (!receiveAll(from, &size, sizeof size, Clock::time_point::max()) || size > kMostBytes) return false;
    std::string text(size, '\0');
    if (!receiveAll(from, text.data(), text.size(), Clock::time_point::max())) return false;
    words->clear();
    for (size_t at = 0; at < text.size(); at += words->back().size() + 1)
        words->emplace_back(text.c_str() + at);
    return true;
}

}  // namespace quorvane::app
