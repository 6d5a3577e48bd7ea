#ifndef QUORVANE_HOST_PARALLAX_VIEW_H
#define QUORVANE_HOST_PARALLAX_VIEW_H

#include <EGL/egl.h>
#include <GLES2/gl2.h>

#include <cstdint>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "PhotoView.h"
#include "PicturePlan.h"
#include "Pixels.h"
#include "Status.h"
#include "quorvane/esRenderer.h"

namespace quorvane {

class GlState;
class Output;
class WorkingBlock;

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

struct ViewOptions {
    /// Chooses the tuned parameter set as in `ESRenderer::getProperties`: 4 and 7 the first, every other code
    /// the second.
    uint32_t orientation = 4;
    /// How many a pixel, so that silhouettes are smooth: 1, 2, 4, 8 or `kAutoSamples`. See `samples`.
    int samples = kAutoSamples;
};

/// A ready-made host: owns the renderer, its working memory, the output texture and a depth buffer, so that
/// near things hide far things, and checks everything that the renderer trusts.
///
/// All calls come from the one thread that created the view, with the same OpenGL ES context current; a call
/// from elsewhere fails and changes nothing. A call that fails leaves the view as it was, unless the driver
/// runs out of memory in the middle of an upload: then that image is unset.
///
/// Use: `create`, `setPhoto`, `setDepth`; then for every picture `lookAt`, `render`, and `readPixels` or the
/// texture. The result depends on these inputs alone and not on the GL state that the app left, be the
/// context of OpenGL ES 2 or 3.
///
/// Several samples a pixel take EXT_multisampled_render_to_texture or OpenGL ES 3. While the renderer's debug
/// switch is on, one is drawn. The use of the extension has been tested against recorded calls, not yet on a
/// driver that has it.
///
/// Of the app's own GL state these are changed afterwards:
///   - by every call that uploads, draws or reads: the bindings of the vertex array object (to 0), the array,
///     element array, pixel pack and pixel unpack buffer, the program, the framebuffer, the renderbuffer, the
///     active texture unit, the 2D textures of units 0 to 2, and how pixels are unpacked or packed
///   - by `render` also: the arrays of vertex array object 0 and their divisors; the samplers of units 1 and
///   2;
///     the viewport, the depth range, the clear values, the masks of colour and depth, the depth test (on);
///     off are blending, culling, scissor and stencil test, polygon offset, sample coverage and mask, clip
///     distances, clamping of depths and discarding of primitives; clip control and the primitive bounding
///     box are as at first; with several samples also: multisampling is on and sample shading off
///   - transform feedback that is running is paused, and a query that is running counts what `render` draws
class ParallaxView final : public PhotoView {
  public:
    /// Makes a view whose pictures are width x height pixels.
    static Status create(int width, int height, const ViewOptions& options,
                         std::unique_ptr<ParallaxView>* view);

    /// The same with one sample a pixel.
    static Status create(int width, int height, uint32_t orientation, std::unique_ptr<ParallaxView>* view);

    /// Where the view's context is not current, its GL objects are left to go with that context, and one line
    /// at warning priority says so in the log.
    ~ParallaxView() override;

    ParallaxView(const ParallaxView&) = delete;
    ParallaxView& operator=(const ParallaxView&) = delete;

    /// Copies and uploads a photo of 3 bytes a pixel: R, G, B. Sides from 1 to the driver's texture limit. A
    /// photo of another size than the last one unsets the depth map.
    Status setPhoto(const Pixels& rgb) override;

    /// The same for 4 bytes a pixel, the last of which is ignored: R, G, B, and alpha or nothing.
    Status setPhotoRgba(const Pixels& rgba);

    /// Filters and uploads the photo's depth map of a byte a pixel, larger is nearer. Both sides at least 4;
    /// the grid is the size / 4, and the photo must be 1, 2, 4, 8, 16 or 32 times the grid on each axis, to
    /// within one cell. After a new photo of the same size, calling this again makes the depth follow the new
    /// photo's edges.
    Status setDepth(const Pixels& depth) override;

    /// Looks from (x, y), each -1..1 and clamped to it: positive x from the right, positive y from above.
    /// (0, 0) is the rest position. The border dead zone holds the ends a little inside.
    Status lookAt(float x, float y) override;

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

    Status setParameter(const std::string& name, double value) override;

    Status parameter(const std::string& name, double* value) const;

    /// Sets the tuned set for `orientation` and the device's property overrides again.
    Status applyProperties(uint32_t orientation);

    // For the photo, depth map, parameters and picture size in force; a frame depends on the pivot.

    /// The largest frame with which none of the pictures from these positions shows a border: `fov_scale` is
    /// at least 0.5, and where that does not suffice the swing is reduced.
    Status suggestFrame(const std::vector<LookPosition>& path, SuggestedFrame* frame) const;

    /// The same for every position that `lookAt` takes.
    Status suggestFrame(SuggestedFrame* frame) const;

    /// The `rotate_z_trans` with which the subject stays in place: the nearest large thing near the middle.
    Status suggestPivot(double* rotate_z_trans) const;

    /// The same for what the photo shows at (x, y): 0 to 1, from its left and its top.
    Status suggestPivot(double x, double y, double* rotate_z_trans) const;

    /// Changes the pictures' size, 1 x 1 to the driver's limit. The images stay.
    Status resize(int width, int height) override;

    /// Changes how many samples a pixel are drawn: 1, 2, 4, 8 or `kAutoSamples`. As `resize` does, it makes a
    /// new texture. The images stay.
    Status setSamples(int samples);

    /// How many samples a pixel are drawn: as many as were asked for, or half of that as often as the driver
    /// does not know the count or has too little memory for it. 1 where the driver cannot draw several;
    /// pictures of twice the size, reduced, are as smooth then.
    int samples() const noexcept override;

    /// Draws the picture and waits until it is finished. Needs a photo and a depth map.
    Status render() override;

    /// Copies the last picture, 4 bytes a pixel: R, G, B, A. `rgba` has the picture's size.
    Status readPixels(const WritablePixels& rgba) const override;

    /// The last picture's texture, RGBA, its first row the picture's top. Deleted by `resize`,
    /// `setSamples` and the destructor.
    GLuint texture() const noexcept;

    int width() const noexcept override { return m_width; }
    int height() const noexcept override { return m_height; }

    int largestPhotoSide() const noexcept override { return m_largest_texture; }

    /// Zeroes but for the extents until photo and depth are set.
    Geometry geometry() const override;

    Pixels guide() const override;
    Pixels shapedDepth() const override;

    /// The renderer's state, for diagnostics.
    const ESRenderer& renderer() const noexcept { return m_renderer; }

  private:
    ParallaxView();
    Status open(int width, int height, const ViewOptions& options);
    Status makeOutput(int width, int height, int samples);
    Status checkCaller() const;
    Status checkSample(float x, float y, float z) const;
    Status setPhoto(const Pixels& pixels, int bytes_per_pixel);
    Pixels plane(const char* samples) const;
    bool holdsPhoto(int width, int height) const;
    void usePivot();

    const std::thread::id m_thread;
    const EGLContext m_context;
    const std::unique_ptr<GlState> m_gl_state;
    const std::unique_ptr<WorkingBlock> m_block;
    ESRenderer m_renderer;
    std::unique_ptr<Output> m_output;
    int m_width = 0;
    int m_height = 0;
    int m_samples_wanted = 1;
    int m_largest_texture = 0;
    int m_largest_output = 0;
    bool m_has_photo = false;
    bool m_has_depth = false;
    bool m_has_picture = false;
};

}  // namespace quorvane

#endif
