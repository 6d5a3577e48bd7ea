#include "standard_output.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "media/error.h"

namespace quorvane::app {

StandardOutputTo::StandardOutputTo(const std::string& path) : m_saved(-1) {
    const char* name = path.empty() ? "/dev/null" : path.c_str();
    const int file = open(name, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (file < 0)
        throw media::Error(std::string(name) + ": cannot be written (" + std::strerror(errno) + ")");
    std::fflush(stdout);
    m_saved = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3);
    dup2(file, STDOUT_FILENO);
    close(file);
}

StandardOutputTo::~StandardOutputTo() {
    std::fflush(stdout);
    if (m_saved < 0) return;
    dup2(m_saved, STDOUT_FILENO);
    close(m_saved);
}

}  // namespace quorvane::app
