#ifndef QUORVANE_TESTS_APPS_PROCESS_H
#define QUORVANE_TESTS_APPS_PROCESS_H

#include <sys/types.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace quorvane::test {

struct Outcome {
    int code = -1;  ///< exit code, or 128 + the signal that ended it
    std::string out;
    std::string err;
    double peak_mb = 0.0;  ///< most memory it held; at least what this process held when it started
};

/// The quorvane program with arguments; `environment` is added to this process's, and `prepare` is called in
/// the new process just before the program starts. Signals do what they do by default.
class Process {
  public:
    explicit Process(const std::vector<std::string>& arguments,
                     const std::map<std::string, std::string>& environment = {}, bool terminal = false,
                     const std::function<void()>& prepare = {});
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    void signal(int number) const;

    /// What it holds in memory now.
    double residentMb() const;

    /// Reads what it says until it ends. What it writes to a terminal counts as standard error.
    Outcome wait();

  private:
    pid_t m_pid = -1;
    int m_out = -1;
    int m_err = -1;
};

/// Whether this machine can make a pseudo-terminal.
bool hasTerminals();

/// Runs quorvane to its end.
Outcome quorvane(const std::vector<std::string>& arguments,
                 const std::map<std::string, std::string>& environment = {},
                 const std::function<void()>& prepare = {});

}  // namespace quorvane::test

#endif
