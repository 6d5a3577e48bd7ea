#ifndef QUORVANE_SOFTWARE_KERNELS_DRAWING_H
#define QUORVANE_SOFTWARE_KERNELS_DRAWING_H

#include <cstdint>

// The kernels that draw the mesh. As the component's, each exists as the reference, scalar code that defines
// every bit of the result, and once a path as vector code (drawing_lanes.cpp). All arithmetic is in single
// precision and in the order that drawing_reference.cpp has it, without fused multiply-adds, so that every
// processor gives the same bytes.
//
// Positions on the picture are pixels from its middle, rows downwards; the centre of pixel (x, y) lies at
// (x + centre_x, y + centre_y). A texel's place is counted from the centre of the first one.

namespace quorvane::software {

/// Arrays for the kernels can be read, and buffers written, for this many elements past their end.
constexpr int kSlack = 8;

/// Vertices and cells are worked off in blocks of so many of a row.
constexpr int kBlock = 64;

/// A band has no more rows.
constexpr int kMostBandRows = 32;

/// Pixels side by side that have their samples together.
constexpr int kSampleBlock = 8;

constexpr int kMostSamples = 8;

/// The nearest that is drawn is 12 object units away: 1 / w is no more than this.
constexpr float kNearestQ = 1.0f / 12.0f;

/// Clip coordinates of a row's vertices are `distance * (column + row) + constant`.
struct Axis {
    const float* column;
    float row, constant;
};

/// Part of a row of vertices, and where their places on the picture go.
struct VertexBlock {
    const float* distance;  ///< from the origin, along the line of sight
    Axis x, y, w;           ///< x and y in pixels times w
    int count;
    float *out_x, *out_y, *out_q;  ///< position in pixels, and 1 / w
};

/// How far a block reaches down the picture.
struct Extent {
    float top, bottom;
    bool drawable;  ///< all of it lies in front of the nearest plane
};

/// Part of a row of cells, between two rows of vertices. Cell i lies between columns i and i + 1.
struct CellBlock {
    const float *lower_x, *lower_y, *lower_q;
    const float *upper_x, *upper_y, *upper_q;
    const float* column_u;   ///< texels
    float lower_v, upper_v;  ///< texels
    int count;               ///< 1..kBlock
};

/// What is seen in some rows of the picture. Where several samples a pixel are drawn, only blocks of pixels
/// that a silhouette crosses have them, and a sample's planes are as a pixel's.
struct Band {
    int width;        ///< pixels
    int top, bottom;  ///< rows
    float centre_x, centre_y;

    float *q, *u, *v;  ///< 1 / w, and the texel's place times that; q is what nothing may lie behind at first
    int stride;        ///< elements a row

    int samples;                  ///< 1..kMostSamples; with 1, what follows is not used
    const float (*offsets)[2];    ///< of the samples from a pixel's centre, less than half a pixel
    const int32_t* slots;         ///< a block of pixels' place in `sample_planes`, or -1
    int slot_stride;              ///< a row
    float* sample_planes;         ///< q, u and v of kSampleBlock pixels each, a sample after the other
    const uint8_t* marked_tiles;  ///< whether 8 x 8 pixels have any slot
    int tile_stride;              ///< a row
};

/// How a triangle is seen.
enum Facing { kFromFront = 0, kFromBehind = 1, kEdgeOn = 2 };

/// The photo: 4 bytes a texel, R, G, B and 255. One column and one row more than it has, as copies of the
/// last.
struct Texture {
    const uint8_t* texels;
    int stride;            ///< texels
    float last_u, last_v;  ///< the last texel's place
};

/// The photo in Y'CbCr. Every byte stands next to the one of the row below, so that what is blended comes
/// with one load: a texel is Y and Y below, a colour is Cb, Cb below, Cr and Cr below. Both have one column
/// more than there is, as a copy of the last; the last row is its own row below.
struct PlanarTexture {
    const uint8_t* luma;
    int stride;            ///< texels
    float last_u, last_v;  ///< the last texel's place

    const uint8_t* colours;
    int colour_stride;                   ///< colours
    float last_colour_u, last_colour_v;  ///< the last colour's place, in colours
    float colours_a_texel;               ///< a texel's place times this, less `colour_shift`, is a colour's
    float colour_shift;
};

/// Part of a row of pixels.
struct PixelRow {
    const float *q, *u, *v;  ///< as a Band has them
};

/// Texels between pixels side by side across and down, up to which they count as one piece of the photo.
constexpr float kOnePiece = 2.0f;

/// Fractional bits of the colours that `shadePlanarEach` gives, of which four can be added.
constexpr int kColourPartBits = 5;

namespace reference {

/// Where the vertices of a block lie on the picture.
Extent placeVertices(const VertexBlock& block);

/// How the cells' triangles are seen: bits 0 and 1 are the first's Facing, bits 2 and 3 the second's. Those
/// of less than `edge_on_area` square pixels are seen edge-on.
void findFacings(const CellBlock& block, float edge_on_area, uint8_t* facings);

/// Draws the cells, two triangles each: (lower left, upper left, lower right) and (lower right, upper left,
/// upper right). A pixel is drawn where its centre lies in a triangle and nothing nearer was. Cells that
/// reach before the nearest plane are left out.
void drawCells(const CellBlock& block, const Band& band);

/// The colours of pixels: bilinear, from texel places held to the photo; black where q is not above `far_q`.
/// Writes R, G, B and 255.
void shade(const Texture& texture, const PixelRow& row, float far_q, int count, uint8_t* rgba);

/// The same of two rows in Y'CbCr: a byte of luma a pixel, and one Cb and one Cr for 2 x 2 pixels. These are
/// read once, amid the four, where no two of them are more than kOnePiece apart on the photo, and else are
/// the mean of what each pixel has. `count` is even, and the rows can be read for 2 * kSlack elements past
/// it.
void shadePlanar(const PlanarTexture& texture, const PixelRow (&rows)[2], float far_q, int count,
                 uint8_t* const (&luma)[2], uint8_t* cb, uint8_t* cr);

/// The same with colours of its own for each pixel, Cb and Cr with kColourPartBits. Writes past the last
/// one's, as kSlack allows.
void shadePlanarEach(const PlanarTexture& texture, const PixelRow& row, float far_q, int count, uint8_t* luma,
                     int16_t* colours);

}  // namespace reference
}  // namespace quorvane::software

#endif
