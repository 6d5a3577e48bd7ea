// The driver's pictures against the model renderer, which knows nothing of the renderer's code: it starts
// from the planes that were uploaded.

#include <algorithm>
#include <cmath>

#include "../host/host_test.h"
#include "stored_picture.h"
#include "support/model_renderer.h"

namespace quorvane::test {
namespace {

/// Smooth coloured noise with a few hard shapes, so that every shift shows and edges are there.
Bytes photoOf(int width, int height) {
    Bytes rgb;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const double s = static_cast<double>(x) / width, t = static_cast<double>(y) / height;
            const bool shape = std::hypot(s - 0.6, (t - 0.4) * height / width) < 0.15;
            const double wave = 0.5 + 0.5 * std::sin(23 * s + 9 * std::sin(7 * t)) * std::cos(19 * t);
            rgb.push_back(static_cast<uint8_t>(shape ? 230 : 40 + 170 * wave));
            rgb.push_back(static_cast<uint8_t>(30 + 200 * t));
            rgb.push_back(static_cast<uint8_t>(shape ? 40 : 220 - 190 * s));
        }
    return rgb;
}

/// A slope with a near disc and a far hole: folds in every direction.
Bytes depthOf(int width, int height) {
    Bytes depth;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const double s = static_cast<double>(x) / width, t = static_cast<double>(y) / height;
            const double aspect = static_cast<double>(height) / width;
            if (std::hypot(s - 0.6, (t - 0.4) * aspect) < 0.15)
                depth.push_back(245);
            else if (std::hypot(s - 0.3, (t - 0.7) * aspect) < 0.1)
                depth.push_back(5);
            else
                depth.push_back(static_cast<uint8_t>(40 + 120 * t));
        }
    return depth;
}

struct Case {
    const char* name;
    int width, height;              // picture
    int photo_width, photo_height;  // the depth map has the same size: four photo pixels a cell
    uint32_t orientation = 4;
    float x = 0, y = 0;
    bool depth_buffer = true;
    int depth_scale = 1;  // depth samples a photo pixel
};

void PrintTo(const Case& c, std::ostream* out) { *out << c.name; }

class Picture : public DriverTest, public testing::WithParamInterface<Case> {
  protected:
    ModelScene sceneOf(const ESRenderer& renderer, bool depth_tested) const {
        ModelScene scene = {};
        // The last two uploads of their formats are the photo and the shaped depth.
        for (const TextureUpload& upload : gl.texture_uploads) {
            if (upload.format == GL_RGB) {
                scene.photo_width = upload.width;
                scene.photo_height = upload.height;
                scene.photo = upload.bytes;
            } else if (upload.format == GL_LUMINANCE) {
                scene.grid_width = upload.width;
                scene.grid_height = upload.height;
                scene.depth = upload.bytes;
            }
        }
        scene.width = static_cast<int>(renderer.m_width);
        scene.height = static_cast<int>(renderer.m_height);
        scene.half_width = static_cast<double>(renderer.m_OBJ_CORD_X);
        scene.half_height = static_cast<double>(renderer.m_OBJ_CORD_Y);
        scene.view_x = static_cast<double>(renderer.m_transX);
        scene.view_y = static_cast<double>(renderer.m_transY);
        scene.gain = 0.6;
        const bool first_set = GetParam().orientation == 4;
        scene.x_boundary_deg = first_set ? 12 : 14;
        scene.y_boundary_deg = first_set ? 12 : 10;
        scene.pivot = first_set ? 40 : 50;
        scene.fov_scale = 0.81;
        scene.far_plane = 164;
        scene.depth_tested = depth_tested;
        return scene;
    }
};

// Why the tolerances are what they are. The driver rounds a colour, weighs texels in steps of 1/256 and
// interpolates in single precision: 2.5 levels where the picture is smooth. It also snaps vertices to 1/256
// of a pixel, and where a wall of the mesh is seen almost edge-on that moves the photo on it by up to a
// sixteenth of what lies between a pixel and its neighbours. A silhouette may fall on the other side of a
// pixel's centre, so a pixel may also have a neighbour's colour. What is left then is no more than a speck.
constexpr double kTolerance = 2.5;
constexpr double kShareOfContrast = 1.0 / 16;
constexpr double kOutliers = 0.0002;

/// Whether a pixel has the model's colour there or next to there.
bool agrees(const std::vector<double>& model, const Bytes& rgba, int width, int height, int x, int y) {
    const auto at = [&](int column, int row, size_t channel) {
        return model[3 * static_cast<size_t>(row * width + column) + channel];
    };
    double contrast = 0;
    for (size_t c = 0; c < 3; ++c) {
        double low = 255, high = 0;
        for (int row = std::max(y - 1, 0); row <= std::min(y + 1, height - 1); ++row)
            for (int column = std::max(x - 1, 0); column <= std::min(x + 1, width - 1); ++column) {
                low = std::min(low, at(column, row, c));
                high = std::max(high, at(column, row, c));
            }
        contrast = std::max(contrast, high - low);
    }
    const double tolerance = kTolerance + kShareOfContrast * contrast;
    for (int row = std::max(y - 1, 0); row <= std::min(y + 1, height - 1); ++row)
        for (int column = std::max(x - 1, 0); column <= std::min(x + 1, width - 1); ++column) {
            double worst = 0;
            for (size_t c = 0; c < 3; ++c)
                worst = std::max(
                    worst, std::abs(at(column, row, c) - rgba[4 * static_cast<size_t>(y * width + x) + c]));
            if (worst <= tolerance) return true;
        }
    return false;
}

TEST_P(Picture, AgreesWithTheModel) {
    const Case& c = GetParam();
    std::unique_ptr<ParallaxView> view;
    Bytes pixels(4 * static_cast<size_t>(c.width) * static_cast<size_t>(c.height));
    {
        const OutputToTimeline output;
        ASSERT_TRUE(ParallaxView::create(c.width, c.height, c.orientation, &view).ok());
        const int dw = c.photo_width * c.depth_scale, dh = c.photo_height * c.depth_scale;
        ASSERT_TRUE(
            view->setPhoto({photoOf(c.photo_width, c.photo_height), c.photo_width, c.photo_height}).ok());
        ASSERT_TRUE(view->setDepth({depthOf(dw, dh), dw, dh}).ok());
        ASSERT_TRUE(view->lookAt(c.x, c.y).ok());
        if (!c.depth_buffer) {
            glBindFramebuffer(GL_FRAMEBUFFER, view->renderer().m_fbo);
            glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER, 0);
        }
        // A marker first: never drawn and drawn black look different.
        glBindFramebuffer(GL_FRAMEBUFFER, view->renderer().m_fbo);
        glClearColor(1, 0, 1, 0);
        glClear(GL_COLOR_BUFFER_BIT);
        ASSERT_TRUE(view->render().ok());
        ASSERT_TRUE(view->readPixels({pixels, view->width(), view->height()}).ok());
    }

    const std::vector<double> model = modelPicture(sceneOf(view->renderer(), c.depth_buffer));
    std::vector<std::pair<int, int>> outliers;
    for (int y = 0; y < c.height; ++y)
        for (int x = 0; x < c.width; ++x) {
            ASSERT_EQ(pixels[4 * static_cast<size_t>(y * c.width + x) + 3], 255)
                << "alpha at " << x << ", " << y;
            if (!agrees(model, pixels, c.width, c.height, x, y)) outliers.emplace_back(x, y);
        }
    const double share = static_cast<double>(outliers.size()) / (c.width * c.height);
    EXPECT_LE(share, kOutliers) << "the first at " << outliers.front().first << ", "
                                << outliers.front().second;
    if (share > kOutliers) {
        Bytes wanted(pixels.size(), 255);
        for (size_t i = 0; i < model.size(); ++i)
            wanted[i / 3 * 4 + i % 3] = static_cast<uint8_t>(model[i] + 0.5);
        writeEvidence(std::string("model-") + c.name, c.width, c.height, pixels, wanted);
    }
}

std::vector<Case> cases() {
    std::vector<Case> all;
    const auto add = [&all](const char* name, int width, int height, uint32_t orientation, float x, float y,
                            bool depth_buffer) {
        Case c = {name, width, height, width, height, orientation, x, y, depth_buffer, 1};
        all.push_back(c);
    };
    add("LandscapeRest", 240, 160, 4, 0, 0, true);
    add("LandscapeLeft", 240, 160, 4, -1, 0, true);
    add("LandscapeRight", 240, 160, 4, 1, 0, true);
    add("LandscapeBelow", 240, 160, 4, 0, -1, true);
    add("LandscapeAbove", 240, 160, 4, 0, 1, true);
    add("LandscapeCorner", 240, 160, 4, 0.7f, -0.6f, true);
    add("PortraitRest", 160, 240, 4, 0, 0, true);
    add("PortraitLeft", 160, 240, 4, -1, 0, true);
    add("PortraitRight", 160, 240, 4, 1, 0, true);
    add("PortraitBelow", 160, 240, 4, 0, -1, true);
    add("PortraitAbove", 160, 240, 4, 0, 1, true);
    add("SecondSetRest", 240, 160, 0, 0, 0, true);
    add("SecondSetLeft", 240, 160, 0, -1, 0, true);
    add("SecondSetRight", 240, 160, 0, 1, 0, true);
    add("SecondSetBelow", 240, 160, 0, 0, -1, true);
    add("SecondSetAbove", 240, 160, 0, 0, 1, true);
    add("IndexOrderRest", 240, 160, 4, 0, 0, false);
    add("IndexOrderLeft", 240, 160, 4, -1, 0, false);
    add("IndexOrderRight", 240, 160, 4, 1, 0, false);
    add("IndexOrderBelow", 240, 160, 0, 0, -1, false);
    add("IndexOrderAbove", 240, 160, 0, 0, 1, false);
    // 240 x 160 cells: 77,120 vertices, more than 16-bit indices reach.
    Case fine = {"FineGridCorner", 240, 160, 240, 160, 4, 0.9f, 0.8f, true, 4};
    all.push_back(fine);
    return all;
}

INSTANTIATE_TEST_SUITE_P(Driver, Picture, testing::ValuesIn(cases()),
                         [](const auto& test) { return std::string(test.param.name); });

class StoredPictures : public DriverTest {};

// One picture kept as a file, for what no model foresees.
TEST_F(StoredPictures, SceneFromTheRightStaysAsItWas) {
    std::unique_ptr<ParallaxView> view;
    Bytes pixels(4 * 160 * 120);
    {
        const OutputToTimeline output;
        ASSERT_TRUE(ParallaxView::create(160, 120, 4, &view).ok());
        ASSERT_TRUE(view->setPhoto({photoOf(320, 240), 320, 240}).ok());
        ASSERT_TRUE(view->setDepth({depthOf(320, 240), 320, 240}).ok());
        ASSERT_TRUE(view->lookAt(1, 0.3f).ok());
        ASSERT_TRUE(view->render().ok());
        ASSERT_TRUE(view->readPixels({pixels, view->width(), view->height()}).ok());
    }
    // Other back-ends of the driver round otherwise and place silhouettes otherwise.
    expectStoredPicture("scene-from-the-right", 160, 120, pixels, /*mean*/ 0.5,
                        /*share beyond 8 levels*/ 0.005);
}

// What a frame must leave alone.
TEST_F(StoredPictures, FrameLeavesTheAppsOtherStateAlone) {
    std::unique_ptr<ParallaxView> view;
    const auto quietly = [](const auto& action) {
        const OutputToTimeline output;
        return action();
    };
    ASSERT_TRUE(quietly([&] { return ParallaxView::create(48, 32, 4, &view); }).ok());
    ASSERT_TRUE(quietly([&] { return view->setPhoto({photoOf(64, 64), 64, 64}); }).ok());
    ASSERT_TRUE(quietly([&] { return view->setDepth({depthOf(64, 64), 64, 64}); }).ok());

    // A neighbouring texture of the app's, filled with a pattern, and bindings of its own.
    const Bytes pattern = noise(16 * 16 * 4, 3);
    GLuint neighbour = 0, renderbuffer = 0;
    glGenTextures(1, &neighbour);
    glActiveTexture(GL_TEXTURE3);
    glBindTexture(GL_TEXTURE_2D, neighbour);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 16, 16, 0, GL_RGBA, GL_UNSIGNED_BYTE, pattern.data());
    glActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_2D, neighbour);
    glGenRenderbuffers(1, &renderbuffer);
    glBindRenderbuffer(GL_RENDERBUFFER, renderbuffer);
    glScissor(3, 4, 5, 6);
    glBlendFunc(GL_ONE, GL_DST_COLOR);
    glPixelStorei(GL_PACK_ALIGNMENT, 2);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 8);

    const auto state = [] {
        std::vector<GLint> values;
        for (const GLenum name :
             {GL_SCISSOR_BOX, GL_BLEND_SRC_RGB, GL_BLEND_DST_RGB, GL_FRONT_FACE, GL_CULL_FACE_MODE,
              GL_PACK_ALIGNMENT, GL_UNPACK_ALIGNMENT, GL_RENDERBUFFER_BINDING, GL_STENCIL_FUNC,
              GL_STENCIL_WRITEMASK, GL_GENERATE_MIPMAP_HINT, GL_TEXTURE_BINDING_CUBE_MAP}) {
            GLint four[4] = {0, 0, 0, 0};
            glGetIntegerv(static_cast<GLenum>(name), four);
            values.insert(values.end(), four, four + 4);
        }
        for (const GLenum unit : {GL_TEXTURE0, GL_TEXTURE3, GL_TEXTURE4}) {
            GLint active = 0, bound = 0;
            glGetIntegerv(GL_ACTIVE_TEXTURE, &active);
            glActiveTexture(static_cast<GLenum>(unit));
            glGetIntegerv(GL_TEXTURE_BINDING_2D, &bound);
            glActiveTexture(static_cast<GLenum>(active));
            values.push_back(bound);
        }
        return values;
    };
    const std::vector<GLint> before = state();
    ASSERT_TRUE(quietly([&] { return view->render(); }).ok());
    EXPECT_EQ(state(), before);

    GLuint framebuffer = 0;
    glGenFramebuffers(1, &framebuffer);
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, neighbour, 0);
    Bytes now(pattern.size());
    glPixelStorei(GL_PACK_ALIGNMENT, 4);
    glReadPixels(0, 0, 16, 16, GL_RGBA, GL_UNSIGNED_BYTE, now.data());
    EXPECT_EQ(now, pattern);
    glDeleteFramebuffers(1, &framebuffer);
    glDeleteRenderbuffers(1, &renderbuffer);
    glDeleteTextures(1, &neighbour);
}

}  // namespace
}  // namespace quorvane::test
