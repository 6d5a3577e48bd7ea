#include "software/mesh_drawing.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <utility>

#include "composition/bt709.h"
#include "software/clipped_cell.h"
#include "software/kernels/cell.h"
#include "software/workers.h"

namespace quorvane::software {
namespace {

/// Rows of the picture that are drawn together: few enough for the nearest caches but one, and enough for all
/// threads.
constexpr int kBandRows = 32;
static_assert(kBandRows <= kMostBandRows);

/// A triangle that shows less of its area is a wall between near and far: it is too narrow for a pixel's
/// centre to stand for the pixel.
constexpr double kEdgeOnShare = 0.25;

/// Where there could be a Facing.
constexpr int kNoTriangle = 3;

int blocksOf(int count) { return (count + kBlock - 1) / kBlock; }

/// The usual patterns, in which no two samples share a row or column.
constexpr float kTwo[][2] = {{0.25f, 0.25f}, {-0.25f, -0.25f}};
constexpr float kFour[][2] = {{-0.125f, -0.375f}, {0.375f, -0.125f}, {-0.375f, 0.125f}, {0.125f, 0.375f}};
constexpr float kEight[][2] = {{0.0625f, -0.1875f},  {-0.0625f, 0.1875f}, {0.3125f, 0.0625f},
                               {-0.1875f, -0.3125f}, {-0.3125f, 0.3125f}, {-0.4375f, -0.0625f},
                               {0.1875f, 0.4375f},   {0.4375f, -0.4375f}};

const float (*offsetsOf(int samples))[2] { return samples == 2 ? kTwo : samples == 4 ? kFour : kEight; }

}  // namespace

/// What all bands of a frame are drawn from.
struct MeshDrawing::Frame {
    int samples = 1;
    int width = 0, height = 0;
    float far_q = 0;
    float edge_on_area = 0;                           ///< square pixels
    double column_x = 0, column_y = 0, column_w = 0;  ///< clip coordinates of the mesh's right edge
    double row_x = 0, row_y = 0, row_w = 0;           ///< and of its edge at v = 1
    double ahead_x = 0, ahead_y = 0, ahead_w = 0;     ///< and of one unit farther
    float constant_x = 0, constant_y = 0, constant_w = 0;
    std::vector<float> columns_x, columns_y, columns_w;
    std::vector<float> columns_u;
    std::vector<float> rows_v;

    int stride = 0;                ///< vertices a row
    std::vector<float> x, y, q;    ///< of the vertices
    std::vector<Extent> extents;   ///< of the blocks of vertices, each with the first vertex of the next one
    std::vector<Extent> rows;      ///< of the rows of vertices
    std::vector<uint8_t> facings;  ///< of the cells
    int facings_stride = 0;

    /// Calls visit(row, block, drawable) for the blocks of cells that may reach between two heights: whether
    /// they lie in front of the nearest plane.
    template <typename Visit>
    void eachBlock(int cells_across, float top, float bottom, const Visit& visit) const {
        const auto reaches = [=](const Extent& lower, const Extent& upper) {
            return !(lower.drawable && upper.drawable) ||
                   (std::max(lower.bottom, upper.bottom) >= top && std::min(lower.top, upper.top) <= bottom);
        };
        const size_t vertex_blocks = static_cast<size_t>(blocksOf(cells_across + 1));
        for (size_t row = 0; row + 1 < rows.size(); ++row) {
            if (!reaches(rows[row], rows[row + 1])) continue;
            for (int block = 0; block < blocksOf(cells_across); ++block) {
                const Extent& lower = extents[row * vertex_blocks + static_cast<size_t>(block)];
                const Extent& upper = extents[(row + 1) * vertex_blocks + static_cast<size_t>(block)];
                if (reaches(lower, upper))
                    visit(static_cast<int>(row), block, lower.drawable && upper.drawable);
            }
        }
    }

    CellBlock cells(int row, int block, int cells_across) const {
        const size_t lower =
            static_cast<size_t>(row) * static_cast<size_t>(stride) + static_cast<size_t>(block) * kBlock;
        const size_t upper = lower + static_cast<size_t>(stride);
        return {&x[lower],
                &y[lower],
                &q[lower],
                &x[upper],
                &y[upper],
                &q[upper],
                &columns_u[static_cast<size_t>(block) * kBlock],
                rows_v[static_cast<size_t>(row)],
                rows_v[static_cast<size_t>(row) + 1],
                std::min(kBlock, cells_across - block * kBlock)};
    }
};

/// What a thread draws a band in.
struct MeshDrawing::Room {
    std::vector<float> q, u, v;
    std::vector<uint8_t> marks;  ///< pixels that a silhouette crosses
    std::vector<int32_t> slots;
    std::vector<uint8_t> tiles;
    std::vector<float> sample_planes;
    int used_slots = 0;
    int mark_stride = 0;
};

/// How the photo's colours are kept: each the mean of `side` x `side` texels, from every `step` texels on. It
/// is read once for 2 x 2 pixels, and has about the texels that these show.
struct MeshDrawing::ColourGrid {
    size_t step, side;

    bool operator==(const ColourGrid& other) const { return step == other.step && side == other.side; }

    /// A photo of about the picture's size would be blurred by colours from every second texel only, and a
    /// far smaller one by means of 2 x 2.
    static ColourGrid of(int photo_width, int picture_width) {
        const double texels = static_cast<double>(photo_width) / picture_width;
        return {texels >= 1.125 ? 2u : 1u, texels >= 0.625 ? 2u : 1u};
    }
};

/// The photo as PlanarTexture has it.
struct MeshDrawing::PlanarTexels {
    ColourGrid grid;
    std::vector<uint8_t> luma, colours;
    int colour_width, colour_height;  ///< colours

    PlanarTexture texture(int photo_width, int photo_height) const {
        return {luma.data(),
                photo_width + 1,
                static_cast<float>(photo_width - 1),
                static_cast<float>(photo_height - 1),
                colours.data(),
                colour_width + 1,
                static_cast<float>(colour_width - 1),
                static_cast<float>(colour_height - 1),
                1.0f / static_cast<float>(grid.step),
                0.5f * static_cast<float>(grid.side - 1) / static_cast<float>(grid.step)};
    }
};

namespace {

/// A row of colours in Y'CbCr, and a copy of the last.
struct ColourRow {
    std::vector<uint8_t> cb, cr;

    explicit ColourRow(size_t colours) : cb(colours), cr(colours) {}

    /// Of two rows of the photo, 4 bytes a texel: the means of texels and of those kNext to the right, from
    /// every kStep texels on.
    template <size_t kStep, size_t kNext>
    void convert(const uint8_t* here, const uint8_t* below) {
        uint8_t *to_cb = cb.data(), *to_cr = cr.data();
        const size_t last = cb.size() - 1;
        for (size_t x = 0; x < last; ++x) {
            const auto mean = [=](size_t c) {  // times 256
                const size_t left = 4 * kStep * x + c, right = left + 4 * kNext;
                return static_cast<uint16_t>((here[left] + here[right] + below[left] + below[right]) << 6);
            };
            to_cb[x] = bt709::cb(mean(0), mean(1), mean(2));
            to_cr[x] = bt709::cr(mean(0), mean(1), mean(2));
        }
        to_cb[last] = to_cb[last - 1];
        to_cr[last] = to_cr[last - 1];
    }
};

void convertLuma(const uint8_t* rgba, std::vector<uint8_t>* luma) {
    uint8_t* to = luma->data();
    const size_t count = luma->size();
    for (size_t x = 0; x < count; ++x, rgba += 4) {
        const auto at = [rgba](size_t c) { return static_cast<uint16_t>(rgba[c] << 8); };
        to[x] = bt709::luma(at(0), at(1), at(2));
    }
}

/// Bytes of two rows next to each other.
void interleave(const std::vector<uint8_t>& here, const std::vector<uint8_t>& below, size_t step,
                uint8_t* out) {
    const uint8_t *first = here.data(), *second = below.data();
    const size_t count = here.size();
    for (size_t x = 0; x < count; ++x) {
        out[step * x] = first[x];
        out[step * x + 1] = second[x];
    }
}

/// Calls put(row, here, below) with what convert(row, &to) makes of each row and of the one below it. The
/// last is its own row below.
template <typename Row, typename Convert, typename Put>
void eachWithBelow(Workers* workers, int rows, const Row& empty, const Convert& convert, const Put& put) {
    std::vector<std::array<Row, 2>> converted(static_cast<size_t>(workers->count()), {empty, empty});
    const auto convertPiece = [&](int piece, int worker) {
        const int first = piece * kBandRows, end = std::min(first + kBandRows, rows);
        Row* here = &converted[static_cast<size_t>(worker)][0];
        Row* below = &converted[static_cast<size_t>(worker)][1];
        convert(first, below);
        for (int row = first; row < end; ++row) {
            std::swap(here, below);
            convert(std::min(row + 1, rows - 1), below);
            put(row, *here, *below);
        }
    };
    workers->run({{(rows + kBandRows - 1) / kBandRows, convertPiece}});
}

}  // namespace

MeshDrawing::MeshDrawing(const DrawingPath& path, int threads)
    : m_path(path), m_workers(std::make_unique<Workers>(threads)), m_frame(std::make_unique<Frame>()) {
    m_rooms.resize(static_cast<size_t>(m_workers->count()));
}

MeshDrawing::~MeshDrawing() = default;

void MeshDrawing::setPhoto(const uint8_t* rgb, int width, int height) {
    const size_t stride = static_cast<size_t>(width) + 1;
    std::vector<uint8_t> texels(4 * stride * (static_cast<size_t>(height) + 1));
    for (int row = 0; row <= height; ++row) {
        const uint8_t* from =
            rgb + 3 * static_cast<size_t>(std::min(row, height - 1)) * static_cast<size_t>(width);
        uint8_t* to = texels.data() + 4 * stride * static_cast<size_t>(row);
        for (int column = 0; column < width; ++column, from += 3, to += 4) {
            to[0] = from[0];
            to[1] = from[1];
            to[2] = from[2];
            to[3] = 255;
        }
        std::memcpy(to, to - 4, 4);
    }
    m_texels = std::move(texels);
    m_planar.reset();
    m_photo_width = width;
    m_photo_height = height;
}

void MeshDrawing::setShapedDepth(const uint8_t* depth, int width, int height) {
    const size_t stride = static_cast<size_t>(width) + 1 + kSlack;
    std::vector<float> distance(stride * (static_cast<size_t>(height) + 1));
    // A vertex lies between four cells, at their mean depth d, 0..1, and the vertex shader puts it at the
    // distance 32 - 0.4 (35 d - 32).
    for (int j = 0; j <= height; ++j) {
        const uint8_t* below = depth + static_cast<size_t>(std::max(j - 1, 0)) * static_cast<size_t>(width);
        const uint8_t* above =
            depth + static_cast<size_t>(std::min(j, height - 1)) * static_cast<size_t>(width);
        float* out = &distance[static_cast<size_t>(j) * stride];
        for (int i = 0; i <= width; ++i) {
            const int left = std::max(i - 1, 0), right = std::min(i, width - 1);
            const int sum = below[left] + below[right] + above[left] + above[right];
            out[i] = static_cast<float>(44.8 - 14.0 * sum / 1020.0);
        }
        std::fill(out + width + 1, out + stride, out[width]);
    }
    m_distance = std::move(distance);
    m_cells_across = width;
    m_cells_down = height;
}

void MeshDrawing::draw(const Camera& camera, int samples, const PictureBuffer& picture) {
    prepare(camera, samples, picture.width, picture.height);
    drawMesh([&](const Band& band, Room* room) { shadeBand(band, *room, picture); });
}

void MeshDrawing::draw(const Camera& camera, int samples, const PlanarPicture& picture) {
    prepare(camera, samples, picture.width, picture.height);
    const ColourGrid grid = ColourGrid::of(m_photo_width, picture.width);
    if (m_planar == nullptr || !(m_planar->grid == grid)) convertTexels(grid);
    drawMesh([&](const Band& band, Room* room) { shadeBand(band, *room, picture); });
}

void MeshDrawing::convertTexels(const ColourGrid& grid) {
    auto planar = std::make_unique<PlanarTexels>();
    const int step = static_cast<int>(grid.step), next = static_cast<int>(grid.side) - 1;
    planar->grid = grid;
    planar->colour_width = (m_photo_width + step - 1) / step;
    planar->colour_height = (m_photo_height + step - 1) / step;
    const size_t stride = static_cast<size_t>(m_photo_width) + 1;
    const auto texels = [&](int row) { return m_texels.data() + 4 * stride * static_cast<size_t>(row); };

    planar->luma.resize(2 * stride * static_cast<size_t>(m_photo_height));
    eachWithBelow(
        m_workers.get(), m_photo_height, std::vector<uint8_t>(stride),
        [&](int row, std::vector<uint8_t>* to) { convertLuma(texels(row), to); },
        [&](int row, const std::vector<uint8_t>& here, const std::vector<uint8_t>& below) {
            interleave(here, below, 2, &planar->luma[2 * stride * static_cast<size_t>(row)]);
        });

    const size_t colour_stride = static_cast<size_t>(planar->colour_width) + 1;
    planar->colours.resize(4 * colour_stride * static_cast<size_t>(planar->colour_height));
    eachWithBelow(
        m_workers.get(), planar->colour_height, ColourRow(colour_stride),
        [&](int row, ColourRow* to) {
            const uint8_t *here = texels(step * row), *below = texels(step * row + next);
            if (step == 2)
                to->convert<2, 1>(here, below);
            else if (next == 1)
                to->convert<1, 1>(here, below);
            else
                to->convert<1, 0>(here, below);
        },
        [&](int row, const ColourRow& here, const ColourRow& below) {
            uint8_t* to = &planar->colours[4 * colour_stride * static_cast<size_t>(row)];
            interleave(here.cb, below.cb, 4, to);
            interleave(here.cr, below.cr, 4, to + 2);
        });
    m_planar = std::move(planar);
}

void MeshDrawing::prepare(const Camera& camera, int samples, int width, int height) {
    Frame& frame = *m_frame;
    const size_t across = static_cast<size_t>(m_cells_across) + 1;
    frame.samples = samples;
    frame.width = width;
    frame.height = height;
    frame.far_q = 1.0f / camera.far_distance;
    frame.stride = m_cells_across + 1 + kSlack;
    const size_t stride = static_cast<size_t>(frame.stride);
    for (std::vector<float>* values :
         {&frame.columns_x, &frame.columns_y, &frame.columns_w, &frame.columns_u})
        values->resize(stride);
    for (std::vector<float>* values : {&frame.x, &frame.y, &frame.q})
        values->resize(stride * (static_cast<size_t>(m_cells_down) + 1) + kSlack);
    frame.rows_v.resize(static_cast<size_t>(m_cells_down) + 1);
    frame.extents.resize(static_cast<size_t>(blocksOf(m_cells_across + 1)) *
                         (static_cast<size_t>(m_cells_down) + 1));
    frame.rows.resize(static_cast<size_t>(m_cells_down) + 1);
    frame.facings_stride = m_cells_across + kSlack;
    if (samples > 1)
        frame.facings.resize(static_cast<size_t>(frame.facings_stride) * static_cast<size_t>(m_cells_down));

    // A vertex of the mesh stands at distance * (X (2u - 1) / 32, Y (2v - 1) / 32, -1). x and y are in pixels
    // times w.
    const auto entry = [&](int column, int row) {
        return static_cast<double>(camera.matrix.mat[column][row]);
    };
    const double half_width = width / 2.0, half_height = height / 2.0;
    const double x = static_cast<double>(camera.half_width) / 32.0;
    const double y = static_cast<double>(camera.half_height) / 32.0;
    frame.column_x = half_width * entry(0, 0) * x;
    frame.column_y = half_height * entry(0, 1) * x;
    frame.column_w = entry(0, 3) * x;
    frame.row_x = half_width * entry(1, 0) * y;
    frame.row_y = half_height * entry(1, 1) * y;
    frame.row_w = entry(1, 3) * y;
    frame.ahead_x = -half_width * entry(2, 0);
    frame.ahead_y = -half_height * entry(2, 1);
    frame.ahead_w = -entry(2, 3);
    frame.constant_x = static_cast<float>(half_width * entry(3, 0));
    frame.constant_y = static_cast<float>(half_height * entry(3, 1));
    frame.constant_w = static_cast<float>(entry(3, 3));
    // At rest, all triangles have this area, however far away.
    const double area = 2 * (frame.column_x / m_cells_across) * (frame.row_y / m_cells_down);
    frame.edge_on_area = static_cast<float>(area * kEdgeOnShare);
    for (size_t i = 0; i < across; ++i) {
        const double u = static_cast<double>(i) / m_cells_across;
        frame.columns_x[i] = static_cast<float>(frame.column_x * (2 * u - 1));
        frame.columns_y[i] = static_cast<float>(frame.column_y * (2 * u - 1));
        frame.columns_w[i] = static_cast<float>(frame.column_w * (2 * u - 1));
        frame.columns_u[i] = static_cast<float>(u * m_photo_width - 0.5);
    }
    for (size_t j = 0; j < frame.rows_v.size(); ++j)
        frame.rows_v[j] = static_cast<float>(static_cast<double>(j) / m_cells_down * m_photo_height - 0.5);

    for (Room& room : m_rooms) {
        const size_t pixels = static_cast<size_t>(width + kSlack) * kBandRows;
        for (std::vector<float>* plane : {&room.q, &room.u, &room.v}) plane->resize(pixels + kSlack);
        if (samples == 1) continue;
        const int sample_blocks = (width + kSampleBlock - 1) / kSampleBlock;
        room.mark_stride = sample_blocks * kSampleBlock;
        room.marks.resize(static_cast<size_t>(room.mark_stride) * kBandRows);
        room.slots.resize(static_cast<size_t>(sample_blocks) * kBandRows);
        room.tiles.resize(static_cast<size_t>(sample_blocks) * (kBandRows / kTile));
        // Threads that draw cannot report that memory ends.
        room.sample_planes.reserve(room.slots.size() * static_cast<size_t>(samples) * 3 * kSampleBlock);
    }
}

void MeshDrawing::drawMesh(const std::function<void(const Band&, Room*)>& shadeBand) {
    Frame& frame = *m_frame;
    std::vector<Workers::Step> steps = {{m_cells_down + 1, [&](int row, int) { placeRow(row, &frame); }}};
    if (frame.samples > 1) steps.push_back({m_cells_down, [&](int row, int) { findFacings(row, &frame); }});
    steps.push_back({(frame.height + kBandRows - 1) / kBandRows, [&](int band, int worker) {
                         Room* room = &m_rooms[static_cast<size_t>(worker)];
                         shadeBand(cover(band, room, frame), room);
                     }});
    m_workers->run(steps);
}

void MeshDrawing::placeRow(int row, Frame* frame) const {
    const double v = static_cast<double>(row) / m_cells_down;
    const auto axis = [&](const std::vector<float>& columns, int first, double part, double ahead,
                          float constant) {
        return Axis{&columns[static_cast<size_t>(first)], static_cast<float>(part * (2 * v - 1) + ahead),
                    constant};
    };
    const size_t start = static_cast<size_t>(row) * static_cast<size_t>(frame->stride);
    const int blocks = blocksOf(m_cells_across + 1);
    Extent* extents = &frame->extents[static_cast<size_t>(row) * static_cast<size_t>(blocks)];
    for (int block = 0; block < blocks; ++block) {
        const int first = block * kBlock;
        const size_t place = start + static_cast<size_t>(first);
        extents[block] = m_path.placeVertices(
            {&m_distance[place],
             axis(frame->columns_x, first, frame->row_x, frame->ahead_x, frame->constant_x),
             axis(frame->columns_y, first, frame->row_y, frame->ahead_y, frame->constant_y),
             axis(frame->columns_w, first, frame->row_w, frame->ahead_w, frame->constant_w),
             std::min(kBlock, m_cells_across + 1 - first), &frame->x[place], &frame->y[place],
             &frame->q[place]});
    }
    for (int block = 0; block + 1 < blocks; ++block) {
        const size_t next = start + static_cast<size_t>(block + 1) * kBlock;
        Extent& extent = extents[block];
        extent.top = std::min(extent.top, frame->y[next]);
        extent.bottom = std::max(extent.bottom, frame->y[next]);
        extent.drawable = extent.drawable && frame->q[next] > 0.0f && frame->q[next] <= kNearestQ;
    }
    Extent whole = extents[0];
    for (int block = 1; block < blocks; ++block) {
        whole.top = std::min(whole.top, extents[block].top);
        whole.bottom = std::max(whole.bottom, extents[block].bottom);
        whole.drawable = whole.drawable && extents[block].drawable;
    }
    frame->rows[static_cast<size_t>(row)] = whole;
}

void MeshDrawing::findFacings(int row, Frame* frame) const {
    uint8_t* facings = &frame->facings[static_cast<size_t>(row) * static_cast<size_t>(frame->facings_stride)];
    for (int block = 0; block < blocksOf(m_cells_across); ++block)
        m_path.findFacings(frame->cells(row, block, m_cells_across), frame->edge_on_area,
                           facings + block * kBlock);
}

/// What is seen in the rows of a band.
Band MeshDrawing::cover(int number, Room* room, const Frame& frame) const {
    Band band = {};
    band.width = frame.width;
    band.top = number * kBandRows;
    band.bottom = std::min(band.top + kBandRows, frame.height);
    band.centre_x = static_cast<float>(0.5 - frame.width / 2.0);
    band.centre_y = static_cast<float>(0.5 - frame.height / 2.0);
    band.q = room->q.data();
    band.u = room->u.data();
    band.v = room->v.data();
    band.stride = frame.width + kSlack;
    band.samples = frame.samples;
    std::fill(room->q.begin(), room->q.end(), frame.far_q);
    if (frame.samples > 1) markSilhouettes(frame, room, &band);

    // Half a pixel for the samples, and something for rounding.
    const float top = static_cast<float>(band.top) + band.centre_y - 1.0f;
    const float bottom = static_cast<float>(band.bottom) + band.centre_y;
    frame.eachBlock(m_cells_across, top, bottom, [&](int row, int block, bool drawable) {
        const CellBlock cells = frame.cells(row, block, m_cells_across);
        m_path.drawCells(cells, band);
        if (!drawable) drawClippedCells(cells, band);
    });
    return band;
}

namespace {

/// Calls blend(first, slot) for each block of a row's pixels that has samples: its first pixel, and its place
/// among the band's.
template <typename Blend>
void eachSlot(const Band& band, int y, const Blend& blend) {
    if (band.samples == 1) return;
    const int32_t* slots = band.slots + (y - band.top) * band.slot_stride;
    for (int block = 0; block < band.slot_stride; ++block)
        if (slots[block] >= 0) blend(block * kSampleBlock, static_cast<size_t>(slots[block]));
}

/// The pixels of a row of the picture, from `first` on.
PixelRow rowOf(const Band& band, int y, int first = 0) {
    const size_t start =
        static_cast<size_t>(y - band.top) * static_cast<size_t>(band.stride) + static_cast<size_t>(first);
    return {band.q + start, band.u + start, band.v + start};
}

/// A sample of a block of pixels.
PixelRow sampleOf(const Band& band, size_t slot, int sample) {
    const float* q =
        band.sample_planes +
        (slot * static_cast<size_t>(band.samples) + static_cast<size_t>(sample)) * 3 * kSampleBlock;
    return {q, q + kSampleBlock, q + 2 * kSampleBlock};
}

}  // namespace

/// Calls put(x, i) for the pixels of a block, i from 0, that a silhouette crosses.
template <typename Put>
void MeshDrawing::eachMarked(const Band& band, const Room& room, int y, int first, const Put& put) {
    const uint8_t* marks =
        &room.marks[static_cast<size_t>(y - band.top) * static_cast<size_t>(room.mark_stride)];
    for (int i = 0; i < std::min(kSampleBlock, band.width - first); ++i)
        if (marks[first + i] != 0) put(first + i, static_cast<size_t>(i));
}

void MeshDrawing::shadeBand(const Band& band, const Room& room, const PictureBuffer& picture) const {
    const float far_q = m_frame->far_q;
    const Texture texture = {m_texels.data(), m_photo_width + 1, static_cast<float>(m_photo_width - 1),
                             static_cast<float>(m_photo_height - 1)};
    for (int y = band.top; y < band.bottom; ++y) {
        uint8_t* row = picture.rgba + static_cast<size_t>(y) * picture.stride;
        m_path.shade(texture, rowOf(band, y), far_q, band.width, row);
        eachSlot(band, y, [&](int first, size_t slot) {
            std::array<int, 4 * kSampleBlock> sums = {};
            for (int s = 0; s < band.samples; ++s) {
                std::array<uint8_t, 4 * kSampleBlock> colours;
                m_path.shade(texture, sampleOf(band, slot, s), far_q, kSampleBlock, colours.data());
                for (size_t i = 0; i < sums.size(); ++i) sums[i] += colours[i];
            }
            eachMarked(band, room, y, first, [&](int x, size_t i) {
                for (size_t c = 0; c < 4; ++c)
                    row[4 * static_cast<size_t>(x) + c] =
                        static_cast<uint8_t>((sums[4 * i + c] + band.samples / 2) / band.samples);
            });
        });
    }
}

void MeshDrawing::shadeBand(const Band& band, const Room& room, const PlanarPicture& picture) const {
    const PlanarTexture texture = m_planar->texture(m_photo_width, m_photo_height);
    for (int y = band.top; y < band.bottom; y += 2) {
        const size_t pixel = static_cast<size_t>(y) * static_cast<size_t>(picture.width);
        uint8_t* const luma[] = {picture.luma + pixel, picture.luma + pixel + picture.width};
        m_path.shadePlanar(texture, {rowOf(band, y), rowOf(band, y + 1)}, m_frame->far_q, band.width, luma,
                           picture.cb + pixel / 4, picture.cr + pixel / 4);
        if (band.samples > 1) shadeMarked(texture, band, room, y, picture);
    }
}

/// The pixels of two rows that a silhouette crosses, and the colours that they have a part in.
void MeshDrawing::shadeMarked(const PlanarTexture& texture, const Band& band, const Room& room, int y,
                              const PlanarPicture& picture) const {
    const float far_q = m_frame->far_q;
    const int32_t* slots = band.slots + (y - band.top) * band.slot_stride;
    for (int block = 0; block < band.slot_stride; ++block) {
        if (slots[block] < 0 && slots[block + band.slot_stride] < 0) continue;
        const int first = block * kSampleBlock;
        std::array<int, kSampleBlock> sums = {};  // Cb and Cr of 2 x 2 pixels
        std::array<bool, kSampleBlock / 2> has_marked = {};
        for (int row = y; row < y + 2; ++row) {
            std::array<uint8_t, kSampleBlock> lumas;
            std::array<int16_t, 2 * kSampleBlock> colours;
            m_path.shadePlanarEach(texture, rowOf(band, row, first), far_q, kSampleBlock, lumas.data(),
                                   colours.data());
            const int slot = slots[(row - y) * band.slot_stride + block];
            if (slot >= 0) {
                std::array<int, kSampleBlock> luma_sums = {};
                std::array<int, 2 * kSampleBlock> colour_sums = {};
                for (int s = 0; s < band.samples; ++s) {
                    std::array<int16_t, 2 * kSampleBlock> parts;
                    m_path.shadePlanarEach(texture, sampleOf(band, static_cast<size_t>(slot), s), far_q,
                                           kSampleBlock, lumas.data(), parts.data());
                    for (size_t i = 0; i < lumas.size(); ++i) luma_sums[i] += lumas[i];
                    for (size_t i = 0; i < parts.size(); ++i) colour_sums[i] += parts[i];
                }
                uint8_t* luma = picture.luma + static_cast<size_t>(row) * static_cast<size_t>(picture.width);
                eachMarked(band, room, row, first, [&](int x, size_t i) {
                    const auto mean = [&](int sum) { return (sum + band.samples / 2) / band.samples; };
                    luma[x] = static_cast<uint8_t>(mean(luma_sums[i]));
                    for (size_t c = 2 * i; c < 2 * i + 2; ++c)
                        colours[c] = static_cast<int16_t>(mean(colour_sums[c]));
                    has_marked[i / 2] = true;
                });
            }
            for (size_t i = 0; i < colours.size(); ++i) sums[i / 4 * 2 + i % 2] += colours[i];
        }
        const size_t to = static_cast<size_t>(y / 2) * static_cast<size_t>(picture.width / 2) +
                          static_cast<size_t>(first / 2);
        for (size_t i = 0; i < has_marked.size(); ++i)
            if (has_marked[i]) {
                picture.cb[to + i] = meanOfFour(sums[2 * i]);
                picture.cr[to + i] = meanOfFour(sums[2 * i + 1]);
            }
    }
}

namespace {

/// Marks what lines cross.
class Marker {
  public:
    Marker(const Band& band, uint8_t* marks, int mark_stride, int32_t* slots, uint8_t* tiles, int* used_slots)
        : m_band(band),
          m_marks(marks),
          m_mark_stride(mark_stride),
          m_slots(slots),
          m_tiles(tiles),
          m_used_slots(used_slots) {}

    /// A line between places on the picture.
    void line(float x0, float y0, float x1, float y1) {
        if (y0 > y1) {
            std::swap(x0, x1);
            std::swap(y0, y1);
        }
        // Pixel i covers i..i + 1.
        const double shift_x = 0.5 - static_cast<double>(m_band.centre_x);
        const double shift_y = 0.5 - static_cast<double>(m_band.centre_y);
        const double from_x = x0 + shift_x, from_y = y0 + shift_y, to_x = x1 + shift_x, to_y = y1 + shift_y;
        if (!(to_y >= m_band.top && from_y <= m_band.bottom)) return;
        const int first = std::max(m_band.top, static_cast<int>(std::max(from_y - kMargin, 0.0)));
        const int last =
            std::min(m_band.bottom - 1, static_cast<int>(std::min(to_y + kMargin, m_band.bottom + 0.0)));
        const double slope = to_y > from_y ? (to_x - from_x) / (to_y - from_y) : 0.0;
        for (int y = first; y <= last; ++y) {
            double enter = from_x, leave = to_x;
            if (from_y < y) enter = from_x + slope * (y - from_y);
            if (to_y > y + 1) leave = from_x + slope * (y + 1 - from_y);
            row(y, std::min(enter, leave), std::max(enter, leave));
        }
    }

  private:
    static constexpr double kMargin = 1.0 / 64;

    void row(int y, double left, double right) {
        if (!(right >= 0 && left <= m_band.width)) return;
        const int first = static_cast<int>(std::max(left - kMargin, 0.0));
        const int last = static_cast<int>(std::min(right + kMargin, m_band.width - 1.0));
        const int in_band = y - m_band.top;
        for (int x = first; x <= last; ++x) {
            m_marks[in_band * m_mark_stride + x] = 1;
            int32_t& slot = m_slots[in_band * m_band.slot_stride + x / kSampleBlock];
            if (slot >= 0) continue;
            slot = (*m_used_slots)++;
            m_tiles[in_band / kTile * m_band.tile_stride + x / kTile] = 1;
        }
    }

    const Band& m_band;
    uint8_t* const m_marks;
    const int m_mark_stride;
    int32_t* const m_slots;
    uint8_t* const m_tiles;
    int* const m_used_slots;
};

}  // namespace

/// Nothing can be seen past a triangle's edge but where one seen from the front meets one seen from behind,
/// or the mesh ends: it is displaced along lines of sight, so it does not cut itself.
void MeshDrawing::markSilhouettes(const Frame& frame, Room* room, Band* band) const {
    band->slot_stride = room->mark_stride / kSampleBlock;
    band->tile_stride = band->slot_stride;
    std::fill(room->marks.begin(), room->marks.end(), uint8_t{0});
    std::fill(room->slots.begin(), room->slots.end(), -1);
    std::fill(room->tiles.begin(), room->tiles.end(), uint8_t{0});
    room->used_slots = 0;
    Marker marker(*band, room->marks.data(), room->mark_stride, room->slots.data(), room->tiles.data(),
                  &room->used_slots);

    const float top = static_cast<float>(band->top) + band->centre_y - 1.0f;
    const float bottom = static_cast<float>(band->bottom) + band->centre_y + 1.0f;
    const auto edge = [&](size_t from, size_t to) {
        for (const size_t end : {from, to})
            if (!(frame.q[end] > 0.0f && frame.q[end] <= kNearestQ)) return;
        marker.line(frame.x[from], frame.y[from], frame.x[to], frame.y[to]);
    };
    frame.eachBlock(m_cells_across, top, bottom, [&](int row, int block, bool) {
        const uint8_t* facings =
            &frame.facings[static_cast<size_t>(row) * static_cast<size_t>(frame.facings_stride)];
        const uint8_t* before = row > 0 ? facings - frame.facings_stride : nullptr;
        const int end = std::min((block + 1) * kBlock, m_cells_across);
        for (int i = block * kBlock; i < end; ++i) {
            const int facing = facings[i];
            // Of the triangles past the left and the lower edge. Past the mesh lies none.
            const int left = i > 0 ? facings[i - 1] >> 2 : kNoTriangle;
            const int below = before != nullptr ? before[i] >> 2 : kNoTriangle;
            const bool last_column = i == m_cells_across - 1, last_row = row == m_cells_down - 1;
            if ((facing | left | below) == 0 && !last_column && !last_row) continue;
            const size_t a =
                static_cast<size_t>(row) * static_cast<size_t>(frame.stride) + static_cast<size_t>(i);
            const size_t b = a + static_cast<size_t>(frame.stride), c = a + 1, d = b + 1;
            const int first = facing & 3, second = facing >> 2;
            const auto isSilhouette = [](int one, int other) { return one != other || one == kEdgeOn; };
            if (isSilhouette(first, second)) edge(b, c);
            if (isSilhouette(first, left)) edge(a, b);
            if (isSilhouette(first, below)) edge(a, c);
            if (last_column) edge(c, d);
            if (last_row) edge(b, d);
        }
    });

    band->offsets = offsetsOf(frame.samples);
    band->slots = room->slots.data();
    band->marked_tiles = room->tiles.data();
    const size_t floats =
        static_cast<size_t>(room->used_slots) * static_cast<size_t>(frame.samples) * 3 * kSampleBlock;
    room->sample_planes.assign(floats, frame.far_q);
    band->sample_planes = room->sample_planes.data();
}

}  // namespace quorvane::software
