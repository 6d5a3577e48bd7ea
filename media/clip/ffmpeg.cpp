#include "media/clip/ffmpeg.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>

#include "media/clip/output_format.h"
#include "system/cancel.h"
#include "system/error.h"

namespace quorvane::media {
namespace {

/// A file in memory: a full disk is one of the things that ffmpeg complains about.
FILE* openMemory() {
    const int descriptor = memfd_create("ffmpeg's complaints", MFD_CLOEXEC);
    return descriptor >= 0 ? fdopen(descriptor, "w+") : nullptr;
}

// A signal that comes just before a wait does not end it, so no wait is endless.
constexpr int kLongestWaitMs = 100;

}  // namespace

Ffmpeg::Ffmpeg(const std::vector<std::string>& arguments) : m_errors(openMemory(), std::fclose) {
    if (m_errors == nullptr)
        throw Error(std::string("no temporary file can be made: ") + std::strerror(errno));
    // A socket rather than a pipe: writing to one whose reader has gone can be told not to raise SIGPIPE.
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
        throw Error(std::string("no socket can be made: ") + std::strerror(errno));

    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_adddup2(&files, ends[0], STDIN_FILENO);
    posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_adddup2(&files, fileno(m_errors.get()), STDERR_FILENO);
    // A process group of its own: Ctrl-C reaches us alone, and we end it.
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setpgroup(&attributes, 0);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);

    std::vector<char*> argv;
    argv.reserve(arguments.size() + 1);
    for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    const int failed = posix_spawnp(&m_process, argv[0], &files, &attributes, argv.data(), environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&files);
    close(ends[0]);
    m_input = ends[1];
    if (failed != 0) {
        m_process = -1;
        closeInput();
        if (failed == ENOENT)
            throw Error("ffmpeg is not installed; it writes " + extensionsOf(OutputKind::kClip, " and ") +
                        " (a folder of .png needs none)");
        throw Error(std::string("ffmpeg does not start: ") + std::strerror(failed));
    }
}

Ffmpeg::~Ffmpeg() {
    closeInput();
    if (m_process < 0) return;
    // Its whole group: what is called ffmpeg may be a script that runs the real one.
    kill(-m_process, SIGKILL);
    while (waitpid(m_process, nullptr, 0) < 0 && errno == EINTR) {
    }
}

void Ffmpeg::closeInput() {
    if (m_input >= 0) close(m_input);
    m_input = -1;
}

bool Ffmpeg::write(const void* bytes, size_t size) {
    const char* next = static_cast<const char*>(bytes);
    while (size > 0) {
        if (cancelled()) return false;
        const ssize_t written = send(m_input, next, size, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (written < 0 && (errno == EAGAIN || errno == EINTR)) {
            pollfd room = {m_input, POLLOUT, 0};
            poll(&room, 1, kLongestWaitMs);
            continue;
        }
        if (written < 0) return false;
        next += written;
        size -= static_cast<size_t>(written);
    }
    return true;
}

bool Ffmpeg::finish() {
    closeInput();
    int status = 0;
    // Short at first: ffmpeg is often done when its input ends.
    for (int wait_ms = 1;; wait_ms = std::min(2 * wait_ms, kLongestWaitMs)) {
        const pid_t ended = waitpid(m_process, &status, WNOHANG);
        if (ended == m_process) break;
        if (cancelled() || (ended < 0 && errno != EINTR)) return false;
        poll(nullptr, 0, wait_ms);
    }
    m_process = -1;
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

std::string Ffmpeg::complaint() {
    // It may still be writing down why it stopped reading.
    if (m_process >= 0 && !cancelled()) finish();
    std::string last;
    std::rewind(m_errors.get());
    char line[512];
    while (std::fgets(line, sizeof line, m_errors.get()) != nullptr) {
        line[std::strcspn(line, "\r\n")] = '\0';
        if (line[0] != '\0') last = line;
    }
    return last.empty() ? "it stopped without a word" : last;
}

}  // namespace quorvane::media
