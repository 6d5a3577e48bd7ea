#ifndef QUORVANE_SOFTWARE_MESH_DRAWING_H
#define QUORVANE_SOFTWARE_MESH_DRAWING_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "quorvane/renderUtility.h"
#include "software/kernels/paths.h"

namespace quorvane::software {

class Workers;

/// Where a mesh is seen from, and how large.
struct Camera {
    RENDERMatrix matrix;            ///< model, view and projection, as the renderer gives it to GL
    float half_width, half_height;  ///< of the mesh, object units
    float far_distance;             ///< of the far plane, object units
};

/// A picture to draw into, 4 bytes a pixel: R, G, B, A. The photo's first row is on top.
struct PictureBuffer {
    uint8_t* rgba;
    size_t stride;  ///< bytes a row
    int width, height;
};

/// A picture of even sides in Y'CbCr, BT.709 in limited range, with its colours at half the size. Planes
/// without padding. The colours of 2 x 2 pixels are read from a photo of means of 2 x 2 texels, from every
/// second texel where the photo has 9/8 of the picture's width or more; with less than 5/8 from the photo as
/// it is.
struct PlanarPicture {
    uint8_t *luma, *cb, *cr;
    int width, height;
};

/// Draws a photo on the mesh that its shaped depth displaces. The same input gives the same bytes, on any
/// processor, by any path and with any number of threads. Not to be called by several threads at once.
class MeshDrawing {
  public:
    MeshDrawing(const DrawingPath& path, int threads);
    ~MeshDrawing();

    /// Copies a photo of 3 bytes a pixel, R, G, B, sides 1..16384. Throws std::bad_alloc, and keeps what it
    /// had.
    void setPhoto(const uint8_t* rgb, int width, int height);

    /// Copies the plane that displaces the mesh, a byte a cell. Throws std::bad_alloc, and keeps what it had.
    void setShapedDepth(const uint8_t* depth, int width, int height);

    /// Draws what both of these give, with 1, 2, 4 or 8 samples a pixel where a silhouette crosses it. Throws
    /// std::bad_alloc before anything is drawn.
    void draw(const Camera& camera, int samples, const PictureBuffer& picture);

    /// The same in other colours.
    void draw(const Camera& camera, int samples, const PlanarPicture& picture);

  private:
    struct Frame;
    struct Room;
    struct ColourGrid;
    struct PlanarTexels;

    void prepare(const Camera& camera, int samples, int width, int height);
    void drawMesh(const std::function<void(const Band&, Room*)>& shadeBand);
    void convertTexels(const ColourGrid& grid);
    void placeRow(int row, Frame* frame) const;
    void findFacings(int row, Frame* frame) const;
    Band cover(int band, Room* room, const Frame& frame) const;
    void shadeBand(const Band& band, const Room& room, const PictureBuffer& picture) const;
    void shadeBand(const Band& band, const Room& room, const PlanarPicture& picture) const;
    void shadeMarked(const PlanarTexture& texture, const Band& band, const Room& room, int y,
                     const PlanarPicture& picture) const;
    template <typename Put>
    static void eachMarked(const Band& band, const Room& room, int y, int first, const Put& put);
    void markSilhouettes(const Frame& frame, Room* room, Band* band) const;

    const DrawingPath m_path;
    const std::unique_ptr<Workers> m_workers;

    std::vector<uint8_t> m_texels;
    std::unique_ptr<PlanarTexels> m_planar;  ///< of these, as last asked for
    int m_photo_width = 0, m_photo_height = 0;

    int m_cells_across = 0, m_cells_down = 0;
    std::vector<float> m_distance;  ///< of the vertices, from the origin

    std::unique_ptr<Frame> m_frame;
    std::vector<Room> m_rooms;
};

}  // namespace quorvane::software

#endif
