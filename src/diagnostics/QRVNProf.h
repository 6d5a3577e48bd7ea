#ifndef QUORVANE_DIAGNOSTICS_QRVN_PROF_H
#define QUORVANE_DIAGNOSTICS_QRVN_PROF_H

#include <sys/time.h>

#include <cstdint>
#include <cstdio>

// The stopwatch: process-wide and unlocked, as everything runs on the host's one GL thread. It marks the wall
// clock, so a clock that is set in the middle of a step gives that step a wrong time.
inline timeval time1;
inline timeval time2;
inline int32_t temp_time;  ///< microseconds
inline timeval start_time;
inline timeval end_time;

/// *elapse_t = microseconds from start_t to end_t, modulo 2 to the 32.
inline void time_diff(int32_t* elapse_t, timeval start_t, timeval end_t) {
    const uint32_t seconds = static_cast<uint32_t>(end_t.tv_sec - start_t.tv_sec);
    const uint32_t microseconds = static_cast<uint32_t>(end_t.tv_usec - start_t.tv_usec);
    *elapse_t = static_cast<int32_t>(seconds * 1000000u + microseconds);
}

/// Prints one timing line to standard output; `elapse_t` in microseconds.
inline void time_display(int32_t elapse_t, const char* string) {
    const float milliseconds = static_cast<float>(elapse_t) / 1000.0f;
    std::printf("%s: %8d(us) = %5.4f(ms)\n", string, elapse_t, static_cast<double>(milliseconds));
}

/// Starts measuring a step.
inline void time_start() { gettimeofday(&time1, nullptr); }

/// Prints the time since the last start mark under `label`, then starts the next step.
inline void time_step(const char* label) {
    gettimeofday(&time2, nullptr);
    time_diff(&temp_time, time1, time2);
    time_display(temp_time, label);
    time_start();
}

#endif
