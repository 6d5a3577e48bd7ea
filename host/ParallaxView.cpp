#include "quorvane/host/ParallaxView.h"

#include <android/log.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "host/checks.h"
#include "host/gl_queries.h"
#include "host/gl_state.h"
#include "host/look_at.h"
#include "host/output.h"
#include "host/rows.h"
#include "host/text.h"
#include "host/working_block.h"
#include "sizes/sizes.h"

namespace quorvane {
namespace {

/// More than four cost more than they show. Software takes longer for them than for a picture of twice the
/// size, which shows more.
int goodSamples() { return drawsInSoftware() ? 1 : 4; }

/// OpenGL ES 3 has them without an extension.
bool hasUnsignedIntIndices() { return glVersion() >= 30 || hasGlExtension("GL_OES_element_index_uint"); }

/// The renderer leaves its two shaders to the context. Deleted while they are attached, they go with the
/// program.
void deleteShadersWithProgram(GLuint program) {
    GLuint shaders[2] = {0, 0};
    GLsizei count = 0;
    glGetAttachedShaders(program, 2, &count, shaders);
    for (GLsizei i = 0; i < count; ++i) glDeleteShader(shaders[i]);
}

/// Has the renderer's destructor delete nothing: names count in the context that made them, and another one
/// may have objects of its own under the same.
void abandonObjects(ESRenderer* renderer) {
    renderer->m_depthName = renderer->m_texName = 0;
    renderer->m_fbo = 0;
    renderer->m_gridVertexBuf[0] = renderer->m_gridVertexBuf[1] = 0;
    renderer->m_program = 0;
}

}  // namespace

ParallaxView::ParallaxView()
    : m_thread(std::this_thread::get_id()),
      m_context(eglGetCurrentContext()),
      m_gl_state(std::make_unique<GlState>()),
      m_block(std::make_unique<WorkingBlock>()) {}

ParallaxView::~ParallaxView() {
    if (eglGetCurrentContext() == m_context) return;
    abandonObjects(&m_renderer);
    if (m_output != nullptr) m_output->abandon();
    __android_log_print(
        ANDROID_LOG_WARN, "AppQRVN",
        "a view ends while its OpenGL ES context is not current: its GL objects stay until that "
        "context goes");
}

Status ParallaxView::create(int width, int height, uint32_t orientation,
                            std::unique_ptr<ParallaxView>* view) {
    return create(width, height, ViewOptions{orientation, 1}, view);
}

Status ParallaxView::create(int width, int height, const ViewOptions& options,
                            std::unique_ptr<ParallaxView>* view) {
    view->reset();
    if (eglGetCurrentContext() == EGL_NO_CONTEXT)
        return Status::failure("no OpenGL ES context is current on this thread");
    std::unique_ptr<ParallaxView> made(new ParallaxView);
    Status status = made->open(width, height, options);
    if (status) *view = std::move(made);
    return status;
}

Status ParallaxView::open(int width, int height, const ViewOptions& options) {
    if (glInteger(GL_MAX_VERTEX_TEXTURE_IMAGE_UNITS) < 1)
        return Status::failure("this graphics driver has no texture unit for vertex shaders; one is needed");
    if (!hasUnsignedIntIndices())
        return Status::failure(
            "this graphics driver lacks 32-bit element indices (OpenGL ES 3, or GL_OES_element_index_uint)");
    GLint viewport[2] = {0, 0};
    glGetIntegerv(GL_MAX_VIEWPORT_DIMS, viewport);
    m_largest_texture = glInteger(GL_MAX_TEXTURE_SIZE);
    m_largest_output = std::min(
        {m_largest_texture, glInteger(GL_MAX_RENDERBUFFER_SIZE), std::min(viewport[0], viewport[1])});

    m_renderer.getProperties(options.orientation);
    return makeOutput(width, height, options.samples);
}

Status ParallaxView::checkCaller() const {
    if (std::this_thread::get_id() != m_thread)
        return Status::failure("called from another thread than the one that created the view");
    if (eglGetCurrentContext() != m_context)
        return Status::failure("the OpenGL ES context that created the view is not current");
    return Status::success();
}

Status ParallaxView::resize(int width, int height) { return makeOutput(width, height, m_samples_wanted); }

Status ParallaxView::setSamples(int samples) { return makeOutput(m_width, m_height, samples); }

int ParallaxView::samples() const noexcept { return m_output->samples(); }

Status ParallaxView::makeOutput(int width, int height, int samples) {
    Status status = checkCaller();
    if (!status) return status;
    status = checkSides("output", width, height, 1, m_largest_output);
    if (!status) return status;
    status = checkSamples(samples);
    if (!status) return status;

    m_gl_state->setForUploads();
    std::unique_ptr<Output> output;
    status = Output::create(width, height, &output);
    if (status) {
        const bool first = m_renderer.m_program == 0;
        if (!m_renderer.setupGraphics(width, height))
            return Status::failure(
                "the graphics driver could not build the shader program; the log says why");
        if (first) deleteShadersWithProgram(m_renderer.m_program);
        if (!output->attachTo(&m_renderer))
            status = Status::failure(
                text("output: the graphics driver cannot draw into a %d x %d texture", width, height));
    }
    if (!status) {
        if (m_output != nullptr) {
            m_renderer.setupGraphics(m_width, m_height);
            m_output->attachTo(&m_renderer);
        }
        return status;
    }
    const int most_samples = samples == kAutoSamples ? goodSamples() : samples;
    if (most_samples > 1) output->addSamples(m_renderer, most_samples);
    m_output = std::move(output);
    m_samples_wanted = samples;
    m_width = width;
    m_height = height;
    m_has_picture = false;
    // The mesh's extents follow the picture's aspect.
    if (m_has_depth) m_renderer.setupVertices();
    return Status::success();
}

bool ParallaxView::holdsPhoto(int width, int height) const {
    return m_has_photo && width == m_renderer.m_texWidth && height == m_renderer.m_texHeight;
}

Status ParallaxView::setPhoto(const Pixels& rgb) { return setPhoto(rgb, 3); }

Status ParallaxView::setPhotoRgba(const Pixels& rgba) { return setPhoto(rgba, 4); }

Status ParallaxView::setPhoto(const Pixels& pixels, int bytes_per_pixel) {
    Status status = checkCaller();
    if (!status) return status;
    status = checkSides("photo", pixels.width, pixels.height, 1, m_largest_texture);
    if (!status) return status;
    status = checkPixels("photo", pixels, bytes_per_pixel);
    if (!status) return status;
    TightRows rgb;
    status = TightRows::of("photo", pixels, bytes_per_pixel, 3, &rgb);
    if (!status) return status;

    if (!holdsPhoto(pixels.width, pixels.height)) {
        status = m_block->plan(&m_renderer, {pixels.width, pixels.height}, {0, 0}, false);
        if (!status) return status;
        m_has_depth = false;
    }
    m_gl_state->setForUploads();
    forgetGlErrors();
    // The renderer only reads the pixels.
    m_renderer.setTexture(pixels.width, pixels.height, const_cast<unsigned char*>(rgb.data()));
    status = glStatus("photo");
    m_has_photo = status.ok();
    return status;
}

Status ParallaxView::setDepth(const Pixels& depth) {
    Status status = checkCaller();
    if (!status) return status;
    if (!m_has_photo) return Status::failure("depth map: set the photo first");
    const Size photo = {m_renderer.m_texWidth, m_renderer.m_texHeight};
    status = checkDepthMap(depth, photo, m_largest_texture);
    if (!status) return status;
    TightRows samples;
    status = TightRows::of("depth map", depth, 1, 1, &samples);
    if (!status) return status;
    status = m_block->plan(&m_renderer, photo, {depth.width, depth.height}, true);
    if (!status) return status;

    m_gl_state->setForUploads();
    forgetGlErrors();
    // The photo's reduction reads a few pixels past the photo, into the planes behind it.
    m_block->clearBehindPhoto(m_renderer);
    m_renderer.setDepth(depth.width, depth.height, const_cast<unsigned char*>(samples.data()));
    // The renderer logs and clears the errors of its upload. Writing into a texture that has no image fails
    // again.
    glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 1, 1, GL_LUMINANCE, GL_UNSIGNED_BYTE, m_renderer.m_pDepthData);
    m_renderer.setupVertices();
    status = glStatus("depth map");
    m_has_depth = status.ok();
    return status;
}

Status ParallaxView::lookAt(float x, float y) {
    if (!(std::isfinite(x) && std::isfinite(y))) return Status::failure("view position: not a finite number");
    return setRotation(placeOnPicture(x, static_cast<float>(m_width)),
                       placeOnPicture(y, static_cast<float>(m_height)), 0.0f);
}

Status ParallaxView::setAccelerometerData(float x, float y, float z) {
    Status status = checkSample(x, y, z);
    if (status) m_renderer.setAccelerometerData(x, y, z);
    return status;
}

Status ParallaxView::setRotation(float x, float y, float z) {
    Status status = checkSample(x, y, z);
    if (status) m_renderer.setRotation(x, y, z);
    return status;
}

Status ParallaxView::setTranslation(float x, float y, float z) {
    Status status = checkSample(x, y, z);
    if (status) m_renderer.setTranslation(x, y, z);
    return status;
}

Status ParallaxView::touchEvent(int event) {
    Status status = checkCaller();
    if (!status) return status;
    if (event < 0 || event > 3) return Status::failure(text("touch event %d; 0 to 3 are known", event));
    m_renderer.touchEvent(event, 0.0f, 0.0f);
    return status;
}

Status ParallaxView::setMinMaxDepth(int min_depth, int max_depth) {
    Status status = checkCaller();
    if (status) m_renderer.setMinMaxDepth(min_depth, max_depth);
    return status;
}

Status ParallaxView::checkSample(float x, float y, float z) const {
    Status status = checkCaller();
    if (status && !(std::isfinite(x) && std::isfinite(y) && std::isfinite(z)))
        return Status::failure("motion sample: not a finite number");
    return status;
}

Status ParallaxView::applyProperties(uint32_t orientation) {
    Status status = checkCaller();
    if (status) {
        m_renderer.getProperties(orientation);
        usePivot();
    }
    return status;
}

void ParallaxView::usePivot() {
    if (m_has_depth) m_renderer.m_z_factor = m_renderer.params.rotate_z_trans;
}

Status ParallaxView::render() {
    Status status = checkCaller();
    if (!status) return status;
    if (!m_has_photo) return Status::failure("nothing to draw: no photo is set");
    if (!m_has_depth) return Status::failure("nothing to draw: no depth map is set for this photo");

    m_gl_state->setForDrawing();
    m_output->begin(m_renderer, *m_gl_state);
    forgetGlErrors();
    m_renderer.renderFrame();
    status = m_output->finish(*m_gl_state);
    m_has_picture = status.ok();
    return status;
}

Status ParallaxView::readPixels(const WritablePixels& rgba) const {
    constexpr char kWhat[] = "reading the picture";
    Status status = checkCaller();
    if (!status) return status;
    if (!m_has_picture) return Status::failure("no picture of this size has been drawn yet");
    if (rgba.width != m_width || rgba.height != m_height)
        return Status::failure(text("%s: %d x %d pixels are asked for, and the picture has %d x %d", kWhat,
                                    rgba.width, rgba.height, m_width, m_height));
    status = checkPixels(kWhat, rgba, 4);
    if (!status) return status;
    RowsToFill rows;
    status = RowsToFill::of(kWhat, rgba, 4, &rows);
    if (!status) return status;

    m_gl_state->setForReading();
    m_gl_state->bindFramebuffer(m_output->readable(m_renderer));
    forgetGlErrors();
    // The photo's first row is drawn at the framebuffer's bottom, so GL's row order is the picture's.
    glReadPixels(0, 0, m_width, m_height, GL_RGBA, GL_UNSIGNED_BYTE, rows.data());
    status = glStatus(kWhat);
    if (status) rows.deliver();
    return status;
}

GLuint ParallaxView::texture() const noexcept { return m_output->texture(); }

Geometry ParallaxView::geometry() const {
    Geometry geometry = {};
    geometry.half_width = m_renderer.m_OBJ_CORD_X;
    geometry.half_height = m_renderer.m_OBJ_CORD_Y;
    if (!m_has_photo || !m_has_depth) return geometry;
    geometry.grid_width = m_renderer.m_vtxW;
    geometry.grid_height = m_renderer.m_vtxH;
    geometry.colour_ratio_x = m_renderer.m_texWidth / m_renderer.m_vtxW;
    geometry.colour_ratio_y = m_renderer.m_texHeight / m_renderer.m_vtxH;
    geometry.block_bytes = m_block->bytes();
    geometry.pivot_distance = m_renderer.m_z_factor;
    geometry.still_depth = depthAtDistance(m_renderer.m_z_factor);
    const LibParam& parameters = m_renderer.params;
    geometry.x_side_turn_deg = parameters.trans_to_rotate_scale * parameters.rotate_x_boundary;
    geometry.x_turn_deg = m_renderer.m_transX * geometry.x_side_turn_deg;
    geometry.visible = parameters.fov_scale;
    return geometry;
}

Pixels ParallaxView::guide() const { return plane(m_renderer.m_pSmallTextureData); }

Pixels ParallaxView::shapedDepth() const { return plane(m_renderer.m_pDepthData); }

Pixels ParallaxView::plane(const char* samples) const {
    if (!m_has_photo || !m_has_depth) return {};
    const int width = m_renderer.m_vtxW, height = m_renderer.m_vtxH;
    return {reinterpret_cast<const uint8_t*>(samples),
            static_cast<size_t>(width) * static_cast<size_t>(height), width, height};
}

}  // namespace quorvane
