#include "system/standard_streams.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "system/error.h"

namespace quorvane {
namespace {

/// Of standard output. It holds any text that is printed: written at once, that fails where errno is looked
/// at.
char g_whole_text[1 << 16];

void requireArrived(const std::string& name) {
    errno = 0;
    const bool lost = std::fflush(stdout) != 0 || std::ferror(stdout) != 0;
    std::clearerr(stdout);
    if (lost) throwFor(name + ": cannot be written", errno != 0 ? errno : EIO);
}

/// Puts `file` in the place of a standard stream and returns where that stream is now.
int divert(int stream, int file) {
    const int saved = fcntl(stream, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    dup2(file, stream);
    close(file);
    return saved;
}

void restore(int stream, int saved) {
    if (saved < 0) return;
    dup2(saved, stream);
    close(saved);
}

}  // namespace

void fillStandardStreams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(stream, F_GETFD) >= 0) continue;
        // The lowest free place is this one.
        open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
    if (isatty(STDOUT_FILENO) == 0) std::setvbuf(stdout, g_whole_text, _IOFBF, sizeof g_whole_text);
}

void requireStandardOutput() { requireArrived("standard output"); }

StandardOutputTo::StandardOutputTo(const std::string& path)
    : m_path(path.empty() ? "/dev/null" : path), m_saved(-1) {
    struct stat about = {};
    const bool stream =
        stat(m_path.c_str(), &about) == 0 && !S_ISREG(about.st_mode) && !S_ISDIR(about.st_mode);
    if (!stream) m_pending.emplace(m_path);
    const int file = stream ? open(m_path.c_str(), O_WRONLY | O_CLOEXEC)
                            : fcntl(m_pending->descriptor(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    if (file < 0) throwFor(m_path + ": cannot be written", errno);
    std::fflush(stdout);
    m_saved = divert(STDOUT_FILENO, file);
}

StandardOutputTo::~StandardOutputTo() {
    std::fflush(stdout);
    std::clearerr(stdout);
    restore(STDOUT_FILENO, m_saved);
}

void StandardOutputTo::require() { requireArrived(m_path); }

void StandardOutputTo::commit() {
    require();
    if (m_pending) m_pending->commit();
}

StandardErrorNowhere::StandardErrorNowhere() : m_saved(-1) {
    const int file = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (file >= 0) m_saved = divert(STDERR_FILENO, file);
}

StandardErrorNowhere::~StandardErrorNowhere() { restore(STDERR_FILENO, m_saved); }

}  // namespace quorvane
