#ifndef QUORVANE_SYSTEM_CHILD_PROCESS_H
#define QUORVANE_SYSTEM_CHILD_PROCESS_H

#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "system/descriptor.h"
#include "system/error.h"

namespace quorvane {

/// How a process ended.
class ExitStatus {
  public:
    /// As waitpid gives it.
    explicit ExitStatus(int status) noexcept : m_status(status) {}

    bool succeeded() const noexcept { return m_status == 0; }

    /// The signal that ended it; 0 where it ended by itself.
    int signal() const noexcept;

    /// Its exit code; -1 where a signal ended it.
    int code() const noexcept;

    /// "ended with exit code 3" or "was ended by signal 9 (Killed)".
    std::string words() const;

  private:
    int m_status;
};

/// A program cannot be started: "estimate does not start (No such file or directory)".
class StartError : public Error {
  public:
    /// `reason` is one of errno's numbers.
    StartError(const std::string& program, int reason);

    bool notFound() const noexcept;
    int reason() const noexcept { return m_reason; }

  private:
    int m_reason;
};

/// What a child process finds open. Of everything else that this process has open it sees nothing.
struct ChildFiles {
    int input = -1;         ///< its standard input; -1: an empty one
    int output = -1;        ///< its standard output; -1: it leads nowhere
    int error = -1;         ///< its standard error; -1: it leads nowhere
    std::vector<int> kept;  ///< open there under the numbers that they have here, each above 2
};

/// A running program in a process group of its own: Ctrl-C reaches this process alone, which then ends the
/// other with all that it has started. A broken pipe and a file that may not grow kill it, as they do by
/// default, though this process ignores both.
class ChildProcess {
  public:
    /// Starts `words[0]`, found on PATH, with the other words as its arguments; no shell sees them. Throws
    /// StartError.
    ChildProcess(const std::vector<std::string>& words, const ChildFiles& files);
    /// Kills its group, unless it has been waited for.
    ~ChildProcess();

    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// How it ended, or nothing while it runs.
    std::optional<ExitStatus> ended();

    /// Waits for its end. Throws Cancelled after a signal; it runs on then.
    ExitStatus wait();

    /// Asks it alone to end, by SIGTERM.
    void terminate() noexcept;

    /// Kills its group and waits for it. What has ended already stays as it was.
    void kill() noexcept;

    /// From now on it gets no more than `bytes` of memory to write in, with all its threads: what needs more
    /// fails as if memory were full. What it starts has a limit of its own.
    void limitMemory(uint64_t bytes) noexcept;

  private:
    pid_t m_process = -1;
    std::optional<ExitStatus> m_status;
};

/// The two ends of a connection: one for this process, one for another. Unlike a pipe it does not raise
/// SIGPIPE when the reader has gone.
struct Connection {
    Descriptor here;
    Descriptor there;
};

/// Throws Error.
Connection connection();

/// Sends `size` bytes. False when the other end has gone. Throws Cancelled after a signal.
bool sendAll(const Descriptor& socket, const void* bytes, size_t size);

/// Receives `size` bytes. False when the other end has gone, or they have not all come by `end`. Throws
/// Cancelled after a signal.
bool receiveAll(const Descriptor& socket, void* bytes, size_t size,
                std::chrono::steady_clock::time_point end);

/// An empty file in memory, in no folder. Throws Error.
Descriptor memoryFile();

}  // namespace quorvane

#endif
