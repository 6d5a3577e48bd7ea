#ifndef QUORVANE_MEDIA_PICTURE_WIDE_VECTORS_H
#define QUORVANE_MEDIA_PICTURE_WIDE_VECTORS_H

#include <cstddef>
#include <cstring>

namespace quorvane::media {

#if defined(__x86_64__)
/// Compiles `work`, and all that it calls, for AVX2. Its fused multiplications are another set of
/// instructions, so no result changes.
template <typename Work>
[[gnu::target("avx2"), gnu::flatten]] auto onAvx2(const Work& work) {
    return work();
}
#endif

/// Does `work`, whose loops a compiler can turn into vectors, with the widest ones that the processor has.
template <typename Work>
auto withWideVectors(const Work& work) {
#if defined(__x86_64__)
    if (__builtin_cpu_supports("avx2")) return onAvx2(work);
#endif
    return work();
}

/// Numbers that are added, or multiplied, at once. Compilers find them in loops too, but not always.
constexpr size_t kLanes = 8;
using Lanes [[gnu::vector_size(kLanes * sizeof(float))]] = float;

inline void addProducts(const float* a, const float* b, Lanes* sums) {
    Lanes first, second;
    std::memcpy(&first, a, sizeof first);
    std::memcpy(&second, b, sizeof second);
    *sums += first * second;
}

}  // namespace quorvane::media

#endif
