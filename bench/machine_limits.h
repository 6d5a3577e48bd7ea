#ifndef QUORVANE_BENCH_MACHINE_LIMITS_H
#define QUORVANE_BENCH_MACHINE_LIMITS_H

#include <cstddef>
#include <cstdint>

namespace quorvane::bench {

/// Reads every byte once, as fast as one thread can. Returns the sum of all 8-byte words, to have a result.
uint64_t readAll(const uint8_t* bytes, size_t count);

/// Keeps the compiler from removing the computation of `value`.
void use(uint64_t value);

}  // namespace quorvane::bench

#endif
