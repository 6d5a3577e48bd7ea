#include "system/child_process.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>

#include "system/cancel.h"

namespace quorvane {
namespace {

// A signal that comes just before a wait does not end it, so no wait is endless.
constexpr int kLongestWaitMs = 100;

/// What posix_spawn is told about files.
class FileActions {
  public:
    explicit FileActions(const ChildFiles& files) {
        posix_spawn_file_actions_init(&m_actions);
        put(STDIN_FILENO, files.input, O_RDONLY);
        put(STDOUT_FILENO, files.output, O_WRONLY);
        put(STDERR_FILENO, files.error, O_WRONLY);
        // Onto itself: it is then not closed when the program starts.
        for (const int kept : files.kept) posix_spawn_file_actions_adddup2(&m_actions, kept, kept);
    }
    ~FileActions() { posix_spawn_file_actions_destroy(&m_actions); }
    FileActions(const FileActions&) = delete;
    FileActions& operator=(const FileActions&) = delete;

    const posix_spawn_file_actions_t* get() const noexcept { return &m_actions; }

  private:
    void put(int stream, int file, int mode) {
        if (file < 0)
            posix_spawn_file_actions_addopen(&m_actions, stream, "/dev/null", mode, 0);
        else
            posix_spawn_file_actions_adddup2(&m_actions, file, stream);
    }

    posix_spawn_file_actions_t m_actions;
};

/// What posix_spawn is told about the process.
class Attributes {
  public:
    Attributes() {
        posix_spawnattr_init(&m_attributes);
        posix_spawnattr_setpgroup(&m_attributes, 0);
        sigset_t defaults;
        sigemptyset(&defaults);
        sigaddset(&defaults, SIGPIPE);
        sigaddset(&defaults, SIGXFSZ);
        posix_spawnattr_setsigdefault(&m_attributes, &defaults);
        posix_spawnattr_setflags(&m_attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGDEF);
    }
    ~Attributes() { posix_spawnattr_destroy(&m_attributes); }
    Attributes(const Attributes&) = delete;
    Attributes& operator=(const Attributes&) = delete;

    const posix_spawnattr_t* get() const noexcept { return &m_attributes; }

  private:
    posix_spawnattr_t m_attributes;
};

}  // namespace

int ExitStatus::signal() const noexcept { return WIFSIGNALED(m_status) ? WTERMSIG(m_status) : 0; }

int ExitStatus::code() const noexcept { return WIFEXITED(m_status) ? WEXITSTATUS(m_status) : -1; }

std::string ExitStatus::words() const {
    if (WIFSIGNALED(m_status)) {
        const int signal = WTERMSIG(m_status);
        return "was ended by signal " + std::to_string(signal) + " (" + strsignal(signal) + ")";
    }
    return (succeeded() ? "ended with exit code " : "failed with exit code ") +
           std::to_string(WEXITSTATUS(m_status));
}

StartError::StartError(const std::string& program, int reason)
    : Error(program + " does not start (" + std::strerror(reason) + ")"), m_reason(reason) {}

bool StartError::notFound() const noexcept { return m_reason == ENOENT; }

ChildProcess::ChildProcess(const std::vector<std::string>& words, const ChildFiles& files) {
    std::vector<char*> argv;
    argv.reserve(words.size() + 1);
    for (const std::string& word : words) argv.push_back(const_cast<char*>(word.c_str()));
    argv.push_back(nullptr);
    const int failed =
        posix_spawnp(&m_process, argv[0], FileActions(files).get(), Attributes().get(), argv.data(), environ);
    if (failed != 0) throw StartError(words[0], failed);
}

ChildProcess::~ChildProcess() { kill(); }

void ChildProcess::terminate() noexcept {
    if (!m_status) ::kill(m_process, SIGTERM);
}

void ChildProcess::kill() noexcept {
    if (m_status) return;
    // Its whole group: it may be a script that runs the real one.
    ::kill(-m_process, SIGKILL);
    int status = 0;
    while (waitpid(m_process, &status, 0) < 0 && errno == EINTR) {
    }
    m_status = ExitStatus(status);
}

std::optional<ExitStatus> ChildProcess::ended() {
    if (m_status) return m_status;
    int status = 0;
    const pid_t ended = waitpid(m_process, &status, WNOHANG);
    if (ended < 0 && errno != EINTR)
        throw Error(std::string("a program cannot be waited for (") + std::strerror(errno) + ")");
    if (ended == m_process) m_status = ExitStatus(status);
    return m_status;
}

ExitStatus ChildProcess::wait() {
    // Short at first: it is often done when its input ends.
    for (int wait_ms = 1;; wait_ms = std::min(2 * wait_ms, kLongestWaitMs)) {
        throwIfCancelled();
        if (const std::optional<ExitStatus> status = ended()) return *status;
        poll(nullptr, 0, wait_ms);
    }
}

void ChildProcess::limitMemory(uint64_t bytes) noexcept {
    if (m_status) return;
    rlimit limit = {};
    prlimit(m_process, RLIMIT_DATA, nullptr, &limit);
    limit.rlim_cur = std::min<rlim_t>(bytes, limit.rlim_max);
    prlimit(m_process, RLIMIT_DATA, &limit, nullptr);
}

Connection connection() {
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
        throwFor("no socket can be made", errno);
    return {Descriptor(ends[0]), Descriptor(ends[1])};
}

bool sendAll(const Descriptor& socket, const void* bytes, size_t size) {
    const char* next = static_cast<const char*>(bytes);
    while (size > 0) {
        throwIfCancelled();
        const ssize_t sent = send(socket.number(), next, size, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (sent < 0 && (errno == EAGAIN || errno == EINTR)) {
            pollfd room = {socket.number(), POLLOUT, 0};
            poll(&room, 1, kLongestWaitMs);
            continue;
        }
        if (sent < 0) return false;
        next += sent;
        size -= static_cast<size_t>(sent);
    }
    return true;
}

bool receiveAll(const Descriptor& socket, void* bytes, size_t size,
                std::chrono::steady_clock::time_point end) {
    char* next = static_cast<char*>(bytes);
    while (size > 0) {
        throwIfCancelled();
        if (std::chrono::steady_clock::now() >= end) return false;
        const ssize_t got = recv(socket.number(), next, size, MSG_DONTWAIT);
        if (got < 0 && (errno == EAGAIN || errno == EINTR)) {
            pollfd arrival = {socket.number(), POLLIN, 0};
            poll(&arrival, 1, kLongestWaitMs);
            continue;
        }
        if (got <= 0) return false;
        next += got;
        size -= static_cast<size_t>(got);
    }
    return true;
}

Descriptor memoryFile() {
    Descriptor file(memfd_create("quorvane", MFD_CLOEXEC));
    if (!file) throwFor("no file in memory can be made", errno);
    return file;
}

}  // namespace quorvane
