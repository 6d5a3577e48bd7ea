#ifndef QUORVANE_TESTS_COMPONENT_MEMORY_H
#define QUORVANE_TESTS_COMPONENT_MEMORY_H

#include <malloc.h>

#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define QUORVANE_TEST_SANITIZED
#endif
#endif
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define QUORVANE_TEST_SANITIZED
#endif

namespace quorvane::test {

/// A sanitizer stops at an allocation that no machine can give.
#if defined(QUORVANE_TEST_SANITIZED)
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif

/// Bytes more in use after doing `action` 32 times than after doing it once. Where a sanitizer's or
/// valgrind's allocator is at work this is 0, and their leak check stands in.
template <typename Action>
double bytesKept(Action action) {
    const auto in_use = [] {
        const struct mallinfo2 info = mallinfo2();
        return static_cast<double>(info.uordblks) + static_cast<double>(info.hblkhd);
    };
    action();
    const double before = in_use();
    for (int i = 0; i < 32; ++i) action();
    return in_use() - before;
}

}  // namespace quorvane::test

#endif
