#include <cstddef>
#include <limits>

#include "composition/bt709.h"
#include "software/kernels/cell.h"
#include "software/kernels/drawing.h"
#include "software/kernels/pixel_lanes.h"

namespace quorvane::software::QUORVANE_PATH {
namespace {

using namespace quorvane::QUORVANE_PATH;

static_assert(kLanes <= kSlack && kSampleBlock % kLanes == 0);

constexpr float kNoNumber = std::numeric_limits<float>::quiet_NaN();

f32 held(f32 t, f32 low, f32 high) { return lesser(greater(t, low), high); }

i32 roundedUp(f32 t) {
    const i32 whole = truncated(t);
    return whole - (__builtin_convertvector(whole, f32) < t);
}

/// Values of cells that were set up together.
struct alignas(kBytes) PerCell {
    float of[kBlock];
    void put(int i, f32 v) { store(of + i, v); }
};

struct Edge {
    PerCell x, y;
};

struct Plane {
    PerCell corner, x, y;
};

struct Triangle {
    Edge edges[3];
    Plane q, u, v;
};

struct alignas(kBytes) Bounds {
    int32_t left[kBlock], right[kBlock], top[kBlock], bottom[kBlock];
};

struct Cells {
    PerCell ax, ay, bx, by, cx, cy;
    Triangle first, second;
    Bounds pixels, samples;  ///< that it may cover; with one sample a pixel, of the pixels only
};

struct Side {
    f32 x, y;
};

Side operator-(const Side& to, const Side& from) { return {to.x - from.x, to.y - from.y}; }

struct Signs {
    i32 bits;
    explicit Signs(f32 v) : bits((i32)v & std::numeric_limits<int32_t>::min()) {}
    f32 turned(f32 v) const { return (f32)((i32)v ^ bits); }
    f32 turnedBack(f32 v) const { return (f32)((i32)v ^ bits ^ std::numeric_limits<int32_t>::min()); }
};

void putTurned(const Signs& signs, Side side, int i, Edge* edge) {
    edge->x.put(i, signs.turned(side.x));
    edge->y.put(i, signs.turned(side.y));
}

void putTurnedBack(const Signs& signs, Side side, int i, Edge* edge) {
    edge->x.put(i, signs.turnedBack(side.x));
    edge->y.put(i, signs.turnedBack(side.y));
}

f32 inverseArea(f32 area) {
    const f32 size = (f32)((i32)area & std::numeric_limits<int32_t>::max());
    return select(size > splat(kLeastArea), splat(1.0f) / area, splat(kNoNumber));
}

void putPlane(f32 corner, f32 first, f32 second, Side to_first, Side to_second, f32 inverse, int i,
              Plane* plane) {
    const f32 d1 = first - corner, d2 = second - corner;
    plane->corner.put(i, corner);
    plane->x.put(i, (d2 * to_first.y - d1 * to_second.y) * inverse);
    plane->y.put(i, (d1 * to_second.x - d2 * to_first.x) * inverse);
}

/// The part of a band in which the centres of pixels lie no more than `reach` from where cells are.
class Reach {
  public:
    Reach(const Band& band, float reach)
        : m_left(splat(band.centre_x + reach)),
          m_right(splat(band.centre_x - reach)),
          m_above(splat(band.centre_y + reach)),
          m_below(splat(band.centre_y - reach)),
          m_width(splat(static_cast<float>(band.width))),
          m_top(splat(static_cast<float>(band.top))),
          m_bottom(splat(static_cast<float>(band.bottom))) {}

    /// Stores the bounds of cells, and returns whether any of them has a pixel. Nothing of those that are not
    /// drawable.
    bool put(f32 min_x, f32 max_x, f32 min_y, f32 max_y, i32 drawable, int i, Bounds* bounds) const {
        const f32 none = f32{}, one = splat(1.0f);
        const i32 first_column = roundedUp(held(min_x - m_left, none, m_width));
        const i32 end_column = truncated(held(max_x - m_right + one, none, m_width)) & drawable;
        const i32 first_row = roundedUp(held(min_y - m_above, m_top, m_bottom));
        const i32 end_row = truncated(held(max_y - m_below + one, m_top, m_bottom));
        store(bounds->left + i, first_column);
        store(bounds->right + i, end_column);
        store(bounds->top + i, first_row);
        store(bounds->bottom + i, end_row);
        return any((first_column < end_column) & (first_row < end_row));
    }

  private:
    const f32 m_left, m_right, m_above, m_below, m_width, m_top, m_bottom;
};

void setUp(const CellBlock& block, const Band& band, Cells* cells) {
    const Reach to_pixels(band, kReach), to_samples(band, kSampleReach);
    const f32 none = f32{}, nearest = splat(kNearestQ);
    for (int i = 0; i < block.count; i += kLanes) {
        const f32 qa = load<f32>(block.lower_q + i), qc = load<f32>(block.lower_q + i + 1);
        const f32 qb = load<f32>(block.upper_q + i), qd = load<f32>(block.upper_q + i + 1);
        const Side a = {load<f32>(block.lower_x + i), load<f32>(block.lower_y + i)};
        const Side c = {load<f32>(block.lower_x + i + 1), load<f32>(block.lower_y + i + 1)};
        const Side b = {load<f32>(block.upper_x + i), load<f32>(block.upper_y + i)};
        const Side d = {load<f32>(block.upper_x + i + 1), load<f32>(block.upper_y + i + 1)};

        const f32 min_x = lesser(lesser(a.x, b.x), lesser(c.x, d.x));
        const f32 max_x = greater(greater(a.x, b.x), greater(c.x, d.x));
        const f32 min_y = lesser(lesser(a.y, b.y), lesser(c.y, d.y));
        const f32 max_y = greater(greater(a.y, b.y), greater(c.y, d.y));
        const auto drawable = [=](f32 q) { return (q > none) & (q <= nearest); };
        const i32 all_drawable = drawable(qa) & drawable(qb) & drawable(qc) & drawable(qd);
        bool is_seen = to_pixels.put(min_x, max_x, min_y, max_y, all_drawable, i, &cells->pixels);
        if (band.samples > 1)
            is_seen = to_samples.put(min_x, max_x, min_y, max_y, all_drawable, i, &cells->samples);
        if (!is_seen) continue;

        const Side ab = b - a, ac = c - a, bc = c - b, bd = d - b, cd = d - c;
        const f32 area1 = ac.x * ab.y - ac.y * ab.x, area2 = bc.x * bd.y - bc.y * bd.x;
        const f32 inverse1 = inverseArea(area1), inverse2 = inverseArea(area2);
        const Signs signs1(area1), signs2(area2);
        cells->ax.put(i, a.x);
        cells->ay.put(i, a.y);
        cells->bx.put(i, b.x);
        cells->by.put(i, b.y);
        cells->cx.put(i, c.x);
        cells->cy.put(i, c.y);
        Triangle& first = cells->first;
        Triangle& second = cells->second;
        putTurned(signs1, ab, i, &first.edges[0]);
        putTurned(signs1, bc, i, &first.edges[1]);
        putTurnedBack(signs1, ac, i, &first.edges[2]);
        putTurnedBack(signs2, bc, i, &second.edges[0]);
        putTurned(signs2, bd, i, &second.edges[1]);
        putTurnedBack(signs2, cd, i, &second.edges[2]);

        putPlane(qa, qb, qc, ab, ac, inverse1, i, &first.q);
        putPlane(qb, qd, qc, bd, bc, inverse2, i, &second.q);
        const f32 u0 = load<f32>(block.column_u + i), u1 = load<f32>(block.column_u + i + 1);
        putPlane(u0 * qa, u0 * qb, u1 * qc, ab, ac, inverse1, i, &first.u);
        putPlane(u0 * qb, u1 * qd, u1 * qc, bd, bc, inverse2, i, &second.u);
        const f32 v0 = splat(block.lower_v), v1 = splat(block.upper_v);
        putPlane(v0 * qa, v1 * qb, v0 * qc, ab, ac, inverse1, i, &first.v);
        putPlane(v1 * qb, v1 * qd, v0 * qc, bd, bc, inverse2, i, &second.v);
    }
}

/// A plane's values along a row, but for the row's own part.
struct Along {
    f32 start, step;
    Along(const Plane& plane, int i, f32 dx)
        : start(splat(plane.corner.of[i]) + dx * splat(plane.x.of[i])), step(splat(plane.y.of[i])) {}
    f32 at(f32 dy) const { return start + dy * step; }
};

struct EdgeAlong {
    f32 start, step;
    EdgeAlong(const Edge& edge, int i, f32 dx) : start(dx * splat(edge.y.of[i])), step(splat(edge.x.of[i])) {}
    i32 inside(f32 dy) const { return start >= dy * step; }
};

/// A cell over as many pixels of a row as a vector has lanes.
class Columns {
  public:
    /// `x` are the points' places; those at and beyond `end` count as outside.
    Columns(const Cells& cells, int i, f32 x, f32 end)
        : Columns(cells, i, select(x < end, x - splat(cells.ax.of[i]), splat(kNoNumber)),
                  select(x < end, x - splat(cells.bx.of[i]), splat(kNoNumber)), x - splat(cells.cx.of[i]),
                  0) {}

    /// Draws the points of row y over what these planes hold.
    void draw(f32 y, float* q, float* u, float* v) const {
        const f32 day = y - m_ay, dby = y - m_by, dcy = y - m_cy;
        const i32 in1 = m_ab.inside(day) & m_bc1.inside(dby) & m_ac.inside(day);
        const i32 in2 = m_bc2.inside(dby) & m_bd.inside(dby) & m_cd.inside(dcy);
        const f32 q1 = m_q1.at(day), q2 = m_q2.at(dby);
        const i32 second = in2 & (~in1 | (q2 >= q1));
        const f32 new_q = select(second, q2, q1);
        const f32 old_q = load<f32>(q);
        const i32 drawn = (in1 | in2) & (new_q >= old_q);
        store(q, select(drawn, new_q, old_q));
        store(u, select(drawn, select(second, m_u2.at(dby), m_u1.at(day)), load<f32>(u)));
        store(v, select(drawn, select(second, m_v2.at(dby), m_v1.at(day)), load<f32>(v)));
    }

  private:
    Columns(const Cells& cells, int i, f32 dax, f32 dbx, f32 dcx, int)
        : m_ay(splat(cells.ay.of[i])),
          m_by(splat(cells.by.of[i])),
          m_cy(splat(cells.cy.of[i])),
          m_ab(cells.first.edges[0], i, dax),
          m_bc1(cells.first.edges[1], i, dbx),
          m_ac(cells.first.edges[2], i, dax),
          m_bc2(cells.second.edges[0], i, dbx),
          m_bd(cells.second.edges[1], i, dbx),
          m_cd(cells.second.edges[2], i, dcx),
          m_q1(cells.first.q, i, dax),
          m_u1(cells.first.u, i, dax),
          m_v1(cells.first.v, i, dax),
          m_q2(cells.second.q, i, dbx),
          m_u2(cells.second.u, i, dbx),
          m_v2(cells.second.v, i, dbx) {}

    f32 m_ay, m_by, m_cy;
    EdgeAlong m_ab, m_bc1, m_ac, m_bc2, m_bd, m_cd;
    Along m_q1, m_u1, m_v1, m_q2, m_u2, m_v2;
};

f32 placesFrom(int x, float centre) { return splat(static_cast<float>(x) + centre) + laneNumbers(); }

void drawSamples(const Cells& cells, int i, const Band& band) {
    const Bounds& bounds = cells.samples;
    const int left = bounds.left[i], right = bounds.right[i];
    const f32 before = splat(static_cast<float>(left) + band.centre_x);
    for (int column = left / kSampleBlock; column <= (right - 1) / kSampleBlock; ++column)
        for (int y = bounds.top[i]; y < bounds.bottom[i]; ++y) {
            const int slot = band.slots[(y - band.top) * band.slot_stride + column];
            if (slot < 0) continue;
            float* planes = band.sample_planes +
                            static_cast<size_t>(slot) * static_cast<size_t>(band.samples) * 3 * kSampleBlock;
            for (int s = 0; s < band.samples; ++s, planes += 3 * kSampleBlock)
                for (int k = 0; k < kSampleBlock; k += kLanes) {
                    const f32 centre = placesFrom(column * kSampleBlock + k, band.centre_x);
                    const f32 x = centre + splat(band.offsets[s][0]);
                    const f32 end = splat(static_cast<float>(right) + band.centre_x + band.offsets[s][0]);
                    const Columns columns(cells, i, select(centre < before, end, x), end);
                    columns.draw(splat((static_cast<float>(y) + band.centre_y) + band.offsets[s][1]),
                                 planes + k, planes + kSampleBlock + k, planes + 2 * kSampleBlock + k);
                }
        }
}

/// What is fetched ahead of its use, in bytes of RGBA. A row of the photo is read nearly in order, but in
/// steps of less than a cache line that some processors do not foresee.
constexpr int kAhead = 768;

/// Where in a texture some pixels side by side lie. Found before anything is read there: so a processor has
/// many reads under way, rather than waiting for each place.
class Places {
  public:
    static constexpr int kMost = 128;

    template <typename AnyTexture>
    Places(const AnyTexture& texture, float far_q, const float* q, const float* u, const float* v,
           int count) {
        const f32 last_u = splat(texture.last_u), last_v = splat(texture.last_v), unit = splat(kPlaceUnit);
        const i32 stride = splat32(texture.stride);
        for (int i = 0; i < count; i += kLanes) {
            const f32 near = load<f32>(q + i), w = splat(1.0f) / near;
            const i32 s = truncated(held(load<f32>(u + i) * w, f32{}, last_u) * unit);
            const i32 t = truncated(held(load<f32>(v + i) * w, f32{}, last_v) * unit);
            store(m_offsets + i, (t >> kPlaceBits) * stride + (s >> kPlaceBits));
            const i32 right = s & (kPlaceOne - 1), down = t & (kPlaceOne - 1);
            store(m_right + i, right | right << 16);
            store(m_down + i, down | down << 16);
            store(m_seen + i, near > splat(far_q));
        }
    }

    /// Texels.
    const int32_t* offsets(int i) const { return m_offsets + i; }
    size_t first(int i) const { return static_cast<uint32_t>(m_offsets[i]); }

    // Of kPlaceOne, in both halves of a lane.
    i32 right(int i) const { return load<i32>(m_right + i); }
    i32 down(int i) const { return load<i32>(m_down + i); }

    /// `some` where anything is seen, else `none`.
    i32 seen(int i, i32 some, i32 none) const {
        const i32 mask = load<i32>(m_seen + i);
        return (some & mask) | (none & ~mask);
    }

  private:
    alignas(kBytes) int32_t m_offsets[kMost], m_right[kMost], m_down[kMost], m_seen[kMost];
};

i16 blend(i16 from, i16 to, i16 part) { return from + multiplyRounded(to - from, part); }

/// With kColourBits.
constexpr int kUp = 8 - kColourBits;
i16 evenBytes(u8 of) { return (i16)((u16)of << 8 >> kUp); }
i16 oddBytes(u8 of) { return (i16)(((u16)of & 0xff00) >> kUp); }

}  // namespace

Extent placeVertices(const VertexBlock& block) {
    f32 least = splat(std::numeric_limits<float>::max());
    f32 most = splat(std::numeric_limits<float>::lowest());
    i32 drawable = ~i32{};
    for (int i = 0; i < block.count; i += kLanes) {
        const f32 distance = load<f32>(block.distance + i);
        const auto at = [=](const Axis& axis) {
            return distance * (load<f32>(axis.column + i) + splat(axis.row)) + splat(axis.constant);
        };
        const f32 q = splat(1.0f) / at(block.w);
        const f32 x = at(block.x) * q, y = at(block.y) * q;
        store(block.out_x + i, x);
        store(block.out_y + i, y);
        store(block.out_q + i, q);
        const i32 counted = laneNumbers() < splat(static_cast<float>(block.count - i));
        least = select(counted, lesser(y, least), least);
        most = select(counted, greater(y, most), most);
        drawable &= ((q > f32{}) & (q <= splat(kNearestQ))) | ~counted;
    }
    Extent extent = {least[0], most[0], !any(~drawable)};
    for (int i = 1; i < kLanes; ++i) {
        extent.top = least[i] < extent.top ? least[i] : extent.top;
        extent.bottom = most[i] > extent.bottom ? most[i] : extent.bottom;
    }
    return extent;
}

void findFacings(const CellBlock& block, float edge_on_area, uint8_t* facings) {
    const f32 front = splat(edge_on_area), behind = -front;
    const auto facing = [=](f32 area) {
        const i32 from_behind = area <= behind;
        return (from_behind & int{kFromBehind}) | (~((area >= front) | from_behind) & int{kEdgeOn});
    };
    for (int i = 0; i < block.count; i += kLanes) {
        const Side a = {load<f32>(block.lower_x + i), load<f32>(block.lower_y + i)};
        const Side c = {load<f32>(block.lower_x + i + 1), load<f32>(block.lower_y + i + 1)};
        const Side b = {load<f32>(block.upper_x + i), load<f32>(block.upper_y + i)};
        const Side d = {load<f32>(block.upper_x + i + 1), load<f32>(block.upper_y + i + 1)};
        const Side ab = b - a, ac = c - a, bc = c - b, bd = d - b;
        const f32 area1 = ac.x * ab.y - ac.y * ab.x, area2 = bc.x * bd.y - bc.y * bd.x;
        storeBytes(facings + i, facing(area1) | facing(area2) << 2, block.count - i);
    }
}

void drawCells(const CellBlock& block, const Band& band) {
    Cells cells;
    setUp(block, band, &cells);
    for (int i = 0; i < block.count; ++i) {
        const Bounds& pixels = cells.pixels;
        const int left = pixels.left[i], right = pixels.right[i], top = pixels.top[i],
                  bottom = pixels.bottom[i];
        const f32 end = splat(static_cast<float>(right) + band.centre_x);
        for (int x = left; x < right && top < bottom; x += kLanes) {
            const Columns columns(cells, i, placesFrom(x, band.centre_x), end);
            size_t pixel = static_cast<size_t>(top - band.top) * static_cast<size_t>(band.stride) +
                           static_cast<size_t>(x);
            f32 place = splat(static_cast<float>(top) + band.centre_y);
            for (int y = top; y < bottom; ++y) {
                columns.draw(place, band.q + pixel, band.u + pixel, band.v + pixel);
                place += 1.0f;
                pixel += static_cast<size_t>(band.stride);
            }
        }
        if (band.samples == 1) continue;
        const Bounds& samples = cells.samples;
        if (samples.left[i] < samples.right[i] && samples.top[i] < samples.bottom[i] &&
            touchesMarked(band, samples.left[i], samples.right[i], samples.top[i], samples.bottom[i]))
            drawSamples(cells, i, band);
    }
}

void shade(const Texture& texture, const float* q, const float* u, const float* v, float far_q, int count,
           uint8_t* rgba) {
    const uint8_t* row = texture.texels;
    const uint8_t* next_row = row + 4 * static_cast<size_t>(texture.stride);
    for (int start = 0; start < count; start += Places::kMost) {
        const int some = count - start < Places::kMost ? count - start : Places::kMost;
        const Places places(texture, far_q, q + start, u + start, v + start, some);
        for (int i = 0; i < some; i += kLanes) {
            prefetch(next_row + 4 * places.first(i) + kAhead);

            // Red and blue stay apart from green and alpha, as 16-bit lanes where they are. After blending
            // down, a pixel has its left and its right colour side by side.
            const auto down = [&](u8 upper, u8 lower, i32 part) {
                struct Blended {
                    i32 even, odd;
                };
                return Blended{(i32)blend(evenBytes(upper), evenBytes(lower), (i16)part),
                               (i32)blend(oddBytes(upper), oddBytes(lower), (i16)part)};
            };
            const int32_t* offsets = places.offsets(i);
            const auto first = down(loadPairs<0>(row, offsets), loadPairs<0>(next_row, offsets),
                                    doubleFirst(places.down(i)));
            const auto second =
                down(loadPairs<2>(row, offsets), loadPairs<2>(next_row, offsets), doubleLast(places.down(i)));
            const auto across = [&](i32 a, i32 b) {
                return blend((i16)joinEven(a, b), (i16)joinOdd(a, b), (i16)places.right(i)) +
                       (1 << (kColourBits - 1));
            };
            const u16 even = (u16)across(first.even, second.even) >> kColourBits;
            const u16 odd = (u16)across(first.odd, second.odd) >> kColourBits << 8;
            const i32 black = splat32(static_cast<int32_t>(0xff000000u));
            const i32 pixels = places.seen(i, (i32)(even | odd), black);
            uint8_t* to = rgba + 4 * (start + i);
            if (some - i >= kLanes) {
                store(to, pixels);
                continue;
            }
            uint8_t last[kBytes];
            store(last, pixels);
            __builtin_memcpy(to, last, 4 * static_cast<size_t>(some - i));
        }
    }
}

void shadePlanar(const PlanarTexture& texture, const float* q, const float* u, const float* v, float far_q,
                 int count, uint8_t* luma, int16_t* colours) {
    constexpr int kNoColours = bt709::kNoColour << kColourPartBits;
    const i32 black = splat32(bt709::kBlackLuma), gray = splat32(kNoColours | kNoColours << 16);
    for (int start = 0; start < count; start += Places::kMost) {
        const int some = count - start < Places::kMost ? count - start : Places::kMost;
        const Places places(texture, far_q, q + start, u + start, v + start, some);
        for (int i = 0; i < some; i += kLanes) {
            // Blended down, a pixel has its left luma in the lower and its right one in the upper half.
            prefetch(texture.luma + 2 * places.first(i) + kAhead / 2);
            const u8 four = (u8)loadEach(texture.luma, places.offsets(i));
            const i16 sides = blend(evenBytes(four), oddBytes(four), (i16)places.down(i));
            const i16 right = (i16)((u32)sides >> 16);
            const i16 mixed = blend(sides, right, (i16)places.right(i)) + (1 << (kColourBits - 1));
            const i32 y = ((i32)mixed & 0xffff) >> kColourBits;
            storeBytes(luma + start + i, places.seen(i, y, black), some - i);
        }
        for (int i = 0; i < some; i += kLanes) {
            prefetch(texture.colours + 4 * places.first(i) + kAhead);
            const auto down = [&](u8 pairs, i32 part) {
                return (i32)blend(evenBytes(pairs), oddBytes(pairs), (i16)part);
            };
            const i32 a = down(loadPairs<0>(texture.colours, places.offsets(i)), doubleFirst(places.down(i)));
            const i32 b = down(loadPairs<2>(texture.colours, places.offsets(i)), doubleLast(places.down(i)));
            const i16 both = blend((i16)joinEven(a, b), (i16)joinOdd(a, b), (i16)places.right(i));
            const i32 cut = (i32)((both + (1 << (kPartsCut - 1))) >> kPartsCut);
            store(colours + 2 * (start + i), places.seen(i, cut, gray));
        }
    }
}

void meanColours(const int16_t* upper, const int16_t* lower, int count, uint8_t* cb, uint8_t* cr) {
    constexpr int kBits = kColourPartBits + 2;
    for (int i = 0; i < count; i += kLanes) {
        const auto sum = [&](int first) {
            return (i32)(load<i16>(upper + 4 * i + first) + load<i16>(lower + 4 * i + first));
        };
        const i16 sums = addPairs(sum(0), sum(2 * kLanes));
        const i32 means = (i32)((u16)(sums + (1 << (kBits - 1))) >> kBits);
        storeBytes(cb + i, means & 0xffff, count - i);
        storeBytes(cr + i, (i32)((u32)means >> 16), count - i);
    }
}

}  // namespace quorvane::software::QUORVANE_PATH
