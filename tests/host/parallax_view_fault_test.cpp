// ParallaxView on a driver that fails where we want it to.

#include <limits>

#include "aligned_memory.h"
#include "host_test.h"

namespace quorvane::test {
namespace {

using testing::AnyOf;
using testing::Contains;
using testing::Each;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;

class ParallaxViewFault : public ComponentTest {
  protected:
    ParallaxViewFault() {
        gl.strings[GL_VERSION] = "OpenGL ES 2.0 pretended";
        gl.strings[GL_EXTENSIONS] = "GL_OES_element_index_uint GL_OES_depth24";
        gl.integers[GL_MAX_TEXTURE_SIZE] = 4096;
        gl.integers[GL_MAX_RENDERBUFFER_SIZE] = 2048;
        gl.integers[GL_MAX_VIEWPORT_DIMS] = 4096;
        gl.integers[GL_MAX_VERTEX_TEXTURE_IMAGE_UNITS] = 4;
    }

    Status create() {
        const OutputToTimeline output;
        return ParallaxView::create(64, 48, 4, &view);
    }

    template <typename Action>
    std::string said(Action action) {
        const OutputToTimeline output;
        return sentence(action());
    }

    void expectNothingLeft() {
        view.reset();
        EXPECT_THAT(gl.live_textures, IsEmpty());
        EXPECT_THAT(gl.live_renderbuffers, IsEmpty());
        EXPECT_THAT(gl.live_framebuffers, IsEmpty());
        EXPECT_THAT(gl.live_buffers, IsEmpty());
        EXPECT_THAT(gl.live_programs, IsEmpty());
    }

    void createWithImages() {
        ASSERT_TRUE(create().ok());
        ASSERT_EQ(said([&] { return view->setPhoto({photo, 32, 32}); }), "succeeded");
        ASSERT_EQ(said([&] { return view->setDepth({depth, 32, 32}); }), "succeeded");
        forget();
    }

    AlignedMemory& memory = AlignedMemory::instance();
    std::unique_ptr<ParallaxView> view;
    const Bytes photo = Bytes(32 * 32 * 3, 9);
    const Bytes depth = Bytes(32 * 32, 9);
};

TEST_F(ParallaxViewFault, NeedsATextureUnitForVertexShaders) {
    gl.integers[GL_MAX_VERTEX_TEXTURE_IMAGE_UNITS] = 0;
    EXPECT_THAT(sentence(create()), HasSubstr("no texture unit for vertex shaders"));
    EXPECT_EQ(view, nullptr);
    expectNothingLeft();
}

TEST_F(ParallaxViewFault, Needs32BitIndices) {
    gl.strings[GL_EXTENSIONS] = "GL_OES_element_index_uint_not GL_OES_depth24";
    EXPECT_THAT(sentence(create()), HasSubstr("lacks 32-bit element indices"));
    expectNothingLeft();
}

TEST_F(ParallaxViewFault, EsThreeHas32BitIndicesWithoutAnExtension) {
    gl.strings[GL_VERSION] = "OpenGL ES 3.0 pretended";
    gl.strings[GL_EXTENSIONS] = "";
    EXPECT_TRUE(create().ok());
}

TEST_F(ParallaxViewFault, EsTwoIsAskedForNothingOfEsThree) {
    // Error 0x0500 in a context that does not know them.
    createWithImages();
    ASSERT_EQ(said([&] { return view->render(); }), "succeeded");
    Bytes pixels(64 * 48 * 4);
    ASSERT_EQ(said([&] { return view->readPixels({pixels, 64, 48}); }), "succeeded");
    for (const char* call : {"glPixelStorei", "glDisable", "glBindBuffer", "glBindFramebuffer"})
        EXPECT_THAT(
            timeline.callsOf(call),
            Each(AnyOf(HasSubstr("ALIGNMENT"), HasSubstr("ARRAY_BUFFER"), HasSubstr("GL_FRAMEBUFFER"),
                       HasSubstr("(GL_BLEND)"), HasSubstr("(GL_CULL_FACE)"), HasSubstr("(GL_SCISSOR_TEST)"),
                       // Stencil test, polygon offset and the two kinds of coverage.
                       MatchesRegex("glDisable\\(0x(b90|8037|809e|80a0)\\)"))))
            << call;
}

TEST_F(ParallaxViewFault, EsThreeWithoutItsFunctionsIsDrawnInAllTheSame) {
    gl.strings[GL_VERSION] = "OpenGL ES 3.2 pretended";
    createWithImages();
    EXPECT_EQ(said([&] { return view->render(); }), "succeeded");
    EXPECT_THAT(timeline.callsOf("glDisable"), Contains("glDisable(0x8c89)")) << "discarding of primitives";
}

TEST_F(ParallaxViewFault, UsesA16BitDepthBufferWhere24AreMissing) {
    gl.strings[GL_EXTENSIONS] = "GL_OES_element_index_uint";
    ASSERT_TRUE(create().ok());
    EXPECT_THAT(timeline.callsOf("glRenderbufferStorage"),
                testing::ElementsAre(HasSubstr("GL_DEPTH_COMPONENT16")));
}

TEST_F(ParallaxViewFault, SmallestLimitBoundsThePicture) {
    ASSERT_TRUE(create().ok());
    EXPECT_EQ(said([&] { return view->resize(2049, 10); }),
              "output: 2049 x 10 pixels; each side must be 1 to 2048");
    EXPECT_EQ(said([&] {
                  return view->setPhoto({photo, 4097, 10});
              }),
              "photo: 4097 x 10 pixels; each side must be 1 to 4096");
}

TEST_F(ParallaxViewFault, ShaderThatDoesNotBuildIsAFailure) {
    gl.compile_result[GL_VERTEX_SHADER] = {GL_FALSE, "no such thing", {}};
    EXPECT_THAT(sentence(create()), HasSubstr("could not build the shader program"));
    EXPECT_EQ(view, nullptr);
    expectNothingLeft();
}

TEST_F(ParallaxViewFault, NamesThatAreNotGeneratedAreAFailure) {
    gl.names_not_generated = true;
    EXPECT_THAT(sentence(create()), HasSubstr("made no texture or depth buffer"));
    expectNothingLeft();
}

TEST_F(ParallaxViewFault, IncompleteFramebufferIsAFailure) {
    gl.framebuffer_status = GL_FRAMEBUFFER_UNSUPPORTED;
    EXPECT_THAT(sentence(create()), HasSubstr("cannot draw into a 64 x 48 texture"));
    expectNothingLeft();
    EXPECT_THAT(gl.live_shaders, IsEmpty());
}

TEST_F(ParallaxViewFault, FailedResizeKeepsTheOldPicture) {
    ASSERT_TRUE(create().ok());
    const GLuint texture = view->texture();
    gl.errorAfter("glRenderbufferStorage", GL_OUT_OF_MEMORY);
    EXPECT_EQ(said([&] { return view->resize(100, 100); }), "output: the graphics driver is out of memory");
    EXPECT_EQ(view->texture(), texture);
    EXPECT_EQ(view->width(), 64);
    EXPECT_EQ(view->renderer().m_width, 64.0f);
    EXPECT_THAT(gl.live_textures, testing::ElementsAre(texture));
    EXPECT_EQ(gl.live_renderbuffers.size(), 1u);
    expectNothingLeft();
}

TEST_F(ParallaxViewFault, PhotoThatTheDriverCannotHoldIsUnset) {
    ASSERT_TRUE(create().ok());
    gl.errorAfter("glTexImage2D", GL_OUT_OF_MEMORY);
    EXPECT_EQ(said([&] {
                  return view->setPhoto({photo, 32, 32});
              }),
              "photo: the graphics driver is out of memory");
    EXPECT_EQ(said([&] { return view->render(); }), "nothing to draw: no photo is set");
    expectNothingLeft();
}

TEST_F(ParallaxViewFault, ErrorsOfTheAppAreNotReportedAsOurs) {
    ASSERT_TRUE(create().ok());
    gl.queueError(GL_INVALID_ENUM);
    EXPECT_EQ(said([&] { return view->setPhoto({photo, 32, 32}); }), "succeeded");
    gl.queueError(GL_INVALID_ENUM);
    EXPECT_EQ(said([&] { return view->setDepth({depth, 32, 32}); }), "succeeded");
    gl.queueError(GL_INVALID_ENUM);
    EXPECT_EQ(said([&] { return view->render(); }), "succeeded");
}

TEST_F(ParallaxViewFault, FrameThatFailsIsNoPicture) {
    ASSERT_TRUE(create().ok());
    ASSERT_EQ(said([&] { return view->setPhoto({photo, 32, 32}); }), "succeeded");
    ASSERT_EQ(said([&] { return view->setDepth({depth, 32, 32}); }), "succeeded");
    gl.errorAfter("glDrawElements", GL_OUT_OF_MEMORY);
    EXPECT_EQ(said([&] { return view->render(); }), "drawing: the graphics driver is out of memory");
    Bytes pixels(64 * 48 * 4);
    EXPECT_THAT(said([&] {
                    return view->readPixels({pixels, view->width(), view->height()});
                }),
                HasSubstr("no picture"));
}

TEST_F(ParallaxViewFault, PlanesBehindThePhotoAreClearedBeforeItsReduction) {
    ASSERT_TRUE(create().ok());
    ASSERT_EQ(said([&] { return view->setPhoto({Bytes(32 * 32 * 3, 255), 32, 32}); }), "succeeded");
    ASSERT_EQ(said([&] { return view->setDepth({Bytes(32 * 32, 255), 32, 32}); }), "succeeded");
    // Grid 8 x 8, four photo pixels a cell: the last output's window takes two pixels past the end, black now
    // and 255 had the depth plane of the first call stayed.
    const auto guide = [&] {
        const ESRenderer& renderer = view->renderer();
        return Bytes(renderer.m_pSmallTextureData, renderer.m_pSmallTextureData + 64);
    };
    const Bytes first = guide();
    ASSERT_EQ(said([&] { return view->setDepth({Bytes(32 * 32, 255), 32, 32}); }), "succeeded");
    EXPECT_EQ(guide(), first);
}

TEST_F(ParallaxViewFault, OutputIsAttachedOnce) {
    createWithImages();
    for (int i = 0; i < 2; ++i) ASSERT_EQ(said([&] { return view->render(); }), "succeeded");
    EXPECT_THAT(timeline.callsOf("glFramebufferTexture2D"), IsEmpty());
}

// Creation

TEST_F(ParallaxViewFault, FailedCreationLeavesNoView) {
    ASSERT_TRUE(create().ok());
    gl.framebuffer_status = GL_FRAMEBUFFER_UNSUPPORTED;
    EXPECT_FALSE(create().ok());
    EXPECT_EQ(view, nullptr);
    expectNothingLeft();
}

TEST_F(ParallaxViewFault, CreationReadsTheTunedSetAndTheProperties) {
    properties.set("quorvane.para12", "0.5");
    const OutputToTimeline output;
    ASSERT_TRUE(ParallaxView::create(64, 48, 0, &view).ok());
    EXPECT_EQ(view->renderer().params.rotate_z_trans, 50.0f);
    EXPECT_EQ(view->renderer().params.fov_scale, 0.5f);
    ASSERT_TRUE(ParallaxView::create(64, 48, 7, &view).ok());
    EXPECT_EQ(view->renderer().params.rotate_z_trans, 40.0f);
    EXPECT_EQ(view->renderer().params.fov_scale, 0.5f);
}

TEST_F(ParallaxViewFault, EachOfFourLimitsBoundsThePicture) {
    gl.integers[GL_MAX_TEXTURE_SIZE] = gl.integers[GL_MAX_RENDERBUFFER_SIZE] =
        gl.integers[GL_MAX_VIEWPORT_DIMS] = 4096;
    const auto largest = [this] {
        EXPECT_TRUE(create().ok());
        return said([&] { return view->resize(9999, 10); });
    };
    EXPECT_EQ(largest(), "output: 9999 x 10 pixels; each side must be 1 to 4096");
    gl.integers[GL_MAX_TEXTURE_SIZE] = 1024;
    EXPECT_EQ(largest(), "output: 9999 x 10 pixels; each side must be 1 to 1024");
    gl.integers[GL_MAX_RENDERBUFFER_SIZE] = 512;
    EXPECT_EQ(largest(), "output: 9999 x 10 pixels; each side must be 1 to 512");
    gl.viewport_height_limit = 256;
    EXPECT_EQ(largest(), "output: 9999 x 10 pixels; each side must be 1 to 256");
    gl.integers[GL_MAX_VIEWPORT_DIMS] = 128;
    EXPECT_EQ(largest(), "output: 9999 x 10 pixels; each side must be 1 to 128");
}

TEST_F(ParallaxViewFault, BothSidesOfALimitAreAdmissible) {
    ASSERT_TRUE(create().ok());
    EXPECT_EQ(said([&] { return view->resize(2048, 1); }), "succeeded");
    EXPECT_EQ(said([&] { return view->resize(1, 2048); }), "succeeded");
    EXPECT_EQ(said([&] { return view->resize(2048, 2049); }),
              "output: 2048 x 2049 pixels; each side must be 1 to 2048");
}

TEST_F(ParallaxViewFault, DepthMapsMayBeFourTimesAsLargeAsTextures) {
    gl.integers[GL_MAX_TEXTURE_SIZE] = 64;
    ASSERT_TRUE(create().ok());
    ASSERT_EQ(said([&] { return view->setPhoto({Bytes(64 * 32 * 3), 64, 32}); }), "succeeded");
    EXPECT_EQ(said([&] { return view->setDepth({Bytes(256 * 128), 256, 128}); }), "succeeded");
    EXPECT_EQ(said([&] {
                  return view->setDepth({depth, 257, 128});
              }),
              "depth map: 257 x 128 pixels; each side must be 4 to 256");
}

TEST_F(ParallaxViewFault, MissingDepthBufferAloneIsAFailure) {
    gl.generating_nothing = {"glGenRenderbuffers"};
    EXPECT_THAT(sentence(create()), HasSubstr("made no texture or depth buffer"));
    expectNothingLeft();
}

TEST_F(ParallaxViewFault, Uses24DepthBitsWhereThereAreSome) {
    ASSERT_TRUE(create().ok());
    EXPECT_THAT(timeline.callsOf("glRenderbufferStorage"),
                testing::ElementsAre("glRenderbufferStorage(GL_RENDERBUFFER, 0x81a6, 64, 48)"));
}

TEST_F(ParallaxViewFault, PictureIsAnRgbaTextureThatAnySamplerTakes) {
    ASSERT_TRUE(create().ok());
    ASSERT_EQ(gl.texture_uploads.size(), 1u);
    EXPECT_EQ(gl.texture_uploads[0].texture, view->texture());
    EXPECT_EQ(gl.texture_uploads[0].internal_format, GL_RGBA);
    EXPECT_EQ(gl.texture_uploads[0].format, static_cast<GLenum>(GL_RGBA));
    EXPECT_EQ(gl.texture_uploads[0].width, 64);
    EXPECT_EQ(gl.texture_uploads[0].height, 48);
    EXPECT_THAT(
        timeline.callsOf("glTexParameteri"),
        testing::UnorderedElementsAre("glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE)",
                                      "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE)",
                                      "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR)",
                                      "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR)"));
}

TEST_F(ParallaxViewFault, ResizeThatCannotBeDrawnIntoGoesBack) {
    ASSERT_TRUE(create().ok());
    const GLuint texture = view->texture();
    const GLuint depth_buffer = *gl.live_renderbuffers.begin();
    const float half_width = view->geometry().half_width;
    forget();
    gl.framebuffer_status = GL_FRAMEBUFFER_UNSUPPORTED;
    EXPECT_EQ(said([&] { return view->resize(100, 200); }),
              "output: the graphics driver cannot draw into a 100 x 200 texture");
    EXPECT_EQ(view->width(), 64);
    EXPECT_EQ(view->height(), 48);
    EXPECT_EQ(view->renderer().m_width, 64.0f);
    EXPECT_EQ(view->renderer().m_height, 48.0f);
    EXPECT_EQ(view->geometry().half_width, half_width);
    EXPECT_THAT(timeline.callsOf("glFramebufferTexture2D").back(),
                HasSubstr("GL_TEXTURE_2D, " + std::to_string(texture) + ", 0)"));
    EXPECT_THAT(timeline.callsOf("glFramebufferRenderbuffer").back(),
                HasSubstr("GL_RENDERBUFFER, " + std::to_string(depth_buffer) + ")"));
    EXPECT_THAT(gl.live_textures, testing::ElementsAre(texture));
    EXPECT_THAT(gl.live_renderbuffers, testing::ElementsAre(depth_buffer));
}

TEST_F(ParallaxViewFault, DepthBufferGoesToItsOwnFramebufferWhateverTheAppHasBound) {
    ASSERT_TRUE(create().ok());
    glBindFramebuffer(GL_FRAMEBUFFER, 77);
    forget();
    ASSERT_EQ(said([&] { return view->resize(20, 10); }), "succeeded");
    std::string bound = "glBindFramebuffer(GL_FRAMEBUFFER, 77)";
    for (const std::string& call : timeline.calls()) {
        if (call.rfind("glBindFramebuffer(", 0) == 0) bound = call;
        if (call.rfind("glFramebufferRenderbuffer(", 0) == 0) break;
    }
    EXPECT_EQ(bound, "glBindFramebuffer(GL_FRAMEBUFFER, " + std::to_string(view->renderer().m_fbo) + ")");
}

// Errors

TEST_F(ParallaxViewFault, OtherErrorsAreToldByTheirNumber) {
    ASSERT_TRUE(create().ok());
    gl.errorAfter("glTexImage2D", GL_INVALID_VALUE);
    EXPECT_EQ(said([&] {
                  return view->setPhoto({photo, 32, 32});
              }),
              "photo: the graphics driver reports error 0x0501");
}

TEST_F(ParallaxViewFault, SeveralErrorsOfTheAppAreForgottenButNotEndlesslyMany) {
    ASSERT_TRUE(create().ok());
    for (int i = 0; i < 5; ++i) gl.queueError(GL_INVALID_ENUM);
    EXPECT_EQ(said([&] { return view->setPhoto({photo, 32, 32}); }), "succeeded");
    // A lost context never stops reporting.
    for (int i = 0; i < 1000; ++i) gl.queueError(GL_INVALID_ENUM);
    EXPECT_EQ(said([&] {
                  return view->setPhoto({photo, 32, 32});
              }),
              "photo: the graphics driver reports error 0x0500");
    EXPECT_GT(gl.pendingErrors(), 900u);
}

TEST_F(ParallaxViewFault, DepthTextureThatTheDriverCannotHoldIsUnset) {
    createWithImages();
    gl.errorAfter("glTexImage2D", GL_OUT_OF_MEMORY);
    gl.errorAfter("glTexSubImage2D", GL_INVALID_OPERATION);  // what a driver says of a texture without image
    EXPECT_EQ(said([&] {
                  return view->setDepth({depth, 32, 32});
              }),
              "depth map: the graphics driver reports error 0x0502");
    EXPECT_EQ(said([&] { return view->render(); }), "nothing to draw: no depth map is set for this photo");
}

TEST_F(ParallaxViewFault, MeshThatTheDriverCannotHoldUnsetsTheDepth) {
    createWithImages();
    gl.errorAfter("glBufferData", GL_OUT_OF_MEMORY);
    EXPECT_EQ(said([&] {
                  return view->setDepth({depth, 32, 32});
              }),
              "depth map: the graphics driver is out of memory");
    EXPECT_EQ(said([&] { return view->render(); }), "nothing to draw: no depth map is set for this photo");
}

TEST_F(ParallaxViewFault, ReadingReportsItsOwnErrorsOnly) {
    createWithImages();
    ASSERT_EQ(said([&] { return view->render(); }), "succeeded");
    Bytes pixels(64 * 48 * 4);
    gl.queueError(GL_INVALID_ENUM);
    EXPECT_EQ(said([&] { return view->readPixels({pixels, view->width(), view->height()}); }), "succeeded");
    gl.errorAfter("glReadPixels", GL_OUT_OF_MEMORY);
    EXPECT_EQ(said([&] {
                  return view->readPixels({pixels, view->width(), view->height()});
              }),
              "reading the picture: the graphics driver is out of memory");
}

TEST_F(ParallaxViewFault, ReadingComesFromItsOwnFramebuffer) {
    createWithImages();
    ASSERT_EQ(said([&] { return view->render(); }), "succeeded");
    glBindFramebuffer(GL_FRAMEBUFFER, 77);
    Bytes pixels(64 * 48 * 4);
    EXPECT_TRUE(view->readPixels({pixels, view->width(), view->height()}).ok());
    EXPECT_EQ(gl.bound_framebuffer, view->renderer().m_fbo);
}

// The app's state

TEST_F(ParallaxViewFault, FragmentTestsOfTheAppAreSwitchedOffBeforeDrawing) {
    createWithImages();
    for (const GLenum test : {GL_BLEND, GL_CULL_FACE, GL_SCISSOR_TEST, GL_STENCIL_TEST,
                              GL_POLYGON_OFFSET_FILL, GL_SAMPLE_ALPHA_TO_COVERAGE, GL_SAMPLE_COVERAGE})
        glEnable(test);
    glBindFramebuffer(GL_FRAMEBUFFER, 77);
    forget();
    ASSERT_EQ(said([&] { return view->render(); }), "succeeded");
    EXPECT_THAT(gl.enabled, testing::ElementsAre(static_cast<GLenum>(GL_DEPTH_TEST)));
    // Before the clear, which they concern too.
    std::vector<std::string> before;
    for (const std::string& call : timeline.calls()) {
        if (call.rfind("glClear(", 0) == 0) break;
        before.push_back(call);
    }
    EXPECT_THAT(before, testing::Contains("glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE)"));
    EXPECT_THAT(before, testing::Contains("glBindFramebuffer(GL_FRAMEBUFFER, " +
                                          std::to_string(view->renderer().m_fbo) + ")"));
}

TEST_F(ParallaxViewFault, UnitsBeyondTheThirdKeepTheirTextures) {
    const auto on_the_apps_unit = [this](auto action) {
        glActiveTexture(GL_TEXTURE0 + 5);
        glBindTexture(GL_TEXTURE_2D, 500);
        EXPECT_EQ(said(action), "succeeded");
        EXPECT_EQ(gl.bound_textures[GL_TEXTURE0 + 5], 500u);
    };
    on_the_apps_unit([&] { return ParallaxView::create(64, 48, 4, &view); });
    on_the_apps_unit([&] { return view->resize(20, 30); });
    on_the_apps_unit([&] { return view->setPhoto({photo, 32, 32}); });
    on_the_apps_unit([&] { return view->setDepth({depth, 32, 32}); });
    on_the_apps_unit([&] { return view->render(); });
}

TEST_F(ParallaxViewFault, LookingFarBeyondTheEdgesIsClamped) {
    ASSERT_TRUE(create().ok());
    EXPECT_EQ(said([&] { return view->lookAt(3e38f, -3e38f); }), "succeeded");
    const float x = view->renderer().m_transX, y = view->renderer().m_transY;
    EXPECT_EQ(said([&] { return view->lookAt(1, -1); }), "succeeded");
    EXPECT_EQ(view->renderer().m_transX, x);
    EXPECT_EQ(view->renderer().m_transY, y);
}

TEST_F(ParallaxViewFault, ErrorsOfTheAppAreNotLoggedAsTheRenderers) {
    createWithImages();
    gl.queueError(GL_INVALID_ENUM);
    EXPECT_EQ(said([&] { return view->setDepth({depth, 32, 32}); }), "succeeded");
    gl.queueError(GL_INVALID_ENUM);
    EXPECT_EQ(said([&] { return view->render(); }), "succeeded");
    gl.queueError(GL_INVALID_ENUM);
    EXPECT_EQ(said([&] { return view->resize(20, 20); }), "succeeded");
    EXPECT_THAT(log.textsStartingWith("after "), IsEmpty());
}

// The working block

/// 3 bytes a photo pixel; for each cell 57, its vertices and the filter's tables.
size_t wantedBytes(size_t photo_w, size_t photo_h, size_t grid_w, size_t grid_h) {
    const size_t filter = 20 * grid_w * grid_h + 8 * (grid_w + 1) * (grid_h + 1);
    const size_t mesh = 2 * grid_h * (grid_w + 1) * 20 + 6 * grid_w * grid_h * 4;
    return filter + filter / 2 + mesh + 3 * photo_w * photo_h + 3 * grid_w * grid_h;
}

TEST_F(ParallaxViewFault, BlockIsAsLargeAsItsImagesNeed) {
    ASSERT_TRUE(create().ok());
    ASSERT_EQ(said([&] { return view->setPhoto({photo, 32, 16}); }), "succeeded");
    EXPECT_EQ(memory.last_bytes, wantedBytes(32, 16, 0, 0));
    ASSERT_EQ(said([&] { return view->setDepth({depth, 32, 32}); }), "succeeded");
    EXPECT_EQ(memory.last_bytes, wantedBytes(32, 16, 8, 8));
    EXPECT_EQ(static_cast<size_t>(view->geometry().block_bytes), wantedBytes(32, 16, 8, 8));
}

TEST_F(ParallaxViewFault, BlockIsTakenAnewForOtherSizesOnly) {
    createWithImages();
    const int taken = memory.taken;
    ASSERT_EQ(said([&] { return view->setPhoto({photo, 32, 32}); }), "succeeded");
    ASSERT_EQ(said([&] { return view->setDepth({depth, 32, 32}); }), "succeeded");
    EXPECT_EQ(memory.taken, taken);
    ASSERT_EQ(said([&] { return view->setDepth({depth, 32, 16}); }), "succeeded");
    EXPECT_EQ(memory.taken, taken + 1);
    ASSERT_EQ(said([&] { return view->setDepth({depth, 16, 16}); }), "succeeded");
    EXPECT_EQ(memory.taken, taken + 2);
    EXPECT_EQ(memory.live, 1);
}

TEST_F(ParallaxViewFault, BlockIsGivenBack) {
    const int live = memory.live;
    createWithImages();
    EXPECT_EQ(memory.live, live + 1);
    view.reset();
    EXPECT_EQ(memory.live, live);
}

TEST_F(ParallaxViewFault, BlockThatMemoryDoesNotSufficeForChangesNothing) {
    createWithImages();
    memory.exhausted = true;
    const std::string small = said([&] { return view->setDepth({depth, 16, 16}); });
    const std::string photos = said([&] { return view->setPhoto({photo, 16, 16}); });
    memory.exhausted = false;
    EXPECT_EQ(small,
              "cannot allocate " + std::to_string(wantedBytes(32, 32, 4, 4)) + " bytes of working memory");
    EXPECT_EQ(photos,
              "cannot allocate " + std::to_string(wantedBytes(16, 16, 0, 0)) + " bytes of working memory");
    EXPECT_EQ(view->geometry().grid_width, 8);
    EXPECT_EQ(said([&] { return view->render(); }), "succeeded");
}

TEST_F(ParallaxViewFault, PhotoOfAnotherHeightUnsetsTheDepth) {
    createWithImages();
    ASSERT_EQ(said([&] { return view->setPhoto({photo, 32, 16}); }), "succeeded");
    EXPECT_EQ(memory.last_bytes, wantedBytes(32, 16, 0, 0));
    EXPECT_EQ(said([&] { return view->render(); }), "nothing to draw: no depth map is set for this photo");
    EXPECT_EQ(view->geometry().grid_width, 0);
    EXPECT_EQ(view->geometry().block_bytes, 0);
}

// What it tells

TEST_F(ParallaxViewFault, GeometryTellsTheAxesApart) {
    ASSERT_TRUE(create().ok());
    ASSERT_EQ(said([&] { return view->setPhoto({Bytes(64 * 32 * 3), 64, 32}); }), "succeeded");
    ASSERT_EQ(said([&] { return view->setDepth({Bytes(128 * 16), 128, 16}); }), "succeeded");
    const Geometry geometry = view->geometry();
    EXPECT_EQ(geometry.grid_width, 32);
    EXPECT_EQ(geometry.grid_height, 4);
    EXPECT_EQ(geometry.colour_ratio_x, 2);
    EXPECT_EQ(geometry.colour_ratio_y, 8);
    // 64 x 48: 41 pixels a unit, a disparity of 3 - 41 x 0.0375 = 1.4625, which truncates to 1.
    EXPECT_FLOAT_EQ(geometry.half_width, 18.5f * 64 / 48 + 32.0f / 41);
    EXPECT_FLOAT_EQ(geometry.half_height, 18.5f);
}

TEST_F(ParallaxViewFault, DepthLimitsArriveInTheirOrder) {
    ASSERT_TRUE(create().ok());
    EXPECT_EQ(said([&] { return view->setMinMaxDepth(3, 250); }), "succeeded");
    EXPECT_EQ(view->renderer().m_minDepth, 3);
    EXPECT_EQ(view->renderer().m_maxDepth, 250);
}

TEST_F(ParallaxViewFault, MotionIsCheckedOnEveryAxis) {
    ASSERT_TRUE(create().ok());
    const float bad = std::numeric_limits<float>::quiet_NaN();
    for (int axis = 0; axis < 3; ++axis) {
        const float x = axis == 0 ? bad : 1, y = axis == 1 ? bad : 1, z = axis == 2 ? bad : 1;
        EXPECT_EQ(said([&] { return view->setRotation(x, y, z); }), "motion sample: not a finite number");
        EXPECT_EQ(said([&] { return view->setTranslation(x, y, z); }), "motion sample: not a finite number");
        EXPECT_EQ(said([&] { return view->setAccelerometerData(x, y, z); }),
                  "motion sample: not a finite number");
    }
    EXPECT_EQ(said([&] { return view->lookAt(bad, 0); }), "view position: not a finite number");
    EXPECT_EQ(said([&] { return view->lookAt(0, bad); }), "view position: not a finite number");
    EXPECT_EQ(said([&] { return view->touchEvent(4); }), "touch event 4; 0 to 3 are known");
    EXPECT_EQ(said([&] { return view->touchEvent(-1); }), "touch event -1; 0 to 3 are known");
    EXPECT_EQ(view->renderer().m_transX, 0.0f);
    EXPECT_EQ(view->renderer().m_transZ, 0.0f);
    EXPECT_EQ(view->renderer().m_camTransX, 0.0f);
}

}  // namespace
}  // namespace quorvane::test
