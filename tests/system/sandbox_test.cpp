#include "system/sandbox.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <new>
#include <thread>
#include <vector>

namespace quorvane {
namespace {

/// How a child process ends that does `work` and then exits with what that returns.
template <typename Work>
int statusOf(Work work) {
    const pid_t child = fork();
    if (child == 0) _exit(work());
    int status = 0;
    waitpid(child, &status, 0);
    return status;
}

class Sandbox : public testing::Test {
  protected:
    void SetUp() override {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
        GTEST_SKIP() << "sanitizers need what the sandbox takes";
#endif
    }
};

constexpr int kNoSandbox = 99;

/// The same within the sandbox.
template <typename Work>
void expectWithin(Work work) {
    const int status = statusOf([&] { return enterSandbox() ? work() : kNoSandbox; });
    if (WIFEXITED(status) && WEXITSTATUS(status) == kNoSandbox)
        GTEST_SKIP() << "this kernel does not filter system calls";
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
}

bool refused(long result) { return result == -1 && errno == EPERM; }

TEST_F(Sandbox, OpensNoFile) {
    expectWithin([] { return refused(open("/etc/passwd", O_RDONLY)) ? 0 : 1; });
}

TEST_F(Sandbox, StartsNoProcess) {
    expectWithin([] {
        char* const words[] = {const_cast<char*>("true"), nullptr};
        return refused(fork()) && refused(execv("/bin/true", words)) ? 0 : 1;
    });
}

TEST_F(Sandbox, ReachesNoNetworkAndNoOtherProcess) {
    expectWithin(
        [] { return refused(socket(AF_INET, SOCK_STREAM, 0)) && refused(kill(getppid(), 0)) ? 0 : 1; });
}

TEST_F(Sandbox, ComputesInThreadsWithMemory) {
    expectWithin([] {
        long sum = 0;
        std::thread thread([&sum] {
            const std::vector<int> many(10'000'000, 1);
            for (const int one : many) sum += one;
        });
        thread.join();
        return sum == 10'000'000 ? 0 : 1;
    });
}

TEST_F(Sandbox, LimitOfMemoryIsAFailureToAllocate) {
    const int status = statusOf([] {
        limitMemory(uint64_t{256} << 20);
        try {
            const std::vector<char> large(size_t{300} << 20);
            return static_cast<int>(large[0]) + 1;
        } catch (const std::bad_alloc&) {
            return 0;
        }
    });
    EXPECT_EQ(status, 0);
}

TEST_F(Sandbox, LimitOfTimeIsTheEnd) {
    const int status = statusOf([] {
        limitCpuTime(0);
        for (volatile unsigned i = 0;; ++i) {
        }
        return 0;
    });
    ASSERT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), SIGXCPU);
}

}  // namespace
}  // namespace quorvane
