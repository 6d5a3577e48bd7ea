// ParallaxView on the real driver.

#include <cmath>
#include <iterator>
#include <limits>
#include <map>
#include <thread>

#include "host_test.h"

namespace quorvane::test {
namespace {

using testing::AllOf;
using testing::Each;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

constexpr int kPhoto = 64;
constexpr int kDepth = 64;

class ParallaxViewTest : public DriverTest {
  protected:
    void SetUp() override {
        DriverTest::SetUp();
        if (IsSkipped()) return;
        create(48, 32);
    }

    void create(int width, int height) {
        const OutputToTimeline output;
        const Status made = ParallaxView::create(width, height, 4, &view);
        ASSERT_TRUE(made.ok()) << made.message();
    }

    /// Runs `action` with the renderer's timing lines kept out of the way.
    template <typename Action>
    auto quietly(Action action) {
        const OutputToTimeline output;
        return action();
    }

    Status setPhoto(int width, int height, const Bytes& rgb) {
        return quietly([&] { return view->setPhoto({rgb, width, height}); });
    }
    Status setDepth(int width, int height, const Bytes& samples) {
        return quietly([&] { return view->setDepth({samples, width, height}); });
    }

    void setImages() {
        ASSERT_TRUE(setPhoto(kPhoto, kPhoto, photo).ok());
        ASSERT_TRUE(setDepth(kDepth, kDepth, depth).ok());
    }

    Bytes picture() {
        const Status drawn = quietly([this] { return view->render(); });
        EXPECT_TRUE(drawn.ok()) << drawn.message();
        Bytes pixels(4 * static_cast<size_t>(view->width()) * static_cast<size_t>(view->height()));
        const Status read = view->readPixels({pixels, view->width(), view->height()});
        EXPECT_TRUE(read.ok()) << read.message();
        return pixels;
    }

    std::unique_ptr<ParallaxView> view;
    const Bytes photo = noise(kPhoto * kPhoto * 3, 1);
    const Bytes depth = noise(kDepth * kDepth, 2);
};

TEST_F(ParallaxViewTest, DrawsAFilledPicture) {
    ASSERT_TRUE(setPhoto(kPhoto, kPhoto, Bytes(kPhoto * kPhoto * 3, 200)).ok());
    ASSERT_TRUE(setDepth(kDepth, kDepth, Bytes(kDepth * kDepth, 90)).ok());
    const Bytes pixels = picture();
    for (size_t i = 0; i < pixels.size(); i += 4) {
        ASSERT_EQ(pixels[i], 200);
        ASSERT_EQ(pixels[i + 3], 255);
    }
}

TEST_F(ParallaxViewTest, FirstRowReadIsThePhotosTop) {
    Bytes two(kPhoto * kPhoto * 3, 10);
    std::fill(two.begin(), two.begin() + kPhoto * kPhoto * 3 / 2, uint8_t{240});
    ASSERT_TRUE(setPhoto(kPhoto, kPhoto, two).ok());
    ASSERT_TRUE(setDepth(kDepth, kDepth, Bytes(kDepth * kDepth, 90)).ok());
    const Bytes pixels = picture();
    EXPECT_EQ(pixels.front(), 240);
    EXPECT_EQ(pixels[pixels.size() - 4], 10);
}

TEST_F(ParallaxViewTest, SamePictureFromTheSameInputsWhateverWasDrawnBefore) {
    setImages();
    const Bytes first = picture();
    // Another pair in between leaves other bytes in the working block.
    ASSERT_TRUE(setPhoto(kPhoto, kPhoto, noise(photo.size(), 7)).ok());
    ASSERT_TRUE(setDepth(kDepth, kDepth, noise(depth.size(), 8)).ok());
    picture();
    setImages();
    EXPECT_EQ(picture(), first);

    // A second view, with a fresh block, agrees.
    const std::unique_ptr<ParallaxView> old = std::move(view);
    create(48, 32);
    setImages();
    EXPECT_EQ(picture(), first);
}

TEST_F(ParallaxViewTest, PictureIgnoresTheAppsGlState) {
    setImages();
    const Bytes wanted = picture();
    glEnable(GL_BLEND);
    glEnable(GL_SCISSOR_TEST);
    glScissor(0, 0, 1, 1);
    glEnable(GL_CULL_FACE);
    glEnable(GL_STENCIL_TEST);
    glColorMask(GL_FALSE, GL_TRUE, GL_FALSE, GL_TRUE);
    glDepthMask(GL_FALSE);
    glDepthRangef(1.0f, 0.0f);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 8);
    glActiveTexture(GL_TEXTURE5);
    glBindFramebuffer(GL_FRAMEBUFFER, 0);
    setImages();
    EXPECT_EQ(picture(), wanted);
}

TEST_F(ParallaxViewTest, OddWidthPhotoIsNotSkewed) {
    // Columns of 33 x 3 bytes, no multiple of 4: with padded rows the vertical edge would slant.
    Bytes halves;
    for (int y = 0; y < 33; ++y)
        for (int x = 0; x < 33; ++x) halves.insert(halves.end(), 3, x < 16 ? uint8_t{255} : uint8_t{0});
    glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    ASSERT_TRUE(setPhoto(33, 33, halves).ok());
    ASSERT_TRUE(setDepth(33 * 4, 33 * 4, Bytes(33 * 4 * 33 * 4, 128)).ok());
    const Bytes pixels = picture();
    for (size_t y = 0; y < 32; ++y) {
        EXPECT_GT(pixels[4 * (y * 48 + 10)], 250) << y;
        EXPECT_LT(pixels[4 * (y * 48 + 40)], 5) << y;
    }
}

TEST_F(ParallaxViewTest, DepthBufferLetsNearThingsHideFarOnes) {
    // The lower half is near and reaches over the far upper half when seen from below; rows are drawn from
    // the photo's top down, so without a depth buffer a far row drawn later would win in the other direction.
    GLint attached = 0;
    glBindFramebuffer(GL_FRAMEBUFFER, view->renderer().m_fbo);
    glGetFramebufferAttachmentParameteriv(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT,
                                          GL_FRAMEBUFFER_ATTACHMENT_OBJECT_TYPE, &attached);
    EXPECT_EQ(attached, GL_RENDERBUFFER);

    // A grid cell a photo pixel, so that the wall between the halves stays thin.
    Bytes colours, levels;
    for (int y = 0; y < kPhoto; ++y)
        for (int x = 0; x < kPhoto; ++x)
            colours.insert(colours.end(), {y < kPhoto / 2 ? uint8_t{255} : uint8_t{0},
                                           y < kPhoto / 2 ? uint8_t{0} : uint8_t{255}, 0});
    for (int y = 0; y < 4 * kPhoto; ++y)
        levels.insert(levels.end(), 4 * kPhoto, y < 2 * kPhoto ? uint8_t{255} : uint8_t{0});
    ASSERT_TRUE(quietly([&] { return view->resize(64, 128); }).ok());
    ASSERT_TRUE(setPhoto(kPhoto, kPhoto, colours).ok());
    ASSERT_TRUE(setDepth(4 * kPhoto, 4 * kPhoto, levels).ok());
    ASSERT_TRUE(view->setParameter("rotate_y_boundary", 40).ok());
    // From above the near upper half comes down over the far lower half, whose rows are drawn later.
    ASSERT_TRUE(quietly([&] { return view->lookAt(0, 1); }).ok());
    const Bytes pixels = picture();
    const auto red = [&](size_t y) { return pixels[4 * (y * 64 + 32)]; };
    EXPECT_GT(red(70), 200) << "the near half covers what lies behind it";
    EXPECT_LT(red(100), 50) << "and no more than that";
    glDepthRangef(1.0f, 0.0f);
    EXPECT_EQ(picture(), pixels) << "the app's depth range does not turn it around";
}

TEST_F(ParallaxViewTest, LookingIsClampedAndHeldInsideTheDeadZone) {
    ASSERT_TRUE(quietly([&] { return view->lookAt(7, -9); }).ok());
    const float x = view->renderer().m_transX, y = view->renderer().m_transY;
    ASSERT_TRUE(quietly([&] { return view->lookAt(1, -1); }).ok());
    EXPECT_EQ(view->renderer().m_transX, x);
    EXPECT_EQ(view->renderer().m_transY, y);
    // 48 pixels and a dead zone of 64: 0.75 pixels off the near edge, one more off the far one.
    EXPECT_FLOAT_EQ(x, (47 - 0.75f - 24) / 24);
    EXPECT_FLOAT_EQ(y, (0.5f - 16) / 16);
    ASSERT_TRUE(quietly([&] { return view->lookAt(0, 0); }).ok());
    EXPECT_EQ(view->renderer().m_transX, 0.0f);
    EXPECT_EQ(view->renderer().m_transY, 0.0f);
}

TEST_F(ParallaxViewTest, MotionSettersReachTheRenderer) {
    ASSERT_TRUE(quietly([&] { return view->setRotation(36, 8, 2); }).ok());
    EXPECT_FLOAT_EQ(view->renderer().m_transX, 0.5f);
    EXPECT_FLOAT_EQ(view->renderer().m_transY, -0.5f);
    ASSERT_TRUE(quietly([&] { return view->setAccelerometerData(0, 0, 1); }).ok());
    EXPECT_FLOAT_EQ(view->renderer().m_transZ, 3.0f);
    ASSERT_TRUE(quietly([&] { return view->touchEvent(2); }).ok());
    EXPECT_FLOAT_EQ(view->renderer().m_transX, 0.4f);
    ASSERT_TRUE(quietly([&] { return view->setTranslation(0, 0, 5); }).ok());
    EXPECT_FLOAT_EQ(view->renderer().m_camTransZ, 5.0f);
    ASSERT_TRUE(view->setMinMaxDepth(3, 250).ok());
    EXPECT_EQ(view->renderer().m_minDepth, 3);
}

TEST_F(ParallaxViewTest, ResizeKeepsTheImages) {
    setImages();
    picture();
    ASSERT_TRUE(quietly([&] { return view->resize(20, 44); }).ok());
    EXPECT_EQ(view->width(), 20);
    EXPECT_EQ(view->height(), 44);
    Bytes pixels(20 * 44 * 4);
    EXPECT_THAT(sentence(view->readPixels({pixels, view->width(), view->height()})),
                HasSubstr("no picture of this size"));
    const Bytes resized = picture();

    view.reset();
    create(20, 44);
    setImages();
    EXPECT_EQ(picture(), resized);
}

TEST_F(ParallaxViewTest, TextureHoldsThePicture) {
    setImages();
    const Bytes wanted = picture();
    EXPECT_EQ(pixelsOf(view->texture(), 48, 32), wanted);
}

TEST_F(ParallaxViewTest, OutputIsDrawnIntoOverAndOver) {
    setImages();
    const GLuint texture = view->texture();
    picture();
    picture();
    EXPECT_EQ(view->texture(), texture);
}

TEST_F(ParallaxViewTest, GeometrySaysWhichDepthStandsStill) {
    setImages();
    const Geometry geometry = view->geometry();
    EXPECT_EQ(geometry.grid_width, 16);
    EXPECT_EQ(geometry.colour_ratio_x, 4);
    EXPECT_FLOAT_EQ(geometry.pivot_distance, 40.0f);
    // 0.4 (35 d - 32) = 32 - 40 gives d = 12 / 35.
    EXPECT_NEAR(geometry.still_depth, 255.0 * 12 / 35, 0.01);
    EXPECT_EQ(geometry.block_bytes, 3 * 64 * 64 + 57 * 256 + 40 * 16 * 17 + 12 * 17 * 17);
}

TEST_F(ParallaxViewTest, NothingIsLeftAfterItsEnd) {
    setImages();
    picture();
    setImages();
    ASSERT_TRUE(quietly([&] { return view->resize(30, 30); }).ok());
    picture();
    EXPECT_EQ(gl.live_textures.size(), 3u) << "photo, depth and picture";
    EXPECT_EQ(gl.live_renderbuffers.size(), 1u);
    view.reset();
    EXPECT_THAT(gl.live_textures, IsEmpty());
    EXPECT_THAT(gl.live_renderbuffers, IsEmpty());
    EXPECT_THAT(gl.live_buffers, IsEmpty());
    EXPECT_THAT(gl.live_framebuffers, IsEmpty());
    EXPECT_THAT(gl.live_programs, IsEmpty());
    EXPECT_THAT(gl.live_shaders, IsEmpty());
}

TEST_F(ParallaxViewTest, PhotoOfAnotherSizeUnsetsTheDepth) {
    setImages();
    ASSERT_TRUE(setPhoto(32, 32, Bytes(32 * 32 * 3, 5)).ok());
    EXPECT_EQ(sentence(quietly([&] { return view->render(); })),
              "nothing to draw: no depth map is set for this photo");
    ASSERT_TRUE(setDepth(kDepth, kDepth, depth).ok());
    picture();
}

TEST_F(ParallaxViewTest, PhotoSurvivesADepthOfAnotherGrid) {
    setImages();
    ASSERT_TRUE(setDepth(128, 128, noise(128 * 128, 5)).ok());
    const Bytes grown = picture();
    view.reset();
    create(48, 32);
    ASSERT_TRUE(setPhoto(kPhoto, kPhoto, photo).ok());
    ASSERT_TRUE(setDepth(128, 128, noise(128 * 128, 5)).ok());
    EXPECT_EQ(picture(), grown);
}

// Its end

/// Objects of every kind that a view has, in the context that is current.
struct Objects {
    std::vector<GLuint> textures = std::vector<GLuint>(8), buffers = textures, framebuffers = textures,
                        renderbuffers = textures, programs;

    Objects() {
        glGenTextures(8, textures.data());
        glGenBuffers(8, buffers.data());
        glGenFramebuffers(8, framebuffers.data());
        glGenRenderbuffers(8, renderbuffers.data());
        for (int i = 0; i < 8; ++i) {
            const auto at = static_cast<size_t>(i);
            glBindTexture(GL_TEXTURE_2D, textures[at]);
            glBindBuffer(GL_ARRAY_BUFFER, buffers[at]);
            glBindFramebuffer(GL_FRAMEBUFFER, framebuffers[at]);
            glBindRenderbuffer(GL_RENDERBUFFER, renderbuffers[at]);
            programs.push_back(glCreateProgram());
        }
    }

    bool allThere() const {
        const auto all = [](const std::vector<GLuint>& names, GLboolean (*is)(GLuint)) {
            return std::all_of(names.begin(), names.end(), [is](GLuint name) { return is(name) == GL_TRUE; });
        };
        return all(textures, glIsTexture) && all(buffers, glIsBuffer) && all(framebuffers, glIsFramebuffer) &&
               all(renderbuffers, glIsRenderbuffer) && all(programs, glIsProgram);
    }
};

constexpr char kEndsElsewhere[] =
    "a view ends while its OpenGL ES context is not current: its GL objects stay until that context goes";

TEST_F(ParallaxViewTest, EndInAnotherContextLeavesThatOnesObjects) {
    setImages();
    picture();
    std::unique_ptr<OffscreenContext> other;
    ASSERT_TRUE(OffscreenContext::create(&other).ok());
    const Objects others;
    ASSERT_TRUE(others.allThere());
    const GLuint texture = view->texture(), program = view->renderer().m_program;
    forget();
    view.reset();
    EXPECT_TRUE(others.allThere());
    ASSERT_EQ(log.lines().size(), 1u);
    EXPECT_EQ(log.lines()[0], (LogLine{5, "AppQRVN", kEndsElsewhere}));
    ASSERT_TRUE(context->makeCurrent().ok());
    EXPECT_EQ(glIsTexture(texture), GL_TRUE) << "its own stay with its context";
    EXPECT_EQ(glIsProgram(program), GL_TRUE);
}

TEST_F(ParallaxViewTest, EndWithoutAContextIsToldToo) {
    setImages();
    context->release();
    forget();
    view.reset();
    EXPECT_THAT(log.texts(), testing::ElementsAre(kEndsElsewhere));
}

TEST_F(ParallaxViewTest, EndInItsOwnContextSaysNothing) {
    setImages();
    forget();
    view.reset();
    EXPECT_THAT(log.texts(), IsEmpty());
}

// What it refuses, and that it stays as it was.

TEST_F(ParallaxViewTest, RefusesAFrameBeforeTheImages) {
    EXPECT_EQ(sentence(quietly([&] { return view->render(); })), "nothing to draw: no photo is set");
    ASSERT_TRUE(setPhoto(kPhoto, kPhoto, photo).ok());
    EXPECT_EQ(sentence(quietly([&] { return view->render(); })),
              "nothing to draw: no depth map is set for this photo");
}

TEST_F(ParallaxViewTest, RefusesADepthBeforeThePhoto) {
    EXPECT_EQ(sentence(setDepth(kDepth, kDepth, depth)), "depth map: set the photo first");
}

TEST_F(ParallaxViewTest, RefusesNoPixels) {
    EXPECT_EQ(sentence(view->setPhoto({nullptr, 192, 8, 8})), "photo: no pixels given");
    EXPECT_EQ(sentence(view->setPhotoRgba({nullptr, 256, 8, 8})), "photo: no pixels given");
    setImages();
    EXPECT_EQ(sentence(view->setDepth({nullptr, 64, 8, 8})), "depth map: no pixels given");
    picture();
    EXPECT_EQ(sentence(view->readPixels({nullptr, 6144, 48, 32})), "reading the picture: no pixels given");
}

TEST_F(ParallaxViewTest, RefusesMemoryThatIsTooSmall) {
    Bytes bytes(6144);
    EXPECT_EQ(sentence(view->setPhoto({bytes.data(), 8 * 8 * 3 - 1, 8, 8})),
              "photo: 8 x 8 pixels take 192 bytes; 191 are given");
    EXPECT_EQ(sentence(view->setPhotoRgba({bytes.data(), 8 * 8 * 4 - 1, 8, 8})),
              "photo: 8 x 8 pixels take 256 bytes; 255 are given");
    EXPECT_EQ(sentence(view->setPhoto({bytes.data(), 0, 8, 8})),
              "photo: 8 x 8 pixels take 192 bytes; 0 are given");
    setImages();
    EXPECT_EQ(sentence(view->setDepth({bytes.data(), 63, 8, 8})),
              "depth map: 8 x 8 pixels take 64 bytes; 63 are given");
    const Bytes before = picture();
    EXPECT_EQ(sentence(view->readPixels({bytes.data(), 6143, 48, 32})),
              "reading the picture: 48 x 32 pixels take 6144 bytes; 6143 are given");
    EXPECT_EQ(picture(), before);
}

TEST_F(ParallaxViewTest, RefusesStridesThatDoNotFit) {
    const Bytes bytes(1000);
    EXPECT_EQ(sentence(view->setPhoto({bytes, 8, 8, 23})),
              "photo: a stride of 23 bytes; a row of 8 pixels takes 24");
    // Seven rows of 100 and one of 24.
    EXPECT_EQ(sentence(quietly([&] { return view->setPhoto({bytes.data(), 724, 8, 8, 100}); })), "succeeded");
    EXPECT_EQ(sentence(view->setPhoto({bytes.data(), 723, 8, 8, 100})),
              "photo: 8 x 8 pixels with a stride of 100 bytes take 724 bytes; 723 are given");
    // Sums that wrap around would fit.
    const size_t most = std::numeric_limits<size_t>::max();
    for (const size_t stride : {most, most / 7, most / 2 + 1})
        EXPECT_EQ(sentence(view->setPhoto({bytes, 8, 8, stride})),
                  "photo: a stride of " + std::to_string(stride) + " bytes is more than memory can have");
    EXPECT_THAT(sentence(view->setPhoto({bytes, 8, 8, most / 7 - 24})), HasSubstr("; 1000 are given"));
    EXPECT_EQ(sentence(quietly([&] {
                  return view->setPhoto({bytes, 8, 1, most});
              })),
              "succeeded")
        << "there is no second row";
}

TEST_F(ParallaxViewTest, RowsMayHavePadding) {
    setImages();
    const Bytes wanted = picture();
    const auto padded = [](const Bytes& tight, int rows, size_t padding) {
        const size_t row = tight.size() / static_cast<size_t>(rows);
        Bytes all;
        for (size_t at = 0; at < tight.size(); at += row) {
            all.insert(all.end(), tight.begin() + static_cast<std::ptrdiff_t>(at),
                       tight.begin() + static_cast<std::ptrdiff_t>(at + row));
            if (at + row < tight.size()) all.insert(all.end(), padding, 0x99);
        }
        return all;
    };
    // The last row has no padding, and nothing that may be read behind it.
    const GuardedBytes photo_rows(padded(photo, kPhoto, 5)), depth_rows(padded(depth, kDepth, 3));
    create(48, 32);
    ASSERT_EQ(sentence(quietly([&] {
                  return view->setPhoto({photo_rows, kPhoto, kPhoto, 3 * kPhoto + 5});
              })),
              "succeeded");
    ASSERT_EQ(sentence(quietly([&] {
                  return view->setDepth({depth_rows, kDepth, kDepth, kDepth + 3});
              })),
              "succeeded");
    EXPECT_EQ(picture(), wanted);

    constexpr size_t kRow = 48 * 4, kStride = kRow + 7;
    GuardedBytes pixels(31 * kStride + kRow);
    ASSERT_EQ(sentence(view->readPixels({pixels, 48, 32, kStride})), "succeeded");
    for (size_t y = 0; y < 32; ++y) {
        const uint8_t* row = pixels.data() + y * kStride;
        EXPECT_TRUE(std::equal(row, row + kRow, &wanted[y * kRow])) << y;
        if (y == 31) break;
        EXPECT_EQ(Bytes(row + kRow, row + kStride), Bytes(7, 0xcd)) << "padding of row " << y;
    }
    EXPECT_TRUE(pixels.surroundingsUntouched());
}

TEST_F(ParallaxViewTest, FourthByteOfAPhotosPixelsIsIgnored) {
    setImages();
    const Bytes wanted = picture();
    Bytes rgba;
    for (size_t i = 0; i < photo.size(); i += 3)
        rgba.insert(rgba.end(), {photo[i], photo[i + 1], photo[i + 2], static_cast<uint8_t>(i)});
    create(48, 32);
    ASSERT_EQ(sentence(quietly([&] { return view->setPhotoRgba({rgba, kPhoto, kPhoto}); })), "succeeded");
    ASSERT_TRUE(setDepth(kDepth, kDepth, depth).ok());
    EXPECT_EQ(picture(), wanted);

    // Padding ends no pixel too early.
    Bytes rows;
    for (size_t y = 0; y < kPhoto; ++y) {
        rows.insert(rows.end(), &rgba[y * 4 * kPhoto], &rgba[y * 4 * kPhoto] + 4 * kPhoto);
        rows.insert(rows.end(), 6, 0x77);
    }
    create(48, 32);
    ASSERT_EQ(sentence(quietly([&] {
                  return view->setPhotoRgba({rows, kPhoto, kPhoto, 4 * kPhoto + 6});
              })),
              "succeeded");
    ASSERT_TRUE(setDepth(kDepth, kDepth, depth).ok());
    EXPECT_EQ(picture(), wanted);
}

TEST_F(ParallaxViewTest, RefusesReadingAnotherSizeThanThePictures) {
    setImages();
    picture();
    Bytes pixels(48 * 33 * 4);
    EXPECT_EQ(sentence(view->readPixels({pixels, 48, 33})),
              "reading the picture: 48 x 33 pixels are asked for, and the picture has 48 x 32");
    EXPECT_THAT(sentence(view->readPixels({pixels, 0, 32})), HasSubstr("the picture has 48 x 32"));
}

TEST_F(ParallaxViewTest, RefusesSizesThatAreNone) {
    for (const auto& [width, height] : {std::pair{0, 8}, {8, 0}, {-8, 8}, {8, 1 << 30}, {16385, 1}})
        EXPECT_THAT(sentence(view->setPhoto({photo, width, height})), StartsWith("photo: "));
    setImages();
    const Bytes before = picture();
    for (const auto& [width, height] :
         {std::pair{3, 8}, {8, 3}, {-8, 8}, {0, 0}, {std::numeric_limits<int>::max(), 8}})
        EXPECT_THAT(sentence(view->setDepth({depth, width, height})),
                    AllOf(StartsWith("depth map: "), HasSubstr("each side must be 4 to ")));
    EXPECT_EQ(picture(), before);
}

TEST_F(ParallaxViewTest, RefusesRatiosOutsideTheTable) {
    setImages();
    const Bytes before = picture();
    // 64 pixels over grids of 21, 5, 1 and 25 cells.
    for (const int size : {84, 20, 4, 100})
        EXPECT_THAT(sentence(setDepth(size, size, Bytes(static_cast<size_t>(size * size)))),
                    HasSubstr("not 1, 2, 4, 8, 16 or 32 times"));
    EXPECT_THAT(sentence(setDepth(64, 84, Bytes(64 * 84))), HasSubstr("64 x 64 photo"));
    EXPECT_EQ(picture(), before);
}

TEST_F(ParallaxViewTest, RefusesDepthSidesThatTheirGridIsNotAQuarterOf) {
    setImages();
    const Bytes before = picture();
    for (const int side : {5, 6, 7, 10, 11, 15}) {
        const Bytes samples(static_cast<size_t>(side * 16));
        EXPECT_THAT(sentence(setDepth(side, 16, samples)), HasSubstr("does not divide into cells of 4 x 4"));
        EXPECT_THAT(sentence(setDepth(16, side, samples)), HasSubstr("use multiples of 4"));
    }
    EXPECT_EQ(picture(), before);
}

TEST_F(ParallaxViewTest, TakesEveryRatioOfTheTable) {
    ASSERT_TRUE(setPhoto(kPhoto, kPhoto, photo).ok());
    for (const int ratio : {1, 2, 4, 8, 16, 32}) {
        const int size = 4 * kPhoto / ratio;
        EXPECT_TRUE(setDepth(size, size, Bytes(static_cast<size_t>(size * size), 100)).ok()) << ratio;
        picture();
    }
}

TEST_F(ParallaxViewTest, RefusesABlockBeyondTwoGigabytes) {
    // A cell a pixel takes 109 bytes, and 3 go to the pixel itself: 2.6 GB. No sample is read.
    ASSERT_TRUE(setPhoto(16384, 1400, Bytes(16384u * 1400u * 3u)).ok());
    EXPECT_THAT(sentence(view->setDepth({depth.data(), size_t{16} * 16384 * 1400, 4 * 16384, 4 * 1400})),
                HasSubstr("needs 2.6 GB of working memory; 2 GB is the limit"));
    EXPECT_EQ(sentence(quietly([&] { return view->render(); })),
              "nothing to draw: no depth map is set for this photo");
}

TEST_F(ParallaxViewTest, RefusesOutputsTheDriverCannotMake) {
    setImages();
    const Bytes before = picture();
    for (const auto& [width, height] : {std::pair{0, 5}, {5, -1}, {1 << 20, 5}})
        EXPECT_THAT(sentence(view->resize(width, height)), StartsWith("output: "));
    EXPECT_EQ(view->width(), 48);
    EXPECT_EQ(picture(), before);
    std::unique_ptr<ParallaxView> none;
    EXPECT_THAT(sentence(ParallaxView::create(0, 0, 4, &none)), StartsWith("output: "));
    EXPECT_EQ(none, nullptr);
}

TEST_F(ParallaxViewTest, RefusesMotionThatIsNoNumber) {
    const float bad[] = {std::nanf(""), std::numeric_limits<float>::infinity(),
                         -std::numeric_limits<float>::infinity()};
    for (const float value : bad) {
        EXPECT_FALSE(view->lookAt(value, 0).ok());
        EXPECT_FALSE(view->lookAt(0, value).ok());
        EXPECT_FALSE(view->setRotation(value, 0, 0).ok());
        EXPECT_FALSE(view->setAccelerometerData(0, value, 0).ok());
        EXPECT_FALSE(view->setTranslation(0, 0, value).ok());
    }
    EXPECT_FALSE(view->touchEvent(4).ok());
    EXPECT_FALSE(view->touchEvent(-1).ok());
    EXPECT_EQ(view->renderer().m_transX, 0.0f);
    EXPECT_EQ(view->renderer().m_camTransZ, 0.0f);
}

TEST_F(ParallaxViewTest, ParametersGoInAndOutByName) {
    for (const ParameterInfo& info : ParallaxView::parameters()) {
        for (const double value : {info.minimum, info.maximum}) {
            EXPECT_TRUE(view->setParameter(info.name, value).ok()) << info.name;
            double back = std::nan("");
            EXPECT_TRUE(view->parameter(info.name, &back).ok());
            EXPECT_FLOAT_EQ(static_cast<float>(back), static_cast<float>(value)) << info.name;
        }
        const double beyond = std::max(1.0, std::abs(info.maximum)) * 1.01 + 1;
        EXPECT_FALSE(view->setParameter(info.name, beyond).ok()) << info.name;
        EXPECT_FALSE(view->setParameter(info.name, -beyond).ok()) << info.name;
        EXPECT_FALSE(view->setParameter(info.name, std::nan("")).ok()) << info.name;
    }
    EXPECT_THAT(sentence(view->setParameter("guided_filter_rx", 1.5)), HasSubstr("whole number"));
    EXPECT_THAT(sentence(view->setParameter("nothing", 1)),
                StartsWith("unknown parameter 'nothing'; known are rotate_z_trans, "));
    double unused = 0;
    EXPECT_THAT(sentence(view->parameter("nothing", &unused)), StartsWith("unknown parameter"));
}

TEST_F(ParallaxViewTest, ParametersHaveTheirDocumentedRanges) {
    struct Row {
        const char* name;
        bool integer;
        double minimum, maximum;
        TakesEffect takes_effect;
    };
    constexpr Row kTable[] = {{"rotate_z_trans", false, 1, 1000, TakesEffect::kEachFrame},
                              {"rotate_x_boundary", false, -45, 45, TakesEffect::kEachFrame},
                              {"rotate_y_boundary", false, -45, 45, TakesEffect::kEachFrame},
                              {"trans_to_rotate_scale", false, -2, 2, TakesEffect::kEachFrame},
                              {"far_offset_ext", false, 0, 10000, TakesEffect::kEachFrame},
                              {"z_post_offset", false, -1000, 1000, TakesEffect::kNever},
                              {"guided_filter_rx", true, 0, 1024, TakesEffect::kNextDepth},
                              {"guided_filter_ry", true, 0, 1024, TakesEffect::kNextDepth},
                              {"guided_filter_eps", false, 0, 1, TakesEffect::kNextDepth},
                              {"depth_contrast", false, 0, 64, TakesEffect::kNextDepth},
                              {"border_deadzone", true, 3, 100000, TakesEffect::kNextMotion},
                              {"fov_scale", false, 0.05, 1, TakesEffect::kEachFrame},
                              {"offset_gain", false, -1000, 1000, TakesEffect::kNever},
                              {"offset_len", false, -1000, 1000, TakesEffect::kNever}};
    const std::vector<ParameterInfo>& parameters = ParallaxView::parameters();
    ASSERT_EQ(parameters.size(), std::size(kTable));
    for (size_t i = 0; i < parameters.size(); ++i) {
        SCOPED_TRACE(kTable[i].name);
        EXPECT_STREQ(parameters[i].name, kTable[i].name);
        EXPECT_EQ(parameters[i].integer, kTable[i].integer);
        EXPECT_EQ(parameters[i].minimum, kTable[i].minimum);
        EXPECT_EQ(parameters[i].maximum, kTable[i].maximum);
        EXPECT_EQ(parameters[i].takes_effect, kTable[i].takes_effect);
    }
}

TEST_F(ParallaxViewTest, ParameterSentencesSayWhatWouldDo) {
    EXPECT_EQ(sentence(view->setParameter("guided_filter_ry", 2.5)),
              "guided_filter_ry: 2.5 is not a whole number from 0 to 1024");
    EXPECT_EQ(sentence(view->setParameter("fov_scale", 2)), "fov_scale: 2 is not a number from 0.05 to 1");
    EXPECT_EQ(sentence(ParallaxView::checkParameter("", 0)),
              "unknown parameter ''; known are rotate_z_trans, rotate_x_boundary, rotate_y_boundary, "
              "trans_to_rotate_scale, far_offset_ext, z_post_offset, guided_filter_rx, guided_filter_ry, "
              "guided_filter_eps, depth_contrast, border_deadzone, fov_scale, offset_gain, offset_len");
}

TEST_F(ParallaxViewTest, EachParameterIsItsOwnField) {
    double value = 3;
    for (const ParameterInfo& info : ParallaxView::parameters()) {
        if (std::string(info.name) == "fov_scale" || std::string(info.name) == "guided_filter_eps") continue;
        value += 1;
        const bool gain = std::string(info.name) == "trans_to_rotate_scale";
        ASSERT_TRUE(view->setParameter(info.name, gain ? 1.5 : value).ok()) << info.name;
    }
    ASSERT_TRUE(view->setParameter("fov_scale", 0.25).ok());
    ASSERT_TRUE(view->setParameter("guided_filter_eps", 0.125).ok());
    const LibParam& params = view->renderer().params;
    EXPECT_EQ(params.rotate_z_trans, 4.0f);
    EXPECT_EQ(params.rotate_x_boundary, 5.0f);
    EXPECT_EQ(params.rotate_y_boundary, 6.0f);
    EXPECT_EQ(params.trans_to_rotate_scale, 1.5f);
    EXPECT_EQ(params.far_offset_ext, 8.0f);
    EXPECT_EQ(params.z_post_offset, 9.0f);
    EXPECT_EQ(params.guided_filter_rx, 10);
    EXPECT_EQ(params.guided_filter_ry, 11);
    EXPECT_EQ(params.guided_filter_eps, 0.125f);
    EXPECT_EQ(params.depth_contrast, 12.0f);
    EXPECT_EQ(params.border_deadzone, 13);
    EXPECT_EQ(params.fov_scale, 0.25f);
    EXPECT_EQ(params.offset_gain, 14.0f);
    EXPECT_EQ(params.offset_len, 15.0f);
}

TEST_F(ParallaxViewTest, ParametersTakeEffectWhenTheySay) {
    setImages();
    ASSERT_TRUE(quietly([&] { return view->lookAt(0.8f, 0); }).ok());
    const Bytes before = picture();
    for (const ParameterInfo& info : ParallaxView::parameters()) {
        SCOPED_TRACE(info.name);
        double old = 0;
        ASSERT_TRUE(view->parameter(info.name, &old).ok());
        // Far enough off to show.
        const std::string name(info.name);
        const std::map<std::string, double> others = {{"fov_scale", 0.5},
                                                      {"guided_filter_eps", 0.5},
                                                      {"border_deadzone", 3},
                                                      {"far_offset_ext", 0},
                                                      {"trans_to_rotate_scale", 1.5}};
        const auto found = others.find(name);
        const double other = found != others.end() ? found->second : old + 6;
        ASSERT_TRUE(view->setParameter(info.name, other).ok());
        // The far plane changes depths, not where things are seen; the vertical limit needs a vertical look.
        const bool shows_nothing_here = name == "far_offset_ext" || name == "rotate_y_boundary";
        EXPECT_EQ(picture() != before, info.takes_effect == TakesEffect::kEachFrame && !shows_nothing_here);
        ASSERT_TRUE(setDepth(kDepth, kDepth, depth).ok());
        ASSERT_TRUE(quietly([&] { return view->lookAt(0.8f, 0); }).ok());
        EXPECT_EQ(picture() != before, info.takes_effect != TakesEffect::kNever && !shows_nothing_here);
        ASSERT_TRUE(view->setParameter(info.name, old).ok());
        ASSERT_TRUE(setDepth(kDepth, kDepth, depth).ok());
        ASSERT_TRUE(quietly([&] { return view->lookAt(0.8f, 0); }).ok());
    }
    EXPECT_EQ(picture(), before);
}

TEST_F(ParallaxViewTest, ApplyPropertiesChoosesTheTunedSet) {
    double contrast = 0;
    ASSERT_TRUE(view->applyProperties(0).ok());
    ASSERT_TRUE(view->parameter("depth_contrast", &contrast).ok());
    EXPECT_EQ(contrast, 30);
    properties.set("quorvane.para10", "12");
    ASSERT_TRUE(view->applyProperties(7).ok());
    ASSERT_TRUE(view->parameter("depth_contrast", &contrast).ok());
    EXPECT_EQ(contrast, 12);
}

TEST_F(ParallaxViewTest, RefusesCallsFromAnotherThread) {
    setImages();
    const Bytes before = picture();
    const std::string wanted = "called from another thread than the one that created the view";
    std::vector<std::string> said;
    std::thread([&] {
        Bytes pixels(48 * 32 * 4);
        double value = 0;
        for (const Status& status :
             {view->setPhoto({photo, kPhoto, kPhoto}), view->setDepth({depth, kDepth, kDepth}),
              view->lookAt(1, 1), view->setRotation(1, 1, 1), view->setAccelerometerData(1, 1, 1),
              view->setTranslation(1, 1, 1), view->touchEvent(1), view->setMinMaxDepth(1, 2),
              view->setParameter("fov_scale", 0.5), view->parameter("fov_scale", &value),
              view->applyProperties(0), view->resize(9, 9), view->render(),
              view->readPixels({pixels, view->width(), view->height()})})
            said.push_back(sentence(status));
    }).join();
    EXPECT_THAT(said, Each(wanted));
    EXPECT_EQ(picture(), before);
}

TEST_F(ParallaxViewTest, RefusesAnotherContextOrNone) {
    setImages();
    context->release();
    EXPECT_EQ(sentence(view->render()), "the OpenGL ES context that created the view is not current");
    std::unique_ptr<ParallaxView> none;
    EXPECT_EQ(sentence(ParallaxView::create(8, 8, 4, &none)),
              "no OpenGL ES context is current on this thread");
    std::unique_ptr<OffscreenContext> other;
    ASSERT_TRUE(OffscreenContext::create(&other).ok());
    EXPECT_EQ(sentence(view->render()), "the OpenGL ES context that created the view is not current");
    ASSERT_TRUE(context->makeCurrent().ok());
    picture();
}

}  // namespace
}  // namespace quorvane::test
