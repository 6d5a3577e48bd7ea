#ifndef QUORVANE_FUZZ_PROMISE_H
#define QUORVANE_FUZZ_PROMISE_H

#include <cstdio>
#include <cstdlib>

namespace quorvane::fuzz {

/// Stops the fuzzer at an input that breaks a promise.
inline void promised(bool kept, const char* promise) {
    if (kept) return;
    std::fprintf(stderr, "broken promise: %s\n", promise);
    std::abort();
}

}  // namespace quorvane::fuzz

#endif
