#include "quorvane/host/ParallaxView.h"

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

#include "large_pages.h"

namespace quorvane {
namespace {

constexpr int kDepthPixelsPerCell = 4;
constexpr GLenum kDepthComponent24 = 0x81A6;

std::string text(const char* format, ...) __attribute__((format(printf, 1, 2)));
std::string text(const char* format, ...) {
    char buffer[256];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(buffer, sizeof buffer, format, arguments);
    va_end(arguments);
    return buffer;
}

bool hasGlExtension(const char* name) {
    const char* extensions = reinterpret_cast<const char*>(glGetString(GL_EXTENSIONS));
    return extensions != nullptr &&
           (' ' + std::string(extensions) + ' ').find(' ' + std::string(name) + ' ') != std::string::npos;
}

/// ES 3.0 made unsigned 32-bit element indices part of the core.
bool hasUnsignedIntIndices() {
    const char* version = reinterpret_cast<const char*>(glGetString(GL_VERSION));
    int major = 0;
    if (version != nullptr && std::sscanf(version, "OpenGL ES %d.", &major) == 1 && major >= 3) return true;
    return hasGlExtension("GL_OES_element_index_uint");
}

GLint integer(GLenum name) {
    GLint value = 0;
    glGetIntegerv(name, &value);
    return value;
}

/// Errors that the app left behind are not ours to report.
void forgetGlErrors() {
    // Bounded: a lost context reports an error on every call.
    for (int i = 0; i < 16 && glGetError() != GL_NO_ERROR; ++i) {
    }
}

Status glStatus(const char* doing) {
    const GLenum error = glGetError();
    if (error == GL_NO_ERROR) return Status::success();
    if (error == GL_OUT_OF_MEMORY)
        return Status::failure(text("%s: the graphics driver is out of memory", doing));
    return Status::failure(text("%s: the graphics driver reports error 0x%04x", doing, error));
}

/// The ratio that the reduction will use for one axis, or 0 when the sizes do not fit to within one cell.
int colourRatio(int photo, int grid) {
    for (const int ratio : {1, 2, 4, 8, 16, 32})
        if (photo / grid == ratio && photo / ratio == grid) return ratio;
    return 0;
}

/// `ESRenderer::getRequiredMemSize` in 64 bit.
int64_t blockBytes(int64_t tex_w, int64_t tex_h, int64_t depth_w, int64_t depth_h) {
    const int64_t w = depth_w / kDepthPixelsPerCell;
    const int64_t h = depth_h / kDepthPixelsPerCell;
    return 3 * tex_w * tex_h + 57 * w * h + 40 * h * (w + 1) + 12 * (w + 1) * (h + 1);
}

}  // namespace

void ParallaxView::FreeBlock::operator()(unsigned char* block) const {
    ::operator delete(block, m_alignment);
}

ParallaxView::ParallaxView() : m_thread(std::this_thread::get_id()), m_context(eglGetCurrentContext()) {}

ParallaxView::~ParallaxView() { deleteOutput(&m_output); }

Status ParallaxView::create(int width, int height, uint32_t orientation,
                            std::unique_ptr<ParallaxView>* view) {
    view->reset();
    if (eglGetCurrentContext() == EGL_NO_CONTEXT)
        return Status::failure("no OpenGL ES context is current on this thread");
    std::unique_ptr<ParallaxView> made(new ParallaxView);
    Status status = made->open(width, height, orientation);
    if (status) *view = std::move(made);
    return status;
}

Status ParallaxView::open(int width, int height, uint32_t orientation) {
    if (integer(GL_MAX_VERTEX_TEXTURE_IMAGE_UNITS) < 1)
        return Status::failure("this graphics driver has no texture unit for vertex shaders; one is needed");
    if (!hasUnsignedIntIndices())
        return Status::failure(
            "this graphics driver lacks 32-bit element indices (OpenGL ES 3, or GL_OES_element_index_uint)");
    GLint viewport[2] = {0, 0};
    glGetIntegerv(GL_MAX_VIEWPORT_DIMS, viewport);
    m_largest_texture = integer(GL_MAX_TEXTURE_SIZE);
    m_largest_output =
        std::min({m_largest_texture, integer(GL_MAX_RENDERBUFFER_SIZE), std::min(viewport[0], viewport[1])});

    m_renderer.getProperties(orientation);
    return resize(width, height);
}

Status ParallaxView::checkCaller() const {
    if (std::this_thread::get_id() != m_thread)
        return Status::failure("called from another thread than the one that created the view");
    if (eglGetCurrentContext() != m_context)
        return Status::failure("the OpenGL ES context that created the view is not current");
    return Status::success();
}

Status ParallaxView::checkSides(const char* what, int width, int height, int smallest, int largest) const {
    if (width >= smallest && height >= smallest && width <= largest && height <= largest)
        return Status::success();
    return Status::failure(
        text("%s: %d x %d pixels; each side must be %d to %d", what, width, height, smallest, largest));
}

Status ParallaxView::createOutput(int width, int height, Output* output) const {
    forgetGlErrors();
    glGenTextures(1, &output->texture);
    glGenRenderbuffers(1, &output->depth_buffer);
    if (output->texture == 0 || output->depth_buffer == 0)
        return Status::failure("output: the graphics driver made no texture or depth buffer");
    glActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_2D, output->texture);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, width, height, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
    glBindRenderbuffer(GL_RENDERBUFFER, output->depth_buffer);
    glRenderbufferStorage(GL_RENDERBUFFER,
                          hasGlExtension("GL_OES_depth24") ? kDepthComponent24 : GL_DEPTH_COMPONENT16, width,
                          height);
    return glStatus("output");
}

void ParallaxView::deleteOutput(Output* output) {
    glDeleteTextures(1, &output->texture);
    glDeleteRenderbuffers(1, &output->depth_buffer);
    *output = Output();
}

bool ParallaxView::attach(const Output& output) {
    glBindFramebuffer(GL_FRAMEBUFFER, m_renderer.m_fbo);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER, output.depth_buffer);
    return m_renderer.setOutTexture(output.texture);
}

Status ParallaxView::resize(int width, int height) {
    Status status = checkCaller();
    if (!status) return status;
    status = checkSides("output", width, height, 1, m_largest_output);
    if (!status) return status;

    Output output;
    status = createOutput(width, height, &output);
    if (status && !m_renderer.setupGraphics(width, height))
        status = Status::failure("the graphics driver could not build the shader program; the log says why");
    else if (status && !attach(output))
        status = Status::failure(
            text("output: the graphics driver cannot draw into a %d x %d texture", width, height));
    if (!status) {
        deleteOutput(&output);
        if (m_output.texture != 0) {
            m_renderer.setupGraphics(m_width, m_height);
            attach(m_output);
        }
        return status;
    }
    deleteOutput(&m_output);
    m_output = output;
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

// Moves the photo's copy into a block for the given sizes, when the one in use is for others.
Status ParallaxView::planBlock(int photo_width, int photo_height, int depth_width, int depth_height) {
    const int64_t wanted = blockBytes(photo_width, photo_height, depth_width, depth_height);
    if (wanted > std::numeric_limits<int>::max())
        return Status::failure(text(
            "a %d x %d photo with a %d x %d depth map needs %.1f GB of working memory; 2 GB is the limit",
            photo_width, photo_height, depth_width, depth_height, static_cast<double>(wanted) / 1e9));
    const bool same_photo = holdsPhoto(photo_width, photo_height);
    if (same_photo && depth_width / kDepthPixelsPerCell == m_renderer.m_vtxW &&
        depth_height / kDepthPixelsPerCell == m_renderer.m_vtxH)
        return Status::success();

    const size_t bytes = static_cast<size_t>(wanted);
    const std::align_val_t alignment = alignmentFor(bytes);
    Block block(static_cast<unsigned char*>(::operator new(bytes, alignment, std::nothrow)),
                FreeBlock(alignment));
    if (block == nullptr) return Status::failure(text("cannot allocate %zu bytes of working memory", bytes));
    preferLargePages(block.get(), bytes);

    const char* photo = m_renderer.m_pTextureData;
    m_block_bytes = m_renderer.getRequiredMemSize(photo_width, photo_height, depth_width, depth_height);
    m_renderer.assignMem(block.get());
    if (same_photo)
        std::memcpy(m_renderer.m_pTextureData, photo,
                    size_t{3} * static_cast<size_t>(photo_width) * static_cast<size_t>(photo_height));
    m_block = std::move(block);
    return Status::success();
}

Status ParallaxView::setPhoto(int width, int height, const uint8_t* rgb) {
    Status status = checkCaller();
    if (!status) return status;
    if (rgb == nullptr) return Status::failure("photo: no pixels given");
    status = checkSides("photo", width, height, 1, m_largest_texture);
    if (!status) return status;

    if (!holdsPhoto(width, height)) {
        status = planBlock(width, height, 0, 0);
        if (!status) return status;
        m_has_depth = false;
    }
    forgetGlErrors();
    glActiveTexture(GL_TEXTURE0);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    // The renderer only reads the pixels.
    m_renderer.setTexture(width, height, const_cast<unsigned char*>(rgb));
    status = glStatus("photo");
    m_has_photo = status.ok();
    return status;
}

Status ParallaxView::setDepth(int width, int height, const uint8_t* depth) {
    Status status = checkCaller();
    if (!status) return status;
    if (!m_has_photo) return Status::failure("depth map: set the photo first");
    if (depth == nullptr) return Status::failure("depth map: no samples given");
    status =
        checkSides("depth map", width, height, kDepthPixelsPerCell, m_largest_texture * kDepthPixelsPerCell);
    if (!status) return status;

    const int grid_w = width / kDepthPixelsPerCell;
    const int grid_h = height / kDepthPixelsPerCell;
    // Sides of 5, 6, 7, 10, 11 and 15 truncate to a grid that they are no longer 4 times.
    if (width / grid_w != kDepthPixelsPerCell || height / grid_h != kDepthPixelsPerCell)
        return Status::failure(text(
            "depth map: %d x %d does not divide into cells of 4 x 4; use multiples of 4", width, height));
    const int photo_w = m_renderer.m_texWidth;
    const int photo_h = m_renderer.m_texHeight;
    if (colourRatio(photo_w, grid_w) == 0 || colourRatio(photo_h, grid_h) == 0)
        return Status::failure(
            text("depth map: %d x %d makes a grid of %d x %d cells, and the %d x %d photo is not 1, 2, 4, 8, "
                 "16 or 32 times that",
                 width, height, grid_w, grid_h, photo_w, photo_h));
    status = planBlock(photo_w, photo_h, width, height);
    if (!status) return status;

    forgetGlErrors();
    glActiveTexture(GL_TEXTURE0);
    // The photo's reduction reads a few pixels past the photo, into the planes behind it.
    unsigned char* behind_photo = reinterpret_cast<unsigned char*>(m_renderer.m_pDepthData);
    std::memset(behind_photo, 0, static_cast<size_t>(m_block.get() + m_block_bytes - behind_photo));
    m_renderer.setDepth(width, height, const_cast<unsigned char*>(depth));
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
    const auto pixels = [](float position, int extent) {
        return (std::clamp(position, -1.0f, 1.0f) * 0.5f + 0.5f) * static_cast<float>(extent);
    };
    return setRotation(pixels(x, m_width), pixels(y, m_height), 0.0f);
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
    if (status) m_renderer.getProperties(orientation);
    return status;
}

Status ParallaxView::render() {
    Status status = checkCaller();
    if (!status) return status;
    if (!m_has_photo) return Status::failure("nothing to draw: no photo is set");
    if (!m_has_depth) return Status::failure("nothing to draw: no depth map is set for this photo");

    // Whatever the app switched on for its own drawing must not show in the picture.
    constexpr GLenum kTests[] = {GL_BLEND,          GL_CULL_FACE,           GL_SCISSOR_TEST,
                                 GL_STENCIL_TEST,   GL_POLYGON_OFFSET_FILL, GL_SAMPLE_ALPHA_TO_COVERAGE,
                                 GL_SAMPLE_COVERAGE};
    for (const GLenum test : kTests) glDisable(test);
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    glDepthRangef(0.0f, 1.0f);
    forgetGlErrors();
    // The renderer clears what is bound on entry.
    glBindFramebuffer(GL_FRAMEBUFFER, m_renderer.m_fbo);
    m_renderer.renderFrame();
    status = glStatus("drawing");
    m_has_picture = status.ok();
    return status;
}

Status ParallaxView::readPixels(uint8_t* rgba, size_t bytes) const {
    Status status = checkCaller();
    if (!status) return status;
    if (!m_has_picture) return Status::failure("no picture of this size has been drawn yet");
    const size_t needed = size_t{4} * static_cast<size_t>(m_width) * static_cast<size_t>(m_height);
    if (rgba == nullptr || bytes < needed)
        return Status::failure(text("reading the picture takes a buffer of %zu bytes", needed));
    forgetGlErrors();
    glBindFramebuffer(GL_FRAMEBUFFER, m_renderer.m_fbo);
    // The photo's first row is drawn at the framebuffer's bottom, so GL's row order is the picture's.
    glReadPixels(0, 0, m_width, m_height, GL_RGBA, GL_UNSIGNED_BYTE, rgba);
    return glStatus("reading the picture");
}

Geometry ParallaxView::geometry() const {
    Geometry geometry = {};
    geometry.half_width = m_renderer.m_OBJ_CORD_X;
    geometry.half_height = m_renderer.m_OBJ_CORD_Y;
    if (!m_has_photo || !m_has_depth) return geometry;
    geometry.grid_width = m_renderer.m_vtxW;
    geometry.grid_height = m_renderer.m_vtxH;
    geometry.colour_ratio_x = m_renderer.m_texWidth / m_renderer.m_vtxW;
    geometry.colour_ratio_y = m_renderer.m_texHeight / m_renderer.m_vtxH;
    geometry.block_bytes = m_block_bytes;
    geometry.pivot_distance = m_renderer.m_z_factor;
    // The vertex shader puts depth d, 0..1, at distance 32 - 0.4 (35 d - 32).
    geometry.still_depth = 255.0f * ((32.0f - m_renderer.m_z_factor) / 0.4f + 32.0f) / 35.0f;
    return geometry;
}

}  // namespace quorvane
