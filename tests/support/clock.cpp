#include "support/clock.h"

#include <sys/time.h>

#include <ctime>

namespace {

bool g_stepping = false;
int64_t g_now = 0;
int64_t g_step = 0;

}  // namespace

namespace quorvane::test {

SteppingClock::SteppingClock(int64_t microseconds_per_reading) {
    g_stepping = true;
    // Just before a second's end, so that some step crosses it.
    g_now = 1000 * 1000000 - microseconds_per_reading;
    g_step = microseconds_per_reading;
}

SteppingClock::~SteppingClock() { g_stepping = false; }

}  // namespace quorvane::test

extern "C" int gettimeofday(struct timeval* __restrict now, void* __restrict) noexcept {
    if (!g_stepping) {
        timespec real;
        clock_gettime(CLOCK_REALTIME, &real);
        now->tv_sec = real.tv_sec;
        now->tv_usec = real.tv_nsec / 1000;
        return 0;
    }
    g_now += g_step;
    now->tv_sec = static_cast<time_t>(g_now / 1000000);
    now->tv_usec = static_cast<suseconds_t>(g_now % 1000000);
    return 0;
}
