#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>

#include "composition/bt709.h"
#include "software/kernels/cell.h"
#include "software/kernels/drawing.h"

namespace quorvane::software::reference {
namespace {

/// `t` held to low..high; low where it is no number.
float held(float t, float low, float high) {
    t = t > low ? t : low;
    return t < high ? t : high;
}

int roundedUp(float t) {
    const int whole = static_cast<int>(t);
    return whole + (static_cast<float>(whole) < t ? 1 : 0);
}

/// A value that is linear over a triangle, from a corner's.
struct Plane {
    float corner, x, y;
    float at(float dx, float dy) const { return (corner + dx * x) + dy * y; }
};

struct Place {
    float q, u, v;
};

/// A line through two points.
struct Line {
    float column, y, slope;  ///< the first point, by columns of pixels
    bool falls;              ///< down the picture, from the first point to the second

    /// The column in which it crosses a row.
    float at(float row) const { return column + (row - y) * slope; }
};

struct Triangle {
    Line edges[3];
    bool begins[3];  ///< at this edge, rather than ends there
    Plane q, u, v;
};

struct Corner {
    float x, y, q, u, v;
};

struct Bounds {
    int left, right, top, bottom;
    bool isEmpty() const { return left >= right || top >= bottom; }
};

/// A value that changes along the diagonal, and to the left and to the right of it.
struct Hinge {
    float start, along, left, right;
    float at(float from_start, float to_left, float to_right) const {
        return ((start + from_start * along) + to_left * left) + to_right * right;
    }
};

/// A cell set up for drawing.
struct Cell {
    float ax, ay, bx, by;
    Triangle first, second;
    Bounds pixels, samples;  ///< that it may cover
    bool is_plain;           ///< its triangles meet in all rows at the diagonal
    Hinge q, u, v;           ///< where it is plain
};

Line lineOf(const Corner& from, const Corner& to, float centre_x) {
    const float fall = to.y - from.y;
    const float held_fall = std::fabs(fall) < kLeastFall ? kLeastFall : fall;
    return {from.x - centre_x, from.y, (to.x - from.x) / held_fall, held_fall > 0.0f};
}

float inverseArea(float area) {
    return std::fabs(area) > kLeastArea ? 1.0f / area : std::numeric_limits<float>::quiet_NaN();
}

/// Sides (first, second) leave the corner; area = second x first.
Plane planeOf(float corner, float first, float second, const float (&to_first)[2],
              const float (&to_second)[2], float inverse) {
    const float d1 = first - corner, d2 = second - corner;
    return {corner, (d2 * to_first[1] - d1 * to_second[1]) * inverse,
            (d1 * to_second[0] - d2 * to_first[0]) * inverse};
}

Cell setUp(const CellBlock& block, int i, const Band& band) {
    const auto corner = [&](const float* x, const float* y, const float* q, int k, float v) {
        return Corner{x[k], y[k], q[k], block.column_u[k] * q[k], v * q[k]};
    };
    const Corner a = corner(block.lower_x, block.lower_y, block.lower_q, i, block.lower_v);
    const Corner c = corner(block.lower_x, block.lower_y, block.lower_q, i + 1, block.lower_v);
    const Corner b = corner(block.upper_x, block.upper_y, block.upper_q, i, block.upper_v);
    const Corner d = corner(block.upper_x, block.upper_y, block.upper_q, i + 1, block.upper_v);

    const float ab[2] = {b.x - a.x, b.y - a.y}, ac[2] = {c.x - a.x, c.y - a.y};
    const float bc[2] = {c.x - b.x, c.y - b.y}, bd[2] = {d.x - b.x, d.y - b.y};
    const float area1 = ac[0] * ab[1] - ac[1] * ab[0];
    const float area2 = bc[0] * bd[1] - bc[1] * bd[0];
    const float inverse1 = inverseArea(area1), inverse2 = inverseArea(area2);

    Cell cell;
    cell.ax = a.x, cell.ay = a.y, cell.bx = b.x, cell.by = b.y;
    const auto line = [&](const Corner& from, const Corner& to) { return lineOf(from, to, band.centre_x); };
    const Line along_ab = line(a, b), along_bc = line(b, c), along_ac = line(a, c);
    const Line along_bd = line(b, d), along_cd = line(c, d);
    const bool turned1 = std::signbit(area1), turned2 = std::signbit(area2);
    cell.first = {{along_ab, along_bc, along_ac},
                  {along_ab.falls != turned1, along_bc.falls != turned1, along_ac.falls == turned1},
                  planeOf(a.q, b.q, c.q, ab, ac, inverse1),
                  planeOf(a.u, b.u, c.u, ab, ac, inverse1),
                  planeOf(a.v, b.v, c.v, ab, ac, inverse1)};
    cell.second = {{along_bc, along_bd, along_cd},
                   {along_bc.falls == turned2, along_bd.falls != turned2, along_cd.falls == turned2},
                   planeOf(b.q, d.q, c.q, bd, bc, inverse2),
                   planeOf(b.u, d.u, c.u, bd, bc, inverse2),
                   planeOf(b.v, d.v, c.v, bd, bc, inverse2)};
    cell.is_plain = area1 > kLeastArea && area2 > kLeastArea && along_ab.falls && along_cd.falls &&
                    std::fabs(bc[0]) < kFlattestDiagonal * (b.y - c.y);
    const float along = 1.0f / bc[1];
    cell.q = {b.q, (c.q - b.q) * along, cell.first.q.x, cell.second.q.x};
    cell.u = {b.u, (c.u - b.u) * along, cell.first.u.x, cell.second.u.x};
    cell.v = {b.v, (c.v - b.v) * along, cell.first.v.x, cell.second.v.x};

    const float width = static_cast<float>(band.width);
    const float top = static_cast<float>(band.top), bottom = static_cast<float>(band.bottom);
    const float min_x = std::min(std::min(a.x, b.x), std::min(c.x, d.x));
    const float max_x = std::max(std::max(a.x, b.x), std::max(c.x, d.x));
    const float min_y = std::min(std::min(a.y, b.y), std::min(c.y, d.y));
    const float max_y = std::max(std::max(a.y, b.y), std::max(c.y, d.y));
    bool drawable = true;
    for (const float q : {a.q, b.q, c.q, d.q}) drawable = drawable && q > 0.0f && q <= kNearestQ;
    const auto within = [&](float reach) {
        return Bounds{
            roundedUp(held(min_x - (band.centre_x + reach), 0.0f, width)),
            drawable ? static_cast<int>(held(max_x - (band.centre_x - reach) + 1.0f, 0.0f, width)) : 0,
            roundedUp(held(min_y - (band.centre_y + reach), top, bottom)),
            static_cast<int>(held(max_y - (band.centre_y - reach) + 1.0f, top, bottom))};
    };
    cell.pixels = within(kReach);
    cell.samples = within(kSampleReach);
    return cell;
}

/// Whether the cell covers a point of a column of pixels, and with what.
bool covers(const Cell& cell, float column, float y, float centre_x, Place* place) {
    const float x = column + centre_x;
    const float dax = x - cell.ax, day = y - cell.ay;
    const float dbx = x - cell.bx, dby = y - cell.by;
    const auto inside = [&](const Triangle& triangle) {
        for (int k = 0; k < 3; ++k) {
            const float crossing = triangle.edges[k].at(y);
            if (triangle.begins[k] ? !(column >= crossing) : !(column <= crossing)) return false;
        }
        return true;
    };
    const Triangle& t1 = cell.first;
    const Triangle& t2 = cell.second;
    const bool in1 = inside(t1), in2 = inside(t2);
    const float q1 = t1.q.at(dax, day), q2 = t2.q.at(dbx, dby);
    if (in2 && (!in1 || q2 >= q1))
        *place = {q2, t2.u.at(dbx, dby), t2.v.at(dbx, dby)};
    else
        *place = {q1, t1.u.at(dax, day), t1.v.at(dax, day)};
    return in1 || in2;
}

void put(const Place& place, float* q, float* u, float* v) {
    if (!(place.q >= *q)) return;
    *q = place.q;
    *u = place.u;
    *v = place.v;
}

/// Where on the photo a pixel lies, in texels.
struct Spot {
    float u, v;
};

template <typename AnyTexture>
Spot spotOf(float q, float u, float v, const AnyTexture& texture) {
    const float w = 1.0f / q;
    return {held(u * w, 0.0f, texture.last_u), held(v * w, 0.0f, texture.last_v)};
}

/// Where between four texels, whose first is `index`.
struct Texel {
    size_t index;
    int right, down;  ///< of kPlaceOne
};

Texel texelAt(Spot spot, int stride) {
    const int s = static_cast<int>(spot.u * kPlaceUnit), t = static_cast<int>(spot.v * kPlaceUnit);
    return {static_cast<size_t>(t >> kPlaceBits) * static_cast<size_t>(stride) +
                static_cast<size_t>(s >> kPlaceBits),
            s & (kPlaceOne - 1), t & (kPlaceOne - 1)};
}

/// Where between four colours, from the sum of so many spots.
Texel placeOfColour(Spot sum, float spots, const PlanarTexture& texture) {
    const float part = texture.colours_a_texel / spots, shift = texture.colour_shift;
    return texelAt({held(sum.u * part - shift, 0.0f, texture.last_colour_u),
                    held(sum.v * part - shift, 0.0f, texture.last_colour_v)},
                   texture.colour_stride);
}

/// With kColourBits, of the upper left, lower left, upper right and lower right.
int bilinear(const Texel& place, int a, int b, int c, int d) {
    const auto blend = [](int from, int to, int part) {
        return from + (((to - from) * part + kPlaceOne / 2) >> kPlaceBits);
    };
    const int left = blend(a << kColourBits, b << kColourBits, place.down);
    const int right = blend(c << kColourBits, d << kColourBits, place.down);
    return blend(left, right, place.right);
}

uint8_t roundedColour(int colour) {
    return static_cast<uint8_t>((colour + (1 << (kColourBits - 1))) >> kColourBits);
}

/// The luma of a pixel that is seen.
uint8_t lumaAt(Spot spot, const PlanarTexture& texture) {
    const Texel place = texelAt(spot, texture.stride);
    const uint8_t* y = texture.luma + 2 * place.index;
    return roundedColour(bilinear(place, y[0], y[1], y[2], y[3]));
}

struct Colour {
    int cb, cr;
};

/// With kColourBits.
Colour colourAt(const Texel& place, const PlanarTexture& texture) {
    const uint8_t* c = texture.colours + 4 * place.index;
    return {bilinear(place, c[0], c[1], c[4], c[5]), bilinear(place, c[2], c[3], c[6], c[7])};
}

/// With kColourPartBits.
int colourPart(int colour) { return (colour + (1 << (kPartsCut - 1))) >> kPartsCut; }

void drawRow(const Cell& cell, int y, const Band& band) {
    const size_t row = static_cast<size_t>(y - band.top) * static_cast<size_t>(band.stride);
    for (int x = cell.pixels.left; x < cell.pixels.right; ++x) {
        const size_t pixel = row + static_cast<size_t>(x);
        Place place;
        if (covers(cell, static_cast<float>(x), static_cast<float>(y) + band.centre_y, band.centre_x, &place))
            put(place, band.q + pixel, band.u + pixel, band.v + pixel);
    }
}

/// The same for a plain cell, but that a pixel on an edge belongs to the right one of two cells.
void drawPlainRow(const Cell& cell, int y, const Band& band) {
    const float row_y = static_cast<float>(y) + band.centre_y;
    const auto at = [&](const Line& line) { return line.at(row_y); };
    const auto lesser = [](float a, float b) { return a < b ? a : b; };
    const auto greater = [](float a, float b) { return a > b ? a : b; };
    const Line& ac = cell.first.edges[2];
    const Line& bd = cell.second.edges[1];
    const float diagonal = at(cell.first.edges[1]);
    float left1 = at(cell.first.edges[0]), right1 = diagonal;
    float left2 = diagonal, right2 = at(cell.second.edges[2]);
    if (ac.falls)
        right1 = lesser(at(ac), right1);
    else
        left1 = greater(at(ac), left1);
    if (bd.falls)
        left2 = greater(at(bd), left2);
    else
        right2 = lesser(at(bd), right2);

    const float width = static_cast<float>(band.width);
    const int left = roundedUp(held(left1 < right1 ? left1 : left2, 0.0f, width));
    const int right = roundedUp(held(left2 < right2 ? right2 : right1, 0.0f, width));
    const float from_b = row_y - cell.by, from_diagonal = static_cast<float>(left) - diagonal;
    for (int x = left; x < right; ++x) {
        const float beyond = from_diagonal + static_cast<float>(x - left);
        const float to_left = lesser(beyond, 0.0f), to_right = greater(beyond, 0.0f);
        const size_t pixel =
            static_cast<size_t>(y - band.top) * static_cast<size_t>(band.stride) + static_cast<size_t>(x);
        put({cell.q.at(from_b, to_left, to_right), cell.u.at(from_b, to_left, to_right),
             cell.v.at(from_b, to_left, to_right)},
            band.q + pixel, band.u + pixel, band.v + pixel);
    }
}

void drawSamples(const Cell& cell, const Band& band) {
    const Bounds& bounds = cell.samples;
    for (int y = bounds.top; y < bounds.bottom; ++y)
        for (int x = bounds.left; x < bounds.right; ++x) {
            const int slot = band.slots[(y - band.top) * band.slot_stride + x / kSampleBlock];
            if (slot < 0) continue;
            for (int s = 0; s < band.samples; ++s) {
                float* planes =
                    band.sample_planes +
                    (static_cast<size_t>(slot) * static_cast<size_t>(band.samples) + static_cast<size_t>(s)) *
                        3 * kSampleBlock +
                    x % kSampleBlock;
                Place place;
                if (covers(cell, static_cast<float>(x) + band.offsets[s][0],
                           (static_cast<float>(y) + band.centre_y) + band.offsets[s][1], band.centre_x,
                           &place))
                    put(place, planes, planes + kSampleBlock, planes + 2 * kSampleBlock);
            }
        }
}

}  // namespace

Extent placeVertices(const VertexBlock& block) {
    Extent extent = {std::numeric_limits<float>::max(), std::numeric_limits<float>::lowest(), true};
    for (int i = 0; i < block.count; ++i) {
        const auto at = [&](const Axis& axis) {
            return block.distance[i] * (axis.column[i] + axis.row) + axis.constant;
        };
        const float q = 1.0f / at(block.w);
        const float y = at(block.y) * q;
        block.out_x[i] = at(block.x) * q;
        block.out_y[i] = y;
        block.out_q[i] = q;
        extent.top = y < extent.top ? y : extent.top;
        extent.bottom = y > extent.bottom ? y : extent.bottom;
        extent.drawable = extent.drawable && q > 0.0f && q <= kNearestQ;
    }
    return extent;
}

void findFacings(const CellBlock& block, float edge_on_area, uint8_t* facings) {
    const auto facing = [=](float area) {
        return area >= edge_on_area ? kFromFront : area <= -edge_on_area ? kFromBehind : kEdgeOn;
    };
    for (int i = 0; i < block.count; ++i) {
        const float ax = block.lower_x[i], ay = block.lower_y[i];
        const float bx = block.upper_x[i], by = block.upper_y[i];
        const float cx = block.lower_x[i + 1], cy = block.lower_y[i + 1];
        const float dx = block.upper_x[i + 1], dy = block.upper_y[i + 1];
        const float area1 = (cx - ax) * (by - ay) - (cy - ay) * (bx - ax);
        const float area2 = (cx - bx) * (dy - by) - (cy - by) * (dx - bx);
        facings[i] = static_cast<uint8_t>(facing(area1) | facing(area2) << 2);
    }
}

void drawCells(const CellBlock& block, const Band& band) {
    for (int i = 0; i < block.count; ++i) {
        const Cell cell = setUp(block, i, band);
        for (int y = cell.pixels.top; y < cell.pixels.bottom; ++y) {
            if (cell.pixels.left >= cell.pixels.right) break;
            if (cell.is_plain)
                drawPlainRow(cell, y, band);
            else
                drawRow(cell, y, band);
        }
        const Bounds& samples = cell.samples;
        if (band.samples > 1 && !samples.isEmpty() &&
            touchesMarked(band, samples.left, samples.right, samples.top, samples.bottom))
            drawSamples(cell, band);
    }
}

void shade(const Texture& texture, const PixelRow& row, float far_q, int count, uint8_t* rgba) {
    for (int i = 0; i < count; ++i, rgba += 4) {
        if (!(row.q[i] > far_q)) {
            rgba[0] = rgba[1] = rgba[2] = 0;
            rgba[3] = 255;
            continue;
        }
        const Texel place = texelAt(spotOf(row.q[i], row.u[i], row.v[i], texture), texture.stride);
        const uint8_t* texel = texture.texels + 4 * place.index;
        const uint8_t* below = texel + 4 * static_cast<size_t>(texture.stride);
        for (int c = 0; c < 4; ++c)
            rgba[c] = roundedColour(bilinear(place, texel[c], below[c], texel[4 + c], below[4 + c]));
    }
}

void shadePlanar(const PlanarTexture& texture, const PixelRow (&rows)[2], float far_q, int count,
                 uint8_t* const (&luma)[2], uint8_t* cb, uint8_t* cr) {
    constexpr int kNoColours = bt709::kNoColour << kColourPartBits;
    for (int x = 0; x < count; x += 2) {
        Spot spots[2][2];
        Spot nearest = {std::numeric_limits<float>::max(), std::numeric_limits<float>::max()};
        Spot farthest = {0, 0};
        Colour sum = {0, 0};
        bool is_one_piece = true;
        for (int row = 0; row < 2; ++row)
            for (int i = 0; i < 2; ++i) {
                const float q = rows[row].q[x + i];
                const Spot spot = spotOf(q, rows[row].u[x + i], rows[row].v[x + i], texture);
                const bool is_seen = q > far_q;
                const Colour own = colourAt(placeOfColour(spot, 1, texture), texture);
                luma[row][x + i] = is_seen ? lumaAt(spot, texture) : bt709::kBlackLuma;
                sum.cb += is_seen ? colourPart(own.cb) : kNoColours;
                sum.cr += is_seen ? colourPart(own.cr) : kNoColours;
                nearest = {std::min(nearest.u, spot.u), std::min(nearest.v, spot.v)};
                farthest = {std::max(farthest.u, spot.u), std::max(farthest.v, spot.v)};
                is_one_piece = is_one_piece && is_seen;
                spots[row][i] = spot;
            }
        is_one_piece =
            is_one_piece && farthest.u - nearest.u <= kOnePiece && farthest.v - nearest.v <= kOnePiece;
        if (is_one_piece) {
            const auto& [upper, lower] = spots;
            const Spot all = {(upper[0].u + lower[0].u) + (upper[1].u + lower[1].u),
                              (upper[0].v + lower[0].v) + (upper[1].v + lower[1].v)};
            const Colour colour = colourAt(placeOfColour(all, 4, texture), texture);
            cb[x / 2] = roundedColour(colour.cb);
            cr[x / 2] = roundedColour(colour.cr);
        } else {
            cb[x / 2] = meanOfFour(sum.cb);
            cr[x / 2] = meanOfFour(sum.cr);
        }
    }
}

void shadePlanarEach(const PlanarTexture& texture, const PixelRow& row, float far_q, int count, uint8_t* luma,
                     int16_t* colours) {
    for (int i = 0; i < count; ++i, colours += 2) {
        if (!(row.q[i] > far_q)) {
            luma[i] = bt709::kBlackLuma;
            colours[0] = colours[1] = bt709::kNoColour << kColourPartBits;
            continue;
        }
        const Spot spot = spotOf(row.q[i], row.u[i], row.v[i], texture);
        const Colour colour = colourAt(placeOfColour(spot, 1, texture), texture);
        luma[i] = lumaAt(spot, texture);
        colours[0] = static_cast<int16_t>(colourPart(colour.cb));
        colours[1] = static_cast<int16_t>(colourPart(colour.cr));
    }
}

}  // namespace quorvane::software::reference
