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
// scaled by the row's vertical weight, summed over the window's rows, and summed up once an output. Two rows
// of outputs are worked on together: where their windows overlap, a sample serves both.
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

/// Of sums, for each of two rows of outputs.
constexpr int kVectors = 4;

/// Rows of outputs that are worked on together. A window of one column has no sums to share.
template <int kRatio>
constexpr int kRows = kRatio == 1 ? 1 : 2;

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
inline u8 samplesAt(const uint8_t* p) {
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
    u8 samples(const uint8_t* row, int k) const {
        return samplesAt<kRgb, false>(row + m_first + k * kBytes * kPixelBytes<kRgb>);
    }
    u8 halfSamples(const uint8_t* row, int k) const {
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
    u8 samples(const uint8_t* row, int k) const {
        const Vector& vector = m_vectors[k];
        const uint8_t* p = row + vector.first;
        return vector.inside ? samplesAt<kRgb, false>(p) : shuffle(samplesAt<kRgb, true>(p), vector.from);
    }
    u8 halfSamples(const uint8_t* row, int k) const { return samples(row, k); }

  private:
    struct Vector {
        u8 from;
        ptrdiff_t first;
        bool inside;
    };
    static int clamped(int value, int last) { return value < 0 ? 0 : value > last ? last : value; }

    Vector m_vectors[kCount];
};

/// Adds the line sums of a row of the source to one row of outputs or to both, as its windows cover the row:
/// scaled by the row's vertical weight in that window.
template <int kRatio, int kWindows, typename Columns>
inline void addRow(i32* sums, const Columns& columns, const uint8_t* row, const int (&vertical)[kWindows]) {
    static constexpr SlotWeights<kRatio> kWeights;
    const auto weights = [](int vector) { return load(kWeights.bytes + kBytes * vector); };
    const auto add = [&](int k, auto parts) {
        QUORVANE_UNROLLED
        for (int n = 0; n < kWindows; ++n) {
            i32& sum = sums[n * kVectors + k];
            sum = addWeightedPairs(sum, parts(), splat16(vertical[n]));
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

/// Sums up the parts of each output, rounds, and stores both rows of a strip.
template <int kRatio>
inline void finish(i32* sums, int rounding, uint8_t* out, uint8_t* out_below) {
    if constexpr (kRatio == 2) {
        // The outputs of an even vector and of the odd one after it alternate.
        i16 pairs[kVectors];
        QUORVANE_UNROLLED
        for (int k = 0; k < kVectors; ++k)
            pairs[k] = (i16)(((sums[2 * k] + rounding) >> 16) | ((sums[2 * k + 1] + rounding) & ~0xffff));
        store(out, narrow(pairs[0], pairs[1]));
        store(out_below, narrow(pairs[2], pairs[3]));
    } else {
        int count = 2 * kVectors;
        QUORVANE_UNROLLED
        for (int parts = kParts<kRatio>; parts > 1; parts /= 2) {
            count /= 2;
            QUORVANE_UNROLLED
            for (int k = 0; k < count; ++k) sums[k] = addNeighbours(sums[2 * k], sums[2 * k + 1]);
        }
        const auto bytes = [&](int first) {
            const auto rounded = [&](int k) { return (sums[(first + k) % count] + rounding) >> 16; };
            return narrow(narrow(rounded(0), rounded(1)), narrow(rounded(2), rounded(3)));
        };
        constexpr int kOutputs = kStrip<kRatio>;
        const u8 both = bytes(0);
        store<kOutputs>(out, both);
        if constexpr (kOutputs < kBytes)
            store<kOutputs>(out_below, slide<kOutputs>(both, both));
        else
            store(out_below, bytes(4));
    }
}

/// Ratio 1 across: a line sum is 256 times a sample, and without that factor the sums of the rows fit 16
/// bits.
template <typename Columns>
inline void reduceStrip1(const Reduction& r, const Columns& columns, int rounding, int j, uint8_t* out) {
    const Kernels down = kernelsFor(r.down);
    if (down.taps == 1) {
        const uint8_t offset = static_cast<uint8_t>(rounding >> 16);
        QUORVANE_UNROLLED
        for (int k = 0; k < kVectors; ++k)
            store(out + k * kBytes, columns.samples(clampedRow(r, j), k) + offset);
        return;
    }
    u16 sums[2 * kVectors] = {};
    for (int l = 0; l < down.taps; ++l) {
        const uint8_t* row = clampedRow(r, j * r.down - down.margin + l);
        const u16 weight = (u16)splat16(down.vertical[l]);
        QUORVANE_UNROLLED
        for (int k = 0; k < kVectors; ++k) {
            const u8 v = columns.samples(row, k);
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

template <int kCount>
inline void fetch(const uint8_t* p) {
    QUORVANE_UNROLLED
    for (int i = 0; i < kCount; i += 64) prefetch(p + i);
}

/// The strip of rows j and j + 1 whose samples start at column x.
template <int kRatio, bool kRgb, typename Columns>
void reduceStrip(const Reduction& r, const Columns& columns, int x, int rounding, int j, uint8_t* out) {
    const Kernels down = kernelsFor(r.down);
    const int top = j * r.down - down.margin;
    const int rows = down.taps + r.down;
    constexpr int kHalfBytes = kStrip<kRatio> * kRatio * kPixelBytes<kRgb> / 2;
    const int whole = 4 * r.down - rows;
    i32 sums[2 * kVectors] = {};
    for (int l = 0; l < rows; ++l) {
        // The rows that only the next outputs need are fetched ahead, evenly: the first `whole` turns fetch a
        // row each, the others half a row.
        const int ahead = l < whole ? l : whole + (l - whole) / 2;
        const bool second_half = l >= whole && (l - whole) % 2 != 0;
        const uint8_t* next = clampedRow(r, top + rows + ahead) + ptrdiff_t{x} * kPixelBytes<kRgb>;
        fetch<kHalfBytes>(second_half ? next + kHalfBytes : next);
        if (l < whole) fetch<kHalfBytes>(next + kHalfBytes);

        const uint8_t* row = clampedRow(r, top + l);
        const auto weight = [&](int tap) { return down.vertical[tap]; };
        if (l < r.down)
            addRow<kRatio, 1>(sums, columns, row, {weight(l)});
        else if (l < down.taps)
            addRow<kRatio, 2>(sums, columns, row, {weight(l), weight(l - r.down)});
        else
            addRow<kRatio, 1>(sums + kVectors, columns, row, {weight(l - r.down)});
    }
    finish<kRatio>(sums, rounding, out, out + r.out_width);
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

    // The last strip of a row overlaps the one before it, and so may the last two rows.
    const auto inside = [](int position, int last) { return position < last ? position : last; };
    for (int band = 0; band < r.out_height; band += kRows<kRatio>) {
        const int j = inside(band, r.out_height - kRows<kRatio>);
        for (int i = 0; i < r.out_width; i += kStrip<kRatio>) {
            const int first = inside(i, r.out_width - kStrip<kRatio>);
            const int x = first * kRatio - kRatio / 2;
            uint8_t* out = r.out + static_cast<ptrdiff_t>(j) * r.out_width + first;
            const auto reduce_strip = [&](const auto& columns) {
                if constexpr (kRatio == 1)
                    reduceStrip1(r, columns, rounding, j, out);
                else
                    reduceStrip<kRatio, kRgb>(r, columns, x, rounding, j, out);
            };
            if (x >= kSlack<kRgb> && x + kSamples<kRatio> * kBytes <= limit - kSlack<kRgb>)
                reduce_strip(InnerColumns<kRgb>(x));
            else
                reduce_strip(BorderColumns<kRgb, kSamples<kRatio> >(x, limit));
        }
    }
}

template <int kRatio>
void reduceAcross(const Reduction& r) {
    if (r.out_width < kStrip<kRatio> || r.out_height < kRows<kRatio>) return reference::downsize(r);
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
