#ifndef QUORVANE_HOST_PARALLAX_VIEW_H
#define QUORVANE_HOST_PARALLAX_VIEW_H

#include <EGL/egl.h>
#include <GLES2/gl2.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <thread>
#include <vector>

#include "Status.h"
#include "quorvane/esRenderer.h"

namespace quorvane {

/// When a changed parameter shows in the picture.
enum class TakesEffect { kEachFrame, kNextDepth, kNextMotion, kNever };

/// One tunable parameter: a field of `LibParam` and the values that make a picture.
struct ParameterInfo {
    const char* name;
    bool integer;
    double minimum;  ///< inclusive
    double maximum;  ///< inclusive
    TakesEffect takes_effect;
    const char* meaning;  ///< with its unit
};

/// What was planned for the images in use.
struct Geometry {
    int grid_width;      ///< cells; the shaped depth map has a sample for each
    int grid_height;     ///< cells
    int colour_ratio_x;  ///< photo pixels a cell: 1, 2, 4, 8, 16 or 32
    int colour_ratio_y;
    int block_bytes;   ///< working memory
    float half_width;  ///< of the mesh, object units
    float half_height;
    float pivot_distance;  ///< in front of the camera, object units
    /// The shaped depth, on the scale 0..255, that stays in place while the view swings; nearer depths move
    /// one way and farther ones the other. Below 0 when the pivot lies behind everything.
    float still_depth;
};

/// A ready-made host: owns the renderer, its working memory, the output texture and a depth buffer, so that
/// near things hide far things, and checks everything that the renderer trusts.
///
/// All calls come from the one thread that created the view, with the same OpenGL ES context current; a call
/// from elsewhere fails and changes nothing. A call that fails leaves the view as it was, unless the driver
/// runs out of memory in the middle of an upload: then that image is unset.
///
/// Use: `create`, `setPhoto`, `setDepth`; then for every picture `lookAt`, `render`, and `readPixels` or the
/// texture. The result depends on these inputs alone, not on the GL state that the app left. After any call
/// the app's bindings of the program, buffers, framebuffer, active texture unit and the 2D textures of units
/// 0 to 2 are changed, and so are the viewport, the clear values, the unpack alignment and the fragment
/// tests.
class ParallaxView {
  public:
    /// Makes a view whose pictures are width x height pixels. `orientation` chooses the tuned parameter set
    /// as in `ESRenderer::getProperties`: 4 and 7 the first, every other code the second.
    static Status create(int width, int height, uint32_t orientation, std::unique_ptr<ParallaxView>* view);

    /// Needs the context current on the calling thread, or its GL objects stay until the context goes.
    ~ParallaxView();

    ParallaxView(const ParallaxView&) = delete;
    ParallaxView& operator=(const ParallaxView&) = delete;

    /// Copies and uploads a photo: width * height * 3 bytes (R, G, B), rows from the top, no padding. Sides
    /// from 1 to the driver's texture limit. A photo of another size than the last one unsets the depth map.
    Status setPhoto(int width, int height, const uint8_t* rgb);

    /// Filters and uploads the photo's depth map: width * height bytes, rows from the top, no padding, larger
    /// is nearer. Both sides at least 4; the grid is the size / 4, and the photo must be 1, 2, 4, 8, 16 or 32
    /// times the grid on each axis, to within one cell. After a new photo of the same size, calling this
    /// again makes the depth follow the new photo's edges.
    Status setDepth(int width, int height, const uint8_t* depth);

    /// Looks from (x, y), each -1..1 and clamped to it: positive x from the right, positive y from above.
    /// (0, 0) is the rest position. The border dead zone holds the ends a little inside.
    Status lookAt(float x, float y);

    /// The renderer's own motion setters, for hosts that feed it device samples. Finite values only.
    Status setAccelerometerData(float x, float y, float z);
    Status setRotation(float x, float y, float z);
    Status setTranslation(float x, float y, float z);
    Status touchEvent(int event);
    Status setMinMaxDepth(int min_depth, int max_depth);

    /// All tunable parameters, in the order of `LibParam`.
    static const std::vector<ParameterInfo>& parameters();

    /// Whether `setParameter` would take it: refused when unknown, out of its range or, for an integer one,
    /// fractional. Any thread.
    static Status checkParameter(const std::string& name, double value);

    Status setParameter(const std::string& name, double value);

    Status parameter(const std::string& name, double* value) const;

    /// Sets the tuned set for `orientation` and the device's property overrides again.
    Status applyProperties(uint32_t orientation);

    /// Changes the pictures' size, 1 x 1 to the driver's limit. The images stay.
    Status resize(int width, int height);

    /// Draws the picture and waits until it is finished. Needs a photo and a depth map.
    Status render();

    /// Copies the last picture into `rgba`: width * height * 4 bytes, rows from the top.
    Status readPixels(uint8_t* rgba, size_t bytes) const;

    /// The last picture's texture, RGBA, its first row the picture's top. Deleted by `resize` and the
    /// destructor.
    GLuint texture() const { return m_output.texture; }

    int width() const { return m_width; }
    int height() const { return m_height; }

    /// Zeroes but for the extents until photo and depth are set.
    Geometry geometry() const;

    /// The renderer's state, for diagnostics.
    const ESRenderer& renderer() const { return m_renderer; }

  private:
    struct Output {
        GLuint texture = 0;
        GLuint depth_buffer = 0;
    };
    class FreeBlock {
      public:
        FreeBlock() : FreeBlock(std::align_val_t{}) {}
        explicit FreeBlock(std::align_val_t alignment) : m_alignment(alignment) {}
        void operator()(unsigned char* block) const;

      private:
        std::align_val_t m_alignment;
    };
    using Block = std::unique_ptr<unsigned char, FreeBlock>;

    ParallaxView();
    Status open(int width, int height, uint32_t orientation);
    Status checkCaller() const;
    Status checkSample(float x, float y, float z) const;
    Status checkSides(const char* what, int width, int height, int smallest, int largest) const;
    Status createOutput(int width, int height, Output* output) const;
    static void deleteOutput(Output* output);
    bool attach(const Output& output);
    bool holdsPhoto(int width, int height) const;
    Status planBlock(int photo_width, int photo_height, int depth_width, int depth_height);

    const std::thread::id m_thread;
    const EGLContext m_context;
    ESRenderer m_renderer;
    Block m_block;
    int m_block_bytes = 0;
    Output m_output;
    int m_width = 0;
    int m_height = 0;
    int m_largest_texture = 0;
    int m_largest_output = 0;
    bool m_has_photo = false;
    bool m_has_depth = false;
    bool m_has_picture = false;
};

}  // namespace quorvane

#endif
