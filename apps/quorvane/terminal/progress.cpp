#include "apps/quorvane/terminal/progress.h"

#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <string>

namespace quorvane::app {
namespace {

constexpr int kBarWidth = 30;
constexpr auto kRedraw = std::chrono::milliseconds(100);

}  // namespace

Progress::Progress(int total, bool quiet)
    : m_total(total), m_shown(!quiet && isatty(STDERR_FILENO) != 0), m_start(Clock::now()) {}

Progress::~Progress() { wipe(); }

void Progress::wipe() const {
    if (m_shown) std::fputs("\r\033[K", stderr);
}

void Progress::step(int done) {
    const Clock::time_point now = Clock::now();
    if (!m_shown || (now - m_last < kRedraw && done < m_total)) return;
    m_last = now;
    const double elapsed = std::chrono::duration<double>(now - m_start).count();
    const int left = static_cast<int>(std::ceil(elapsed / done * (m_total - done)));
    const auto filled = static_cast<size_t>(kBarWidth * done / m_total);
    const std::string bar = std::string(filled, '#') + std::string(kBarWidth - filled, '.');
    std::fprintf(stderr, "\r[%s] %d/%d  %d:%02d left \033[K", bar.c_str(), done, m_total, left / 60,
                 left % 60);
    std::fflush(stderr);
}

}  // namespace quorvane::app
