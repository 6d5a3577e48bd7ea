#ifndef QUORVANE_KERNELS_LANES_H
#define QUORVANE_KERNELS_LANES_H

// Vectors for the image kernels: the one place that knows instruction sets.
//
// A vector has kBytes bytes, 16 or 32. Its lanes count from the lowest address up, in every operation and for
// every width, so that a kernel reads the same for all of them. Arithmetic is the compilers' own on their
// vector types; what C++ has no operator for stands below.

#include <cstddef>
#include <cstdint>

#ifndef QUORVANE_PATH
#error "kernels/lanes.h is for files that are compiled with QUORVANE_PATH set to the namespace of a path"
#endif

#if defined(QUORVANE_PLAIN_LANES)
#define QUORVANE_LANES_PLAIN 1
#elif defined(__AVX2__)
#include <immintrin.h>
#define QUORVANE_LANES_AVX2 1
#elif defined(__SSE4_1__)
#include <immintrin.h>
#define QUORVANE_LANES_SSE41 1
#elif defined(__SSE2__)
#include <immintrin.h>
#define QUORVANE_LANES_SSE2 1
#elif defined(__aarch64__)
#include <arm_neon.h>
#define QUORVANE_LANES_NEON 1
#else
#define QUORVANE_LANES_PLAIN 1
#endif

/// Before a loop of a fixed number of steps, to keep its vectors in registers.
#if defined(__clang__)
#define QUORVANE_UNROLLED _Pragma("clang loop unroll(full)")
#else
#define QUORVANE_UNROLLED _Pragma("GCC unroll 32")
#endif

/// Of what stands in the innermost loops: compilers stop inlining where a function has grown large. Who asks
/// for small code gets calls, and so do sanitizers, whose checks would be copied along.
#if defined(__OPTIMIZE_SIZE__) || defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define QUORVANE_INLINED inline
#else
#define QUORVANE_INLINED [[gnu::always_inline]] inline
#endif

namespace quorvane::QUORVANE_PATH {

#if defined(QUORVANE_LANES_AVX2)
constexpr int kBytes = 32;
#else
constexpr int kBytes = 16;
#endif
/// Of the widest path. loadBytes gathers a quarter of a vector in 64 bits, and weighRgb's slack is for 16
/// or 32.
constexpr int kWidestBytes = 32;
static_assert(kBytes <= kWidestBytes);

using u8 [[gnu::vector_size(kBytes)]] = uint8_t;
using u16 [[gnu::vector_size(kBytes)]] = uint16_t;
using i16 [[gnu::vector_size(kBytes)]] = int16_t;
using u32 [[gnu::vector_size(kBytes)]] = uint32_t;
using i32 [[gnu::vector_size(kBytes)]] = int32_t;
using f32 [[gnu::vector_size(kBytes)]] = float;

#if defined(QUORVANE_LANES_AVX2)
using Raw = __m256i;
using RawFloat = __m256;
/// The intrinsic of this width.
#define QUORVANE_MM(operation) _mm256_##operation
/// The middle quarters exchanged: 256-bit instructions work within halves, and leave these two wrong way
/// round.
inline Raw inOrder(Raw v) { return _mm256_permute4x64_epi64(v, 0xd8); }
#elif defined(QUORVANE_LANES_SSE41) || defined(QUORVANE_LANES_SSE2)
using Raw = __m128i;
using RawFloat = __m128;
#define QUORVANE_MM(operation) _mm_##operation
inline Raw inOrder(Raw v) { return v; }
#endif

/// A vector from memory of any alignment.
template <typename V = u8>
inline V load(const void* p) {
    V v;
    __builtin_memcpy(&v, p, sizeof v);
    return v;
}

/// The first kCount bytes of a vector, to memory of any alignment.
template <int kCount = kBytes, typename V>
inline void store(void* p, V v) {
    __builtin_memcpy(p, &v, kCount);
}

/// Fetches the cache line of p ahead of its use, but not as near as the lines in use. p need not be readable.
inline void prefetch(const void* p) { __builtin_prefetch(p, 0, 2); }

inline u8 splat8(int value) { return u8{} + static_cast<uint8_t>(value); }
inline i16 splat16(int value) { return i16{} + static_cast<int16_t>(value); }

/// Bytes kFirst..kFirst + kBytes - 1 of a followed by b.
template <int kFirst>
inline u8 slide(u8 a, u8 b) {
    if constexpr (kFirst == kBytes) return b;
#if defined(QUORVANE_LANES_AVX2)
    const Raw middle = _mm256_permute2x128_si256((Raw)a, (Raw)b, 0x21);
    if constexpr (kFirst == 16) return (u8)middle;
    if constexpr (kFirst > 16) return (u8)_mm256_alignr_epi8((Raw)b, middle, kFirst % 16);
    return (u8)_mm256_alignr_epi8(middle, (Raw)a, kFirst % 16);
#elif defined(QUORVANE_LANES_SSE41)
    return (u8)_mm_alignr_epi8((Raw)b, (Raw)a, kFirst);
#elif defined(QUORVANE_LANES_SSE2)
    return (u8)_mm_or_si128(_mm_srli_si128((Raw)a, kFirst), _mm_slli_si128((Raw)b, 16 - kFirst));
#elif defined(QUORVANE_LANES_NEON)
    return (u8)vextq_u8((uint8x16_t)a, (uint8x16_t)b, kFirst % 16);
#else
    uint8_t both[2 * kBytes];
    store(both, a);
    store(both + kBytes, b);
    return load(both + kFirst);
#endif
}

/// Lane i becomes the lane that `from` names, 0..kBytes - 1.
inline u8 shuffle(u8 v, u8 from) {
#if defined(QUORVANE_LANES_AVX2)
    const Raw low = _mm256_shuffle_epi8(_mm256_permute2x128_si256((Raw)v, (Raw)v, 0x00), (Raw)from);
    const Raw high = _mm256_shuffle_epi8(_mm256_permute2x128_si256((Raw)v, (Raw)v, 0x11), (Raw)from);
    return (u8)_mm256_blendv_epi8(low, high, (Raw)(from << 3));
#elif defined(QUORVANE_LANES_SSE41)
    return (u8)_mm_shuffle_epi8((Raw)v, (Raw)from);
#elif defined(QUORVANE_LANES_NEON)
    return (u8)vqtbl1q_u8((uint8x16_t)v, (uint8x16_t)from);
#else
    u8 shuffled{};
    for (int i = 0; i < 16; ++i) shuffled[i] = v[from[i]];
    return shuffled;
#endif
}

/// The sums of neighbouring bytes, each times its weight. Weights are 0..127 and a sum is at most 32767.
inline i16 pairSums(u8 v, u8 weights) {
#if defined(QUORVANE_LANES_AVX2) || defined(QUORVANE_LANES_SSE41)
    return (i16)QUORVANE_MM(maddubs_epi16)((Raw)v, (Raw)weights);
#elif defined(QUORVANE_LANES_NEON)
    const uint16x8_t low = vmull_u8(vget_low_u8((uint8x16_t)v), vget_low_u8((uint8x16_t)weights));
    return (i16)vpaddq_u16(low, vmull_high_u8((uint8x16_t)v, (uint8x16_t)weights));
#else
    return ((i16)v & 0xff) * ((i16)weights & 0xff) + (i16)((u16)v >> 8) * (i16)((u16)weights >> 8);
#endif
}

/// sum + weight * (the sums of neighbouring lanes of v).
inline i32 addWeightedPairs(i32 sum, i16 v, i16 weight) {
#if defined(QUORVANE_LANES_NEON)
    return sum + (i32)vmulq_s32(vpaddlq_s16((int16x8_t)v), vmovl_s16(vget_low_s16((int16x8_t)weight)));
#elif defined(QUORVANE_LANES_PLAIN)
    const i32 pairs = ((i32)v << 16 >> 16) + ((i32)v >> 16);
    return sum + pairs * ((i32)weight >> 16);
#else
    return sum + (i32)QUORVANE_MM(madd_epi16)((Raw)v, (Raw)weight);
#endif
}

/// The sums of neighbouring lanes of a, then those of b.
inline i32 addNeighbours(i32 a, i32 b) {
#if defined(QUORVANE_LANES_AVX2) || defined(QUORVANE_LANES_SSE41)
    return (i32)inOrder(QUORVANE_MM(hadd_epi32)((Raw)a, (Raw)b));
#elif defined(QUORVANE_LANES_SSE2)
    return (i32)_mm_shuffle_ps((__m128)a, (__m128)b, 0x88) + (i32)_mm_shuffle_ps((__m128)a, (__m128)b, 0xdd);
#elif defined(QUORVANE_LANES_NEON)
    return (i32)vpaddq_s32((int32x4_t)a, (int32x4_t)b);
#else
    return i32{a[0] + a[1], a[2] + a[3], b[0] + b[1], b[2] + b[3]};
#endif
}

/// The lanes of a, then those of b; each 0..32767.
inline i16 narrow(i32 a, i32 b) {
#if defined(QUORVANE_LANES_NEON)
    return (i16)vuzp1q_s16((int16x8_t)a, (int16x8_t)b);
#elif defined(QUORVANE_LANES_PLAIN)
    return __builtin_shufflevector((i16)a, (i16)b, 0, 2, 4, 6, 8, 10, 12, 14);
#else
    return (i16)inOrder(QUORVANE_MM(packs_epi32)((Raw)a, (Raw)b));
#endif
}

/// The lanes of a, then those of b; each 0..255.
inline u8 narrow(i16 a, i16 b) {
#if defined(QUORVANE_LANES_NEON)
    return (u8)vuzp1q_u8((uint8x16_t)a, (uint8x16_t)b);
#elif defined(QUORVANE_LANES_PLAIN)
    return __builtin_shufflevector((u8)a, (u8)b, 0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30);
#else
    return (u8)inOrder(QUORVANE_MM(packus_epi16)((Raw)a, (Raw)b));
#endif
}

/// The upper 16 bits of the products.
inline u16 mulHigh(u16 v, uint16_t factor) {
#if defined(QUORVANE_LANES_NEON)
    const uint32x4_t low = vmull_n_u16(vget_low_u16((uint16x8_t)v), factor);
    const uint32x4_t high = vmull_high_n_u16((uint16x8_t)v, factor);
    return (u16)vuzp2q_u16((uint16x8_t)low, (uint16x8_t)high);
#elif defined(QUORVANE_LANES_PLAIN)
    const u32 even = ((u32)v & 0xffff) * factor >> 16, odd = ((u32)v >> 16) * factor & 0xffff0000;
    return (u16)(even | odd);
#else
    return (u16)QUORVANE_MM(mulhi_epu16)((Raw)v, (Raw)(u16{} + factor));
#endif
}

/// The lower and the upper half of v as 16-bit lanes.
inline i16 widenLow(u8 v) {
#if defined(QUORVANE_LANES_AVX2)
    return (i16)_mm256_cvtepu8_epi16(_mm256_castsi256_si128((Raw)v));
#elif defined(QUORVANE_LANES_NEON)
    return (i16)vmovl_u8(vget_low_u8((uint8x16_t)v));
#elif defined(QUORVANE_LANES_PLAIN)
    return (i16)__builtin_shufflevector(v, u8{}, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
#else
    return (i16)_mm_unpacklo_epi8((Raw)v, Raw{});
#endif
}
inline i16 widenHigh(u8 v) {
#if defined(QUORVANE_LANES_AVX2)
    return (i16)_mm256_cvtepu8_epi16(_mm256_extracti128_si256((Raw)v, 1));
#elif defined(QUORVANE_LANES_NEON)
    return (i16)vmovl_high_u8((uint8x16_t)v);
#elif defined(QUORVANE_LANES_PLAIN)
    return (i16)__builtin_shufflevector(v, u8{}, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15,
                                        31);
#else
    return (i16)_mm_unpackhi_epi8((Raw)v, Raw{});
#endif
}

/// The bytes at even and at odd places, as 16-bit lanes.
inline i16 evenBytes(u8 v) { return (i16)v & 0xff; }
inline i16 oddBytes(u8 v) { return (i16)((u16)v >> 8); }

/// kBytes / 4 bytes from memory as 32-bit lanes; those from `count` on are not read and count as 0.
inline i32 loadBytes(const uint8_t* p, int count) {
    uint64_t bytes = 0;
    if (count >= kBytes / 4)
        __builtin_memcpy(&bytes, p, kBytes / 4);
    else
        for (int i = 0; i < count; ++i) bytes |= uint64_t{p[i]} << 8 * i;
#if defined(QUORVANE_LANES_AVX2)
    return (i32)_mm256_cvtepu8_epi32(_mm_cvtsi64_si128(static_cast<int64_t>(bytes)));
#elif defined(QUORVANE_LANES_SSE41)
    return (i32)_mm_cvtepu8_epi32(_mm_cvtsi32_si128(static_cast<int>(bytes)));
#else
    const i32 v = {static_cast<int>(bytes)};
    return (i32)widenLow((u8)widenLow((u8)v));
#endif
}

/// The lanes, clamped to 0..255, to kBytes / 4 bytes of memory, but to no more than `count`.
inline void storeBytes(uint8_t* p, i32 v, int count) {
#if defined(QUORVANE_LANES_AVX2)
    const Raw words = _mm256_packs_epi32((Raw)v, (Raw)v);
    const Raw bytes = _mm256_permutevar8x32_epi32(_mm256_packus_epi16(words, words),
                                                  _mm256_setr_epi32(0, 4, 0, 4, 0, 4, 0, 4));
#elif defined(QUORVANE_LANES_NEON)
    const int16x4_t words = vqmovn_s32((int32x4_t)v);
    const uint8x8_t bytes = vqmovun_s16(vcombine_s16(words, words));
#elif defined(QUORVANE_LANES_PLAIN)
    v &= ~(v >> 31);
    v |= (255 - v) >> 31;
    const i16 words = narrow(v & 255, v & 255);
    const u8 bytes = narrow(words, words);
#else
    const Raw words = _mm_packs_epi32((Raw)v, (Raw)v);
    const Raw bytes = _mm_packus_epi16(words, words);
#endif
    if (count >= kBytes / 4) return store<kBytes / 4>(p, bytes);
    uint8_t first[kBytes / 4];
    store<kBytes / 4>(first, bytes);
    for (int i = 0; i < count; ++i) p[i] = first[i];
}

/// Each lane becomes the sum of itself and all before it.
inline u32 prefixSums(u32 v) {
#if defined(QUORVANE_LANES_AVX2)
    v += (u32)_mm256_slli_si256((Raw)v, 4);
    v += (u32)_mm256_slli_si256((Raw)v, 8);
    return v + (u32)_mm256_shuffle_epi32(_mm256_permute2x128_si256((Raw)v, (Raw)v, 0x08), 0xff);
#else
    v += __builtin_shufflevector(v, u32{}, 4, 0, 1, 2);
    return v + __builtin_shufflevector(v, u32{}, 4, 4, 0, 1);
#endif
}

/// The last lane in all lanes.
inline u32 splatLast(u32 v) {
#if defined(QUORVANE_LANES_AVX2)
    return __builtin_shufflevector(v, v, 7, 7, 7, 7, 7, 7, 7, 7);
#else
    return __builtin_shufflevector(v, v, 3, 3, 3, 3);
#endif
}

/// a * b, with b 0..32767 and a no more than that in magnitude.
inline i32 multiplySmall(i32 a, i32 b) {
#if defined(QUORVANE_LANES_PLAIN) || defined(QUORVANE_LANES_NEON)
    return a * b;
#else
    return (i32)QUORVANE_MM(madd_epi16)((Raw)a, (Raw)b);
#endif
}

/// The lanes as whole numbers, less than 2 to the 31: toward zero, and to the nearest, halves to the even
/// one.
inline i32 truncated(f32 v) { return __builtin_convertvector(v, i32); }
inline i32 rounded(f32 v) {
#if defined(QUORVANE_LANES_NEON)
    return (i32)vcvtnq_s32_f32((float32x4_t)v);
#elif defined(QUORVANE_LANES_PLAIN)
    // A whole number, added to 1.5 times 2 to the 52, stands in the lowest bits of a double.
    using Doubles [[gnu::vector_size(kBytes)]] = double;
    constexpr double whole = 6755399441055744.0;
    const Doubles low = __builtin_convertvector(__builtin_shufflevector(v, v, 0, 1), Doubles) + whole;
    const Doubles high = __builtin_convertvector(__builtin_shufflevector(v, v, 2, 3), Doubles) + whole;
    return __builtin_shufflevector((i32)low, (i32)high, 0, 2, 4, 6);
#else
    return (i32)QUORVANE_MM(cvtps_epi32)((RawFloat)v);
#endif
}

/// A table of 256 bytes, to look up all lanes of a vector at once.
class Table {
  public:
    explicit Table(const uint8_t* bytes) {
#if defined(QUORVANE_LANES_AVX2) || defined(QUORVANE_LANES_SSE41)
        // Pieces of 16 bytes, each but the first of a half as its difference from the one before.
        for (int k = 0; k < 16; ++k)
            for (int i = 0; i < kBytes; ++i)
                m_pieces[k][i] = static_cast<uint8_t>(bytes[16 * k + i % 16] ^
                                                      (k % 8 == 0 ? 0 : bytes[16 * k - 16 + i % 16]));
#else
        m_bytes = bytes;
#endif
    }

    u8 operator[](u8 v) const {
#if defined(QUORVANE_LANES_AVX2) || defined(QUORVANE_LANES_SSE41)
        // A shuffle gives 0 for a negative index. So as 16 is taken off a lane again and again, it gathers
        // the differences up to its own piece, and the rest of them add nothing. The other half's lanes are
        // negative from the start and stay so.
        const Raw step = QUORVANE_MM(set1_epi8)(16);
        Raw low = (Raw)v, high = (Raw)(v ^ 0x80);
        u8 found{};
        QUORVANE_UNROLLED
        for (int k = 0; k < 8; ++k) {
            found ^= (u8)QUORVANE_MM(shuffle_epi8)((Raw)m_pieces[k], low) ^
                     (u8)QUORVANE_MM(shuffle_epi8)((Raw)m_pieces[k + 8], high);
            low = QUORVANE_MM(subs_epi8)(low, step);
            high = QUORVANE_MM(subs_epi8)(high, step);
        }
        return found;
#elif defined(QUORVANE_LANES_NEON)
        // An index beyond 63 gives 0.
        u8 found{};
        QUORVANE_UNROLLED
        for (int k = 0; k < 256; k += 64)
            found |= (u8)vqtbl4q_u8(vld1q_u8_x4(m_bytes + k), (uint8x16_t)(v - static_cast<uint8_t>(k)));
        return found;
#else
        uint8_t lanes[kBytes];
        store(lanes, v);
        for (int i = 0; i < kBytes; ++i) lanes[i] = m_bytes[lanes[i]];
        return load(lanes);
#endif
    }

  private:
#if defined(QUORVANE_LANES_AVX2) || defined(QUORVANE_LANES_SSE41)
    u8 m_pieces[16];
#else
    const uint8_t* m_bytes;
#endif
};

/// The most bytes that weighRgb reads before, and behind, its pixels where it is not exact.
constexpr int kRgbSlack = kBytes == 32 ? 4 : 0;

/// (kRed R + kGreen G + kBlue B + 128) / 256 of kBytes pixels R, G, B.
///
///   kRed, kGreen, kBlue   positive, at most 256 in sum
///   kExact                true: reads these pixels only; false: up to kRgbSlack bytes more at either end,
///                         which is faster
///   kCount                kBytes; or half of it, which is faster and leaves the upper lanes undefined
template <int kRed, int kGreen, int kBlue, bool kExact, int kCount = kBytes>
QUORVANE_INLINED u8 weighRgb(const uint8_t* p) {
#if defined(QUORVANE_LANES_AVX2) || defined(QUORVANE_LANES_SSE41)
    // Weights are signed bytes and two products share a signed 16-bit lane: green is split between both
    // pairs.
    constexpr int kWithBlue = 100, kWithRed = kGreen - kWithBlue;
    static_assert(255 * (kRed + kWithRed) < 32768 && 255 * (kBlue + kWithBlue) < 32768);
    // Four pixels become R, G, R, G .. and then G, B, G, B ..
    alignas(16) static constexpr uint8_t kOrder[16] = {0, 1, 3, 4, 6, 7, 9, 10, 1, 2, 4, 5, 7, 8, 10, 11};
    alignas(16) static constexpr uint8_t kWeights[16] = {
        kRed,      kWithRed, kRed,      kWithRed, kRed,      kWithRed, kRed,      kWithRed,
        kWithBlue, kBlue,    kWithBlue, kBlue,    kWithBlue, kBlue,    kWithBlue, kBlue};
    const auto half = [](const uint8_t* from) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
    };
    const auto rounded = [](Raw a, Raw b) {
        const u16 sum = (u16)QUORVANE_MM(unpacklo_epi64)(a, b) + (u16)QUORVANE_MM(unpackhi_epi64)(a, b);
        return (Raw)((sum + 128) >> 8);
    };
#if defined(QUORVANE_LANES_AVX2)
    const __m128i order = half(kOrder);
    const Raw orders = _mm256_set_m128i(order, _mm_add_epi8(order, _mm_set1_epi8(4)));
    const Raw weights = _mm256_broadcastsi128_si256(half(kWeights));
    // Eight pixels a vector, the first four from byte 4 of the lower half, the others from byte 0 of the
    // upper.
    const auto eight = [=](int k) {
        const uint8_t* first = p + 24 * k;
        const Raw v = !kExact
                          ? load<Raw>(first - 4)
                          : _mm256_set_m128i(k < 3 ? half(first + 12) : _mm_srli_si128(half(first + 8), 4),
                                             _mm_slli_si128(half(first), 4));
        return _mm256_maddubs_epi16(_mm256_shuffle_epi8(v, orders), weights);
    };
    const Raw low = rounded(eight(0), eight(1));
    const Raw packed = _mm256_packus_epi16(low, kCount < kBytes ? low : rounded(eight(2), eight(3)));
    return (u8)_mm256_permutevar8x32_epi32(packed, _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7));
#else
    const Raw order = half(kOrder), weights = half(kWeights);
    const auto four = [=](int k) {
        // The last load starts 4 bytes early, so as to end with the pixels.
        const Raw v = k < 3 ? _mm_shuffle_epi8(half(p + 12 * k), order)
                            : _mm_shuffle_epi8(half(p + 32), _mm_add_epi8(order, _mm_set1_epi8(4)));
        return _mm_maddubs_epi16(v, weights);
    };
    const Raw low = rounded(four(0), four(1));
    return (u8)_mm_packus_epi16(low, kCount < kBytes ? low : rounded(four(2), four(3)));
#endif
#elif defined(QUORVANE_LANES_SSE2)
    // Four rounds of a perfect shuffle would part 48 bytes into every third of them. After three, each half
    // of a vector holds one colour of the even or of the odd pixels.
    Raw a = load<Raw>(p), b = load<Raw>(p + 16), c = load<Raw>(p + 32);
    QUORVANE_UNROLLED
    for (int round = 0; round < 3; ++round) {
        const Raw first = _mm_unpacklo_epi8(a, _mm_unpackhi_epi64(b, b));
        const Raw second = _mm_unpacklo_epi8(_mm_unpackhi_epi64(a, a), c);
        const Raw third = _mm_unpacklo_epi8(b, _mm_unpackhi_epi64(c, c));
        a = first;
        b = second;
        c = third;
    }
    // Hidden, for GCC makes several shifts and sums of a product with a known factor.
    u16 red_weight = (u16)splat16(kRed), green_weight = (u16)splat16(kGreen),
        blue_weight = (u16)splat16(kBlue);
    asm("" : "+x"(red_weight), "+x"(green_weight), "+x"(blue_weight));
    const auto sum = [=](i16 red, i16 green, i16 blue) {
        return (u16)red * red_weight + (u16)green * green_weight + (u16)blue * blue_weight + 128;
    };
    const u16 even = sum(widenLow((u8)a), widenHigh((u8)a), widenLow((u8)b));
    const u16 odd = sum(widenHigh((u8)b), widenLow((u8)c), widenHigh((u8)c));
    return (u8)(even >> 8 | (odd & 0xff00));
#elif defined(QUORVANE_LANES_NEON)
    const uint8x16x3_t rgb = vld3q_u8(p);
    const uint8x8_t red = vdup_n_u8(kRed), green = vdup_n_u8(kGreen), blue = vdup_n_u8(kBlue);
    const auto sum = [=](uint8x8_t r, uint8x8_t g, uint8x8_t b) {
        return vmlal_u8(vmlal_u8(vmull_u8(r, red), g, green), b, blue);
    };
    const uint16x8_t low = sum(vget_low_u8(rgb.val[0]), vget_low_u8(rgb.val[1]), vget_low_u8(rgb.val[2]));
    const uint16x8_t high = sum(vget_high_u8(rgb.val[0]), vget_high_u8(rgb.val[1]), vget_high_u8(rgb.val[2]));
    return (u8)vrshrn_high_n_u16(vrshrn_n_u16(low, 8), high, 8);
#else
    u8 v{};
    for (int i = 0; i < 16; ++i, p += 3)
        v[i] = static_cast<uint8_t>((kRed * p[0] + kGreen * p[1] + kBlue * p[2] + 128) >> 8);
    return v;
#endif
}

}  // namespace quorvane::QUORVANE_PATH

#endif
