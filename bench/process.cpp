#include "process.h"

#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <stdexcept>

namespace quorvane::bench {
namespace {

constexpr int kEnd = 0;

[[noreturn]] void serve(int socket, const char* lanes, const std::function<Answer()>& prepare) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (lanes != nullptr) setenv("QUORVANE_LANES", lanes, 1);
    if (std::freopen("/dev/null", "w", stdout) == nullptr) _exit(1);
    const Answer answer = prepare();
    for (int question = 0; read(socket, &question, sizeof question) == sizeof question && question != kEnd;) {
        const double answered = answer(question);
        if (write(socket, &answered, sizeof answered) != sizeof answered) break;
    }
    _exit(0);
}

class Child {
  public:
    Child(const char* lanes, const std::function<Answer()>& prepare) {
        int sockets[2];
        if (socketpair(AF_UNIX, SOCK_STREAM, 0, sockets) != 0) throw std::runtime_error("no socket");
        // Buffered output would be written by both processes.
        std::fflush(nullptr);
        m_process = fork();
        if (m_process == 0) serve(sockets[1], lanes, prepare);
        close(sockets[1]);
        m_socket = sockets[0];
        if (m_process < 0) throw std::runtime_error("no process");
    }
    ~Child() {
        // Closing would not do: a process forked later holds this socket too.
        if (send(m_socket, &kEnd, sizeof kEnd, MSG_NOSIGNAL) < 0) kill(m_process, SIGKILL);
        close(m_socket);
        waitpid(m_process, nullptr, 0);
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    double answer(int question) const {
        double answered = 0;
        if (send(m_socket, &question, sizeof question, MSG_NOSIGNAL) != sizeof question ||
            read(m_socket, &answered, sizeof answered) != sizeof answered)
            throw std::runtime_error("a contender's process has died");
        return answered;
    }

  private:
    pid_t m_process = -1;
    int m_socket = -1;
};

}  // namespace

Answer apart(const char* lanes, const std::function<Answer()>& prepare) {
    return
        [child = std::make_shared<Child>(lanes, prepare)](int question) { return child->answer(question); };
}

}  // namespace quorvane::bench
