#include "cancel.h"

#include <csignal>

#include "error.h"

namespace quorvane::media {
namespace {

volatile std::sig_atomic_t g_cancelled = 0;

void onSignal(int) { g_cancelled = 1; }

}  // namespace

void catchSignals() {
    struct sigaction action = {};
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    // Without SA_RESTART: a write that waits for ffmpeg must return.
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) sigaction(signal, &action, nullptr);
}

bool cancelled() { return g_cancelled != 0; }

void throwIfCancelled() {
    if (cancelled()) throw Error("interrupted");
}

}  // namespace quorvane::media
