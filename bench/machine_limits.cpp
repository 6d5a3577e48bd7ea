#include "machine_limits.h"

#include <cstring>

namespace quorvane::bench {

#if defined(__x86_64__)
#define QUORVANE_WIDEST_VECTORS __attribute__((target_clones("avx2", "default")))
#else
#define QUORVANE_WIDEST_VECTORS
#endif

QUORVANE_WIDEST_VECTORS
uint64_t readAll(const uint8_t* bytes, size_t count) {
    constexpr size_t kVectors = 4, kSize = 32;
    using Vector [[gnu::vector_size(kSize)]] = uint64_t;
    Vector sums[kVectors] = {};
    size_t i = 0;
    for (; i + kVectors * kSize <= count; i += kVectors * kSize) {
        for (size_t k = 0; k < kVectors; ++k) {
            Vector v;
            std::memcpy(&v, bytes + i + k * kSize, kSize);
            sums[k] += v;
        }
    }
    const Vector sum = (sums[0] + sums[1]) + (sums[2] + sums[3]);
    uint64_t total = 0;
    for (size_t k = 0; k < kSize / 8; ++k) total += sum[k];
    for (; i < count; ++i) total += bytes[i];
    return total;
}

void use(uint64_t value) { __asm__ volatile("" : : "r"(value)); }

}  // namespace quorvane::bench
