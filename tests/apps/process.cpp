#include "process.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <fstream>

namespace quorvane::test {

Process::Process(const std::vector<std::string>& arguments,
                 const std::map<std::string, std::string>& environment, bool terminal,
                 const std::function<void()>& prepare) {
    int out[2], err[2];
    if (pipe2(out, O_CLOEXEC) != 0) std::abort();
    if (terminal) {
        if (openpty(&err[0], &err[1], nullptr, nullptr, nullptr) != 0) std::abort();
        fcntl(err[0], F_SETFD, FD_CLOEXEC);
    } else if (pipe2(err, O_CLOEXEC) != 0) {
        std::abort();
    }
    std::vector<char*> argv = {const_cast<char*>(QUORVANE_PROGRAM)};
    for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);

    m_pid = fork();
    if (m_pid == 0) {
        dup2(out[1], STDOUT_FILENO);
        dup2(err[1], STDERR_FILENO);
        for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) std::signal(number, SIG_DFL);
        // A sanitized build otherwise adds a table to what the program says.
        setenv("LSAN_OPTIONS", "print_suppressions=0", 0);
        for (const auto& [name, value] : environment) setenv(name.c_str(), value.c_str(), 1);
        if (prepare) prepare();
        execv(QUORVANE_PROGRAM, argv.data());
        _exit(127);
    }
    close(out[1]);
    close(err[1]);
    m_out = out[0];
    m_err = err[0];
}

Process::~Process() {
    if (m_pid > 0) {
        kill(m_pid, SIGKILL);
        waitpid(m_pid, nullptr, 0);
    }
    if (m_out >= 0) close(m_out);
    if (m_err >= 0) close(m_err);
}

void Process::signal(int number) const { kill(m_pid, number); }

double Process::residentMb() const {
    std::ifstream status("/proc/" + std::to_string(m_pid) + "/status");
    std::string word;
    double kilobytes = 0.0;
    while (status >> word && word != "VmRSS:") {
    }
    status >> kilobytes;
    return kilobytes / 1024.0;
}

Outcome Process::wait() {
    Outcome outcome;
    pollfd streams[2] = {{m_out, POLLIN, 0}, {m_err, POLLIN, 0}};
    std::string* const texts[2] = {&outcome.out, &outcome.err};
    while (streams[0].fd >= 0 || streams[1].fd >= 0) {
        poll(streams, 2, -1);
        for (int i = 0; i < 2; ++i) {
            if (streams[i].fd < 0 || streams[i].revents == 0) continue;
            char chunk[4096];
            const ssize_t got = read(streams[i].fd, chunk, sizeof chunk);
            if (got > 0)
                texts[i]->append(chunk, static_cast<size_t>(got));
            else
                streams[i].fd = -1;
        }
    }
    int status = 0;
    rusage used = {};
    wait4(m_pid, &status, 0, &used);
    m_pid = -1;
    outcome.peak_mb = static_cast<double>(used.ru_maxrss) / 1024.0;
    outcome.code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return outcome;
}

bool hasTerminals() {
    int ends[2];
    if (openpty(&ends[0], &ends[1], nullptr, nullptr, nullptr) != 0) return false;
    close(ends[0]);
    close(ends[1]);
    return true;
}

Outcome quorvane(const std::vector<std::string>& arguments,
                 const std::map<std::string, std::string>& environment,
                 const std::function<void()>& prepare) {
    return Process(arguments, environment, false, prepare).wait();
}

}  // namespace quorvane::test
