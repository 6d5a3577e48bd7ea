#ifndef QUORVANE_BENCH_MACHINE_LIMITS_H
#define QUORVANE_BENCH_MACHINE_LIMITS_H

#include <cstddef>
#include <cstdint>

namespace quorvane::bench {

/// Reads every byte once, as fast as one thread can. The sum of all 8-byte words, which nobody needs.
uint64_t readAll(const uint8_t* bytes, size_t count);

/// What a compiler must take for a use of `value`.
void use(uint64_t value);

}  // namespace quorvane::bench

#endif
