// Fixed-point low-pass reduction on vectors.
//
// An output's slot is the 2 * ratio columns that start half a ratio before its block; all its taps lie there.
// Two neighbouring slots share a half. With ratio 4:
//
//     columns    -2 -1  0  1 | 2  3  4  5 | 6  7  8  9 | 10 11 12 13
//     output 0   first half  | second half|
//     output 1               | first half | second half|
//     output 2                            | first half | second half
//
// So with v a vector of samples that starts where a slot does, and w the one that starts a ratio further,
//
//     pairSums(v, weights of the first half) + pairSums(w, weights of the second half)
//
// are the line sums of all outputs with slots that start in v, each still in ratio / 2 parts. The parts are
// scaled by the row's vertical weight, summed over the window's rows, and summed up once an output. Where the
// windows of two rows of outputs overlap, a sample serves both.
//
// Number ranges. All weights but 256 fit a byte. The weights that meet in a part sum to at most 128, so a
// part is at most 32640 and fits 16 bits with a sign; but ratio 2 has a single part a line, up to 65280, and
// sums up the halves after scaling. Luma is carried without its offset, 0..219, which joins the rounding
// term.

#include "kernels/downsize.h"
#include "kernels/downsize_weights.h"
#include "kernels/lanes.h"

namespace quorvane::QUORVANE_PATH {
namespace {

/// Of sums, for a row of a strip.
constexpr int kVectors = 4;

/// Parts of an output's sum that its vectors hold side by side.
template <int kRatio>
constexpr int kParts = kRatio <= 4 ? 1 : (kRatio < kBytes ? kRatio : kBytes) / 4;

/// Outputs in a row of a strip: as many as kVectors vectors of sums hold.
template <int kRatio>
constexpr int kStrip = kVectors* kBytes / (kRatio == 1 ? 1 : 4 * kParts<kRatio>);

/// Vectors of samples that the slots of such a row lie in.
template <int kRatio>
constexpr int kSamples = (kStrip<kRatio> * kRatio + (kRatio > 1 ? kRatio : 0) + kBytes - 1) / kBytes;

/// The weights of a slot: its two halves, each filling whole vectors; of ratio 2 whole slots.
template <int kRatio>
struct SlotWeights {
    static constexpr int kHalf = kRatio < kBytes ? kBytes : kRatio;
    alignas(kBytes) uint8_t bytes[2 * kHalf] = {};

    constexpr SlotWeights() {
        const Kernels kernels = kernelsFor(kRatio);
        for (int i = 0; i < 2 * kHalf; ++i) {
            const int slot = kRatio == 2 ? i % 4 : i / kHalf * kRatio + i % kRatio;
            const int tap = slot - kRatio / 2 + kernels.margin;
            if (tap >= 0 && tap < kernels.taps) bytes[i] = static_cast<uint8_t>(kernels.horizontal[tap]);
        }
    }
};

template <bool kRgb>
constexpr int kPixelBytes = kRgb ? 3 : 1;

/// The first kCount samples of a vector; kBytes or half as many. With kExact only pixels of a whole vector
/// are read, else up to kSlack pixels more at either end.
template <bool kRgb, bool kExact, int kCount = kBytes>
QUORVANE_INLINED u8 samplesAt(const uint8_t* p) {
    if constexpr (kRgb) return weighRgb<66, 129, 25, kExact, kCount>(p);
    return load(p);
}

template <bool kRgb>
constexpr int kSlack = kRgb ? (kRgbSlack + 2) / 3 : 0;

/// The samples of a strip that starts at column x, where those and their slack lie inside the row.
template <bool kRgb>
class InnerColumns {
  public:
    explicit InnerColumns(int x) : m_first(ptrdiff_t{x} * kPixelBytes<kRgb>) {}
    QUORVANE_INLINED u8 samples(const uint8_t* row, int k) const {
        return samplesAt<kRgb, false>(row + m_first + k * kBytes * kPixelBytes<kRgb>);
    }
    QUORVANE_INLINED u8 halfSamples(const uint8_t* row, int k) const {
        return samplesAt<kRgb, false, kBytes / 2>(row + m_first + k * kBytes * kPixelBytes<kRgb>);
    }

  private:
    ptrdiff_t m_first;
};

/// The samples of a strip that starts at column x, where columns 0..limit - 1 are there and the first and the
/// last stand for all beyond them. A vector that reaches beyond is read from just inside and moved into
/// place.
template <bool kRgb, int kCount>
class BorderColumns {
  public:
    BorderColumns() = default;
    BorderColumns(int x, int limit) {
        for (int k = 0; k < kCount; ++k, x += kBytes) {
            const int start = clamped(x, limit - kBytes);
            m_vectors[k].first = ptrdiff_t{start} * kPixelBytes<kRgb>;
            m_vectors[k].inside = x >= kSlack<kRgb> && x <= limit - kBytes - kSlack<kRgb>;
            if (m_vectors[k].inside) continue;
            uint8_t from[kBytes];
            for (int i = 0; i < kBytes; ++i)
                from[i] = static_cast<uint8_t>(clamped(x - start + i, kBytes - 1));
            m_vectors[k].from = load(from);
        }
    }
    QUORVANE_INLINED u8 samples(const uint8_t* row, int k) const {
        const Vector& vector = m_vectors[k];
        const uint8_t* p = row + vector.first;
        return vector.inside ? samplesAt<kRgb, false>(p) : shuffle(samplesAt<kRgb, true>(p), vector.from);
    }
    QUORVANE_INLINED u8 halfSamples(const uint8_t* row, int k) const { return samples(row, k); }

  private:
    struct Vector {
        u8 from;
        ptrdiff_t first;
        bool inside;
    };
    static int clamped(int value, int last) { return value < 0 ? 0 : value > last ? last : value; }

    Vector m_vectors[kCount];
};

/// Adds the line sums of a row of the source to the sums of one window or of two, kVectors of each: scaled by
/// the row's vertical weight in that window, which every lane of `vertical` has.
template <int kRatio, int kWindows, typename Columns>
QUORVANE_INLINED void addRow(i32* sums, const Columns& columns, const uint8_t* row,
                             const i16 (&vertical)[kWindows]) {
    static constexpr SlotWeights<kRatio> kWeights;
    const auto weights = [](int vector) { return load(kWeights.bytes + kBytes * vector); };
    const auto add = [&](int k, auto parts) {
        QUORVANE_UNROLLED
        for (int n = 0; n < kWindows; ++n) {
            i32& sum = sums[n * kVectors + k];
            sum = addWeightedPairs(sum, parts(), vertical[n]);
        }
    };
    if constexpr (kRatio == 2) {
        u8 here = columns.samples(row, 0);
        QUORVANE_UNROLLED
        for (int k = 0; k < kVectors; k += 2) {
            const u8 next = columns.samples(row, k / 2 + 1);
            add(k, [=] { return pairSums(here, weights(0)); });
            add(k + 1, [=] { return pairSums(slide<2>(here, next), weights(0)); });
            here = next;
        }
    } else if constexpr (kRatio <= kBytes) {
        u8 here = columns.samples(row, 0);
        QUORVANE_UNROLLED
        for (int k = 0; k < kVectors; ++k) {
            const bool whole = kRatio == kBytes || k < kVectors - 1;
            const u8 next = whole ? columns.samples(row, k + 1) : columns.halfSamples(row, k + 1);
            add(k,
                [=] { return pairSums(here, weights(0)) + pairSums(slide<kRatio>(here, next), weights(1)); });
            here = next;
        }
    } else {
        u8 first = columns.samples(row, 0), second = columns.samples(row, 1);
        QUORVANE_UNROLLED
        for (int k = 0; k < kVectors; ++k) {
            const u8 third = columns.samples(row, 2 * k + 2), fourth = columns.samples(row, 2 * k + 3);
            add(k, [=] {
                return pairSums(first, weights(0)) + pairSums(second, weights(1)) +
                       pairSums(third, weights(2)) + pairSums(fourth, weights(3));
            });
            first = third;
            second = fourth;
        }
    }
}

/// Sums up the parts of each output, rounds, and stores a row of a strip.
template <int kRatio>
inline void finish(i32* sums, int rounding, uint8_t* out) {
    if constexpr (kRatio == 2) {
        // The outputs of an even vector and of the odd one after it alternate.
        const auto pairs = [&](int k) {
            return (i16)(((sums[k] + rounding) >> 16) | ((sums[k + 1] + rounding) & ~0xffff));
        };
        store(out, narrow(pairs(0), pairs(2)));
    } else {
        int count = kVectors;
        QUORVANE_UNROLLED
        for (int parts = kParts<kRatio>; parts > 1; parts /= 2) {
            const int before = count;
            count = before > 1 ? before / 2 : 1;
            QUORVANE_UNROLLED
            for (int k = 0; k < count; ++k)
                sums[k] = addNeighbours(sums[2 * k % before], sums[(2 * k + 1) % before]);
        }
        const auto rounded = [&](int k) { return (sums[k % count] + rounding) >> 16; };
        store<kStrip<kRatio> >(out, narrow(narrow(rounded(0), rounded(1)), narrow(rounded(2), rounded(3))));
    }
}

/// Rows of the source that are read side by side: few enough for any processor to follow, enough for a
/// strip's sums to stay in registers for a while.
constexpr int kRowsAtOnce = 4;

/// Strips with sums at a time: 16 KB at most, half of a small nearest cache.
constexpr int kMostStrips = 64;

/// Bytes from what is used to what is fetched, since processors by themselves stop at the border of a page.
constexpr int kFetchedAhead = 768;

template <int kCount>
inline void fetch(const uint8_t* p) {
    QUORVANE_UNROLLED
    for (int i = 0; i < kCount; i += 64) prefetch(p + i);
}

/// Reduces up to kMostStrips strips of all rows. The source's rows pass by once and in order; a row's line
/// sums are added to those of one window or of the two that cover it, which stay in the nearest cache.
template <int kRatio, bool kRgb>
class Walk {
  public:
    /// Takes the strips from `first` on. Columns 0..limit - 1 of the source are there.
    Walk(const Reduction& r, int first, int limit) : m_r(r), m_first(first) {
        const int left = stripsOf(r) - first;
        m_count = left < kMostStrips ? left : kMostStrips;
        const auto inside = [&](int s) {
            const int x = column(s);
            return x >= kSlack<kRgb> && x + kSamples<kRatio> * kBytes <= limit - kSlack<kRgb>;
        };
        m_inner = 0;
        while (m_inner < m_count && !inside(m_inner)) ++m_inner;
        m_inner_end = m_inner;
        while (m_inner_end < m_count && inside(m_inner_end)) ++m_inner_end;
        for (int s = 0; s < m_count; ++s)
            if (!isInner(s)) m_border[borderOf(s)] = Border(column(s), limit);
    }

    /// The last strip of a row overlaps the one before it.
    static int stripsOf(const Reduction& r) { return (r.out_width + kStrip<kRatio> - 1) / kStrip<kRatio>; }

    void reduce(int rounding) {
        const Kernels down = kernelsFor(m_r.down);
        // Of a window, those that the one before it covers too.
        const int shared = down.taps - m_r.down;
        for (int j = 0; j <= m_r.out_height; ++j) {
            const int top = j * m_r.down - down.margin;
            i32(*newer)[kVectors] = m_sums[j % 2], (*older)[kVectors] = m_sums[1 - j % 2];
            const int32_t* first = down.vertical;
            const int32_t* last = down.vertical + m_r.down;
            if (j == 0)
                addRows<1>(top, shared, {first}, {newer});
            else if (j < m_r.out_height)
                addRows<2>(top, shared, {first, last}, {newer, older});
            else
                addRows<1>(top, shared, {last}, {older});
            if (j > 0) finishRow(j - 1, rounding, older);
            if (j < m_r.out_height) addRows<1>(top + shared, m_r.down - shared, {first + shared}, {newer});
        }
    }

  private:
    using Border = BorderColumns<kRgb, kSamples<kRatio> >;

    /// One at the left border and two at the right one.
    static constexpr int kMostAtBorders = 3;

    int output(int s) const {
        const int i = (m_first + s) * kStrip<kRatio>, last = m_r.out_width - kStrip<kRatio>;
        return i < last ? i : last;
    }
    int column(int s) const { return output(s) * kRatio - kRatio / 2; }
    bool isInner(int s) const { return s >= m_inner && s < m_inner_end; }
    int borderOf(int s) const { return s < m_inner ? s : s - (m_inner_end - m_inner); }

    /// Adds `count` rows from the row `top` on to the sums of the windows that all of them lie in; `weights`
    /// are theirs in each.
    template <int kWindows>
    [[gnu::noinline]] void addRows(int top, int count, const int32_t* const (&weights)[kWindows],
                                   i32 (*const (&windows)[kWindows])[kVectors]) {
        int l = 0;
        for (; l + kRowsAtOnce <= count; l += kRowsAtOnce)
            addRowsAtOnce<kWindows, kRowsAtOnce>(top, l, weights, windows);
        if (count - l >= 2) {
            addRowsAtOnce<kWindows, 2>(top, l, weights, windows);
            l += 2;
        }
        if (l < count) addRowsAtOnce<kWindows, 1>(top, l, weights, windows);
    }

    /// Those from `l` on.
    template <int kWindows, int kRows>
    void addRowsAtOnce(int top, int l, const int32_t* const (&weights)[kWindows],
                       i32 (*const (&windows)[kWindows])[kVectors]) {
        const uint8_t* rows[kRows];
        i16 vertical[kRows][kWindows];
        QUORVANE_UNROLLED
        for (int k = 0; k < kRows; ++k) {
            rows[k] = clampedRow(m_r, top + l + k);
            QUORVANE_UNROLLED
            for (int n = 0; n < kWindows; ++n) vertical[k][n] = splat16(weights[n][l + k]);
        }
        for (int s = 0; s < m_inner; ++s) addAtBorder(s, kRows, rows, vertical, windows);
        for (int s = m_inner; s < m_inner_end; ++s) {
            const int x = column(s);
            QUORVANE_UNROLLED
            for (int k = 0; k < kRows; ++k)
                fetch<kStrip<kRatio> * kRatio * kPixelBytes<kRgb> >(
                    rows[k] + ptrdiff_t{x} * kPixelBytes<kRgb> + kFetchedAhead);
            i32 sums[kWindows * kVectors];
            QUORVANE_UNROLLED
            for (int i = 0; i < kWindows * kVectors; ++i) sums[i] = windows[i / kVectors][s][i % kVectors];
            QUORVANE_UNROLLED
            for (int k = 0; k < kRows; ++k)
                addRow<kRatio, kWindows>(sums, InnerColumns<kRgb>(x), rows[k], vertical[k]);
            QUORVANE_UNROLLED
            for (int i = 0; i < kWindows * kVectors; ++i) windows[i / kVectors][s][i % kVectors] = sums[i];
        }
        for (int s = m_inner_end; s < m_count; ++s) addAtBorder(s, kRows, rows, vertical, windows);
    }

    /// The same for a strip at a border, which is rare: one piece of code for any number of rows.
    template <int kWindows>
    [[gnu::noinline]] void addAtBorder(int s, int count, const uint8_t* const* rows,
                                       const i16 (*vertical)[kWindows],
                                       i32 (*const (&windows)[kWindows])[kVectors]) {
        i32 sums[kWindows * kVectors];
        QUORVANE_UNROLLED
        for (int i = 0; i < kWindows * kVectors; ++i) sums[i] = windows[i / kVectors][s][i % kVectors];
        for (int k = 0; k < count; ++k)
            addRow<kRatio, kWindows>(sums, m_border[borderOf(s)], rows[k], vertical[k]);
        QUORVANE_UNROLLED
        for (int i = 0; i < kWindows * kVectors; ++i) windows[i / kVectors][s][i % kVectors] = sums[i];
    }

    /// Stores row j, and clears its sums.
    void finishRow(int j, int rounding, i32 (*sums)[kVectors]) {
        uint8_t* out = m_r.out + ptrdiff_t{j} * m_r.out_width;
        for (int s = 0; s < m_count; ++s) {
            finish<kRatio>(sums[s], rounding, out + output(s));
            for (i32& sum : sums[s]) sum = i32{};
        }
    }

    const Reduction& m_r;
    int m_first;
    int m_count;      ///< strips
    int m_inner;      ///< the first strip that lies inside the rows with all that is read
    int m_inner_end;  ///< the one after the last of these
    Border m_border[kMostAtBorders];
    i32 m_sums[2][kMostStrips][kVectors] = {};  ///< of two rows of outputs
};

/// Ratio 1 both ways: the samples themselves.
template <bool kRgb, bool kExact>
QUORVANE_INLINED void copyStrip(const uint8_t* p, uint8_t offset, uint8_t* out) {
    QUORVANE_UNROLLED
    for (int k = 0; k < kVectors; ++k)
        store(out + k * kBytes, samplesAt<kRgb, kExact>(p + k * kBytes * kPixelBytes<kRgb>) + offset);
}

/// Ratio 1 across: a line sum is 256 times a sample, and without that factor the sums of the rows fit 16
/// bits.
template <bool kRgb>
void reduceStrip1(const Reduction& r, const Kernels& down, int rounding, int x, int j, uint8_t* out) {
    u16 sums[2 * kVectors] = {};
    for (int l = 0; l < down.taps; ++l) {
        const uint8_t* row = clampedRow(r, j * r.down - down.margin + l) + ptrdiff_t{x} * kPixelBytes<kRgb>;
        const u16 weight = (u16)splat16(down.vertical[l]);
        QUORVANE_UNROLLED
        for (int k = 0; k < kVectors; ++k) {
            const u8 v = samplesAt<kRgb, true>(row + k * kBytes * kPixelBytes<kRgb>);
            sums[2 * k] += (u16)widenLow(v) * weight;
            sums[2 * k + 1] += (u16)widenHigh(v) * weight;
        }
    }
    const u16 term = (u16)splat16(rounding >> 8);
    QUORVANE_UNROLLED
    for (int k = 0; k < kVectors; ++k) {
        const auto rounded = [&](int half) { return (i16)((sums[2 * k + half] + term) >> 8); };
        store(out + k * kBytes, narrow(rounded(0), rounded(1)));
    }
}

/// A window of one column lies inside the row, so there are no borders to stand in for.
template <bool kRgb>
void reduce1(const Reduction& r, int rounding) {
    const Kernels down = kernelsFor(r.down);
    const int last = r.out_width - kStrip<1>;
    const uint8_t offset = static_cast<uint8_t>(rounding >> 16);
    for (int j = 0; j < r.out_height; ++j)
        for (int i = 0; i < r.out_width; i += kStrip<1>) {
            const int x = i < last ? i : last;
            uint8_t* out = r.out + static_cast<ptrdiff_t>(j) * r.out_width + x;
            const uint8_t* from = clampedRow(r, j) + ptrdiff_t{x} * kPixelBytes<kRgb>;
            if (down.taps > 1)
                reduceStrip1<kRgb>(r, down, rounding, x, j, out);
            else if (x >= kSlack<kRgb> && x <= last - kSlack<kRgb>)
                copyStrip<kRgb, false>(from, offset, out);
            else
                copyStrip<kRgb, true>(from, offset, out);
        }
}

template <int kRatio, bool kRgb>
void reduce(const Reduction& r) {
    const Kernels across = kernelsFor(kRatio);
    const Kernels down = kernelsFor(r.down);
    // What a luma window reads beyond the right border is there.
    const int last_tap = (r.out_width - 1) * kRatio - across.margin + across.taps - 1;
    const int limit = kRgb && last_tap >= r.width ? last_tap + 1 : r.width;

    int rounding = 32768;
    if (kRgb) {
        int sum_across = 0, sum_down = 0;
        for (int k = 0; k < across.taps; ++k) sum_across += across.horizontal[k];
        for (int l = 0; l < down.taps; ++l) sum_down += down.vertical[l];
        rounding += kLumaOffset * sum_across * sum_down;
    }
    if constexpr (kRatio == 1)
        reduce1<kRgb>(r, rounding);
    else
        for (int first = 0; first < Walk<kRatio, kRgb>::stripsOf(r); first += kMostStrips)
            Walk<kRatio, kRgb>(r, first, limit).reduce(rounding);
}

template <int kRatio>
void reduceAcross(const Reduction& r) {
    if (r.out_width < kStrip<kRatio>) return reference::downsize(r);
    if (r.rgb)
        reduce<kRatio, true>(r);
    else
        reduce<kRatio, false>(r);
}

}  // namespace

void downsize(const Reduction& r) {
    switch (r.across) {
        case 1: return reduceAcross<1>(r);
        case 2: return reduceAcross<2>(r);
        case 4: return reduceAcross<4>(r);
        case 8: return reduceAcross<8>(r);
        case 16: return reduceAcross<16>(r);
        case 32: return reduceAcross<32>(r);
    }
}

}  // namespace quorvane::QUORVANE_PATH
