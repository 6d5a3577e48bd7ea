#ifndef QUORVANE_SOFTWARE_KERNELS_PIXEL_LANES_H
#define QUORVANE_SOFTWARE_KERNELS_PIXEL_LANES_H

// What drawing needs of vectors beyond the image kernels: numbers in all lanes, and pixels of 4 bytes. Pixels
// are worked on in groups of 16 bytes, so that nothing has to cross the halves of a wider vector.

#include "src/kernels/lanes.h"

namespace quorvane::QUORVANE_PATH {

constexpr int kLanes = kBytes / 4;

inline f32 splat(float value) {
#if defined(QUORVANE_LANES_AVX2)
    return (f32)_mm256_set1_ps(value);
#else
    return f32{value, value, value, value};
#endif
}

inline i32 splat32(int value) { return i32{} + value; }

/// 0, 1, 2 ..
inline f32 laneNumbers() {
#if defined(QUORVANE_LANES_AVX2)
    return f32{0, 1, 2, 3, 4, 5, 6, 7};
#else
    return f32{0, 1, 2, 3};
#endif
}

inline f32 select(i32 mask, f32 a, f32 b) {
#if defined(QUORVANE_LANES_AVX2)
    return (f32)_mm256_blendv_ps((RawFloat)b, (RawFloat)a, (RawFloat)mask);
#elif defined(QUORVANE_LANES_SSE41)
    return (f32)_mm_blendv_ps((RawFloat)b, (RawFloat)a, (RawFloat)mask);
#else
    return (f32)((mask & (i32)a) | (~mask & (i32)b));
#endif
}

/// The lesser and the greater; b where a lane is no number.
inline f32 lesser(f32 a, f32 b) {
#if defined(QUORVANE_LANES_PLAIN) || defined(QUORVANE_LANES_NEON)
    return select(a < b, a, b);
#else
    return (f32)QUORVANE_MM(min_ps)((RawFloat)a, (RawFloat)b);
#endif
}
inline f32 greater(f32 a, f32 b) {
#if defined(QUORVANE_LANES_PLAIN) || defined(QUORVANE_LANES_NEON)
    return select(a > b, a, b);
#else
    return (f32)QUORVANE_MM(max_ps)((RawFloat)a, (RawFloat)b);
#endif
}

/// Whether any lane of a mask is set.
inline bool any(i32 mask) {
#if defined(QUORVANE_LANES_AVX2)
    return _mm256_movemask_ps((RawFloat)mask) != 0;
#elif defined(QUORVANE_LANES_NEON)
    return vmaxvq_u32((uint32x4_t)mask) != 0;
#elif defined(QUORVANE_LANES_PLAIN)
    return (mask[0] | mask[1] | mask[2] | mask[3]) != 0;
#else
    return _mm_movemask_ps((RawFloat)mask) != 0;
#endif
}

/// (a * b + 16384) / 32768, rounded down; not both -32768.
inline i16 multiplyRounded(i16 a, i16 b) {
#if defined(QUORVANE_LANES_AVX2) || defined(QUORVANE_LANES_SSE41)
    return (i16)QUORVANE_MM(mulhrs_epi16)((Raw)a, (Raw)b);
#elif defined(QUORVANE_LANES_NEON)
    return (i16)vqrdmulhq_s16((int16x8_t)a, (int16x8_t)b);
#elif defined(QUORVANE_LANES_SSE2)
    const Raw low = _mm_mullo_epi16((Raw)a, (Raw)b), high = _mm_mulhi_epi16((Raw)a, (Raw)b);
    const i32 first = ((i32)_mm_unpacklo_epi16(low, high) + 16384) >> 15;
    const i32 second = ((i32)_mm_unpackhi_epi16(low, high) + 16384) >> 15;
    return (i16)_mm_packs_epi32((Raw)first, (Raw)second);
#else
    i16 products{};
    for (int i = 0; i < kBytes / 2; ++i) products[i] = static_cast<int16_t>((a[i] * b[i] + 16384) >> 15);
    return products;
#endif
}

/// Two times 8 bytes a group, from p + 4 * offset: of the offsets `first` and `first` + 1 of each group of
/// four.
template <int first>
inline u8 loadPairs(const uint8_t* p, const int32_t* offsets) {
    const auto place = [&](int i) { return p + 4 * static_cast<size_t>(static_cast<uint32_t>(offsets[i])); };
#if defined(QUORVANE_LANES_AVX2)
    // Loads that broadcast need no shuffle.
    const auto pair = [&](int i) {
        long long bytes;
        __builtin_memcpy(&bytes, place(i), sizeof bytes);
        return _mm256_set1_epi64x(bytes);
    };
    const Raw low = _mm256_blend_epi32(pair(first), pair(first + 1), 0x0c);
    const Raw high = _mm256_blend_epi32(pair(first + 4), pair(first + 5), 0xc0);
    return (u8)_mm256_blend_epi32(low, high, 0xf0);
#else
    using u64 [[gnu::vector_size(kBytes)]] = uint64_t;
    const auto pair = [&](int i) {
        uint64_t bytes;
        __builtin_memcpy(&bytes, place(i), sizeof bytes);
        return bytes;
    };
    return (u8)u64{pair(first), pair(first + 1)};
#endif
}

/// 4 bytes a lane, from p + 2 * offset.
inline i32 loadEach(const uint8_t* p, const int32_t* offsets) {
    const auto bytes = [&](int i) {
        int32_t four;
        __builtin_memcpy(&four, p + 2 * static_cast<size_t>(static_cast<uint32_t>(offsets[i])), sizeof four);
        return four;
    };
#if defined(QUORVANE_LANES_AVX2)
    // As above; some processors' gathers are slower than this by far.
    const auto each = [&](int i) { return _mm256_set1_epi32(bytes(i)); };
    const Raw a = _mm256_blend_epi32(each(0), each(1), 0x02), b = _mm256_blend_epi32(each(2), each(3), 0x08);
    const Raw c = _mm256_blend_epi32(each(4), each(5), 0x20), d = _mm256_blend_epi32(each(6), each(7), 0x80);
    return (i32)_mm256_blend_epi32(_mm256_blend_epi32(a, b, 0x0c), _mm256_blend_epi32(c, d, 0xc0), 0xf0);
#else
    return i32{bytes(0), bytes(1), bytes(2), bytes(3)};
#endif
}

/// The even, or the odd, lanes of each group of a and then of b.
inline i32 joinEven(i32 a, i32 b) {
#if defined(QUORVANE_LANES_PLAIN) || defined(QUORVANE_LANES_NEON)
    return __builtin_shufflevector(a, b, 0, 2, 4, 6);
#else
    return (i32)QUORVANE_MM(shuffle_ps)((RawFloat)a, (RawFloat)b, 0x88);
#endif
}
inline i32 joinOdd(i32 a, i32 b) {
#if defined(QUORVANE_LANES_PLAIN) || defined(QUORVANE_LANES_NEON)
    return __builtin_shufflevector(a, b, 1, 3, 5, 7);
#else
    return (i32)QUORVANE_MM(shuffle_ps)((RawFloat)a, (RawFloat)b, 0xdd);
#endif
}

/// The lanes of joinEven or joinOdd in the order of those that they were made of: a's, then b's.
inline i32 inOrder(i32 joined) {
#if defined(QUORVANE_LANES_AVX2)
    return __builtin_shufflevector(joined, joined, 0, 1, 4, 5, 2, 3, 6, 7);
#else
    return joined;
#endif
}

/// A half of each 32 bits, twice: 0 is the lower one and 1 the upper one.
template <int half>
inline i16 doubleHalf(i16 v) {
    constexpr int a = half, b = half + 2, c = half + 4, d = half + 6;
#if defined(QUORVANE_LANES_AVX2)
    return __builtin_shufflevector(v, v, a, a, b, b, c, c, d, d, a + 8, a + 8, b + 8, b + 8, c + 8, c + 8,
                                   d + 8, d + 8);
#else
    return __builtin_shufflevector(v, v, a, a, b, b, c, c, d, d);
#endif
}

/// The first, or the last, two lanes of each group, each twice.
inline i32 doubleFirst(i32 v) {
#if defined(QUORVANE_LANES_AVX2)
    return __builtin_shufflevector(v, v, 0, 0, 1, 1, 4, 4, 5, 5);
#else
    return __builtin_shufflevector(v, v, 0, 0, 1, 1);
#endif
}
inline i32 doubleLast(i32 v) {
#if defined(QUORVANE_LANES_AVX2)
    return __builtin_shufflevector(v, v, 2, 2, 3, 3, 6, 6, 7, 7);
#else
    return __builtin_shufflevector(v, v, 2, 2, 3, 3);
#endif
}

}  // namespace quorvane::QUORVANE_PATH

#endif
