#include "system/cancel.h"

#include <unistd.h>

#include <atomic>
#include <csignal>

#include "system/error.h"

namespace quorvane {
namespace {

// A signal may come to any thread.
std::atomic<bool> g_cancelled{false};
std::atomic<bool> g_at_once{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler cannot wait");
int g_descriptor = -1;
int g_exit_code = 1;
// What a signal during such work is answered with.
constexpr char kLastWords[] = "quorvane: interrupted\n";

void onSignal(int) {
    g_cancelled = true;
    if (!g_at_once) return;
    [[maybe_unused]] const ssize_t written = write(g_descriptor, kLastWords, sizeof kLastWords - 1);
    _exit(g_exit_code);
}

}  // namespace

void catchSignals(int exit_code) {
    g_exit_code = exit_code;
    struct sigaction action = {};
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    // All that end a process from outside.
    for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGALRM, SIGTERM, SIGUSR1, SIGUSR2, SIGXCPU, SIGVTALRM,
                             SIGPROF, SIGIO, SIGPWR, SIGSTKFLT}) {
        struct sigaction before = {};
        sigaction(signal, nullptr, &before);
        // Ignored by who started us: nohup, or a shell that put us into the background. Or a profiler's.
        if (before.sa_handler != SIG_DFL) continue;
        // Without SA_RESTART: a write that waits for ffmpeg must return.
        sigaction(signal, &action, nullptr);
    }
    for (const int signal : {SIGPIPE, SIGXFSZ}) std::signal(signal, SIG_IGN);
}

void cancel() noexcept { g_cancelled = true; }

bool cancelled() noexcept { return g_cancelled; }

void throwIfCancelled() {
    if (cancelled()) throw Cancelled();
}

EndingAtOnce::EndingAtOnce(int descriptor) {
    g_descriptor = descriptor;
    g_at_once = true;
    // From here on the handler ends the process; a signal that came before is for us to answer.
    if (!cancelled()) return;
    g_at_once = false;
    throwIfCancelled();
}

EndingAtOnce::~EndingAtOnce() { g_at_once = false; }

}  // namespace quorvane
