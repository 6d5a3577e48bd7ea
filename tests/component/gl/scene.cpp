#include "scene.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <ostream>

namespace quorvane::test {

bool operator==(const Colour& a, const Colour& b) { return a.r == b.r && a.g == b.g && a.b == b.b; }

std::ostream& operator<<(std::ostream& out, const Colour& colour) {
    return out << "(" << colour.r << ", " << colour.g << ", " << colour.b << ")";
}

Colour Picture::at(int x, int y) const {
    const size_t i = 4 * static_cast<size_t>(y * width + x);
    return {rgba[i], rgba[i + 1], rgba[i + 2]};
}

int Picture::countOf(const Colour& colour) const {
    int count = 0;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) count += at(x, y) == colour ? 1 : 0;
    return count;
}

int largestDifference(const Picture& a, const Picture& b) {
    int largest = 0;
    for (size_t i = 0; i < a.rgba.size(); ++i) largest = std::max(largest, std::abs(a.rgba[i] - b.rgba[i]));
    return largest;
}

double meanDifference(const Picture& a, const Picture& b) {
    double sum = 0;
    for (size_t i = 0; i < a.rgba.size(); ++i) sum += std::abs(a.rgba[i] - b.rgba[i]);
    return sum / static_cast<double>(a.rgba.size());
}

void GlTest::SetUp() {
    const Status made = OffscreenContext::create(&context);
    if (!made) GTEST_SKIP() << "NO PICTURE WAS TESTED: " << made.message();
    forget();
}

namespace {

class BoundFramebuffer {
  public:
    explicit BoundFramebuffer(GLuint framebuffer) : m_before(GlRecorder::instance().bound_framebuffer) {
        glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    }
    ~BoundFramebuffer() { glBindFramebuffer(GL_FRAMEBUFFER, m_before); }

    BoundFramebuffer(const BoundFramebuffer&) = delete;
    BoundFramebuffer& operator=(const BoundFramebuffer&) = delete;

  private:
    GLuint m_before;
};

Picture readBound(int width, int height) {
    Picture picture;
    picture.width = width;
    picture.height = height;
    picture.rgba.resize(4 * static_cast<size_t>(width * height));
    glReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, picture.rgba.data());
    return picture;
}

}  // namespace

Target::Target(int width, int height) : m_width(width), m_height(height) {
    glGenTextures(1, &m_texture);
    glBindTexture(GL_TEXTURE_2D, m_texture);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, width, height, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
    glBindTexture(GL_TEXTURE_2D, 0);
    glGenFramebuffers(1, &m_framebuffer);
    const BoundFramebuffer bound(m_framebuffer);
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, m_texture, 0);
}

Target::~Target() {
    glDeleteFramebuffers(1, &m_framebuffer);
    glDeleteTextures(1, &m_texture);
}

void Target::fill(const Colour& colour) {
    const BoundFramebuffer bound(m_framebuffer);
    glClearColor(static_cast<float>(colour.r) / 255.0f, static_cast<float>(colour.g) / 255.0f,
                 static_cast<float>(colour.b) / 255.0f, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT);
}

Picture Target::read() const {
    const BoundFramebuffer bound(m_framebuffer);
    return readBound(m_width, m_height);
}

Picture readTexture(GLuint texture, int width, int height) {
    GLuint framebuffer = 0;
    glGenFramebuffers(1, &framebuffer);
    Picture picture;
    {
        const BoundFramebuffer bound(framebuffer);
        glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, texture, 0);
        EXPECT_EQ(glCheckFramebufferStatus(GL_FRAMEBUFFER), static_cast<GLenum>(GL_FRAMEBUFFER_COMPLETE));
        picture = readBound(width, height);
    }
    glDeleteFramebuffers(1, &framebuffer);
    return picture;
}

Scene::Scene(const Sizes& sizes)
    : m_sizes(sizes),
      m_target(sizes.out_w, sizes.out_h),
      m_rig(std::make_unique<Rig>(sizes.photo_w, sizes.photo_h, sizes.depth_w, sizes.depth_h)) {
    const OutputToTimeline output;
    EXPECT_TRUE(renderer().setupGraphics(sizes.out_w, sizes.out_h));
    renderer().setupVertices();
    EXPECT_TRUE(renderer().setOutTexture(m_target.texture()));
}

Scene::~Scene() {
    destroyRenderer();
    if (m_depth_buffer != 0) glDeleteRenderbuffers(1, &m_depth_buffer);
}

void Scene::destroyRenderer() { m_rig.reset(); }

void Scene::setPhoto(Bytes rgb) {
    const OutputToTimeline output;
    renderer().setTexture(m_sizes.photo_w, m_sizes.photo_h, rgb.data());
}

void Scene::setDepth(Bytes depth) {
    const OutputToTimeline output;
    renderer().setDepth(m_sizes.depth_w, m_sizes.depth_h, depth.data());
}

void Scene::setFlatDepth(int value) {
    setDepth(Bytes(static_cast<size_t>(m_sizes.depth_w * m_sizes.depth_h), static_cast<uint8_t>(value)));
}

void Scene::attachDepthBuffer() {
    glGenRenderbuffers(1, &m_depth_buffer);
    glBindRenderbuffer(GL_RENDERBUFFER, m_depth_buffer);
    glRenderbufferStorage(GL_RENDERBUFFER, GL_DEPTH_COMPONENT16, m_sizes.out_w, m_sizes.out_h);
    glBindFramebuffer(GL_FRAMEBUFFER, renderer().m_fbo);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER, m_depth_buffer);
}

Picture Scene::frame() {
    const OutputToTimeline output;
    m_target.fill(kMarker);
    renderer().renderFrame();
    return m_target.read();
}

Scene::Point Scene::projected(double u, double v, int shaped_depth) const {
    const ESRenderer& r = m_rig->renderer;
    const double half_w = r.m_OBJ_CORD_X, half_h = r.m_OBJ_CORD_Y, pivot = r.m_z_factor;
    const double scale = double{r.params.fov_scale} * 12 / 32;
    const double gain = r.params.trans_to_rotate_scale;
    const Matrix view =
        translation(0, 0, -pivot) * rotation(-r.m_transX * gain * r.params.rotate_x_boundary, 0, 1, 0) *
        rotation(-r.m_transY * gain * r.params.rotate_y_boundary, 1, 0, 0) * translation(0, 0, pivot);
    const Matrix lens = frustum(-half_w * scale, half_w * scale, -half_h * scale, half_h * scale, 12,
                                64 + double{r.params.far_offset_ext});

    const double offset = 0.4 * (shaped_depth / 255.0 * 35 - 32);
    const double along = (-32 + offset) / -32;  // along the line of sight
    const Vector clip =
        lens * (view * Vector{(2 * u - 1) * half_w * along, (2 * v - 1) * half_h * along, -32 + offset, 1});
    return {(clip.x / clip.w + 1) / 2 * m_sizes.out_w, (clip.y / clip.w + 1) / 2 * m_sizes.out_h};
}

Picture croppedPhoto(const Bytes& rgb, int photo_w, int photo_h, int out_w, int out_h) {
    const auto texel = [&](int x, int y, int channel) {
        const int i = std::clamp(y, 0, photo_h - 1) * photo_w + std::clamp(x, 0, photo_w - 1);
        return double{static_cast<double>(rgb[3 * static_cast<size_t>(i) + static_cast<size_t>(channel)])};
    };
    Picture picture;
    picture.width = out_w;
    picture.height = out_h;
    for (int py = 0; py < out_h; ++py)
        for (int px = 0; px < out_w; ++px) {
            // Pixel centres, from the middle; the visible half is 0.81 of the mesh's.
            const double u = 0.5 + 0.81 * ((px + 0.5) / out_w - 0.5);
            const double v = 0.5 + 0.81 * ((py + 0.5) / out_h - 0.5);
            const double x = u * photo_w - 0.5, y = v * photo_h - 0.5;
            const int x0 = static_cast<int>(std::floor(x)), y0 = static_cast<int>(std::floor(y));
            const double fx = x - x0, fy = y - y0;
            for (int c = 0; c < 3; ++c) {
                const double upper = texel(x0, y0, c) * (1 - fx) + texel(x0 + 1, y0, c) * fx;
                const double lower = texel(x0, y0 + 1, c) * (1 - fx) + texel(x0 + 1, y0 + 1, c) * fx;
                picture.rgba.push_back(static_cast<uint8_t>(std::lround(upper * (1 - fy) + lower * fy)));
            }
            picture.rgba.push_back(255);
        }
    return picture;
}

}  // namespace quorvane::test
