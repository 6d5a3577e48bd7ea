#include <cstddef>
#include <limits>
#include <optional>

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

struct Side {
    f32 x, y;
};

Side operator-(const Side& to, const Side& from) { return {to.x - from.x, to.y - from.y}; }

/// Corners of cells, one a lane; u and v times q.
struct Corner : Side {
    f32 q, u, v;

    Corner(const float* x_of, const float* y_of, const float* q_of, const float* u_of, float v_of)
        : Side{load<f32>(x_of), load<f32>(y_of)},
          q(load<f32>(q_of)),
          u(load<f32>(u_of) * q),
          v(splat(v_of) * q) {}
};

constexpr int32_t kSignBit = std::numeric_limits<int32_t>::min();

f32 magnitude(f32 v) { return (f32)((i32)v & ~kSignBit); }

f32 inverseArea(f32 area) {
    return select(magnitude(area) > splat(kLeastArea), splat(1.0f) / area, splat(kNoNumber));
}

/// Lines through two points.
struct Line {
    f32 column, y, slope;  ///< the first point, by columns of pixels
    i32 falls;             ///< down the picture, from the first point to the second

    Line(const Corner& from, const Corner& to, f32 centre_x) : column(from.x - centre_x), y(from.y) {
        const f32 fall = to.y - from.y;
        const f32 held_fall = select(magnitude(fall) < splat(kLeastFall), splat(kLeastFall), fall);
        slope = (to.x - from.x) / held_fall;
        falls = held_fall > f32{};
    }

    /// The columns in which they cross a row.
    f32 at(f32 row) const { return column + (row - y) * slope; }
};

/// The corners of cells side by side.
struct Corners {
    Corner a, b, c, d;

    Corners(const CellBlock& block, int i)
        : a(block.lower_x + i, block.lower_y + i, block.lower_q + i, block.column_u + i, block.lower_v),
          b(block.upper_x + i, block.upper_y + i, block.upper_q + i, block.column_u + i, block.upper_v),
          c(block.lower_x + i + 1, block.lower_y + i + 1, block.lower_q + i + 1, block.column_u + i + 1,
            block.lower_v),
          d(block.upper_x + i + 1, block.upper_y + i + 1, block.upper_q + i + 1, block.column_u + i + 1,
            block.upper_v) {}

    i32 drawable() const {
        const auto is = [](const Corner& corner) {
            return (corner.q > f32{}) & (corner.q <= splat(kNearestQ));
        };
        return is(a) & is(b) & is(c) & is(d);
    }
};

/// And their triangles.
struct Cells : Corners {
    Line ab, bc, cd, ac, bd;
    Side to_b, to_c, from_b_to_c, from_b_to_d;
    f32 area1, area2, inverse1, inverse2;

    Cells(const Corners& corners, f32 centre_x)
        : Corners(corners),
          ab(a, b, centre_x),
          bc(b, c, centre_x),
          cd(c, d, centre_x),
          ac(a, c, centre_x),
          bd(b, d, centre_x),
          to_b(b - a),
          to_c(c - a),
          from_b_to_c(c - b),
          from_b_to_d(d - b),
          area1(to_c.x * to_b.y - to_c.y * to_b.x),
          area2(from_b_to_c.x * from_b_to_d.y - from_b_to_c.y * from_b_to_d.x),
          inverse1(inverseArea(area1)),
          inverse2(inverseArea(area2)) {}

    /// Those with triangles that meet in all rows at the diagonal.
    i32 plain() const {
        return (area1 > splat(kLeastArea)) & (area2 > splat(kLeastArea)) & ab.falls & cd.falls &
               (magnitude(from_b_to_c.x) < splat(kFlattestDiagonal) * (b.y - c.y));
    }

    /// How values at corners change over the triangles (a, b, c) and (b, d, c).
    f32 across1(f32 at_a, f32 at_b, f32 at_c) const {
        return ((at_c - at_a) * to_b.y - (at_b - at_a) * to_c.y) * inverse1;
    }
    f32 down1(f32 at_a, f32 at_b, f32 at_c) const {
        return ((at_b - at_a) * to_c.x - (at_c - at_a) * to_b.x) * inverse1;
    }
    f32 across2(f32 at_b, f32 at_d, f32 at_c) const {
        return ((at_c - at_b) * from_b_to_d.y - (at_d - at_b) * from_b_to_c.y) * inverse2;
    }
    f32 down2(f32 at_b, f32 at_d, f32 at_c) const {
        return ((at_d - at_b) * from_b_to_c.x - (at_c - at_b) * from_b_to_d.x) * inverse2;
    }
};

/// The pixels that cells may cover.
struct alignas(kBytes) Bounds {
    int32_t left[kLanes], right[kLanes], top[kLanes], bottom[kLanes];

    /// As far as the centres of a band's pixels lie no more than `reach` from the cells.
    Bounds(const Corners& corners, const Band& band, float reach) {
        const Corner &a = corners.a, &b = corners.b, &c = corners.c, &d = corners.d;
        const f32 min_x = lesser(lesser(a.x, b.x), lesser(c.x, d.x));
        const f32 max_x = greater(greater(a.x, b.x), greater(c.x, d.x));
        const f32 min_y = lesser(lesser(a.y, b.y), lesser(c.y, d.y));
        const f32 max_y = greater(greater(a.y, b.y), greater(c.y, d.y));
        const f32 none = f32{}, one = splat(1.0f), width = splat(static_cast<float>(band.width));
        const f32 first = splat(static_cast<float>(band.top)), end = splat(static_cast<float>(band.bottom));
        store(left, roundedUp(held(min_x - splat(band.centre_x + reach), none, width)));
        store(right,
              truncated(held(max_x - splat(band.centre_x - reach) + one, none, width)) & corners.drawable());
        store(top, roundedUp(held(min_y - splat(band.centre_y + reach), first, end)));
        store(bottom, truncated(held(max_y - splat(band.centre_y - reach) + one, first, end)));
    }

    i32 filled() const { return (load<i32>(left) < load<i32>(right)) & (load<i32>(top) < load<i32>(bottom)); }
    bool isEmpty(int i) const { return left[i] >= right[i] || top[i] >= bottom[i]; }
};

struct alignas(kBytes) PerCell {
    float of[kLanes];
    void operator=(f32 v) { store(of, v); }
};

/// What plain cells cover: in each row some pixels side by side, on both sides of the diagonal.
class PlainCells {
  public:
    PlainCells(const Cells& cells, const Bounds& bounds, i32 plain, const Band& band);

    void draw(int i, const Bounds& bounds, const Band& band) const;

  private:
    struct alignas(kBytes) Row {
        int32_t pixel[kLanes], count[kLanes];
        PerCell from_diagonal;  ///< to the first pixel
        PerCell q, u, v;        ///< on the diagonal
    };

    /// Changes from a pixel to the next one.
    struct Steps {
        PerCell left, right;
    };

    Row m_rows[kMostBandRows];
    int m_top = 0;  ///< row of the picture
    Steps m_q, m_u, m_v;
};

PlainCells::PlainCells(const Cells& cells, const Bounds& bounds, i32 plain, const Band& band) {
    int top = band.bottom, bottom = band.top;
    for (int i = 0; i < kLanes; ++i) {
        if (plain[i] == 0 || bounds.isEmpty(i)) continue;
        top = bounds.top[i] < top ? bounds.top[i] : top;
        bottom = bounds.bottom[i] > bottom ? bounds.bottom[i] : bottom;
    }
    if (top >= bottom) return;
    const Corner &a = cells.a, &b = cells.b, &c = cells.c, &d = cells.d;
    m_q.left = cells.across1(a.q, b.q, c.q);
    m_u.left = cells.across1(a.u, b.u, c.u);
    m_v.left = cells.across1(a.v, b.v, c.v);
    m_q.right = cells.across2(b.q, d.q, c.q);
    m_u.right = cells.across2(b.u, d.u, c.u);
    m_v.right = cells.across2(b.v, d.v, c.v);
    const f32 along = splat(1.0f) / cells.from_b_to_c.y;
    const f32 q_along = (c.q - b.q) * along, u_along = (c.u - b.u) * along, v_along = (c.v - b.v) * along;

    const f32 width = splat(static_cast<float>(band.width));
    const i32 ac_falls = cells.ac.falls, bd_falls = cells.bd.falls;
    for (int y = top; y < bottom; ++y) {
        const f32 row_y = splat(static_cast<float>(y) + band.centre_y);
        const f32 ab = cells.ab.at(row_y), diagonal = cells.bc.at(row_y), cd = cells.cd.at(row_y);
        const f32 ac = cells.ac.at(row_y), bd = cells.bd.at(row_y);
        const f32 left1 = select(ac_falls, ab, greater(ac, ab));
        const f32 right1 = select(ac_falls, lesser(ac, diagonal), diagonal);
        const f32 left2 = select(bd_falls, greater(bd, diagonal), diagonal);
        const f32 right2 = select(bd_falls, cd, lesser(bd, cd));
        const i32 left = roundedUp(held(select(left1 < right1, left1, left2), f32{}, width));
        const i32 right = roundedUp(held(select(left2 < right2, right2, right1), f32{}, width));
        const f32 from_b = row_y - b.y;
        Row& row = m_rows[y - top];
        store(row.pixel, left + (y - band.top) * band.stride);
        store(row.count, right - left);
        row.from_diagonal = __builtin_convertvector(left, f32) - diagonal;
        row.q = b.q + from_b * q_along;
        row.u = b.u + from_b * u_along;
        row.v = b.v + from_b * v_along;
    }
    m_top = top;
}

void PlainCells::draw(int i, const Bounds& bounds, const Band& band) const {
    struct Step {
        f32 left, right;
        Step(const Steps& steps, int cell)
            : left(splat(steps.left.of[cell])), right(splat(steps.right.of[cell])) {}
        f32 from(f32 start, f32 to_left, f32 to_right) const {
            return (start + to_left * left) + to_right * right;
        }
    };
    const Step q_step(m_q, i), u_step(m_u, i), v_step(m_v, i);
    const f32 lanes = laneNumbers();
    const i32 lane = truncated(lanes);
    float *const band_q = band.q, *const band_u = band.u, *const band_v = band.v;
    const Row* const end = m_rows + (bounds.bottom[i] - m_top);
    for (const Row* row = m_rows + (bounds.top[i] - m_top); row < end; ++row) {
        int count = row->count[i];
        if (count <= 0) continue;
        ptrdiff_t pixel = row->pixel[i];
        const f32 from_diagonal = splat(row->from_diagonal.of[i]);
        const f32 start_q = splat(row->q.of[i]), start_u = splat(row->u.of[i]), start_v = splat(row->v.of[i]);
        const auto draw = [&](f32 number, i32 covered) {
            const f32 beyond = from_diagonal + number;
            const f32 to_left = lesser(beyond, f32{}), to_right = greater(beyond, f32{});
            float *q = band_q + pixel, *u = band_u + pixel, *v = band_v + pixel;
            const f32 here = q_step.from(start_q, to_left, to_right), old_q = load<f32>(q);
            // What is not covered is farther than anything.
            const f32 new_q = (f32)((i32)here & covered);
            const i32 drawn = new_q >= old_q;
            store(q, greater(new_q, old_q));
            store(u, select(drawn, u_step.from(start_u, to_left, to_right), load<f32>(u)));
            store(v, select(drawn, v_step.from(start_v, to_left, to_right), load<f32>(v)));
        };
        draw(lanes, splat32(count) > lane);
        for (f32 number = lanes; (count -= kLanes) > 0;) {
            number += static_cast<float>(kLanes);
            pixel += kLanes;
            draw(number, splat32(count) > lane);
        }
    }
}

/// Triangles of any kind.
class Triangles {
  public:
    explicit Triangles(const Cells& cells);

    struct Edge {
        PerCell column, slope, sign;  ///< negative where the triangle ends at it
        void put(const Line& line, i32 begins) {
            const i32 signs = ~begins & kSignBit;
            column = (f32)((i32)line.column ^ signs);
            slope = (f32)((i32)line.slope ^ signs);
            sign = (f32)signs;
        }
    };
    struct Plane {
        PerCell corner, x, y;
    };
    struct Triangle {
        Edge edges[3];
        Plane q, u, v;
    };
    PerCell ax, ay, bx, by, cy;
    Triangle first, second;
};

Triangles::Triangles(const Cells& cells) {
    const Corner &a = cells.a, &b = cells.b, &c = cells.c, &d = cells.d;
    ax = a.x;
    ay = a.y;
    bx = b.x;
    by = b.y;
    cy = c.y;
    const i32 turned1 = (i32)cells.area1 < 0, turned2 = (i32)cells.area2 < 0;
    first.edges[0].put(cells.ab, cells.ab.falls ^ turned1);
    first.edges[1].put(cells.bc, cells.bc.falls ^ turned1);
    first.edges[2].put(cells.ac, ~cells.ac.falls ^ turned1);
    second.edges[0].put(cells.bc, ~cells.bc.falls ^ turned2);
    second.edges[1].put(cells.bd, cells.bd.falls ^ turned2);
    second.edges[2].put(cells.cd, ~cells.cd.falls ^ turned2);
    const auto put1 = [&](f32 at_a, f32 at_b, f32 at_c, Plane* plane) {
        plane->corner = at_a;
        plane->x = cells.across1(at_a, at_b, at_c);
        plane->y = cells.down1(at_a, at_b, at_c);
    };
    const auto put2 = [&](f32 at_b, f32 at_d, f32 at_c, Plane* plane) {
        plane->corner = at_b;
        plane->x = cells.across2(at_b, at_d, at_c);
        plane->y = cells.down2(at_b, at_d, at_c);
    };
    put1(a.q, b.q, c.q, &first.q);
    put1(a.u, b.u, c.u, &first.u);
    put1(a.v, b.v, c.v, &first.v);
    put2(b.q, d.q, c.q, &second.q);
    put2(b.u, d.u, c.u, &second.u);
    put2(b.v, d.v, c.v, &second.v);
}

/// A plane's values along a row, but for the row's own part.
struct Along {
    f32 start, step;
    Along(const Triangles::Plane& plane, int i, f32 dx)
        : start(splat(plane.corner.of[i]) + dx * splat(plane.x.of[i])), step(splat(plane.y.of[i])) {}
    f32 at(f32 dy) const { return start + dy * step; }
};

struct EdgeAlong {
    f32 point, column, slope;
    EdgeAlong(const Triangles::Edge& edge, int i, f32 point_column)
        : point((f32)((i32)point_column ^ (i32)splat(edge.sign.of[i]))),
          column(splat(edge.column.of[i])),
          slope(splat(edge.slope.of[i])) {}
    i32 inside(f32 dy) const { return point >= column + dy * slope; }
};

/// A cell over as many pixels of a row as a vector has lanes.
class Columns {
  public:
    /// The points lie in these columns of pixels. What is no number is no point.
    Columns(const Triangles& triangles, int i, f32 columns, float centre_x)
        : Columns(triangles, i, columns, columns + splat(centre_x) - splat(triangles.ax.of[i]),
                  columns + splat(centre_x) - splat(triangles.bx.of[i])) {}

    /// Draws the points of row y over what these planes hold.
    void draw(f32 y, float* q, float* u, float* v) const {
        const f32 day = y - m_ay, dby = y - m_by, dcy = y - m_cy;
        const i32 in1 = m_ab.inside(day) & m_bc1.inside(dby) & m_ac.inside(day);
        const i32 in2 = m_bc2.inside(dby) & m_bd.inside(dby) & m_cd.inside(dcy);
        const f32 q1 = m_q1.at(day), q2 = m_q2.at(dby);
        const i32 second = in2 & (~in1 | (q2 >= q1));
        const f32 new_q = (f32)((i32)select(second, q2, q1) & (in1 | in2)), old_q = load<f32>(q);
        const i32 drawn = new_q >= old_q;
        store(q, greater(new_q, old_q));
        store(u, select(drawn, select(second, m_u2.at(dby), m_u1.at(day)), load<f32>(u)));
        store(v, select(drawn, select(second, m_v2.at(dby), m_v1.at(day)), load<f32>(v)));
    }

  private:
    Columns(const Triangles& t, int i, f32 column, f32 dax, f32 dbx)
        : m_ay(splat(t.ay.of[i])),
          m_by(splat(t.by.of[i])),
          m_cy(splat(t.cy.of[i])),
          m_ab(t.first.edges[0], i, column),
          m_bc1(t.first.edges[1], i, column),
          m_ac(t.first.edges[2], i, column),
          m_bc2(t.second.edges[0], i, column),
          m_bd(t.second.edges[1], i, column),
          m_cd(t.second.edges[2], i, column),
          m_q1(t.first.q, i, dax),
          m_u1(t.first.u, i, dax),
          m_v1(t.first.v, i, dax),
          m_q2(t.second.q, i, dbx),
          m_u2(t.second.u, i, dbx),
          m_v2(t.second.v, i, dbx) {}

    f32 m_ay, m_by, m_cy;
    EdgeAlong m_ab, m_bc1, m_ac, m_bc2, m_bd, m_cd;
    Along m_q1, m_u1, m_v1, m_q2, m_u2, m_v2;
};

f32 columnsFrom(int x) { return splat(static_cast<float>(x)) + laneNumbers(); }

void drawPixels(const Triangles& triangles, int i, const Bounds& bounds, const Band& band) {
    const int right = bounds.right[i], top = bounds.top[i];
    const f32 end = splat(static_cast<float>(right));
    for (int x = bounds.left[i]; x < right; x += kLanes) {
        const f32 column = columnsFrom(x);
        const Columns columns(triangles, i, select(column < end, column, splat(kNoNumber)), band.centre_x);
        size_t pixel =
            static_cast<size_t>(top - band.top) * static_cast<size_t>(band.stride) + static_cast<size_t>(x);
        f32 place = splat(static_cast<float>(top) + band.centre_y);
        for (int y = top; y < bounds.bottom[i]; ++y) {
            columns.draw(place, band.q + pixel, band.u + pixel, band.v + pixel);
            place += 1.0f;
            pixel += static_cast<size_t>(band.stride);
        }
    }
}

void drawSamples(const Triangles& triangles, int i, const Bounds& bounds, const Band& band) {
    const int left = bounds.left[i], right = bounds.right[i];
    const f32 first = splat(static_cast<float>(left)), end = splat(static_cast<float>(right));
    const size_t planes_of_sample = 3 * kSampleBlock;
    for (int block = left / kSampleBlock; block <= (right - 1) / kSampleBlock; ++block) {
        struct {
            float y;
            float* planes;
        } rows[kMostBandRows];
        int count = 0;
        for (int y = bounds.top[i]; y < bounds.bottom[i]; ++y) {
            const int slot = band.slots[(y - band.top) * band.slot_stride + block];
            if (slot < 0) continue;
            rows[count++] = {static_cast<float>(y) + band.centre_y,
                             band.sample_planes + static_cast<size_t>(slot) *
                                                      static_cast<size_t>(band.samples) * planes_of_sample};
        }
        if (count == 0) continue;
        for (int s = 0; s < band.samples; ++s)
            for (int k = 0; k < kSampleBlock; k += kLanes) {
                const f32 column = columnsFrom(block * kSampleBlock + k);
                const f32 point = column + splat(band.offsets[s][0]);
                const Columns columns(triangles, i,
                                      select((column >= first) & (column < end), point, splat(kNoNumber)),
                                      band.centre_x);
                for (int row = 0; row < count; ++row) {
                    float* const q = rows[row].planes + static_cast<size_t>(s) * planes_of_sample + k;
                    columns.draw(splat(rows[row].y + band.offsets[s][1]), q, q + kSampleBlock,
                                 q + 2 * kSampleBlock);
                }
            }
    }
}

/// Where on the photo pixels side by side lie, in texels.
struct Spots {
    f32 u, v;
    i32 seen;

    template <typename AnyTexture>
    Spots(const AnyTexture& texture, f32 far_q, const PixelRow& pixels, int i) {
        const f32 near = load<f32>(pixels.q + i), w = splat(1.0f) / near;
        u = held(load<f32>(pixels.u + i) * w, f32{}, splat(texture.last_u));
        v = held(load<f32>(pixels.v + i) * w, f32{}, splat(texture.last_v));
        seen = near > far_q;
    }
};

/// Pixels of a row that are worked on together.
constexpr int kMost = 512;

/// Places between the elements of a texture. Found before anything is read there, and fetched at once: a row
/// of the picture crosses rows of the photo, in steps that processors do not foresee, and waiting for memory
/// would take longer than all else.
template <int kPlaces>
class Places {
  public:
    /// `size` are an element's bytes.
    void put(int i, f32 u, f32 v, i32 seen, const uint8_t* texels, int size, int stride) {
        const i32 s = truncated(u * splat(kPlaceUnit)), t = truncated(v * splat(kPlaceUnit));
        store(m_offsets + i, multiplySmall(t >> kPlaceBits, splat32(stride)) + (s >> kPlaceBits));
        store(m_parts + i, (s & (kPlaceOne - 1)) | (t & (kPlaceOne - 1)) << 16);
        store(m_seen + i, seen);
        if constexpr (kPlaces == kLanes) return;  // read at once
        for (const int lane : {0, kLanes - 1})
            prefetch(texels + static_cast<size_t>(size) * static_cast<uint32_t>(m_offsets[i + lane]));
    }

    const int32_t* offsets(int i) const { return m_offsets + i; }

    // Of kPlaceOne, in both halves of a lane.
    i16 right(int i) const { return doubleHalf<0>(load<i16>(m_parts + i)); }
    i16 down(int i) const { return doubleHalf<1>(load<i16>(m_parts + i)); }

    i32 seen(int i) const { return load<i32>(m_seen + i); }

    /// `some` where anything is seen, else `none`.
    i32 seen(int i, i32 some, i32 none) const { return (some & seen(i)) | (none & ~seen(i)); }

  private:
    alignas(kBytes) int32_t m_offsets[kPlaces], m_parts[kPlaces], m_seen[kPlaces];
};

i16 blend(i16 from, i16 to, i16 part) { return from + multiplyRounded(to - from, part); }

/// With kColourBits.
constexpr int kUp = 8 - kColourBits;
i16 evenBytes(u8 of) { return (i16)((u16)of << 8 >> kUp); }
i16 oddBytes(u8 of) { return (i16)(((u16)of & 0xff00) >> kUp); }

/// What 2 x 2 pixels have in common, in the order in which joinEven has them.
struct Blocks {
    f32 sum_u, sum_v;
    i32 one_piece;

    Blocks(const Spots (&upper)[2], const Spots (&lower)[2]) {
        const i32 left = upper[0].seen & lower[0].seen, right = upper[1].seen & lower[1].seen;
        one_piece = joinEven(left, right) & joinOdd(left, right);
        sum_u = sum(upper[0].u, upper[1].u, lower[0].u, lower[1].u);
        sum_v = sum(upper[0].v, upper[1].v, lower[0].v, lower[1].v);
    }

  private:
    f32 sum(f32 upper_left, f32 upper_right, f32 lower_left, f32 lower_right) {
        const f32 least = joined(lesser(upper_left, lower_left), lesser(upper_right, lower_right), lesser);
        const f32 most = joined(greater(upper_left, lower_left), greater(upper_right, lower_right), greater);
        one_piece &= most - least <= splat(kOnePiece);
        return joined(upper_left + lower_left, upper_right + lower_right, [](f32 a, f32 b) { return a + b; });
    }

    template <typename Join>
    static f32 joined(f32 left, f32 right, const Join& join) {
        return join((f32)joinEven((i32)left, (i32)right), (f32)joinOdd((i32)left, (i32)right));
    }
};

/// Y'CbCr of pixels from the photo.
class PlanarShader {
  public:
    PlanarShader(const PlanarTexture& texture, float far_q)
        : m_texture(texture),
          m_far_q(splat(far_q)),
          m_part_of_one(splat(texture.colours_a_texel)),
          m_part_of_four(splat(texture.colours_a_texel * 0.25f)),
          m_shift(splat(texture.colour_shift)),
          m_last_colour_u(splat(texture.last_colour_u)),
          m_last_colour_v(splat(texture.last_colour_v)) {}

    Spots spots(const PixelRow& row, int i) const { return Spots(m_texture, m_far_q, row, i); }

    template <int kPlaces>
    void putLuma(int i, const Spots& spots, Places<kPlaces>* places) const {
        places->put(i, spots.u, spots.v, spots.seen, m_texture.luma, 2, m_texture.stride);
    }

    /// The colours of a pixel each.
    template <int kPlaces>
    void putColours(int i, const Spots& spots, Places<kPlaces>* places) const {
        putColours(i, spots.u * m_part_of_one, spots.v * m_part_of_one, spots.seen, places);
    }

    /// The colours of 2 x 2 pixels.
    template <int kPlaces>
    void putColours(int i, const Blocks& blocks, Places<kPlaces>* places) const {
        putColours(i, blocks.sum_u * m_part_of_four, blocks.sum_v * m_part_of_four, blocks.one_piece, places);
    }

    template <int kPlaces>
    void shadeLuma(const Places<kPlaces>& places, int count, uint8_t* luma) const {
        for (int i = 0; i < count; i += kLanes) {
            // Blended down, a pixel has its left luma in the lower and its right one in the upper half.
            const u8 four = (u8)loadEach(m_texture.luma, places.offsets(i));
            const i16 sides = blend(evenBytes(four), oddBytes(four), places.down(i));
            const i16 right = (i16)((u32)sides >> 16);
            const i16 mixed = blend(sides, right, places.right(i)) + (1 << (kColourBits - 1));
            const i32 y = ((i32)mixed & 0xffff) >> kColourBits;
            storeBytes(luma + i, places.seen(i, y, splat32(bt709::kBlackLuma)), count - i);
        }
    }

    /// Cb and Cr with kColourBits, side by side.
    template <int kPlaces>
    i16 colours(const Places<kPlaces>& places, int i) const {
        const auto down = [&](u8 pairs, i32 part) {
            return (i32)blend(evenBytes(pairs), oddBytes(pairs), (i16)part);
        };
        const i32 part = (i32)places.down(i);
        const i32 a = down(loadPairs<0>(m_texture.colours, places.offsets(i)), doubleFirst(part));
        const i32 b = down(loadPairs<2>(m_texture.colours, places.offsets(i)), doubleLast(part));
        return blend((i16)joinEven(a, b), (i16)joinOdd(a, b), places.right(i));
    }

    /// The same of each pixel, with kColourPartBits.
    i32 ownColours(const Spots& spots) const {
        constexpr int kNoColours = bt709::kNoColour << kColourPartBits;
        Places<kLanes> place;
        putColours(0, spots, &place);
        const i32 cut = (i32)((colours(place, 0) + (1 << (kPartsCut - 1))) >> kPartsCut);
        return place.seen(0, cut, splat32(kNoColours | kNoColours << 16));
    }

    /// The means of what 2 x 2 pixels have each, in the order in which joinEven has them.
    [[gnu::noinline]] i32 meanColours(const PixelRow (&rows)[2], int i) const {
        constexpr int kBits = kColourPartBits + 2;
        const auto sum = [&](int first) {
            return (i32)((i16)ownColours(spots(rows[0], first)) + (i16)ownColours(spots(rows[1], first)));
        };
        const i32 left = sum(i), right = sum(i + kLanes);
        const i16 sums = (i16)joinEven(left, right) + (i16)joinOdd(left, right);
        return (i32)((u16)(sums + (1 << (kBits - 1))) >> kBits);
    }

  private:
    template <int kPlaces>
    void putColours(int i, f32 u, f32 v, i32 seen, Places<kPlaces>* places) const {
        places->put(i, held(u - m_shift, f32{}, m_last_colour_u), held(v - m_shift, f32{}, m_last_colour_v),
                    seen, m_texture.colours, 4, m_texture.colour_stride);
    }

    const PlanarTexture& m_texture;
    const f32 m_far_q, m_part_of_one, m_part_of_four, m_shift, m_last_colour_u, m_last_colour_v;
};

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
    for (int start = 0; start < block.count; start += kLanes) {
        const Corners corners(block, start);
        const Bounds pixels(corners, band, kReach), samples(corners, band, kSampleReach);
        if (!any(pixels.filled() | (band.samples > 1 ? samples.filled() : i32{}))) continue;
        const Cells cells(corners, splat(band.centre_x));
        const i32 plain = cells.plain();
        const PlainCells plain_cells(cells, pixels, plain, band);
        std::optional<Triangles> any_cells;
        const auto triangles = [&]() -> const Triangles& {
            if (!any_cells) any_cells.emplace(cells);
            return *any_cells;
        };
        for (int i = 0; i < kLanes && start + i < block.count; ++i) {
            if (!pixels.isEmpty(i)) {
                if (plain[i] != 0)
                    plain_cells.draw(i, pixels, band);
                else
                    drawPixels(triangles(), i, pixels, band);
            }
            if (band.samples > 1 && !samples.isEmpty(i) &&
                touchesMarked(band, samples.left[i], samples.right[i], samples.top[i], samples.bottom[i]))
                drawSamples(triangles(), i, samples, band);
        }
    }
}

void shade(const Texture& texture, const PixelRow& row, float far_q, int count, uint8_t* rgba) {
    const uint8_t* texels = texture.texels;
    const uint8_t* next_row = texels + 4 * static_cast<size_t>(texture.stride);
    for (int start = 0; start < count; start += kMost) {
        const int some = count - start < kMost ? count - start : kMost;
        Places<kMost> places;
        for (int i = 0; i < some; i += kLanes) {
            const Spots spots(texture, splat(far_q), row, start + i);
            places.put(i, spots.u, spots.v, spots.seen, next_row, 4, texture.stride);
        }
        for (int i = 0; i < some; i += kLanes) {
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
            const auto first = down(loadPairs<0>(texels, offsets), loadPairs<0>(next_row, offsets),
                                    doubleFirst((i32)places.down(i)));
            const auto second = down(loadPairs<2>(texels, offsets), loadPairs<2>(next_row, offsets),
                                     doubleLast((i32)places.down(i)));
            const auto across = [&](i32 a, i32 b) {
                return blend((i16)joinEven(a, b), (i16)joinOdd(a, b), places.right(i)) +
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

void shadePlanar(const PlanarTexture& texture, const PixelRow (&rows)[2], float far_q, int count,
                 uint8_t* const (&luma)[2], uint8_t* cb, uint8_t* cr) {
    const PlanarShader shader(texture, far_q);
    for (int start = 0; start < count; start += kMost) {
        const int some = count - start < kMost ? count - start : kMost;
        Places<kMost> upper_places, lower_places;
        Places<kMost / 2> colour_places;
        for (int i = 0; i < some; i += 2 * kLanes) {
            const int x = start + i;
            const Spots upper[] = {shader.spots(rows[0], x), shader.spots(rows[0], x + kLanes)};
            const Spots lower[] = {shader.spots(rows[1], x), shader.spots(rows[1], x + kLanes)};
            QUORVANE_UNROLLED
            for (int k = 0; k < 2; ++k) {
                shader.putLuma(i + k * kLanes, upper[k], &upper_places);
                shader.putLuma(i + k * kLanes, lower[k], &lower_places);
            }
            shader.putColours(i / 2, Blocks(upper, lower), &colour_places);
        }
        shader.shadeLuma(upper_places, some, luma[0] + start);
        shader.shadeLuma(lower_places, some, luma[1] + start);
        for (int i = 0; i < some; i += 2 * kLanes) {
            i32 colours =
                (i32)((u16)(shader.colours(colour_places, i / 2) + (1 << (kColourBits - 1))) >> kColourBits);
            if (any(~colour_places.seen(i / 2)))
                colours = colour_places.seen(i / 2, colours, shader.meanColours(rows, start + i));
            colours = inOrder(colours);
            const int to = (start + i) / 2, left = (some - i) / 2;
            storeBytes(cb + to, colours & 0xffff, left);
            storeBytes(cr + to, (i32)((u32)colours >> 16), left);
        }
    }
}

void shadePlanarEach(const PlanarTexture& texture, const PixelRow& row, float far_q, int count, uint8_t* luma,
                     int16_t* colours) {
    const PlanarShader shader(texture, far_q);
    for (int i = 0; i < count; i += kLanes) {
        const Spots spots = shader.spots(row, i);
        Places<kLanes> place;
        shader.putLuma(0, spots, &place);
        shader.shadeLuma(place, count - i < kLanes ? count - i : kLanes, luma + i);
        store(colours + 2 * i, shader.ownColours(spots));
    }
}

}  // namespace quorvane::software::QUORVANE_PATH
