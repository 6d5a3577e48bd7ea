#include "media/scene/sample_scene.h"

#include <utility>

#include "media/scene/paint.h"

namespace quorvane::media {
namespace {

using namespace paint;

constexpr float kHorizonDepth = 90, kFrontDepth = 215;
constexpr Colour kSunlight = fromHex(0xffe9b8);
constexpr Colour kMist = fromHex(0xf3cfb4);

/// Where things are: places go with the width and height, sizes with `unit`, so that shapes never stretch.
struct Layout {
    explicit Layout(const Canvas& canvas)
        : width(static_cast<float>(canvas.width())),
          height(static_cast<float>(canvas.height())),
          unit(std::min(width, height)),
          horizon(height * 0.56f),
          sun{width * 0.55f, horizon - unit * 0.185f} {}

    /// A plane that recedes gets depth in proportion to the rows below the horizon.
    float groundDepth(float y) const {
        return mix(kHorizonDepth, kFrontDepth, clamp01((y - horizon) / (height - 1 - horizon)));
    }

    /// The octaves of noise with `cells` cells a unit that pixels can show; finer ones would only alias.
    int octaves(float cells, int most) const {
        return std::clamp(static_cast<int>(std::log2(unit / (2 * cells))), 1, most);
    }

    /// Falls from 1 at the sun; `radius` is in units.
    float sunGlow(Point at, float radius) const { return std::exp(-distance(at, sun) / (unit * radius)); }

    /// How many scattered things keep the density of `per_unit` a unit of width.
    int count(float per_unit) const { return static_cast<int>(per_unit * width / unit); }

    float width, height, unit, horizon;
    Point sun;
};

/// A line across the picture, one row a column: float row_at(float x).
template <typename RowAt>
std::vector<float> makeLine(const Layout& layout, RowAt row_at) {
    std::vector<float> rows(static_cast<size_t>(layout.width));
    for (size_t i = 0; i < rows.size(); ++i) rows[i] = row_at(static_cast<float>(i) + 0.5f);
    return rows;
}

float rowOf(const std::vector<float>& line, float x) {
    return line[static_cast<size_t>(std::clamp(x, 0.0f, static_cast<float>(line.size() - 1)))];
}

// The layers follow from far to near.

void paintSky(Canvas& canvas, const Layout& layout) {
    constexpr Colour kStops[] = {fromHex(0xffdfae), fromHex(0xfbb592), fromHex(0xd598ab), fromHex(0x8b8aba),
                                 fromHex(0x4c6ea4)};
    const int octaves = layout.octaves(3, 6);
    const std::vector<float> top(static_cast<size_t>(canvas.width()), -1.0f);
    canvas.fillBelow(top, static_cast<int>(layout.horizon) + 2, [&](int column, int row) {
        const float x = static_cast<float>(column), y = static_cast<float>(row);
        const float up = clamp01(1 - y / layout.horizon);
        const float stop = std::min(std::pow(up, 0.8f) * 4, 3.999f);
        const auto below = static_cast<size_t>(stop);
        Colour colour = mix(kStops[below], kStops[below + 1], stop - static_cast<float>(below));
        const float glow = layout.sunGlow({x, y}, 0.17f);
        colour = mix(colour, kSunlight, 0.8f * glow);

        const float u = x / layout.unit, v = (y - layout.horizon) / layout.unit;
        // Bent by coarse noise and drawn out sideways, noise looks like cloud streaks.
        const float bend = noise(u * 1.3f, v * 2, 3);
        const float puff = fractal(u * 2.3f + bend, v * 8 + bend * 1.8f, octaves, 11);
        const float cloud = ramp(0.46f, 0.66f, puff) * ramp(0.08f, 0.3f, up);
        // Clouds are bright where they are thin and lit from below.
        const float lit = ramp(0.75f, 0.5f, puff) * 0.6f + ramp(0, 0.35f, glow);
        const Colour shadow = mix(fromHex(0xc98fa0), fromHex(0x8f86b0), up);
        colour = mix(colour, mix(shadow, fromHex(0xffd9b8), lit), cloud * 0.8f);
        const float edge = 0.047f * layout.unit - distance({x, y}, layout.sun);
        colour = mix(colour, fromHex(0xfffbe6), clamp01(edge / (0.004f * layout.unit) + 0.5f));
        // Less than a level of grain keeps the gradient from showing bands.
        colour = colour * (1 + (latticeValue(column, row, 5) - 0.5f) * 0.012f);
        return Paint{colour, std::floor(mix(36, 20, up))};
    });
}

void paintBirds(Canvas& canvas, const Layout& layout) {
    Dice dice(77);
    for (int i = 0; i < 7; ++i) {
        const Point at = {layout.sun.x + layout.unit * dice.between(0.0f, 0.3f),
                          layout.horizon - layout.unit * dice.between(0.31f, 0.42f)};
        const float span = layout.unit * dice.between(0.008f, 0.014f);
        const auto ink = [](float, float) { return Paint{fromHex(0x4a4560), 40}; };
        for (const float side : {-span, span}) {
            const Point bow = {at.x + side * 0.5f, at.y - span * 0.45f};
            canvas.stroke(at, span * 0.1f, bow, span * 0.09f, ink);
            canvas.stroke(bow, span * 0.09f, {at.x + side, at.y - span * 0.2f}, span * 0.03f, ink);
        }
    }
}

struct Hills {
    float lift, height;  ///< of the ridge above the horizon, in units
    float cells;         ///< of ridge noise, a unit
    float trees;         ///< height of the conifers along the ridge, in units
    float depth;
    Colour colour;
    uint32_t seed;
};

/// The height of a row of pointed trees at `x`, 0..1; one tree stands somewhere in each cell of length 1.
float coniferRow(float x, uint32_t seed) {
    float height = 0;
    for (int i = -1; i <= 1; ++i) {
        const int cell = static_cast<int>(std::floor(x)) + i;
        const float middle = static_cast<float>(cell) + latticeValue(cell, 1, seed);
        const float tall = mix(0.45f, 1.0f, latticeValue(cell, 2, seed));
        height = std::max(height, tall * (1 - std::abs(x - middle) / (0.75f * tall)));
    }
    return height;
}

void paintHills(Canvas& canvas, const Layout& layout, const Hills& hills) {
    const std::vector<float> ridge = makeLine(layout, [&](float x) {
        const float u = x / layout.unit;
        const float folds = fractal(u * hills.cells, 0.5f, layout.octaves(hills.cells, 7), hills.seed);
        const float crest = 1 - std::abs(2 * folds - 1);
        const float trees = hills.trees > 0 ? coniferRow(u / (hills.trees * 0.33f), hills.seed) : 0;
        return layout.horizon -
               layout.unit * (hills.lift + hills.height * crest * crest + hills.trees * trees);
    });
    const int octaves = layout.octaves(17, 5);
    canvas.fillBelow(ridge, static_cast<int>(layout.horizon) + 2, [&](int column, int row) {
        const float x = static_cast<float>(column), y = static_cast<float>(row);
        const float u = x / layout.unit * 17, v = y / layout.unit * 30;
        const float below = (y - ridge[static_cast<size_t>(column)]) / layout.unit;
        // Folds fall off to both sides of the ridges; what they lose a step towards the light is their
        // shading.
        const auto fold = [&](float a, float b) {
            return std::abs(2 * fractal(a + 0.5f * noise(b, a, 7), b * 0.55f, octaves, hills.seed + 40) - 1);
        };
        const float relief = fold(u - 0.12f, v - 0.12f) - fold(u, v);
        Colour colour = hills.colour * (0.95f + 1.7f * relief);
        colour = mix(colour, kSunlight, 0.55f * layout.sunGlow({x, y}, 0.2f));
        colour = mix(colour, kMist, 0.8f * ramp(0.03f, hills.lift + 0.85f * hills.height, below));
        return Paint{colour, hills.depth};
    });
}

/// A conifer seen from the side; its outline is a saw of drooping boughs.
void paintFir(Canvas& canvas, const Layout& layout, Point foot, float height, const Paint& paint,
              uint32_t seed) {
    const int top = std::max(static_cast<int>(foot.y - height), 0);
    for (int y = top; y < std::min(static_cast<int>(foot.y), canvas.height()); ++y) {
        const float down = clamp01((static_cast<float>(y) + 0.5f - (foot.y - height)) / height);
        const float boughs = down * 8 + latticeValue(0, 0, seed);
        const float bough = boughs - std::floor(boughs);
        const float spread = down > 0.94f ? 0.02f : 0.23f * down * mix(0.55f, 1.0f, bough);
        for (const int side : {-1, 1}) {
            const float uneven = mix(0.7f, 1.15f, latticeValue(static_cast<int>(boughs), side, seed));
            const float half = height * spread * uneven;
            for (int step = 0; static_cast<float>(step) < half; ++step) {
                const int x = static_cast<int>(foot.x) + (side > 0 ? step : -1 - step);
                if (x < 0 || x >= canvas.width()) continue;
                const float out = static_cast<float>(step) / half;
                const float drooped = boughs - 0.5f * out;
                const float needles = noise(static_cast<float>(x) / layout.unit * 170, drooped * 4, seed);
                const float shade = drooped - std::floor(drooped);
                const Colour colour = paint.colour * (1.05f + 0.3f * needles - 0.45f * shade);
                canvas.blend(x, y, clamp01(half - static_cast<float>(step)), {colour, paint.depth});
            }
        }
    }
}

/// How far the wooded spits at both sides reach into the lake: the shore's rows below the horizon.
float spitReach(const Layout& layout, float x) {
    const float right = ramp(0.68f, 1.0f, x / layout.width), left = ramp(0.34f, 0.02f, x / layout.width);
    return layout.unit * (right * 0.045f + left * 0.03f);
}

void paintSpits(Canvas& canvas, const Layout& layout) {
    const auto horizon = makeLine(layout, [&](float) { return layout.horizon; });
    canvas.fillBelow(horizon, static_cast<int>(layout.horizon + 0.05f * layout.unit), [&](int, int y) {
        return Paint{fromHex(0x2c3f3c), layout.groundDepth(static_cast<float>(y))};
    });
    Dice dice(311);
    const int firs = layout.count(230);
    for (int i = 0; i < firs; ++i) {
        const float row = static_cast<float>(i) / static_cast<float>(firs);  // from the back to the shore
        const float x = dice.between(0, layout.width);
        const float reach = spitReach(layout, x);
        const float height = (0.02f * layout.unit + reach * 2.7f) * dice.between(0.55f, 1.25f);
        if (reach < 0.003f * layout.unit) continue;
        const float y = layout.horizon + reach * row;
        const Colour colour = mix(mix(fromHex(0x76839a), fromHex(0x2a4644), row), kSunlight,
                                  0.5f * layout.sunGlow({x, y - height}, 0.2f));
        paintFir(canvas, layout, {x, y + 1}, height, {colour, layout.groundDepth(y)},
                 900 + static_cast<uint32_t>(i));
    }
}

void paintLake(Canvas& canvas, const Layout& layout) {
    const auto shore = makeLine(layout, [&](float x) { return layout.horizon + spitReach(layout, x); });
    const int octaves = layout.octaves(8, 4);
    canvas.fillBelow(shore, canvas.height(), [&](int column, int row) {
        const float x = static_cast<float>(column) + 0.5f, y = static_cast<float>(row) + 0.5f;
        const float edge = shore[static_cast<size_t>(column)];
        const float near = (y - layout.horizon) / (layout.height - layout.horizon);
        const float far = 1 / (near + 0.06f);  // ripples shrink towards the horizon
        const float u = (x - layout.sun.x) / layout.unit;
        const float ripple = fractal(u * 7 * std::sqrt(far), far * 26, octaves, 61) - 0.5f;

        const float mirrored = edge - 0.9f * (y - edge) + ripple * layout.unit * (0.02f + 0.12f * near);
        const int from_row =
            std::clamp(static_cast<int>(mirrored), 0, std::max(static_cast<int>(edge) - 1, 0));
        const int from_column = static_cast<int>(x + ripple * layout.unit * 0.02f);
        Colour colour = canvas.colourAt(std::clamp(from_column, 0, canvas.width() - 1), from_row);
        colour = mix(colour * 0.93f, fromHex(0x355d80), 0.12f + 0.45f * near) * (1 + ripple * 0.6f);
        const float path = bell(u / (0.035f + 0.15f * near)) * ramp(0.04f, 0.2f, ripple + 0.06f * (1 - near));
        colour = mix(colour, fromHex(0xfff1c9), 0.85f * path);
        colour = mix(colour, kMist, 0.5f * bell((y - edge) / (0.012f * layout.unit)));
        return Paint{colour, layout.groundDepth(y)};
    });
}

/// The near edge of the lake.
std::vector<float> makeBank(const Layout& layout) {
    return makeLine(layout, [&](float x) {
        const float open = bell((x / layout.width - 0.56f) / 0.24f);
        const float rough = fractal(x / layout.unit * 5, 4.5f, layout.octaves(5, 6), 71) - 0.5f;
        return mix(layout.horizon, layout.height, mix(0.36f, 0.68f, open)) + rough * 0.07f * layout.unit;
    });
}

Colour meadowColour(const Layout& layout, Point at) {
    const float near = clamp01((at.y - layout.horizon) / (layout.height - layout.horizon));
    const float far = 1 / (near + 0.1f);
    const float patch = fractal((at.x - layout.width * 0.5f) / layout.unit * far * 1.6f, far * 5, 4, 81);
    const Colour grass = mix(fromHex(0x35572f), fromHex(0x9c9a48), ramp(0.3f, 0.72f, patch));
    return mix(grass, fromHex(0xe8b866), 0.5f * layout.sunGlow(at, 0.45f)) * mix(1.1f, 0.55f, near * near);
}

void paintMeadow(Canvas& canvas, const Layout& layout, const std::vector<float>& bank) {
    const int octaves = layout.octaves(30, 4);
    canvas.fillBelow(bank, canvas.height(), [&](int column, int row) {
        const float x = static_cast<float>(column), y = static_cast<float>(row);
        const float below = (y - bank[static_cast<size_t>(column)]) / layout.unit;
        const float soil = fractal(x / layout.unit * 30, y / layout.unit * 60, octaves, 83);
        const Colour earth = fromHex(0x4d4434) * mix(0.6f, 1.5f, soil);
        const Colour grass = meadowColour(layout, {x, y}) * mix(0.6f, 1.15f, soil);
        return Paint{mix(earth, grass, ramp(0.002f, 0.02f, below)), layout.groundDepth(y)};
    });
}

/// A curved blade with the paint `low` at its foot and `high` at its tip, which is `reach` away.
void paintBlade(Canvas& canvas, Point foot, Point reach, float radius, const Paint& low, const Paint& high) {
    constexpr int kPieces = 4;
    Point from = foot;
    for (int i = 0; i < kPieces; ++i) {
        const float begin = static_cast<float>(i) / kPieces, end = static_cast<float>(i + 1) / kPieces;
        const Point to = {foot.x + reach.x * end * end, foot.y + reach.y * end};
        const auto shade = [&](float along, float across) {
            const float t = mix(begin, end, clamp01(along));
            return Paint{mix(low.colour, high.colour, t) * (1 + 0.15f * across),
                         mix(low.depth, high.depth, t)};
        };
        canvas.stroke(from, radius * (1 - begin * 0.95f), to, radius * (1 - end * 0.95f), shade);
        from = to;
    }
}

void paintMeadowGrass(Canvas& canvas, const Layout& layout, const std::vector<float>& bank) {
    constexpr Colour kPetals[] = {fromHex(0xe8553f), fromHex(0xf7efe0), fromHex(0xf4c542), fromHex(0xc98bd0)};
    Dice dice(401);
    const int blades = layout.count(6000);
    for (int i = 0; i < blades; ++i) {
        const float row = std::sqrt(static_cast<float>(i) / static_cast<float>(blades));  // from far to near
        const Point foot = {dice.between(0, layout.width),
                            mix(layout.horizon + 0.1f * layout.unit, layout.height, row)};
        const float size = layout.unit * mix(0.35f, 1.0f, row);
        const Point reach = {size * dice.between(-0.018f, 0.018f), size * dice.between(-0.04f, -0.012f)};
        const float light = dice.between(0.75f, 1.35f), hue = dice.between(0, 1);
        if (foot.y < rowOf(bank, foot.x) + 0.006f * layout.unit) continue;
        const Colour low = meadowColour(layout, foot) * (light * 0.7f);
        const Colour high = mix(low * 1.7f, fromHex(0xe9c877), 0.25f + 0.2f * hue);
        // Short grass is the ground's texture: it keeps the ground's depth, so that the slope stays smooth.
        const Paint tip = {high, layout.groundDepth(foot.y + reach.y)};
        paintBlade(canvas, foot, reach, size * 0.0022f, {low, layout.groundDepth(foot.y)}, tip);

        const float bed = noise(foot.x / layout.unit * 5, foot.y / layout.unit * 12, 91);
        if (dice.between(0.15f, 2.8f) > bed * bed) continue;
        const Colour petal = kPetals[static_cast<size_t>(hue * 3.99f)];
        const float radius = size * 0.0052f * light;
        canvas.ellipse({foot.x + reach.x, foot.y + reach.y}, radius, radius * 0.7f, hue - 0.5f, [&](Point p) {
            const Colour heart = petal * (0.55f + 0.5f * ramp(0.1f, 0.6f, distance(p, {0, -0.2f})));
            return Paint{heart * (1 - 0.2f * p.y), tip.depth};
        });
    }
}

/// Grass around the foot of something, so that it stands in the meadow.
void paintTuft(Canvas& canvas, const Layout& layout, Point foot, float spread, float length, uint32_t seed) {
    Dice dice(seed);
    for (int i = 0; i < 44; ++i) {
        const Point from = {foot.x + dice.between(-spread, spread),
                            foot.y + spread * dice.between(0.1f, 0.5f)};
        const Point reach = {length * dice.between(-0.5f, 0.5f), -length * dice.between(0.5f, 1.0f)};
        const Colour low = meadowColour(layout, from) * dice.between(0.4f, 0.9f);
        const float depth = layout.groundDepth(from.y);
        paintBlade(canvas, from, reach, length * 0.05f, {low, depth},
                   {mix(low * 1.8f, kSunlight, 0.2f), depth});
    }
}

/// Stones at the water's edge: halves of ellipsoids, in depth as in shading.
void paintStones(Canvas& canvas, const Layout& layout, const std::vector<float>& bank) {
    struct Stone {
        float across, size;
    };
    for (const Stone stone : {Stone{0.345f, 0.026f}, Stone{0.53f, 0.022f}, Stone{0.57f, 0.036f},
                              Stone{0.612f, 0.02f}, Stone{0.86f, 0.032f}}) {
        const float x = stone.across * layout.width, radius = stone.size * layout.unit;
        const float y = rowOf(bank, x), depth = layout.groundDepth(y + radius * 0.5f);
        const auto seed = static_cast<uint32_t>(stone.across * 1000);
        canvas.ellipse({x, y}, radius * 1.25f, radius * 0.8f, 0, [&](Point p) {
            const float z = std::sqrt(std::max(0.0f, 1 - p.x * p.x - p.y * p.y));
            const float grain = fractal(p.x * 3, p.y * 3, 4, seed) - 0.5f;
            const float light = clamp01(0.3f - 0.75f * p.y + 0.25f * z) * 0.9f + grain * 0.7f;
            return Paint{mix(fromHex(0x454650), fromHex(0xe3c3a6), light), depth + 8 * z};
        });
        paintTuft(canvas, layout, {x, y + radius * 0.5f}, radius * 1.2f, radius * 0.9f, seed);
    }
}

void paintReeds(Canvas& canvas, const Layout& layout, const std::vector<float>& bank) {
    Dice dice(503);
    for (const float middle : {0.41f, 0.665f}) {
        for (int i = 0; i < 24; ++i) {
            const float u = layout.unit;
            const float x = middle * layout.width + u * dice.between(-0.08f, 0.08f);
            const Point foot = {x, rowOf(bank, x) + u * dice.between(-0.012f, 0.014f)};
            const Point reach = {u * dice.between(-0.03f, 0.03f), u * dice.between(-0.18f, -0.06f)};
            const float depth = layout.groundDepth(foot.y);
            paintBlade(canvas, foot, reach, u * 0.0026f, {fromHex(0x36472b), depth},
                       {fromHex(0xb3a05a), depth});
            if (i % 2 == 0) continue;
            const Point tip = {foot.x + reach.x * 0.9f, foot.y + reach.y * 0.95f};
            canvas.stroke(
                tip, u * 0.0048f, {tip.x + reach.x * 0.15f, tip.y - u * 0.027f}, u * 0.004f,
                [&](float, float across) {
                    return Paint{mix(fromHex(0x38241a), fromHex(0xa8713f), across * 0.5f + 0.5f), depth};
                });
        }
    }
}

/// One birch; it grows branch by branch.
class Birch {
  public:
    Birch(Canvas& canvas, const Layout& layout, float depth, float size, uint32_t seed)
        : m_canvas(canvas), m_stage(layout), m_depth(depth), m_size(size), m_dice(seed) {}

    /// Draws a branch that starts at `from` towards `angle` (radians from straight up), and what grows on it.
    /// Level 0 is the trunk, 1 a limb, 2 a twig with leaves.
    void grow(Point from, float angle, float length, float radius, int level) {
        constexpr int kPieces = 7;
        constexpr float kBend[] = {0.05f, 0.2f, 0.25f};
        for (int i = 0; i < kPieces; ++i) {
            angle += m_dice.between(-kBend[level], kBend[level]);
            if (level == 2) angle += angle > 0 ? 0.14f : -0.14f;  // twigs hang
            const float step = length / kPieces;
            const Point to = {from.x + std::sin(angle) * step, from.y - std::cos(angle) * step};
            paintBark(from, radius, to, radius * 0.85f, level);
            from = to;
            radius *= 0.85f;
            if (level == 2) paintLeaves(from);
            if (level == 2 || (level == 0 && i == 0)) continue;
            for (const float side : {-1.0f, 1.0f}) {
                if (level == 1 && (i % 2 == 0) == (side > 0)) continue;
                const float shorter = level == 0 ? 0.5f - 0.035f * static_cast<float>(i) : 0.5f;
                const float spread = side * m_dice.between(0.45f, 0.95f);
                const float share = shorter * m_dice.between(0.75f, 1.1f);
                grow(from, angle + spread, length * share, radius * 0.45f, level + 1);
            }
        }
    }

  private:
    void paintBark(Point from, float ra, Point to, float rb, int level) {
        m_canvas.stroke(from, ra, to, rb, [&](float along, float across) {
            const float lit = clamp01(0.5f + 0.5f * across);  // from the right, where the sun is
            if (level > 0) return Paint{mix(fromHex(0x3a2f33), fromHex(0xa58a7c), lit), m_depth};
            const float row = mix(from.y, to.y, along) / m_size;
            const float scar = ramp(0.64f, 0.74f, noise(across * 0.9f + 7, row * 85, 131));
            const Colour bark = mix(fromHex(0x857f93), fromHex(0xfff0dc), lit) *
                                mix(0.9f, 1.1f, noise(across * 4, row * 140, 133));
            return Paint{mix(bark, fromHex(0x2c2528), scar * 0.8f), m_depth};
        });
    }

    void paintLeaves(Point around) {
        for (int i = 0; i < 5; ++i) {
            const Point at = {around.x + m_size * m_dice.between(-0.026f, 0.026f),
                              around.y + m_size * m_dice.between(-0.02f, 0.03f)};
            const float shine = clamp01(m_dice.between(-0.2f, 0.75f) + 0.7f * m_stage.sunGlow(at, 0.4f));
            const Colour colour = mix(mix(fromHex(0x44552a), fromHex(0xc08f2c), shine), fromHex(0xffdf80),
                                      ramp(0.6f, 1.2f, shine));
            const float radius = m_size * m_dice.between(0.0055f, 0.01f);
            const float depth = m_depth + std::floor(m_dice.between(-3, 4));
            m_canvas.ellipse(at, radius, radius * 0.55f, m_dice.between(0, kPi), [&](Point p) {
                return Paint{colour * (1 + 0.2f * p.y - 0.12f * bell(p.y * 5)), depth};
            });
        }
    }

    Canvas& m_canvas;
    const Layout& m_stage;
    float m_depth;
    float m_size;
    Dice m_dice;
};

void paintBirch(Canvas& canvas, const Layout& layout, Point place, float size, float lean, uint32_t seed) {
    const Point foot = {place.x * layout.width, mix(layout.horizon, layout.height, place.y)};
    // Upright pictures have room for taller trees.
    const float length = size * std::min(layout.height, 1.3f * layout.unit);
    Birch(canvas, layout, layout.groundDepth(foot.y), length, seed)
        .grow(foot, lean, length, 0.024f * length, 0);
    paintTuft(canvas, layout, foot, 0.07f * length, 0.08f * length, seed);
}

/// A round paper lantern that hangs from a wooden post.
void paintLantern(Canvas& canvas, const Layout& layout) {
    constexpr float kBulge = 29;
    const float u = layout.unit, radius = 0.112f * u;
    const Point middle = {layout.width * 0.685f, layout.height * 0.6f};
    const Point foot = {middle.x + 0.175f * u, layout.height * 0.985f};
    const float beam = middle.y - 0.25f * u;
    const float depth = layout.groundDepth(foot.y) - 5;
    const auto wood = [&](float along, float across) {
        const float grain = fractal(across * 3 + 5, along * 40, 3, 151);
        const Colour colour = mix(fromHex(0xb97f55), fromHex(0x2f211f), 0.5f + 0.5f * across);
        return Paint{colour * mix(0.7f, 1.2f, grain), depth};
    };
    canvas.stroke(foot, 0.0135f * u, {foot.x, beam - 0.05f * u}, 0.011f * u, wood);
    canvas.stroke({foot.x - 0.085f * u, beam}, 0.006f * u, {foot.x, beam + 0.085f * u}, 0.006f * u, wood);
    canvas.stroke({foot.x + 0.035f * u, beam}, 0.009f * u, {middle.x - 0.05f * u, beam}, 0.008f * u, wood);
    const auto cord = [&](float, float) { return Paint{fromHex(0x2c1d1d), depth}; };
    canvas.stroke({middle.x, beam}, 0.0026f * u, {middle.x, middle.y - radius}, 0.0026f * u, cord);
    const auto silk = [&](float along, float) {
        return Paint{mix(fromHex(0x7d1f1c), fromHex(0xf0784a), clamp01(along)), depth};
    };
    for (int i = -3; i <= 3; ++i) {
        const Point top = {middle.x + static_cast<float>(i) * 0.004f * u, middle.y + radius};
        canvas.stroke(top, 0.0024f * u, {mix(middle.x, top.x, 1.4f), top.y + 0.075f * u}, 0.0016f * u, silk);
    }
    canvas.ellipse(middle, radius, radius, 0, [&](Point p) {
        const float z = std::sqrt(std::max(0.0f, 1 - p.x * p.x - p.y * p.y));
        // Hoops run round the ball at even angles; it is seen a little from below.
        const float latitude = std::asin(std::clamp(p.y * 0.985f + z * 0.17f, -1.0f, 1.0f)) / kPi + 0.5f;
        const float hoop = std::abs(latitude * 15 - std::floor(latitude * 15) - 0.5f);
        const float fibre = fractal(p.x * 5, p.y * 22, 4, 161);
        Colour paper = mix(fromHex(0x8f1420), fromHex(0xe93c26), z);
        paper = mix(paper, fromHex(0xffc55c), 0.75f * bell(distance(p, {0, 0.2f}) / 0.72f)) *
                mix(0.88f, 1.12f, fibre);
        const float sunlit = ramp(0.6f, 0, z) * ramp(0.1f, 0.9f, -p.x * 0.9f - p.y * 0.35f);
        paper = mix(paper, kSunlight, 0.6f * sunlit);
        return Paint{paper * (1 - 0.38f * ramp(0.14f, 0.02f, hoop)), depth + kBulge * z};
    });
    const auto rim = [&](float along, float) {
        return Paint{mix(fromHex(0x8a5a3a), fromHex(0x1f1516), clamp01(along)), depth + 5};
    };
    for (const float end : {middle.y - radius * 0.965f, middle.y + radius * 0.965f}) {
        canvas.stroke({middle.x - 0.028f * u, end}, 0.008f * u, {middle.x + 0.028f * u, end}, 0.008f * u,
                      rim);
    }
    paintTuft(canvas, layout, {foot.x, foot.y - 0.01f * u}, 0.06f * u, 0.07f * u, 157);
}

/// The tall blades along the bottom edge.
void paintFrontGrass(Canvas& canvas, const Layout& layout) {
    Dice dice(601);
    const int blades = layout.count(330);
    for (int i = 0; i < blades; ++i) {
        const float row = static_cast<float>(i) / static_cast<float>(blades);  // from far to near
        const Point foot = {dice.between(-0.02f, 1.02f) * layout.width,
                            layout.height + layout.unit * mix(-0.02f, 0.03f, row)};
        const float clump = noise(foot.x / layout.unit * 6, 0.5f, 171);
        const Point reach = {layout.unit * dice.between(-0.05f, 0.05f),
                             -layout.unit * mix(0.05f, 0.15f, clump) * dice.between(0.6f, 1.2f)};
        const float light = dice.between(0.6f, 1.1f);
        const Colour high = mix(fromHex(0x5f7c33), fromHex(0xe3c069), dice.between(0, 0.9f)) * light;
        const float depth = layout.groundDepth(foot.y);
        paintBlade(canvas, foot, reach, layout.unit * dice.between(0.003f, 0.006f),
                   {fromHex(0x182a1c) * light, depth}, {high, depth});
    }
}

}  // namespace

SampleScene makeSampleScene(int width, int height) {
    constexpr int kLeast = 64, kMost = 8192;
    constexpr Hills kRanges[] = {
        {0.06f, 0.13f, 1.5f, 0, 50, fromHex(0x9a8fbd), 21},
        {0.035f, 0.085f, 2.1f, 0, 62, fromHex(0x7a7fae), 22},
        {0.018f, 0.06f, 2.6f, 0.012f, 74, fromHex(0x566b96), 23},
        {0.006f, 0.04f, 3.1f, 0.02f, 86, fromHex(0x3c5c7a), 24},
    };
    Canvas canvas(std::clamp(width, kLeast, kMost), std::clamp(height, kLeast, kMost));
    const Layout layout(canvas);
    paintSky(canvas, layout);
    paintBirds(canvas, layout);
    for (const Hills& hills : kRanges) paintHills(canvas, layout, hills);
    paintSpits(canvas, layout);
    paintLake(canvas, layout);
    const std::vector<float> bank = makeBank(layout);
    paintMeadow(canvas, layout, bank);
    paintMeadowGrass(canvas, layout, bank);
    paintStones(canvas, layout, bank);
    paintReeds(canvas, layout, bank);
    paintBirch(canvas, layout, {0.31f, 0.56f}, 0.36f, 0.06f, 703);
    paintBirch(canvas, layout, {0.18f, 0.7f}, 0.62f, 0.02f, 701);
    paintLantern(canvas, layout);
    paintFrontGrass(canvas, layout);
    return {canvas.photo(), canvas.depth()};
}

}  // namespace quorvane::media
